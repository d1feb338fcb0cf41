#include "FCurveLib/SelectionExaminer.h"

#include "FCurveLib/DisplayProperties.h"
#include "FCurveLib/SelectionOperations.h"
#include "tests/selection/Parts.h"
#include "tests/support/Allocations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <sstream>

namespace {

using namespace Test;

// --- what the examiner says, and the same found by walking the selection, as texts -----------------------------------

template<class T>
std::string text(const T& value) {
    std::ostringstream out;
    out.precision(17);
    out << +value;
    return out.str();
}
std::string text(const std::string& value) {
    return value;
}

template<class T>
std::string said(const Examined<T>& examined) {
    return examined.isNone() ? "none" : examined.isMixed() ? "mixed" : text(examined.getValue());
}

std::string said(SelectionExaminer& examiner) {
    std::ostringstream out;
    const auto& c = examiner.getCurves();
    out << "curves " << c.count << ": " << said(c.name) << ' ' << said(c.visible) << ' ' << said(c.editable) << ' '
        << said(c.locked) << ' ' << said(c.velocityVisible) << ' ' << said(c.accelerationVisible) << ' '
        << said(c.discontinuityVisible);
    const auto& s = examiner.getSegments();
    out << "\nsegments " << s.count << ": " << said(s.expression);
    const auto& k = examiner.getKeyframes();
    out << "\nkeys " << k.count << ": " << said(k.x) << ' ' << said(k.y) << ' ' << said(k.breakdown) << ' '
        << said(k.tangentsUnified) << ' ' << said(k.locked);
    const auto& t = examiner.getTangents();
    out << "\ntangents " << t.count << ": " << said(t.type) << ' ' << said(t.angle) << ' ' << said(t.weight) << ' '
        << said(t.weighted) << ' ' << said(t.weightLocked);
    return out.str();
}

template<class Part, class Get>
std::string common(const std::vector<Part>& parts, const Get& get) {
    if (parts.empty()) return "none";
    using Value = std::decay_t<decltype(get(*parts.front()))>;
    std::vector<Value> values;
    for (const Part& part : parts) values.push_back(get(*part));
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    if constexpr (std::is_same_v<Value, double>)
        return *high - *low <= 1e-7 ? text(*low + 0.0) : "mixed"; // -0 reads as 0
    else
        return *low == *high ? text(*low) : "mixed";
}

std::string found(FCurveContainer& container) {
    std::vector<std::shared_ptr<FCurve>> curves;
    std::vector<std::shared_ptr<Segment>> segments;
    std::vector<std::shared_ptr<Keyframe>> keys;
    std::vector<std::shared_ptr<Tangent>> tangents;
    Selection selection(container.getShared());
    for (const HitRecord& part : selection) {
        if (part.getType() == HitRecord::CURVE) curves.push_back(part.getCurve());
        if (part.getType() == HitRecord::SEGMENT) segments.push_back(part.getSegment());
        if (part.getType() == HitRecord::KEYFRAME) keys.push_back(part.getKeyframe());
        if (part.isTangent()) tangents.push_back(part.getTangent());
    }
    using C = const FCurve&;
    using S = const Segment&;
    using K = const Keyframe&;
    using T = const Tangent&;
    std::ostringstream out;
    out << "curves " << curves.size() << ": " << common(curves, [](C c) { return std::string(c.getName()); }) << ' '
        << common(curves, [](C c) { return IsVisible(c); }) << ' ' << common(curves, [](C c) { return IsEditable(c); })
        << ' ' << common(curves, [](C c) { return IsLocked(c); }) << ' '
        << common(curves, [](C c) { return IsVelocityVisible(c); }) << ' '
        << common(curves, [](C c) { return IsAccelerationVisible(c); }) << ' '
        << common(curves, [](C c) { return IsDiscontinuityVisible(c); });
    out << "\nsegments " << segments.size() << ": " << common(segments, [](S s) {
        return std::string(s.getInterpolator() ? s.getInterpolator()->getExpression() : "");
    });
    out << "\nkeys " << keys.size() << ": " << common(keys, [](K k) { return k.getX(); }) << ' '
        << common(keys, [](K k) { return k.getY(); }) << ' ' << common(keys, [](K k) { return k.isBreakdown(); }) << ' '
        << common(keys, [](K k) { return k.isTangentsUnified(); }) << ' '
        << common(keys, [](K k) { return *k.getProperty("fc_lock") != 0; });
    out << "\ntangents " << tangents.size() << ": " << common(tangents, [](T t) { return t.getType(); }) << ' '
        << common(tangents, [](T t) { return t.getAngle(); }) << ' '
        << common(tangents, [](T t) { return t.getWeight(); }) << ' '
        << common(tangents, [](T t) { return t.isWeighted(); }) << ' '
        << common(tangents, [](T t) { return t.isWeightLocked(); });
    return out.str();
}

// --- by example ------------------------------------------------------------------------------------------------------

TEST(SelectionExaminer, SaysNoneEqualOrMixed) {
    const auto curve = makeCurve("a", 3, bent());
    const auto container = makeContainer({curve, makeCurve("b", 1, straight())});
    Selection selection(container);
    SelectionExaminer examiner(selection);
    EXPECT_TRUE(examiner.getKeyframes().x.isNone());
    EXPECT_EQ(examiner.getKeyframes().count, 0U);

    selection.select(keyOf(*curve, 1));
    EXPECT_TRUE(examiner.getKeyframes().x.isEqual());
    EXPECT_EQ(examiner.getKeyframes().x.getValue(), 1.0);
    selection.select(keyOf(*curve, 2));
    EXPECT_EQ(examiner.getKeyframes().count, 2U);
    EXPECT_TRUE(examiner.getKeyframes().x.isMixed());
    EXPECT_EQ(examiner.getKeyframes().x.getValue(), 0.0);
    keyOf(*curve, 2).setY(1.0 + 5e-8);
    EXPECT_EQ(said(examiner.getKeyframes().y), "1") << "within the tolerance";

    SelectCurveCompletely(selection, *curve);
    EXPECT_EQ(said(examiner.getCurves().name), "a");
    EXPECT_EQ(said(examiner.getSegments().expression), "bent()");
    EXPECT_EQ(examiner.getTangents().count, 6U);
    curve->begin()->setInterpolator(nullptr);
    EXPECT_EQ(said(examiner.getSegments().expression), "mixed");
    EXPECT_EQ(examiner.getTangents().count, 5U) << "the first in tangent is not used any more";
    SelectCurveCompletely(selection, *std::next(container->begin()));
    EXPECT_TRUE(examiner.getCurves().name.isMixed());
    EXPECT_EQ(said(examiner.getCurves().visible), "1");
}

TEST(SelectionExaminer, NeedsAWordAboutWhatNobodyWasTold) {
    const auto curve = makeCurve("a", 3, straight());
    const auto container = makeContainer({curve});
    Selection selection(container);
    SelectionExaminer examiner(selection);
    SelectCurveCompletely(selection, *curve);
    EXPECT_EQ(said(examiner), found(*container));
    {
        FCurve::Switch silent;
        keyOf(*curve, 0).setY(9.0);
        curve->removeSegment(std::next(curve->begin(), 2));
        container->addCurve(makeCurve("b", 1, straight()));
        examiner.getKeyframes();
    }
    examiner.invalidate();
    EXPECT_EQ(said(examiner), found(*container));
    {
        FCurve::Switch silent(*curve);
        for (const bool select : {false, true}) {
            select ? selection.select(keyOf(*curve, 0)) : selection.deselect(keyOf(*curve, 0));
            EXPECT_EQ(said(examiner), found(*container)) << "the selection tells of this";
        }
        curve->removeSegment(std::next(curve->begin(), 2));
        examiner.getKeyframes();
    }
    curve->notifyChanged();
    EXPECT_EQ(said(examiner), found(*container));
}

TEST(SelectionExaminer, OutlivesAndIsOutlived) {
    auto curve = makeCurve("a", 3, bent());
    auto container = makeContainer({curve});
    auto selection = std::make_unique<Selection>(container);
    auto examiner = std::make_unique<SelectionExaminer>(*selection);
    SelectCurveCompletely(*selection, *curve);
    const std::string before = said(*examiner);
    selection.reset();
    EXPECT_EQ(said(*examiner), before);
    curve.reset();
    const std::weak_ptr<FCurveContainer> watched = container;
    container.reset();
    EXPECT_TRUE(watched.expired());
    examiner->invalidate();
    EXPECT_EQ(examiner->getKeyframes().count + examiner->getCurves().count, 0U);

    container = makeContainer({makeCurve("b", 1, bent())});
    selection = std::make_unique<Selection>(container);
    examiner = std::make_unique<SelectionExaminer>(*selection);
    EXPECT_EQ(said(*examiner), found(*container));
    examiner.reset();
    selection->select(*container->begin());
    container->clear();
}

// A kind that counts how often somebody looks.
class Watched final : public Interpolator {
public:
    double eval(double, const Segment&) const override { return 0.0; }
    std::shared_ptr<Interpolator> clone() override { return nullptr; }
    bool usesTangents() const override {
        ++looks;
        return true;
    }
    mutable int looks = 0;
};

TEST(SelectionExaminer, WalksOnlyWhatChangedAsAWhole) {
    const auto kind = std::make_shared<Watched>();
    const auto container = FCurveContainer::create();
    for (int i = 0; i < 4; ++i) container->addCurve(makeCurve("a", 2000, kind));
    Selection selection(container);
    SelectionExaminer examiner(selection);
    for (FCurve& curve : *container) SelectCurveCompletely(selection, curve);
    FCurve& curve = *container->begin();
    const auto looksOf = [&](const std::function<void()>& act) {
        act();
        kind->looks = 0;
        examiner.getTangents();
        return kind->looks;
    };
    EXPECT_GE(looksOf([] {}), 8000);
    EXPECT_EQ(looksOf([] {}), 0);
    EXPECT_EQ(allocationsOf([&] { examiner.getKeyframes(); }), 0U);
    EXPECT_EQ(looksOf([&] { keyOf(curve, 1000).setY(7.0); }), 0);
    EXPECT_EQ(looksOf([&] { selection.deselect(keyOf(curve, 1000)); }), 0);
    EXPECT_EQ(looksOf([&] { selection.deselect(*segmentOf(curve, 1000).getInTangent()); }), 0);
    EXPECT_EQ(looksOf([&] { curve.removeSegment(std::next(curve.begin(), 1000)); }), 0);
    EXPECT_EQ(looksOf([&] { addKey(curve, 999.0, 0.0, kind); }), 0);
    EXPECT_EQ(looksOf([&] { SetVisible(curve, false); }), 0);
    const int oneCurve = looksOf([&] { curve.notifyChanged(); });
    EXPECT_GE(oneCurve, 2000);
    EXPECT_LE(oneCurve, 5000);
    EXPECT_EQ(looksOf([&] { container->setProperty("k", "v"); }), 0);
    EXPECT_EQ(looksOf([&] { container->removeCurve(std::next(container->begin())); }), 0);
}

// --- at random -------------------------------------------------------------------------------------------------------

class Scene {
public:
    explicit Scene(unsigned seed) : m_random(seed) {
        for (int i = 0; i < 3; ++i) m_container->addCurve(anyCurve());
        m_spare = anyCurve();
        m_selection = std::make_unique<Selection>(m_container);
        m_examiner = std::make_unique<SelectionExaminer>(*m_selection);
    }

