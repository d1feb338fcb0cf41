#pragma once

#include <string>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// v -> scale * v + offset.
struct AffineMap {
    double scale = 1.0;
    double offset = 0.0;

    double operator()(double v) const noexcept { return scale * v + offset; }
    bool isIdentity() const noexcept { return scale == 1.0 && offset == 0.0; }
};

// The formula that has the value y(v) at x(a) where the given one has v at a. Functions that read the curve, like
// cycle(), are taken to read the mapped curve. Empty for a text that is not a sequence of tokens. Precondition: neither
// scale is 0.
//
// Maps that an earlier image wrote are recognised and combined with the new ones, so that texts do not grow, and an
// image of an image under the inverse map is the first text.
std::string FormulaImage(std::string_view formula, const AffineMap& x, const AffineMap& y);

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
