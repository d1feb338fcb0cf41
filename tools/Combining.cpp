#include "FCurveLib/Combining.h"

#include "FCurveLib/Bezier.h"
#include "FCurveLib/Constant.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Linear.h"
#include "FCurveLib/NumberInterp.h"
#include "FCurveLib/Transform.h"
#include "model/NotFinite.h"
#include "model/Raw.h"
#include "tools/BezierCut.h"
#include "tools/Deviation.h"
#include "tools/FitSolver.h"
#include "tools/Spans.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::BezierArgs;
using Private::BezierFunction;
using Private::Deviation;
using Private::Form;
using Private::Interval;
using Private::kInfinity;
using Private::kNaN;
using Private::Raw;
using Private::Read;
using Private::Span;

namespace {

Interval Product(const Interval& a, const Interval& b) noexcept {
    const auto [low, high] = std::minmax({a.low * b.low, a.low * b.high, a.high * b.low, a.high * b.high});
    return {low, high};
}
Interval Sum(const Interval& a, const Interval& b) noexcept {
    return {a.low + b.low, a.high + b.high};
}
Interval Difference(const Interval& a, const Interval& b) noexcept {
    return {a.low - b.high, a.high - b.low};
}
double SizeOf(const Interval& a) noexcept {
    return std::max(std::abs(a.low), std::abs(a.high));
}

// --- what is asked for -----------------------------------------------------------------------------------------------

enum class Rule { Add, Blend, Retime, Shift };

struct Request {
    Rule rule;
    const FCurve& a;
    const FCurve* b;      // Retime: by
    const FCurve* weight; // Blend
    Vector2D<double> offset = {};

    double at(double x) const {
        switch (rule) {
        case Rule::Add:
            return a.eval(x) + b->eval(x);
        case Rule::Blend:
            return blend(a.eval(x), b->eval(x), weight->eval(x));
        case Rule::Retime:
            return a.eval(b->eval(x));
        case Rule::Shift:
            break;
        }
        return a.eval(x - offset.x) + offset.y;
    }
    // So that weights of 0 and 1 give exactly a and b.
    static double blend(double a, double b, double w) noexcept { return w == 1.0 ? b : a + w * (b - a); }

    // The curves whose keys divide the result.
    std::vector<const FCurve*> dividing() const {
        if (rule == Rule::Retime) return {b};
        std::vector<const FCurve*> all{&a};
        if (b) all.push_back(b);
        if (weight) all.push_back(weight);
        return all;
    }
};

// Between two places at which no segment of the curves ends.
struct CombinedStretch {
    double from;
    double to;
    std::optional<Span> a, b, weight; // what the curves are there; a over the values of by
    std::optional<Span> exact;        // the result, if that is one segment
    double first;                     // its values at the ends, from inside
    double last;

