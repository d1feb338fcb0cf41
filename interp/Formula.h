#pragma once

#include "FCurveLib/Interpolator.h"
#include "interp/FormulaProgram.h"
#include "interp/Kinds.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

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
    const std::vector<std::shared_ptr<Interpolator>>& leaves() const noexcept { return m_program.leaves(); }

    // FormulaProgram::run, which reads only one leaf of each repeating kind: they all have the same value, and it may
    // take long to find. So a formula of n of them beside a match, which reads the formula again, takes time in n.
    template<class V, class ReadLeaf>
    V run(double x, const ReadLeaf& readLeaf) const;

private:
    Formula(const Formula&) = default;

    FormulaProgram m_program;
    bool m_repeatsMore; // has several leaves of repeating kinds
};

template<class V, class ReadLeaf>
V Formula::run(double x, const ReadLeaf& readLeaf) const {
    V values[static_cast<std::size_t>(Kind::Formula)]; // by kind; deliberate: not initialised
    unsigned known = 0;
    return m_program.run<V>(x, [&](const Interpolator& leaf) {
        if (!m_repeatsMore) return readLeaf(leaf);
        const KindRow& row = KindOf(leaf);
        if (!row.repeats()) return readLeaf(leaf);
        const auto kind = static_cast<unsigned>(row.kind);
        if (!(known >> kind & 1U)) values[kind] = readLeaf(leaf);
        known |= 1U << kind;
        return values[kind];
    });
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
