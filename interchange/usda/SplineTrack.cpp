#include "interchange/usda/SplineTrack.h"

#include "interchange/CurveReader.h"
#include "interchange/Numbers.h"
#include "interchange/usda/UsdaFormat.h"
#include "interchange/usda/Widths.h"

#include <FCurveLib/Keyframe.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Usda {

void LoseAt(const std::string& curve, Loss::What what, Loss::Remedy remedy, const char* detail,
            std::vector<double> places) {
    Loss loss;
    loss.curve = curve;
    loss.what = what;
    loss.remedy = remedy;
    loss.detail = detail;
    loss.places = std::move(places);
    Lose(loss);
}

namespace {

constexpr double kMostCopies = 1e6; // of knots, by inner loops

bool Jumps(const SplineKnot& knot) {
    return knot.isDual && knot.preValue != knot.value;
}

// Turns one spline into a track.
class SplineConverter {
public:
    SplineConverter(SplineData spline, std::string name) : m_spline(std::move(spline)) {
        m_track.name = std::move(name);
    }

    Track convert() {
        std::vector<SplineKnot>& knots = m_spline.knots;
        sort(knots);
        if (m_spline.loop) unroll();
        m_track.knots.reserve(knots.size());
        const std::size_t count = knots.size();
        findHoldingNext();
        for (std::size_t i = 0; i < count; ++i) {
            addKnot(i);
            addCustomData(knots[i]);
            if (i + 1 < count) shapePiece(knots[i], knots[i + 1]);
        }
        if (count == 0) return std::move(m_track);
        if (m_isSplit) {
            splitAt(knots.back().time, HUGE_VAL);
            m_track.knots.back().y = knots.back().value;
        }
        m_track.leading.kind = endOf(true);
        m_track.trailing.kind = endOf(false);
        TakeRise(m_track, knots.back().value - knots.front().preValue);
        return std::move(m_track);
    }

private:
    void sort(std::vector<SplineKnot>& knots) {
        const auto before = [](const SplineKnot& a, const SplineKnot& b) { return a.time < b.time; };
        if (!std::is_sorted(knots.begin(), knots.end(), before)) std::stable_sort(knots.begin(), knots.end(), before);
        const auto last = std::unique(knots.begin(), knots.end(), [this](const SplineKnot& a, const SplineKnot& b) {
            if (a.time != b.time) return false;
            LoseAt(m_track.name, Loss::Time, Loss::Dropped, "a second knot at the same time", {b.time});
            return true;
        });
        knots.erase(last, knots.end());
    }

    // Writes the repetitions of an inner loop out.
    void unroll() {
        const InnerLoop& loop = *m_spline.loop;
        std::vector<SplineKnot>& knots = m_spline.knots;
        const auto at = [&](double time) {
            return std::lower_bound(knots.begin(), knots.end(), time,
                                    [](const SplineKnot& knot, double x) { return knot.time < x; });
        };
        const auto first = at(loop.start);
        const double before = std::max(loop.before, 0.0);
        const double after = std::max(loop.after, 0.0);
        std::string text = "(";
        for (const double number : {loop.start, loop.end, loop.before, loop.after, loop.offset})
            text += (text.size() > 1 ? ", " : "") + NumberText(number);
        m_track.properties.emplace_back(kLoop, text + ')');
        if (first == knots.end() || first->time != loop.start || !(loop.end > loop.start)) {
            LoseAt(m_track.name, Loss::Kind, Loss::Dropped, "an inner loop that does not start at a knot");
            return;
        }
        const std::vector<SplineKnot> repeated(first, at(loop.end));
        const double copies = (before + after) * static_cast<double>(repeated.size());
        if (copies > kMostCopies) {
            LoseAt(m_track.name, Loss::Kind, Loss::Dropped, "an inner loop of too many knots");
            return;
        }
        LoseAt(m_track.name, Loss::Kind, Loss::Replaced, "an inner loop by its keys", {loop.start});
        const double period = loop.end - loop.start;
        const double regionEnd = loop.end + after * period;
        std::vector<SplineKnot> all(knots.begin(), at(loop.start - before * period));
        for (double turn = -before; turn <= after + 1.0; ++turn) {
            for (SplineKnot knot : repeated) {
                knot.time += turn * period;
                knot.value += turn * loop.offset;
                knot.preValue += turn * loop.offset;
                all.push_back(std::move(knot));
                if (turn > after) break; // the first one closes the region
            }
        }
        const auto rest = std::upper_bound(knots.begin(), knots.end(), regionEnd,
                                           [](double x, const SplineKnot& knot) { return x < knot.time; });
        all.insert(all.end(), rest, knots.end());
        const auto count = static_cast<std::size_t>(std::count_if(knots.begin(), rest, [&](const SplineKnot& knot) {
            return knot.time >= loop.end && knot.time <= regionEnd;
        }));
        if (count > 0) LoseAt(m_track.name, Loss::Time, Loss::Dropped, "knots that an inner loop covers");
        knots = std::move(all);
    }

