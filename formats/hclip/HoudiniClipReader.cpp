#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/FormatLimits.h"
#include "FCurveLib/HoudiniClipFormat.h"
#include "FCurveLib/Tangent.h"
#include "formats/Opening.h"
#include "formats/Text.h"
#include "formats/WordSource.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace HoudiniClipFormat {

using Private::Word;

namespace {

constexpr std::size_t kLongestTrack = std::size_t{1} << 24U;
constexpr std::size_t kMostTracks = std::size_t{1} << 20U;
constexpr std::size_t kMostSamples = 50000000;
constexpr std::size_t kKeysPerByte = 64;           // that runs may expand to, besides FormatLimits::runs
constexpr double kFarthestStart = 1099511627776.0; // 2^40: samples beyond it would come too close to each other

struct Track {
    std::string name;
    std::vector<double> samples;
    bool hasSamples = false;
    std::string left = "hold";
    std::string right = "hold";
    double fallback = 0.0; // "default"
};

struct Clip {
    double rate = 30.0;
    double start = 0.0;
    std::vector<Track> tracks;
    std::string quaternions;
};

struct Errors {
    using UnexpectedWord = HoudiniClipFormat::UnexpectedWord;
    using BadNumber = HoudiniClipFormat::BadNumber;
    using LimitExceeded = HoudiniClipFormat::LimitExceeded;
};

constexpr std::string_view kPunctuation = "{}=";

class Parser : Private::WordParser<Errors> {
public:
    explicit Parser(Stream& stream) : WordParser(stream, kPunctuation) {
        expect("{");
        while (!at("}")) {
            if (at("{")) {
                readTrack();
            } else {
                readSetting();
            }
        }
        if (m_hasTracks && m_clip.tracks.size() != m_trackCount) {
            raise<WrongTrackCount>("The header says " + std::to_string(m_trackCount) + " tracks, found "
                                       + std::to_string(m_clip.tracks.size()) + '.',
                                   m_word);
        }
        next();
        if (!atEnd()) refuse("the end of the text");
    }

    Clip take() { return std::move(m_clip); }

private:
    // --- words -------------------------------------------------------------------------------------------------------

    // A word and "=". The word after it is the next one.
    std::string readKey() {
        if (atPunctuation()) refuse("the name of a setting");
        std::string key = m_word.text;
        if (key.front() >= '0' && key.front() <= '9') refuse("the name of a setting");
        for (const char c : key)
            if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'))
                refuse("the name of a setting");
        next();
        if (!at("=")) refuse("\"=\"");
        return key;
    }
    bool atPunctuation() const { return atEnd() || at("{") || at("}") || at("="); }
    std::string readWord() {
        if (atPunctuation()) refuse("a value");
        std::string word = m_word.text;
        next();
        return word;
    }
    // A whole number from least to most.
    std::size_t readCount(std::size_t least, std::size_t most, const char* what) {
        const Word word = m_word;
        const double number = readNumber();
        if (number != std::floor(number) || number < static_cast<double>(least)) {
            raise<BadNumber>(Private::Quoted(word.text) + " is not a valid " + what + '.', word);
        }
        if (number > static_cast<double>(most)) {
            raise<LimitExceeded>("The " + std::string(what) + ' ' + Private::Quoted(word.text)
                                     + " is above the limit of " + std::to_string(most) + '.',
                                 word);
        }
        return static_cast<std::size_t>(number);
    }

    // --- settings ----------------------------------------------------------------------------------------------------

    void readSetting() {
        const Word at = m_word;
        const std::string key = readKey();
        next();
        if (key == "rate") {
            m_clip.rate = readNumber();
        } else if (key == "start") {
            m_clip.start = readNumber();
            if (std::abs(m_clip.start) > kFarthestStart) raise<BadNumber>("The start lies too far from 0.", at);
        } else if (key == "tracklength") {
            const std::size_t length = readCount(0, std::min(kLongestTrack, m_limits.keys), "sample count");
            if (!m_clip.tracks.empty() && length != m_length) raise<BadNumber>("The length of tracks changes.", at);
            m_length = length;
            m_hasLength = true;
        } else if (key == "tracks") {
            m_trackCount = readCount(0, std::min(kMostTracks, m_limits.curves), "track count");
            m_hasTracks = true;
        } else if (key == "quaternions") {
            readQuaternions();
        } else {
            readWord(); // of a later version
        }
    }

