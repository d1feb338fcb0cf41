#include "interp/DefaultParser.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

std::unique_ptr<FallbackExpressionParser> Private::MakeDefaultParser() {
    return nullptr;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
