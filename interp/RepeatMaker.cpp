#include "interp/RepeatMaker.h"

#include "FCurveLib/Cycle.h"
#include "FCurveLib/CycleOffset.h"
#include "FCurveLib/Mirror.h"

#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

std::shared_ptr<Interpolator> RepeatMaker::makeFunction(const char* name,
                                                        const std::list<InterpMaker::Argument>& args) {
    const std::string_view text(name);
    if (!args.empty()) return nullptr;
    if (text == "cycle") return Cycle::create();
    if (text == "cycle_offset") return CycleOffset::create();
    if (text == "mirror") return Mirror::create();
    return nullptr;
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
