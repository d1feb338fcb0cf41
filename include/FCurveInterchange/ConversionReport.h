#pragma once

#include "FCurveInterchange/Export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

/// One thing that a conversion lost or changed in a curve, at one place or at several.
struct Loss {
    enum What : std::uint8_t {
        Kind = 0,       ///< how a segment interpolates, a tangent's type, whether it is weighted
        Tangents = 1,   ///< the length or direction of handles
        Ends = 2,       ///< how the curve goes on before its first key and after its last
        Formulas = 3,   ///< a number, a formula, or a repetition between keys
        Flags = 4,      ///< breakdown, unified, locked keys; weight locks; what an editor shows of the curve
        Properties = 5, ///< of container, curve or part
        Names = 6,      ///< the curve's name
        Precision = 7,  ///< digits of frames or values
        Time = 8,       ///< keys that moved, went or came, the range, the frame rate
        Curves = 9,     ///< a whole curve, or what is no curve in the other format
        Units = 10      ///< numbers that were converted, or whose unit is unknown
    };
    enum Remedy : std::uint8_t {
        Dropped = 0,   ///< nothing stands in its place
        Replaced = 1,  ///< the nearest that there is
        Split = 2,     ///< by further keys
        Fitted = 3,    ///< by few keys within the tolerance
        Sampled = 4,   ///< by keys at fixed distances
        Shortened = 5, ///< handles, along their direction
        Moved = 6,
        Renamed = 7,
        Rounded = 8
    };

    std::string curve; ///< its name; empty for the whole document
    What what = Kind;
    Remedy remedy = Dropped;
    std::string detail;         ///< for people: "step keys", a few words
    std::size_t count = 1;      ///< at how many places
    std::vector<double> places; ///< their frames, the first 16 of them; none where it is about the whole curve
    double difference = 0.0;    ///< the largest in value that was measured, in the curve's unit
    double at = 0.0;            ///< and the frame where it is
};

/// "kind", "tangents" ... and "dropped", "replaced" ...: the words that people and JSON read.
FCURVEINTERCHANGE_API const char* ToText(Loss::What what) noexcept;
FCURVEINTERCHANGE_API const char* ToText(Loss::Remedy remedy) noexcept;
/// "kind replaced: step at 3 keys (frames 1, 5, 9), up to 0.25 off at frame 7.5". Without the curve's name.
FCURVEINTERCHANGE_API std::string Describe(const Loss& loss);

/// What a conversion lost and changed: nothing is lost that stands not here. Where it is empty, every curve came over
/// with its shape, to 1e-9 of its range of values, and with all of its parts.
class FCURVEINTERCHANGE_API ConversionReport {
public:
    ConversionReport();
    ConversionReport(const ConversionReport&);
    ConversionReport(ConversionReport&&) noexcept;
    ConversionReport& operator=(const ConversionReport&);
    ConversionReport& operator=(ConversionReport&&) noexcept;
    ~ConversionReport();

    /// Losses that differ only in place are one.
    void add(const Loss& loss);
    void clear() noexcept;

    bool empty() const noexcept { return m_losses.empty(); }
    /// In the order in which they were found: curve by curve.
    const std::vector<Loss>& losses() const noexcept { return m_losses; }
    /// The largest difference of the curve of this name; 0 where it has none.
    double difference(const std::string& curve) const;

private:
    std::vector<Loss> m_losses;
};

/// The report as a JSON text: {"losses": [{"curve": ..., "what": ..., "remedy": ..., "detail": ..., "count": ...,
/// "places": [...], "difference": ..., "at": ...}, ...]}.
FCURVEINTERCHANGE_API std::string ToJson(const ConversionReport& report);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
