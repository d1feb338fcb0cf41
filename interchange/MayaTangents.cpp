#include "interchange/MayaTangents.h"

#include "interchange/Numbers.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

constexpr const char* kWords[] = {"fixed",   "linear",  "flat", "spline",   "step",    "stepnext",   "slow",  "fast",
                                  "clamped", "plateau", "auto", "autoease", "automix", "autocustom", "global"};

constexpr struct {
    const char* word;
    double rate;
} kRates[] = {{"game", 15.0},
              {"film", 24.0},
              {"pal", 25.0},
              {"ntsc", 30.0},
              {"show", 48.0},
              {"palf", 50.0},
              {"ntscf", 60.0},
              {"23.976fps", 24000.0 / 1001.0},
              {"29.97fps", 30000.0 / 1001.0},
              {"29.97df", 30000.0 / 1001.0},
              {"47.952fps", 48000.0 / 1001.0},
              {"59.94fps", 60000.0 / 1001.0}};

constexpr struct {
    const char* word;
    double seconds;
} kClocks[] = {{"sec", 1.0},     {"second", 1.0},     {"min", 60.0},         {"minute", 60.0},
               {"hour", 3600.0}, {"millisec", 0.001}, {"millisecond", 0.001}};

// The slope between neighbours, made flat or less steep where the curve would leave the range of their values.
double Restrained(double slope, double left, double right, bool isLimited) {
    if (left * right <= 0.0) return 0.0;
    const double most = 3.0 * std::min(std::fabs(left), std::fabs(right));
    if (std::fabs(slope) <= most) return slope;
    return isLimited ? std::copysign(most, slope) : 0.0;
}

double Chord(const Vector2D<double>& a, const Vector2D<double>& b) {
    return (b.y - a.y) / (b.x - a.x);
}

} // namespace

MayaKind MayaKindOf(std::string_view word) {
    const auto* const found = std::find(std::begin(kWords), std::end(kWords), word);
    return static_cast<MayaKind>(found - std::begin(kWords));
}

const char* ToText(MayaKind kind) {
    return kWords[static_cast<int>(kind)];
}

double MayaSlope(MayaKind kind, bool isIn, const Vector2D<double>* previous, const Vector2D<double>& key,
                 const Vector2D<double>* next) {
    const double left = previous ? Chord(*previous, key) : 0.0;
    const double right = next ? Chord(key, *next) : 0.0;
    const bool isInner = previous && next;
    const double smooth = isInner ? Chord(*previous, *next) : previous ? left : right;
    switch (kind) {
    case MayaKind::Linear:
    case MayaKind::Slow:
    case MayaKind::Fast:
        return isIn ? left : right;
    case MayaKind::Spline:
    case MayaKind::Global:
    case MayaKind::Unknown:
        return smooth;
    case MayaKind::Clamped: {
        constexpr double kNear = 0.05;
        const bool isNear =
            (previous && std::fabs(previous->y - key.y) <= kNear) || (next && std::fabs(next->y - key.y) <= kNear);
        return isNear ? 0.0 : smooth;
    }
    case MayaKind::Plateau:
    case MayaKind::Auto:
    case MayaKind::AutoCustom:
        return isInner ? Restrained(smooth, left, right, kind != MayaKind::Plateau) : 0.0;
    case MayaKind::AutoEase:
    case MayaKind::AutoMix: {
        if (!isInner) return 0.0;
        double part = (key.x - previous->x) / (next->x - previous->x);
        if (kind == MayaKind::AutoEase) {
            const double g = part - 0.5;
            part = 0.5 + g * (1.5 - 2.0 * g * g);
        }
        return Restrained((1.0 - part) * left + part * right, left, right, true);
    }
    default:
        return 0.0;
    }
}

bool LimitMayaHandles(double width, Vector2D<double>& out, Vector2D<double>& in) {
    const double x1 = out.x / width;
    const double x2 = in.x / width;
    if (x1 <= 1.0 && x2 <= 1.0) return false;
    if (x1 * x1 + x2 * x2 + x1 * x2 - 2.0 * (x1 + x2) + 1.0 <= 0.0) return false;
    double first = x1;
    double second = 1.0 / 3.0;
    if (x1 < 4.0 / 3.0) {
        // The roots of X^2 + (x1 - 2) X + (x1 - 1)^2 = 0.
        const double root = std::sqrt(std::max(0.0, (x1 - 2.0) * (x1 - 2.0) - 4.0 * (x1 - 1.0) * (x1 - 1.0)));
        second = std::clamp(x2, 0.5 * (2.0 - x1 - root), 0.5 * (2.0 - x1 + root));
    } else {
        first = 4.0 / 3.0;
    }
    const auto reach = [](Vector2D<double>& handle, double from, double to) {
        if (from > 0.0) handle = {handle.x * (to / from), handle.y * (to / from)};
    };
    reach(out, x1, first);
    reach(in, x2, second);
    return true;
}

double PlateauSlope(bool isIn, const Vector2D<double>& previous, const Vector2D<double>& key,
                    const Vector2D<double>& next) {
    if ((key.y - previous.y) * (next.y - key.y) <= 0.0) return 0.0;
    const double slope = Chord(previous, next);
    const Vector2D<double>& other = isIn ? previous : next;
    const double tip = key.y + slope * (other.x - key.x) / 3.0;
    return tip < std::min(key.y, other.y) || tip > std::max(key.y, other.y) ? 0.0 : slope;
}

double MayaFrameRate(std::string_view unit) {
    for (const auto& one : kRates)
        if (unit == one.word) return one.rate;
    double rate = 0.0;
    const bool isRate = unit.size() > 3 && unit.substr(unit.size() - 3) == "fps"
                        && ParseNumber(unit.substr(0, unit.size() - 3), rate) && rate > 0.0;
    return isRate ? rate : 0.0;
}

double MayaClockSeconds(std::string_view unit) {
    for (const auto& one : kClocks)
        if (unit == one.word) return one.seconds;
    return 0.0;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
