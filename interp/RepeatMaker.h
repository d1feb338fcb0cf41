#pragma once

#include "FCurveLib/InterpMaker.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// Brings the kinds that repeat a curve into formulas: "cycle()", "cycle_offset()", "mirror()", also without
// parentheses.
class RepeatMaker final : public InterpMaker {
public:
    std::shared_ptr<Interpolator> makeName(const char* name) override;
    std::shared_ptr<Interpolator> makeFunction(const char* name, const std::list<InterpMaker::Argument>& args) override;
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
