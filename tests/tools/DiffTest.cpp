#include "support/Basics.h"
#include "support/Museum.h"
#include "support/Random.h"
#include "support/Recorder.h"
#include "support/SameCurve.h"

using namespace Test;

namespace {

// The largest difference at many places, one by one.
std::pair<double, double> DenselySampled(const FCurve& a, const FCurve& b, double start, double end) {
    std::pair<double, double> worst{0.0, start};
    constexpr int places = 20000;
    for (int i = 0; i <= places; ++i) {
        const double x = start + (end - start) * i / places;
        const double gap = std::abs(a.eval(x) - b.eval(x));
        if (gap > worst.first) worst = {gap, x};
    }
    return worst;
}

class DiffInEveryExhibit : public testing::TestWithParam<Exhibit> {};
INSTANTIATE_TEST_SUITE_P(Museum, DiffInEveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

TEST_P(DiffInEveryExhibit, FindsTheLargestDifferenceOfValues) {
    const auto curve = GetParam().make();
    EXPECT_TRUE(Equal(*curve, *FCurve::createCopy(*curve)));
    if (curve->size() < 3) return;
    Random random(7);
    for (int round = 0; round < 12; ++round) {
        const auto other = FCurve::createCopy(*curve);
        const KeyView key = Keys(*other)[static_cast<std::size_t>(random.below(static_cast<int>(other->size()) - 1))];
        const double size = 1.0 + std::abs(key.getY());
        if (round % 3 == 0) key.getKeyframe().set(key.getX() + random.between(-1, 1), key.getY() + size);
        if (round % 3 == 1) key.getOutTangent().set(random.between(0, 2), size * random.between(-1, 1));
        if (round % 3 == 2) key.getRightSegment().setInterpolator(InterpolatorFactory::create("constant()"));
        const CurveDifference found = Diff(*curve, *other);
        const double start = std::min(KeysOf(*curve).front(), KeysOf(*other).front());
        const double end = std::max(KeysOf(*curve).back(), KeysOf(*other).back());
        const auto [gap, x] = DenselySampled(*curve, *other, start, end);
        EXPECT_GE(found.largest, gap * (1 - 1e-6)) << "round " << round << " at " << x;
        const double there = std::abs(curve->eval(found.x) - other->eval(found.x));
        EXPECT_NEAR(there, found.largest, 1e-9 * found.largest) << "also beside a jump, at " << found.x;
        EXPECT_EQ(found.parts.empty(), Difference(*curve, *other).empty());
    }
}

std::string Text(const CurveDifference& difference) {
    static const char* const parts[] = {"curve", "key", "segment", "in", "out"};
    const auto number = [](std::size_t i) { return i == PartDifference::none ? std::string("-") : std::to_string(i); };
    std::string text;
    for (const PartDifference& part : difference.parts)
        text += std::string(text.empty() ? "" : ", ") + parts[part.part] + " " + number(part.first) + "/"
                + number(part.second) + " " + std::to_string(part.what);
    return text;
}

TEST(Diff, NamesThePartsThatDiffer) {
    const auto make = [] { return CurveThrough({{0, 0}, {10, 1}, {20, 0}}, Bezier::create()); };
    using P = PartDifference;
    const auto bits = [](std::uint32_t what) { return std::to_string(what); };
    const struct {
        const char* name;
        std::function<void(FCurve&)> edit;
        std::string expected;
    } rows[] = {
        {"name", [](FCurve& c) { c.setName("b"); }, "curve -/- " + bits(P::Name)},
        {"property", [](FCurve& c) { c.setProperty("a", "b"); }, "curve -/- " + bits(P::Properties)},
        {"editor", [](FCurve& c) { SetVisible(c, false); }, ""},
        {"value", [](FCurve& c) { KeyAt(c, 1)->setY(2); }, "key 1/1 " + bits(P::Position)},
        {"flag", [](FCurve& c) { KeyAt(c, 2)->setBreakdown(true); }, "key 2/2 " + bits(P::Flags)},
        {"both", [](FCurve& c) { KeyAt(c, 2)->setBreakdown(true), KeyAt(c, 2)->setProperty("a", "b"); },
         "key 2/2 " + bits(P::Flags | P::Properties)},
        {"handle", [](FCurve& c) { KeyAt(c, 1)->getOutTangent()->setY(1); }, "out 1/1 " + bits(P::Handle)},
        {"type", [](FCurve& c) { KeyAt(c, 1)->getInTangent()->setType(Tangent::Flat); }, "in 1/1 " + bits(P::Type)},
        {"weighted", [](FCurve& c) { KeyAt(c, 0)->getInTangent()->setWeighted(true); }, "in 0/0 " + bits(P::Flags)},
        {"kind", [](FCurve& c) { c.begin()->setInterpolator(Linear::create()); },
         "segment 0/0 " + bits(P::Interpolator)},
        {"loose", [](FCurve& c) { c.begin()->getOutTangent()->setY(3); }, "out -/- " + bits(P::Handle)},
    };
    for (const auto& row : rows) {
        const auto a = make(), b = make();
        row.edit(*b);
        EXPECT_EQ(Text(Diff(*a, *b)), row.expected) << row.name;
        EXPECT_EQ(Equal(*a, *b), row.expected.empty()) << row.name;
    }
    const auto a = make(), b = make();
    AddKey(*b, 15, 0, Bezier::create());
    EXPECT_THAT(Text(Diff(*a, *b)), testing::HasSubstr("key -/2 " + bits(P::Added)));
    EXPECT_THAT(Text(Diff(*b, *a)), testing::HasSubstr("key 2/- " + bits(P::Missing)));
    EXPECT_EQ(Diff(*a, *b).parts.back().first, 2U) << "later keys are still the same";
}

TEST(Diff, ToleranceAndRange) {
    const auto a = CurveThrough({{0, 0}, {10, 1}}), b = CurveThrough({{0.25, 0}, {10, 1.5}});
    EXPECT_TRUE(Equal(*a, *b, 0.5));
    EXPECT_FALSE(Equal(*a, *b, 0.499));
    EXPECT_TRUE(Equal(*a, *b, kInfinity));
    EXPECT_FALSE(Equal(*a, *b, kNaN));
    DiffOptions options;
    options.end = 5;
    EXPECT_NEAR(Diff(*a, *b, options).largest, std::abs(0.5 - b->eval(5)), 1e-12);
    EXPECT_EQ(Diff(*a, *b, options).x, 5);
    EXPECT_EQ(Diff(*a, *b).largest, 0.5);
    options.end = -100;
    EXPECT_EQ(Diff(*a, *b, options).largest, 0) << "no frame to compare";

    const auto pole = CurveThrough({{0, 0}, {10, 1}}, InterpolatorFactory::create("1 / (x - 5)"));
    EXPECT_GT(Diff(*a, *pole).largest, 1e6);
    const auto undefined = CurveThrough({{0, 0}, {10, 1}}, InterpolatorFactory::create("sqrt(x - 20)"));
    EXPECT_EQ(Diff(*a, *undefined).largest, kInfinity);
    EXPECT_EQ(Diff(*undefined, *undefined).largest, 0);
    EXPECT_EQ(Diff(*FCurve::create(), *FCurve::create()).largest, 0);
}

TEST(FindCurve, TakesTheFirstOfTheName) {
    const auto container = FCurveContainer::create();
    for (const char* name : {"a", "b", "", "b"}) container->addCurve(FCurve::create())->setName(name);
    EXPECT_EQ(FindCurve(*container, "b").get(), &*std::next(container->begin()));
    EXPECT_EQ(FindCurve(*container, nullptr).get(), &*std::next(container->begin(), 2));
    EXPECT_EQ(FindCurve(*container, "c"), nullptr);
}

} // namespace
