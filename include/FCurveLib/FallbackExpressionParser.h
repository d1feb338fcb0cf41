#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstddef>
#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Turns the expression texts that InterpolatorFactory does not settle itself into interpolators. The factory's own is
/// DefaultFallbackParser; a host puts another in its place with InterpolatorFactory::setParserFallback.
class FCURVELIB_API FallbackExpressionParser {
public:
    /// Why a text failed. The texts live as long as the call that passes the record.
    struct Error {
        const char* message;    ///< for users, in full sentences
        const char* type;       ///< the failure's class, "VEM_FN::FCurveLib::DefaultFallbackParser::UnbalancedParens"
        const char* expression; ///< the whole text that was parsed
        std::size_t position;   ///< where in it, in bytes from its start; its length for a text that ends too early
    };

    /// Hears why texts failed. Not owned by whoever it is given to: it must live as long as it is set.
    class FCURVELIB_API ErrorCallback {
    public:
        ErrorCallback() noexcept;
        ErrorCallback(const ErrorCallback&) noexcept;
        ErrorCallback& operator=(const ErrorCallback&) noexcept;
        virtual ~ErrorCallback();

        /// Called once per text that failed, on the thread that parses. Const, because parsers hold the callback as
        /// const.
        virtual void error(const Error& error) const = 0;
    };

    FallbackExpressionParser() noexcept;
    FallbackExpressionParser(const FallbackExpressionParser&) noexcept;
    FallbackExpressionParser& operator=(const FallbackExpressionParser&) noexcept;
    virtual ~FallbackExpressionParser();

    /// An interpolator that computes the text, or an empty pointer if the text cannot be understood; then the error
    /// callback, if one is set, has been told why. Implementations treat null as the empty text and do not throw for
    /// bad texts. The factory may call it from several threads at once if the host creates interpolators so.
    virtual std::shared_ptr<Interpolator> parse(const char* expression) = 0;

    /// \name Error callback: null at first, not owned
    /// @{
    void setErrorCallback(const ErrorCallback* callback) noexcept { m_callback = callback; }
    const ErrorCallback* getErrorCallback() const noexcept { return m_callback; }
    /// @}

private:
    const ErrorCallback* m_callback = nullptr;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
