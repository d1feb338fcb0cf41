#pragma once

#include "FCurveLib/Exception.h"
#include "FCurveLib/Export.h"
#include "FCurveLib/FallbackExpressionParser.h"
#include "FCurveLib/Forward.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The formula language: turns a text such as "sin(x*0.1)*10 + 3*x**2" into an interpolator.
///
///     sum      = product { ("+" | "-") product } .
///     product  = signed { ("*" | "/" | "%") signed } .
///     signed   = { "+" | "-" } power .                --x is x
///     power    = primary [ "**" signed ] .            2**3**2 is 2**9, -2**2 is -(2**2)
///     primary  = number | name | name "(" [ argument { "," argument } ] ")" | "(" sum ")" .
///     argument = sum | string .
///
/// Names are x, pi, e, functions as sin, and what makers know: its own give the kinds that repeat a curve, "cycle()" or
/// "cycle". Values, domains, derivatives and extents: docs/formulas.md. A clone of a formula is deep.
class FCURVELIB_API DefaultFallbackParser : public FallbackExpressionParser {
public:
    /// \name Make
    /// A parser of the language above. Copies share the makers.
    /// @{
    DefaultFallbackParser();
    DefaultFallbackParser(const DefaultFallbackParser&);
    DefaultFallbackParser& operator=(const DefaultFallbackParser&);
    ~DefaultFallbackParser() override;
    /// @}

    /// \name Limits: a text beyond them is an error. Parsing takes time and memory linear in the text.
    /// @{

    /// In bytes.
    static constexpr std::size_t getMaxLength() noexcept { return 65536; }
    /// Of parentheses, arguments, signs and powers within each other.
    static constexpr std::size_t getMaxDepth() noexcept { return 256; }
    /// @}

    /// \name Parse
    /// Any number of threads may parse at once as long as none sets the callback or changes the makers (the makers
    /// are then called from several threads).
    /// @{

    /// An interpolator with the text as its expression; an empty pointer for a text that is not understood, after the
    /// error callback has been told why. Null counts as the empty text. Throws nothing but std::bad_alloc and what the
    /// callback throws. A text that is nothing but a call that a maker answers gives the maker's interpolator itself,
    /// or a clone of one that the maker holds on to.
    std::shared_ptr<Interpolator> parse(const char* expression) override;

    /// The same, but throws ParseError or one of the classes derived from it, and does not call the error callback.
    std::shared_ptr<Interpolator> parseOrThrow(const char* expression) const;
    /// @}

    /// \name Names of the host's own
    /// A maker is asked for every name that the language does not define: makeName for a bare name, makeFunction for
    /// one with parentheses, with the parsed arguments. The maker added last is asked first. What it returns is one
    /// operand of the formula, evaluated and differentiated by its own operations; a NumberInterp counts as that
    /// number.
    ///
    ///     parser.addMaker(std::make_shared<NoiseMaker>());
    ///     InterpolatorFactory::setParserFallback(&parser);
    ///
    /// A maker that throws fails the text; std::bad_alloc passes through.
    /// @{

    /// Empty pointers, and makers that are there already, are ignored.
    void addMaker(std::shared_ptr<InterpMaker> maker);
    /// Nothing happens for one that is not there.
    void removeMaker(const InterpMaker& maker);
    /// @}

    /// \name Failures
    /// Why a text is not a formula. what() names the class.
    /// @{

    /// Base of the others. Raised itself for a text beyond the limits, and where a maker threw.
    class FCURVELIB_API ParseError : public Exception {
    public:
        /// The message is for users, in full sentences; the position counts bytes from the start of the text.
        ParseError(std::string message, std::size_t position);
        ParseError(const ParseError&) noexcept;
        ParseError& operator=(const ParseError&) noexcept;
        ~ParseError() override;

        const char* what() const noexcept override;
        const char* getMessage() const noexcept { return m_message->c_str(); }
        /// Where the token that could not be understood begins; the text's length where it ended too early.
        std::size_t getPosition() const noexcept { return m_position; }

    private:
        std::shared_ptr<const std::string> m_message; // shared: copies of exceptions must not throw
        std::size_t m_position;
    };

    /// Another token than the only possible one: "sin 1", "(1 2)", "sin(1, 2)".
    class FCURVELIB_API UnexpectedToken : public ParseError {
    public:
        using ParseError::ParseError;
        ~UnexpectedToken() override;
        const char* what() const noexcept override;
    };
    /// The text ends where an operand is expected: "1 +", "sin(", "".
    class FCURVELIB_API UnexpectedEnd : public ParseError {
    public:
        using ParseError::ParseError;
        ~UnexpectedEnd() override;
        const char* what() const noexcept override;
    };
    /// Something else than a number, a name or an opening parenthesis where an operand is expected: "1 + * 2".
    class FCURVELIB_API PrimitiveExpected : public ParseError {
    public:
        using ParseError::ParseError;
        ~PrimitiveExpected() override;
        const char* what() const noexcept override;
    };
    /// Characters that are no token: "1 # 2", a string without end, a number that no double can hold.
    class FCURVELIB_API ErrorToken : public ParseError {
    public:
        using ParseError::ParseError;
        ~ErrorToken() override;
        const char* what() const noexcept override;
    };
    /// A parenthesis without its counterpart: "(1 + 2", "1 + 2)".
    class FCURVELIB_API UnbalancedParens : public ParseError {
    public:
        using ParseError::ParseError;
        ~UnbalancedParens() override;
        const char* what() const noexcept override;
    };
    /// Something follows the whole expression: "1 2".
    class FCURVELIB_API ExtraTokens : public ParseError {
    public:
        using ParseError::ParseError;
        ~ExtraTokens() override;
        const char* what() const noexcept override;
    };
    /// A name that neither the language nor a maker knows.
    class FCURVELIB_API UnrecognizedName : public ParseError {
    public:
        using ParseError::ParseError;
        ~UnrecognizedName() override;
        const char* what() const noexcept override;
    };
    /// A function that neither the language nor a maker knows, or not with these arguments.
    class FCURVELIB_API UnrecognizedFunction : public ParseError {
    public:
        using ParseError::ParseError;
        ~UnrecognizedFunction() override;
        const char* what() const noexcept override;
    };
    /// @}

private:
    std::vector<std::shared_ptr<InterpMaker>> m_makers; // asked from back to front
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
