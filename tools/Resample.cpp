#include "tools/Resample.h"

#include "FCurveLib/ConstantNext.h"
#include "FCurveLib/Evaluation.h"
#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Linear.h"
#include "FCurveLib/Tolerance.h"
#include "interp/Kinds.h"
#include "tools/BezierCut.h"
#include "tools/HandleKeeper.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

using Points = std::vector<Vector2D<double>>;

// Where an end of the range meets the curve: on a key, or inside a segment that it cuts.
struct Border {
    Keyframe* key = nullptr;
    Segment* cut = nullptr;
    bool exact = false; // the key stands at the sample's x to the last bit
};

Border FindBorder(FCurve& curve, double x, double tolerance) {
    Segment& segment = Read::findSegment(curve, x);
    Keyframe* left = Read::leftKey(segment);
    Keyframe* right = Read::rightKey(segment);
    if (left && x - left->getX() <= tolerance) return {left, nullptr, left->getX() == x};
    if (right && right->getX() - x <= tolerance) return {right, nullptr, false};
    return {nullptr, &segment, false};
}

class Replacement {
public:
    Replacement(FCurve& curve, const Points& samples, Borders borders)
        : m_curve(curve), m_samples(samples), m_borders(borders) {}

    void run() {
        const std::size_t last = m_samples.size() - 1;
        const double tolerance = std::min({GetEpsilon(), 0.25 * (m_samples[1].x - m_samples[0].x),
                                           0.25 * (m_samples[last].x - m_samples[last - 1].x)});
        m_start = FindBorder(m_curve, m_samples.front().x, tolerance);
        m_end = FindBorder(m_curve, m_samples.back().x, tolerance);
        for (const auto& sample : m_samples) m_scale = std::max(m_scale, std::abs(sample.y));

        remember();
        Segment& after = makeEnd();
        Segment& before = *(m_start.key ? Read::rightSegment(*m_start.key) : m_start.cut);
        auto it = Read::iteratorAt(m_curve, before);
        for (++it; &*it != &after;) it = m_curve.removeSegment(it);
        makeStart();
        for (std::size_t i = 1; i < last; ++i) insert(m_samples[i].x, m_samples[i].y, m_linear);
        if (m_borders == Borders::Follow) meet(after);
        restore(after);
    }

private:
    void remember() {
        if (m_start.key) {
            m_handles.keepLeftOf(m_start.key);
            m_endBefore = EvalSegment(m_start.key->getX(), *Read::leftSegment(*m_start.key));
        } else {
            const Segment& cut = *m_start.cut;
            m_leftCut = CutBezierSegment(cut, m_samples.front().x);
            Raw::copyTangent(m_leftIn, *Read::inTangent(cut));
            m_handles.keep(*Read::outTangent(*m_start.cut));
            m_handles.keepLeftOf(Read::leftKey(*m_start.cut));
        }
        if (m_end.key) {
            m_handles.keepRightOf(m_end.key);
        } else {
            const Segment& cut = *m_end.cut;
            m_rightCut = CutBezierSegment(cut, m_samples.back().x);
            m_rightInterpolator = cut.getInterpolator();
            m_rightProperties = Read::properties(*m_end.cut);
            Raw::copyTangent(m_rightOut, *Read::outTangent(cut));
            m_handles.keep(*Read::inTangent(*m_end.cut));
            m_handles.keepRightOf(Read::rightKey(*m_end.cut));
        }
    }

    // The key at the last sample; returns the segment that starts there.
    Segment& makeEnd() {
        const Vector2D<double>& sample = m_samples.back();
        if (m_end.key) {
            if (m_end.exact || m_borders == Borders::Follow) m_end.key->setY(sample.y);
            return *Read::rightSegment(*m_end.key);
        }
        Segment& segment = insert(sample.x, sample.y, m_rightInterpolator);
        Raw::setProperties(segment, m_rightProperties);
        Raw::copyTangent(*Read::outTangent(segment), m_rightOut);
        m_handles.keep(*Read::outTangent(segment));
        return segment;
    }

