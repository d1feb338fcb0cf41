#include "FCurveLib/Fitting.h"

#include "FCurveLib/Bezier.h"
#include "FCurveLib/Constant.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/Keyframe.h"
#include "interp/Kinds.h"
#include "model/NotFinite.h"
#include "model/Raw.h"
#include "tools/BezierCut.h"
#include "tools/FitSolver.h"
#include "tools/HandleKeeper.h"
#include "tools/QuietEdit.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::BezierArgs;
using Private::BezierFunction;
using Private::Deviation;
using Private::Fit;
using Private::FitKey;
using Private::FitPiece;
using Private::FitProblem;
using Private::FitSite;
using Private::FitSpan;
using Private::kNaN;
using Private::Raw;
using Private::Read;

namespace {

constexpr double kLargest = 1e300; // differences beyond it overflow

double UsableTolerance(double tolerance) noexcept {
    return tolerance > 0.0 ? tolerance : 0.0;
}

bool IsWholeFrame(double x) noexcept {
    return x == std::round(x);
}

FitProblem EmptyProblem(double tolerance, const FitOptions& options) {
    return {{},
            {},
            UsableTolerance(tolerance),
            options.handles == FitOptions::Weighted,
            options.keys == FitOptions::Smooth,
            options.maxKeys};
}

FitReport ReportOf(const Fit& fit, std::size_t before) {
    return {before, fit.pieces.size() + 1, fit.worst.bound, fit.worst.at, fit.within};
}

// Keys that stand higher or lower than both neighbours stay; on a level stretch, the keys at its ends.
void KeepExtremes(const std::vector<FitSite>& sites, std::vector<FitKey>& keys) {
    const auto y = [&](std::size_t i) { return sites[keys[i].site].y; };
    for (std::size_t first = 1; first + 1 < keys.size();) {
        std::size_t last = first;
        while (last + 1 < keys.size() && y(last + 1) == y(first)) ++last;
        if (last + 1 < keys.size() && (y(first) > y(first - 1)) == (y(last) > y(last + 1)) && y(first) != y(first - 1))
            keys[first].must = keys[last].must = true;
        first = last + 1;
    }
}

// --- samples ---------------------------------------------------------------------------------------------------------

class SampleJudge : public Private::FitJudge {
public:
    explicit SampleJudge(const std::vector<FitSite>& samples) : m_samples(samples) {}

    Deviation judge(const BezierArgs& shape, double) const override {
        const auto before = [](const FitSite& sample, double x) { return sample.x < x; };
        Deviation worst{0.0, shape.x0};
        for (auto it = std::lower_bound(m_samples.begin(), m_samples.end(), shape.x0, before);
             it != m_samples.end() && it->x < shape.x3; ++it) {
            const double distance = std::abs(Private::EvalBezierY(it->x, shape) - it->y);
            if (!(distance <= worst.bound)) worst = {distance, it->x};
        }
        return worst;
    }
    double valueAt(double) const override { return kNaN; }
    double splitAt(double, double) const override { return kNaN; }
    void describe(FitKey&, double, double) const override {}

private:
    const std::vector<FitSite>& m_samples;
};

std::shared_ptr<FCurve> CurveOf(const std::vector<FitSite>& samples, const Fit& fit) {
    auto curve = FCurve::create();
    const FCurve::Switch quiet(*curve);
    if (samples.empty()) return curve;
    const auto bezier = Bezier::create();
    const auto append = [&](const FitSite& site, bool last) {
        Keyframe key;
        key.set(site.x, site.y);
        Raw::appendKey(*curve, key, last ? Constant::create() : bezier);
    };
    append(samples.front(), fit.pieces.empty());
    for (const FitPiece& piece : fit.pieces) append(fit.siteOf(piece.to), &piece == &fit.pieces.back());
    auto segment = curve->begin();
    for (const FitPiece& piece : fit.pieces) {
        Private::SetFixedHandles(*++segment, piece.args);
        if (&piece != &fit.pieces.front())
            Raw::setUnified(*Read::leftKey(*segment), Private::AreAligned((&piece - 1)->args, piece.args));
    }
    return curve;
}

} // namespace

