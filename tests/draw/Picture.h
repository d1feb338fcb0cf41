#pragma once

// A picture read back: parsed as XML, its axes turned into scales by their labels alone.

#include <expat.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Svg {

struct Element {
    std::string name;
    std::map<std::string, std::string> attributes;
    std::string text;
    std::vector<Element> children;

    std::string operator[](const std::string& attribute) const {
        const auto it = attributes.find(attribute);
        return it == attributes.end() ? "" : it->second;
    }
    double number(const std::string& attribute) const { return std::strtod((*this)[attribute].c_str(), nullptr); }

    /// Elements below this one, in document order, that have this name and a class that begins so (empty for any).
    std::vector<const Element*> find(const std::string& wantedName, const std::string& wantedClass = "") const {
        std::vector<const Element*> found;
        for (const Element& child : children) {
            if (child.name == wantedName && child["class"].rfind(wantedClass, 0) == 0) found.push_back(&child);
            const auto below = child.find(wantedName, wantedClass);
            found.insert(found.end(), below.begin(), below.end());
        }
        return found;
    }
};

/// Parses a document; a test failure and an empty element where it is not well-formed.
inline Element ParseXml(const std::string& text) {
    Element root;
    std::vector<Element*> open = {&root};
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr), XML_ParserFree);
    XML_SetUserData(parser.get(), &open);
    XML_SetElementHandler(
        parser.get(),
        [](void* data, const XML_Char* name, const XML_Char** attributes) {
            auto& stack = *static_cast<std::vector<Element*>*>(data);
            Element& element = stack.back()->children.emplace_back();
            element.name = name;
            for (; *attributes; attributes += 2) element.attributes[attributes[0]] = attributes[1];
            stack.push_back(&element);
        },
        [](void* data, const XML_Char*) { static_cast<std::vector<Element*>*>(data)->pop_back(); });
    XML_SetCharacterDataHandler(parser.get(), [](void* data, const XML_Char* piece, int length) {
        static_cast<std::vector<Element*>*>(data)->back()->text.append(piece, static_cast<std::size_t>(length));
    });
    if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1) != XML_STATUS_OK) {
        ADD_FAILURE() << XML_ErrorString(XML_GetErrorCode(parser.get())) << " in line "
                      << XML_GetCurrentLineNumber(parser.get());
        return {};
    }
    return std::move(root.children.front());
}

/// The number that a label is once its typography is plain: "−1.5" or, after "value ×", "10⁻¹²".
inline double ReadNumber(std::string text) {
    static const char* const kSigns[] = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹", "⁻", "−"};
    for (std::size_t sign = 0; sign < std::size(kSigns); ++sign)
        for (std::size_t at; (at = text.find(kSigns[sign])) != std::string::npos;)
            text.replace(at, std::strlen(kSigns[sign]), 1, "0123456789--"[sign]);
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    EXPECT_TRUE(end != text.c_str() && *end == '\0') << "label " << text;
    return value;
}

/// The power of ten that an axis title names.
inline double ReadFactor(const std::string& title) {
    const std::string mark = "×10";
    const auto start = title.find(mark);
    return start == std::string::npos ? 1.0 : ReadNumber("1e" + title.substr(start + mark.size()));
}

/// The straight line through an axis's labels and the pixels where they stand.
struct Scale {
    double pixel = 0.0;
    double value = 0.0;
    double unitsPerPixel = 1.0;

    double toValue(double at) const { return value + (at - pixel) * unitsPerPixel; }
    double toPixel(double of) const { return pixel + (of - value) / unitsPerPixel; }
};

/// \param texts those of an axis, labels and title
/// \param anchor tells the labels
inline Scale ReadScale(const std::vector<const Element*>& texts, const std::string& anchor,
                       const std::string& direction, double shift) {
    std::vector<std::pair<double, double>> marks;
    double factor = 1.0;
    for (const Element* text : texts) {
        if ((*text)["text-anchor"] == anchor)
            marks.emplace_back(text->number(direction) - shift, ReadNumber(text->text));
        else
            factor *= ReadFactor(text->text);
    }
    if (marks.size() < 2) {
        ADD_FAILURE() << "an axis with fewer than two labels";
        return {};
    }
    for (auto& mark : marks) mark.second *= factor;
    const auto& [firstPixel, firstValue] = marks.front();
    const auto& [lastPixel, lastValue] = marks.back();
    const Scale scale{firstPixel, firstValue, (lastValue - firstValue) / (lastPixel - firstPixel)};
    for (const auto& [pixel, value] : marks) EXPECT_NEAR(scale.toPixel(value), pixel, 0.05) << "label " << value;
    return scale;
}

struct Point {
    double x;
    double y;
};

/// The strokes of a path of M and L commands.
inline std::vector<std::vector<Point>> ReadPath(const std::string& data) {
    std::vector<std::vector<Point>> strokes;
    for (const char* at = data.c_str(); *at != '\0';) {
        const char command = *at++;
        if (command == 'Z') continue;
        char* end = nullptr;
        const double x = std::strtod(at, &end);
        const double y = std::strtod(end, &end);
        if (end == at || (command != 'M' && command != 'L') || (command == 'L' && strokes.empty())) {
            ADD_FAILURE() << "path " << data.substr(0, 80);
            return {};
        }
        if (command == 'M') strokes.emplace_back();
        strokes.back().push_back({x, y});
        at = end;
    }
    return strokes;
}

struct Panel {
    const Element* element;
    Scale frames;
    Scale values;
};

/// A picture with its scales.
class Picture {
public:
    explicit Picture(const std::string& svg) : m_root(ParseXml(svg)) {
        EXPECT_EQ(m_root.name, "svg");
        for (const Element* text : m_root.find("text")) m_text += text->text + '\n';
        const Scale frames = ReadScale(m_root.find("g", "frames").at(0)->find("text"), "middle", "x", 0.0);
        for (const Element* panel : m_root.find("g", "panel"))
            m_panels.push_back(
                {panel, frames, ReadScale(panel->find("g", "axes").at(0)->find("text"), "end", "y", 4.2)});
    }

    const Element& root() const { return m_root; }
    const std::vector<Panel>& panels() const { return m_panels; }
    const std::string& text() const { return m_text; }

private:
    Element m_root;
    std::string m_text;
    std::vector<Panel> m_panels;
};

} // namespace Svg
