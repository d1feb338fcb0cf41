#include "support/Basics.h"
#include "support/Invariants.h"
#include "support/Museum.h"
#include "support/Parts.h"
#include "support/RandomCurve.h"
#include "support/Recorder.h"
#include "support/SameCurve.h"
#include "tools/Outside.h"

using namespace Test;

namespace {

std::shared_ptr<FCurve> Target() {
    return CurveThrough({{0, 3}, {8, -2}, {30, 5}, {41, 0}, {2000000, 1}}, bent());
}

class PasteInEveryExhibit : public testing::TestWithParam<Exhibit> {};
INSTANTIATE_TEST_SUITE_P(Museum, PasteInEveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

// Each run of keys, pasted among others.
TEST_P(PasteInEveryExhibit, TheShapeComesAlong) {
    const auto source = GetParam().make();
    const std::vector<double> keys = KeysOf(*source);
    const std::string name = GetParam().name;
    if (name == "FormulasOverCycles") return; // its match takes the height of a repetition
    const bool endsBesideItsKeys = name.substr(0, 7) == "Matches";
    for (std::size_t first = 0; first + 1 < keys.size(); ++first) {
        for (std::size_t last = first + 1; last < keys.size(); ++last) {
            SCOPED_TRACE(testing::Message() << "keys " << first << " to " << last);
            if (endsBesideItsKeys && last - first + 1 < keys.size()) continue; // no bezier() has a match's jumps
            const KeyClip clip = CopyKeys(KeyGroup(*source, keys[first], keys[last]));
            ASSERT_EQ(clip.size(), last - first + 1);
            EXPECT_EQ(clip.getStart(), keys[first]);
            const KeyClip typed = ClipFromText(ClipToText(clip));
            EXPECT_EQ(Difference(*typed.getCurves().begin(), *clip.getCurves().begin()), "");

            const auto target = Target();
            Recorder recorder;
            target->subscribe(recorder);
            PasteOptions options;
            options.match = PasteOptions::ByOrder;
            options.mode = PasteOptions::Replace;
            const double shift = keys[first] > 1e5 ? 16 - keys[first] : 16;
            options.frame = keys[first] + shift;
            const PasteReport report = PasteKeys(typed, std::vector<std::shared_ptr<FCurve>>{target}, options);
            ASSERT_EQ(report.keys.size(), clip.size());
            EXPECT_EQ(Fault(*target), "");
            EXPECT_EQ(Misfit(*source, *target, {{1, 1}, {shift, 0}}, keys[first], keys[last]), "");
            EXPECT_THAT(recorder.heard, testing::Not(testing::Contains("curve"))) << "nothing of it goes untold";
            EXPECT_TRUE(target->eval(4) == Target()->eval(4) || keys[first] + shift < 8)
                << "before it all is as it was";

            // A change beside it recomputes the tangents around: they must not leap.
            const auto changed = FCurve::createCopy(*target);
            const auto key = KeyAt(*changed, 0);
            key->setY(key->getY() + 1e-9);
            for (const auto& own : report.keys) {
                const auto copy = FindKey(*changed, own->getX());
                copy->setY(own->getY() + 1e-9 * (1 + std::abs(own->getY())));
                copy->setY(own->getY());
            }
            const CurveDifference after = Diff(*target, *changed);
            EXPECT_LE(after.largest, 1e-4 * (1 + std::abs(target->eval(after.x)))) << "at " << after.x;
        }
    }
}

TEST(CopyKeys, TextKeepsEverything) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        RandomCurve random(seed);
        const auto container = FCurveContainer::create();
        for (int i = 0; i < 2; ++i) container->addCurve(random.make());
        const KeyClip clip(*container);
        const std::string text = ClipToText(clip);
        const KeyClip again = ClipFromText(text);
        EXPECT_EQ(Difference(clip.getCurves(), again.getCurves()), "") << text;
        EXPECT_EQ(ClipToText(again), text);
    }
    EXPECT_THROW(ClipFromText("key 0 0"), TextFormat::TextError);
    EXPECT_THROW(ClipFromText(""), TextFormat::TextError);
    EXPECT_TRUE(ClipFromText("fcurvetext 1.0").empty());
    EXPECT_EQ(ClipFromText("fcurvetext 1.0\ncurve a {\nkey 0 1\nkey 5 2\n}\n").size(), 2U) << "typed by hand";
}

