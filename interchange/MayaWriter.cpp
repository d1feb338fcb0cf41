#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Names.h"
#include "interchange/MayaFormat.h"
#include "interchange/MayaTangents.h"
#include "interchange/Numbers.h"
#include "interchange/Units.h"

#include <FCurveLib/FormatType.h>
#include <FCurveLib/Segment.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

constexpr double kDegrees = 180.0 / 3.14159265358979323846;

// How a file of this frame rate counts time.
struct TimeUnit {
    std::string name;
    double perFrame = 1.0; // units a frame
};

TimeUnit TimeUnitOf(double rate) {
    static constexpr const char* words[] = {"game",  "film",      "pal",      "ntsc",      "show",    "palf",
                                            "ntscf", "23.976fps", "29.97fps", "47.952fps", "59.94fps"};
    // As exporters write them: 23.976, 29.9700012207031. In frames, so that no key moves.
    constexpr double kClose = 2e-6;
    for (const char* word : words)
        if (std::fabs(MayaFrameRate(word) - rate) <= kClose * rate) return {word, 1.0};
    if (rate == std::floor(rate) && rate >= 2.0 && rate <= 6000.0) return {ShortNumber(rate) + "fps", 1.0};
    return {"sec", 1.0 / rate};
}

double RateOf(const FCurveContainer& curves) {
    double rate = 0.0;
    const bool isStated = ParseNumber(curves.getProperty(kFrameRate), rate);
    return FrameRateOr(isStated ? rate : 0.0);
}

// What Maya takes for a name: no blanks, no signs.
std::string WordOf(std::string text, const char* further) {
    for (char& c : text) {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        if (!isLetter && std::string_view(further).find(c) == std::string_view::npos) c = '_';
    }
    if (!text.empty() && text[0] >= '0' && text[0] <= '9') text.insert(0, 1, '_');
    return text;
}

// One side of a key, as it is written.
struct WrittenSide {
    MayaKind kind = MayaKind::Fixed;
    double angle = 0.0; // in degrees
    double weight = 1.0;
};

class MayaDocument {
public:
    MayaDocument(const FCurveContainer& curves, Notes& notes) : m_notes(notes), m_rate(RateOf(curves)) {
        m_unit = TimeUnitOf(m_rate);
        writeHeader(curves);
        for (const FCurve& curve : curves) writeCurve(curve);
        for (auto i = curves.beginProperties(); i != curves.endProperties(); ++i)
            if (i->first.compare(0, 18, "maya_place_holder_") == 0) m_text += "anim " + i->second + ";\n";
    }

    std::string take() { return std::move(m_text); }

private:
    void writeHeader(const FCurveContainer& curves);
    void writeCurve(const FCurve& curve);
    std::string nameOf(const FCurve& curve, std::string& node);
    void writeKey(const FCurve& curve, const Track& track, std::size_t index, bool isWeighted);
    WrittenSide sideOf(const FCurve& curve, const Track& track, std::size_t index, bool isIn) const;
    bool isWeighted(const Track& track) const;

    void line(const char* key, const std::string& value) { m_text += std::string(key) + ' ' + value + ";\n"; }
    void number(double value) {
        m_text += ' ';
        AppendNumber(m_text, value);
    }

    Notes& m_notes;
    double m_rate;
    TimeUnit m_unit;
    bool m_hasDegrees = true;                   // as the unit of values; angles of tangents are in degrees always
    std::map<std::string, int> m_attributes;    // of each node so far
    std::map<std::string, std::string> m_names; // under which curves come back
    std::string m_text = "animVersion 1.1;\nmayaVersion 2018;\n";
};

void MayaDocument::writeHeader(const FCurveContainer& curves) {
    const auto unitOf = [&](const char* key, const auto& units, const char* otherwise) -> std::string {
        const std::string value = curves.getProperty(key);
        const auto* const unit = FindUnit(units, value);
        if (!unit && !value.empty())
            Lose({"", Loss::Units, Loss::Replaced, Quoted(value) + " by " + otherwise, 1, {}, 0.0, 0.0});
        return unit ? unit->name : otherwise;
    };
    line("timeUnit", m_unit.name);
    line("linearUnit", unitOf(kLinearUnit, kLinearUnits, "cm"));
    const std::string angular = unitOf(kAngularUnit, kAngularUnits, "deg");
    line("angularUnit", angular);
    m_hasDegrees = angular == "deg";
    double first = HUGE_VAL;
    double last = -HUGE_VAL;
    for (const FCurve& curve : curves) {
        if (curve.size() < 2) continue;
        first = std::min(first, curve.begin()->getRightKey()->getX());
        last = std::max(last, std::prev(curve.end())->getLeftKey()->getX());
    }
    if (!(first <= last)) first = last = 0.0;
    ParseNumber(curves.getProperty(kFirstFrame), first);
    ParseNumber(curves.getProperty(kLastFrame), last);
    line("startTime", NumberText(first * m_unit.perFrame));
    line("endTime", NumberText(last * m_unit.perFrame));
    for (const char* key : {"maya_start_unitless", "maya_end_unitless"})
        if (double value = 0.0; ParseNumber(curves.getProperty(key), value))
            line(key == std::string_view("maya_start_unitless") ? "startUnitless" : "endUnitless", NumberText(value));
}

