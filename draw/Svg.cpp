#include "draw/Svg.h"

#include "draw/Label.h"

#include <cstddef>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

namespace {

/// Length in bytes of the UTF-8 character at the text's beginning if XML may hold it, else 0.
std::size_t XmlCharacterLength(std::string_view text) {
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80) return (lead >= 0x20 && lead != 0x7F) || lead == '\t' || lead == '\n' || lead == '\r' ? 1 : 0;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
    unsigned code = lead & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) return 0;
        code = code << 6U | (byte(i) & 0x3FU);
    }
    const bool isOverlong = code < (length == 2 ? 0x80U : length == 3 ? 0x800U : 0x10000U);
    const bool isSurrogate = code >= 0xD800 && code < 0xE000;
    const bool isControl = code < 0xA0 || code == 0xFFFE || code == 0xFFFF;
    return isOverlong || isSurrogate || isControl || code > 0x10FFFF ? 0 : length;
}

} // namespace

Svg::Attribute::Attribute(std::string_view name_, double value_) : name(name_), value(ToFixedText(value_, 2)) {}

Svg::Svg(double width, double height, std::string_view title) {
    m_text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    open("svg", {{"xmlns", "http://www.w3.org/2000/svg"},
                 {"width", width},
                 {"height", height},
                 {"viewBox", "0 0 " + ToFixedText(width, 2) + " " + ToFixedText(height, 2)},
                 {"font-family", "Helvetica, Arial, 'DejaVu Sans', sans-serif"}});
    leaf("title", {}, title);
}

void Svg::begin(std::string_view element, Attributes attributes) {
    m_text += '<';
    m_text += element;
    for (const Attribute& attribute : attributes) {
        m_text += ' ';
        m_text += attribute.name;
        m_text += "=\"";
        m_text += EscapeXml(attribute.value);
        m_text += '"';
    }
}

void Svg::open(std::string_view element, Attributes attributes) {
    begin(element, attributes);
    m_text += ">\n";
    m_open.emplace_back(element);
}

void Svg::close() {
    m_text += "</" + m_open.back() + ">\n";
    m_open.pop_back();
}

void Svg::leaf(std::string_view element, Attributes attributes) {
    begin(element, attributes);
    m_text += "/>\n";
}

void Svg::leaf(std::string_view element, Attributes attributes, std::string_view text) {
    begin(element, attributes);
    m_text += '>';
    m_text += EscapeXml(text);
    m_text += "</";
    m_text += element;
    m_text += ">\n";
}

std::string Svg::finish() {
    while (!m_open.empty()) close();
    return std::move(m_text);
}

std::string ToPathData(const std::vector<Pixel>& points) {
    std::string data;
    if (points.size() < 2) return data;
    char command = 'M';
    for (const Pixel& point : points) {
        data += command;
        data += ToFixedText(point.x, 2);
        data += ' ';
        data += ToFixedText(point.y, 2);
        command = 'L';
    }
    return data;
}

std::string EscapeXml(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = XmlCharacterLength(text);
        const char first = text.front();
        if (length == 0) {
            result += "\uFFFD";
        } else if (first == '&') {
            result += "&amp;";
        } else if (first == '<') {
            result += "&lt;";
        } else if (first == '>') {
            result += "&gt;";
        } else if (first == '"') {
            result += "&quot;";
        } else {
            result += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return result;
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
