#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "FCurveInterchange/Names.h"
#include "interchange/MayaFormat.h"
#include "interchange/MayaTangents.h"
#include "interchange/Numbers.h"
#include "interchange/Units.h"

#include <FCurveLib/FormatType.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

constexpr double kPi = 3.14159265358979323846;
// Of a vertical unweighted tangent, in value a second.
constexpr double kSteepest = 5729577.948511148;

// Degrees for a unit that is not known.
double RadiansOf(const AngularUnit* unit) {
    return unit ? unit->radians : kPi / 180.0;
}

struct Word {
    enum Type : unsigned char { Text, Semicolon, Open, Close, End };
    Type type = End;
    std::string_view text;
    std::size_t offset = 0;

    bool is(std::string_view word) const { return type == Text && text == word; }
};

class Words {
public:
    explicit Words(std::string_view bytes) : m_bytes(bytes) {
        if (bytes.substr(0, 3) == "\xEF\xBB\xBF") m_at = 3;
    }

    Word next() {
        skip();
        Word word;
        word.offset = m_at;
        if (m_at >= m_bytes.size()) return word;
        const char c = m_bytes[m_at];
        if (c == ';' || c == '{' || c == '}') {
            word.type = c == ';' ? Word::Semicolon : c == '{' ? Word::Open : Word::Close;
            word.text = m_bytes.substr(m_at++, 1);
            return word;
        }
        word.type = Word::Text;
        if (c == '"') {
            const std::size_t end = m_bytes.find('"', m_at + 1);
            if (end == std::string_view::npos) fail(m_at, "The quote is not closed.");
            word.text = m_bytes.substr(m_at + 1, end - m_at - 1);
            m_at = end + 1;
            return word;
        }
        while (m_at < m_bytes.size() && !isBlank(m_bytes[m_at]) && !isMark(m_bytes[m_at])) ++m_at;
        word.text = m_bytes.substr(word.offset, m_at - word.offset);
        return word;
    }

    // All up to the semicolon, which is taken too; without blanks around it.
    std::string_view rest() {
        skip();
        const std::size_t start = m_at;
        const std::size_t end = m_bytes.find_first_of(";{}", start);
        if (end == std::string_view::npos || m_bytes[end] != ';')
            fail(std::min(end, m_bytes.size()), "Expected \";\".");
        m_at = end + 1;
        std::string_view text = m_bytes.substr(start, end - start);
        while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
        return text;
    }

    template<class Error = BadDocument>
    [[noreturn]] void fail(std::size_t offset, const std::string& message) const {
        const Place place = PlaceOf(m_bytes, offset);
        throw Error(message, place.line, place.column);
    }
    [[noreturn]] void failAt(const Word& word, const std::string& expected) const {
        fail(word.offset, "Expected " + expected + ", found "
                              + (word.type == Word::End ? std::string("the end of the file") : Quoted(word.text))
                              + '.');
    }

private:
    static bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
    static bool isMark(char c) { return c == ';' || c == '{' || c == '}'; }

    void skip() {
        while (m_at < m_bytes.size()) {
            if (isBlank(m_bytes[m_at]))
                ++m_at;
            else if (m_bytes[m_at] == '/' || m_bytes[m_at] == '#')
                m_at = std::min(m_bytes.find_first_of("\r\n", m_at), m_bytes.size());
            else
                return;
        }
    }

    std::string_view m_bytes;
    std::size_t m_at = 0;
};

struct MayaSide {
    MayaKind kind = MayaKind::Flat;
    double angle = 0.0; // in radians; of a fixed one
    double weight = 1.0;
};

struct MayaKey {
    Vector2D<double> at;
    MayaSide in;
    MayaSide out;
    bool isTangentLocked = false;
    bool isWeightLocked = false;
    bool isBreakdown = false;
};

struct MayaCurve {
    std::vector<MayaKey> keys;
    std::string name;
    bool isWeighted = false;
    std::string_view pre = "constant";
    std::string_view post = "constant";
    std::string_view input = "time";
    std::string_view output = "linear";
    double angleUnit = kPi / 180.0; // in radians
    double timeScale = 1.0;         // frames a unit
};

class MayaParser {
public:
    explicit MayaParser(std::string_view bytes) : m_words(bytes) {}

