#include "FCurveLib/ClipText.h"

#include "FCurveLib/ContainerInterface.h"
#include "FCurveLib/FCurveContainer.h"
#include "FCurveLib/MemoryStream.h"
#include "FCurveLib/TextFormat.h"
#include "FCurveLib/detail/ComposeText.h"

#include <cstddef>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

std::string ClipToText(const KeyClip& clip) {
    return Private::ComposeText(clip.getCurves(), false);
}

KeyClip ClipFromText(const std::string& text) {
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) throw MemoryStream::EndOfBuffer();
    MemoryStream stream;
    stream.writeData(text.data(), static_cast<int>(text.size()));
    stream.setPosition(0);
    const auto curves = FCurveContainer::create();
    ContainerInterface target(*curves);
    TextFormat::TextReader reader;
    reader.readCurves(stream, target);
    return KeyClip(*curves);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
