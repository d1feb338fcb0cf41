#include "interp/DefaultParser.h"

#include "FCurveLib/DefaultFallbackParser.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

std::unique_ptr<FallbackExpressionParser> Private::MakeDefaultParser() {
    return std::make_unique<DefaultFallbackParser>();
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
