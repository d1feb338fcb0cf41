#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

/// A point of a picture: pixels, y downward.
struct Pixel {
    double x;
    double y;
};

/// Writes an SVG document: nested elements with attributes, two decimals for coordinates, every text escaped. Made by
/// appending; finish() ends it.
class Svg {
public:
    /// An attribute. Numbers are written with at most two decimals.
    struct Attribute {
        Attribute(std::string_view name_, std::string_view value_) : name(name_), value(value_) {}
        Attribute(std::string_view name_, const char* value_) : name(name_), value(value_) {}
        Attribute(std::string_view name_, double value_);

        std::string_view name;
        std::string value;
    };
    using Attributes = std::initializer_list<Attribute>;

    Svg(double width, double height, std::string_view title);

    /// \name Elements
    /// @{
    void open(std::string_view element, Attributes attributes);
    void close();
    void leaf(std::string_view element, Attributes attributes);
    /// An element with a text in it.
    void leaf(std::string_view element, Attributes attributes, std::string_view text);
    /// @}

    /// Closes what is open and returns the document.
    std::string finish();

private:
    void begin(std::string_view element, Attributes attributes);

    std::string m_text;
    std::vector<std::string> m_open;
};

/// The data of a path element through the points; nothing for fewer than two.
std::string ToPathData(const std::vector<Pixel>& points);

/// The text as it stands in XML, in elements and in quoted attributes. What XML cannot hold (control characters, bytes
/// that are not UTF-8) becomes U+FFFD.
std::string EscapeXml(std::string_view text);

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