FitResult FitCurve(const std::vector<Vector2D<double>>& samples, double tolerance, const FitOptions& options) {
    FitProblem problem = EmptyProblem(tolerance, options);
    double reached = -std::numeric_limits<double>::infinity();
    for (const auto& sample : samples) {
        if (!std::isfinite(sample.x) || !(std::abs(sample.y) <= kLargest) || !(sample.x > reached)) continue;
        problem.sites.push_back({sample.x, sample.y});
        reached = sample.x;
    }
    const std::vector<FitSite> used = problem.sites;
    if (used.size() < 2) return {CurveOf(used, {}), {used.size(), used.size(), 0.0, 0.0, true}};

    const double room = Keyframe::getMinSeparation();
    double last = -std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < used.size(); ++i) {
        const bool end = i == 0 || i + 1 == used.size();
        const double x = used[i].x;
        const bool fits = x - last >= room && used.back().x - x >= room && (!options.wholeFrames || IsWholeFrame(x));
        if (!end && !fits) continue;
        problem.keys.push_back({i, end});
        last = x;
    }
    if (options.keepExtremes) KeepExtremes(problem.sites, problem.keys);
    const Fit fit = Private::SolveFit(problem, SampleJudge(used));
    return {CurveOf(used, fit), ReportOf(fit, used.size())};
}

// --- curves ----------------------------------------------------------------------------------------------------------

namespace {

// One segment between two keys of the range, as it was.
struct OldSpan {
    Segment* segment;
    double from;
    double to;
    std::optional<BezierArgs> shape; // none for what stays
    bool polynomial;                 // of first degree
};

class Reduction : public Private::FitJudge {
public:
    Reduction(FCurve& curve, double start, double end) : m_curve(curve) {
        Segment* segment = &Read::findSegment(curve, start);
        Keyframe* left = Read::leftKey(*segment);
        if (!left || left->getX() < start) {
            left = Read::rightKey(*segment);
            if (!left) return;
            segment = Read::rightSegment(*left);
        }
        if (left->getX() > end) return;
        m_keys.push_back(left);
        for (Keyframe* right = Read::rightKey(*segment); right && right->getX() <= end;
             right = Read::rightKey(*segment)) {
            m_spans.push_back(spanOf(*segment));
            m_keys.push_back(right);
            segment = Read::rightSegment(*right);
        }
        if (m_spans.empty()) return;
        keepWhatIsRead();
    }

    std::size_t keys() const noexcept { return m_keys.size(); }

    FitReport run(double tolerance, const FitOptions& options) {
        const FitProblem problem = makeProblem(tolerance, options);
        const Fit fit = Private::SolveFit(problem, *this);
        bool changed = fit.pieces.size() < m_spans.size();
        if (changed) Private::QuietEdit(m_curve, [&] { return changed = apply(fit); });
        if (!changed) return {m_keys.size(), m_keys.size(), 0.0, m_keys.front()->getX(), true};
        FitReport report = ReportOf(fit, m_keys.size());
        report.error = std::max(report.error, m_rounding);
        return report;
    }

