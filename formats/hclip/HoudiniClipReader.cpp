#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/FormatLimits.h"
#include "FCurveLib/HoudiniClipFormat.h"
#include "FCurveLib/Tangent.h"
#include "formats/Text.h"
#include "formats/WordSource.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace HoudiniClipFormat {

using Private::Word;

namespace {

constexpr std::size_t kLongestTrack = std::size_t{1} << 24U;
constexpr std::size_t kMostTracks = std::size_t{1} << 20U;
constexpr std::size_t kMostSamples = 50000000;
constexpr double kFarthestStart = 1099511627776.0; // 2^40: samples beyond it would come too close to each other

struct Track {
    std::string name;
    std::vector<double> samples;
    bool hasSamples = false;
    std::string left = "hold";
    std::string right = "hold";
    double fallback = 0.0; // "default"
};

class Clip {
public:
    explicit Clip(Stream& stream) : m_limits(GetFormatLimits()), m_words(stream, "{}=", m_limits.text) {
        next();
        expect("{");
        while (m_word.text != "}") {
            if (m_word.text == "{") {
                readTrack();
            } else {
                readSetting();
            }
        }
        if (m_hasTracks && m_tracks.size() != m_trackCount) {
            throw WrongTrackCount("The header says that there are " + std::to_string(m_trackCount)
                                      + " tracks, and there are " + std::to_string(m_tracks.size()) + '.',
                                  m_word.line, m_word.column);
        }
        next();
        if (!m_word.text.empty()) refuse("the end of the text");
    }

    void emitProperties(FormatInterface& target) const {
        std::string number;
        Private::appendNumber(number, m_rate);
        target.containerProperty("hclip_rate", number.c_str());
        number.clear();
        Private::appendNumber(number, m_start);
        target.containerProperty("hclip_start", number.c_str());
        if (!m_quaternions.empty()) target.containerProperty("hclip_quaternions", m_quaternions.c_str());
    }

    std::size_t size() const { return m_tracks.size(); }

    // Returns whether the target wants further curves.
    bool emit(std::size_t index, FormatInterface& target) const {
        const Track& track = m_tracks[index];
        if (!target.startCurve(track.name.c_str())) return true;
        const std::vector<double>& y = track.samples;
        // A cycle of n samples repeats after n, a curve after its last key: so it gets the first sample again.
        const bool closes = y.size() > 1 && (track.left == "cycle" || track.right == "cycle");
        if (closes) target.curveProperty("hclip_cycle_key", "1");
        if (!isKnown(track.left)) target.curveProperty("hclip_lefttype", track.left.c_str());
        if (!isKnown(track.right)) target.curveProperty("hclip_righttype", track.right.c_str());

        target.startSegmentContainer();
        const std::size_t keys = y.size() + (closes ? 1 : 0);
        emitEnd(target, track, track.left, true, y.size() > 1 ? y[1] - y[0] : 0.0);
        for (std::size_t i = 0; i < keys; ++i) {
            target.startKeyframe();
            target.keyframePosition(m_start + static_cast<double>(i) + 1.0, y[i % y.size()]);
            target.finishKeyframe();
            if (i + 1 < keys) emitSegment(target, "linear()");
        }
        if (keys > 0) {
            const double last = closes ? y.front() - y.back() : y.size() > 1 ? y.back() - y[y.size() - 2] : 0.0;
            emitEnd(target, track, track.right, false, last);
        }
        target.finishSegmentContainer();
        return target.finishCurve();
    }

private:
    static bool isKnown(std::string_view type) {
        constexpr std::string_view known[] = {"hold", "slope", "cycle", "mirror", "default"};
        return std::find(std::begin(known), std::end(known), type) != std::end(known);
    }

    static void emitSegment(FormatInterface& target, const char* expression) {
        target.startSegment(expression);
        target.finishSegment();
    }

