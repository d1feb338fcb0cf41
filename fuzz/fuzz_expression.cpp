// Any text as an expression: it becomes an interpolator, which is used on every kind of segment, or the error callback
// hears why not.

#include "Require.h"
#include "support/SameCurve.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace Fuzz {

namespace {

class Complaints : public FallbackExpressionParser::ErrorCallback {
public:
    explicit Complaints(const std::string& text) : m_text(text) { InterpolatorFactory::setErrorCallback(this); }
    Complaints(const Complaints&) = delete;
    Complaints& operator=(const Complaints&) = delete;
    ~Complaints() override { InterpolatorFactory::setErrorCallback(nullptr); }

    void error(const FallbackExpressionParser::Error& error) const override {
        ++m_count;
        Require(error.expression == m_text, "the callback is told the text");
        Require(error.position <= m_text.size(), "the position lies in the text");
        Require(std::strlen(error.message) > 0, "the callback is told a reason");
    }

    int count() const { return m_count; }

private:
    std::string m_text;
    mutable int m_count = 0;
};

void requireSame(const Interpolator& a, const Interpolator& b, const Segment& segment, double x, const char* what) {
    Require(SameBits(a.eval(x, segment), b.eval(x, segment)), what, "value");
    Require(SameBits(a.getFirstDerivative(x, segment), b.getFirstDerivative(x, segment)), what, "first derivative");
    Require(SameBits(a.getSecondDerivative(x, segment), b.getSecondDerivative(x, segment)), what, "second derivative");
}

void requireExtents(const Interpolator& interpolator, const Segment& segment, double x0, double x1) {
    double low = 0.0;
    double high = 0.0;
    interpolator.getRangeExtents(segment, x0, x1, low, high);
    Require(!(low > high), "the lowest value is not above the highest");
    for (const double x : {x0, x1}) {
        const double y = interpolator.eval(x, segment);
        Require(!(y < low) && !(y > high), "the extents hold the values at both ends");
    }
}

void requirePolylines(const Interpolator& interpolator, const Segment& segment, double x0, double x1, int count) {
    std::vector<Vector2D<double>> lines[3];
    interpolator.computePolyline(segment, x0, x1, count, lines[0]);
    interpolator.firstDerivPolyline(segment, x0, x1, count, lines[1]);
    interpolator.secondDerivPolyline(segment, x0, x1, count, lines[2]);
    for (const auto& points : lines) {
        Require(points.size() < 200, "a polyline has about as many points as were asked for");
        for (std::size_t i = 0; i < points.size(); ++i) {
            Require(points[i].x >= x0 && points[i].x <= x1, "a polyline stays in its range");
            Require(i == 0 || points[i - 1].x <= points[i].x, "a polyline runs to the right");
        }
    }
}

void use(const std::string& text) {
    const Complaints complaints(text);
    const auto interpolator = InterpolatorFactory::create(text.c_str());
    Require(interpolator != nullptr, "every text becomes an interpolator");
    const bool unknown = dynamic_cast<UnknownExpression*>(interpolator.get()) != nullptr;
    Require(complaints.count() == (unknown ? 1 : 0), "the callback hears of exactly the texts that failed");
    if (unknown) Require(interpolator->getExpression() == text, "an unknown expression keeps its text");

    DefaultFallbackParser parser;
    bool refused = false;
    try {
        Require(parser.parseOrThrow(text.c_str()) != nullptr, "parseOrThrow parses or throws");
    } catch (const DefaultFallbackParser::ParseError& error) {
        refused = true;
        Require(error.getPosition() <= text.size() && std::strlen(error.getMessage()) > 0, "errors say where and why");
    }
    Require(refused == !parser.parse(text.c_str()), "parse and parseOrThrow agree");
    if (unknown) Require(refused, "the factory asks the parser");

    std::string expression;
    InterpolatorFactory::getExpression(*interpolator, expression);
    if (text.empty()) Require(expression == "constant()", "the empty expression is written as that of a constant");
    const auto again = text.empty() ? interpolator : InterpolatorFactory::create(expression.c_str());
    const auto clone = interpolator->clone();
    Require(std::strcmp(clone->getExpression(), interpolator->getExpression()) == 0, "a clone has the expression");

    const auto curve = FCurve::create();
    for (const double x : {-3.0, 0.0, 4.0, 4.5}) curve->insertSegment(*Keyframe::create(x, x * x - 7.0), interpolator);
    curve->begin()->setInterpolator(interpolator);
    for (const Segment& segment : *curve) {
        for (const double x : {-1e9, -7.5, -3.0, 0.0, 1e-3, 2.25, 4.0, 4.499, 4.5, 20.25, 1e300,
                               std::numeric_limits<double>::quiet_NaN(), HUGE_VAL}) {
            requireSame(*interpolator, *clone, segment, x, "a clone computes the same");
            requireSame(*interpolator, *again, segment, x, "the expression makes the same interpolator");
            if (std::isfinite(x)) Require(!std::isinf(interpolator->getFirstDerivative(x, segment)), "finite slopes");
        }
        const auto left = segment.getLeftKey();
        const auto right = segment.getRightKey();
        const double x0 = left ? left->getX() : -8.0;
        const double x1 = right ? right->getX() : 8.0;
        requireExtents(*interpolator, segment, x0, x1);
        for (const int count : {-1, 0, 1, 2, 33}) requirePolylines(*interpolator, segment, x0, x1, count);
    }
    for (const double x : {-7.5, 0.0, 2.25, 9.0}) {
        curve->eval(x);
        EvalInInterior(x, *curve);
        GetFirstDerivativeLeft(*curve, x);
    }
}

} // namespace

} // namespace Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Texts end at their first zero byte.
    Fuzz::use(std::string(reinterpret_cast<const char*>(data), size).c_str());
    return 0;
}
