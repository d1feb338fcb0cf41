#include "draw/Colours.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

namespace {

// Seven colours of the palette that Okabe and Ito made for colour-blind readers (its yellow is too pale on white), then
// the same darker, then lighter.
constexpr std::array<std::string_view, 21> kPalette = {"#0072b2", "#d55e00", "#009e73", "#cc79a7", "#e69f00", "#56b4e9",
                                                       "#444444", "#00436b", "#7d3700", "#005c43", "#7f4465", "#8a5f00",
                                                       "#27668a", "#9a9a9a", "#6fb1d8", "#eda06b", "#6cc7ab", "#e3b3cd",
                                                       "#f0c56b", "#9dd3f1", "#c2c2c2"};

// What is left of it beside curves in red, green and blue.
constexpr std::array<std::string_view, 6> kBesideAxes = {"#444444", "#cc79a7", "#e69f00",
                                                         "#8a5f00", "#7f4465", "#9a9a9a"};

// x, y and z. The three of one shade differ in lightness too, for readers who do not tell red from green.
constexpr std::size_t kShades = 8;
constexpr std::array<std::array<std::string_view, kShades>, 3> kAxes = {{
    {"#d62f2f", "#8e1616", "#ef8a80", "#c9184a", "#ff6a3d", "#b3475e", "#7a3b2e", "#d9a08f"},
    {"#2e9e3f", "#135c24", "#7cc474", "#6b8e23", "#1abc7b", "#9acd32", "#4d6b3c", "#a3c99b"},
    {"#2c62d6", "#16306f", "#7fb0f5", "#5a55c8", "#0aa3c2", "#8a7bea", "#4a6078", "#a5bfe8"},
}};

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsLower(char c) {
    return c >= 'a' && c <= 'z';
}

// What a curve's name says of axes. shade: 0 for x, tx and translateX, 1 for rx, 2 for sx.
struct Axis {
    int axis = -1; // none
    std::size_t shade = 0;
};

Axis ParseAxis(std::string_view name) {
    // "tx (2)", which tells curves of one name apart, is as "tx"; "chan0 (tx)" is as "tx" too.
    if (!name.empty() && name.back() == ')') {
        const std::size_t open = name.rfind('(');
        if (open == std::string_view::npos) return {};
        const std::string_view inner = name.substr(open + 1, name.size() - open - 2);
        name = inner.find_first_not_of("0123456789") == std::string_view::npos ? name.substr(0, open) : inner;
        while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
    }
    if (name.empty()) return {};
    const std::size_t axis = std::string_view("xyzXYZ").find(name.back());
    if (axis == std::string_view::npos) return {};
    std::size_t start = name.size();
    while (start > 0 && IsLetter(name[start - 1])) --start;
    const std::string_view word = name.substr(start);
    const auto result = [axis](std::size_t shade) { return Axis{static_cast<int>(axis % 3), shade}; };
    if (word.size() == 1) return result(0);
    const char initial = word.size() == 2 ? word[0] : '\0';
    if (initial == 't' || initial == 'T') return result(0);
    if (initial == 'r' || initial == 'R') return result(1);
    if (initial == 's' || initial == 'S') return result(2);
    if (axis < 3 || !IsLower(word[word.size() - 2])) return {}; // "matrix", "INDEX"
    // rotateX, shoulderRotateX; rotation and scale are told by the last word before the axis.
    if (word.find("otat") != std::string_view::npos) return result(1);
    if (word.find("cale") != std::string_view::npos) return result(2);
    return result(0);
}

} // namespace

std::vector<std::string_view> ChooseColours(const std::vector<std::string>& names) {
    std::vector<Axis> axes;
    bool hasAxes = false;
    for (const std::string& name : names) {
        axes.push_back(ParseAxis(name));
        hasAxes |= axes.back().axis >= 0;
    }
    std::array<std::array<std::size_t, kShades>, 3> uses = {};
    std::size_t others = 0;
    std::vector<std::string_view> colours;
    for (const Axis& axis : axes) {
        if (axis.axis < 0) {
            colours.push_back(hasAxes ? kBesideAxes[others % kBesideAxes.size()] : kPalette[others % kPalette.size()]);
            ++others;
            continue;
        }
        // The shade of its kind while that is new, else the least used one.
        const auto row = static_cast<std::size_t>(axis.axis);
        const auto least = std::min_element(uses[row].begin(), uses[row].end());
        const std::size_t shade =
            uses[row][axis.shade] == *least ? axis.shade : static_cast<std::size_t>(least - uses[row].begin());
        ++uses[row][shade];
        colours.push_back(kAxes[row][shade]);
    }
    return colours;
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
