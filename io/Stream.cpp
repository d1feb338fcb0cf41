#include "FCurveLib/Stream.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

const char* Stream::StreamException::what() const noexcept {
    return "VEM_FN::FCurveLib::Stream::StreamException";
}

Stream::~Stream() = default;

} // namespace v19
} // namespace VEM_FN::FCurveLib