    Document parse();

private:
    void readHeader(const Word& word);
    void readAnim(const Word& anim);
    void readAnimData();
    void readKeys(MayaCurve& curve, const Word& start);
    MayaKey readKey(const MayaCurve& curve, const Word& first);
    MayaSide readKind(const char* what);
    double number(const char* what);
    double numberOf(const Word& word, const char* what) const;
    bool flag(const char* what);

    void finish(MayaCurve& curve);
    void setTimeUnit(std::string_view unit, double& scale, bool isHeader);
    static void loseUnit(std::string detail);
    void tell(const MayaCurve& curve, Loss::What what, Loss::Remedy remedy, std::string detail,
              const double* place = nullptr) const;
    double slopeOf(const MayaCurve& curve, std::size_t index, bool isIn) const;
    Side sideOf(const MayaCurve& curve, std::size_t index, bool isIn) const;
    End endOf(std::string_view infinity, const MayaCurve& curve) const;

    Words m_words;
    Document m_document;
    double m_version = 0.0;
    bool m_isOld = false; // Maya 2: tangents in seconds, centimetres, radians
    double m_rate = 0.0;  // as the header states it
    double m_frameRate = 0.0;
    double m_timeScale = 1.0;
    double m_angleUnit = kPi / 180.0;
    double m_linearPerCentimetre = 1.0;
    Track m_track; // of the last anim statement
    bool m_hasAnim = false;
    bool m_isPlaceHolder = false;
    std::string m_place; // what it says
};

double MayaParser::numberOf(const Word& word, const char* what) const {
    double result = 0.0;
    if (word.type != Word::Text || !ParseNumber(word.text, result)) m_words.failAt(word, what);
    return result;
}

double MayaParser::number(const char* what) {
    return numberOf(m_words.next(), what);
}

bool MayaParser::flag(const char* what) {
    return number(what) != 0.0;
}

void MayaParser::tell(const MayaCurve& curve, Loss::What what, Loss::Remedy remedy, std::string detail,
                      const double* place) const {
    Loss loss;
    loss.curve = curve.name;
    loss.what = what;
    loss.remedy = remedy;
    loss.detail = std::move(detail);
    if (place) loss.places.push_back(*place);
    Lose(loss);
}

void MayaParser::loseUnit(std::string detail) {
    Loss loss;
    loss.what = Loss::Units;
    loss.remedy = Loss::Replaced;
    loss.detail = std::move(detail);
    Lose(loss);
}

void MayaParser::setTimeUnit(std::string_view unit, double& scale, bool isHeader) {
    const double wanted = Conversion::options().frameRate;
    if (const double seconds = MayaClockSeconds(unit); seconds > 0.0) {
        scale = seconds * FrameRateOr(0.0);
        if (isHeader) m_frameRate = FrameRateOr(0.0);
        return;
    }
    double rate = MayaFrameRate(unit);
    if (rate <= 0.0) {
        loseUnit("time unit " + Quoted(unit) + " by film");
        rate = 24.0;
    }
    // A host that wants another rate gets the same seconds.
    scale = wanted > 0.0 ? wanted / rate : 1.0;
    if (isHeader) {
        m_rate = rate;
        m_frameRate = wanted > 0.0 ? wanted : rate;
    }
}

void MayaParser::readHeader(const Word& word) {
    const std::string_view text = m_words.rest();
    const auto keep = [&](const char* key, std::string_view value) {
        m_document.properties.emplace_back(key, std::string(value));
    };
    const auto frame = [&](const char* key) {
        double x = 0.0;
        if (!ParseNumber(text, x)) m_words.fail(word.offset, Quoted(text) + " is not a number.");
        keep(key, NumberText(x * m_timeScale));
    };
    if (word.is("mayaVersion")) {
        keep("maya_version", text);
        m_isOld = text.substr(0, 2) == "2.";
    } else if (word.is("timeUnit")) {
        setTimeUnit(text, m_timeScale, true);
    } else if (word.is("linearUnit")) {
        if (const LinearUnit* const unit = FindUnit(kLinearUnits, text)) {
            keep(kLinearUnit, unit->name);
            m_linearPerCentimetre = 0.01 / unit->meters;
        } else {
            loseUnit("linear unit " + Quoted(text));
        }
    } else if (word.is("angularUnit")) {
        if (const AngularUnit* const unit = FindUnit(kAngularUnits, text)) {
            keep(kAngularUnit, unit->name);
            m_angleUnit = RadiansOf(unit);
        } else {
            loseUnit("angular unit " + Quoted(text) + " by deg");
        }
    } else if (word.is("startTime")) {
        frame(kFirstFrame);
    } else if (word.is("endTime")) {
        frame(kLastFrame);
    } else if (word.is("startUnitless")) {
        keep("maya_start_unitless", text);
    } else if (word.is("endUnitless")) {
        keep("maya_end_unitless", text);
    } else {
        Loss loss;
        loss.what = Loss::Properties;
        loss.detail = "statement " + Quoted(word.text);
        Lose(loss);
    }
}

