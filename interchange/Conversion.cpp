#include "FCurveInterchange/Conversion.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

thread_local Conversion* innermost = nullptr;

} // namespace

Conversion::Conversion(ConversionReport& report, ConversionOptions options)
    : m_options(std::move(options)), m_report(&report), m_outer(innermost) {
    innermost = this;
}

Conversion::Conversion(ConversionOptions options)
    : m_options(std::move(options)), m_report(nullptr), m_outer(innermost) {
    innermost = this;
}

Conversion::~Conversion() {
    innermost = m_outer;
}

const ConversionOptions& Conversion::options() noexcept {
    static const ConversionOptions defaults;
    return innermost ? innermost->m_options : defaults;
}

ConversionReport* Conversion::report() noexcept {
    return innermost ? innermost->m_report : nullptr;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
