#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Vector2D.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <set>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Curves of an older curve system, and their text. docs/formats/tov_fcurve.md describes both; the format "tov_fcurve"
/// reads the text.
///
///     std::cout << std::setprecision(17) << TovConversion::TovCurve(*curve);
namespace TovConversion {

/// A key of the older system: a location, two tangent handles, the kind of the span that starts here, a lock.
class FCURVELIB_API TovKey {
public:
    enum InterpType : std::uint32_t { Unknown = 0, Constant = 1, Linear = 2, Bezier = 3 };

    /// At (0, 0) with handles of no length, of kind Unknown, not locked.
    TovKey() noexcept = default;

    /// x in frames, y in the curve's own unit.
    const Vector2D<double>& getLocation() const noexcept { return m_location; }
    void setLocation(const Vector2D<double>& location) noexcept { m_location = location; }

    /// Handles are offsets from the location: the left one reaches back into the span before (x <= 0), the right one
    /// into the span that starts here (x >= 0).
    const Vector2D<double>& getLeftTangent() const noexcept { return m_left; }
    void setLeftTangent(const Vector2D<double>& handle) noexcept { m_left = handle; }
    const Vector2D<double>& getRightTangent() const noexcept { return m_right; }
    void setRightTangent(const Vector2D<double>& handle) noexcept { m_right = handle; }

    InterpType getInterp() const noexcept { return m_interp; }
    void setInterp(InterpType interp) noexcept { m_interp = interp; }

    bool isLocked() const noexcept { return m_locked; }
    void setLocked(bool locked) noexcept { m_locked = locked; }

    /// Whether x lies on a whole frame, within 1e-07.
    bool isSnapped() const noexcept;

private:
    Vector2D<double> m_location;
    Vector2D<double> m_left;
    Vector2D<double> m_right;
    InterpType m_interp = Unknown;
    bool m_locked = false;
};

/// A curve of the older system: keys that are joined by spans which hold a value, run straight, or are cubic Bezier
/// curves. Before the first key and after the last one it holds their values.
class FCURVELIB_API TovCurve {
    struct FirstX {
        bool operator()(const TovKey& a, const TovKey& b) const noexcept {
            return a.getLocation().x < b.getLocation().x;
        }
    };
    using Keys = std::set<TovKey, FirstX>;

public:
    /// Walks the keys from left to right.
    using const_iterator = Keys::const_iterator;

    /// What a conversion could not keep; flags combine.
    enum LossFlag : std::uint32_t {
        UnsupportedInterpolation = 1,
        UnsupportedExtensions = 2,
        ShiftedKeyframes = 4,
        ShiftedTangents = 8,
        HealedDiscontinuities = 16,
        SynthesizedBezier = 32,
        PropertyLoss = 64
    };

    /// Converts a curve. Without any loss flag the text, written with 17 digits, reads back as an equal curve.
    ///
    /// The losses are UnsupportedInterpolation (of spans that are neither constant, straight nor Bezier curves),
    /// UnsupportedExtensions (ends that are not constant), SynthesizedBezier, ShiftedKeyframes, ShiftedTangents,
    /// HealedDiscontinuities (steps that become steep spans), and PropertyLoss for all else that files hold.
    /// docs/formats/tov_fcurve.md tells what becomes of each.
    ///
    /// Locked keys stay locked. Linear in the number of keys. Implicit, so that a curve goes where one of the older
    /// system is asked for.
    TovCurve(const FCurve& curve); // NOLINT(google-explicit-constructor)
    TovCurve(const TovCurve&);
    TovCurve(TovCurve&&) noexcept;
    TovCurve& operator=(const TovCurve&);
    TovCurve& operator=(TovCurve&&) noexcept;
    ~TovCurve();

    const char* getName() const noexcept { return m_name.c_str(); }
    /// Null counts as empty.
    void setName(const char* name);

    /// LossFlags of the conversion.
    std::uint32_t getLossFlags() const noexcept { return m_lossFlags; }

    /// Ignores a key with a number that is not finite, and one at exactly the x of another.
    void addKeyframe(const TovKey& key);

    std::size_t size() const noexcept { return m_keys.size(); }
    const_iterator begin() const noexcept { return m_keys.begin(); }
    const_iterator end() const noexcept { return m_keys.end(); }

private:
    std::string m_name;
    std::uint32_t m_lossFlags = 0;
    Keys m_keys;
};

/// Writes a curve as text, preceded by a comment line for each loss flag. Numbers are formatted as the stream is set to
/// format them: by default with six significant digits and so not exactly. Set 17 digits, and the classic locale, for a
/// text that reads back.
FCURVELIB_API std::ostream& operator<<(std::ostream& out, const TovCurve& curve);

} // namespace TovConversion

} // namespace v19
} // namespace VEM_FN::FCurveLib
