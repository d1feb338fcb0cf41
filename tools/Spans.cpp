#include "tools/Spans.h"

#include "FCurveLib/Interpolator.h"

#include "interp/Kinds.h"
#include "model/Read.h"
#include "tools/BezierCut.h"
#include "tools/Deviation.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

using Polynomial = std::array<double, 4>; // of a parameter from 0 to 1, coefficients ascending

Polynomial PolynomialOf(const BezierArgs& p) noexcept {
    const double rise = p.y3 - p.y0;
    return {p.y0, 3.0 * p.outY, 3.0 * (rise + p.inY - 2.0 * p.outY), 3.0 * (p.outY - p.inY) - 2.0 * rise};
}

// With handles of a third.
BezierArgs EvenArgs(double from, double to, const Polynomial& c) noexcept {
    const double third = (to - from) / 3.0;
    return {from,  c[0],       to,     c[0] + c[1] + c[2] + c[3],
            third, c[1] / 3.0, -third, -(c[1] + 2.0 * c[2] + 3.0 * c[3]) / 3.0};
}

// Coefficients that rounding has left of 0 do not count.
int DegreeOf(const Polynomial& c) noexcept {
    const double size = std::abs(c[0]) + std::abs(c[1]) + std::abs(c[2]) + std::abs(c[3]);
    int degree = 3;
    while (degree > 0 && std::abs(c[static_cast<std::size_t>(degree)]) <= 0x1p-46 * size) --degree;
    return degree;
}

// Cuts by blossoming, which keeps handles of a third to the last bit.
BezierArgs CutEven(const BezierArgs& p, double from, double to) noexcept {
    const std::array<double, 4> c{0.0, p.outY, p.y3 - p.y0 + p.inY, p.y3 - p.y0};
    const double first = (from - p.x0) / (p.x3 - p.x0), last = (to - p.x0) / (p.x3 - p.x0);
    const auto blossom = [&](int lasts) {
        std::array<double, 4> b = c;
        for (int level = 0; level < 3; ++level) {
            const double t = level < lasts ? last : first;
            for (std::size_t i = 0; i + static_cast<std::size_t>(level) < 3; ++i)
                b[i] = (1.0 - t) * b[i] + t * b[i + 1];
        }
        return b[0];
    };
    const double y0 = blossom(0), y1 = blossom(1), y2 = blossom(2), y3 = blossom(3), third = (to - from) / 3.0;
    return {from, p.y0 + y0, to, p.y0 + y3, third, y1 - y0, -third, y2 - y3};
}

bool AreAlikeInX(const BezierArgs& a, const BezierArgs& b) noexcept {
    const double near = 1e-14 * (a.x3 - a.x0);
    return std::abs(a.outX - b.outX) <= near && std::abs(a.inX - b.inX) <= near;
}

} // namespace

Span LineSpan(double from, double to, double y0, double y3) noexcept {
    return {y0 == y3 ? Form::Flat : Form::Line, LineArgs(from, y0, to, y3)};
}

Span CutSpan(const Span& span, double from, double to) {
    const BezierArgs& p = span.args;
    if (from == p.x0 && to == p.x3) return span;
    if (span.form != Form::Cubic) {
        const double slope = (p.y3 - p.y0) / (p.x3 - p.x0);
        const auto y = [&](double x) { return x == p.x3 ? p.y3 : p.y0 + slope * (x - p.x0); };
        return LineSpan(from, to, y(from), y(to));
    }
    if (HasThirds(p)) return {Form::Cubic, CutEven(p, from, to)};
    BezierArgs args = p;
    if (from > p.x0) {
        const BezierCut cut = CutBezierArgs(args, from);
        args = {from, cut.y, args.x3, args.y3, cut.rightOut.x, cut.rightOut.y, cut.rightIn.x, cut.rightIn.y};
    }
    if (to < p.x3) {
        const BezierCut cut = CutBezierArgs(args, to);
        args = {args.x0, args.y0, to, cut.y, cut.leftOut.x, cut.leftOut.y, cut.leftIn.x, cut.leftIn.y};
    }
    return {Form::Cubic, args};
}

