#pragma once

#include "FCurveLib/Interpolator.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A number: the same value wherever x lies. Its expression is the number's text.
class FCURVELIB_API NumberInterp final : public Interpolator {
public:
    /// The expression is the shortest text that reads back to the same number ("2.5"). InterpolatorFactory sets the
    /// text it was given instead. Infinities and NaN have no text that InterpolatorFactory would read back.
    static std::shared_ptr<Interpolator> create(double number);

    double getNumber() const noexcept { return m_number; }

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    /// The number, without looking at any x.
    void getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const override;

private:
    explicit NumberInterp(double number);
    NumberInterp(const NumberInterp&) = default;

    double m_number;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