    // Which knots hold, from there on, the value that the next key will have: constant_next().
    void findHoldingNext() {
        const std::vector<SplineKnot>& knots = m_spline.knots;
        m_holdsNext.resize(knots.size());
        double next = 0.0; // of the next key, where it comes after a held piece
        for (std::size_t i = knots.size(); i-- > 0;) {
            const SplineKnot& knot = knots[i];
            const bool isLast = i + 1 == knots.size();
            m_holdsNext[i] = !isLast && Jumps(knot) && knot.mode == Mode::Held && next == knot.value;
            next = m_holdsNext[i] ? knot.preValue : knot.value;
        }
    }

    // A knot where the spline jumps becomes one key where a piece can say it, else two.
    void addKnot(std::size_t i) {
        const std::vector<SplineKnot>& knots = m_spline.knots;
        const SplineKnot& source = knots[i];
        const bool isFirst = i == 0;
        const bool isLast = i + 1 == knots.size();
        Knot knot;
        knot.x = source.time;
        knot.y = source.value;
        const bool comesHeld = !isFirst && (knots[i - 1].mode == Mode::Held || knots[i - 1].mode == Mode::None);
        if (Jumps(source)) {
            const bool goesHeld = !isLast && source.mode == Mode::Held;
            if (m_holdsNext[i]) {
                knot.y = source.preValue;
                knot.piece = Piece::ConstantNext;
            } else if (comesHeld) {
                knot.y = source.value; // nothing shows the other value
            } else if (isFirst && m_spline.pre.kind == SplineEnd::Held) {
                m_track.leading.expression = NumberText(source.preValue);
            } else if (goesHeld) {
                knot.y = source.preValue;
                m_track.pieceExpressions.emplace_back(m_track.knots.size(), NumberText(source.value));
            } else if (isLast && m_spline.post.kind == SplineEnd::Held) {
                knot.y = source.preValue;
                m_track.trailing.expression = NumberText(source.value);
            } else {
                knot.y = source.preValue;
                knot.piece = Piece::ConstantNext;
                m_isSplit = true;
            }
        }
        push(knot);
    }
    // The first knot after a piece has its handle.
    void push(Knot& knot) {
        knot.in = std::exchange(m_in, {});
        m_track.knots.push_back(knot);
    }

    // The piece from the last knot on; the handle at its right end waits for the knot to come.
    void shapePiece(const SplineKnot& left, const SplineKnot& right) {
        if (m_track.knots.back().piece == Piece::ConstantNext && !m_isSplit) return;
        const double span = right.time - left.time;
        const double from = splitAt(left.time, left.time + 0.5 * span);
        Knot& knot = m_track.knots.back();
        if (left.mode == Mode::None)
            LoseAt(m_track.name, Loss::Kind, Loss::Replaced, "a segment without value by the value before it",
                   {left.time});
        if (left.mode == Mode::Linear) {
            knot.piece = Piece::Linear;
            if (from > 0.0) knot.y = left.value + (right.preValue - left.value) * (from / span);
        } else if (left.mode == Mode::Curve) {
            shapeCurve(left, right, from);
        } else if (from > 0.0) {
            knot.y = left.value;
        }
    }
    // A jump that no piece says takes the 0.001 frames after its knot, up to a further one that starts the next piece.
    // Returns how much later that starts.
    double splitAt(double time, double latest) {
        if (!std::exchange(m_isSplit, false)) return 0.0;
        Knot start;
        start.x = std::min(time + Keyframe::getMinSeparation(), latest);
        if (!(start.x > time)) return 0.0; // no number between
        LoseAt(m_track.name, Loss::Time, Loss::Split, "a jump takes 0.001 frames", {time});
        push(start);
        return start.x - time;
    }
    void shapeCurve(const SplineKnot& left, const SplineKnot& right, double from) {
        const double span = right.time - left.time;
        double out = span / 3.0;
        double in = span / 3.0;
        if (!m_spline.isHermite) {
            out = left.post.width;
            in = right.pre.width;
            if (IsRegressive({out / span, in / span})) {
                LoseAt(m_track.name, Loss::Tangents, Loss::Shortened, "tangents that are too long, as USD does",
                       {left.time});
                const Widths widths = AsEvaluated({out / span, in / span});
                out = widths.left * span;
                in = widths.right * span;
            }
        }
        Cubic cubic{{{0.0, left.value},
                     {out, finiteOr0(out * left.post.slope)},
                     {-in, finiteOr0(-in * right.pre.slope)},
                     {span, right.preValue}}};
        auto& p = cubic.p;
        Knot& knot = m_track.knots.back();
        if (from > 0.0) {
            p[1].y += p[0].y;
            p[2] = {p[3].x + p[2].x, p[3].y + p[2].y};
            cubic = Cut(cubic, ParameterAt(cubic, from)).second;
            knot.y = p[0].y;
            p[1] = {p[1].x - p[0].x, p[1].y - p[0].y};
            p[2] = {p[2].x - p[3].x, p[2].y - p[3].y};
        }
        knot.piece = Piece::Bezier;
        setSide(knot.out, p[1], span - from);
        setSide(m_in, p[2], span - from);
    }
    static double finiteOr0(double number) { return std::isfinite(number) ? number : 0.0; }
    static void setSide(Side& side, const Vector2D<double>& handle, double span) {
        side.handle = handle;
        side.isGiven = true;
        side.isWeighted = std::abs(std::abs(handle.x) - span / 3.0) > 1e-9 * span;
    }

