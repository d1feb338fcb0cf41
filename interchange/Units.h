#pragma once

// Units of lengths and angles, as kLinearUnit, kAngularUnit and files call them.

#include <cstddef>
#include <string_view>

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

struct AngularUnit {
    const char* name;
    const char* longName;
    double radians;
};
constexpr AngularUnit kAngularUnits[] = {{"deg", "degree", 3.14159265358979323846 / 180.0},
                                         {"rad", "radian", 1.0},
                                         {"min", "minute", 3.14159265358979323846 / 10800.0},
                                         {"sec", "second", 3.14159265358979323846 / 648000.0}};

// The unit of a short or a long name; null for another.
template<class Unit, std::size_t Count>
const Unit* FindUnit(const Unit (&units)[Count], std::string_view name) {
    for (const Unit& unit : units)
        if (name == unit.name || name == unit.longName) return &unit;
    return nullptr;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
