#include "interp/RepeatMaker.h"

#include "FCurveLib/Interpolator.h"
#include "interp/Kinds.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

std::shared_ptr<Interpolator> RepeatMaker::makeName(const char* name) {
    const KindRow* const kind = FindKind(name);
    return kind && kind->repeats() ? kind->create() : nullptr;
}
std::shared_ptr<Interpolator> RepeatMaker::makeFunction(const char* name,
                                                        const std::list<InterpMaker::Argument>& args) {
    return args.empty() ? makeName(name) : nullptr;
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
