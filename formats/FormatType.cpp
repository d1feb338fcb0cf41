#include "FCurveLib/FormatType.h"

#include "formats/Text.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::OrEmpty;

FormatType::FormatType() = default;
FormatType::FormatType(const char* name, const char* title, const char* extension)
    : m_name(OrEmpty(name)), m_title(OrEmpty(title)), m_extension(OrEmpty(extension)) {}
FormatType::FormatType(const FormatType&) = default;
FormatType::FormatType(FormatType&&) noexcept = default;
FormatType& FormatType::operator=(const FormatType&) = default;
FormatType& FormatType::operator=(FormatType&&) noexcept = default;
FormatType::~FormatType() = default;

void FormatType::setTitle(const char* title) {
    m_title = OrEmpty(title);
}
void FormatType::setExtension(const char* extension) {
    m_extension = OrEmpty(extension);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
