#pragma once

// Base of this library's writers: builds the curves that it is told of, hands them over as a whole, writes what comes
// of them at once; and where a report is wanted, reads that back and compares.

#include <FCurveLib/FCurveContainer.h>
#include <FCurveLib/detail/DocumentWriter.h>

#include "interchange/Resolve.h"

#include <memory>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

class CurveWriter : public Private::DocumentWriter {
public:
    ~CurveWriter() override;

    std::unique_ptr<FormatInterface> createDocument(Stream& stream) const final;

protected:
    explicit CurveWriter(const FormatType& type);

    // The document of these curves; raises NotWritable or TooMuch. A reader of the same format must read it back.
    // Names that come back differently go to the notes.
    virtual std::string compose(const FCurveContainer& curves, Notes& notes) const = 0;
    // Frames a second in which the document counts that is there and into which curves are written; 0 for a new one.
    virtual double rateThere() const { return 0.0; }

private:
    class Draft; // of one document
};

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
