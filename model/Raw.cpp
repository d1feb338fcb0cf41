#include "model/Raw.h"

#include "model/PartBundle.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

std::shared_ptr<CurveLink> Raw::identity(FCurve& c) {
    if (!c.m_identity) {
        c.m_identity = std::make_shared<CurveLink>();
        c.m_identity->curve = &c;
    }
    return c.m_identity;
}

void Raw::moveKey(Keyframe& k, const Vector2D<double>& position) noexcept {
    if (position.x != k.m_position.x) Read::curve(k)->m_segments.rekey(k.m_position.x, position.x);
    k.m_position = position;
}

namespace {

// A segment's tangents live together.
struct TangentPair {
    explicit TangentPair(const std::shared_ptr<Segment>& owner) : out(owner, false), in(owner, true) {}
    Tangent out;
    Tangent in;
};

} // namespace

std::shared_ptr<Segment> Raw::makeSegment(FCurve& c, const Keyframe* key, std::shared_ptr<Interpolator> interpolator) {
    PartBundle::Maker bundle((key ? PartBundle::roomFor<Keyframe>() : 0) + PartBundle::roomFor<Segment>()
                             + PartBundle::roomFor<TangentPair>());
    std::shared_ptr<Keyframe> own;
    if (key) {
        own = bundle.make<Keyframe>(*key);
        own->setShared(own);
    }
    auto segment = bundle.make<Segment>();
    segment->setShared(segment);
    segment->m_curve = c.m_link;
    segment->m_leftKey = std::move(own);
    segment->m_interpolator = std::move(interpolator);

    const auto pair = bundle.make<TangentPair>(segment);
    segment->m_outTangent = std::shared_ptr<Tangent>(pair, &pair->out);
    segment->m_inTangent = std::shared_ptr<Tangent>(pair, &pair->in);
    segment->m_outTangent->setShared(segment->m_outTangent);
    segment->m_inTangent->setShared(segment->m_inTangent);
    return segment;
}

Segment* Raw::appendKey(FCurve& c, const Keyframe& key, std::shared_ptr<Interpolator> interpolator) {
    const SegmentMap::Place place = c.m_segments.locate(key.getX());
    Segment& before = *place.segment;
    if (place.isAt || before.m_rightKey) return nullptr;
    const auto segment = makeSegment(c, &key, std::move(interpolator));
    const std::shared_ptr<Keyframe>& own = segment->m_leftKey;
    c.m_segments.insert(place, own->getX(), segment.get());
    before.m_rightKey = own;
    own->m_left = &before;
    own->m_right = segment;
    return segment.get();
}

void Raw::exchangeInTangents(Segment& a, Segment& b) noexcept {
    a.m_inTangent.swap(b.m_inTangent);
    a.m_inTangent->m_segment.swap(b.m_inTangent->m_segment);
}

void Raw::detach(Segment& s) noexcept {
    s.m_curve.reset();
    s.m_rightKey.reset();
}

void Raw::release(std::shared_ptr<Segment> leading) noexcept {
    for (std::shared_ptr<Segment> segment = std::move(leading); segment;) {
        const std::shared_ptr<Keyframe> key = segment->m_rightKey;
        std::shared_ptr<Segment> next;
        if (key) {
            next = std::move(key->m_right);
            key->m_left = nullptr;
        }
        detach(*segment);
        segment = std::move(next);
    }
}

void Raw::copyTangent(Tangent& to, const Tangent& from) {
    to.m_properties = from.m_properties;
    to.m_handle = from.m_handle;
    to.m_type = from.m_type;
    to.m_weighted = from.m_weighted;
    to.m_weightLocked = from.m_weightLocked;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
