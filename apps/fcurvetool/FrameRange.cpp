#include "FrameRange.h"

#include "Failure.h"
#include "Text.h"

#include <cmath>
#include <string>
#include <vector>

namespace fcurvetool {

namespace {

constexpr double kExactIntegers = 9007199254740992.0; // 2^53

bool IsWholeAfter(double value, double scale) {
    const double scaled = std::round(value * scale);
    return std::fabs(scaled) < kExactIntegers && scaled / scale == value;
}

double FindScale(double first, double step) {
    double scale = 1.0;
    for (int places = 0; places <= 9; ++places, scale *= 10.0)
        if (IsWholeAfter(first, scale) && IsWholeAfter(step, scale)) return scale;
    return 0.0;
}

std::vector<double> ParseNumbers(std::string_view text, std::string_view what) {
    std::vector<double> numbers;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(':', begin), text.size());
        const auto number = ParseNumber(text.substr(begin, end - begin));
        if (!number) throw UsageError(std::string(what) + ": \"" + ToPrintable(text) + "\" is not a valid frame range");
        numbers.push_back(*number);
        begin = end + 1;
    }
    return numbers;
}

} // namespace

FrameRange::FrameRange(double first, double last, double step) : m_first(first), m_step(step), m_size(1) {
    if (first == last) return;
    const double steps = (last - first) / step;
    if (step == 0.0 || !(steps > 0.0))
        throw UsageError("a step of " + ToText(step) + " does not lead from " + ToText(first) + " to " + ToText(last));
    if (!(steps < kExactIntegers)) throw UsageError("too many frames from " + ToText(first) + " to " + ToText(last));
    m_size = static_cast<std::int64_t>(std::floor(steps + 1e-9)) + 1;
    m_scale = FindScale(first, step);
}

FrameRange FrameRange::ofMultiples(double first, double last, double step) {
    const double scale = FindScale(step, step);
    const double start = scale == 0.0 ? first * step : first * std::round(step * scale) / scale;
    FrameRange range(start, start, step);
    range.m_size = static_cast<std::int64_t>(last - first) + 1;
    range.m_scale = FindScale(start, step);
    return range;
}

FrameRange FrameRange::parse(std::string_view text) {
    const std::vector<double> numbers = ParseNumbers(text, "frames");
    if (numbers.size() > 3) throw UsageError("frames: \"" + ToPrintable(text) + "\" is not FIRST:LAST:STEP");
    const double last = numbers.size() > 1 ? numbers[1] : numbers[0];
    const double step = numbers.size() > 2 ? numbers[2] : 1.0;
    return FrameRange(numbers[0], last, step);
}

double FrameRange::operator[](std::int64_t index) const {
    const auto i = static_cast<double>(index);
    if (m_scale == 0.0) return m_first + i * m_step;
    return (std::round(m_first * m_scale) + i * std::round(m_step * m_scale)) / m_scale;
}

Interval ParseInterval(std::string_view text, std::string_view option) {
    const std::vector<double> numbers = ParseNumbers(text, option);
    if (numbers.size() != 2 || !(numbers[0] < numbers[1]))
        throw UsageError(std::string(option) + ": \"" + ToPrintable(text) + "\" is not LOW:HIGH");
    return {numbers[0], numbers[1]};
}

} // namespace fcurvetool
