#include "FCurveLib/HoudiniChanFormat.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace HoudiniChanFormat {

const FormatType& GetFormatType() {
    static const FormatType type("hchan", "Houdini Channel", "chan");
    return type;
}

const char* ChanError::what() const noexcept {
    return "VEM_FN::FCurveLib::HoudiniChanFormat::ChanError";
}
const char* BadNumber::what() const noexcept {
    return "VEM_FN::FCurveLib::HoudiniChanFormat::BadNumber";
}

RaggedRow::RaggedRow(std::size_t expected, std::size_t found, std::uint64_t line, std::uint64_t column)
    : ChanError("The row has " + std::to_string(found) + " columns where the first one has " + std::to_string(expected)
                    + ".",
                line, column),
      m_expected(expected), m_found(found) {}
const char* RaggedRow::what() const noexcept {
    return "VEM_FN::FCurveLib::HoudiniChanFormat::RaggedRow";
}

const char* NoData::what() const noexcept {
    return "VEM_FN::FCurveLib::HoudiniChanFormat::NoData";
}
const char* BadFrame::what() const noexcept {
    return "VEM_FN::FCurveLib::HoudiniChanFormat::BadFrame";
}
const char* BinaryFile::what() const noexcept {
    return "VEM_FN::FCurveLib::HoudiniChanFormat::BinaryFile";
}
const char* LimitExceeded::what() const noexcept {
    return "VEM_FN::FCurveLib::HoudiniChanFormat::LimitExceeded";
}

} // namespace HoudiniChanFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