    bool isKnown(Rule rule) const noexcept {
        return a && (rule == Rule::Shift || b) && (rule != Rule::Blend || weight);
    }
};

Interval ValuesOf(const Span& span) {
    const BezierFunction function(span.args);
    return function.over(span.args.x0, span.args.x3).value;
}

CombinedStretch StretchOf(const Request& request, double from, double to, double tolerance) {
    CombinedStretch s{from, to, {}, {}, {}, {}, kNaN, kNaN};
    const auto set = [&](const std::optional<Span>& exact) {
        s.exact = exact;
        if (s.exact) s.first = s.exact->args.y0, s.last = s.exact->args.y3;
    };
    switch (request.rule) {
    case Rule::Add:
        s.a = SpanOf(request.a, from, to);
        s.b = SpanOf(*request.b, from, to);
        if (s.a && s.b) {
            set(SumOf(*s.a, 1.0, *s.b, 1.0));
            s.first = s.a->args.y0 + s.b->args.y0;
            s.last = s.a->args.y3 + s.b->args.y3;
        }
        break;
    case Rule::Blend:
        s.a = SpanOf(request.a, from, to);
        s.b = SpanOf(*request.b, from, to);
        s.weight = SpanOf(*request.weight, from, to);
        if (s.weight && s.weight->form == Form::Flat && s.weight->args.y0 == 0.0) s.b = s.a;
        if (s.weight && s.weight->form == Form::Flat && s.weight->args.y0 == 1.0) s.a = s.b;
        if (s.a && s.b && s.weight) {
            set(BlendOf(*s.a, *s.b, *s.weight));
            s.first = Request::blend(s.a->args.y0, s.b->args.y0, s.weight->args.y0);
            s.last = Request::blend(s.a->args.y3, s.b->args.y3, s.weight->args.y3);
        }
        break;
    case Rule::Retime:
        s.b = SpanOf(*request.b, from, to);
        if (!s.b) break;
        if (s.b->form == Form::Flat) {
            const double y = request.a.eval(s.b->args.y0);
            if (std::isfinite(y)) set(s.a = Private::LineSpan(from, to, y, y));
        } else {
            const BezierFunction by(s.b->args);
            Interval values = ValuesOf(*s.b);
            // Rounding may have carried it across keys that it only meets.
            const double inside = by.at(from + 0.5 * (to - from));
            const Segment& segment = Read::findSegment(request.a, inside);
            if (const Keyframe* left = Read::leftKey(segment)) values.low = std::max(values.low, left->getX());
            if (const Keyframe* right = Read::rightKey(segment)) values.high = std::min(values.high, right->getX());
            if (values.low < inside && inside < values.high) s.a = SpanOf(request.a, values.low, values.high);
            if (s.a && (s.a->args.x0 > inside || s.a->args.x3 < inside)) s.a.reset();
            if (s.a) {
                set(ComposeOf(*s.a, *s.b));
                if (!s.exact) {
                    const BezierFunction a(s.a->args);
                    s.first = a.at(std::clamp(s.b->args.y0, values.low, values.high));
                    s.last = a.at(std::clamp(s.b->args.y3, values.low, values.high));
                }
            }
        }
        break;
    case Rule::Shift:
        s.a = SpanOf(request.a, from - request.offset.x, to - request.offset.x);
        if (s.a) {
            s.a->args.x0 = from, s.a->args.x3 = to;
            s.a->args.y0 += request.offset.y, s.a->args.y3 += request.offset.y;
            set(s.a);
        }
        break;
    }
    if (!s.exact) {
        // From inside: a key's own value counts for 1e-07 frames around it.
        const double beside = std::min(1e-6, 1e-3 * (to - from));
        const auto limit = [&](double& y, double at, double inside) {
            if (std::isfinite(y)) return;
            const double own = request.at(at);
            y = request.at(inside);
            if (std::abs(own - y) <= 0.25 * tolerance) y = own;
        };
        limit(s.first, from, from + beside);
        limit(s.last, to, to - beside);
    }
    return s;
}

// The result on a stretch where all curves are known, with what it takes to prove how far a fit is from it.
class Combined : public Private::Function {
public:
    Combined(Rule rule, const CombinedStretch& stretch)
        : m_rule(rule), m_a(stretch.a->args), m_b(stretch.b->args),
          m_weight(stretch.weight ? stretch.weight->args : stretch.b->args), m_inner(stretch.a->args) {
        const Enclosure b = m_b.over(stretch.from, stretch.to);
        if (rule == Rule::Add) {
            m_rounding = m_a.rounding() + m_b.rounding();
        } else if (rule == Rule::Blend) {
            const Interval a = m_a.over(stretch.from, stretch.to).value;
            const Interval w = m_weight.over(stretch.from, stretch.to).value;
            m_rounding = (m_a.rounding() + m_b.rounding()) * (1.0 + SizeOf(w))
                         + SizeOf(Difference(b.value, a)) * m_weight.rounding();
        } else {
            const Interval inner = inside(b.value);
            m_rounding = m_a.rounding() + SizeOf(m_a.over(inner.low, inner.high).slope) * m_b.rounding();
        }
    }