void MayaParser::readAnim(const Word& anim) {
    if (m_hasAnim && m_isPlaceHolder) m_document.properties.emplace_back("", m_place);
    std::vector<Word> words;
    constexpr std::size_t kMost = 6;
    for (Word word = m_words.next(); word.type != Word::Semicolon; word = m_words.next()) {
        if (word.type != Word::Text || words.size() >= kMost) m_words.failAt(word, "\";\"");
        words.push_back(word);
    }
    const auto isCount = [](const Word& word) {
        double value = 0.0;
        return ParseNumber(word.text, value) && value >= 0.0 && value == std::floor(value);
    };
    if (words.size() < 3)
        m_words.failAt(words.empty() ? Word{Word::Semicolon, ";", 0} : words.back(), "ROW CHILD ATTR");
    for (std::size_t i = words.size() - 3; i < words.size(); ++i)
        if (!isCount(words[i])) m_words.failAt(words[i], "a whole number");

    const std::size_t count = words.size() - 3;
    m_track = Track();
    m_track.offset = anim.offset;
    ChannelName name;
    name.channel = count > 1 ? words[1].text : count > 0 ? words[0].text : "";
    if (count > 2) name.node = words[2].text;
    // Paths of the scene are paths of ours.
    std::replace(name.node.begin(), name.node.end(), '|', '/');
    if (!name.node.empty() && name.node.front() == '/') name.node.erase(0, 1);
    m_track.name = JoinName(name);
    m_place.clear();
    for (std::size_t i = count; i < words.size(); ++i) m_place += (i > count ? " " : "") + std::string(words[i].text);
    if (count > 0) m_track.properties.emplace_back("maya_full", std::string(words[0].text));
    m_track.properties.emplace_back("maya_place", m_place);
    if (count > 0) m_place = std::string(words[0].text) + ' ' + m_place;
    m_hasAnim = true;
    m_isPlaceHolder = count == 1;
}

MayaSide MayaParser::readKind(const char* what) {
    const Word word = m_words.next();
    double ignored = 0.0;
    if (word.type != Word::Text || ParseNumber(word.text, ignored)) m_words.failAt(word, what);
    MayaSide side;
    side.kind = MayaKindOf(word.text);
    return side;
}

MayaKey MayaParser::readKey(const MayaCurve& curve, const Word& first) {
    MayaKey key;
    key.at.x = numberOf(first, "a time or \"}\"") * curve.timeScale;
    key.at.y = number("a value");
    key.in = readKind("a kind of tangent");
    key.out = readKind("a kind of tangent");
    key.isTangentLocked = flag("whether the tangents are locked");
    key.isWeightLocked = flag("whether the weights are locked");
    if (m_version > 1.05) key.isBreakdown = flag("whether this is a breakdown");
    for (MayaSide* side : {&key.in, &key.out}) {
        if (side->kind != MayaKind::Fixed) continue;
        side->angle = number("an angle") * curve.angleUnit;
        const Word weight = m_words.next();
        side->weight = numberOf(weight, "a weight");
        if (side->weight < 0.0) m_words.fail(weight.offset, "A weight is negative.");
    }
    Word end = m_words.next();
    if (end.type == Word::Text) {
        tell(curve, Loss::Properties, Loss::Dropped, "numbers after a key", &key.at.x);
        while (end.type == Word::Text) end = m_words.next();
    }
    if (end.type != Word::Semicolon) m_words.failAt(end, "\";\"");
    return key;
}

