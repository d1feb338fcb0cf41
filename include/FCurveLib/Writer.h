#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/FormatType.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/SimpleListNode.h"

#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {
struct Registered;
}

/// Writes one file format: turns the calls of a FormatInterface into bytes on its current stream.
///
/// A writer is found by FormatFactory for as long as it lives. It holds the current stream, so no two threads may link
/// streams to one writer at once; without a stream it writes nothing. Between documents it keeps nothing else.
/// createDocument() gives what writes without it: WriteCurve, WriteCurves and SaveCurves use that, so that any number
/// of threads may write one format at a time.
class FCURVELIB_API Writer : public FormatInterface, public SimpleListNode<Writer> {
public:
    ~Writer() override;

    const FormatType& getFormatType() const noexcept { return m_type; }
    /// Null while none is linked.
    Stream* getStream() const noexcept { return m_stream; }

    /// An object that writes this format on the stream, apart from the writer's current one and from all other objects;
    /// one document after another, as the calls say. Writer and stream must outlive it. Null where the format can only
    /// be written through a link, which is the default: a host's writer overrides it to be used by several threads.
    virtual std::unique_ptr<FormatInterface> createDocument(Stream& stream) const;

    /// Makes a stream the writer's current one while it lives, and the one before it current again at its end. Links
    /// nest. Both must outlive the link.
    class FCURVELIB_API StreamLink {
    public:
        StreamLink(Writer& writer, Stream& stream);
        StreamLink(const StreamLink&) = delete;
        StreamLink& operator=(const StreamLink&) = delete;
        ~StreamLink();

    private:
        Writer& m_writer;
        Stream* m_previous;
    };

protected:
    explicit Writer(const FormatType& type);

private:
    Writer(const FormatType& type, Private::Registered);

    /// The current stream changed, to null or to an earlier one too. An exception is swallowed where a link ends.
    virtual void newStream(Stream* stream);

    void setStream(Stream* stream);

    FormatType m_type;
    Stream* m_stream = nullptr;
};

extern template class SimpleListNode<Writer>;

} // namespace v19
} // namespace VEM_FN::FCurveLib
