#include "formats/Registration.h"

#include "FCurveLib/BinaryFormat.h"
#include "FCurveLib/HoudiniChanFormat.h"
#include "FCurveLib/HoudiniClipFormat.h"
#include "FCurveLib/OldFormat.h"
#include "FCurveLib/TextFormat.h"
#include "FCurveLib/XMLFormat.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace {
bool g_begun = false; // a plain flag, set while the library is loaded: registration itself comes back here
}

Registered RegisterFormats() {
    if (g_begun) return {};
    g_begun = true;

    // The one that is constructed last is asked first, so the weakest recogniser stands at the top. This order is what
    // decides when two readers could both accept the same data.
    static HoudiniChanFormat::HoudiniChanReader hchanReader; // any list of numbers
    static HoudiniClipFormat::HoudiniClipReader hclipReader;
    static OldFormat::OldReader oldReader;
    static TextFormat::TextReader textReader;
    static BinaryFormat::BinaryReader binaryReader;
    static XMLFormat::XMLReader xmlReader;

    static BinaryFormat::BinaryWriter binaryWriter;
    static XMLFormat::XMLWriter xmlWriter;
    return {};
}

namespace {
[[maybe_unused]] const Registered kAtLoad = RegisterFormats();
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
