#include "FCurveLib/FormatExceptions.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

const char* UnknownFormat::what() const noexcept {
    return "VEM_FN::FCurveLib::UnknownFormat";
}

FormatError::FormatError() noexcept = default;
FormatError::FormatError(const std::string& message, std::uint64_t line, std::uint64_t column)
    : m_message(std::make_shared<const std::string>(message)), m_line(line), m_column(column) {}
FormatError::FormatError(const FormatError&) noexcept = default;
FormatError& FormatError::operator=(const FormatError&) noexcept = default;
FormatError::~FormatError() = default;

const char* FormatError::what() const noexcept {
    return "VEM_FN::FCurveLib::FormatError";
}
const char* FormatError::message() const noexcept {
    return m_message ? m_message->c_str() : "";
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
