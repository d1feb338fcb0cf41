#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "interchange/Easing.h"
#include "interchange/EasingFormats.h"
#include "interchange/Numbers.h"

#include <FCurveLib/FormatType.h>

#include <algorithm>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

// The frames and values at which an easing is 0 and 1.
struct EasingFrame {
    double x0 = 0.0;
    double y0 = 0.0;
    double x1 = 1.0;
    double y1 = 1.0;

    // Of which the reader makes x, or the number before it: where the curve jumps there, it has done so at x.
    double percent(double x) const {
        if (x == x1) return 100.0;
        double percent = (x - x0) / (x1 - x0) * 100.0;
        for (int i = 0; i < 8 && x0 + 100.0 * (percent / 100.0) * ((x1 - x0) / 100.0) > x; ++i)
            percent = std::nextafter(percent, 0.0);
        return percent;
    }
    double share(double y) const { return y == y1 ? 1.0 : (y - y0) / (y1 - y0); }
};

EasingFrame EasingFrameOf(const FCurve& curve, const Track& track) {
    EasingFrame frame{track.knots.front().x, track.knots.front().y, track.knots.back().x, track.knots.back().y};
    if (std::fabs(frame.y1 - frame.y0) <= 1e-9 * RangeOf(curve)) frame.y1 = frame.y0 + RangeOf(curve);
    return frame;
}

// "steps(4)" where all pieces are of one stepping kind and their keys lie evenly on a line; empty elsewhere.
std::string StepsOf(const Track& track, const EasingFrame& frame) {
    const std::size_t steps = track.knots.size() - 1;
    const Piece kind = track.knots.front().piece;
    if ((kind != Piece::Constant && kind != Piece::ConstantNext) || steps > 100000) return "";
    const auto isOff = [](double a, double b) { return !(std::fabs(a - b) <= 1e-10); };
    for (std::size_t i = 0; i <= steps; ++i) {
        const double part = static_cast<double>(i) / static_cast<double>(steps);
        const Knot& knot = track.knots[i];
        if (i < steps && knot.piece != kind) return "";
        if (isOff(frame.share(knot.y), part) || isOff(frame.percent(knot.x) / 100.0, part)) return "";
    }
    return "steps(" + std::to_string(steps) + (kind == Piece::ConstantNext ? ", start)" : ")");
}

void AppendStop(std::string& text, const EasingFrame& frame, double x, double y) {
    if (text.back() != '(') text += ", ";
    const double share = frame.share(y);
    if (!std::isfinite(share)) throw NotWritable("A value is too large beside the curve's rise to be a share of it.");
    AppendNumber(text, share);
    text += ' ';
    AppendNumber(text, frame.percent(x));
    text += '%';
}

// The polyline through all knots, and along Bezier pieces within the tolerance.
std::string Polyline(const FCurve& curve, const Track& track, const EasingFrame& frame, Notes& notes) {
    const double tolerance = ToleranceOf(curve);
    const std::size_t longest = Conversion::options().longest;
    std::string text = "linear(";
    std::vector<Vector2D<double>> corners;
    for (std::size_t i = 0; i < track.knots.size(); ++i) {
        if (text.size() > longest)
            throw TooMuch("The document would have more than " + std::to_string(longest) + " bytes, the limit.");
        const Knot& knot = track.knots[i];
        if (knot.before != knot.y) AppendStop(text, frame, knot.x, knot.before);
        AppendStop(text, frame, knot.x, knot.y);
        if (i + 1 == track.knots.size() || knot.piece != Piece::Bezier) continue;
        corners.clear();
        AppendCorners(CubicOf(track, i), tolerance, Keyframe::getMinSeparation(), corners);
        for (const auto& corner : corners) AppendStop(text, frame, corner.x, corner.y);
        notes.add(curve, knot.x, track.knots[i + 1].x, Loss::Kind, Loss::Split, "a curve by lines");
    }
    return text + ')';
}

void AppendCubic(std::string& text, const Easing& easing) {
    text += "cubic-bezier(";
    for (const double number : {easing.x1, easing.y1, easing.x2, easing.y2}) {
        if (text.back() != '(') text += ", ";
        AppendNumber(text, number);
    }
    text += ')';
}

