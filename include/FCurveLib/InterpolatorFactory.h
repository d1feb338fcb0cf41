#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FallbackExpressionParser.h"
#include "FCurveLib/Forward.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Turns expression texts into interpolators and interpolators into texts.
///
/// The texts are "constant()", "linear()", "bezier()" and the other built-in kinds (begin() lists them), numbers, and
/// formulas of x. Any number of threads may create interpolators and walk the kinds at once; the parser and the
/// callback are set while none does.
class FCURVELIB_API InterpolatorFactory {
public:
    InterpolatorFactory() = delete;

    /// \name Texts and interpolators
    /// @{

    /// The interpolator that a text stands for; never empty, null counts as the empty text.
    ///
    ///  - A number, with or without sign and exponent: a new NumberInterp. Texts beyond the range of doubles, "inf" and
    ///    "nan" are no numbers.
    ///  - A built-in kind, "linear()": the one shared instance of that kind. Its expression stays as it is, however the
    ///    given text is spaced and whatever Interpolator::setExpression is told.
    ///  - Whatever else the fallback parser understands; its result takes the given text as its expression.
    ///  - Anything else: a new UnknownExpression that keeps the text, after the error callback has been told why.
    ///
    /// White space does not matter, case does. Exceptions of a host's own parser pass through.
    static std::shared_ptr<Interpolator> create(const char* expression);

    /// Writes the interpolator's expression into the text; "constant()" for an empty one.
    static void getExpression(const Interpolator& interpolator, std::string& text);
    /// @}

    /// \name Fallback parser
    /// @{

    /// The parser that is asked from now on; not owned, it must live as long as it is set. It takes the current error
    /// callback over at once. Null returns to the default parser.
    static void setParserFallback(FallbackExpressionParser* parser);
    /// Hears why texts failed, from whichever parser is in use; not owned, null for nobody.
    static void setErrorCallback(const FallbackExpressionParser::ErrorCallback* callback);
    /// @}

    /// \name The built-in kinds
    /// Pairs of expression text and shared instance, in the order of the texts.
    /// @{
    using const_iterator = std::map<std::string, std::shared_ptr<Interpolator>, std::less<>>::const_iterator;
    using iterator = const_iterator;
    static const_iterator begin();
    static const_iterator end();
    /// @}

private:
    static const std::map<std::string, std::shared_ptr<Interpolator>, std::less<>>& getKinds();
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