void MayaParser::readKeys(MayaCurve& curve, const Word& start) {
    const FormatLimits limits = GetFormatLimits();
    bool rises = true;
    for (Word word = m_words.next(); word.type != Word::Close; word = m_words.next()) {
        if (word.type == Word::Semicolon) continue;
        if (curve.keys.size() >= limits.keys)
            m_words.fail<TooMuch>(word.offset,
                                  "There are too many keys; the limit is " + std::to_string(limits.keys) + '.');
        curve.keys.push_back(readKey(curve, word));
        const std::size_t count = curve.keys.size();
        rises = rises && (count < 2 || curve.keys[count - 1].at.x > curve.keys[count - 2].at.x);
    }
    if (rises) return;
    std::stable_sort(curve.keys.begin(), curve.keys.end(),
                     [](const MayaKey& a, const MayaKey& b) { return a.at.x < b.at.x; });
    for (std::size_t i = 1; i < curve.keys.size(); ++i)
        if (!(curve.keys[i].at.x > curve.keys[i - 1].at.x))
            m_words.fail(start.offset, "There are two keys at time " + ShortNumber(curve.keys[i].at.x) + '.');
    tell(curve, Loss::Time, Loss::Moved, "keys that were not in order");
}

void MayaParser::readAnimData() {
    const Word open = m_words.next();
    if (open.type != Word::Open) m_words.failAt(open, "\"{\"");
    if (!m_hasAnim) m_words.fail(open.offset, "There is no \"anim\" before the curve.");
    MayaCurve curve;
    curve.name = m_track.name;
    curve.isWeighted = m_version < 1.05; // such files know no other
    curve.angleUnit = m_angleUnit;
    curve.timeScale = m_timeScale;
    for (Word word = m_words.next(); word.type != Word::Close; word = m_words.next()) {
        if (word.type == Word::Semicolon) continue;
        if (word.type != Word::Text) m_words.failAt(word, "a word or \"}\"");
        if (word.is("keys")) {
            const Word brace = m_words.next();
            if (brace.type != Word::Open) m_words.failAt(brace, "\"{\"");
            readKeys(curve, word);
            continue;
        }
        const std::string_view value = m_words.rest();
        if (word.is("input"))
            curve.input = value;
        else if (word.is("output"))
            curve.output = value;
        else if (word.is("weighted"))
            curve.isWeighted = value != "0";
        else if (word.is("inputUnit"))
            setTimeUnit(value, curve.timeScale, false);
        else if (word.is("outputUnit"))
            m_track.properties.emplace_back("maya_output_unit", std::string(value));
        else if (word.is("tangentAngleUnit"))
            curve.angleUnit = RadiansOf(FindUnit(kAngularUnits, value));
        else if (word.is("preInfinity"))
            curve.pre = value;
        else if (word.is("postInfinity"))
            curve.post = value;
        else
            tell(curve, Loss::Properties, Loss::Dropped, "statement " + Quoted(word.text));
        if (word.is("input") && value == "unitless") curve.timeScale = 1.0;
    }
    m_track.properties.emplace_back("maya_output", std::string(curve.output));
    if (curve.input != "time") m_track.properties.emplace_back("maya_input", std::string(curve.input));
    finish(curve);
    m_hasAnim = false;
    m_isPlaceHolder = false;
}

double MayaParser::slopeOf(const MayaCurve& curve, std::size_t index, bool isIn) const {
    const std::vector<MayaKey>& keys = curve.keys;
    const MayaSide& side = isIn ? keys[index].in : keys[index].out;
    if (side.kind == MayaKind::Fixed) {
        // In seconds its steepness has a limit.
        const double most = kSteepest / m_frameRate;
        const double slope = std::fabs(side.angle) >= 0.5 * kPi ? std::copysign(most, side.angle)
                                                                : std::tan(side.angle) / curve.timeScale;
        return curve.isWeighted ? slope : std::clamp(slope, -most, most);
    }
    return MayaSlope(side.kind, isIn, index > 0 ? &keys[index - 1].at : nullptr, keys[index].at,
                     index + 1 < keys.size() ? &keys[index + 1].at : nullptr);
}

