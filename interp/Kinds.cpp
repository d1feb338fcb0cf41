#include "interp/Kinds.h"

#include "FCurveLib/Bezier.h"
#include "FCurveLib/Constant.h"
#include "FCurveLib/ConstantNext.h"
#include "FCurveLib/Cycle.h"
#include "FCurveLib/CycleOffset.h"
#include "FCurveLib/Ease.h"
#include "FCurveLib/EaseIn.h"
#include "FCurveLib/EaseOut.h"
#include "FCurveLib/Linear.h"
#include "FCurveLib/MatchIn.h"
#include "FCurveLib/MatchOut.h"
#include "FCurveLib/Mirror.h"
#include "FCurveLib/NumberInterp.h"
#include "FCurveLib/Spline.h"
#include "FCurveLib/UnknownExpression.h"
#include "interp/Formula.h"

#include <typeinfo>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

Kind KindOf(const Interpolator& interpolator) noexcept {
    static constexpr struct {
        const std::type_info* type;
        Kind kind;
    } kinds[] = {
        {&typeid(Bezier), Kind::Local},
        {&typeid(Linear), Kind::Local},
        {&typeid(Constant), Kind::Local},
        {&typeid(Match), Kind::Match},
        {&typeid(Formula), Kind::Formula},
        {&typeid(Cycle), Kind::Cycle},
        {&typeid(Spline), Kind::Local},
        {&typeid(Ease), Kind::Local},
        {&typeid(EaseIn), Kind::Local},
        {&typeid(EaseOut), Kind::Local},
        {&typeid(MatchIn), Kind::MatchIn},
        {&typeid(MatchOut), Kind::MatchOut},
        {&typeid(CycleOffset), Kind::CycleOffset},
        {&typeid(Mirror), Kind::Mirror},
        {&typeid(ConstantNext), Kind::Local},
        {&typeid(NumberInterp), Kind::Local},
        {&typeid(UnknownExpression), Kind::Local},
    };
    // Deliberate: by address, which is much faster than by name. Only the library makes objects of these classes, so
    // they all carry the library's own type_info; one that did not would pass for a host's, which is safe.
    const std::type_info* const type = &typeid(interpolator);
    for (const auto& known : kinds)
        if (known.type == type) return known.kind;
    return Kind::Host;
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
