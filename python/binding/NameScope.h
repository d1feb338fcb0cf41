#pragma once

#include "Binding.h"

#include <cstddef>
#include <optional>
#include <string>

namespace FCurvePython {

/// What becomes of the makers of Python (fcurvelib.register) while a text or a document is read, in its thread. Nests.
class NameScope {
public:
    NameScope() noexcept;
    NameScope(const NameScope&) = delete;
    NameScope& operator=(const NameScope&) = delete;
    ~NameScope();

    /// Throws what a maker raised that is not about the text: MemoryError, and what is no Exception
    /// (KeyboardInterrupt).
    void finish() const;

private:
    friend class NameMaker;
    friend InterpolatorPtr ReadText(const std::string& text);

    NameScope* m_outer;
    std::optional<py::error_already_set> m_raised;
    std::string m_name;       // of the maker that raised it
    std::size_t m_calls = 0;  // of makers
    std::size_t m_failed = 0; // which of them failed
    bool m_replays = false;   // without calling them
};

} // namespace FCurvePython
