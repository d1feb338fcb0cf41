#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "FCurveInterchange/Names.h"
#include "interchange/Easing.h"
#include "interchange/EasingFormats.h"
#include "interchange/JsonTree.h"
#include "interchange/Numbers.h"

#include <FCurveLib/FormatType.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

// The way to a value, spelled out only where something is wrong there.
struct Way {
    const Way* before = nullptr;
    const char* word = nullptr; // or
    std::size_t index = 0;
    std::string text = {}; // of a way that begins here

    std::string spelled() const {
        if (!before) return text;
        return before->spelled() + '/' + (word ? std::string(word) : std::to_string(index));
    }
};

[[noreturn]] void Refuse(const std::string& path, const std::string& message) {
    throw BadDocument(message, 0, 0, path);
}
[[noreturn]] void Refuse(const Way& way, const std::string& message) {
    Refuse(way.spelled(), message);
}

double NumberAt(const JsonValue& value, const Way& way) {
    if (!value.isNumber()) Refuse(way, "Expected a number.");
    return value.number();
}

// A number, or the one of the dimension in an array; where the array is shorter, the first.
double PerDimension(const JsonValue& value, std::size_t dimension, std::size_t dimensions, const Way& way) {
    if (!value.isArray()) return NumberAt(value, way);
    if (value.empty() || value.size() > std::max<std::size_t>(dimensions, 1))
        Refuse(way, "Expected an array of 1 to " + std::to_string(dimensions) + " numbers.");
    const std::size_t index = dimension < value.size() ? dimension : 0;
    return NumberAt(value[index], {&way, nullptr, index});
}

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

struct Frame {
    double t = 0.0;
    // Where a value for each dimension stands in the numbers of all; kNone where the keyframe has none.
    std::size_t start = kNone;
    std::size_t end = kNone;   // of files that have it
    std::size_t leave = kNone; // the path's handles, as offsets
    std::size_t arrive = kNone;
    std::size_t easings = kNone; // likewise in the easings
    bool isHeld = false;
};

// The keyframes of a property.
struct Keyframes {
    const char* content = nullptr; // what it is, where its values are objects; then there are none
    std::size_t dimensions = 0;
    std::vector<Frame> frames;
    std::vector<double> numbers;
    std::vector<Easing> easings;

    const double* start(std::size_t frame) const { return &numbers[frames[frame].start]; }
    // Of the way to the next frame; 0 where the frame has no handle.
    double handle(std::size_t place, std::size_t dimension) const {
        return place == kNone ? 0.0 : numbers[place + dimension];
    }

    // Appends a number, or those of an array; returns their place.
    std::size_t add(const JsonValue& value, const Way& way) {
        const std::size_t place = numbers.size();
        if (!value.isArray()) {
            numbers.push_back(NumberAt(value, way));
            return place;
        }
        for (const JsonValue& element : value)
            numbers.push_back(NumberAt(element, {&way, nullptr, numbers.size() - place}));
        if (numbers.size() == place) Refuse(way, "The array is empty.");
        return place;
    }
};