    // The key at the first sample, and the linear segment that starts there.
    void makeStart() {
        const Vector2D<double>& sample = m_samples.front();
        if (m_start.cut) {
            insert(sample.x, sample.y, m_linear);
            Raw::copyTangent(*Read::inTangent(*m_start.cut), m_leftIn);
            m_handles.keep(*Read::inTangent(*m_start.cut));
            return;
        }
        Keyframe& key = *m_start.key;
        Segment& segment = *Read::rightSegment(key);
        segment.setInterpolator(m_linear);
        Raw::setProperties(segment, {});
        const double rounding = (m_start.exact ? 1e-12 : 1e-6) * m_scale;
        const auto differs = [&](double y) { return std::abs(y - sample.y) > rounding; };
        const Segment& outside = *Read::leftSegment(key);
        const bool reads = (ReadsOf(Read::interpolator(outside), outside) & kReadsRightKey) != 0;
        const bool holds = m_borders == Borders::Keep && reads;
        if (holds && differs(m_endBefore))
            makeJump(segment);
        else if (!holds || differs(key.getY()))
            key.setY(sample.y);
    }

    void makeJump(Segment& segment) {
        Keyframe& key = *Read::leftKey(segment);
        const double next = m_samples[1].x;
        const double x = key.getX() + std::min(Keyframe::getMinSeparation(), 0.5 * (next - key.getX()));
        if (!(x > key.getX() && x < next)) { // so far from frame 0 that no double lies between
            key.setY(m_samples.front().y);
            return;
        }
        segment.setInterpolator(ConstantNext::create());
        insert(x, m_samples.front().y, m_linear);
    }

    // Lets the line end where the curve goes on, if that has a value of its own there.
    void meet(Segment& after) {
        Keyframe& key = *Read::leftKey(after);
        const double y = EvalSegment(key.getX(), after);
        if (std::abs(y - key.getY()) > 1e-12 * m_scale && std::isfinite(y)) key.setY(y);
    }

    void restore(Segment& after) {
        m_handles.restore();
        if (m_leftCut) {
            Segment& before = *m_start.cut;
            SetCutHandle(*Read::outTangent(before), m_leftCut->leftOut, spanOf(before));
            SetCutHandle(*Read::inTangent(before), m_leftCut->leftIn, spanOf(before));
        }
        if (m_rightCut) {
            SetCutHandle(*Read::outTangent(after), m_rightCut->rightOut, spanOf(after));
            SetCutHandle(*Read::inTangent(after), m_rightCut->rightIn, spanOf(after));
        }
    }

    // NaN for a segment that lacks a key: whatever the length of its handle, it needs no weight.
    static double spanOf(const Segment& segment) {
        const Keyframe* left = Read::leftKey(segment);
        const Keyframe* right = Read::rightKey(segment);
        return left && right ? right->getX() - left->getX() : std::numeric_limits<double>::quiet_NaN();
    }

    Segment& insert(double x, double y, const std::shared_ptr<Interpolator>& interpolator) {
        return *m_curve.insertSegment(FreeKey(x, y), interpolator);
    }

    FCurve& m_curve;
    const Points& m_samples;
    const Borders m_borders;
    const std::shared_ptr<Interpolator> m_linear = Linear::create();

    Border m_start, m_end;
    double m_scale = 0.0;     // the largest of the samples' values
    double m_endBefore = 0.0; // the value with which the curve comes to a key at the start
    std::optional<BezierCut> m_leftCut, m_rightCut;
    Tangent m_leftIn, m_rightOut; // what the cut segments' tangents inside the range were
    std::shared_ptr<Interpolator> m_rightInterpolator;
    PropertyMap m_rightProperties;
    HandleKeeper m_handles;
};

} // namespace

Keyframe FreeKey(double x, double y) {
    Keyframe key;
    key.set(x, y);
    return key;
}

void KeepUsableSamples(Points& samples) {
    double reached = -std::numeric_limits<double>::infinity();
    const auto unusable = [&](const Vector2D<double>& sample) {
        if (!std::isfinite(sample.x) || !std::isfinite(sample.y) || !(sample.x > reached)) return true;
        reached = sample.x;
        return false;
    };
    samples.erase(std::remove_if(samples.begin(), samples.end(), unusable), samples.end());
}

bool ReplaceBySamples(FCurve& curve, Points samples, Borders borders) {
    KeepUsableSamples(samples);
    if (samples.size() < 2) return false;
    Replacement(curve, samples, borders).run();
    return true;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