    // Whether anything can be proved.
    bool isTame() const noexcept { return std::isfinite(m_rounding); }

    double at(double x) const override {
        if (m_rule == Rule::Add) return m_a.at(x) + m_b.at(x);
        if (m_rule == Rule::Blend) return Request::blend(m_a.at(x), m_b.at(x), m_weight.at(x));
        return m_a.at(m_b.at(x));
    }
    Enclosure over(double from, double to) const override {
        const Enclosure b = m_b.over(from, to);
        if (m_rule == Rule::Retime) {
            const Interval inner = inside(b.value);
            const Enclosure a = m_a.over(inner.low, inner.high);
            return {a.value, tame(Product(a.slope, b.slope))};
        }
        const Enclosure a = m_a.over(from, to);
        if (m_rule == Rule::Add) return {Sum(a.value, b.value), tame(Sum(a.slope, b.slope))};
        const Enclosure w = m_weight.over(from, to);
        const Interval d = Difference(b.value, a.value), steepness = Difference(b.slope, a.slope);
        return {Sum(a.value, Product(d, w.value)),
                tame(Sum(a.slope, Sum(Product(steepness, w.value), Product(d, w.slope))))};
    }
    double rounding() const override { return m_rounding; }

private:
    // Of what curve `a` covers.
    Interval inside(const Interval& x) const noexcept {
        return {std::clamp(x.low, m_inner.x0, m_inner.x3), std::clamp(x.high, m_inner.x0, m_inner.x3)};
    }
    // Infinity times 0 tells nothing.
    static Interval tame(const Interval& slope) noexcept {
        return std::isnan(slope.low + slope.high) ? Interval{-kInfinity, kInfinity} : slope;
    }

    const Rule m_rule;
    const BezierFunction m_a, m_b, m_weight;
    const BezierArgs m_inner;
    double m_rounding;
};

// --- fitting ---------------------------------------------------------------------------------------------------------

// Stretches that are no segment, one after the other without a jump.
class Fitting : public Private::FitJudge {
public:
    Fitting(const Request& request, const CombinedStretch* first, const CombinedStretch* last)
        : m_request(request), m_first(first), m_last(last) {
        for (const CombinedStretch* s = first; s != last; ++s) {
            auto function = s->isKnown(request.rule) ? std::make_unique<Combined>(request.rule, *s) : nullptr;
            if (function && !function->isTame()) function.reset();
            m_proves = m_proves && function;
            m_functions.push_back(std::move(function));
        }
    }

    bool proves() const noexcept { return m_proves; }

    Private::Fit run(double tolerance) const {
        Private::FitProblem problem{{}, {}, 0.0, false, true, 0};
        Interval range{kInfinity, -kInfinity};
        constexpr int looks = 4; // from one place for a key to the next
        for (const CombinedStretch* s = m_first; s != m_last; ++s) {
            const int parts =
                std::clamp(static_cast<int>((s->to - s->from) / Keyframe::getMinSeparation() / 2.0), 1, 16);
            for (int i = 0; i < parts; ++i) {
                const double x = s->from + (s->to - s->from) * i / parts;
                problem.keys.push_back({problem.sites.size()});
                problem.keys.back().corner = i == 0 ? isCorner(s) : !m_functions[index(s)];
                for (int k = 0; k < looks; ++k) {
                    const double at = x + (s->to - s->from) / parts * k / looks;
                    problem.sites.push_back({at, valueAt(at)});
                }
            }
        }
        problem.keys.push_back({problem.sites.size()});
        problem.sites.push_back({(m_last - 1)->to, (m_last - 1)->last});
        for (Private::FitKey* key : {&problem.keys.front(), &problem.keys.back()}) key->must = key->corner = true;
        for (Private::FitSite& site : problem.sites) {
            if (!std::isfinite(site.y)) site.y = 0.0; // what a formula has no value for counts as FCurve::eval's NaN
            range.low = std::min(range.low, site.y);
            range.high = std::max(range.high, site.y);
        }
        problem.tolerance = std::max(tolerance > 0.0 ? tolerance : 0.0, 0x1p-30 * (range.high - range.low));
        return Private::SolveFit(problem, *this);
    }