    // --- the judge ---
    Deviation judge(const BezierArgs& shape, double limit) const override {
        const BezierFunction now(shape);
        Deviation worst{0.0, shape.x0};
        for (std::size_t i = spanAt(shape.x0); i < m_spans.size() && m_spans[i].from < shape.x3; ++i) {
            const BezierFunction old(*m_spans[i].shape);
            const Deviation deviation = Private::BoundDeviation(now, old, std::max(shape.x0, m_spans[i].from),
                                                                std::min(shape.x3, m_spans[i].to), limit);
            if (deviation.bound > worst.bound) worst = deviation;
            if (!(worst.bound <= limit)) break;
        }
        return worst;
    }
    double valueAt(double x) const override {
        const std::size_t i = spanAt(x);
        if (x == m_spans[i].from) return m_keys[i]->getY();
        return m_spans[i].shape ? Private::EvalBezierY(x, *m_spans[i].shape) : kNaN;
    }
    double splitAt(double from, double to) const override {
        const std::size_t i = spanAt(from);
        return m_spans[i].to < to ? m_spans[i].to : kNaN;
    }
    void describe(FitKey& key, double from, double to) const override {
        const OldSpan& span = m_spans[spanAt(from)];
        key.canKeep = to <= span.to && span.shape;
        if (!key.canKeep) return;
        const BezierArgs part = cut(span, from, to);
        key.keptOut = part.outX > 0.0 ? part.outY / part.outX : kNaN; // no slope that could be met
        key.keptIn = part.inX < 0.0 ? part.inY / part.inX : kNaN;
    }

private:
    static OldSpan spanOf(Segment& segment) {
        const Keyframe &left = *Read::leftKey(segment), &right = *Read::rightKey(segment);
        OldSpan span{&segment, left.getX(), right.getX(), {}, false};
        const Private::KindRow& kind = Private::KindOf(segment);
        if (kind.shape == Private::Shape::Line) {
            span.shape = Private::LineArgs(left.getX(), left.getY(), right.getX(), right.getY());
            span.polynomial = true;
        } else if (kind.isBezier()) {
            BezierArgs args = kind.args(*Read::interpolator(segment), segment);
            Private::MakeBezierMonotonic(args);
            const bool finite = std::isfinite(args.outX + args.outY) && std::isfinite(args.inX + args.inY);
            const bool meetsKeys =
                args.x0 == left.getX() && args.x3 == right.getX() && args.y0 == left.getY() && args.y3 == right.getY();
            if (finite && meetsKeys) span.shape = args;
        }
        if (span.shape
            && !(std::abs(span.shape->y0) <= kLargest && std::abs(span.shape->y3) <= kLargest
                 && std::abs(span.shape->outY) <= kLargest && std::abs(span.shape->inY) <= kLargest))
            span.shape.reset();
        return span;
    }

    static bool readsBesides(const Segment& segment) {
        const Private::Reads beyond = Private::kReadsNextKeys | Private::kReadsNeighbours;
        return (Private::ReadsOf(Read::interpolator(segment), segment) & beyond) != 0;
    }

    // A segment that stays needs what it reads: the segments beside it, as long as these read theirs in turn.
    void keepWhatIsRead() {
        bool needed = readsBesides(*Read::leftSegment(*m_keys.front()));
        for (OldSpan& span : m_spans) {
            if (needed) span.shape.reset();
            needed = !span.shape && readsBesides(*span.segment);
        }
        needed = readsBesides(*Read::rightSegment(*m_keys.back()));
        for (auto span = m_spans.rbegin(); span != m_spans.rend(); ++span) {
            if (needed) span->shape.reset();
            needed = !span->shape && readsBesides(*span->segment);
        }
    }

    std::size_t spanAt(double x) const {
        const auto after = std::upper_bound(m_spans.begin(), m_spans.end(), x,
                                            [](double value, const OldSpan& span) { return value < span.from; });
        return static_cast<std::size_t>(after - m_spans.begin()) - (after == m_spans.begin() ? 0 : 1);
    }

    static bool isMarked(const PropertyMap& properties, const char* key, bool exactly) {
        const char* value = properties.get(key);
        return exactly ? std::strcmp(value, "1") == 0 : *value != '\0';
    }
    static bool mustStay(Keyframe& key) {
        return key.isBreakdown() || isMarked(Read::properties(key), "fc_lock", false)
               || isMarked(Read::properties(key), "fc_sel", true)
               || isMarked(Read::properties(*Read::inTangent(*Read::leftSegment(key))), "fc_sel", true)
               || isMarked(Read::properties(*Read::outTangent(*Read::rightSegment(key))), "fc_sel", true);
    }

    // Whether the old curve turns at the key. Between two lines it may do so for lack of handles only.
    bool isCorner(std::size_t i) const {
        if (i == 0 || i + 1 == m_keys.size()) return true;
        const OldSpan &left = m_spans[i - 1], &right = m_spans[i];
        if (!left.shape || !right.shape) return true;
        return !(left.polynomial && right.polynomial) && !Private::AreAligned(*left.shape, *right.shape);
    }

