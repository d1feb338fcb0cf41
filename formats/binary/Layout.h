#pragma once

// What reader and writer agree about. docs/formats/binary.md has it in pictures.

#include "FCurveLib/BinaryIO.h"
#include "FCurveLib/Export.h"

#include <cstdint>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace BinaryFormat {

constexpr unsigned kMajor = 1;
constexpr unsigned kMinor = 0;

using IO = BinaryIO<LittleEndianBinaryPolicy>;

namespace Block {
constexpr const char* kDocument = "Crvs";
constexpr const char* kVersion = "Vers";
constexpr const char* kContainer = "Cont";
constexpr const char* kCurve = "Curv";
constexpr const char* kName = "Name";
constexpr const char* kDisplay = "Show";
constexpr const char* kProperties = "Prop";
constexpr const char* kExpressions = "Expr";
constexpr const char* kSegments = "Segs";
} // namespace Block

constexpr int kHeaderSize = 8; // of every block

// Of the block "Show".
enum DisplayFlag : std::uint16_t {
    Visible = 1,
    Locked = 2,
    Velocity = 4,
    Acceleration = 8,
    Discontinuities = 16,
    HasGrid = 32,
    HasTangentScale = 64,
    AllDisplayFlags = 127
};

// Of a segment and the key after it, in the block "Segs". What is absent is at its default.
enum SegmentFlag : std::uint16_t {
    HasExpression = 1, // else that of the segment before; the first one of the table in the first segment
    HasOutTangent = 2, // else a default one, as of a new curve: fixed, without flags, the handle flat
    HasInTangent = 4,
    HasSegmentProperties = 8,
    HasKey = 16,
    KeyLocked = 32,
    KeyBreakdown = 64,
    KeyUnified = 128,
    HasKeyProperties = 256,
    HasExtension = 0x8000, // for later versions: a size and as many bytes, which this one skips
    AllSegmentFlags = 0x81FF
};

enum TangentFlag : std::uint8_t {
    Weighted = 1,
    WeightLocked = 2,
    HasType = 4,   // else 0, fixed
    HasHandle = 8, // x and y follow
    HandleIsFlat = 16,
    HasTangentProperties = 32,
    AllTangentFlags = 63
};

// The x of a flat handle: a third of the span, or 1 where there is no key on both sides; its y is 0. This quotient
// decides about bits, so reader and writer have no other.
inline double FlatHandle(bool isIn, bool hasBothKeys, double leftX, double rightX) noexcept {
    const double length = hasBothKeys ? (rightX - leftX) / 3.0 : 1.0;
    return isIn ? -length : length;
}

} // namespace BinaryFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
