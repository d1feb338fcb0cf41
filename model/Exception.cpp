#include "FCurveLib/Exception.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

Exception::Exception() noexcept = default;
Exception::Exception(const Exception&) noexcept = default;
Exception& Exception::operator=(const Exception&) noexcept = default;
Exception::~Exception() = default;

const char* Exception::what() const noexcept {
    return "VEM_FN::FCurveLib::Exception";
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
