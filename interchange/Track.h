#pragma once

// A curve as readers find it in a document and as writers need it: keys, and one of four kinds of pieces between them.

#include <FCurveLib/Forward.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Tangent.h>
#include <FCurveLib/Vector2D.h>

#include "interchange/Cubic.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

enum class Piece : std::uint8_t { Constant, ConstantNext, Linear, Bezier };

// A handle at a knot. One that is not given gets what its type computes.
struct Side {
    Vector2D<double> handle{};
    bool isGiven = false;
    std::uint8_t type = Tangent::Fixed;
    bool isWeighted = false;
    bool isWeightLocked = false;
};

struct Knot {
    double x = 0.0;
    double y = 0.0;                // at x and after it
    double before = 0.0;           // the limit from the left: y unless the curve jumps here. Readers leave it alone
    Piece piece = Piece::Constant; // starts here
    bool isBreakdown = false;
    bool isUnified = false;
    bool isLocked = false;
    Side in;
    Side out;
    const Segment* segment = nullptr; // of a curve that is written: what starts here; null where no key of it stands
};

// What the curve does on one side of its keys. Hold is at the first knot's limit from the left, at the last knot's
// value. Line goes on along the end knot's handle on that side.
struct End {
    enum Kind : std::uint8_t { Hold, Line, Cycle, CycleOffset, Mirror };
    Kind kind = Hold;
    std::string expression = {}; // from a reader: instead of the kind's own
};

using PropertyList = std::vector<std::pair<std::string, std::string>>;

struct Track {
    std::string name;
    std::vector<Knot> knots;
    End leading;
    End trailing;
    PropertyList properties;
    std::vector<std::pair<std::size_t, std::pair<std::string, std::string>>> keyProperties; // by knot, rising
    // From a reader: expressions instead of the pieces' own, likewise.
    std::vector<std::pair<std::size_t, std::string>> pieceExpressions;
    // Where it stands, for messages: a byte of the text, or a JSON path.
    std::size_t offset = kNowhere;
    std::string path;

    static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);
};

struct Document {
    double rate = 0.0; // frames a second in which the document counts, where it states them; 0 elsewhere
    PropertyList properties;
    std::vector<Track> tracks;
};

// Precondition: index + 1 is a knot.
Cubic CubicOf(const Track& track, std::size_t index);
// Other programs raise each turn of a repetition by the last key's value less the first one's; here turns rise as the
// curve does, without a step at its last key.
// From a document where turns rise by so much: where a held piece ends in another value, that one takes 0.001 frames.
// What is not met is reported.
void TakeRise(Track& track, double rise);
// For such a document: outer keys that nothing shows get the values by which turns rise as here. Reports what is
// shown, and what makes them rise otherwise.
void GiveRise(Track& track);

// Of knots that are no Bezier pieces: the line, with handles of a third.
Cubic LineOf(const Knot& left, const Knot& right);

// A Bezier piece between two knots, as a reader knows it: handles as offsets, fixed.
void SetBezier(Knot& left, Knot& right, const Vector2D<double>& out, const Vector2D<double>& in, bool isWeighted);

// Makes the calls of a FormatInterface. Returns whether the target wants further curves.
bool EmitTrack(const Track& track, FormatInterface& target);
void EmitDocument(const Document& document, FormatInterface& target);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
