#pragma once

#include "FCurveLib/Interpolator.h"
#include "interp/FormulaProgram.h"

#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// A parsed expression text. DefaultFallbackParser.h has the contract.
class Formula final : public Interpolator {
public:
    Formula(FormulaProgram program, const std::string& expression);

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    bool usesTangents() const override;
    void getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const override;
    double getFirstDerivative(double x, const Segment& segment) const override;
    double getSecondDerivative(double x, const Segment& segment) const override;

    const FormulaProgram& program() const noexcept { return m_program; }

private:
    Formula(const Formula&) = default;

    FormulaProgram m_program;
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
