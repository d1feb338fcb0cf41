#pragma once

#include "FCurveLib/FCurveLib.h"

#include <array>
#include <initializer_list>
#include <map>
#include <string>

namespace Test {

using namespace VEM_FN::FCurveLib;

/// Keys, handles and selected parts as the calls to a curve observer tell them.
class Echo : public FCurveObserver {
public:
    void watch(FCurve& curve) {
        curve.subscribe(*this);
        sync(curve);
    }
    void sync(FCurve& curve) { m_parts[&curve] = partsOf(curve); }
    std::string differenceTo(FCurve& curve) const {
        return m_parts.at(&curve) == partsOf(curve) ? "" : "changed unheard";
    }

    void curveChanged(FCurve& curve) override { sync(curve); }
    void segmentAdded(FCurve& curve, Segment& segment) override { see(m_parts[&curve], segment); }
    void segmentRemoved(FCurve& curve, Segment& segment) override {
        auto& parts = m_parts[&curve];
        const auto key = segment.getLeftKey();
        for (const void* part : std::initializer_list<const void*>{&segment, key.get(), segment.getInTangent().get(),
                                                                   segment.getOutTangent().get()})
            parts.erase(part);
    }
    void keyframeChanged(Keyframe& key) override { see(m_parts[key.getOwningCurve().get()], key); }
    void tangentChanged(Tangent& tangent) override { see(m_parts[tangent.getOwningCurve().get()], tangent); }
    void segmentChanged(Segment& segment) override { m_parts[segment.getOwningCurve().get()][&segment] = of(segment); }
    void curvePropertyChanged(FCurve&, const char*, const char*) override {}
    void curveIntrinsicChanged(FCurve&, CurveIntrinsicType) override {}

private:
    using Parts = std::map<const void*, std::array<double, 4>>;

    static double sel(const char* value) { return *value == '1' ? 1.0 : 0.0; }
    static std::array<double, 4> of(const Segment& segment) {
        const auto interpolator = segment.getInterpolator();
        return {0.0, interpolator ? static_cast<double>(*interpolator->getExpression()) : 0.0,
                sel(segment.getProperty("fc_sel")), 0.0};
    }
    static void see(Parts& parts, const Keyframe& key) {
        parts[&key] = {key.getX(), key.getY(), sel(key.getProperty("fc_sel")),
                       (key.isBreakdown() ? 1.0 : 0.0) + (key.isTangentsUnified() ? 2.0 : 0.0)};
    }
    static void see(Parts& parts, const Tangent& tangent) {
        parts[&tangent] = {tangent.getX(), tangent.getY(), sel(tangent.getProperty("fc_sel")),
                           tangent.getType() + (tangent.isWeighted() ? 0.25 : 0.0)
                               + (tangent.isWeightLocked() ? 0.5 : 0.0)};
    }
    // With the key at its start.
    static void see(Parts& parts, Segment& segment) {
        parts[&segment] = of(segment);
        const auto key = segment.getLeftKey();
        if (!key) return;
        see(parts, *key);
        see(parts, *key->getInTangent());
        see(parts, *key->getOutTangent());
    }
    static Parts partsOf(FCurve& curve) {
        Parts parts;
        for (Segment& segment : curve) see(parts, segment);
        see(parts, *curve.begin()->getOutTangent());
        see(parts, *(--curve.end())->getInTangent());
        return parts;
    }

    std::map<const FCurve*, Parts> m_parts;
};

} // namespace Test
