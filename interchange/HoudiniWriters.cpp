#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "FCurveInterchange/Names.h"
#include "interchange/CoreWriters.h"
#include "interchange/CurveReader.h"
#include "interchange/Numbers.h"

#include <FCurveLib/Bezier.h>
#include <FCurveLib/Cycle.h>
#include <FCurveLib/Evaluation.h>
#include <FCurveLib/HoudiniChanFormat.h>
#include <FCurveLib/HoudiniClipFormat.h>
#include <FCurveLib/Mirror.h>
#include <FCurveLib/NumberInterp.h>
#include <FCurveLib/Segment.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <unordered_map>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

constexpr double kMostSamples = 50000000.0;

// The whole frames around all keys.
struct Frames {
    double first = HUGE_VAL;
    double last = -HUGE_VAL;

    explicit Frames(const FCurveContainer& curves) {
        for (const FCurve& curve : curves) {
            if (curve.size() < 2) continue;
            first = std::min(first, std::floor(curve.begin()->getRightKey()->getX()));
            last = std::max(last, std::ceil(std::prev(curve.end())->getLeftKey()->getX()));
        }
        if (!(first <= last)) throw NotWritable("There is no key to write.");
        if (!((last - first + 1.0) * static_cast<double>(curves.size()) <= kMostSamples) || !(last <= 9e15)
            || !(first >= -9e15))
            throw TooMuch("A sample a frame would be more than 50 000 000.");
    }
    double count() const noexcept { return last - first + 1.0; }
};

// The value of FCurve::eval at a frame that comes after those before.
double ValueAt(Walk& walk, double frame) {
    walk.goTo(frame);
    return EvalSegment(frame, *walk);
}

void AppendValue(std::string& text, const FCurve& curve, double frame, double y) {
    if (!std::isfinite(y))
        throw NotWritable(Quoted(curve.getName()) + " is not finite at frame " + ShortNumber(frame) + '.');
    AppendNumber(text, y);
}

void NoteSampling(const FCurve& curve, Notes& notes) {
    notes.add(curve, -HUGE_VAL, HUGE_VAL, Loss::Kind, Loss::Sampled, "a key a frame, joined by lines");
}

constexpr const char* kRoles[] = {"tx", "ty", "tz", "rx", "ry", "rz", "vfov"};

// 0 to 6 for what a camera's file has; nothing for another channel.
std::optional<std::size_t> RoleOf(const FCurve& curve) {
    std::string role = curve.getProperty("hchan_role");
    if (role.empty()) role = SplitName(curve.getName()).channel;
    if (const auto transform = FindTransform(role); transform && transform->kind != TransformChannel::Scale)
        return static_cast<std::size_t>(transform->kind == TransformChannel::Rotate ? 3 : 0)
               + static_cast<std::size_t>(transform->axis);
    if (role == kRoles[6]) return 6;
    return std::nullopt;
}

// The curves by column, null for a column of zeros: a camera's or an object's where every curve has a role of its own
// and there are three at least, else as they come.
std::vector<const FCurve*> ColumnsOf(const FCurveContainer& curves, bool& isCamera) {
    std::array<const FCurve*, 7> roles{};
    std::vector<const FCurve*> columns;
    isCamera = curves.size() >= 3;
    for (const FCurve& curve : curves) {
        columns.push_back(&curve);
        const auto role = RoleOf(curve);
        isCamera = isCamera && role && !roles[*role];
        if (role) roles[*role] = &curve;
    }
    if (isCamera) columns.assign(roles.begin(), roles[6] ? roles.end() : roles.end() - 1);
    return columns;
}

const Interpolator* KindOf(const Segment& segment) {
    return segment.getInterpolator().get(); // held by the segment
}

template<class T>
bool IsKind(const Segment& segment) {
    return dynamic_cast<const T*>(KindOf(segment)) != nullptr;
}

// Whether every curve repeats itself on a side, by the same whole frames: then so can the file.
bool Repeats(const FCurveContainer& curves, const Frames& frames) {
    return frames.first < frames.last && std::all_of(curves.begin(), curves.end(), [&](const FCurve& curve) {
               const Segment& leading = *curve.begin();
               const Segment& trailing = *std::prev(curve.end());
               return (IsKind<Cycle>(leading) || IsKind<Cycle>(trailing)) && leading.getRightKey()
                      && leading.getRightKey()->getX() == frames.first && trailing.getLeftKey()->getX() == frames.last;
           });
}

const char* ExtendWord(const Segment& end, bool isRepeated) {
    if (IsKind<NumberInterp>(end)) return "default";
    if (IsKind<Bezier>(end)) return "slope";
    if (IsKind<Mirror>(end)) return "mirror";
    return isRepeated && IsKind<Cycle>(end) ? "cycle" : nullptr;
}

// Letters, digits and _ - : / . only, node:channel, each once.
std::string TrackName(const FCurve& curve, std::unordered_map<std::string, std::size_t>& taken) {
    std::string name = curve.getName();
    if (name.find(':') == std::string::npos) {
        const std::size_t slash = name.rfind('/');
        if (slash != std::string::npos && slash > 0) name[slash] = ':';
    }
    for (char& c : name)
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-'
              || c == ':' || c == '/' || c == '.'))
            c = '_';
    if (name.empty()) name = "_";
    std::string unique = name;
    while (!taken.try_emplace(unique, 1U).second) unique = name + '_' + std::to_string(++taken[name]);
    return unique;
}

double SampleRate(const FCurveContainer& curves) {
    double rate = 0.0;
    return FrameRateOr(ParseNumber(curves.getProperty(kFrameRate), rate) ? rate : 0.0);
}

