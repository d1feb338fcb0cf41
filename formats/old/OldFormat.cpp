#include "FCurveLib/OldFormat.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace OldFormat {

const FormatType& GetFormatType() {
    static const FormatType type("tov_fcurve", "Old FCurve", "fcrv");
    return type;
}

const char* OldError::what() const noexcept {
    return "VEM_FN::FCurveLib::OldFormat::OldError";
}
const char* UnexpectedWord::what() const noexcept {
    return "VEM_FN::FCurveLib::OldFormat::UnexpectedWord";
}
const char* BadNumber::what() const noexcept {
    return "VEM_FN::FCurveLib::OldFormat::BadNumber";
}
const char* LimitExceeded::what() const noexcept {
    return "VEM_FN::FCurveLib::OldFormat::LimitExceeded";
}

} // namespace OldFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
