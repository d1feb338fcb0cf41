#include "interchange/CoreWriters.h"

#include <FCurveLib/TextFormat.h>
#include <FCurveLib/detail/ComposeText.h>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

TextWriter::TextWriter() : CurveWriter(TextFormat::GetFormatType()) {}

std::string TextWriter::compose(const FCurveContainer& curves, Notes&) const {
    return Private::ComposeText(curves, true);
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
