#include "interchange/gltf/Matrix.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

namespace {

using Vector = std::array<double, 3>;

double Dot(const Vector& a, const Vector& b) noexcept {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Vector Cross(const Vector& a, const Vector& b) noexcept {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// Of an orthonormal matrix with these columns. The largest of the four components is found by its square, so that
// nothing small divides.
std::array<double, 4> QuaternionOf(const std::array<Vector, 3>& c) noexcept {
    const double squares[4] = {1.0 + c[0][0] - c[1][1] - c[2][2], 1.0 - c[0][0] + c[1][1] - c[2][2],
                               1.0 - c[0][0] - c[1][1] + c[2][2], 1.0 + c[0][0] + c[1][1] + c[2][2]};
    const auto largest = static_cast<std::size_t>(std::max_element(squares, squares + 4) - squares);
    const double xy = c[0][1] + c[1][0];
    const double yz = c[1][2] + c[2][1];
    const double zx = c[2][0] + c[0][2];
    const double xw = c[1][2] - c[2][1];
    const double yw = c[2][0] - c[0][2];
    const double zw = c[0][1] - c[1][0];
    // Each row is four times the largest component times all of them.
    const double rows[4][4] = {
        {squares[0], xy, zx, xw}, {xy, squares[1], yz, yw}, {zx, yz, squares[2], zw}, {xw, yw, zw, squares[3]}};
    const double* const row = rows[largest];
    const double length = std::sqrt(row[0] * row[0] + row[1] * row[1] + row[2] * row[2] + row[3] * row[3]);
    return {row[0] / length, row[1] / length, row[2] / length, row[3] / length};
}

} // namespace

std::optional<Placement> PlacementOf(const std::array<double, 16>& matrix) noexcept {
    constexpr double kStraight = 1e-5; // of a cosine: matrices have the digits of single precision
    if (!std::all_of(matrix.begin(), matrix.end(), [](double number) { return std::isfinite(number); }))
        return std::nullopt;
    if (matrix[3] != 0.0 || matrix[7] != 0.0 || matrix[11] != 0.0 || matrix[15] != 1.0) return std::nullopt;
    std::array<Vector, 3> columns{};
    Placement placement{{matrix[12], matrix[13], matrix[14]}, {}, {}};
    for (std::size_t i = 0; i < 3; ++i) {
        columns[i] = {matrix[4 * i], matrix[4 * i + 1], matrix[4 * i + 2]};
        const double length = std::hypot(columns[i][0], columns[i][1], columns[i][2]);
        if (!(length > 0.0) || !std::isfinite(length)) return std::nullopt;
        for (double& number : columns[i]) number /= length;
        placement.scale[i] = length;
    }
    for (std::size_t i = 0; i < 3; ++i)
        if (std::fabs(Dot(columns[i], columns[(i + 1) % 3])) > kStraight) return std::nullopt;
    if (Dot(Cross(columns[0], columns[1]), columns[2]) < 0.0) {
        placement.scale[0] = -placement.scale[0];
        for (double& number : columns[0]) number = -number;
    }
    placement.rotation = QuaternionOf(columns);
    return placement;
}

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