// "xyz:0,1,2;3,4,5" as the rows of the format; nothing where the property says something else.
std::string QuaternionRows(const std::string& property, std::size_t tracks) {
    const std::size_t colon = property.find(':');
    if (colon != 3) return "";
    std::string rows;
    int count = 0;
    for (std::size_t at = colon + 1; at < property.size(); ++count) {
        const std::size_t end = std::min(property.find(';', at), property.size());
        rows += "   ";
        std::size_t numbers = 0;
        for (std::size_t next = at; next < end; ++numbers) {
            const std::size_t comma = std::min(property.find(',', next), end);
            double index = 0.0;
            if (!ParseNumber(property.substr(next, comma - next), index) || !(index < static_cast<double>(tracks)))
                return "";
            rows += (next == at ? "" : " ") + property.substr(next, comma - next);
            next = comma + 1;
        }
        if (numbers != 3) return "";
        rows += '\n';
        at = end + 1;
    }
    return count == 0 ? "" : "   quaternions = " + property.substr(0, 3) + ' ' + std::to_string(count) + '\n' + rows;
}

} // namespace

HoudiniChanWriter::HoudiniChanWriter() : CurveWriter(HoudiniChanFormat::GetFormatType()) {}

std::string HoudiniChanWriter::compose(const FCurveContainer& curves, Notes& notes) const {
    constexpr std::size_t kMostColumns = 65535;
    Frames frames(curves);
    bool isCamera = false;
    const std::vector<const FCurve*> columns = ColumnsOf(curves, isCamera);
    if (columns.size() > kMostColumns) throw TooMuch("There are more than 65 535 columns.");
    const bool hasFrames = Conversion::options().setting("chan.frames") != "no";
    // One row would be read as channels.
    if (hasFrames && frames.first == frames.last) frames.last += 1.0;

    std::vector<Walk> walks;
    walks.reserve(columns.size());
    for (const FCurve* column : columns) walks.emplace_back(column ? *column : *curves.begin());
    std::string text;
    for (double i = 0.0; i < frames.count(); ++i) {
        if (hasFrames) AppendNumber(text, frames.first + i);
        for (std::size_t column = 0; column < columns.size(); ++column) {
            if (hasFrames || column > 0) text += '\t';
            if (columns[column])
                AppendValue(text, *columns[column], frames.first + i, ValueAt(walks[column], frames.first + i));
            else
                text += '0';
        }
        text += '\n';
    }
    for (std::size_t column = 0; column < columns.size(); ++column) {
        if (!columns[column]) {
            Lose(
                {kRoles[column], Loss::Curves, Loss::Replaced, "a channel that is missing, by zeros", 1, {}, 0.0, 0.0});
            continue;
        }
        NoteSampling(*columns[column], notes);
        notes.rename(*columns[column], "chan" + std::to_string(column));
    }
    if (isCamera) Lose({"", Loss::Units, Loss::Dropped, "the order of rotations", 1, {}, 0.0, 0.0});
    return text;
}

HoudiniClipWriter::HoudiniClipWriter() : CurveWriter(HoudiniClipFormat::GetFormatType()) {}

std::string HoudiniClipWriter::compose(const FCurveContainer& curves, Notes& notes) const {
    constexpr double kLongest = 16777216.0;
    constexpr std::size_t kMostTracks = 1048576;
    const Frames frames(curves);
    const bool isRepeated = Repeats(curves, frames);
    const double samples = frames.count() - (isRepeated ? 1.0 : 0.0);
    if (samples > kLongest || curves.size() > kMostTracks)
        throw TooMuch("There are more than 16 777 216 samples of a track, or more than 1 048 576 tracks.");

    std::string text = "{\n   rate = ";
    AppendNumber(text, SampleRate(curves));
    text += "\n   start = ";
    AppendNumber(text, frames.first - 1.0);
    text += "\n   tracklength = " + std::to_string(static_cast<long long>(samples));
    text += "\n   tracks = " + std::to_string(curves.size()) + '\n';
    std::unordered_map<std::string, std::size_t> taken; // with the last number that made one of its kind free
    for (const FCurve& curve : curves) {
        const std::string name = TrackName(curve, taken);
        notes.rename(curve, name);
        NoteSampling(curve, notes);
        text += "   {\n      name = " + name + '\n';
        const Segment& leading = *curve.begin();
        const Segment& trailing = *std::prev(curve.end());
        const auto numberOf = [](const Segment& end) { return dynamic_cast<const NumberInterp*>(KindOf(end)); };
        const NumberInterp* const before = numberOf(leading);
        const NumberInterp* const after = numberOf(trailing);
        const char* left = ExtendWord(leading, isRepeated);
        const char* const right = ExtendWord(trailing, isRepeated);
        // The file has one number for both sides.
        if (before && after && before->getNumber() != after->getNumber()) left = nullptr;
        if (left) text += std::string("      lefttype = ") + left + '\n';
        if (right) text += std::string("      righttype = ") + right + '\n';
        if (before || after) {
            text += "      default = ";
            AppendNumber(text, (after ? after : before)->getNumber());
            text += '\n';
        }
        text += "      data =";
        // A number after the last key holds at it, but the sample there is what lines lead to.
        const double lastKey = after ? trailing.getLeftKey()->getX() : HUGE_VAL;
        Walk walk(curve);
        for (double x = frames.first; x < frames.first + samples; ++x) {
            text += ' ';
            AppendValue(text, curve, x, x == frames.last && x == lastKey ? EvalInInterior(x, curve) : ValueAt(walk, x));
        }
        text += "\n   }\n";
    }
    text += '\n' + QuaternionRows(curves.getProperty("hclip_quaternions"), curves.size()) + "}\n";
    return text;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
