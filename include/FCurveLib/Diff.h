#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// One part in which two curves differ.
struct PartDifference {
    enum Part : std::uint8_t { Curve, Key, Segment, InTangent, OutTangent };
    /// What differs, as bits.
    enum What : std::uint32_t {
        Missing = 1,       ///< a key that only the first curve has
        Added = 2,         ///< a key that only the second curve has
        Name = 4,          ///< of the curve
        Position = 8,      ///< of a key
        Flags = 16,        ///< breakdown and unified of a key; weighted and weight locked of a tangent
        Interpolator = 32, ///< of a segment, by its expression
        Handle = 64,
        Type = 128, ///< of a tangent
        Properties = 256
    };
    static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

    Part part = Curve;
    std::uint32_t what = 0;
    /// The number of the key, or of the segment, in the first and in the second curve; a tangent goes by its key's.
    /// `none` for the curve, for a key that is not there, and for the two tangents that stand at no key.
    std::size_t first = none;
    std::size_t second = none;
    /// The frame of the key, or where the segment starts: in the first curve, if it is there; 0 for the curve and the
    /// leading segment.
    double x = 0.0;
};

/// What Diff found.
struct CurveDifference {
    std::vector<PartDifference> parts;
    double largest = 0.0; ///< difference of values; infinite where one of them is, or is no number, and the other not
    double x = 0.0;       ///< the frame of it; beside a jump, the nearest one that shows it
};

struct DiffOptions {
    /// Positions and handles that differ by no more count as equal, in x and in y, and keys that are no farther from
    /// each other in x are the same key.
    double tolerance = 0.0;
    /// Whether properties and names count. The editor's ("fc_...": selection, display) never do.
    bool properties = true;
    /// Where values are compared. By default from the first key of both curves to the last.
    double start = -std::numeric_limits<double>::infinity();
    double end = std::numeric_limits<double>::infinity();
};

/// \name Compare curves
/// Linear in the number of keys, besides what formulas and repetitions take. Any number of threads may compare curves
/// that nobody edits.
/// @{

/// All differences. The largest one of values is looked for on each stretch without a key, at 32 places and then by
/// golden section around each peak; a narrower one, of a formula, say, can be missed. Stretches whose parts are the
/// same in both are passed over, so equal curves are compared quickly. A bound that is not a number counts as none.
FCURVELIB_API CurveDifference Diff(const FCurve& a, const FCurve& b, const DiffOptions& options = {});

/// Whether Diff finds no part that differs by more than the tolerance: same keys, same tangents, same interpolators,
/// name and properties. With a tolerance of 0, to the last bit, but for the sign of zeros. Stops at the first
/// difference, and compares no values.
FCURVELIB_API bool Equal(const FCurve& a, const FCurve& b, double tolerance = 0.0);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
