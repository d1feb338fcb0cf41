#include "FCurveLib/HoudiniClipFormat.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace HoudiniClipFormat {

const FormatType& GetFormatType() {
    static const FormatType type("hClip", "Houdini Clip", "Clip");
    return type;
}

const char* ClipError::what() const noexcept {
    return "VEM_FN::FCurveLib::HoudiniClipFormat::ClipError";
}
const char* UnexpectedWord::what() const noexcept {
    return "VEM_FN::FCurveLib::HoudiniClipFormat::UnexpectedWord";
}
const char* BadNumber::what() const noexcept {
    return "VEM_FN::FCurveLib::HoudiniClipFormat::BadNumber";
}
const char* WrongTrackCount::what() const noexcept {
    return "VEM_FN::FCurveLib::HoudiniClipFormat::WrongTrackCount";
}
const char* LimitExceeded::what() const noexcept {
    return "VEM_FN::FCurveLib::HoudiniClipFormat::LimitExceeded";
}

} // namespace HoudiniClipFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
