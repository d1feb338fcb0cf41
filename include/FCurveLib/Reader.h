#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatType.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/SimpleListNode.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {
struct Registered;
}

/// Reads one file format: parses a stream and calls a FormatInterface.
///
/// A reader is found by FormatFactory for as long as it lives. A format has one, usually with static storage. A host
/// derives its own; it is asked before the library's readers, and before every reader that is older.
///
/// The library's readers keep no state between documents, so that any number of threads may read with one of them.
class FCURVELIB_API Reader : public SimpleListNode<Reader> {
public:
    virtual ~Reader();

    /// Reads a whole container, from the stream's position on. Errors are exceptions derived from Exception; the target
    /// has then heard what came before.
    virtual void readCurves(Stream& stream, FormatInterface& target) = 0;
    /// Reads a single curve, likewise.
    virtual void readCurve(Stream& stream, FormatInterface& target) = 0;
    /// Whether the stream's data is in this format. header holds its first 1024 bytes, zeros after a shorter one; both
    /// stand at position 0 and may be moved. A text may have more blanks and comments than that before it tells. Raises
    /// nothing, whatever the data.
    virtual bool canRead(Stream& stream, Stream& header) = 0;

    const FormatType& getFormatType() const noexcept { return m_type; }

protected:
    explicit Reader(const FormatType& type);

private:
    Reader(const FormatType& type, Private::Registered);

    FormatType m_type;
};

extern template class SimpleListNode<Reader>;

} // namespace v19
} // namespace VEM_FN::FCurveLib
