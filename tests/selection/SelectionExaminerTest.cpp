#include "support/Basics.h"
#include "support/Random.h"
#include "tests/selection/Parts.h"
#include "tests/support/Allocations.h"

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

template<class Part, class Get>
std::string found(const std::vector<Part>& parts, const Get& get) {
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

// What the examiner says otherwise than it is; empty for nothing.
std::string untruth(SelectionExaminer& examiner, FCurveContainer& container) {
    std::vector<std::shared_ptr<FCurve>> curves;
    std::vector<std::shared_ptr<Segment>> segments;
    std::vector<std::shared_ptr<Keyframe>> keys;
    std::vector<std::shared_ptr<Tangent>> tangents;
    for (const HitRecord& part : Selection(container.getShared())) {
        if (part.getType() == HitRecord::CURVE) curves.push_back(part.getCurve());
        if (part.getType() == HitRecord::SEGMENT) segments.push_back(part.getSegment());
        if (part.getType() == HitRecord::KEYFRAME) keys.push_back(part.getKeyframe());
        if (part.isTangent()) tangents.push_back(part.getTangent());
    }
    std::string difference;
    const auto check = [&](const char* what, const std::string& is, const std::string& expected) {
        if (is != expected) difference += std::string(what) + " is " + is + ", not " + expected + "; ";
    };
    const auto& c = examiner.getCurves();
    using C = const FCurve&;
    check("curves", text(c.count), text(curves.size()));
    check("name", said(c.name), found(curves, [](C of) { return std::string(of.getName()); }));
    check("visible", said(c.visible), found(curves, [](C of) { return IsVisible(of); }));
    check("editable", said(c.editable), found(curves, [](C of) { return IsEditable(of); }));
    check("locked", said(c.locked), found(curves, [](C of) { return IsLocked(of); }));
    check("velocity", said(c.velocityVisible), found(curves, [](C of) { return IsVelocityVisible(of); }));
    check("acceleration", said(c.accelerationVisible), found(curves, [](C of) { return IsAccelerationVisible(of); }));
    check("breaks", said(c.discontinuityVisible), found(curves, [](C of) { return IsDiscontinuityVisible(of); }));
    const auto& s = examiner.getSegments();
    check("segments", text(s.count), text(segments.size()));
    check("expression", said(s.expression), found(segments, [](const Segment& of) {
              return std::string(of.getInterpolator() ? of.getInterpolator()->getExpression() : "");
          }));
    const auto& k = examiner.getKeyframes();
    using K = const Keyframe&;
    check("keys", text(k.count), text(keys.size()));
    check("x", said(k.x), found(keys, [](K of) { return of.getX(); }));
    check("y", said(k.y), found(keys, [](K of) { return of.getY(); }));
    check("breakdown", said(k.breakdown), found(keys, [](K of) { return of.isBreakdown(); }));
    check("unified", said(k.tangentsUnified), found(keys, [](K of) { return of.isTangentsUnified(); }));
    check("locked key", said(k.locked), found(keys, [](K of) { return *of.getProperty("fc_lock") != 0; }));
    const auto& t = examiner.getTangents();
    using T = const Tangent&;
    check("tangents", text(t.count), text(tangents.size()));
    check("type", said(t.type), found(tangents, [](T of) { return of.getType(); }));
    check("angle", said(t.angle), found(tangents, [](T of) { return of.getAngle(); }));
    check("weight", said(t.weight), found(tangents, [](T of) { return of.getWeight(); }));
    check("weighted", said(t.weighted), found(tangents, [](T of) { return of.isWeighted(); }));
    check("weight lock", said(t.weightLocked), found(tangents, [](T of) { return of.isWeightLocked(); }));
    return difference;
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
    EXPECT_EQ(untruth(examiner, *container), "");
    {
        FCurve::Switch silent;
        keyOf(*curve, 0).setY(9.0);
        curve->removeSegment(std::next(curve->begin(), 2));
        container->addCurve(makeCurve("b", 1, straight()));
        examiner.getKeyframes();
    }
    examiner.invalidate();
    EXPECT_EQ(untruth(examiner, *container), "");
    {
        FCurve::Switch silent(*curve);
        for (const bool select : {false, true}) {
            select ? selection.select(keyOf(*curve, 0)) : selection.deselect(keyOf(*curve, 0));
            EXPECT_EQ(untruth(examiner, *container), "") << "the selection tells of this";
        }
        curve->removeSegment(std::next(curve->begin(), 2));
        examiner.getKeyframes();
    }
    curve->notifyChanged();
    EXPECT_EQ(untruth(examiner, *container), "");
}

TEST(SelectionExaminer, OutlivesAndIsOutlived) {
    auto curve = makeCurve("a", 3, bent());
    auto container = makeContainer({curve});
    auto selection = std::make_unique<Selection>(container);
    auto examiner = std::make_unique<SelectionExaminer>(*selection);
    SelectCurveCompletely(*selection, *curve);
    selection.reset();
    EXPECT_EQ(untruth(*examiner, *container), "");
    curve.reset();
    const std::weak_ptr<FCurveContainer> watched = container;
    container.reset();
    EXPECT_TRUE(watched.expired());
    examiner->invalidate();
    EXPECT_EQ(examiner->getKeyframes().count + examiner->getCurves().count, 0U);

    container = makeContainer({makeCurve("b", 1, bent())});
    selection = std::make_unique<Selection>(container);
    examiner = std::make_unique<SelectionExaminer>(*selection);
    EXPECT_EQ(untruth(*examiner, *container), "");
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
            ASSERT_EQ(untruth(*m_examiner, *m_container), "") << "after step " << i << ":" << m_last;
        }
    }

