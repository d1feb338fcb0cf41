#pragma once

// Small curves whose parts have names: "a" is a curve, "a.segment0" its leading segment, "a.key0" its first key,
// "a.in0" and "a.out0" that key's tangents.

#include "support/Basics.h"

#include <set>

namespace Test {

using Names = std::vector<std::string>;

// A kind that uses tangents.
class Bent final : public Interpolator {
public:
    Bent() { setExpression("bent()"); }
    double eval(double, const Segment&) const override { return 0.0; }
    std::shared_ptr<Interpolator> clone() override { return std::make_shared<Bent>(); }
    bool usesTangents() const override { return true; }
};

inline std::shared_ptr<Interpolator> bent() {
    static const auto kind = std::make_shared<Bent>();
    return kind;
}
inline std::shared_ptr<Interpolator> straight() {
    return InterpolatorFactory::create("linear()");
}

inline FCurve::iterator addKey(FCurve& curve, double x, double y, const std::shared_ptr<Interpolator>& interpolator) {
    Keyframe key;
    key.set(x, y);
    return curve.insertSegment(key, interpolator);
}

// Keys at x = 0, 1, 2... with y = x; the leading segment gets the interpolator, too.
inline std::shared_ptr<FCurve> makeCurve(const char* name, int keys,
                                         const std::shared_ptr<Interpolator>& interpolator) {
    auto curve = FCurve::create();
    curve->setName(name);
    curve->begin()->setInterpolator(interpolator);
    for (int i = 0; i < keys; ++i) addKey(*curve, i, i, interpolator);
    return curve;
}

inline std::shared_ptr<FCurveContainer> makeContainer(const std::vector<std::shared_ptr<FCurve>>& curves) {
    auto container = FCurveContainer::create();
    for (const auto& curve : curves) container->addCurve(curve);
    return container;
}

inline Segment& segmentOf(FCurve& curve, int i) {
    return *std::next(curve.begin(), i);
}
inline Keyframe& keyOf(FCurve& curve, int i) {
    return *segmentOf(curve, i).getRightKey();
}

inline std::string nameOf(const ConstHitRecord& record) {
    if (record.getType() == ConstHitRecord::NONE) return "none";
    const std::shared_ptr<const FCurve> curve = record.getCurve();
    if (!curve) return "stray";
    if (record.getType() == ConstHitRecord::CURVE) return curve->getName();
    int i = 0;
    for (const Segment& segment : *curve) {
        const std::string number = std::to_string(i);
        const std::string previous = std::to_string(i - 1);
        if (record.getSegment().get() == &segment) return curve->getName() + (".segment" + number);
        if (record.getKeyframe() && record.getKeyframe() == segment.getRightKey())
            return curve->getName() + (".key" + number);
        if (record.getTangent() && record.getTangent() == segment.getInTangent())
            return curve->getName() + (".in" + number);
        if (record.getTangent() && record.getTangent() == segment.getOutTangent())
            return curve->getName() + (".out" + previous);
        ++i;
    }
    return "lost";
}

template<class Range>
Names namesOf(Range&& range) {
    Names names;
    for (auto it = range.begin(), end = range.end(); it != end; ++it) names.push_back(nameOf(*it));
    return names;
}

template<class Iterator>
Names namesOf(Iterator first, Iterator last) {
    Names names;
    for (; first != last; ++first) names.push_back(nameOf(*first));
    return names;
}

// What an observer hears, as short texts: "+a.key0", "-a.key0", "cleared".
class SelectionRecorder : public SelectionObserver {
public:
    void selected(const HitRecord& part) override { heard.push_back("+" + nameOf(part)); }
    void deselected(const HitRecord& part) override { heard.push_back("-" + nameOf(part)); }
    void selectionCleared() override { heard.push_back("cleared"); }

    Names take() {
        Names taken;
        taken.swap(heard);
        return taken;
    }

    Names heard;
};

} // namespace Test
