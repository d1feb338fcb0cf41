#include "FCurveLib/FallbackExpressionParser.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

FallbackExpressionParser::ErrorCallback::ErrorCallback() noexcept = default;
FallbackExpressionParser::ErrorCallback::ErrorCallback(const ErrorCallback&) noexcept = default;
FallbackExpressionParser::ErrorCallback&
FallbackExpressionParser::ErrorCallback::operator=(const ErrorCallback&) noexcept = default;
FallbackExpressionParser::ErrorCallback::~ErrorCallback() = default;

FallbackExpressionParser::FallbackExpressionParser() noexcept = default;
FallbackExpressionParser::FallbackExpressionParser(const FallbackExpressionParser&) noexcept = default;
FallbackExpressionParser& FallbackExpressionParser::operator=(const FallbackExpressionParser&) noexcept = default;
FallbackExpressionParser::~FallbackExpressionParser() = default;

} // namespace v19
} // namespace VEM_FN::FCurveLib
