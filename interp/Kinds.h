#pragma once

// What everybody has to know about an interpolator's kind: one row each, in Kinds.cpp. Nobody asks for a type or a
// text.

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

struct BezierArgs;

enum class Kind : std::uint8_t {
    Constant,
    ConstantNext,
    Linear,
    Bezier,
    Spline,
    Ease,
    EaseIn,
    EaseOut,
    Match,
    MatchIn,
    MatchOut,
    Cycle,
    CycleOffset,
    Mirror,
    Formula, // these three are made from texts, and have no name
    Number,
    Unknown,
    HostBezier, // a host's own, derived from BezierInterpBase
    Host,       // a host's own, of which nothing is known
    Absent      // no interpolator: 0 everywhere
};

// How a segment runs between its two keys.
enum class Shape : std::uint8_t {
    LeftValue,
    RightValue,
    Line,
    Bezier, // getBezierArgs tells; it may end beside its keys
    Number, // one value of its own
    Free    // eval alone tells; a cut changes it, unless it does not read its keys
};

// How a segment that lacks a key goes on from the other one.
enum class Beyond : std::uint8_t {
    Flat,
    Handle, // straight along the key's tangent
    Repeats,
    Free
};

// How to find the interpolator that has a segment's image after a scale and a shift of x and y.
enum class Image : std::uint8_t {
    Same,    // this kind has it exactly; between two keys, where x is reversed, the reversed kind
    Number,  // a number that is mapped as y is
    Text,    // the formula's text, rewritten; then as Compare
    Compare, // nobody knows before both are evaluated
};

// What the values on a segment depend on besides x: bits.
using Reads = unsigned;
constexpr Reads kReadsLeftKey = 1;
constexpr Reads kReadsRightKey = 2;
constexpr Reads kReadsTangents = 4;    // of the segment
constexpr Reads kReadsNextKeys = 8;    // where the keys next to the segment's own are
constexpr Reads kReadsNeighbours = 16; // the segments on both sides, and whatever these read
constexpr Reads kReadsCurve = 32;      // everything between the curve's first and last key
constexpr Reads kReadsAnything = 63;

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order in which a row is read
struct KindRow {
    Kind kind;
    const char* expression;                    // empty for kinds that have no name
    std::shared_ptr<Interpolator> (*create)(); // null for kinds that the factory does not list
    Kind reversed; // the kind that runs backwards between two keys as this one does forwards
    Image image;
    Reads reads; // between two keys; a segment that lacks one: see ReadsOf
    Shape shape;
    Beyond beyond;
    // When a key is set on the segment, halves of these kinds keep its shape; where the shape is Bezier, only at ends
    // that are beside their keys, and at the others it takes a half of Kind::Bezier.
    Kind leftHalf;
    Kind rightHalf;
    // The control points with all their digits, which getBezierArgs loses far from 0; null unless the shape is Bezier.
    // Precondition: the segment has both keys.
    BezierArgs (*args)(const Interpolator& interpolator, const Segment& segment);

    FCURVELIB_API std::string_view name() const noexcept; // without parentheses
    constexpr bool isBezier() const noexcept { return shape == Shape::Bezier; }
    constexpr bool isStraight() const noexcept { return shape < Shape::Bezier || shape == Shape::Number; }
    constexpr bool isMatch() const noexcept { return kind >= Kind::Match && kind <= Kind::MatchOut; }
    constexpr bool isHost() const noexcept { return kind == Kind::HostBezier || kind == Kind::Host; }
    constexpr bool repeats() const noexcept { return beyond == Beyond::Repeats; }
    // Whether extents between two keys are exact and take the same time however far apart these are.
    constexpr bool hasClosedExtents() const noexcept { return shape != Shape::Free; }
};

// All rows, in the order of Kind.
struct KindTable {
    const KindRow* first;
    const KindRow* last;
    const KindRow* begin() const noexcept { return first; }
    const KindRow* end() const noexcept { return last; }
};
FCURVELIB_API KindTable AllKinds() noexcept;

// The row of a kind; never fails, and runs none of a host's code. Takes a few nanoseconds for the library's kinds.
FCURVELIB_API const KindRow& RowOf(Kind kind) noexcept;
FCURVELIB_API const KindRow& KindOf(const Interpolator& interpolator) noexcept;
FCURVELIB_API const KindRow& KindOf(const Interpolator* interpolator) noexcept; // null: Kind::Absent
FCURVELIB_API const KindRow& KindOf(const Segment& segment) noexcept;           // of its interpolator

// The kind "name()"; null if there is none.
FCURVELIB_API const KindRow* FindKind(std::string_view name) noexcept;

// What the interpolator's values on this segment depend on. A formula depends on what its parts do; a segment that
// lacks a key takes the other one for it.
FCURVELIB_API Reads ReadsOf(const Interpolator* interpolator, const Segment& segment) noexcept;

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