    void readQuaternions() {
        constexpr std::string_view orders[] = {"xyz", "xzy", "yxz", "yzx", "zxy", "zyx"};
        if (std::find(std::begin(orders), std::end(orders), m_word.text) == std::end(orders)) {
            refuse("an order of rotations, such as \"xyz\"");
        }
        std::string text = readWord();
        const std::size_t count = readCount(0, kMostTracks, "rotation count");
        for (std::size_t i = 0; i < count; ++i) {
            for (int axis = 0; axis < 3; ++axis) {
                const Word at = m_word;
                const std::size_t index = readCount(0, kMostTracks, "track number");
                if (index >= m_clip.tracks.size()) {
                    raise<BadNumber>("There is no track " + std::to_string(index) + '.', at);
                }
                text += axis > 0 ? ',' : i > 0 ? ';' : ':';
                text += std::to_string(index);
            }
            if (text.size() > m_limits.text) raise<LimitExceeded>("There are too many rotations.", m_word);
        }
        m_clip.quaternions = std::move(text);
    }

    void readTrack() {
        const Word at = m_word;
        if (m_clip.tracks.size() >= std::min(kMostTracks, m_limits.curves))
            raise<LimitExceeded>(Private::TooMany("tracks", m_clip.tracks.size()), at);
        next();
        Track track;
        while (!this->at("}")) {
            const std::string key = readKey();
            if (key == "name") {
                nextWhole();
                if (atEnd()) refuse("a name");
                track.name = m_word.text;
                next();
                continue;
            }
            next();
            if (key == "data" || key == "data_rle") {
                readSamples(track, key == "data_rle");
            } else if (key == "lefttype") {
                track.left = readWord();
            } else if (key == "righttype") {
                track.right = readWord();
            } else if (key == "default") {
                track.fallback = readNumber();
            } else {
                readWord(); // of a later version
            }
        }
        if (!track.hasSamples && !(m_hasLength && m_length == 0)) refuse("the track's \"data\"");
        next();
        m_clip.tracks.push_back(std::move(track));
    }

    void readSamples(Track& track, bool hasRuns) {
        if (!m_hasLength) refuse("\"tracklength\" before all data");
        if (track.hasSamples) refuse("one \"data\" for each track");
        // Counted before room for them is taken.
        if (m_length > kMostSamples - m_samples)
            raise<LimitExceeded>(Private::TooMany("samples", kMostSamples), m_word);
        m_samples += m_length;
        track.hasSamples = true;
        while (track.samples.size() < m_length) {
            std::size_t run = 1;
            if (hasRuns && m_word.text.size() > 1 && m_word.text.front() == '@') {
                m_word.text.erase(0, 1);
                const Word at = m_word;
                run = readCount(1, kLongestTrack, "run length");
                if (run > m_length - track.samples.size()) {
                    raise<BadNumber>("A run of " + std::to_string(run)
                                         + " samples is longer than the rest of the track, "
                                         + std::to_string(m_length - track.samples.size()) + '.',
                                     at);
                }
                m_inRuns += run; // no more than there are samples
                const auto read = static_cast<std::size_t>(m_words.source().taken());
                if (m_inRuns > m_limits.runs && m_inRuns - m_limits.runs > kKeysPerByte * read)
                    raise<LimitExceeded>("Too many samples stand in runs for a text of this length.", at);
            }
            track.samples.insert(track.samples.end(), run, readNumber());
        }
    }