    Deviation judge(const BezierArgs& shape, double limit) const override {
        const BezierFunction now(shape);
        Deviation worst{0.0, shape.x0};
        for (const CombinedStretch* s = stretchAt(shape.x0); s != m_last && s->from < shape.x3; ++s) {
            const double from = std::max(shape.x0, s->from), to = std::min(shape.x3, s->to);
            const Private::Function* function = m_functions[index(s)].get();
            const Deviation deviation =
                function ? Private::BoundDeviation(now, *function, from, to, limit) : measure(now, from, to);
            if (!(deviation.bound <= worst.bound)) worst = deviation;
            if (!(worst.bound <= limit)) break;
        }
        return worst;
    }
    double valueAt(double x) const override {
        const CombinedStretch* s = stretchAt(x);
        if (x == s->from) return s->first;
        if (x == s->to) return s->last;
        return m_functions[index(s)] ? m_functions[index(s)]->at(x) : m_request.at(x);
    }
    double splitAt(double from, double to) const override {
        const CombinedStretch* s = stretchAt(from);
        const double mostParts = m_functions[index(s)] ? 4096.0 : 256.0; // a formula may be as rough as it likes
        const double room = std::max(Keyframe::getMinSeparation(), (s->to - s->from) / mostParts);
        const double middle = from + 0.5 * (to - from);
        return middle - from >= room && to - middle >= room ? middle : kNaN;
    }
    void describe(Private::FitKey&, double, double) const override {}

private:
    std::size_t index(const CombinedStretch* s) const noexcept { return static_cast<std::size_t>(s - m_first); }
    const CombinedStretch* stretchAt(double x) const noexcept {
        const CombinedStretch* after =
            std::upper_bound(m_first, m_last, x, [](double value, const CombinedStretch& s) { return value < s.from; });
        return after == m_first ? m_first : after - 1;
    }

    Deviation measure(const BezierFunction& now, double from, double to) const {
        constexpr int places = 33;
        Deviation worst{0.0, from};
        for (int i = 0; i < places; ++i) {
            const double x = from + (to - from) * (i + 0.5) / places;
            const double distance = std::abs(now.at(x) - m_request.at(x));
            if (distance > worst.bound) worst = {distance, x};
        }
        return worst;
    }

    // Where slopes differ by more than rounding, or may do so.
    bool isCorner(const CombinedStretch* s) const {
        if (s == m_first || !m_functions[index(s)] || !m_functions[index(s) - 1]) return true;
        const Interval left = m_functions[index(s) - 1]->over(s->from, s->from).slope;
        const Interval right = m_functions[index(s)]->over(s->from, s->from).slope;
        return !(SizeOf(Difference(left, right)) <= 1e-9 * (SizeOf(left) + SizeOf(right)));
    }

    const Request& m_request;
    const CombinedStretch *m_first, *m_last;
    std::vector<std::unique_ptr<Combined>> m_functions; // none where nothing can be proved
    bool m_proves = true;
};

// --- the result ------------------------------------------------------------------------------------------------------

class Combination {
public:
    Combination(const Request& request, double tolerance)
        : m_request(request), m_tolerance(tolerance > 0.0 ? tolerance : 0.0) {}

