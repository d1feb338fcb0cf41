#include "FCurveLib/FindCurve.h"

#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveContainer.h"

#include <cstring>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

std::shared_ptr<FCurve> FindCurve(FCurveContainer& container, const char* name) {
    if (!name) name = "";
    for (FCurve& curve : container)
        if (std::strcmp(curve.getName(), name) == 0) return curve.getShared();
    return nullptr;
}
std::shared_ptr<const FCurve> FindCurve(const FCurveContainer& container, const char* name) {
    return FindCurve(const_cast<FCurveContainer&>(container), name);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