    static void emitEnd(FormatInterface& target, const Track& track, const std::string& type, bool isLeft,
                        double slope) {
        std::string expression = "constant()";
        if (type == "cycle" || type == "mirror") {
            expression = type + "()";
        } else if (type == "default") {
            expression.clear();
            Private::appendNumber(expression, track.fallback);
        } else if (type == "slope" && std::isfinite(slope)) {
            target.startSegment("bezier()");
            isLeft ? target.startInTangent() : target.startOutTangent();
            target.tangentType(Tangent::Fixed);
            target.tangentVector(isLeft ? -1.0 : 1.0, isLeft ? -slope : slope);
            isLeft ? target.finishInTangent() : target.finishOutTangent();
            target.finishSegment();
            return;
        }
        emitSegment(target, expression.c_str());
    }

    // --- words -------------------------------------------------------------------------------------------------------

    void next() {
        m_words.next(m_word);
        checkLength();
    }
    void checkLength() const {
        if (m_word.isTooLong) throw LimitExceeded("A word is too long.", m_word.line, m_word.column);
        if (m_word.text.find('\0') != std::string::npos) refuse("text without a zero byte");
    }
    [[noreturn]] void refuse(const std::string& expected) const {
        throw UnexpectedWord("Expected here is " + expected + ", found is "
                                 + (m_word.text.empty() ? "the end of the text" : Private::quoted(m_word.text)) + '.',
                             m_word.line, m_word.column);
    }
    void expect(const char* word) {
        if (m_word.text != word) refuse(Private::quoted(word));
        next();
    }

    // A word and "=". The word behind it is the next one.
    std::string readKey() {
        if (m_word.text.empty() || m_word.text == "{" || m_word.text == "}" || m_word.text == "=") {
            refuse("the name of a setting");
        }
        std::string key = m_word.text;
        if (key.front() >= '0' && key.front() <= '9') refuse("the name of a setting");
        for (const char c : key)
            if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'))
                refuse("the name of a setting");
        next();
        if (m_word.text != "=") refuse("\"=\"");
        return key;
    }
    std::string readWord() {
        if (m_word.text.empty() || m_word.text == "{" || m_word.text == "}" || m_word.text == "=") refuse("a value");
        std::string word = m_word.text;
        next();
        return word;
    }
    double readNumber() {
        double number = 0.0;
        if (!Private::parseNumber(m_word.text, number)) {
            if (m_word.text.empty() || m_word.text == "}") refuse("a number");
            throw BadNumber("Expected here is a number, found is " + Private::quoted(m_word.text) + '.', m_word.line,
                            m_word.column);
        }
        next();
        return number;
    }
    // A whole number from least to most.
    std::size_t readCount(std::size_t least, std::size_t most, const char* what) {
        const Word word = m_word;
        const double number = readNumber();
        if (number != std::floor(number) || number < static_cast<double>(least)) {
            throw BadNumber(Private::quoted(word.text) + " is no number of " + what + '.', word.line, word.column);
        }
        if (number > static_cast<double>(most)) {
            throw LimitExceeded(Private::quoted(word.text) + ' ' + what + " are more than the " + std::to_string(most)
                                    + " that are allowed.",
                                word.line, word.column);
        }
        return static_cast<std::size_t>(number);
    }

    // --- settings ----------------------------------------------------------------------------------------------------