// The handle of one side, before overlong ones are cut.
Side MayaParser::sideOf(const MayaCurve& curve, std::size_t index, bool isIn) const {
    const std::vector<MayaKey>& keys = curve.keys;
    const MayaSide& side = isIn ? keys[index].in : keys[index].out;
    const bool hasSegment = isIn ? index > 0 : index + 1 < keys.size();
    const double sign = isIn ? -1.0 : 1.0;
    Side result;
    result.isWeightLocked = keys[index].isWeightLocked;
    result.isGiven = true;
    const double reach = !hasSegment ? 1.0
                         : isIn      ? (keys[index].at.x - keys[index - 1].at.x) / 3.0
                                     : (keys[index + 1].at.x - keys[index].at.x) / 3.0;
    const double slope = slopeOf(curve, index, isIn);
    result.handle = {sign * reach, sign * reach * slope};
    if (side.kind == MayaKind::Fixed) {
        result.isWeighted = curve.isWeighted && (hasSegment || side.weight != 1.0);
        if (curve.isWeighted) {
            const bool isVertical = std::fabs(std::fabs(side.angle) - 0.5 * kPi) < 1e-14;
            double x = isVertical ? 0.0 : std::max(0.0, side.weight * std::cos(side.angle)) * curve.timeScale;
            double y = side.weight * std::sin(side.angle);
            if (m_isOld) { // from seconds, and from centimetres or radians
                x *= m_rate > 0.0 ? m_rate : 24.0;
                y *= curve.output == "angular" ? 1.0 / m_angleUnit : m_linearPerCentimetre;
            }
            result.handle = {sign * x, sign * y};
        }
        return result;
    }
    const bool isStep = side.kind == MayaKind::Step || side.kind == MayaKind::StepNext;
    if (isStep && curve.isWeighted) {
        result.isWeighted = true;
        result.handle = {};
        return result;
    }
    const double x = keys[index].at.x;
    const bool isInner = index > 0 && index + 1 < keys.size();
    switch (side.kind) {
    case MayaKind::Spline:
        result.type = Tangent::SmoothContinued;
        break;
    case MayaKind::Linear:
        result.type = Tangent::Linear;
        break;
    case MayaKind::Plateau:
    case MayaKind::Auto: {
        const double ours = isInner ? PlateauSlope(isIn, keys[index - 1].at, keys[index].at, keys[index + 1].at) : 0.0;
        if (!isInner && hasSegment)
            result.type = Tangent::Flat;
        else if (isInner && std::fabs(ours - slope) <= 1e-9 * std::fabs(slope))
            result.type = Tangent::Plateau;
        break;
    }
    case MayaKind::Flat:
    case MayaKind::Step:
    case MayaKind::StepNext:
        result.type = Tangent::Flat;
        break;
    case MayaKind::Slow:
    case MayaKind::Fast:
        result.type = Tangent::Linear;
        tell(curve, Loss::Kind, Loss::Replaced, "slow and fast tangents by linear ones", &x);
        return result;
    case MayaKind::Global:
    case MayaKind::Unknown:
        result.type = Tangent::SmoothContinued;
        tell(curve, Loss::Kind, Loss::Replaced, "tangents of a global or unknown kind by smooth ones", &x);
        return result;
    default:
        break;
    }
    if (result.type == Tangent::Fixed && hasSegment)
        tell(curve, Loss::Kind, Loss::Replaced, std::string(ToText(side.kind)) + " tangents by fixed ones", &x);
    return result;
}

End MayaParser::endOf(std::string_view infinity, const MayaCurve& curve) const {
    End end;
    if (curve.keys.size() < 2) return end; // one key repeats nothing
    if (infinity == "linear")
        end.kind = End::Line;
    else if (infinity == "cycle")
        end.kind = End::Cycle;
    else if (infinity == "cycleRelative")
        end.kind = End::CycleOffset;
    else if (infinity == "oscillate")
        end.kind = End::Mirror;
    else if (infinity != "constant")
        tell(curve, Loss::Ends, Loss::Replaced, "infinity " + Quoted(infinity) + " by constant");
    return end;
}

