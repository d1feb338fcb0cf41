#include "support/Basics.h"
#include "support/Museum.h"
#include "support/SameCurve.h"

namespace Test {
namespace {

class CompiledMuseum : public testing::Test {
protected:
    CompiledMuseum() {
        for (const Exhibit& exhibit : Museum()) {
            const auto curve = exhibit.make();
            curve->setName(exhibit.name);
            container->addCurve(curve);
            alone.emplace_back(*curve);
        }
    }

    std::shared_ptr<FCurveContainer> container = FCurveContainer::create();
    std::vector<CompiledCurve> alone;
};

TEST_F(CompiledMuseum, HasTheBitsNamesAndOrderOfItsCurves) {
    const CompiledSet set(*container);
    container->clear();
    ASSERT_EQ(set.size(), alone.size());
    std::vector<double> xs{kNaN, -kInfinity, kInfinity, -1e6};
    for (double x = -20.0; x < 20.0; x += 0.37) xs.push_back(x);
    std::vector<double> poses(set.size() * xs.size());
    set.eval(xs.data(), xs.size(), poses.data());
    std::vector<double> values(set.size());
    for (std::size_t k = 0; k < xs.size(); ++k) {
        set.eval(xs[k], values.data());
        for (std::size_t i = 0; i < set.size(); ++i) {
            const double expected = alone[i].eval(xs[k]);
            for (const double found : {values[i], poses[k * set.size() + i], set.getCurve(i).eval(xs[k])})
                ASSERT_TRUE(SameBits(found, expected)) << set.getName(i) << " at " << xs[k];
        }
    }
    for (std::size_t i = 0; i < set.size(); ++i) EXPECT_STREQ(set.getName(i), Museum()[i].name);
    std::vector<double> some(set.size(), -77.0); // no others are written
    set.eval(xs.back(), 7, 20, some.data());
    for (std::size_t i = 0; i < set.size(); ++i)
        ASSERT_TRUE(SameBits(some[i], i < 7 || i >= 20 ? -77.0 : values[i])) << i;
}

TEST(CompiledSet, MayBeEmptyOrHaveGaps) {
    for (const CompiledSet& empty : {CompiledSet(), CompiledSet(*FCurveContainer::create())}) {
        EXPECT_TRUE(empty.empty());
        empty.eval(1.0, nullptr);
    }
    const auto curve = MakeCurve({{0, 4}, {1, 4}});
    const CompiledSet set(std::vector<const FCurve*>{nullptr, curve.get(), nullptr});
    double values[3] = {1, 1, 1};
    set.eval(0.5, values);
    EXPECT_THAT(values, ElementsAre(0.0, 4.0, 0.0));
    EXPECT_STREQ(set.getName(0), "");
}

} // namespace
} // namespace Test