    CombineResult run() {
        m_result.curve = FCurve::create();
        const std::vector<double> places = findPlaces();
        for (std::size_t i = 0; i + 1 < places.size(); ++i)
            m_stretches.push_back(StretchOf(m_request, places[i], places[i + 1], m_tolerance));
        for (const CombinedStretch& s : m_stretches) {
            const double size = std::max(std::abs(s.first), std::abs(s.last));
            if (std::isfinite(size)) m_noise = std::max(m_noise, 1e-11 * size);
        }
        for (std::size_t i = 0; i < m_stretches.size();) i = addSpans(i);
        m_end = m_request.at(places.back());
        if (m_spans.empty()) {
            append(places.front(), m_end, Constant::create());
        } else {
            holdBeforeJumps();
            build();
        }
        buildEnds(places.front(), places.back());
        FCurve& curve = *m_result.curve;
        curve.setName(m_request.a.getName());
        for (auto it = m_request.a.beginProperties(); it != m_request.a.endProperties(); ++it)
            curve.setProperty(it->first.c_str(), it->second.c_str());
        CombineReport& report = m_result.report;
        std::sort(report.fitted.begin(), report.fitted.end(),
                  [](const auto& a, const auto& b) { return a.from < b.from; });
        report.exact = report.fitted.empty() && report.endsExact;
        return std::move(m_result);
    }

private:
    // Where segments end; at least one place.
    std::vector<double> findPlaces() const {
        std::vector<double> places;
        for (const FCurve* curve : m_request.dividing())
            for (auto it = std::next(curve->begin()); it != curve->end(); ++it)
                places.push_back(Read::leftKey(*it)->getX() + m_request.offset.x);
        std::sort(places.begin(), places.end());
        thinOut(places);
        if (places.empty()) places.push_back(0.0);
        if (m_request.rule != Rule::Retime) return places;
        std::vector<double> all;
        for (std::size_t i = 0; i + 1 < places.size(); ++i) {
            all.push_back(places[i]);
            addCrossings(places[i], places[i + 1], all);
        }
        all.push_back(places.back());
        const double last = all.back();
        thinOut(all);
        if (all.back() != last) all.back() = last;
        return all;
    }

    static void thinOut(std::vector<double>& places) {
        const auto close = [](double a, double b) { return b - a < Keyframe::getMinSeparation(); };
        places.erase(std::unique(places.begin(), places.end(), close), places.end());
    }

    // Where the frame shown is that of a key, which ends a segment of the curve.
    void addCrossings(double from, double to, std::vector<double>& places) const {
        const std::optional<Span> by = SpanOf(*m_request.b, from, to);
        if (!by || by->form == Form::Flat) return;
        const BezierFunction function(by->args);
        const Interval values = ValuesOf(*by);
        std::vector<double> turns{from, to};
        if (by->form == Form::Cubic) {
            const BezierArgs& p = by->args;
            double roots[2] = {0.0, 0.0};
            const double size = std::max({std::abs(p.outY), std::abs(p.inY), std::abs(p.y3 - p.y0)});
            const double first = p.outY / size, last = -p.inY / size, middle = (p.y3 - p.y0) / size - first - last;
            const int count =
                Private::SolveQuadratic(first - 2.0 * middle + last, 2.0 * (middle - first), first, roots);
            for (int i = 0; i < count; ++i)
                if (roots[i] > 0.0 && roots[i] < 1.0) turns.push_back(Private::BezierX({roots[i], 1.0 - roots[i]}, p));
            std::sort(turns.begin(), turns.end());
        }
        std::vector<double> found(turns.begin() + 1, turns.end() - 1);
        const Segment& lowest = Read::findSegment(m_request.a, values.low);
        for (const Keyframe* key = Read::rightKey(lowest); key && key->getX() < values.high;
             key = Read::rightKey(*Read::rightSegment(*key)))
            for (std::size_t i = 0; i + 1 < turns.size(); ++i) {
                double low = turns[i], high = turns[i + 1];
                const bool rises = function.at(low) < function.at(high);
                if (!((function.at(low) < key->getX()) == rises && (function.at(high) > key->getX()) == rises))
                    continue;
                for (double x = low + 0.5 * (high - low); x > low && x < high; x = low + 0.5 * (high - low))
                    ((function.at(x) < key->getX()) == rises ? low : high) = x;
                found.push_back(low);
            }
        std::sort(found.begin(), found.end());
        for (const double x : found)
            if (x > from && to - x >= Keyframe::getMinSeparation()) places.push_back(x);
    }

