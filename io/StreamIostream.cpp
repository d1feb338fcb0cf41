#include "FCurveLib/StreamIostream.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace {

// Deliberate: signed, so that the byte 0xFF comes out as the value of end-of-file.
std::streambuf::int_type Widen(char character) {
    return static_cast<signed char>(character);
}

} // namespace

Stream_streambuf::Stream_streambuf(Stream& stream) : m_stream(stream) {}

Stream_streambuf::~Stream_streambuf() = default;

bool Stream_streambuf::fetch() {
    try {
        char character = 0;
        m_stream.readData(&character, 1);
        m_character = character;
        m_hasCharacter = true;
        return true;
    } catch (...) {
        return false;
    }
}

Stream_streambuf::int_type Stream_streambuf::underflow() {
    if (!m_held) {
        if (!fetch()) return traits_type::eof();
        m_held = true;
    }
    return Widen(m_character);
}

Stream_streambuf::int_type Stream_streambuf::uflow() {
    if (m_held) {
        m_held = false;
    } else if (!fetch()) {
        return traits_type::eof();
    }
    return Widen(m_character);
}

Stream_streambuf::int_type Stream_streambuf::pbackfail(int_type character) {
    if (m_held) return traits_type::eof();
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
        m_character = traits_type::to_char_type(character);
        m_hasCharacter = true;
    } else if (!m_hasCharacter) {
        return traits_type::eof();
    }
    m_held = true;
    return Widen(m_character);
}

Stream_streambuf::int_type Stream_streambuf::overflow(int_type character) {
    if (traits_type::eq_int_type(character, traits_type::eof())) return 0;
    try {
        const char byte = traits_type::to_char_type(character);
        m_stream.writeData(&byte, 1);
        return character;
    } catch (...) {
        return traits_type::eof();
    }
}

// The base is made before the buffer, so it starts without one and gets it here; that clears its state too.
Stream_iostream::Stream_iostream(Stream& stream) : std::iostream(nullptr), m_buffer(stream) {
    rdbuf(&m_buffer);
}

Stream_iostream::~Stream_iostream() = default;

} // namespace v19
} // namespace VEM_FN::FCurveLib
