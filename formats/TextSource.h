#pragma once

// The bytes of a stream one after the other, and where in the text each one stands.

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstdint>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// Reads a stream in pieces from its position to its end, after a UTF-8 byte-order mark if there is one. LF, CR LF and
// a lone CR end lines. Exceptions of the stream pass through.
class TextSource {
public:
    static constexpr int noByte = -1;

    explicit TextSource(Stream& stream);

    // The next byte, 0 to 255, or noByte.
    int peek() { return m_next != m_end ? static_cast<unsigned char>(*m_next) : fill(); }

    // Likewise, and goes past it.
    int take() {
        const int c = peek();
        if (c == noByte) return c;
        ++m_next;
        if (c == '\n' || c == '\r') {
            if (c == '\n' && m_afterReturn) --m_line; // counted with the CR
            ++m_line;
            m_column = 1;
        } else {
            ++m_column;
        }
        m_afterReturn = c == '\r';
        return c;
    }

    // Where the next byte stands, both from 1. Columns count bytes.
    std::uint64_t line() const noexcept { return m_line; }
    std::uint64_t column() const noexcept { return m_column; }

    // How many bytes were taken.
    std::int64_t taken() const noexcept { return m_fetched - (m_end - m_next); }

private:
    int fill();

    Stream& m_stream;
    std::int64_t m_remaining; // in the stream
    std::int64_t m_fetched = 0;
    std::vector<char> m_piece;
    const char* m_next = nullptr;
    const char* m_end = nullptr;
    std::uint64_t m_line = 1;
    std::uint64_t m_column = 1;
    bool m_afterReturn = false;
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
