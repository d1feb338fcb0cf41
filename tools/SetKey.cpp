#include "FCurveLib/SetKey.h"

#include "FCurveLib/Bezier.h"
#include "FCurveLib/Constant.h"
#include "FCurveLib/InsertBezierKeyframe.h"
#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Keys.h"
#include "interp/Kinds.h"
#include "model/Read.h"
#include "tools/Resample.h"
#include "tools/Surroundings.h"

#include <cmath>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::KindOf;
using Private::Read;

EditSettings EditSettings::ofType(std::uint8_t type) {
    EditSettings settings;
    settings.keepShape = false;
    settings.inType = settings.outType = type;
    settings.interpolator = Bezier::create();
    return settings;
}

EditSettings EditSettings::stepped() {
    EditSettings settings = ofType(Tangent::Flat);
    settings.interpolator = Constant::create();
    return settings;
}

namespace {

constexpr int kReach = 3; // segments on either side of a new key that it can change

// Up to so many segments on each side of a key, from left to right.
std::vector<Segment*> SegmentsAround(Keyframe& key) {
    std::vector<Segment*> segments;
    Keyframe* at = &key;
    for (int i = 0; i < kReach && at; ++i, at = Read::leftKey(*segments.back()))
        segments.push_back(Read::leftSegment(*at));
    at = &key;
    for (int i = 0; i < kReach && at; ++i, at = Read::rightKey(*segments.back()))
        segments.push_back(Read::rightSegment(*at));
    return segments;
}

bool ReadsWholeCurve(const Segment& segment) noexcept {
    return (Private::ReadsOf(Read::interpolator(segment), segment) & Private::kReadsCurve) != 0;
}

// A copy of the curve around the segment, on which a key may be inserted as if it were the curve.
std::shared_ptr<FCurve> CopyToTry(const FCurve& curve, const Segment& segment) {
    auto copy = Private::CopyAround(segment);
    const Segment* at = &segment;
    for (int i = 0; i < kReach && Read::leftKey(*at); ++i) at = Read::leftSegment(*Read::leftKey(*at));
    bool isLocal = true;
    for (int i = 0; i <= 2 * kReach && isLocal; ++i) {
        isLocal = !ReadsWholeCurve(*at);
        if (!Read::rightKey(*at)) break;
        at = Read::rightSegment(*Read::rightKey(*at));
    }
    return isLocal ? copy : FCurve::createCopy(curve);
}

void SetTypes(Keyframe& key, const EditSettings& settings) {
    Tangent& in = *Read::inTangent(*Read::leftSegment(key));
    Tangent& out = *Read::outTangent(*Read::rightSegment(key));
    in.setType(settings.inType);
    out.setType(settings.outType);
}

// --- between two keys ------------------------------------------------------------------------------------------------

// Automatic tangents that an insertion made fixed follow the new key again.
class AutomaticTangents {
public:
    explicit AutomaticTangents(FCurve& curve) {
        for (Segment& segment : curve)
            for (Tangent* tangent : {Read::outTangent(segment), Read::inTangent(segment)})
                if (tangent->getType() != Tangent::Fixed)
                    m_kept.push_back({tangent, tangent->getType(), tangent->isWeighted()});
    }
    void restore() const {
        for (const Kept& kept : m_kept) {
            if (kept.tangent->getType() == kept.type) continue;
            kept.tangent->setType(kept.type);
            kept.tangent->setWeighted(kept.weighted);
        }
    }

private:
    struct Kept {
        Tangent* tangent;
        std::uint8_t type;
        bool weighted;
    };
    std::vector<Kept> m_kept;
};

// The key that the copy gets, with everything around it as it is to be in the curve.
Keyframe& TryInsertion(FCurve& copy, double x, double y, const EditSettings& settings) {
    const AutomaticTangents automatic(copy);
    FCurve::iterator added = InsertBezierKeyframe(copy, x);
    if (added == copy.end()) // between keys or handles near the end of the doubles
        added = copy.insertSegment(Private::FreeKey(x, y), copy.findSegment(x)->getInterpolator());
    Segment& segment = *added;
    Keyframe& key = *Read::leftKey(segment);
    if (settings.interpolator) segment.setInterpolator(settings.interpolator);
    if (settings.keepShape) {
        key.setTangentsUnified(settings.unified && key.isTangentsUnified());
    } else {
        key.setTangentsUnified(settings.unified && KindOf(segment).isBezier());
        SetTypes(key, settings);
        automatic.restore();
    }
    key.setY(y);
    return key;
}

// Everything in which a tangent can differ, to the last bit.
bool AreSame(const Tangent& a, const Tangent& b) noexcept {
    const auto isSame = [](double x, double y) { return x == y && std::signbit(x) == std::signbit(y); };
    return isSame(a.getX(), b.getX()) && isSame(a.getY(), b.getY()) && a.getType() == b.getType()
           && a.isWeighted() == b.isWeighted() && a.isWeightLocked() == b.isWeightLocked();
}

struct Replayed {
    std::shared_ptr<Segment> segment;
    std::shared_ptr<Tangent> in, out;
    const Segment* model;
};

std::shared_ptr<Keyframe> AddBetween(FCurve& curve, Segment& cut, double x, double y, const EditSettings& settings) {
    const auto copy = CopyToTry(curve, cut);
    const FCurve::Switch quiet(*copy);
    Keyframe& model = TryInsertion(*copy, x, y, settings);

    const auto added = curve.insertSegment(model, Read::rightSegment(model)->getInterpolator());
    if (added == curve.end()) return nullptr;
    std::shared_ptr<Keyframe> key = added->getLeftKey();
    const auto models = SegmentsAround(model);
    const auto segments = SegmentsAround(*key);
    std::vector<Replayed> replayed; // held: observers may take any of it out
    for (std::size_t i = 0; i < segments.size() && i < models.size(); ++i)
        replayed.push_back(
            {segments[i]->getShared(), segments[i]->getInTangent(), segments[i]->getOutTangent(), models[i]});
    for (const Replayed& part : replayed) {
        part.segment->setInterpolator(part.model->getInterpolator());
        if (!AreSame(*part.in, *Read::inTangent(*part.model))) *part.in = *Read::inTangent(*part.model);
        if (!AreSame(*part.out, *Read::outTangent(*part.model))) *part.out = *Read::outTangent(*part.model);
    }
    return key;
}

// --- beyond the keys -------------------------------------------------------------------------------------------------

// What runs between the last key and one that is added after it, or between one that is added before the first key and
// that one.
std::shared_ptr<Interpolator> BetweenAtEnd(const Segment& end, const EditSettings& settings) {
    if (settings.interpolator) return settings.interpolator;
    const Keyframe* const key = Read::leftKey(end) ? Read::leftKey(end) : Read::rightKey(end);
    const Segment* const inner = Read::leftKey(end) ? Read::leftSegment(*key) : Read::rightSegment(*key);
    return Read::hasBothKeys(*inner) ? inner->getInterpolator() : Bezier::create();
}

std::shared_ptr<Keyframe> AddBeyond(FCurve& curve, Segment& end, double x, double y, const EditSettings& settings) {
    const auto outside = end.getInterpolator();
    const bool hasKeys = Read::leftKey(end) || Read::rightKey(end);
    const bool isAfter = Read::leftKey(end) != nullptr;
    const auto between = hasKeys ? BetweenAtEnd(end, settings) : outside;
    Keyframe free = Private::FreeKey(x, y);
    free.setTangentsUnified(settings.unified && (!hasKeys || KindOf(between.get()).isBezier()));

    const auto before = end.getShared();
    const auto added = curve.insertSegment(free, isAfter ? outside : between);
    if (added == curve.end()) return nullptr;
    std::shared_ptr<Keyframe> key = added->getLeftKey();
    if (isAfter) before->setInterpolator(between);
    if (Read::leftSegment(*key)) SetTypes(*key, settings);
    return key;
}

} // namespace

KeySetting SetKey(FCurve& curve, double x, double y, const EditSettings& settings) {
    if (!std::isfinite(x) || !std::isfinite(y)) return {};
    const auto keep = curve.getShared();
    if (const auto key = FindKey(curve, x); key && std::abs(key->getX() - x) < Keyframe::getMinSeparation()) {
        if (key->getY() == y) return {KeySetting::Unchanged, key};
        key->setY(y);
        return {KeySetting::Moved, key};
    }
    Segment& segment = Read::findSegment(curve, x);
    const auto key = Read::hasBothKeys(segment) ? AddBetween(curve, segment, x, y, settings)
                                                : AddBeyond(curve, segment, x, y, settings);
    return {KeySetting::Added, key};
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