TEST(PasteKeys, MakesRoomAsAsked) {
    const auto source = CurveThrough({{10, 1}, {14, 2}, {20, 3}}, bent());
    const KeyClip clip = CopyKeys(KeyGroup(*source));
    const struct {
        PasteOptions::Mode mode;
        double frame, gap;
        std::vector<double> expected;
        std::size_t removed, shifted;
    } rows[] = {
        {PasteOptions::Insert, 100, 1, {100, 101, 104, 107, 110, 120}, 1, 0},
        {PasteOptions::Replace, 100, 1, {100, 104, 110, 120}, 3, 0},
        {PasteOptions::Ripple, 100, 1, {100, 104, 110, 111, 112, 118, 131}, 0, 4},
        {PasteOptions::Ripple, 105, 2.5, {100, 101, 105, 109, 115, 119.5, 132.5}, 0, 2},
        {PasteOptions::Replace, 0, 1, {0, 4, 10, 100, 101, 107, 120}, 0, 0},
        {PasteOptions::Insert, 130, 1, {100, 101, 107, 120, 130, 134, 140}, 0, 0},
        {PasteOptions::Replace, 115, 1, {100, 101, 107, 115, 119, 125}, 1, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.mode << " at " << row.frame);
        const auto target = CurveThrough({{100, 7}, {101, 8}, {107, 9}, {120, 0}}, straight());
        (--target->end())->setInterpolator(InterpolatorFactory::create("cycle()"));
        KeyAt(*target, 1)->setBreakdown(true); // before the pasted keys it stays, too
        const auto container = makeContainer({target});
        PasteOptions options;
        options.mode = row.mode;
        options.frame = row.frame;
        options.gap = row.gap;
        const PasteReport report = PasteKeys(clip, *container, options);
        EXPECT_EQ(KeysOf(*target), row.expected);
        EXPECT_EQ(report.removed, row.removed);
        EXPECT_EQ(report.shifted, row.shifted);
        EXPECT_EQ(SameCurve::expression(*--target->end()), "cycle()") << "stays at the end";
        for (const KeyView key : Keys(*target)) {
            const bool isLast = &key.getRightSegment() == &*--target->end();
            EXPECT_TRUE(isLast || SameCurve::expression(key.getRightSegment()) != "cycle()");
        }
        options.mode = PasteOptions::Ripple;
        options.frame = 99;
        options.gap = 1e300;
        EXPECT_EQ(PasteKeys(clip, *container, options).unmatched.size(), 1U) << "nobody can shift so far";
        EXPECT_EQ(KeysOf(*target), row.expected);
    }
}

TEST(PasteKeys, FindsItsCurves) {
    const auto a = makeCurve("a", 2, bent()), b = makeCurve("b", 2, bent()), second = makeCurve("a", 2, bent());
    const auto sources = makeContainer({a, b, second});
    Selection selection(sources);
    for (FCurve& curve : *sources) selection.select(keyOf(curve, 1));
    const KeyClip clip = CopyKeys(selection);
    EXPECT_EQ(clip.size(), 3U);
    const auto targetsNamed = [](std::initializer_list<const char*> names) {
        std::vector<std::shared_ptr<FCurve>> curves;
        for (const char* name : names) curves.push_back(makeCurve(name, 0, bent()));
        return makeContainer(curves);
    };
    const auto sizes = [](const FCurveContainer& container) {
        std::vector<std::size_t> result;
        for (const FCurve& curve : container) result.push_back(curve.size() - 1);
        return result;
    };
    PasteOptions options;
    auto targets = targetsNamed({"b", "x", "a"});
    EXPECT_THAT(PasteKeys(clip, *targets, options).unmatched, ElementsAre("a"));
    EXPECT_THAT(sizes(*targets), ElementsAre(1, 0, 1));
    EXPECT_EQ((KeysOf(*targets->begin())), (std::vector<double>{11}));
    EXPECT_STREQ(Keys(*targets->begin())[0].getKeyframe().getProperty("fc_sel"), "") << "selection stays behind";
    options.match = PasteOptions::ByOrder;
    targets = targetsNamed({"b", "x"});
    EXPECT_THAT(PasteKeys(clip, *targets, options).unmatched, ElementsAre("a"));
    EXPECT_THAT(sizes(*targets), ElementsAre(1, 1));
    EXPECT_TRUE(PasteKeys(KeyClip(), *targets).keys.empty());
}

// Keys between those that were copied leave no trace, and the keys know nothing of each other any more.
TEST(CopyKeys, LeavesOutWhatIsNotSelected) {
    const auto source = CurveThrough({{0, 0}, {3, 9}, {9, 3}}, bent());
    for (const KeyView key : Keys(*source)) key.getOutTangent().setType(Tangent::Linear);
    const KeyClip clip = CopyKeys(KeyGroup({KeyAt(*source, 2), KeyAt(*source, 0), nullptr, Keyframe::create()}));
    const FCurve& copy = *clip.getCurves().begin();
    EXPECT_EQ(KeysOf(copy), (std::vector<double>{0, 9}));
    EXPECT_EQ(Keys(copy)[0].getOutTangent().get(), Vector2D<double>(3, 1));
}

} // namespace
