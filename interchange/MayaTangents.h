#pragma once

// Maya's rules for tangents, in frames and the curve's unit.

#include <FCurveLib/Vector2D.h>

#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

enum class MayaKind : unsigned char {
    Fixed,
    Linear,
    Flat,
    Spline,
    Step,
    StepNext,
    Slow,
    Fast,
    Clamped,
    Plateau,
    Auto,
    AutoEase,
    AutoMix,
    AutoCustom,
    Global,
    Unknown
};

MayaKind MayaKindOf(std::string_view word);
const char* ToText(MayaKind kind);

// The slope that an automatic kind gives a side of a key; null pointers where there is no neighbour. 0 for step kinds.
double MayaSlope(MayaKind kind, bool isIn, const Vector2D<double>* previous, const Vector2D<double>& key,
                 const Vector2D<double>* next);

// Where weighted handles overlap, Maya keeps the first and changes the second; handles as offsets, their x >= 0 on both
// sides. Returns whether one was changed.
bool LimitMayaHandles(double width, Vector2D<double>& out, Vector2D<double>& in);

// What Tangent::Plateau gives, as a slope: for a key with both neighbours.
double PlateauSlope(bool isIn, const Vector2D<double>& previous, const Vector2D<double>& key,
                    const Vector2D<double>& next);

// The frames a second that a time unit counts; 0 for another word. Clock units have the seconds that they last.
double MayaFrameRate(std::string_view unit);
double MayaClockSeconds(std::string_view unit);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
