#pragma once

#include <pybind11/pybind11.h>

#include <optional>
#include <type_traits>
#include <utility>

namespace FCurvePython {

/// \name Edits
/// One rule for all that edits: it is refused while an interpolator of Python is being called, as whoever evaluates
/// walks over the parts; and it is complete before what its observers raised comes out of it.
/// @{

/// A callable of an interpolator runs in this thread while it lives.
class Evaluating {
public:
    Evaluating() noexcept { ++depth(); }
    Evaluating(const Evaluating&) = delete;
    Evaluating& operator=(const Evaluating&) = delete;
    ~Evaluating() { --depth(); }

    static int& depth() noexcept;
};

/// One edit, in its thread, while it lives. Edits by observers nest.
class Edit {
public:
    /// Raises Error while an interpolator is being called.
    Edit();
    Edit(const Edit&) = delete;
    Edit& operator=(const Edit&) = delete;
    ~Edit();

    /// Throws what the first observer raised, or the first that is no Exception (KeyboardInterrupt).
    void finish();
    /// Keeps what an observer raised for the end of the innermost edit of this thread; false where there is none.
    static bool keep(const pybind11::error_already_set& raised);

private:
    Edit* m_outer;
    std::optional<pybind11::error_already_set> m_raised;
};

template<class Function, class Result, class... Arguments>
auto EditingAs(Function function, Result (*)(Arguments...)) {
    return [function](Arguments... arguments) -> Result {
        Edit edit;
        if constexpr (std::is_void_v<Result>) {
            function(std::forward<Arguments>(arguments)...);
            edit.finish();
        } else {
            Result result = function(std::forward<Arguments>(arguments)...);
            edit.finish();
            return result;
        }
    };
}

/// The function as an edit: what is bound that changes curves or containers is bound so.
template<class Function>
auto Editing(Function function) {
    return EditingAs(function, static_cast<pybind11::detail::function_signature_t<Function>*>(nullptr));
}
template<class Result, class Class, class... Arguments>
auto Editing(Result (Class::*method)(Arguments...)) {
    const auto function = [method](Class& self, Arguments... arguments) -> Result {
        return (self.*method)(std::forward<Arguments>(arguments)...);
    };
    return EditingAs(function, static_cast<Result (*)(Class&, Arguments...)>(nullptr));
}
/// @}

} // namespace FCurvePython
