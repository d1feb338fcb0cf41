#pragma once

// Streams for readers, of a text, and of a text that is made while it is read; what is written to one and read back;
// and limits for what is read.

#include "FCurveLib/FCurveLib.h"

#include <memory>
#include <string>
#include <utility>

namespace Test {

using namespace VEM_FN::FCurveLib;

inline MemoryStream StreamOf(const std::string& text) {
    MemoryStream stream;
    stream.writeData(text.data(), static_cast<int>(text.size()));
    stream.setPosition(0);
    return stream;
}

inline std::string BytesOf(const MemoryStream& stream) {
    return {stream.getData(), static_cast<std::size_t>(stream.getSize())};
}

inline std::string WrittenAs(const char* format, const FCurve& curve) {
    std::string bytes;
    WriteFCurveToString(curve, format, bytes);
    return bytes;
}
inline std::string WrittenAs(const char* format, const FCurveContainer& container) {
    MemoryStream stream;
    WriteCurves(container, stream, format);
    return BytesOf(stream);
}
inline std::shared_ptr<FCurve> ReadAs(const char* format, const std::string& bytes) {
    auto curve = FCurve::create();
    ReadFCurveFromString(bytes, format, *curve);
    return curve;
}

/// The longest stream there is: a beginning, then a pattern for ever. It remembers how much of it was read, by which a
/// test sees whether a reader gave up in time.
class EndlessStream : public Stream {
public:
    EndlessStream(std::string beginning, std::string pattern, int size = 0x7FFFFFFF)
        : m_beginning(std::move(beginning)), m_pattern(std::move(pattern)), m_size(size) {}

    int bytesRead = 0;

    void readData(void* buffer, int count) override {
        if (count < 0 || count > getSize() - m_position) throw MemoryStream::EndOfBuffer();
        auto* bytes = static_cast<char*>(buffer);
        for (int i = 0; i < count; ++i, ++m_position) {
            const auto at = static_cast<std::size_t>(m_position);
            bytes[i] =
                at < m_beginning.size() ? m_beginning[at] : m_pattern[(at - m_beginning.size()) % m_pattern.size()];
        }
        bytesRead += count;
    }
    void writeData(const void*, int) override { throw StreamException(); }
    int getPosition() const override { return m_position; }
    void setPosition(int position) override { m_position = position; }
    int getSize() const override { return m_size; }

private:
    std::string m_beginning;
    std::string m_pattern;
    int m_size;
    int m_position = 0;
};

/// Limits that hold as long as it lives.
class UnderLimits {
public:
    explicit UnderLimits(const FormatLimits& limits) { SetFormatLimits(limits); }
    UnderLimits(const UnderLimits&) = delete;
    UnderLimits& operator=(const UnderLimits&) = delete;
    ~UnderLimits() { SetFormatLimits(m_before); }

private:
    FormatLimits m_before = GetFormatLimits();
};

} // namespace Test
