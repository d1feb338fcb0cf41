#pragma once

// A node's matrix as translation, rotation and scale, which animations need.

#include <array>
#include <optional>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

struct Placement {
    std::array<double, 3> translation;
    std::array<double, 4> rotation; // x y z w, normalised
    std::array<double, 3> scale;
};

// Of a matrix column by column. Nothing where it shears, flattens, projects, or is not finite; one that mirrors has a
// negative scale in x.
std::optional<Placement> PlacementOf(const std::array<double, 16>& matrix) noexcept;

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
