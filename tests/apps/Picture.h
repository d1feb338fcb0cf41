#pragma once

// An SVG picture of a plot, read back: parsed as XML, its axes turned into scales by their labels alone.

#include <expat.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace View {

struct Element {
    std::string name;
    std::map<std::string, std::string> attributes;
    std::string text;
    std::vector<Element> children;

    const std::string& operator[](const std::string& attribute) const {
        static const std::string kNone;
        const auto it = attributes.find(attribute);
        return it == attributes.end() ? kNone : it->second;
    }
    double number(const std::string& attribute) const { return std::strtod((*this)[attribute].c_str(), nullptr); }

    /// Elements below this one, in document order, that have this name and this class (empty for any).
    std::vector<const Element*> find(const std::string& wantedName, const std::string& wantedClass = "") const {
        std::vector<const Element*> found;
        for (const Element& child : children) {
            if (child.name == wantedName && (wantedClass.empty() || child["class"] == wantedClass))
                found.push_back(&child);
            const auto below = child.find(wantedName, wantedClass);
            found.insert(found.end(), below.begin(), below.end());
        }
        return found;
    }
};

/// Parses a document; a test failure and an empty element where it is not well-formed.
inline Element ParseXml(const std::string& text) {
    struct State {
        Element root;
        std::vector<Element*> open;
    } state;
    state.open.push_back(&state.root);
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr), XML_ParserFree);
    XML_SetUserData(parser.get(), &state);
    XML_SetElementHandler(
        parser.get(),
        [](void* data, const XML_Char* name, const XML_Char** attributes) {
            auto& open = static_cast<State*>(data)->open;
            Element element;
            element.name = name;
            for (; *attributes; attributes += 2) element.attributes[attributes[0]] = attributes[1];
            open.back()->children.push_back(std::move(element));
            open.push_back(&open.back()->children.back());
        },
        [](void* data, const XML_Char*) { static_cast<State*>(data)->open.pop_back(); });
    XML_SetCharacterDataHandler(parser.get(), [](void* data, const XML_Char* piece, int length) {
        static_cast<State*>(data)->open.back()->text.append(piece, static_cast<std::size_t>(length));
    });
    if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1) != XML_STATUS_OK) {
        ADD_FAILURE() << XML_ErrorString(XML_GetErrorCode(parser.get())) << " in line "
                      << XML_GetCurrentLineNumber(parser.get());
        return {};
    }
    return std::move(state.root.children.front());
}

/// A label as a number: with a real minus sign.
inline double ReadLabel(std::string label) {
    const std::string minus = "\u2212";
    if (label.compare(0, minus.size(), minus) == 0) label.replace(0, minus.size(), "-");
    char* end = nullptr;
    const double value = std::strtod(label.c_str(), &end);
    EXPECT_TRUE(end != label.c_str() && *end == '\0') << "label " << label;
    return value;
}

/// The power of ten that an axis title names.
inline double ReadFactor(const std::string& title) {
    static const char* const kDigits[] = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹", "⁻"};
    const std::string mark = "×10";
    const auto begin = title.find(mark);
    if (begin == std::string::npos) return 1.0;
    std::string number = "1e" + title.substr(begin + mark.size());
    for (std::size_t digit = 0; digit < std::size(kDigits); ++digit) {
        for (std::size_t at; (at = number.find(kDigits[digit])) != std::string::npos;) {
            number.replace(at, std::strlen(kDigits[digit]), 1, "0123456789-"[digit]);
        }
    }
    char* end = nullptr;
    const double factor = std::strtod(number.c_str(), &end);
    EXPECT_EQ(*end, '\0') << "factor in " << title;
    return factor;
}

/// The straight line through an axis's labels and the pixels where they stand.
struct Scale {
    double pixel = 0.0;
    double value = 0.0;
    double unitsPerPixel = 0.0;

    double toValue(double at) const { return value + (at - pixel) * unitsPerPixel; }
    double toPixel(double of) const { return pixel + (of - value) / unitsPerPixel; }
};

inline Scale ReadScale(const std::vector<std::pair<double, double>>& marks) {
    if (marks.size() < 2) {
        ADD_FAILURE() << "an axis with fewer than two labels";
        return {0.0, 0.0, 1.0};
    }
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
    const char* at = data.c_str();
    while (*at != '\0') {
        const char command = *at++;
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

/// One panel of a plot.
struct PanelView {
    const Element* element;
    Scale frames;
    Scale values;
};

/// A plot with its scales.
class Picture {
public:
    explicit Picture(const std::string& svg) : m_size(svg.size()), m_root(ParseXml(svg)) {
        EXPECT_EQ(m_root.name, "svg");
        const auto foot = m_root.find("g", "frames");
        if (foot.size() != 1) {
            ADD_FAILURE() << "no axis of frames";
            return;
        }
        std::vector<std::pair<double, double>> marks;
        double factor = 1.0;
        for (const Element* text : foot.front()->find("text")) {
            if (text->text.rfind("frame", 0) == 0) factor = ReadFactor(text->text);
            if ((*text)["text-anchor"] == "middle") marks.emplace_back(text->number("x"), ReadLabel(text->text));
        }
        for (auto& mark : marks) mark.second *= factor;
        const Scale frames = ReadScale(marks);

        for (const Element* panel : m_root.find("g", "panel")) {
            marks.clear();
            factor = 1.0;
            for (const Element* text : panel->find("g", "axes").front()->find("text")) {
                if ((*text)["text-anchor"] == "end") marks.emplace_back(text->number("y") - 4.2, ReadLabel(text->text));
                if (!(*text)["transform"].empty()) factor *= ReadFactor(text->text);
            }
            for (auto& mark : marks) mark.second *= factor;
            m_panels.push_back({panel, frames, ReadScale(marks)});
        }
    }

    std::size_t size() const { return m_size; }
    const Element& root() const { return m_root; }
    const std::vector<PanelView>& panels() const { return m_panels; }
    std::string allText() const {
        std::string all;
        for (const Element* text : m_root.find("text")) all += text->text + '\n';
        return all;
    }

private:
    std::size_t m_size;
    Element m_root;
    std::vector<PanelView> m_panels;
};

} // namespace View