    FitProblem makeProblem(double tolerance, const FitOptions& options) const {
        FitProblem problem = EmptyProblem(tolerance, options);
        const auto addKey = [&](double x, double y) -> FitKey& {
            problem.keys.push_back({problem.sites.size()});
            problem.sites.push_back({x, y});
            return problem.keys.back();
        };
        for (std::size_t i = 0; i < m_keys.size(); ++i) {
            Keyframe& old = *m_keys[i];
            const bool end = i == 0 || i + 1 == m_keys.size();
            const bool stays = end || mustStay(old) || !m_spans[i - 1].shape || !m_spans[i].shape;
            if (stays || !options.wholeFrames || IsWholeFrame(old.getX())) {
                FitKey& key = addKey(old.getX(), old.getY());
                key.must = stays;
                key.corner = isCorner(i);
                if (i < m_spans.size() && !m_spans[i].shape) key.after = FitSpan::Kept;
            } else {
                problem.sites.push_back({old.getX(), old.getY()});
            }
            if (i < m_spans.size() && m_spans[i].shape) addSites(problem, i, options.wholeFrames);
        }
        for (std::size_t i = 0; i + 1 < problem.keys.size(); ++i)
            describe(problem.keys[i], problem.sites[problem.keys[i].site].x, problem.sites[problem.keys[i + 1].site].x);
        if (options.keepExtremes) KeepExtremes(problem.sites, problem.keys);
        if (problem.smooth) {
            joinOutside(problem.keys.front(), *m_keys.front(), *Read::inTangent(outsideLeft()), outsideLeft());
            joinOutside(problem.keys.back(), *m_keys.back(), *Read::outTangent(outsideRight()), outsideRight());
        }
        return problem;
    }

    const Segment& outsideLeft() const { return *Read::leftSegment(*m_keys.front()); }
    const Segment& outsideRight() const { return *Read::rightSegment(*m_keys.back()); }

    static void joinOutside(FitKey& end, const Keyframe& key, const Tangent& outside, const Segment& segment) {
        const Interpolator* interpolator = Read::interpolator(segment);
        if (!key.isTangentsUnified() || !interpolator || !interpolator->usesTangents() || outside.getX() == 0.0) return;
        end.slope = end.lowSlope = end.highSlope = outside.getY() / outside.getX();
        end.slopeIsFixed = true;
        end.corner = false;
    }

    // Places between two keys at which the curve is held, and whole frames that may take keys.
    void addSites(FitProblem& problem, std::size_t i, bool wholeFrames) const {
        const OldSpan& span = m_spans[i];
        const int count = !span.polynomial ? 7 : problem.weighted ? 3 : 2;
        std::vector<std::pair<double, bool>> places;
        for (int k = 1; k <= count; ++k)
            places.emplace_back(span.from + (span.to - span.from) * k / (count + 1), false);
        const double room = Keyframe::getMinSeparation();
        if (wholeFrames) {
            const double first = IsWholeFrame(span.from) ? span.from : std::ceil(span.from);
            const double last = IsWholeFrame(span.to) ? span.to : std::floor(span.to);
            if (first - span.from >= room && span.to - first >= room) places.emplace_back(first, true);
            if (last != first && last - span.from >= room && span.to - last >= room) places.emplace_back(last, true);
            std::sort(places.begin(), places.end());
        }
        for (std::size_t k = 0; k < places.size(); ++k) {
            const auto& [x, isKey] = places[k];
            if (!(x > problem.sites.back().x && x < span.to)) continue;
            if (!isKey && k + 1 < places.size() && places[k + 1].first == x) continue;
            if (isKey) problem.keys.push_back({problem.sites.size()});
            problem.sites.push_back({x, Private::EvalBezierY(x, *span.shape)});
        }
    }

    // What the span is between two places.
    static BezierArgs cut(const OldSpan& span, double from, double to) {
        BezierArgs args = *span.shape;
        if (from > args.x0) {
            const Private::BezierCut at = Private::CutBezierArgs(args, from);
            args = {from, at.y, args.x3, args.y3, at.rightOut.x, at.rightOut.y, at.rightIn.x, at.rightIn.y};
        }
        if (to < args.x3) {
            const Private::BezierCut at = Private::CutBezierArgs(args, to);
            args = {args.x0, args.y0, to, at.y, at.leftOut.x, at.leftOut.y, at.leftIn.x, at.leftIn.y};
        }
        return args;
    }

