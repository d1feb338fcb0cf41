#pragma once

#include <cstdint>
#include <string_view>

namespace fcurvetool {

/// Frames at equal distances: first, first + step, ... up to last.
///
/// Where first and step are decimal numbers of up to nine places, as people type them, every frame is the double
/// nearest to the decimal number that they mean: 0:1:0.1 has 0.3, not 0.30000000000000004.
class FrameRange {
public:
    /// Refuses (UsageError) a step that is zero or leads away from last, and more than 2^53 frames. last belongs to the
    /// frames if it lies within a billionth of a step of one of them.
    FrameRange(double first, double last, double step);

    /// first * step, (first + 1) * step, ... last * step, for whole numbers first <= last.
    static FrameRange ofMultiples(double first, double last, double step);

    /// Reads "12", "1:10" (step 1) and "1:10:0.5"; UsageError for anything else.
    static FrameRange parse(std::string_view text);

    std::int64_t size() const { return m_size; }
    /// Precondition: 0 <= index < size().
    double operator[](std::int64_t index) const;

private:
    double m_first;
    double m_step;
    double m_scale = 0.0; // a power of ten that makes first and step whole numbers; 0 where there is none
    std::int64_t m_size;
};

/// Two numbers, the first below the second, from "10:20"; UsageError, which names the option, for anything else.
struct Interval {
    double low;
    double high;
};
Interval ParseInterval(std::string_view text, std::string_view option);

} // namespace fcurvetool
