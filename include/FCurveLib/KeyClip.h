#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstddef>
#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Keys that were copied, with everything that is theirs, for PasteKeys. A value that never changes: copies share what
/// they hold, and any number of threads may paste from it.
///
/// It holds a curve for each curve that keys were copied from, of the same name and with copies of these keys alone.
/// Between keys that were neighbours it has the shape that the curve had there, but for a match() that met a formula,
/// number or step that is not in it (CopyKeys); its end segments say what follows the last key where another one does.
/// Selection is left behind, curve properties too.
class FCURVELIB_API KeyClip {
public:
    /// Without keys.
    KeyClip();
    /// The keys of these curves (CopyKeys makes clips from a selection, ClipFromText from text). Curves without keys
    /// are left out.
    explicit KeyClip(const FCurveContainer& curves);

    bool empty() const noexcept;
    const FCurveContainer& getCurves() const noexcept { return *m_curves; }
    /// Number of keys, in all curves.
    std::size_t size() const noexcept;
    /// The frames of the first and the last key, of all curves; 0 without keys.
    double getStart() const noexcept;
    double getEnd() const noexcept;

private:
    std::shared_ptr<const FCurveContainer> m_curves; // never null
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