    void run(int steps) {
        for (int i = 0; i < steps; ++i) {
            for (int edits = below(8) == 0 ? below(80) : 1; edits > 0; --edits) edit();
            ASSERT_EQ(said(*m_examiner), found(*m_container)) << "after step " << i << ": " << m_last;
        }
    }

private:
    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_random); }
    bool coin() { return below(2) == 0; }
    // Of few values, so that parts often agree.
    double value() { return below(3); }
    std::shared_ptr<Interpolator> anyKind() {
        switch (below(4)) {
        case 0:
            return nullptr;
        case 1:
            return straight();
        default:
            return bent();
        }
    }
    std::shared_ptr<FCurve> anyCurve() {
        auto curve = makeCurve(coin() ? "a" : "b", below(5), anyKind());
        for (Segment& segment : *curve) {
            if (coin()) segment.setProperty("fc_sel", "1");
            if (segment.getRightKey() && coin()) segment.getRightKey()->setProperty("fc_sel", "1");
            if (coin()) segment.getInTangent()->setProperty("fc_sel", "1");
        }
        return curve;
    }
    FCurve& pick() {
        if (m_container->empty() || below(8) == 0) return *m_spare;
        return *std::next(m_container->begin(), below(static_cast<int>(m_container->size())));
    }
    FCurve::iterator pickSegment(FCurve& curve) {
        return std::next(curve.begin(), below(static_cast<int>(curve.size())));
    }

    template<class Part>
    void select(Part& part) {
        switch (below(5)) {
        case 0:
            m_selection->select(part);
            break;
        case 1:
            Selection(m_container).select(part);
            break;
        case 2:
            m_selection->deselect(part);
            break;
        case 3:
            part.setProperty("fc_sel", coin() ? "1" : "0");
            break;
        default:
            part.clearProperties();
            break;
        }
    }

    void editTangent(Tangent& tangent) {
        m_last += " tangent";
        switch (below(6)) {
        case 0:
            tangent.setType(static_cast<std::uint8_t>(below(7)));
            break;
        case 1:
            tangent.setWeighted(coin());
            break;
        case 2:
            tangent.setWeightLocked(coin());
            break;
        case 3:
            tangent.set(value(), value());
            break;
        default:
            select(tangent);
            break;
        }
    }

    void editKey(Keyframe& key) {
        m_last += " key";
        switch (below(6)) {
        case 0:
            key.set(key.getX() + value() - 1.0, value());
            break;
        case 1:
            key.setBreakdown(coin());
            break;
        case 2:
            key.setTangentsUnified(coin());
            break;
        case 3:
            SetLocked(key, coin());
            break;
        default:
            select(key);
            break;
        }
    }

    void editCurve(FCurve& curve) {
        const auto segment = pickSegment(curve);
        switch (below(13)) {
        case 0:
            m_last = "remove segment";
            curve.removeSegment(segment);
            break;
        case 1:
        case 2: {
            m_last = "insert segment";
            Keyframe key;
            key.set(value() * 3.5 + value(), value());
            if (coin()) key.setProperty("fc_sel", "1");
            curve.insertSegment(key, anyKind());
            break;
        }
        case 3:
            m_last = "interpolator";
            segment->setInterpolator(anyKind());
            break;
        case 4:
            m_last = "select segment";
            select(*segment);
            break;
        case 5:
            m_last = "select curve";
            select(curve);
            break;
        case 6:
            m_last = "flags";
            curve.setName(coin() ? "a" : "b");
            SetVisible(curve, coin());
            SetLocked(curve, coin());
            break;
        case 7:
            m_last = "assign";
            curve = *anyCurve();
            break;
        case 8:
            m_last = "swap";
            curve.swap(pick());
            break;
        case 9:
            m_last = "clear";
            if (below(4) == 0) curve.clear();
            break;
        case 10:
            m_last = "silence";
            {
                FCurve::Switch silent(curve);
                curve.removeSegment(segment);
                select(curve);
            }
            FCurve::setChangeType(static_cast<FCurve::ChangeType>(below(4)));
            curve.notifyChanged();
            FCurve::setChangeType(FCurve::OrdinaryChange);
            break;
        case 11:
            m_last = "select completely";
            SelectCurveCompletely(*m_selection, curve);
            break;
        default:
            m_last = "deselect completely";
            DeselectCurveCompletely(*m_selection, curve);
            break;
        }
    }

    void editContainer() {
        switch (below(9)) {
        case 0:
            m_last = "add curve";
            m_container->insertCurve(m_container->begin(), anyCurve());
            break;
        case 1:
            m_last = "add and remove the spare curve";
            m_container->addCurve(m_spare);
            if (coin()) m_spare = anyCurve();
            break;
        case 2:
        case 3:
            m_last = "remove curve";
            if (!m_container->empty())
                m_container->removeCurve(std::next(m_container->begin(), below(static_cast<int>(m_container->size()))));
            break;
        case 4:
            m_last = "clear container";
            if (below(4) == 0) m_container->clear();
            break;
        case 5:
            m_last = "clear selection";
            m_selection->clear();
            break;
        case 6:
            m_last = "deselect parts";
            DeselectSelectedParts(*m_selection);
            break;
        case 7:
            m_last = "another selection";
            m_selection = std::make_unique<Selection>(m_container);
            break;
        default:
            m_last = "silence everything";
            {
                FCurve::Switch silent;
                editCurve(pick());
                editContainer();
            }
            m_examiner->invalidate();
            break;
        }
    }

    void edit() {
        FCurve& curve = pick();
        const auto keep = curve.getShared();
        Segment& segment = *pickSegment(curve);
        m_last.clear();
        switch (below(5)) {
        case 0:
            editTangent(coin() ? *segment.getInTangent() : *segment.getOutTangent());
            break;
        case 1:
            if (const auto key = segment.getRightKey()) editKey(*key);
            break;
        case 2:
            if (below(3) == 0) editContainer();
            break;
        default:
            editCurve(curve);
            break;
        }
    }

    std::mt19937 m_random;
    std::shared_ptr<FCurveContainer> m_container = FCurveContainer::create();
    std::shared_ptr<FCurve> m_spare;
    std::unique_ptr<Selection> m_selection;
    std::unique_ptr<SelectionExaminer> m_examiner;
    std::string m_last;
};

TEST(SelectionExaminer, AgreesWithAWalkAfterEveryEdit) {
    for (unsigned seed = 0; seed < 25; ++seed) {
        SCOPED_TRACE(seed);
        ASSERT_NO_FATAL_FAILURE(Scene(seed).run(400));
    }
}

} // namespace