    // From stretch i on: one that is a segment, or as many as can be fitted together. Returns the first one after them.
    std::size_t addSpans(std::size_t i) {
        const CombinedStretch& first = m_stretches[i];
        if (first.exact) {
            m_spans.push_back(*first.exact);
            return i + 1;
        }
        std::size_t end = i + 1;
        while (end < m_stretches.size() && !m_stretches[end].exact
               && std::abs(m_stretches[end].first - m_stretches[end - 1].last) <= 0.25 * m_tolerance)
            ++end;
        const Fitting fitting(m_request, &first, &first + (end - i));
        const Private::Fit fit = fitting.run(m_tolerance);
        for (const Private::FitPiece& piece : fit.pieces) m_spans.push_back({Form::Cubic, piece.args});
        CombineReport& report = m_result.report;
        report.fitted.push_back({first.from, m_stretches[end - 1].to});
        report.proved = report.proved && fitting.proves();
        report.withinTolerance = report.withinTolerance && fit.within;
        note(fit.worst);
        return end;
    }

    void note(const Deviation& deviation) {
        CombineReport& report = m_result.report;
        if (deviation.bound > report.error) report.error = deviation.bound, report.errorAt = deviation.at;
    }

    // More than rounding.
    bool jumps(double left, double right) const noexcept { return !(std::abs(left - right) <= m_noise); }

    // A step can jump at its end, other segments cannot.
    void holdBeforeJumps() {
        const double width = Keyframe::getMinSeparation();
        const double fitted = m_result.report.error;
        std::vector<Span> spans;
        for (std::size_t i = 0; i < m_spans.size(); ++i) {
            const Span& span = m_spans[i];
            const BezierArgs& p = span.args;
            const double next = i + 1 < m_spans.size() ? m_spans[i + 1].args.y0 : m_end;
            if (span.form == Form::Flat || !jumps(p.y3, next)) {
                spans.push_back(span);
                continue;
            }
            const double held = p.x3 - p.x0 >= 2.0 * width ? p.x3 - width : p.x0;
            if (held > p.x0) spans.push_back(CutSpan(span, p.x0, held));
            const double y = held > p.x0 ? spans.back().args.y3 : p.y0;
            const BezierFunction function(p);
            const Interval values = function.over(held, p.x3).value;
            const double error = std::max(values.high - y, y - values.low) + function.rounding() + fitted;
            note({error, p.x3});
            m_result.report.withinTolerance = m_result.report.withinTolerance && error <= m_tolerance;
            m_result.report.fitted.push_back({held, p.x3});
            spans.push_back(Private::LineSpan(held, p.x3, y, y));
        }
        m_spans = std::move(spans);
    }

    void append(double x, double y, std::shared_ptr<Interpolator> interpolator) {
        Keyframe key;
        key.set(x, y);
        Raw::appendKey(*m_result.curve, key, std::move(interpolator));
    }

    void build() {
        const auto kinds =
            std::array<std::shared_ptr<Interpolator>, 3>{Constant::create(), Linear::create(), Bezier::create()};
        for (const Span& span : m_spans) append(span.args.x0, span.args.y0, kinds[static_cast<std::size_t>(span.form)]);
        append(m_spans.back().args.x3, m_end, Constant::create());
        auto segment = m_result.curve->begin();
        for (std::size_t i = 0; i < m_spans.size(); ++i) {
            ++segment;
            if (m_spans[i].form != Form::Cubic) continue;
            Private::SetFixedHandles(*segment, m_spans[i].args);
            if (i > 0 && m_spans[i - 1].form == Form::Cubic && !jumps(m_spans[i - 1].args.y3, m_spans[i].args.y0))
                Raw::setUnified(*Read::leftKey(*segment), Private::AreAligned(m_spans[i - 1].args, m_spans[i].args));
        }
    }

