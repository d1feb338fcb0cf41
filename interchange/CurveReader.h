#pragma once

// Base of this library's readers: takes the bytes of a whole stream and turns them into a Document.

#include <FCurveLib/FormatLimits.h>
#include <FCurveLib/Reader.h>

#include "FCurveInterchange/ConversionReport.h"
#include "interchange/Track.h"

#include <string>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

class CurveReader : public Reader {
public:
    ~CurveReader() override;

    void readCurves(Stream& stream, FormatInterface& target) final;
    void readCurve(Stream& stream, FormatInterface& target) final;
    bool canRead(Stream& stream, Stream& header) final;

    // As readCurves, without a copy of the bytes.
    void readBytes(std::string_view bytes, FormatInterface& target) const;

protected:
    using Reader::Reader;

    // The document that the bytes are; raises InterchangeErrors. What it cannot hold goes to Lose().
    virtual Document parse(std::string_view bytes) const = 0;
    // Whether a document begins like this: its first 16 KiB, or all of it.
    virtual bool recognises(std::string_view opening, bool isWhole) const = 0;

private:
    // Parsed, within the limits, in the frames that are wanted.
    Document documentOf(std::string_view bytes) const;
};

// To the report of the conversion, if there is one.
void Lose(const Loss& loss);

// Frames a second that count where the document states `stated`, 0 for none.
double FrameRateOr(double stated);

// Where a byte of a text stands, both from 1; LF, CR LF and a lone CR end lines.
struct Place {
    std::uint64_t line = 1;
    std::uint64_t column = 1;
};
Place PlaceOf(std::string_view text, std::size_t offset);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