    // --- the edit ---
    bool apply(const Fit& fit) {
        struct Change {
            const FitPiece* piece;
            BezierArgs args;
        };
        std::vector<Change> changes; // of each piece; no args for segments that stay as they are
        bool changed = false;
        Private::HandleKeeper handles;
        handles.keepLeftOf(m_keys.front());
        handles.keepRightOf(m_keys.back());
        // Segments that stay as they are; those that read more than their own parts only where that stays too.
        std::vector<bool> keptWhole, staysWhole;
        for (const FitPiece& piece : fit.pieces) {
            const double from = fit.siteOf(piece.from).x, to = fit.siteOf(piece.to).x;
            const OldSpan& span = m_spans[spanAt(from)];
            const bool independent = fit.keys[piece.from].corner && fit.keys[piece.to].corner;
            keptWhole.push_back((piece.kept || independent) && span.from == from && span.to == to);
        }
        for (std::size_t i = 0; i < fit.pieces.size(); ++i) {
            const FitPiece& piece = fit.pieces[i];
            const double from = fit.siteOf(piece.from).x, to = fit.siteOf(piece.to).x;
            const OldSpan& span = m_spans[spanAt(from)];
            const bool amongKept = (i == 0 || keptWhole[i - 1]) && (i + 1 == keptWhole.size() || keptWhole[i + 1]);
            staysWhole.push_back(keptWhole[i] && (!span.shape || amongKept || !readsBesides(*span.segment)));
            BezierArgs args = piece.args;
            if (staysWhole[i]) {
                handles.keep(*span.segment);
            } else if (piece.kept) {
                args = cut(span, from, to);
                m_rounding = std::max(m_rounding, BezierFunction(args).rounding());
            }
            changed = changed || !staysWhole[i];
            changes.push_back({&piece, args});
        }
        if (!changed) return false;

        removeKeys(fit);
        for (std::size_t i = 0; i < changes.size(); ++i) {
            if (staysWhole[i]) continue;
            const FitSite& site = fit.siteOf(changes[i].piece->from);
            Segment& segment = Read::findSegment(m_curve, site.x);
            Raw::setInterpolator(segment, Bezier::create());
            Private::SetFixedHandles(segment, changes[i].args);
        }
        handles.restore();
        for (std::size_t i = 0; i <= changes.size(); ++i) {
            if (!(i > 0 && !staysWhole[i - 1]) && !(i < changes.size() && !staysWhole[i])) continue;
            const std::size_t key = i == 0 ? fit.pieces.front().from : fit.pieces[i - 1].to;
            unify(*Read::leftKey(Read::findSegment(m_curve, fit.siteOf(key).x)));
        }
        return true;
    }

    void removeKeys(const Fit& fit) {
        std::vector<FitSite> wanted{fit.siteOf(fit.pieces.front().from)};
        for (const FitPiece& piece : fit.pieces) wanted.push_back(fit.siteOf(piece.to));
        auto it = Read::iteratorAt(m_curve, *Read::rightSegment(*m_keys.front()));
        for (const FitSite& site : wanted) {
            while (Read::leftKey(*it)->getX() < site.x) it = m_curve.removeSegment(it);
            if (Read::leftKey(*it)->getX() > site.x) {
                Keyframe key;
                key.set(site.x, site.y);
                it = m_curve.insertSegment(key, nullptr);
            }
            ++it;
        }
    }

    // Handles on one line are unified, and no others stay so; between handles that shape nothing the flag stays.
    static void unify(Keyframe& key) {
        const Segment &left = *Read::leftSegment(key), &right = *Read::rightSegment(key);
        const auto uses = [](const Segment& segment) {
            return Read::interpolator(segment) && Read::interpolator(segment)->usesTangents();
        };
        const Vector2D<double>& in = Read::inTangent(left)->get();
        const Vector2D<double>& out = Read::outTangent(right)->get();
        const bool aligned = Private::AreAligned({0, 0, 0, 0, 0, 0, in.x, in.y}, {0, 0, 0, 0, out.x, out.y, 0, 0});
        const bool both = uses(left) && uses(right);
        if (both || !aligned) Raw::setUnified(key, both && aligned);
    }

    FCurve& m_curve;
    std::vector<Keyframe*> m_keys;
    std::vector<OldSpan> m_spans; // between them
    double m_rounding = 0.0;      // of segments that were expressed otherwise
};

} // namespace

FitReport ReduceCurve(FCurve& curve, double start, double end, double tolerance, const FitOptions& options) {
    if (!(start < end)) return {};
    Reduction reduction(curve, start, end);
    if (reduction.keys() < 3) return {reduction.keys(), reduction.keys(), 0.0, 0.0, true};
    return reduction.run(tolerance, options);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