    // A line or a constant that goes on for ever.
    std::optional<Span> endSpan(double from, double to, bool before) const {
        if (m_request.rule == Rule::Retime) { // its frames must not come across a key again
            const std::optional<Span> by = SpanOf(*m_request.b, from, to);
            if (!by) return std::nullopt;
            if (by->form != Form::Flat) {
                const double nearest = before ? by->args.y3 : by->args.y0;
                const bool toHigh = (by->args.y3 > by->args.y0) != before;
                const FCurve& a = m_request.a;
                const bool hasKeys = a.size() > 1;
                if (hasKeys && toHigh && nearest < Read::leftKey(*std::prev(a.end()))->getX()) return std::nullopt;
                if (hasKeys && !toHigh && nearest > Read::rightKey(*a.begin())->getX()) return std::nullopt;
            }
        }
        const CombinedStretch stretch = StretchOf(m_request, from, to, m_tolerance);
        if (!stretch.exact || stretch.exact->form == Form::Cubic) return std::nullopt;
        return stretch.exact;
    }

    void buildEnds(double first, double last) {
        FCurve& curve = *m_result.curve;
        Segment &leading = *curve.begin(), &trailing = *std::prev(curve.end());
        const auto slopeOf = [](const Span& span) { return span.args.y3 - span.args.y0; }; // over one frame
        std::optional<Span> before = endSpan(first - 1.0, first, true);
        std::optional<Span> after = endSpan(last, last + 1.0, false);
        if (before && jumps(before->args.y3, Read::rightKey(leading)->getY())) {
            if (before->form == Form::Flat)
                Raw::setInterpolator(leading, NumberInterp::create(before->args.y0));
            else
                before.reset();
        }
        if (after && jumps(after->args.y0, m_end)) after.reset();
        m_result.report.endsExact = before && after;
        if (before && before->form == Form::Line) {
            Raw::setInterpolator(leading, Bezier::create());
            setHandle(*Read::inTangent(leading), -1.0, -slopeOf(*before));
        }
        if (after && after->form == Form::Line) {
            Raw::setInterpolator(trailing, Bezier::create());
            setHandle(*Read::outTangent(trailing), 1.0, slopeOf(*after));
        }
    }

    static void setHandle(Tangent& tangent, double x, double y) {
        Raw::setType(tangent, Tangent::Fixed);
        Raw::setHandle(tangent, x, y);
    }

    const Request& m_request;
    const double m_tolerance;
    std::vector<CombinedStretch> m_stretches;
    std::vector<Span> m_spans; // of the result
    double m_end = 0.0;        // the value at the last key
    double m_noise = 0.0;      // what rounding may have done to values
    CombineResult m_result;
};

} // namespace

CombineResult AddCurves(const FCurve& a, const FCurve& b, double tolerance) {
    return Combination({Rule::Add, a, &b, nullptr}, tolerance).run();
}

CombineResult BlendCurves(const FCurve& a, const FCurve& b, const FCurve& weight, double tolerance) {
    return Combination({Rule::Blend, a, &b, &weight}, tolerance).run();
}

CombineResult RetimeCurve(const FCurve& curve, const FCurve& by, double tolerance) {
    return Combination({Rule::Retime, curve, &by, nullptr}, tolerance).run();
}

CombineResult OffsetCurve(const FCurve& curve, const Vector2D<double>& offset, double tolerance) {
    CombineResult result{FCurve::createCopy(curve), {}};
    const TransformResult transformed = TransformCurve(*result.curve, {1.0, 1.0}, offset);
    if (transformed.transformed && transformed.kept.empty() && curve.size() > 1) return result;
    if (transformed.transformed) return Combination({Rule::Shift, curve, nullptr, nullptr, offset}, tolerance).run();
    result.report.exact = result.report.endsExact = result.report.withinTolerance = false;
    result.report.error = kInfinity;
    return result;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
