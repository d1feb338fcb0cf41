#include "FCurveLib/Writer.h"

#include "formats/Registration.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

template class SimpleListNode<Writer>;

Writer::Writer(const FormatType& type) : Writer(type, Private::RegisterFormats()) {}
Writer::Writer(const FormatType& type, Private::Registered) : m_type(type) {}
Writer::~Writer() = default;

std::unique_ptr<FormatInterface> Writer::createDocument(Stream&) const {
    return nullptr;
}

void Writer::newStream(Stream*) {}

void Writer::setStream(Stream* stream) {
    m_stream = stream;
    newStream(stream);
}

Writer::StreamLink::StreamLink(Writer& writer, Stream& stream) : m_writer(writer), m_previous(writer.getStream()) {
    try {
        m_writer.setStream(&stream);
    } catch (...) {
        m_writer.m_stream = m_previous;
        throw;
    }
}

Writer::StreamLink::~StreamLink() {
    try {
        m_writer.setStream(m_previous);
    } catch (...) { // NOLINT(bugprone-empty-catch): a destructor has nobody to tell
    }
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
