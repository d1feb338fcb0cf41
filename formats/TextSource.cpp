#include "formats/TextSource.h"

#include "FCurveLib/Stream.h"

#include <algorithm>
#include <cstring>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace {
constexpr std::int64_t kFirstPiece = 1024; // enough to recognise most texts
constexpr std::int64_t kPiece = 65536;
} // namespace

TextSource::TextSource(Stream& stream)
    : m_stream(stream), m_remaining(std::int64_t{stream.getSize()} - stream.getPosition()) {
    if (peek() != noByte && m_end - m_next >= 3 && std::memcmp(m_next, "\xEF\xBB\xBF", 3) == 0) m_next += 3;
}

int TextSource::fill() {
    if (m_remaining <= 0) return noByte;
    const auto count = static_cast<int>(std::min(m_fetched == 0 ? kFirstPiece : kPiece, m_remaining));
    m_piece.resize(static_cast<std::size_t>(count));
    m_stream.readData(m_piece.data(), count);
    m_remaining -= count;
    m_fetched += count;
    m_next = m_piece.data();
    m_end = m_next + count;
    return static_cast<unsigned char>(*m_next);
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
