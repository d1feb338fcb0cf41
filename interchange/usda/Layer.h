#pragma once

// A layer in USD's text form, as far as curves are concerned: its prims, their animated attributes, and where each
// stands in the text.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Usda {

constexpr bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

// Names and values of custom data; strings without their quotes, everything else as it stands.
using Dictionary = std::vector<std::pair<std::string, std::string>>;

// Bytes from begin to end, exclusive.
struct TextSpan {
    std::size_t begin = 0;
    std::size_t end = 0;
};

enum class Mode { Held, Linear, Curve, None };

// Width in frames, slope in values a frame.
struct Slope {
    double width = 0.0;
    double slope = 0.0;
};

struct SplineKnot {
    double time = 0.0;
    double value = 0.0;
    bool isDual = false;
    double preValue = 0.0; // the value if not dual
    Mode mode = Mode::Held;
    Slope pre;
    Slope post;
    Dictionary customData;
};

struct SplineEnd {
    enum Kind { None, Held, Linear, Sloped, Repeat, Reset, Oscillate };
    Kind kind = Held;
    double slope = 0.0;
    std::optional<double> boundary; // of a loop over a part of the knots
};

struct InnerLoop {
    double start = 0.0;
    double end = 0.0;
    double before = 0.0; // whole
    double after = 0.0;  // whole
    double offset = 0.0;
};

struct SplineData {
    bool isHermite = false;
    SplineEnd pre;
    SplineEnd post;
    std::optional<InnerLoop> loop;
    std::vector<SplineKnot> knots; // in the order of the text
};

// Samples of a value of so many components each. None has no value from its time on.
struct Samples {
    std::vector<double> times; // in the order of the text
    std::vector<double> values;
    std::vector<bool> isNone;
};

// How numbers of a type of USD become curves.
struct ValueType {
    const char* name;
    std::size_t components;
    bool isContinuous; // between samples, and allowed for splines if it has one component
    const char* letters;
};

// Null for a type that holds no numbers.
const ValueType* FindType(std::string_view name);

struct Attribute {
    std::size_t prim = 0;
    std::string name;
    std::string type;
    std::optional<SplineData> spline;
    std::optional<Samples> samples;
    Dictionary customData;
    TextSpan splineText;  // the whole statement
    TextSpan samplesText; // likewise
    std::size_t end = 0;  // of its last statement
};

struct Prim {
    std::string path; // "rig/box", the last part of a variant in braces; empty for the layer
    TextSpan body;    // between the braces
    bool isInVariant = false;
};

struct Remark {
    enum Kind { Algorithm, Width, NotFinite, SkippedType };
    Kind kind;
    std::string attribute; // "rig/box/lift"
    double time;
    std::string detail;
};

struct Layer {
    std::optional<double> rate;
    std::optional<double> start;
    std::optional<double> end;
    std::optional<double> metersPerUnit;
    Dictionary customData;
    TextSpan metadata;      // between the brackets; empty if there are none
    std::size_t header = 0; // end of the first line, without its line end
    std::vector<Prim> prims;
    std::vector<Attribute> attributes;
    std::vector<Remark> remarks;

    std::string pathOf(const Attribute& attribute) const;
};

// Throws BadDocument and TooMuch, with line and column.
Layer ParseLayer(std::string_view text);

// Whether the text starts as a layer does.
bool StartsLayer(std::string_view text) noexcept;

} // namespace Usda

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