    Clip m_clip;
    bool m_hasLength = false;
    std::size_t m_length = 0;
    bool m_hasTracks = false;
    std::size_t m_trackCount = 0;
    std::size_t m_samples = 0; // of all tracks
    std::size_t m_inRuns = 0;
};

// --- what the target hears -------------------------------------------------------------------------------------------

bool IsKnown(std::string_view type) {
    constexpr std::string_view known[] = {"hold", "slope", "cycle", "mirror", "default"};
    return std::find(std::begin(known), std::end(known), type) != std::end(known);
}

void EmitProperties(const Clip& clip, FormatInterface& target) {
    const auto emit = [&](const char* key, double value) {
        std::string number;
        Private::AppendNumber(number, value);
        target.containerProperty(key, number.c_str());
    };
    emit("hclip_rate", clip.rate);
    emit("hclip_start", clip.start);
    // As every format that states them calls them; samples count from 0, frames from 1.
    emit("frame_rate", clip.rate);
    emit("first_frame", clip.start + 1.0);
    if (!clip.quaternions.empty()) target.containerProperty("hclip_quaternions", clip.quaternions.c_str());
}

void EmitSegment(FormatInterface& target, const char* expression) {
    target.startSegment(expression);
    target.finishSegment();
}

// The segment before the first key, or after the last.
void EmitEnd(FormatInterface& target, const Track& track, const std::string& type, bool isLeft, double slope) {
    std::string expression = "constant()";
    if (type == "cycle" || type == "mirror") {
        expression = type + "()";
    } else if (type == "default") {
        expression.clear();
        Private::AppendNumber(expression, track.fallback);
    } else if (type == "slope" && std::isfinite(slope)) {
        target.startSegment("bezier()");
        isLeft ? target.startInTangent() : target.startOutTangent();
        target.tangentType(Tangent::Fixed);
        target.tangentVector(isLeft ? -1.0 : 1.0, isLeft ? -slope : slope);
        isLeft ? target.finishInTangent() : target.finishOutTangent();
        target.finishSegment();
        return;
    }
    EmitSegment(target, expression.c_str());
}

// Returns whether the target wants further curves.
bool EmitTrack(const Track& track, double start, FormatInterface& target) {
    if (!target.startCurve(track.name.c_str())) return true;
    const std::vector<double>& y = track.samples;
    // A cycle of n samples repeats after n, a curve after its last key: so it gets the first sample again.
    const bool closes = y.size() > 1 && (track.left == "cycle" || track.right == "cycle");
    if (closes) target.curveProperty("hclip_cycle_key", "1");
    if (!IsKnown(track.left)) target.curveProperty("hclip_lefttype", track.left.c_str());
    if (!IsKnown(track.right)) target.curveProperty("hclip_righttype", track.right.c_str());

    target.startSegmentContainer();
    const std::size_t keys = y.size() + (closes ? 1 : 0);
    EmitEnd(target, track, track.left, true, y.size() > 1 ? y[1] - y[0] : 0.0);
    for (std::size_t i = 0; i < keys; ++i) {
        target.startKeyframe();
        target.keyframePosition(start + static_cast<double>(i) + 1.0, y[i % y.size()]);
        target.finishKeyframe();
        if (i + 1 < keys) EmitSegment(target, "linear()");
    }
    if (keys > 0) {
        const double last = closes ? y.front() - y.back() : y.size() > 1 ? y.back() - y[y.size() - 2] : 0.0;
        EmitEnd(target, track, track.right, false, last);
    }
    target.finishSegmentContainer();
    return target.finishCurve();
}

} // namespace

HoudiniClipReader::HoudiniClipReader() : Reader(GetFormatType()) {}
HoudiniClipReader::~HoudiniClipReader() = default;

void HoudiniClipReader::readCurves(Stream& stream, FormatInterface& target) {
    const Clip clip = Parser(stream).take();
    target.startCurveContainer();
    EmitProperties(clip, target);
    for (const Track& track : clip.tracks)
        if (!EmitTrack(track, clip.start, target)) break;
    target.finishCurveContainer();
}

void HoudiniClipReader::readCurve(Stream& stream, FormatInterface& target) {
    const Clip clip = Parser(stream).take();
    if (clip.tracks.empty()) throw WrongTrackCount("There is no track.");
    EmitTrack(clip.tracks.front(), clip.start, target);
}

bool HoudiniClipReader::canRead(Stream& stream, Stream& header) {
    Private::Opening opening(stream, header);
    Private::WordSource words(opening, kPunctuation, 1024);
    Word word;
    words.next(word);
    if (word.text != "{") return false;
    words.next(word);
    if (word.text != "rate" && word.text != "start" && word.text != "tracklength" && word.text != "tracks")
        return false;
    words.next(word);
    return word.text == "=";
}

} // namespace HoudiniClipFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