Easing EasingAt(const JsonValue& out, const JsonValue& in, std::size_t dimension, std::size_t dimensions,
                const Way& way) {
    double numbers[4];
    double* next = numbers;
    for (const auto& [handle, object] : {std::pair("o", out), std::pair("i", in)}) {
        const Way place{&way, handle};
        for (const char* axis : {"x", "y"}) {
            const JsonValue value = object[axis];
            if (value.isNull()) Refuse(place, std::string("\"") + axis + "\" is missing.");
            *next++ = PerDimension(value, dimension, dimensions, {&place, axis});
        }
    }
    return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

Keyframes KeyframesAt(const JsonValue& array, const std::string& path) {
    const Way whole{nullptr, nullptr, 0, path};
    Keyframes all;
    std::vector<Frame>& frames = all.frames;
    const std::size_t count = array.size();
    frames.reserve(count);
    all.numbers.reserve(count);
    all.easings.reserve(count);
    for (const JsonValue& keyframe : array) {
        const std::size_t i = frames.size();
        const Way way{&whole, nullptr, i};
        Frame& frame = frames.emplace_back();
        const JsonValue time = keyframe["t"];
        if (time.isNull()) Refuse(way, "\"t\" is missing.");
        frame.t = NumberAt(time, {&way, "t"});
        if (i > 0 && frame.t < frames[i - 1].t) Refuse({&way, "t"}, "The time goes back.");
        const bool isLast = i + 1 == count;
        const JsonValue start = keyframe["s"];
        if (!start.isNull()) {
            Keyframes other;
            if (start.isObject()) other.content = count > 1 ? "a text that changes" : "";
            if (start.isArray() && !start.empty() && start[std::size_t{0}].isObject())
                other.content = "an animated shape";
            if (other.content) return other;
            frame.start = all.add(start, {&way, "s"});
        } else if (isLast && i > 0) {
            frame.start = frames[i - 1].end; // as old files end
        }
        if (frame.start == kNone) Refuse(way, "\"s\" is missing.");
        if (i == 0) all.dimensions = all.numbers.size();
        const auto checkLength = [&](std::size_t place, const char* member) {
            if (all.numbers.size() - place != all.dimensions)
                Refuse({&way, member}, "The array has another length than before.");
        };
        if (!start.isNull()) checkLength(frame.start, "s");
        if (const JsonValue end = keyframe["e"]; !end.isNull()) {
            frame.end = all.add(end, {&way, "e"});
            checkLength(frame.end, "e");
        }
        const JsonValue held = keyframe["h"];
        frame.isHeld = held.isNumber() && held.number() == 1.0;
        const JsonValue out = keyframe["o"];
        const JsonValue in = keyframe["i"];
        if (!isLast && !out.isNull() && !in.isNull()) {
            frame.easings = all.easings.size();
            for (std::size_t d = 0; d < all.dimensions; ++d)
                all.easings.push_back(EasingAt(out, in, d, all.dimensions, way));
        }
        const JsonValue leave = keyframe["to"];
        const JsonValue arrive = keyframe["ti"];
        // Shorter ones have no handle in the other dimensions.
        const auto addHandle = [&](const JsonValue& value, const char* member) {
            const std::size_t place = all.add(value, {&way, member});
            all.numbers.resize(place + all.dimensions);
            return place;
        };
        if (!leave.isNull()) frame.leave = addHandle(leave, "to");
        if (!arrive.isNull()) frame.arrive = addHandle(arrive, "ti");
    }
    return all;
}

// Whether a keyframe moves along an arc: its handles leave the chord.
bool IsCurved(const Keyframes& all, std::size_t index) {
    const Frame& frame = all.frames[index];
    if (frame.isHeld || (frame.leave == kNone && frame.arrive == kNone)) return false;
    const double* const start = all.start(index);
    const double* const end = all.start(index + 1);
    double chord = 0.0;
    double size = 0.0;
    for (std::size_t d = 0; d < all.dimensions; ++d) {
        chord = std::max(chord, std::fabs(end[d] - start[d]));
        size = std::max({size, std::fabs(all.handle(frame.leave, d)), std::fabs(all.handle(frame.arrive, d))});
    }
    if (size == 0.0) return false;
    for (const std::size_t handle : {frame.leave, frame.arrive})
        for (std::size_t a = 0; a < all.dimensions; ++a)
            for (std::size_t b = 0; b < a; ++b)
                if (std::fabs(all.handle(handle, a) * (end[b] - start[b]) - all.handle(handle, b) * (end[a] - start[a]))
                    > 1e-9 * size * std::max(chord, size))
                    return true;
    return chord == 0.0;
}

// Whether x rises with the parameter; then handles may reach out of the unit square.
bool Rises(const Easing& easing) {
    const double first = easing.x1;
    const double second = easing.x2 - easing.x1;
    const double third = 1.0 - easing.x2;
    return first >= 0.0 && third >= 0.0 && (second >= 0.0 || second * second <= first * third);
}

Cubic CubicOf(const Easing& easing) {
    return {{{0.0, 0.0}, {easing.x1, easing.y1}, {easing.x2, easing.y2}, {1.0, 1.0}}};
}

// With handles shortened along their direction until x rises.
Easing Shortened(Easing easing) {
    if (easing.x1 > 1.0) easing.y1 /= easing.x1;
    if (easing.x2 < 0.0) easing.y2 = 1.0 - (1.0 - easing.y2) / (1.0 - easing.x2);
    easing.x1 = std::clamp(easing.x1, 0.0, 1.0);
    easing.x2 = std::clamp(easing.x2, 0.0, 1.0);
    return easing;
}

// How far that leads from what the easing was, at whatever parameter a player finds for an x; in shares.
Distance DistanceOfShortened(const Easing& easing, const Easing& shortened) {
    constexpr int kPlaces = 256;
    const Cubic from = CubicOf(easing);
    const Cubic to = CubicOf(shortened);
    Distance largest;
    for (int i = 1; i < kPlaces; ++i) {
        const Vector2D<double> point = PointAt(from, static_cast<double>(i) / kPlaces);
        if (!(point.x >= 0.0 && point.x <= 1.0)) continue;
        const double off = std::fabs(point.y - PointAt(to, ParameterAt(to, point.x)).y);
        if (off > largest.y) largest = {off, point.x};
    }
    return largest;
}

// The way of all dimensions from a keyframe to the next, eased by its length.
class ArcMotion {
public:
    struct Stand {
        int part;
        double share; // of the part
    };

    ArcMotion(const Keyframes& all, std::size_t index)
        : m_all(all), m_index(index), m_ease(CubicOf(easeOf(all, index))), m_lengths{0.0} {
        for (int part = 1; part <= kParts; ++part) {
            double square = 0.0;
            for (std::size_t d = 0; d < all.dimensions; ++d) {
                const double step = point(d, part) - point(d, part - 1);
                square += step * step;
            }
            m_lengths.push_back(m_lengths.back() + std::sqrt(square));
        }
    }

    Stand at(double x) const {
        const Frame& frame = m_all.frames[m_index];
        const double share = (x - frame.t) / (m_all.frames[m_index + 1].t - frame.t);
        const double way = PointAt(m_ease, ParameterAt(m_ease, share)).y * m_lengths.back();
        // Beyond its ends the way goes on straight; so do the outermost parts.
        const auto after = std::upper_bound(m_lengths.begin() + 1, m_lengths.end() - 1, way);
        const double length = *after - *(after - 1);
        return {static_cast<int>(after - m_lengths.begin()) - 1, length > 0.0 ? (way - *(after - 1)) / length : 0.0};
    }
    double value(const Stand& stand, std::size_t dimension) const {
        const double from = point(dimension, stand.part);
        return from + stand.share * (point(dimension, stand.part + 1) - from);
    }

private:
    static constexpr int kParts = 256;

    static Easing easeOf(const Keyframes& all, std::size_t index) {
        const std::size_t easings = all.frames[index].easings;
        const Easing easing = easings == kNone ? Easing{} : all.easings[easings];
        return Rises(easing) ? easing : Shortened(easing);
    }
    double point(std::size_t d, int part) const {
        const Frame& frame = m_all.frames[m_index];
        const double a = m_all.start(m_index)[d];
        const double b = m_all.start(m_index + 1)[d];
        const Cubic cubic{
            {{0.0, a}, {0.0, a + m_all.handle(frame.leave, d)}, {0.0, b + m_all.handle(frame.arrive, d)}, {0.0, b}}};
        return PointAt(cubic, 1.0 * part / kParts).y;
    }

    const Keyframes& m_all;
    std::size_t m_index;
    Cubic m_ease;
    std::vector<double> m_lengths;
};

void AddKnot(Track& track, double x, double y, bool moves) {
    if (!track.knots.empty() && !(x > track.knots.back().x)) return;
    Knot knot;
    knot.x = x;
    knot.y = y;
    knot.piece = moves ? Piece::Linear : Piece::Constant;
    track.knots.push_back(knot);
}

bool IsNumeric(const JsonValue& value) {
    if (value.isNumber()) return true;
    bool isNumeric = value.isArray();
    for (const JsonValue& element : value) isNumeric = isNumeric && element.isNumber();
    return isNumeric;
}

// A name each; '#' and the number is added where there is none, or another has the same.
std::vector<std::string> NamesOf(const JsonValue& objects, const char* otherwise = nullptr) {
    std::vector<std::string> names;
    std::unordered_map<std::string, std::size_t> counts;
    for (const JsonValue& object : objects) ++counts[names.emplace_back(object["nm"].text())];
    std::size_t index = 0;
    for (const JsonValue& object : objects) {
        std::string& name = names[index++];
        const bool isNamed = otherwise ? !name.empty() : object.contains("nm");
        if (isNamed && counts[name] == 1) continue;
        if (otherwise && !object[otherwise].text().empty()) {
            name = object[otherwise].text();
            continue;
        }
        do name += '#' + std::to_string(index);
        while (counts.count(name) > 0);
    }
    return names;
}

class LottieDocument {
public:
    explicit LottieDocument(const JsonValue& root) {
        double rate = 0.0;
        if (root.isObject() && root.contains("fr") && root["fr"].isNumber()) rate = root["fr"].number();
        if (std::isfinite(rate)) m_document.rate = rate;
        m_document.properties.emplace_back(kFrameRate, NumberText(FrameRateOr(rate)));
        if (root.isObject()) m_first = root["ip"].number();
        for (const auto& [member, property] : {std::pair("ip", kFirstFrame), std::pair("op", kLastFrame)})
            if (root.isObject() && root.contains(member) && root[member].isNumber())
                m_document.properties.emplace_back(property, NumberText(root[member].number()));
        if (!root.isObject()) Refuse("", "Expected an object.");
        if (root.contains("layers")) {
            if (!root["layers"].isArray()) Refuse("/layers", "Expected an array.");
            readLayers(root["layers"], "", "/layers");
            if (root["assets"].isArray()) readAssets(root["assets"]);
            walk(root["slots"], "slots", "/slots");
        } else if (root.contains("k") || root.contains("s")) {
            read(root, textOf(root, "nm").empty() ? "property" : textOf(root, "nm"), "", true);
        } else {
            Refuse("", "There are neither layers nor a property.");
        }
    }

    Document take() { return std::move(m_document); }

private:
    static std::string textOf(const JsonValue& object, const char* member) { return object[member].text(); }

    void readLayers(const JsonValue& layers, const std::string& node, const std::string& path);
    void readAssets(const JsonValue& assets);
    void readLayer(const JsonValue& layer, const std::string& name, const std::string& path);
    void walk(const JsonValue& value, const std::string& name, const std::string& path);
    void read(const JsonValue& property, const std::string& name, const std::string& path, bool isWhole);
    std::string uniqueName(const std::string& name) {
        std::string unique = name;
        while (!m_names.try_emplace(unique, 1U).second) unique = name + '#' + std::to_string(++m_names[name]);
        return unique;
    }
    void readDimension(const Keyframes& all, std::size_t dimension, Track& track);
    bool readArcs(const Keyframes& all, std::vector<Track>& tracks);

    // A layer that shows a composition at other frames than its own.
    struct Showing {
        std::string layer;
        std::string asset;
        double start;
    };

    Document m_document;
    double m_first = 0.0;
    double m_arcFrames = 2.5e5; // that may still be sampled
    std::vector<Showing> m_showings;
    std::unordered_map<std::string, std::size_t> m_names; // of properties, with the last number that made one free
};

std::string Joined(const std::string& name, const std::string& channel) {
    return name.empty() ? channel : name + '/' + channel;
}

void LottieDocument::readLayers(const JsonValue& layers, const std::string& node, const std::string& path) {
    const std::vector<std::string> names = NamesOf(layers);
    std::size_t index = 0;
    for (const JsonValue& layer : layers) {
        readLayer(layer, Joined(node, names[index]), path + '/' + std::to_string(index));
        ++index;
    }
}

// Compositions that layers show; their keys stay at their own frames.
void LottieDocument::readAssets(const JsonValue& assets) {
    const std::vector<std::string> names = NamesOf(assets, "id");
    std::unordered_set<std::string> moving;
    std::size_t index = 0;
    for (const JsonValue& asset : assets) {
        const std::size_t before = m_document.tracks.size();
        if (asset["layers"].isArray())
            readLayers(asset["layers"], names[index], "/assets/" + std::to_string(index) + "/layers");
        if (m_document.tracks.size() > before) moving.insert(textOf(asset, "id"));
        ++index;
    }
    for (const Showing& showing : m_showings)
        if (moving.count(showing.asset) > 0)
            Lose({showing.layer,
                  Loss::Time,
                  Loss::Dropped,
                  "the frames at which a composition is shown",
                  1,
                  {showing.start},
                  0.0,
                  0.0});
}

void LottieDocument::readLayer(const JsonValue& layer, const std::string& name, const std::string& path) {
    if (!layer.isObject()) Refuse(path, "Expected an object.");
    const double start = layer["st"].number();
    const JsonValue stretch = layer["sr"];
    if (layer.contains("refId")
        && (start != 0.0 || (stretch.isNumber() && stretch.number() != 1.0) || layer.contains("tm")))
        m_showings.push_back({name, textOf(layer, "refId"), start});
    static constexpr const char* transforms[][2] = {
        {"o", "opacity"},   {"r", "rotateZ"}, {"rx", "rotateX"}, {"ry", "rotateY"}, {"rz", "rotateZ"},
        {"p", "translate"}, {"s", "scale"},   {"a", "anchor"},   {"sk", "skew"},    {"sa", "skewAxis"}};
    for (const JsonValue& value : layer) {
        const std::string& key = value.key();
        std::string place = path;
        place += '/';
        place += key;
        if (key == "ks" && value.isObject()) {
            for (const auto& [word, channel] : transforms)
                if (value.contains(word)) read(value[word], Joined(name, channel), place + '/' + word, false);
        } else if (key == "ef" && value.isArray()) {
            std::size_t i = 0;
            for (const JsonValue& effect : value) {
                const std::string here = place + '/' + std::to_string(i);
                // A slider alone has the effect's name, which is what a curve without another home has.
                const bool isSlider = effect.isObject() && effect.contains("ef") && effect["ef"].isArray()
                                      && effect["ef"].size() == 1 && effect["ef"][std::size_t{0}].isObject()
                                      && effect["ef"][std::size_t{0}].contains("v");
                if (isSlider)
                    read(effect["ef"][std::size_t{0}]["v"], Joined(name, textOf(effect, "nm")), here + "/ef/0/v",
                         false);
                else
                    walk(effect, Joined(name, "ef." + std::to_string(i)), here);
                ++i;
            }
        } else {
            walk(value, Joined(name, key), place);
        }
    }
}

// Properties anywhere below, by the way to them.
void LottieDocument::walk(const JsonValue& value, const std::string& name, const std::string& path) {
    if (value.isObject() && value.contains("k") && value["k"].isArray() && !value["k"].empty()
        && value["k"][std::size_t{0}].isObject() && value["k"][std::size_t{0}].contains("t")) {
        read(value, name, path, false);
        return;
    }
    if (value.isObject() && value["x"].isText() && value.contains("k")) read(value, name, path, false);
    std::size_t index = 0;
    for (const JsonValue& element : value) {
        if (element.isStructured()) {
            std::string word = value.isObject() ? element.key() : std::to_string(index);
            std::string place = path;
            place.append("/").append(word);
            walk(element, word.insert(0, ".").insert(0, name), place);
        }
        ++index;
    }
}

void LottieDocument::readDimension(const Keyframes& all, std::size_t dimension, Track& track) {
    const std::vector<Frame>& frames = all.frames;
    std::vector<Knot>& knots = track.knots;
    knots.reserve(frames.size());
    for (const Frame& frame : frames) {
        Knot knot;
        knot.x = frame.t;
        knot.y = all.numbers[frame.start + dimension];
        const double gap = Keyframe::getMinSeparation();
        if (!knots.empty() && !(knot.x - knots.back().x > 0.5 * gap)) {
            // The later one shows; what led to the earlier one ends a little before.
            Lose({track.name, Loss::Time, Loss::Moved, "a key before a jump, by 0.001 frames", 1, {knot.x}, 0.0, 0.0});
            if (knots.size() > 1 && knot.x - knots[knots.size() - 2].x <= 2.0 * gap)
                knots.pop_back();
            else
                knots.back().x = knot.x - gap;
            knots.back().piece = Piece::Constant;
        }
        knots.push_back(knot);
    }
    // Frames and knots differ where two frames stood at one time.
    std::size_t index = 0;
    for (std::size_t i = 0; i + 1 < knots.size(); ++i) {
        while (index + 1 < frames.size() && frames[index + 1].t <= knots[i].x) ++index;
        const Frame& frame = frames[index];
        Knot& left = knots[i];
        Knot& right = knots[i + 1];
        if (frame.isHeld || frame.t != left.x) continue;
        if (frame.easings == kNone) {
            left.piece = Piece::Linear;
            Lose({track.name,
                  Loss::Kind,
                  Loss::Replaced,
                  "a keyframe without handles by a line",
                  1,
                  {left.x},
                  0.0,
                  0.0});
            continue;
        }
        Easing easing = all.easings[frame.easings + dimension];
        if (!Rises(easing)) {
            const Easing shortened = Shortened(easing);
            const Distance off = DistanceOfShortened(easing, shortened);
            Lose({track.name,
                  Loss::Tangents,
                  Loss::Shortened,
                  "handles beyond the segment",
                  1,
                  {left.x},
                  off.y * std::fabs(right.y - left.y),
                  left.x + off.at * (right.x - left.x)});
            easing = shortened;
        }
        SetEasing(left, right, easing);
    }
}

// Along an arc the dimensions have one easing, of the way: a key a frame. Returns whether there is an arc.
bool LottieDocument::readArcs(const Keyframes& all, std::vector<Track>& tracks) {
    const std::vector<Frame>& frames = all.frames;
    constexpr double kGap = Keyframe::getMinSeparation();
    bool hasArc = false;
    for (std::size_t i = 0; i + 1 < frames.size() && !hasArc; ++i) hasArc = IsCurved(all, i);
    if (!hasArc) return false;
    const double length = frames.back().t - frames.front().t;
    if (!(length <= m_arcFrames)) {
        for (const Track& track : tracks)
            Lose({track.name, Loss::Kind, Loss::Replaced, "motion along a long arc, by a line", 1, {}, 0.0, 0.0});
        return false;
    }
    m_arcFrames -= length;
    std::vector<Distance> off(tracks.size());
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const Frame& frame = frames[i];
        const bool moves = i + 1 < frames.size() && !frame.isHeld;
        for (std::size_t d = 0; d < tracks.size(); ++d) AddKnot(tracks[d], frame.t, all.start(i)[d], moves);
        if (!moves) continue;
        const ArcMotion motion(all, i);
        const double next = frames[i + 1].t;
        double before = frame.t;
        for (double x = std::floor(frame.t) + 1.0; before < next; ++x) {
            const bool isLast = x > next - kGap;
            const double to = isLast ? next : x;
            if (!isLast && x < before + kGap) continue;
            const ArcMotion::Stand end = motion.at(to);
            for (const double part : {0.23, 0.47, 0.71}) { // a line leads there
                if (!Conversion::report()) break;
                const ArcMotion::Stand here = motion.at(before + part * (to - before));
                for (std::size_t d = 0; d < tracks.size(); ++d) {
                    const double from = tracks[d].knots.back().y;
                    const double line = from + part * (motion.value(end, d) - from);
                    const double distance = std::fabs(line - motion.value(here, d));
                    if (distance > off[d].y) off[d] = {distance, before + part * (to - before)};
                }
            }
            for (std::size_t d = 0; d < tracks.size() && !isLast; ++d)
                AddKnot(tracks[d], to, motion.value(end, d), true);
            before = to;
        }
    }
    for (std::size_t d = 0; d < tracks.size(); ++d)
        Lose({tracks[d].name,
              Loss::Kind,
              Loss::Sampled,
              "motion along an arc, a key a frame",
              1,
              {},
              off[d].y,
              off[d].at});
    return true;
}