std::optional<Span> SpanOf(const FCurve& curve, double from, double to) {
    const double middle = from + 0.5 * (to - from);
    const Segment& segment = Read::findSegment(curve, middle);
    const Interpolator* interpolator = Read::interpolator(segment);
    const KindRow& kind = KindOf(interpolator);
    const Keyframe *left = Read::leftKey(segment), *right = Read::rightKey(segment);
    const auto at = [&](double x) { return interpolator ? interpolator->eval(x, segment) : 0.0; };
    std::optional<Span> span;
    const double rounding = 0x1p-49 * std::max(std::abs(from), std::abs(to));
    if ((left && left->getX() > from + rounding) || (right && right->getX() < to - rounding)) return span;
    if (kind.shape == Shape::Number) {
        span = LineSpan(from, to, at(middle), at(middle));
    } else if (!left || !right) {
        if (kind.beyond == Beyond::Flat) span = LineSpan(from, to, at(middle), at(middle));
        if (kind.beyond == Beyond::Handle) span = LineSpan(from, to, at(from), at(to));
    } else if (kind.shape == Shape::LeftValue) {
        span = LineSpan(from, to, left->getY(), left->getY());
    } else if (kind.shape == Shape::RightValue) {
        span = LineSpan(from, to, right->getY(), right->getY());
    } else if (kind.shape == Shape::Line) {
        span = CutSpan(LineSpan(left->getX(), right->getX(), left->getY(), right->getY()), std::max(from, left->getX()),
                       std::min(to, right->getX()));
    } else if (kind.isBezier()) {
        BezierArgs args = kind.args(*interpolator, segment);
        MakeBezierMonotonic(args);
        if (args.x0 == left->getX() && args.x3 == right->getX())
            span = CutSpan({Form::Cubic, args}, std::max(from, args.x0), std::min(to, args.x3));
    }
    if (!span) return span;
    BezierArgs& p = span->args;
    if (p.y0 == p.y3 && p.outY == 0.0 && p.inY == 0.0) return LineSpan(from, to, p.y0, p.y3);
    p.x0 = from, p.x3 = to;
    const bool finite = std::isfinite(p.y0 + p.outY) && std::isfinite(p.y3 + p.inY) && std::isfinite(p.outX + p.inX);
    return finite ? span : std::nullopt;
}

std::optional<Span> SumOf(const Span& a, double fa, const Span& b, double fb) noexcept {
    const BezierArgs &p = a.args, &q = b.args;
    if (a.form != Form::Cubic && b.form != Form::Cubic)
        return LineSpan(p.x0, p.x3, fa * p.y0 + fb * q.y0, fa * p.y3 + fb * q.y3);
    if (a.form != Form::Cubic) return SumOf(b, fb, a, fa);
    BezierArgs sum{p.x0, fa * p.y0 + fb * q.y0, p.x3, fa * p.y3 + fb * q.y3, p.outX, fa * p.outY, p.inX, fa * p.inY};
    if (b.form != Form::Cubic) { // along the handles, too
        const double slope = fb * (q.y3 - q.y0) / (q.x3 - q.x0);
        sum.outY += slope * p.outX;
        sum.inY += slope * p.inX;
        return Span{Form::Cubic, sum};
    }
    if (!AreAlikeInX(p, q)) return std::nullopt;
    sum.outY += fb * q.outY;
    sum.inY += fb * q.inY;
    return Span{Form::Cubic, sum};
}

std::optional<Span> BlendOf(const Span& a, const Span& b, const Span& w) noexcept {
    if (w.form == Form::Flat) {
        if (w.args.y0 == 0.0) return a;
        if (w.args.y0 == 1.0) return b;
        return SumOf(a, 1.0 - w.args.y0, b, w.args.y0);
    }
    const std::optional<Span> difference = SumOf(b, 1.0, a, -1.0);
    if (!difference) return std::nullopt;
    if (difference->form == Form::Flat) return SumOf(a, 1.0, w, difference->args.y0);
    if (!HasThirds(a.args) || !HasThirds(difference->args) || !HasThirds(w.args)) return std::nullopt;
    const Polynomial d = PolynomialOf(difference->args), v = PolynomialOf(w.args);
    if (DegreeOf(d) + DegreeOf(v) > 3) return std::nullopt;
    Polynomial sum = PolynomialOf(a.args);
    for (std::size_t i = 0; i < 4; ++i)
        for (std::size_t j = 0; i + j < 4; ++j) sum[i + j] += d[i] * v[j];
    return Span{Form::Cubic, EvenArgs(a.args.x0, a.args.x3, sum)};
}

std::optional<Span> ComposeOf(const Span& y, const Span& by) {
    const BezierArgs& p = by.args;
    if (y.form == Form::Flat) return LineSpan(p.x0, p.x3, y.args.y0, y.args.y0);
    if (y.form == Form::Line) {
        const double slope = (y.args.y3 - y.args.y0) / (y.args.x3 - y.args.x0);
        const auto at = [&](double x) { return y.args.y0 + slope * (x - y.args.x0); };
        return Span{by.form, {p.x0, at(p.y0), p.x3, at(p.y3), p.outX, slope * p.outY, p.inX, slope * p.inY}};
    }
    if (by.form != Form::Line) return std::nullopt;
    const BezierArgs part = CutSpan(y, std::min(p.y0, p.y3), std::max(p.y0, p.y3)).args;
    const double width = p.x3 - p.x0, scale = width / (part.x3 - part.x0);
    BezierArgs image{p.x0, part.y0, p.x3, part.y3, part.outX * scale, part.outY, part.inX * scale, part.inY};
    if (p.y3 < p.y0) image = {p.x0, part.y3, p.x3, part.y0, -part.inX * scale, part.inY, -part.outX * scale, part.outY};
    if (HasThirds(part)) {
        image.outX = width / 3.0;
        image.inX = -image.outX;
    }
    return Span{Form::Cubic, image};
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