// What other readers pass over, and ours puts the curve back by.
void AppendPlace(std::string& text, const std::string& name, const EasingFrame& frame) {
    text.append(" /* ").append(name).append(": ");
    AppendNumber(text, frame.x0);
    text += ' ';
    AppendNumber(text, frame.y0);
    text += ", ";
    AppendNumber(text, frame.x1);
    text += ' ';
    AppendNumber(text, frame.y1);
    text += " */";
}

std::string EasingText(const FCurve& curve, const Track& track, const Track& whole, const EasingFrame& frame,
                       Notes& notes) {
    if (whole.knots.size() == 2 && whole.knots[0].piece == Piece::Bezier) {
        const Easing easing = EasingOf(whole, 0);
        const double rise = whole.knots[1].before - whole.knots[0].y;
        const bool isFlat = rise == 0.0 && whole.knots[0].out.handle.y == 0.0 && whole.knots[1].in.handle.y == 0.0;
        if (frame.y1 == whole.knots[1].before && (rise != 0.0 || isFlat)) {
            std::string text;
            AppendCubic(text, easing);
            return text;
        }
    }
    if (track.knots.size() == 2 && track.knots[0].piece == Piece::Linear && frame.y1 == track.knots[1].y)
        return "linear";
    const std::string steps = StepsOf(track, frame);
    return steps.empty() ? Polyline(curve, whole, frame, notes) : steps;
}

// An easing a line for each piece.
void AppendPieces(std::string& text, const Track& track, const std::string& name) {
    for (std::size_t i = 0; i + 1 < track.knots.size(); ++i) {
        const Knot& left = track.knots[i];
        const Knot& right = track.knots[i + 1];
        static constexpr const char* words[] = {"step-end", "step-start", "linear"};
        if (left.piece == Piece::Bezier)
            AppendCubic(text, EasingOf(track, i));
        else
            text += words[static_cast<int>(left.piece)];
        AppendPlace(text, name, {left.x, left.y, right.x, right.y});
        text += '\n';
    }
}

// Whether a polyline would have more stops than anybody wants in a style sheet, some twenty a piece.
bool IsLong(const Track& track) {
    constexpr std::ptrdiff_t kMostBends = 64;
    return std::count_if(track.knots.begin(), track.knots.end(),
                         [](const Knot& knot) { return knot.piece == Piece::Bezier; })
           > kMostBends;
}

// On one line, within a comment.
std::string CommentOf(const FCurve& curve) {
    std::string name = curve.getName();
    for (char& c : name)
        if (c == '\n' || c == '\r') c = ' ';
    for (std::size_t at = 0; (at = name.find("*/", at)) != std::string::npos;) name[at] = '_';
    return name;
}

} // namespace

CssWriter::CssWriter() : CurveWriter(FormatType("css_easings", "CSS easing functions", "easings")) {}

std::string CssWriter::compose(const FCurveContainer& curves, Notes& notes) const {
    const std::string asked = Conversion::options().setting("css.pieces");
    std::string text;
    std::size_t number = 0;
    for (const FCurve& curve : curves) {
        if (curve.size() < 3) {
            Lose({curve.getName(), Loss::Curves, Loss::Dropped, "a curve of less than two keys", 1, {}, 0.0, 0.0});
            continue;
        }
        ++number;
        const std::string name = CommentOf(curve);
        if (name != curve.getName()) notes.rename(curve, name);
        Abilities abilities;
        abilities.constantNext = true;
        Track track = Resolve(curve, abilities, notes); // where steps show
        if (asked == "yes" || (asked != "no" && IsLong(track))) {
            CutToEasings(track, curve, notes);
            AppendPieces(text, track, name);
            continue;
        }
        Abilities jumping;
        jumping.jumps = true;
        Notes again; // of the same losses
        Track whole = Resolve(curve, jumping, again);
        CutToEasings(whole, curve, notes);
        const EasingFrame frame = EasingFrameOf(curve, whole);
        text += EasingText(curve, track, whole, frame, notes);
        const bool isPercent = frame.x0 == 0.0 && frame.y0 == 0.0 && frame.x1 == 100.0 && frame.y1 == 1.0
                               && name == std::to_string(number);
        if (!isPercent) AppendPlace(text, name, frame);
        text += '\n';
    }
    if (text.empty()) throw NotWritable("There is no curve of two keys or more.");
    return text;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
