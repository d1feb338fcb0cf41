#include "FCurveLib/ReadWrite.h"

#include "FCurveLib/ContainerInterface.h"
#include "FCurveLib/CurveEmitter.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveContainer.h"
#include "FCurveLib/FCurveFormatInterface.h"
#include "FCurveLib/FormatExceptions.h"
#include "FCurveLib/FormatFactory.h"
#include "FCurveLib/MemoryStream.h"

#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace {

template<class T>
T& OrUnknown(T* format) {
    if (!format) throw UnknownFormat();
    return *format;
}

void ReadWith(Stream& stream, Reader& reader, FCurve& target) {
    const std::shared_ptr<FCurve> curve = FCurve::create();
    const FCurve::Switch silence(*curve);
    FCurveFormatInterface builder;
    builder.setCurve(curve);
    reader.readCurve(stream, builder);
    target.swap(*curve);
}

// On a document of its own, so that threads may write one format at a time; through the writer where it has none.
template<class Emit>
void WriteWith(Stream& stream, Writer& writer, const Emit& emit) {
    if (const auto document = writer.createDocument(stream)) {
        emit(*document);
    } else {
        const Writer::StreamLink link(writer, stream);
        emit(writer);
    }
}

void WriteWith(const FCurve& curve, Stream& stream, Writer& writer) {
    WriteWith(stream, writer, [&](FormatInterface& target) { EmitCurve(curve, target); });
}

void WriteAllWith(const FCurveContainer& container, Stream& stream, Writer& writer) {
    WriteWith(stream, writer, [&](FormatInterface& target) { EmitCurves(container, target); });
}

// Returns whether the container's observers missed something.
bool ReadSilently(Stream& stream, Reader& reader, FCurveContainer& container, std::exception_ptr& error) {
    const FCurveContainer::Switch silence(container);
    ContainerInterface builder(container);
    try {
        reader.readCurves(stream, builder);
    } catch (...) {
        error = std::current_exception();
    }
    return silence.blockedNotification();
}

} // namespace

void ReadCurve(Stream& stream, const char* format, FCurve& curve) {
    ReadWith(stream, OrUnknown(FormatFactory::getReader(format)), curve);
}
void ReadCurve(Stream& stream, const FormatType& format, FCurve& curve) {
    ReadWith(stream, OrUnknown(FormatFactory::getReader(format)), curve);
}

FormatType ReadCurves(Stream& stream, FCurveContainer& container) {
    Reader& reader = OrUnknown(FormatFactory::getReader(stream));
    std::exception_ptr error;
    if (ReadSilently(stream, reader, container, error)) container.notifyChanged();
    if (error) std::rethrow_exception(error);
    return reader.getFormatType();
}

void ReadFCurveFromString(const std::string& data, const char* format, FCurve& curve) {
    if (data.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) throw MemoryStream::EndOfBuffer();
    MemoryStream stream;
    stream.writeData(data.data(), static_cast<int>(data.size()));
    stream.setPosition(0);
    ReadCurve(stream, format, curve);
}

void WriteCurve(const FCurve& curve, Stream& stream, const char* format) {
    WriteWith(curve, stream, OrUnknown(FormatFactory::getWriter(format)));
}
void WriteCurve(const FCurve& curve, Stream& stream, const FormatType& format) {
    WriteWith(curve, stream, OrUnknown(FormatFactory::getWriter(format)));
}
void WriteCurves(const FCurveContainer& container, Stream& stream, const char* format) {
    WriteAllWith(container, stream, OrUnknown(FormatFactory::getWriter(format)));
}
void WriteCurves(const FCurveContainer& container, Stream& stream, const FormatType& format) {
    WriteAllWith(container, stream, OrUnknown(FormatFactory::getWriter(format)));
}

void WriteFCurveToString(const FCurve& curve, const char* format, std::string& out) {
    MemoryStream stream;
    WriteCurve(curve, stream, format);
    out.assign(stream.getData(), static_cast<std::size_t>(stream.getSize()));
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
