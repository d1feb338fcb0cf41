#include "FCurveLib/Bezier.h"

#include "interp/BezierSampling.h"
#include "interp/ControlPoints.h"
#include "interp/TwoPoints.h"
#include "model/Read.h"

#include <algorithm>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::BezierArgs;
using Private::Read;
using Private::TwoPoints;

namespace {

Vector2D<double> HandleOf(const Tangent* tangent) noexcept {
    return tangent ? tangent->get() : Vector2D<double>();
}

// Of a segment with both keys.
BezierArgs ArgsBetweenKeys(const Segment& segment) noexcept {
    const Vector2D<double>& p0 = Read::leftKey(segment)->get();
    const Vector2D<double>& p3 = Read::rightKey(segment)->get();
    const Vector2D<double> out = HandleOf(Read::outTangent(segment));
    const Vector2D<double> in = HandleOf(Read::inTangent(segment));
    BezierArgs args{p0.x, p0.y, p3.x, p3.y, out.x, out.y, in.x, in.y};
    MakeBezierMonotonic(args);
    return args;
}

// A segment that lacks a key: the line through the other one along its handle.
struct Line {
    Vector2D<double> key;
    Vector2D<double> handle{1.0, 0.0};

    explicit Line(const Segment& segment) noexcept {
        constexpr double shortest = Keyframe::getMinSeparation();
        if (const Keyframe* left = Read::leftKey(segment)) {
            key = left->get();
            handle = HandleOf(Read::outTangent(segment));
            handle.x = std::max(handle.x, shortest);
        } else if (const Keyframe* right = Read::rightKey(segment)) {
            key = right->get();
            handle = HandleOf(Read::inTangent(segment));
            handle.x = std::min(handle.x, -shortest);
        }
    }

    double at(double x) const noexcept { return key.y + handle.y * (x - key.x) / handle.x; }
    double slope() const noexcept { return handle.y / handle.x; }
};

// What either shape of a segment does: onCurve(args) with both keys, onLine(line) otherwise.
template<class OnCurve, class OnLine>
auto ByShape(const Segment& segment, const OnCurve& onCurve, const OnLine& onLine) {
    if (Read::hasBothKeys(segment)) return onCurve(ArgsBetweenKeys(segment));
    return onLine(Line(segment));
}

} // namespace

BezierArgs Private::HandleArgs(const Interpolator&, const Segment& segment) {
    return ArgsBetweenKeys(segment);
}

Bezier::Bezier() {
    setExpression("bezier()");
}

std::shared_ptr<Interpolator> Bezier::create() {
    return std::shared_ptr<Interpolator>(new Bezier);
}

std::shared_ptr<Interpolator> Bezier::clone() {
    return std::shared_ptr<Interpolator>(new Bezier(*this));
}

bool Bezier::usesTangents() const {
    return true;
}

double Bezier::eval(double x, const Segment& segment) const {
    return ByShape(
        segment, [&](const BezierArgs& args) { return Private::EvalBezierY(x, args); },
        [&](const Line& line) { return line.at(x); });
}

void Bezier::getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const {
    ByShape(
        segment, [&](const BezierArgs& args) { Private::BezierRangeExtents(args, x0, x1, minY, maxY); },
        [&](const Line& line) {
            const double a = line.at(x0);
            const double b = line.at(x1);
            minY = std::min(a, b);
            maxY = std::max(a, b);
        });
}

void Bezier::computePolyline(const Segment& segment, double x0, double x1, int count,
                             std::vector<Vector2D<double>>& points) const {
    ByShape(
        segment, [&](const BezierArgs& args) { Private::SampleBezier(args, x0, x1, count, points, Private::BezierY); },
        [&](const Line& line) { TwoPoints(points, x0, line.at(x0), x1, line.at(x1)); });
}

double Bezier::getFirstDerivative(double x, const Segment& segment) const {
    return ByShape(
        segment, [&](const BezierArgs& args) { return Private::BezierSlope(Private::SolveBezier(x, args), args); },
        [](const Line& line) { return line.slope(); });
}

void Bezier::firstDerivPolyline(const Segment& segment, double x0, double x1, int count,
                                std::vector<Vector2D<double>>& points) const {
    ByShape(
        segment,
        [&](const BezierArgs& args) { Private::SampleBezier(args, x0, x1, count, points, Private::BezierSlope); },
        [&](const Line& line) { TwoPoints(points, x0, line.slope(), x1, line.slope()); });
}

double Bezier::getSecondDerivative(double x, const Segment& segment) const {
    return ByShape(
        segment, [&](const BezierArgs& args) { return Private::BezierSecond(Private::SolveBezier(x, args), args); },
        [](const Line&) { return 0.0; });
}

void Bezier::secondDerivPolyline(const Segment& segment, double x0, double x1, int count,
                                 std::vector<Vector2D<double>>& points) const {
    ByShape(
        segment,
        [&](const BezierArgs& args) { Private::SampleBezier(args, x0, x1, count, points, Private::BezierSecond); },
        [&](const Line&) { TwoPoints(points, x0, 0.0, x1, 0.0); });
}

void Bezier::getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2,
                           double& y2, double& x3, double& y3) const {
    const Keyframe& left = *Read::leftKey(segment);
    const Keyframe& right = *Read::rightKey(segment);
    const Vector2D<double> out = HandleOf(Read::outTangent(segment));
    const Vector2D<double> in = HandleOf(Read::inTangent(segment));
    x0 = left.getX();
    y0 = left.getY();
    x1 = x0 + out.x;
    y1 = y0 + out.y;
    x3 = right.getX();
    y3 = right.getY();
    x2 = x3 + in.x;
    y2 = y3 + in.y;
    Private::MakeBezierMonotonic(x0, y0, x1, y1, x2, y2, x3, y3);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