void LottieDocument::read(const JsonValue& property, const std::string& name, const std::string& path, bool isWhole) {
    if (!property.isObject()) Refuse(path, "Expected an object.");
    if (property.contains("s") && property["s"].isTrue()) {
        for (const auto& [member, axis] : {std::pair("x", 'X'), std::pair("y", 'Y'), std::pair("z", 'Z')})
            if (property.contains(member) && property[member].isObject())
                read(property[member], name + axis, path + '/' + member, isWhole);
        return;
    }
    if (!property.contains("k")) Refuse(path, "\"k\" is missing.");
    const JsonValue k = property["k"];
    const std::string place = path + "/k";
    if (k.isArray() && k.empty()) Refuse(place, "The array is empty.");
    const bool isAnimated = k.isArray() && k[std::size_t{0}].isObject();
    const std::string expression = textOf(property, "x");
    if (!isAnimated && !isWhole && expression.empty()) return; // what does not move is no curve
    Keyframes all;
    if (isAnimated) {
        all = KeyframesAt(k, place);
        if (all.content) {
            if (*all.content) Lose({name, Loss::Curves, Loss::Dropped, all.content, 1, {}, 0.0, 0.0});
            return;
        }
    } else if (!isWhole && !IsNumeric(k)) {
        Lose({name, Loss::Formulas, Loss::Dropped, "an expression", 1, {}, 0.0, 0.0});
        return;
    } else if (k.isNumber() || k.isArray()) {
        Frame& frame = all.frames.emplace_back();
        frame.t = m_first;
        frame.start = all.add(k, Way{nullptr, nullptr, 0, place});
        all.dimensions = all.numbers.size();
    } else {
        Refuse(place, "Expected numbers or keyframes.");
    }
    const std::size_t dimensions = all.dimensions;
    std::vector<Track> tracks(dimensions);
    const std::string unique = uniqueName(name);
    const bool isTransform = name.size() >= 5
                             && (name.compare(name.size() - 5, 5, "scale") == 0
                                 || (name.size() >= 9 && name.compare(name.size() - 9, 9, "translate") == 0));
    for (std::size_t d = 0; d < dimensions; ++d) {
        tracks[d].name = unique;
        tracks[d].path = path;
        if (dimensions == 1) continue;
        if (isTransform && d < 3)
            tracks[d].name += "XYZ"[d];
        else
            tracks[d].name += std::string("/") + (dimensions <= 3 ? std::string(1, "xyz"[d]) : std::to_string(d));
        tracks[d].name = uniqueName(tracks[d].name);
    }
    if (!readArcs(all, tracks))
        for (std::size_t d = 0; d < dimensions; ++d) readDimension(all, d, tracks[d]);
    for (Track& track : tracks) {
        if (!expression.empty()) {
            track.properties.emplace_back("lottie_expression", expression);
            Lose({track.name, Loss::Formulas, Loss::Dropped, "an expression, kept as a property", 1, {}, 0.0, 0.0});
        }
        const std::size_t limit = GetFormatLimits().curves;
        if (m_document.tracks.size() >= limit)
            throw TooMuch("There are too many curves; the limit is " + std::to_string(limit) + '.', 0, 0, path);
        m_document.tracks.push_back(std::move(track));
    }
}

} // namespace

LottieReader::LottieReader() : CurveReader(FormatType("lottie", "Lottie animation", "json")) {}

Document LottieReader::parse(std::string_view bytes) const {
    return LottieDocument(JsonTree(bytes).root()).take();
}

// An object whose members are those of an animation or of a property.
bool LottieReader::recognises(std::string_view opening, bool) const {
    if (opening.substr(0, 3) == "\xEF\xBB\xBF") opening.remove_prefix(3);
    const std::size_t first = opening.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos || opening[first] != '{') return false;
    const std::size_t quote = opening.find_first_not_of(" \t\r\n", first + 1);
    if (quote == std::string_view::npos || opening[quote] != '"') return false;
    const std::size_t close = opening.find('"', quote + 1);
    const std::string_view member = opening.substr(quote + 1, close - quote - 1);
    static constexpr const char* members[] = {"v",   "fr",     "ip", "op", "w", "h", "nm",
                                              "ddd", "layers", "a",  "k",  "s", "ix"};
    return close != std::string_view::npos && opening.find("\"asset\"") == std::string_view::npos
           && std::find(std::begin(members), std::end(members), member) != std::end(members);
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
