#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/KeyClip.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Where keys are pasted, and what becomes of the keys there.
struct PasteOptions {
    enum Mode : std::uint8_t {
        Insert,  ///< keys there stay, except those nearer than Keyframe::getMinSeparation() to a pasted one
        Replace, ///< keys between the first and the last pasted key of their curve are removed
        Ripple   ///< keys from the first pasted one on shift by the clip's length in that curve and the gap
    };
    enum Match : std::uint8_t {
        ByName, ///< the clip's curves onto those of the same name; the second of a name onto the second
        ByOrder ///< the first onto the first
    };
    Mode mode = Insert;
    Match match = ByName;
    /// Where the clip's first key goes; by default where it came from.
    double frame = std::numeric_limits<double>::quiet_NaN();
    /// Ripple: by how many frames more than the clip's length keys shift, at least Keyframe::getMinSeparation(); 1 if
    /// not finite. A key at the first pasted one's frame comes to stand so far after the last one, a later one as much
    /// later.
    double gap = 1.0;
};

/// What came of it.
struct PasteReport {
    std::vector<std::shared_ptr<Keyframe>> keys; ///< the new ones, curve by curve and by x: to select them, say
    std::size_t curves = 0;                      ///< that got keys
    std::size_t removed = 0;                     ///< keys
    std::size_t shifted = 0;                     ///< keys
    std::vector<std::string> unmatched; ///< curves of the clip that found no place, or could not be moved there
    std::vector<std::string> kept;      ///< expressions that nobody could move in time: these stay as they are
};

/// \name Copy
/// Keys with positions, tangents, flags, properties, and the segments that start there. Where the shape between two
/// neighbours depends on keys that are not copied (a spline() at the end, say), the clip has bezier() of the same
/// shape, if there is one: a match() that starts or ends beside its keys, at a formula, number or step that is not
/// copied, stays a match() and meets what it finds there. Keys that are in no curve any more are left out. n log n.
/// @{
FCURVELIB_API KeyClip CopyKeys(const KeyGroup& group);
FCURVELIB_API KeyClip CopyKeys(Selection& selection);
/// @}

/// \name Paste
/// Between pasted keys the curve has the clip's shape exactly, moved in time; formulas in x are rewritten for that. A
/// tangent whose type would give another handle there becomes Fixed. Tangents at the ends of the clip that face other
/// keys follow their types. Fixed ones keep their slope. Another shape have: what `report.kept` names, a match() that
/// met something that was not copied (CopyKeys), and a spline() next to a key that Insert has left among the pasted
/// ones.
///
/// Beyond its last key a curve goes on as it did, as with SetKey. Edits by the public setters; n log n.
/// @{
FCURVELIB_API PasteReport PasteKeys(const KeyClip& clip, FCurveContainer& curves, const PasteOptions& options = {});
FCURVELIB_API PasteReport PasteKeys(const KeyClip& clip, const std::vector<std::shared_ptr<FCurve>>& curves,
                                    const PasteOptions& options = {});
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