    void readSetting() {
        const Word at = m_word;
        const std::string key = readKey();
        next();
        if (key == "rate") {
            m_rate = readNumber();
        } else if (key == "start") {
            m_start = readNumber();
            if (std::abs(m_start) > kFarthestStart)
                throw BadNumber("The start lies too far from 0.", at.line, at.column);
        } else if (key == "tracklength") {
            const std::size_t length = readCount(0, std::min(kLongestTrack, m_limits.keys), "samples");
            if (!m_tracks.empty() && length != m_length)
                throw BadNumber("The length of tracks changes.", at.line, at.column);
            m_length = length;
            m_hasLength = true;
        } else if (key == "tracks") {
            m_trackCount = readCount(0, std::min(kMostTracks, m_limits.curves), "tracks");
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
        const std::size_t count = readCount(0, kMostTracks, "rotations");
        for (std::size_t i = 0; i < count; ++i) {
            for (int axis = 0; axis < 3; ++axis) {
                const Word at = m_word;
                const std::size_t index = readCount(0, kMostTracks, "a track");
                if (index >= m_tracks.size()) {
                    throw BadNumber("There is no track " + std::to_string(index) + '.', at.line, at.column);
                }
                text += axis > 0 ? ',' : i > 0 ? ';' : ':';
                text += std::to_string(index);
            }
            if (text.size() > m_limits.text) throw LimitExceeded("There are too many rotations.", m_word.line, 0);
        }
        m_quaternions = std::move(text);
    }

    void readTrack() {
        const Word at = m_word;
        if (m_tracks.size() >= std::min(kMostTracks, m_limits.curves))
            throw LimitExceeded("There are too many tracks.", at.line, at.column);
        next();
        Track track;
        while (m_word.text != "}") {
            const std::string key = readKey();
            if (key == "name") {
                m_words.nextWhole(m_word);
                checkLength();
                if (m_word.text.empty()) refuse("a name");
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
        m_tracks.push_back(std::move(track));
    }

    void readSamples(Track& track, bool hasRuns) {
        if (!m_hasLength) refuse("\"tracklength\" in front of all data");
        if (track.hasSamples) refuse("one \"data\" for each track");
        // Counted before room for them is taken.
        if (m_length > kMostSamples - m_samples)
            throw LimitExceeded("There are more than 50000000 samples.", m_word.line, m_word.column);
        m_samples += m_length;
        track.hasSamples = true;
        while (track.samples.size() < m_length) {
            std::size_t run = 1;
            if (hasRuns && m_word.text.size() > 1 && m_word.text.front() == '@') {
                m_word.text.erase(0, 1);
                const Word at = m_word;
                run = readCount(1, kLongestTrack, "samples");
                if (run > m_length - track.samples.size()) {
                    throw BadNumber("A run of " + std::to_string(run) + " samples goes on behind the track's "
                                        + std::to_string(m_length) + '.',
                                    at.line, at.column);
                }
                if (run > m_limits.runs - m_inRuns) {
                    throw LimitExceeded("More than " + std::to_string(m_limits.runs) + " samples stand in runs.",
                                        at.line, at.column);
                }
                m_inRuns += run;
            }
            track.samples.insert(track.samples.end(), run, readNumber());
        }
    }

    const FormatLimits m_limits;
    Private::WordSource m_words;
    Word m_word; // the next one
    double m_rate = 30.0;
    double m_start = 0.0;
    bool m_hasLength = false;
    std::size_t m_length = 0;
    bool m_hasTracks = false;
    std::size_t m_trackCount = 0;
    std::size_t m_samples = 0; // of all tracks
    std::size_t m_inRuns = 0;
    std::vector<Track> m_tracks;
    std::string m_quaternions;
};

} // namespace

HoudiniClipReader::HoudiniClipReader() : Reader(GetFormatType()) {}
HoudiniClipReader::~HoudiniClipReader() = default;

void HoudiniClipReader::readCurves(Stream& stream, FormatInterface& target) {
    const Clip clip(stream);
    target.startCurveContainer();
    clip.emitProperties(target);
    for (std::size_t i = 0; i < clip.size(); ++i)
        if (!clip.emit(i, target)) break;
    target.finishCurveContainer();
}

void HoudiniClipReader::readCurve(Stream& stream, FormatInterface& target) {
    const Clip clip(stream);
    if (clip.size() == 0) throw WrongTrackCount("There is no track.");
    clip.emit(0, target);
}

bool HoudiniClipReader::canRead(Stream&, Stream& header) {
    Private::WordSource words(header, "{}=", 1024);
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