// The attribute with all that stands before it in a statement "anim".
std::string MayaDocument::nameOf(const FCurve& curve, std::string& node) {
    ChannelName name = SplitName(curve.getName());
    std::string full;
    if (const auto transform = FindTransform(name.channel)) {
        static constexpr const char* kinds[] = {"translate", "rotate", "scale"};
        name.channel = std::string(kinds[transform->kind]) + "XYZ"[transform->axis];
        full = std::string(kinds[transform->kind]) + '.';
    }
    std::replace(name.node.begin(), name.node.end(), '/', '|');
    name.channel = WordOf(name.channel, "[].");
    if (name.channel.empty()) name.channel = "_";
    node = WordOf(name.node, "|:");
    // With its own name a curve comes back under that.
    const std::string kept = curve.getProperty("maya_full");
    if (node.empty() && !kept.empty() && kept == curve.getName()) name.channel = kept;
    std::string backNode = node;
    std::replace(backNode.begin(), backNode.end(), '|', '/');
    const std::string back = JoinName({backNode, name.channel});
    if (back != curve.getName()) m_notes.rename(curve, back);
    if (const auto other = m_names.emplace(back, curve.getName()).first; other->second != curve.getName())
        Lose({curve.getName(),
              Loss::Names,
              Loss::Renamed,
              Quoted(back) + ", which " + Quoted(other->second) + " is called, too",
              1,
              {},
              0.0,
              0.0});
    return node.empty() ? name.channel : full + name.channel + ' ' + name.channel + ' ' + node;
}

bool MayaDocument::isWeighted(const Track& track) const {
    for (std::size_t i = 0; i + 1 < track.knots.size(); ++i) {
        if (track.knots[i].piece != Piece::Bezier) continue;
        const double third = (track.knots[i + 1].x - track.knots[i].x) / 3.0;
        const double close = 1e-9 * 3.0 * third;
        if (std::fabs(track.knots[i].out.handle.x - third) > close
            || std::fabs(-track.knots[i + 1].in.handle.x - third) > close)
            return true;
    }
    return false;
}

WrittenSide MayaDocument::sideOf(const FCurve& curve, const Track& track, std::size_t index, bool isIn) const {
    const std::vector<Knot>& knots = track.knots;
    const Knot& knot = knots[index];
    const bool hasPiece = isIn ? index > 0 : index + 1 < knots.size();
    const Knot* const other = !hasPiece ? nullptr : isIn ? &knots[index - 1] : &knots[index + 1];
    const Piece piece = !hasPiece ? Piece::Constant : isIn ? other->piece : knot.piece;
    WrittenSide side;
    if (hasPiece && piece == Piece::Linear) side.kind = MayaKind::Linear;
    if (hasPiece && !isIn && piece == Piece::Constant) side.kind = MayaKind::Step;
    if (hasPiece && !isIn && piece == Piece::ConstantNext) side.kind = MayaKind::StepNext;
    if (side.kind != MayaKind::Fixed) return side;

    Vector2D<double> handle = (isIn ? knot.in : knot.out).handle;
    std::uint8_t type = (isIn ? knot.in : knot.out).type;
    if (!hasPiece || piece != Piece::Bezier) { // one that shapes nothing, or goes on outside
        const Segment* const segment =
            hasPiece ? (isIn ? other->segment : nullptr) : (isIn ? &*curve.begin() : &*std::prev(curve.end()));
        const auto tangent = !segment ? nullptr : isIn ? segment->getInTangent() : segment->getOutTangent();
        const bool isLine = !hasPiece && (isIn ? track.leading : track.trailing).kind == End::Line;
        if (tangent && !isLine) handle = tangent->get();
        if (tangent) type = tangent->getType();
        if (!tangent) handle = {1.0, 0.0};
    }
    const double x = std::fabs(handle.x);
    const double y = isIn ? -handle.y : handle.y;

    // An automatic kind where Maya's rule gives this very handle.
    static constexpr MayaKind kinds[] = {MayaKind::Fixed,  MayaKind::Flat,  MayaKind::Linear, MayaKind::Spline,
                                         MayaKind::Spline, MayaKind::Fixed, MayaKind::Plateau};
    const MayaKind kind = kinds[type];
    if (kind != MayaKind::Fixed) {
        const auto at = [](const Knot& one) { return Vector2D<double>{one.x, one.y}; };
        const Vector2D<double> previous = index > 0 ? at(knots[index - 1]) : Vector2D<double>{};
        const Vector2D<double> next = index + 1 < knots.size() ? at(knots[index + 1]) : Vector2D<double>{};
        const double slope = MayaSlope(kind, isIn, index > 0 ? &previous : nullptr, at(knot),
                                       index + 1 < knots.size() ? &next : nullptr);
        const double reach = hasPiece ? std::fabs(other->x - knot.x) / 3.0 : x;
        const bool isSame = std::fabs(x - reach) <= 1e-9 * reach
                            && std::fabs(y - slope * reach) <= 1e-9 * std::max(std::fabs(y), 1e-3 * reach);
        if (isSame) side.kind = kind;
    }
    if (side.kind == MayaKind::Fixed) {
        const double units = x * m_unit.perFrame;
        side.angle = units == 0.0 && y == 0.0 ? 0.0 : std::atan2(y, units) * kDegrees;
        side.weight = std::hypot(units, y);
    }
    return side;
}

