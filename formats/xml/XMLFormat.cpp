#include "FCurveLib/XMLFormat.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace XMLFormat {

const FormatType& GetFormatType() {
    static const FormatType type("xml", "XML", "fcrvx");
    return type;
}

XMLError::XMLError(const std::string& message, std::uint64_t line, std::uint64_t column, const std::string& name)
    : FormatError(message, line, column), m_name(name.empty() ? nullptr : std::make_shared<const std::string>(name)) {}
const char* XMLError::what() const noexcept {
    return "VEM_FN::FCurveLib::XMLFormat::XMLError";
}
const char* XMLError::name() const noexcept {
    return m_name ? m_name->c_str() : "";
}

ParseError::ParseError(int code, const std::string& message, std::uint64_t line, std::uint64_t column)
    : XMLError(message, line, column), m_code(code) {}
const char* ParseError::what() const noexcept {
    return "VEM_FN::FCurveLib::XMLFormat::ParseError";
}

const char* DoctypeRefused::what() const noexcept {
    return "VEM_FN::FCurveLib::XMLFormat::DoctypeRefused";
}
const char* UnexpectedTag::what() const noexcept {
    return "VEM_FN::FCurveLib::XMLFormat::UnexpectedTag";
}
const char* MissingTag::what() const noexcept {
    return "VEM_FN::FCurveLib::XMLFormat::MissingTag";
}
const char* UnexpectedText::what() const noexcept {
    return "VEM_FN::FCurveLib::XMLFormat::UnexpectedText";
}
const char* BadAttribute::what() const noexcept {
    return "VEM_FN::FCurveLib::XMLFormat::BadAttribute";
}

UnsupportedVersion::UnsupportedVersion(unsigned major, unsigned supported, std::uint64_t line, std::uint64_t column)
    : XMLError("The document has version " + std::to_string(major) + " of the format; version "
                   + std::to_string(supported) + " can be read.",
               line, column, "version"),
      m_major(major), m_supported(supported) {}
const char* UnsupportedVersion::what() const noexcept {
    return "VEM_FN::FCurveLib::XMLFormat::UnsupportedVersion";
}

const char* LimitExceeded::what() const noexcept {
    return "VEM_FN::FCurveLib::XMLFormat::LimitExceeded";
}
const char* RefusedCall::what() const noexcept {
    return "VEM_FN::FCurveLib::XMLFormat::RefusedCall";
}
const char* NotFinite::what() const noexcept {
    return "VEM_FN::FCurveLib::XMLFormat::NotFinite";
}

} // namespace XMLFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