void MayaParser::finish(MayaCurve& curve) {
    Track track = std::move(m_track);
    track.leading = endOf(curve.pre, curve);
    track.trailing = endOf(curve.post, curve);
    if (m_isOld) tell(curve, Loss::Units, Loss::Replaced, "tangents in seconds, as Maya 2 has them");
    const std::vector<MayaKey>& keys = curve.keys;
    track.knots.resize(keys.size());
    const auto isStep = [](MayaKind kind) { return kind == MayaKind::Step || kind == MayaKind::StepNext; };
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const MayaKey& key = keys[i];
        Knot& knot = track.knots[i];
        knot.x = key.at.x;
        knot.y = key.at.y;
        knot.isBreakdown = key.isBreakdown;
        const bool isLast = i + 1 == keys.size();
        if (key.out.kind == MayaKind::Step)
            knot.piece = Piece::Constant;
        else if (key.out.kind == MayaKind::StepNext)
            knot.piece = Piece::ConstantNext;
        else if (!isLast && key.out.kind == MayaKind::Linear && keys[i + 1].in.kind == MayaKind::Linear)
            knot.piece = Piece::Linear;
        else
            knot.piece = Piece::Bezier;

        // Handles that shape nothing are told where the file has numbers for them.
        const bool isLinear = i > 0 && track.knots[i - 1].piece == Piece::Linear;
        const bool isAfterBezier = i > 0 && track.knots[i - 1].piece == Piece::Bezier;
        if (isStep(key.in.kind) ? isAfterBezier : !isLinear) knot.in = sideOf(curve, i, true);
        if (isLast ? !isStep(key.out.kind) : knot.piece == Piece::Bezier) knot.out = sideOf(curve, i, false);
        knot.in.isWeightLocked = knot.out.isWeightLocked = key.isWeightLocked;

        if (key.isTangentLocked) {
            const double in = std::atan(slopeOf(curve, i, true));
            const double out = std::atan(slopeOf(curve, i, false));
            knot.isUnified = isStep(key.in.kind) || isStep(key.out.kind) || std::fabs(in - out) <= 1e-6;
            if (!knot.isUnified)
                tell(curve, Loss::Flags, Loss::Dropped, "locked tangents that are not on one line", &knot.x);
        }
    }
    for (std::size_t i = 0; curve.isWeighted && i + 1 < keys.size(); ++i) {
        Knot& left = track.knots[i];
        Knot& right = track.knots[i + 1];
        if (left.piece != Piece::Bezier) continue;
        Vector2D<double> in{-right.in.handle.x, -right.in.handle.y};
        if (!LimitMayaHandles(right.x - left.x, left.out.handle, in)) continue;
        right.in.handle = {-in.x, -in.y};
        for (Side* side : {&left.out, &right.in}) {
            side->type = Tangent::Fixed;
            side->isWeighted = true;
        }
        tell(curve, Loss::Tangents, Loss::Shortened, "overlong handles", &left.x);
    }
    if (!keys.empty()) TakeRise(track, keys.back().at.y - keys.front().at.y);
    m_document.tracks.push_back(std::move(track));
}

Document MayaParser::parse() {
    Word word = m_words.next();
    if (word.is("atomVersion")) m_words.fail(word.offset, "This is an .atom file, which is another format.");
    if (word.type == Word::Text && word.text.substr(0, 5) == "%YAML")
        m_words.fail(word.offset, "This is a YAML file, the .anim of another program.");
    if (!word.is("animVersion")) m_words.failAt(word, "\"animVersion\"");
    const Word version = m_words.next();
    m_version = numberOf(version, "a version");
    if (!(m_version >= 1.0 && m_version < 2.0))
        m_words.fail(version.offset, "The file has version " + ShortNumber(m_version) + "; version 1 can be read.");
    m_frameRate = FrameRateOr(24.0);
    std::size_t placeHolders = 0;
    while ((word = m_words.next()).type != Word::End) {
        if (word.type == Word::Semicolon) continue;
        if (word.type != Word::Text) m_words.failAt(word, "a word");
        if (word.is("animData")) {
            const std::size_t limit = GetFormatLimits().curves;
            if (m_document.tracks.size() >= limit)
                m_words.fail<TooMuch>(word.offset,
                                      "There are too many curves; the limit is " + std::to_string(limit) + '.');
            readAnimData();
        } else if (word.is("anim")) {
            readAnim(word);
        } else {
            readHeader(word);
        }
    }
    if (m_hasAnim && m_isPlaceHolder) m_document.properties.emplace_back("", m_place);
    for (auto& [key, value] : m_document.properties)
        if (key.empty()) key = "maya_place_holder_" + std::to_string(++placeHolders);
    m_document.properties.emplace_back(kFrameRate, NumberText(m_frameRate));
    return std::move(m_document);
}

} // namespace

MayaReader::MayaReader() : CurveReader(FormatType("maya_anim", "Maya animation", "anim")) {}

Document MayaReader::parse(std::string_view bytes) const {
    return MayaParser(bytes).parse();
}

bool MayaReader::recognises(std::string_view opening, bool) const {
    return Words(opening).next().is("animVersion");
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
