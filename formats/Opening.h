#pragma once

#include "FCurveLib/Stream.h"

#include <algorithm>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// What a recogniser looks at: the header it is given, then the rest of the stream. So blanks and comments of any length
// may stand before what tells the format, and a stream whose header tells is not touched.
class Opening : public Stream {
public:
    Opening(Stream& stream, Stream& header)
        : m_stream(stream), m_header(header), m_size(stream.getSize() > 0 ? stream.getSize() : header.getSize()) {}

    void readData(void* buffer, int count) override {
        const int fromHeader = std::clamp(std::min(m_header.getSize(), m_size) - m_position, 0, count);
        if (fromHeader > 0) {
            m_header.setPosition(m_position);
            m_header.readData(buffer, fromHeader);
        }
        if (fromHeader < count) {
            m_stream.setPosition(m_position + fromHeader);
            m_stream.readData(static_cast<char*>(buffer) + fromHeader, count - fromHeader);
        }
        m_position += count;
    }
    void writeData(const void*, int) override { throw StreamException(); }
    int getPosition() const override { return m_position; }
    void setPosition(int position) override { m_position = position; }
    int getSize() const override { return m_size; }

private:
    Stream& m_stream;
    Stream& m_header;
    int m_size;
    int m_position = 0;
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
