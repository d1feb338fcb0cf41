#include "FCurveLib/TextFormat.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace TextFormat {

const FormatType& GetFormatType() {
    static const FormatType type("text", "Text", "fcrvt");
    return type;
}

const char* TextError::what() const noexcept {
    return "VEM_FN::FCurveLib::TextFormat::TextError";
}
const char* UnexpectedWord::what() const noexcept {
    return "VEM_FN::FCurveLib::TextFormat::UnexpectedWord";
}
const char* BadNumber::what() const noexcept {
    return "VEM_FN::FCurveLib::TextFormat::BadNumber";
}
const char* BadText::what() const noexcept {
    return "VEM_FN::FCurveLib::TextFormat::BadText";
}
const char* UnsupportedVersion::what() const noexcept {
    return "VEM_FN::FCurveLib::TextFormat::UnsupportedVersion";
}
const char* LimitExceeded::what() const noexcept {
    return "VEM_FN::FCurveLib::TextFormat::LimitExceeded";
}

} // namespace TextFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
