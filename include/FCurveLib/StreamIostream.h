#pragma once

/// \file
/// The standard streams' operators on any Stream.

#include "FCurveLib/Stream.h"

#include <istream>
#include <streambuf>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A standard stream buffer over a Stream, which must outlive it.
///
/// It has no get or put area: one character at a time goes through the hooks below to the Stream's readData() and
/// writeData(), so a write reaches the Stream at once. Every exception of the Stream turns into end-of-file or failure
/// of the standard stream; none passes through.
///
/// One character can be looked ahead at or put back. While it is held, the Stream's own position is one past what was
/// taken out of the buffer: peeking moves the Stream. There is no seeking; position the Stream itself, between whole
/// operations and while no character is held.
///
/// Deliberate: a character comes out widened as a *signed* char, so the byte 0xFF is the value of end-of-file and ends
/// reading there. Text in ASCII or UTF-8 never holds it. Writing 0xFF works.
class FCURVELIB_API Stream_streambuf : public std::streambuf {
public:
    explicit Stream_streambuf(Stream& stream);
    Stream_streambuf(const Stream_streambuf&) = delete;
    Stream_streambuf& operator=(const Stream_streambuf&) = delete;
    ~Stream_streambuf() override;

protected:
    /// The next character, held for the next call.
    int_type underflow() override;

    /// The next character, taken.
    int_type uflow() override;

    /// Holds the character given, or the last one taken for end-of-file. Fails when a character is held already, or
    /// when none was taken yet that could be held again.
    int_type pbackfail(int_type character = traits_type::eof()) override;

    /// Writes one character; nothing (and returns 0) for end-of-file.
    int_type overflow(int_type character = traits_type::eof()) override;

private:
    bool fetch();

    Stream& m_stream;
    char m_character = 0; // the one held, else the last one taken
    bool m_hasCharacter = false;
    bool m_held = false;
};

/// A standard stream for reading and writing over a Stream, which must outlive it. See Stream_streambuf for what it
/// does with positions, errors and the byte 0xFF.
class FCURVELIB_API Stream_iostream : public std::iostream {
public:
    explicit Stream_iostream(Stream& stream);
    Stream_iostream(const Stream_iostream&) = delete;
    Stream_iostream& operator=(const Stream_iostream&) = delete;
    ~Stream_iostream() override;

private:
    Stream_streambuf m_buffer;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
