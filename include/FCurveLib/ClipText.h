#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/KeyClip.h"

#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \name Copied keys as text
/// For a system's clipboard, in the grammar of the format "text" (docs/formats/text.md). Numbers come back to the same
/// bits, and every byte but zero in names, expressions and properties; the editor's properties stay behind, except a
/// key's lock.
/// @{

/// ASCII throughout where the names and properties are; other characters of UTF-8 as they are, bytes that are not UTF-8
/// escaped.
FCURVELIB_API std::string ClipToText(const KeyClip& clip);

/// Takes every document of the format "text", so that people may paste what they typed. Throws TextFormat::TextError
/// where it is none, and MemoryStream::EndOfBuffer beyond 2 GiB.
FCURVELIB_API KeyClip ClipFromText(const std::string& text);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
