#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <list>
#include <memory>
#include <optional>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Makes interpolators for names that an expression may use beyond the parser's own: a host derives from it to add
/// names and functions of its own to the formula language.
class FCURVELIB_API InterpMaker {
public:
    /// One argument of a function, as parsed.
    struct Argument {
        /// Computes the argument; empty for a quoted string.
        std::shared_ptr<Interpolator> expression;
        /// The argument as written, without the white space around it; of a quoted string the characters between the
        /// quotes.
        std::string text;
        /// The value of an argument that does not depend on x.
        std::optional<double> number;
    };

    InterpMaker() noexcept;
    InterpMaker(const InterpMaker&) noexcept;
    InterpMaker& operator=(const InterpMaker&) noexcept;
    virtual ~InterpMaker();

    /// \name Make
    /// An empty pointer says that the maker does not know the name, or not with these arguments; the defaults know
    /// none. Names are case-sensitive.
    /// @{
    virtual std::shared_ptr<Interpolator> makeName(const char* name);
    virtual std::shared_ptr<Interpolator> makeFunction(const char* name, const std::list<InterpMaker::Argument>& args);
    /// @}
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