    void addCustomData(const SplineKnot& source) {
        Knot& knot = m_track.knots.back();
        for (const auto& [key, value] : source.customData) {
            if (key == kBreakdown) {
                knot.isBreakdown = true;
            } else if (key == kUnified) {
                knot.isUnified = true;
            } else if (key == kLocked) {
                knot.isLocked = true;
            } else {
                m_track.keyProperties.push_back({m_track.knots.size() - 1, {key, value}});
            }
        }
    }

    End::Kind endOf(bool isPre) {
        const std::vector<SplineKnot>& knots = m_spline.knots;
        const SplineEnd& end = isPre ? m_spline.pre : m_spline.post;
        const double at = isPre ? knots.front().time : knots.back().time;
        switch (end.kind) {
        case SplineEnd::Held:
            return End::Hold;
        case SplineEnd::None:
            LoseAt(m_track.name, Loss::Ends, Loss::Replaced, "no value by the value at the end", {at});
            return End::Hold;
        case SplineEnd::Sloped:
            setLine(isPre, end.slope);
            return End::Line;
        case SplineEnd::Linear:
            m_track.properties.emplace_back(isPre ? kPre : kPost, "linear");
            setLine(isPre, slopeAt(isPre));
            return End::Line;
        case SplineEnd::Repeat:
        case SplineEnd::Reset:
        case SplineEnd::Oscillate:
            break;
        }
        if (knots.size() < 2) return End::Hold;
        if (end.boundary && *end.boundary != (isPre ? knots.back().time : knots.front().time))
            LoseAt(m_track.name, Loss::Ends, Loss::Replaced, "a loop over a part by one over all knots", {at});
        // After a held segment nothing shows the other value.
        const Mode before = knots[knots.size() - 2].mode;
        const bool comesHeld = before == Mode::Held || before == Mode::None;
        if (Jumps(knots.front()) || (Jumps(knots.back()) && !comesHeld))
            LoseAt(m_track.name, Loss::Ends, Loss::Replaced, "a jump at the end of a loop", {at});
        return end.kind == SplineEnd::Repeat  ? End::CycleOffset
               : end.kind == SplineEnd::Reset ? End::Cycle
                                              : End::Mirror;
    }
    void setLine(bool isPre, double slope) {
        Side& side = isPre ? m_track.knots.front().in : m_track.knots.back().out;
        side.handle = isPre ? Vector2D<double>{-1.0, -slope} : Vector2D<double>{1.0, slope};
        side.isGiven = true;
    }
    // Of an end that goes on linearly.
    double slopeAt(bool isPre) const {
        const std::vector<SplineKnot>& knots = m_spline.knots;
        const SplineKnot& end = isPre ? knots.front() : knots.back();
        if (knots.size() < 2 || end.isDual) return 0.0;
        const SplineKnot& left = isPre ? knots[0] : knots[knots.size() - 2];
        const SplineKnot& right = isPre ? knots[1] : knots.back();
        if (left.mode == Mode::Linear) return (right.preValue - left.value) / (right.time - left.time);
        if (left.mode == Mode::Curve) return isPre ? left.post.slope : right.pre.slope;
        return 0.0;
    }

    SplineData m_spline;
    Track m_track;
    std::vector<bool> m_holdsNext; // by knot
    bool m_isSplit = false;        // the last knot's value is the one from the left; the other one follows
    Side m_in;                     // of the piece that was shaped last, for the knot to come
};

} // namespace

Track TrackOf(SplineData spline, const std::string& name) {
    return SplineConverter(std::move(spline), name).convert();
}

} // namespace Usda

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
