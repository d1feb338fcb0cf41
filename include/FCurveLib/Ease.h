#pragma once

#include "FCurveLib/ThirdsInterp.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "ease()": leaves the left key flat and arrives at the right key flat.
///
///     y1 = yL, y2 = yR
///
/// A segment that lacks a key is Constant.
class FCURVELIB_API Ease final : public Private::ThirdsInterp {
public:
    static std::shared_ptr<Interpolator> create();

    std::shared_ptr<Interpolator> clone() override;

private:
    Ease();

    Heights getHeights(const Segment& segment) const override;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