void MayaDocument::writeKey(const FCurve& curve, const Track& track, std::size_t index, bool isWeighted) {
    const Knot& knot = track.knots[index];
    const WrittenSide in = sideOf(curve, track, index, true);
    const WrittenSide out = sideOf(curve, track, index, false);
    const auto key = knot.segment ? knot.segment->getLeftKey() : nullptr;
    const auto isWeightLocked = [](const auto& tangent) { return tangent && tangent->isWeightLocked(); };
    m_text += "   ";
    number(knot.x * m_unit.perFrame);
    number(knot.y);
    m_text += std::string(" ") + ToText(in.kind) + ' ' + ToText(out.kind);
    m_text += key && key->isTangentsUnified() ? " 1" : " 0";
    m_text += key && isWeightLocked(key->getInTangent()) && isWeightLocked(key->getOutTangent()) ? " 1" : " 0";
    m_text += key && key->isBreakdown() ? " 1" : " 0";
    for (const WrittenSide& side : {in, out}) {
        if (side.kind != MayaKind::Fixed) continue;
        number(side.angle);
        number(isWeighted ? side.weight : 1.0);
    }
    m_text += ";\n";
}

void MayaDocument::writeCurve(const FCurve& curve) {
    Abilities abilities;
    abilities.constantNext = true;
    abilities.rises = true;
    const Track track = Resolve(curve, abilities, m_notes);
    std::string node;
    const std::string name = nameOf(curve, node);
    const std::string place = curve.getProperty("maya_place");
    m_text += "anim " + name + ' ';
    m_text += place.empty() ? "0 0 " + std::to_string(m_attributes[node]) : place;
    m_text += ";\n";
    ++m_attributes[node];

    std::string output = curve.getProperty("maya_output");
    if (output.empty()) {
        const auto transform = FindTransform(SplitName(curve.getName()).channel);
        output = !transform                                       ? "unitless"
                 : transform->kind == TransformChannel::Translate ? "linear"
                 : transform->kind == TransformChannel::Rotate    ? "angular"
                                                                  : "unitless";
    }
    static constexpr const char* infinities[] = {"constant", "linear", "cycle", "cycleRelative", "oscillate"};
    const bool weighted = isWeighted(track);
    const std::string input = curve.getProperty("maya_input");
    m_text += "animData {\n";
    line("  input", input == "unitless" ? input : "time");
    line("  output", WordOf(output, ""));
    line("  weighted", weighted ? "1" : "0");
    if (!m_hasDegrees) line("  tangentAngleUnit", "deg");
    line("  preInfinity", infinities[track.leading.kind]);
    line("  postInfinity", infinities[track.trailing.kind]);
    m_text += "  keys {\n";
    for (std::size_t i = 0; i < track.knots.size(); ++i) writeKey(curve, track, i, weighted);
    m_text += "  }\n}\n";
}

} // namespace

MayaWriter::MayaWriter() : CurveWriter(FormatType("maya_anim", "Maya animation", "anim")) {}

std::string MayaWriter::compose(const FCurveContainer& curves, Notes& notes) const {
    return MayaDocument(curves, notes).take();
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
