#pragma once

// An observer that writes down what it hears, as short strings: "key 1 moved", "tangent 1.out", "curve".

#include "FCurveLib/FCurveLib.h"

#include <iterator>
#include <string>
#include <vector>

namespace Test {

using namespace VEM_FN::FCurveLib;

/// Number of a key in its curve, -1 for a key in none.
inline int NumberOf(const Keyframe& key) {
    const auto curve = key.getOwningCurve();
    if (!curve) return -1;
    int number = -1;
    for (const Segment& segment : *curve) {
        if (segment.getLeftKey().get() == &key) return number;
        ++number;
    }
    return -1;
}

inline std::string NameOf(const Keyframe& key) {
    return std::to_string(NumberOf(key));
}

inline std::string NameOf(const Tangent& tangent) {
    const auto key = tangent.getOwningKeyframe();
    return (key ? NameOf(*key) : std::string("?")) + (tangent.isInTangent() ? ".in" : ".out");
}

/// A segment goes by the number of the key at which it starts; the leading one is -1.
inline std::string NameOf(const Segment& segment) {
    const auto key = segment.getLeftKey();
    return key ? NameOf(*key) : "-1";
}

class Recorder : public FCurveObserver {
public:
    std::vector<std::string> heard;

    std::vector<std::string> take() {
        std::vector<std::string> result;
        result.swap(heard);
        return result;
    }

    void curveChanged(FCurve&) override { heard.push_back("curve"); }
    void beginValueChange(FCurve&) override { heard.push_back("begin"); }
    void intermediateValueChange(FCurve&) override { heard.push_back("step"); }
    void endValueChange(FCurve&) override { heard.push_back("end"); }

    void tangentIntrinsicChanged(Tangent& tangent, TangentIntrinsicType type) override {
        static const char* const kWhat[] = {"", " type", " weighted", " lock"};
        heard.push_back("tangent " + NameOf(tangent) + kWhat[type]);
    }
    void tangentPropertyChanged(Tangent& tangent, const char* key, const char* value) override {
        heard.push_back("tangent " + NameOf(tangent) + " " + key + "=" + value);
    }
    void keyframeIntrinsicChanged(Keyframe& key, KeyframeIntrinsicType type) override {
        static const char* const kWhat[] = {" moved", " unified", " breakdown"};
        heard.push_back("key " + NameOf(key) + kWhat[type]);
    }
    void keyframePropertyChanged(Keyframe& keyframe, const char* key, const char* value) override {
        heard.push_back("key " + NameOf(keyframe) + " " + key + "=" + value);
    }
    void segmentIntrinsicChanged(Segment& segment, SegmentIntrinsicType) override {
        heard.push_back("segment " + NameOf(segment) + " interpolator");
    }
    void segmentPropertyChanged(Segment& segment, const char* key, const char* value) override {
        heard.push_back("segment " + NameOf(segment) + " " + key + "=" + value);
    }
    void segmentAdded(FCurve&, Segment& segment) override { heard.push_back("added " + NameOf(segment)); }
    void segmentRemoved(FCurve&, Segment&) override { heard.push_back("removed"); }
    void curveIntrinsicChanged(FCurve&, CurveIntrinsicType) override { heard.push_back("name"); }
    void curvePropertyChanged(FCurve&, const char* key, const char* value) override {
        heard.push_back(std::string("curve ") + key + "=" + value);
    }
};

/// The key at (x, y), inserted.
inline std::shared_ptr<Keyframe> AddKey(FCurve& curve, double x, double y,
                                        std::shared_ptr<Interpolator> interpolator = Linear::create()) {
    return curve.insertSegment(*Keyframe::create(x, y), std::move(interpolator))->getLeftKey();
}

/// A curve through the given points, with one kind of interpolator throughout.
inline std::shared_ptr<FCurve> CurveThrough(const std::vector<Vector2D<double>>& points,
                                            std::shared_ptr<Interpolator> interpolator = Linear::create()) {
    auto curve = FCurve::create();
    for (const auto& point : points) AddKey(*curve, point.x, point.y, interpolator);
    return curve;
}

/// The places of the curve's keys, and their abscissae.
inline std::vector<Vector2D<double>> PointsOf(const FCurve& curve) {
    std::vector<Vector2D<double>> points;
    for (const Segment& segment : curve)
        if (const auto key = segment.getRightKey()) points.push_back(key->get());
    return points;
}
inline std::vector<double> KeysOf(const FCurve& curve) {
    std::vector<double> xs;
    for (const auto& point : PointsOf(curve)) xs.push_back(point.x);
    return xs;
}

/// Key number i of the curve.
inline std::shared_ptr<Keyframe> KeyAt(FCurve& curve, int i) {
    return std::next(curve.begin(), i)->getRightKey();
}

} // namespace Test
