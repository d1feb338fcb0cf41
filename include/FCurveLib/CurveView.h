#pragma once

#include "FCurveLib/Vector2D.h"

#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// What a window shows of curves: the frames from left to right and the values from bottom to top, in width by height
/// pixels. Pixels count from the upper left corner, y downward.
///
///     CurveView view{0, 240, -10, 10, 1920, 400};          // frames 0 to 240, values -10 to 10
///     view.toPixel({120, 0});                         // (960, 200): the middle
struct CurveView {
    double left = 0.0;
    double right = 1.0;
    double bottom = 0.0;
    double top = 1.0;
    double width = 0.0;
    double height = 0.0;

    /// The most pixels in either direction.
    static constexpr double mostPixels = 1e6;

    /// Whether anything can be seen: left < right, bottom < top, finite numbers and differences, at least one pixel and
    /// at most mostPixels in either direction. What takes a view finds nothing in an invalid one.
    bool isValid() const noexcept {
        const auto isSpan = [](double low, double high) {
            return std::isfinite(low) && std::isfinite(high) && low < high && std::isfinite(high - low);
        };
        const auto isSize = [](double pixels) { return pixels >= 1.0 && pixels <= mostPixels; };
        return isSpan(left, right) && isSpan(bottom, top) && isSize(width) && isSize(height);
    }

    /// \name From curves to pixels and back
    /// Also outside the view.
    /// @{
    double pixelsPerFrame() const noexcept { return width / (right - left); }
    double pixelsPerValue() const noexcept { return height / (top - bottom); }
    double toPixelX(double frame) const noexcept { return (frame - left) / (right - left) * width; }
    double toPixelY(double value) const noexcept { return (top - value) / (top - bottom) * height; }
    double toFrame(double pixelX) const noexcept { return left + pixelX / width * (right - left); }
    double toValue(double pixelY) const noexcept { return top - pixelY / height * (top - bottom); }
    Vector2D<double> toPixel(const Vector2D<double>& point) const noexcept {
        return {toPixelX(point.x), toPixelY(point.y)};
    }
    Vector2D<double> toPoint(const Vector2D<double>& pixel) const noexcept {
        return {toFrame(pixel.x), toValue(pixel.y)};
    }
    /// @}
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
