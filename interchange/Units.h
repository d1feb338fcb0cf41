#pragma once

// Units of length, as kLinearUnit and files call them.

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

struct LinearUnit {
    const char* name;
    const char* longName;
    double meters;
};
constexpr LinearUnit kLinearUnits[] = {{"mm", "millimeter", 0.001}, {"cm", "centimeter", 0.01}, {"m", "meter", 1.0},
                                       {"km", "kilometer", 1000.0}, {"in", "inch", 0.0254},     {"ft", "foot", 0.3048},
                                       {"yd", "yard", 0.9144},      {"mi", "mile", 1609.344}};

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
