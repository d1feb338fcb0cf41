#include "FCurveLib/DefaultFallbackParser.h"

#include "FCurveLib/InterpMaker.h"
#include "FCurveLib/Interpolator.h"
#include "interp/FormulaCompiler.h"
#include "interp/RepeatMaker.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

DefaultFallbackParser::DefaultFallbackParser() : m_makers{std::make_shared<Private::RepeatMaker>()} {}
DefaultFallbackParser::DefaultFallbackParser(const DefaultFallbackParser&) = default;
DefaultFallbackParser& DefaultFallbackParser::operator=(const DefaultFallbackParser&) = default;
DefaultFallbackParser::~DefaultFallbackParser() = default;

std::shared_ptr<Interpolator> DefaultFallbackParser::parse(const char* expression) {
    try {
        return parseOrThrow(expression);
    } catch (const ParseError& error) {
        if (const ErrorCallback* const callback = getErrorCallback())
            callback->error({error.getMessage(), error.what(), expression ? expression : "", error.getPosition()});
        return nullptr;
    }
}

std::shared_ptr<Interpolator> DefaultFallbackParser::parseOrThrow(const char* expression) const {
    const char* const begin = expression ? expression : "";
    std::size_t length = 0;
    while (length <= getMaxLength() && begin[length] != '\0') ++length;
    if (length > getMaxLength()) throw ParseError("There is an unknown error in the expression.", getMaxLength());
    return Private::CompileFormula(std::string_view(begin, length), m_makers);
}

void DefaultFallbackParser::addMaker(std::shared_ptr<InterpMaker> maker) {
    if (maker && std::find(m_makers.begin(), m_makers.end(), maker) == m_makers.end())
        m_makers.push_back(std::move(maker));
}

void DefaultFallbackParser::removeMaker(const InterpMaker& maker) {
    const auto isIt = [&](const std::shared_ptr<InterpMaker>& other) { return other.get() == &maker; };
    m_makers.erase(std::remove_if(m_makers.begin(), m_makers.end(), isIt), m_makers.end());
}

// --- failures --------------------------------------------------------------------------------------------------------

DefaultFallbackParser::ParseError::ParseError(std::string message, std::size_t position)
    : m_message(std::make_shared<const std::string>(std::move(message))), m_position(position) {}
DefaultFallbackParser::ParseError::ParseError(const ParseError&) noexcept = default;
DefaultFallbackParser::ParseError& DefaultFallbackParser::ParseError::operator=(const ParseError&) noexcept = default;

DefaultFallbackParser::ParseError::~ParseError() = default;
DefaultFallbackParser::UnexpectedToken::~UnexpectedToken() = default;
DefaultFallbackParser::UnexpectedEnd::~UnexpectedEnd() = default;
DefaultFallbackParser::PrimitiveExpected::~PrimitiveExpected() = default;
DefaultFallbackParser::ErrorToken::~ErrorToken() = default;
DefaultFallbackParser::UnbalancedParens::~UnbalancedParens() = default;
DefaultFallbackParser::ExtraTokens::~ExtraTokens() = default;
DefaultFallbackParser::UnrecognizedName::~UnrecognizedName() = default;
DefaultFallbackParser::UnrecognizedFunction::~UnrecognizedFunction() = default;

const char* DefaultFallbackParser::ParseError::what() const noexcept {
    return "VEM_FN::FCurveLib::DefaultFallbackParser::ParseError";
}
const char* DefaultFallbackParser::UnexpectedToken::what() const noexcept {
    return "VEM_FN::FCurveLib::DefaultFallbackParser::UnexpectedToken";
}
const char* DefaultFallbackParser::UnexpectedEnd::what() const noexcept {
    return "VEM_FN::FCurveLib::DefaultFallbackParser::UnexpectedEnd";
}
const char* DefaultFallbackParser::PrimitiveExpected::what() const noexcept {
    return "VEM_FN::FCurveLib::DefaultFallbackParser::PrimitiveExpected";
}
const char* DefaultFallbackParser::ErrorToken::what() const noexcept {
    return "VEM_FN::FCurveLib::DefaultFallbackParser::ErrorToken";
}
const char* DefaultFallbackParser::UnbalancedParens::what() const noexcept {
    return "VEM_FN::FCurveLib::DefaultFallbackParser::UnbalancedParens";
}
const char* DefaultFallbackParser::ExtraTokens::what() const noexcept {
    return "VEM_FN::FCurveLib::DefaultFallbackParser::ExtraTokens";
}
const char* DefaultFallbackParser::UnrecognizedName::what() const noexcept {
    return "VEM_FN::FCurveLib::DefaultFallbackParser::UnrecognizedName";
}
const char* DefaultFallbackParser::UnrecognizedFunction::what() const noexcept {
    return "VEM_FN::FCurveLib::DefaultFallbackParser::UnrecognizedFunction";
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
