#pragma once

#include "FCurveLib/Exception.h"
#include "FCurveLib/Export.h"

#include <cstdint>
#include <memory>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// No reader or writer has the requested name, or no reader recognises the stream.
class FCURVELIB_API UnknownFormat : public Exception {
public:
    const char* what() const noexcept override;
};

/// Base of everything that a reader or writer holds against the data it is given. Each format nests its own classes in
/// its namespace, which derive from this one; errors of the stream itself are those of the stream.
class FCURVELIB_API FormatError : public Exception {
public:
    /// At no known position, without a message.
    FormatError() noexcept;
    explicit FormatError(const std::string& message, std::uint64_t line = 0, std::uint64_t column = 0);
    FormatError(const FormatError&) noexcept;
    FormatError& operator=(const FormatError&) noexcept;
    ~FormatError() override;

    const char* what() const noexcept override;

    /// Where reading stopped, from 1; 0 in a format that has no lines, and from a writer. Columns count bytes (in
    /// "xml", characters).
    std::uint64_t line() const noexcept { return m_line; }
    std::uint64_t column() const noexcept { return m_column; }

    /// What is wrong, for people: one sentence in English that does not repeat the position. Never null.
    const char* message() const noexcept;

private:
    std::shared_ptr<const std::string> m_message; // shared, so that copying an exception cannot throw
    std::uint64_t m_line = 0;
    std::uint64_t m_column = 0;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