private:
    int below(int n) { return m_random.below(n); }
    bool coin() { return m_random.coin(); }
    // Of few values, so that parts often agree.
    double value() { return below(3); }
    std::shared_ptr<Interpolator> anyKind() {
        const std::shared_ptr<Interpolator> kinds[] = {nullptr, straight(), bent(), bent()};
        return m_random.oneOf(kinds);
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
    FCurve& pick() { return m_container->empty() || below(8) == 0 ? *m_spare : m_random.oneOf(*m_container); }
    void oneOf(const std::vector<Edit>& edits) { m_last += std::string(" ") + m_random.act(edits); }

    template<class Part>
    void select(Part& part) {
        oneOf({{"select", [&] { m_selection->select(part); }},
               {"select by another", [&] { Selection(m_container).select(part); }},
               {"deselect", [&] { m_selection->deselect(part); }},
               {"property", [&] { part.setProperty("fc_sel", coin() ? "1" : "0"); }},
               {"clear", [&] { part.clearProperties(); }}});
    }

    void editTangent(Tangent& tangent) {
        oneOf({{"type", [&] { tangent.setType(static_cast<std::uint8_t>(below(7))); }},
               {"weighted", [&] { tangent.setWeighted(coin()); }},
               {"lock", [&] { tangent.setWeightLocked(coin()); }},
               {"handle", [&] { tangent.set(value(), value()); }},
               {"tangent's", [&] { select(tangent); }},
               {"tangent's", [&] { select(tangent); }}});
    }

    void editKey(Keyframe& key) {
        oneOf({{"move", [&] { key.set(key.getX() + value() - 1.0, value()); }},
               {"breakdown", [&] { key.setBreakdown(coin()); }},
               {"unify", [&] { key.setTangentsUnified(coin()); }},
               {"lock", [&] { SetLocked(key, coin()); }},
               {"key's", [&] { select(key); }},
               {"key's", [&] { select(key); }}});
    }

    void insertSegment(FCurve& curve) {
        Keyframe key;
        key.set(value() * 3.5 + value(), value());
        if (coin()) key.setProperty("fc_sel", "1");
        curve.insertSegment(key, anyKind());
    }
    void setFlags(FCurve& curve) {
        curve.setName(coin() ? "a" : "b");
        for (const auto set :
             {&SetVisible, &SetEditable, &SetVelocityVisible, &SetAccelerationVisible, &SetDiscontinuityVisible})
            set(curve, coin());
        SetLocked(curve, coin());
    }
    void editSilently(FCurve& curve, const FCurve::iterator& segment) {
        {
            FCurve::Switch silent(curve);
            curve.removeSegment(segment);
            select(curve);
        }
        FCurve::setChangeType(static_cast<FCurve::ChangeType>(below(4)));
        curve.notifyChanged();
        FCurve::setChangeType(FCurve::OrdinaryChange);
    }
    void editCurve(FCurve& curve) {
        const auto segment = m_random.placeIn(curve);
        oneOf({{"remove segment", [&] { curve.removeSegment(segment); }},
               {"insert segment", [&] { insertSegment(curve); }},
               {"insert segment", [&] { insertSegment(curve); }},
               {"interpolator", [&] { segment->setInterpolator(anyKind()); }},
               {"segment's", [&] { select(*segment); }},
               {"curve's", [&] { select(curve); }},
               {"flags", [&] { setFlags(curve); }},
               {"assign", [&] { curve = *anyCurve(); }},
               {"swap", [&] { curve.swap(pick()); }},
               {"clear", [&] { below(4) == 0 ? curve.clear() : setFlags(curve); }},
               {"silently", [&] { editSilently(curve, segment); }},
               {"select completely", [&] { SelectCurveCompletely(*m_selection, curve); }},
               {"deselect completely", [&] { DeselectCurveCompletely(*m_selection, curve); }}});
    }

    void addSpare() {
        m_container->addCurve(m_spare);
        if (coin()) m_spare = anyCurve();
    }
    void removeCurve() {
        if (!m_container->empty()) m_container->removeCurve(m_random.placeIn(*m_container));
    }
    void silenceEverything() {
        {
            FCurve::Switch silent;
            editCurve(pick());
            editContainer();
        }
        m_examiner->invalidate();
    }
    void editContainer() {
        oneOf({{"add curve", [&] { m_container->insertCurve(m_container->begin(), anyCurve()); }},
               {"add the spare curve", [&] { addSpare(); }},
               {"remove curve", [&] { removeCurve(); }},
               {"remove curve", [&] { removeCurve(); }},
               {"clear container", [&] { below(4) == 0 ? m_container->clear() : removeCurve(); }},
               {"clear selection", [&] { m_selection->clear(); }},
               {"deselect parts", [&] { DeselectSelectedParts(*m_selection); }},
               {"another selection", [&] { m_selection = std::make_unique<Selection>(m_container); }},
               {"silence", [&] { silenceEverything(); }}});
    }

    void edit() {
        FCurve& curve = pick();
        const auto keep = curve.getShared();
        Segment& segment = *m_random.placeIn(curve);
        const auto key = segment.getRightKey();
        m_last.clear();
        switch (below(5)) {
        case 0:
            return editTangent(coin() ? *segment.getInTangent() : *segment.getOutTangent());
        case 1:
            return key ? editKey(*key) : editCurve(curve);
        case 2:
            return below(3) == 0 ? editContainer() : editCurve(curve);
        default:
            return editCurve(curve);
        }
    }

    Random m_random;
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
