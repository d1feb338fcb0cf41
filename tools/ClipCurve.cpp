#include "tools/ClipCurve.h"

#include "FCurveLib/Bezier.h"
#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Keys.h"
#include "FCurveLib/Tolerance.h"
#include "FCurveLib/Transform.h"
#include "interp/BezierMath.h"
#include "interp/Kinds.h"
#include "model/Raw.h"
#include "model/TangentRules.h"
#include "tools/BezierCut.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

constexpr const char* kSelectionKey = "fc_sel";

void CopyProperties(const Segment& from, Segment& to) {
    for (auto property = from.beginProperties(); property != from.endProperties(); ++property)
        if (property->first != kSelectionKey) to.setProperty(property->first.c_str(), property->second.c_str());
}

// --- copying ---------------------------------------------------------------------------------------------------------

// Whether the segment's shape depends on more than its own keys and tangents.
bool ReadsOthers(const Segment& segment) noexcept {
    return (ReadsOf(Read::interpolator(segment), segment) & (kReadsNextKeys | kReadsNeighbours)) != 0;
}

// Whether the Bezier segment of this shape passes through the segment's keys: a match need not.
bool MeetsItsKeys(const Segment& segment, const BezierArgs& args) noexcept {
    const double rounding = 1e-14 * std::max(std::abs(args.y0), std::abs(args.y3));
    return std::abs(args.y0 - Read::leftKey(segment)->getY()) <= rounding
           && std::abs(args.y3 - Read::rightKey(segment)->getY()) <= rounding;
}

void TurnIntoBezier(Segment& segment, const BezierArgs& args) {
    Raw::setInterpolator(segment, Bezier::create());
    const double span = args.x3 - args.x0;
    for (Tangent* tangent : {Read::outTangent(segment), Read::inTangent(segment)})
        Raw::setType(*tangent, Tangent::Fixed);
    SetCutHandle(*Read::outTangent(segment), {args.outX, args.outY}, span);
    SetCutHandle(*Read::inTangent(segment), {args.inX, args.inY}, span);
}

void CopyTangent(const Tangent& from, Tangent& to) {
    Raw::copyTangent(to, from);
    to.setProperty(kSelectionKey, "");
}

// What runs on from a key that had no next one.
std::shared_ptr<Interpolator> KindBefore(const Keyframe& last) {
    const Segment& before = *Read::leftSegment(last);
    return Read::hasBothKeys(before) ? before.getInterpolator() : Bezier::create();
}

} // namespace

std::shared_ptr<FCurve> CopyKeysOf(const FCurve& curve, const std::vector<Keyframe*>& keys) {
    auto clip = FCurve::create();
    const FCurve::Switch quiet(*clip);
    clip->setName(curve.getName());
    const auto areNeighbours = [&](std::size_t i) {
        return i + 1 < keys.size() && Read::nextKey(*keys[i]) == keys[i + 1];
    };
    std::vector<Keyframe*> copies;
    for (const Keyframe* key : keys) {
        const Segment& from = *Read::rightSegment(*key);
        Segment* const to =
            Raw::appendKey(*clip, *key, Read::rightKey(from) ? from.getInterpolator() : KindBefore(*key));
        CopyProperties(from, *to);
        copies.push_back(Read::leftKey(*to));
        copies.back()->setProperty(kSelectionKey, "");
    }
    const auto copyTangents = [&](std::size_t i) {
        CopyTangent(*Read::inTangent(*Read::leftSegment(*keys[i])), *Read::inTangent(*Read::leftSegment(*copies[i])));
        CopyTangent(*Read::outTangent(*Read::rightSegment(*keys[i])),
                    *Read::outTangent(*Read::rightSegment(*copies[i])));
    };
    for (std::size_t i = 0; i < keys.size(); ++i) copyTangents(i);
    // Where keys were left out the handles meet another span. After that the others once more, to the bit.
    bool hasGaps = false;
    for (std::size_t i = 0; i + 1 < keys.size(); ++i) {
        if (areNeighbours(i)) continue;
        hasGaps = true;
        Segment& gap = *Read::rightSegment(*copies[i]);
        for (Tangent* tangent : {Read::outTangent(gap), Read::inTangent(gap)}) tangent->set(tangent->get());
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (!areNeighbours(i)) continue;
        const Segment& from = *Read::rightSegment(*keys[i]);
        Segment& to = *Read::rightSegment(*copies[i]);
        if (hasGaps) {
            CopyTangent(*Read::outTangent(from), *Read::outTangent(to));
            CopyTangent(*Read::inTangent(from), *Read::inTangent(to));
        }
        const bool isAtEnd = i == 0 || !areNeighbours(i - 1) || !areNeighbours(i + 1);
        if (!isAtEnd || !KindOf(from).isBezier() || !ReadsOthers(from)) continue;
        const BezierArgs args = BezierArgsOf(from);
        if (MeetsItsKeys(from, args)) TurnIntoBezier(to, args);
    }
    return clip;
}

std::shared_ptr<FCurve> ShiftedCurve(const FCurve& clip, double frames, std::vector<std::string>& kept) {
    auto copy = FCurve::createCopy(clip);
    if (frames == 0.0) return copy;
    const FCurve::Switch quiet(*copy);
    TransformResult result = TransformCurve(*copy, {1.0, 1.0}, {frames, 0.0});
    if (!result.transformed) return nullptr;
    for (std::string& expression : result.kept)
        if (std::find(kept.begin(), kept.end(), expression) == kept.end()) kept.push_back(std::move(expression));
    return copy;
}

// --- pasting ---------------------------------------------------------------------------------------------------------

namespace {

constexpr double kSeparation = Keyframe::getMinSeparation();

const Vector2D<double>* PositionOf(const Keyframe* key) noexcept {
    return key ? &key->get() : nullptr;
}

// The clip's tangent becomes one that keeps its handle also when the model computes it anew, in the curve's place.
void Steady(Tangent& tangent, const Segment& place, Keyframe& own) {
    TangentSite site;
    site.left = PositionOf(Read::leftKey(place));
    site.right = PositionOf(Read::rightKey(place));
    site.own = PositionOf(&own);
    site.before = PositionOf(Read::previousKey(own));
    site.after = PositionOf(Read::nextKey(own));
    site.handle = tangent.get();
    site.type = tangent.getType();
    site.isIn = tangent.isInTangent();
    site.weighted = tangent.isWeighted();
    site.weightLocked = tangent.isWeightLocked();
    const auto keepsHandle = [&] {
        const Vector2D<double> handle = AutomaticHandle(site);
        return NearEqual(handle.x, site.handle.x) && NearEqual(handle.y, site.handle.y);
    };
    if (site.type == Tangent::Fixed || keepsHandle()) return;
    site.type = Tangent::Fixed;
    Raw::setType(tangent, Tangent::Fixed);
    if (!keepsHandle()) Raw::setWeighted(tangent, true);
}

class Pasting {
public:
    Pasting(FCurve& curve, FCurve& clip) : m_curve(curve), m_clip(clip), m_outside((--curve.end())->getInterpolator()) {
        if (const Keyframe* last = lastKey()) {
            m_last = const_cast<Keyframe*>(last)->getShared();
            m_between = KindBefore(*last);
        }
    }

    CurvePaste run(bool replaces) {
        makeRoom(replaces);
        for (const KeyView key : Keys(m_clip)) {
            const auto place = m_curve.insertSegment(key.getKeyframe(), key.getRightSegment().getInterpolator());
            m_result.keys.push_back(place == m_curve.end() ? nullptr : place->getLeftKey());
        }
        keepEnd();
        shape();
        const auto isGone = [&](const std::shared_ptr<Keyframe>& key) { return !isHere(key); };
        m_result.keys.erase(std::remove_if(m_result.keys.begin(), m_result.keys.end(), isGone), m_result.keys.end());
        return std::move(m_result);
    }

private:
    const Keyframe* lastKey() const { return Read::leftKey(Read::lastSegment(m_curve)); }
    bool isHere(const std::shared_ptr<Keyframe>& key) const { return key && Read::curve(*key) == &m_curve; }

    void remove(Keyframe& key) {
        m_curve.removeSegment(Read::iteratorAt(m_curve, *Read::rightSegment(key)));
        ++m_result.removed;
    }
    void makeRoom(bool replaces) {
        const auto keys = Keys(m_clip);
        if (replaces) {
            const double end = keys.back().getX() + kSeparation;
            Segment* at = &Read::findSegment(m_curve, keys.front().getX() - kSeparation);
            Keyframe* key = Read::rightKey(*at);
            while (key && key->getX() < end) {
                remove(*key);
                key = Read::rightKey(Read::findSegment(m_curve, keys.front().getX() - kSeparation));
            }
        }
        for (const KeyView pasted : keys)
            while (const auto key = FindKey(m_curve, pasted.getX(), kSeparation)) {
                if (std::abs(key->getX() - pasted.getX()) >= kSeparation) break;
                remove(*key);
            }
    }

    // What the curve does beyond its last key, it does beyond the new one, and no more beyond the old one.
    void keepEnd() {
        const auto end = (--m_curve.end())->getShared();
        if (Read::leftKey(*end) == m_last.get()) return;
        if (isHere(m_last)) Read::rightSegment(*m_last)->setInterpolator(m_between);
        end->setInterpolator(m_outside);
    }

    // Whether a key of the clip and the next one are neighbours in the curve, too.
    bool areJoined(std::size_t i) const {
        const auto& keys = m_result.keys;
        return i + 1 < keys.size() && isHere(keys[i]) && isHere(keys[i + 1])
               && Read::nextKey(*keys[i]) == keys[i + 1].get();
    }

    // The tangents, which inserting has computed as those of new keys. First all, then those that face foreign keys
    // as their types say, then again those that shape the clip.
    void shape() {
        std::vector<KeyView> models(Keys(m_clip).begin(), Keys(m_clip).end());
        for (std::size_t i = 0; i < models.size(); ++i) {
            if (areJoined(i)) {
                const Segment& place = *Read::rightSegment(*m_result.keys[i]);
                Steady(models[i].getOutTangent(), place, *m_result.keys[i]);
                Steady(models[i + 1].getInTangent(), place, *m_result.keys[i + 1]);
            }
        }
        const auto assign = [&](std::size_t i, bool in) {
            if (!isHere(m_result.keys[i])) return;
            const auto tangent = in ? m_result.keys[i]->getInTangent() : m_result.keys[i]->getOutTangent();
            const Tangent& model = in ? models[i].getInTangent() : models[i].getOutTangent();
            *tangent = model;
        };
        for (std::size_t i = 0; i < models.size(); ++i) {
            if (isHere(m_result.keys[i])) {
                const auto segment = m_result.keys[i]->getRightSegment();
                CopyProperties(models[i].getRightSegment(), *segment);
            }
            assign(i, true);
            assign(i, false);
        }
        const auto follow = [&](std::size_t i, bool in, bool isJoinedBeyond) {
            const auto key = m_result.keys[i];
            if (!isHere(key)) return;
            const auto tangent = in ? key->getInTangent() : key->getOutTangent();
            const auto opposite = in ? key->getOutTangent() : key->getInTangent();
            tangent->set(tangent->get());
            // On one line with a handle that shapes the clip, it must not turn that.
            if (isJoinedBeyond && key->isTangentsUnified() && opposite->getType() == Tangent::Fixed)
                tangent->setType(Tangent::Fixed);
        };
        for (std::size_t i = 0; i < models.size(); ++i) {
            const bool before = i > 0 && areJoined(i - 1), after = areJoined(i);
            if (!before) follow(i, true, after);
            if (!after) follow(i, false, before);
        }
        for (std::size_t i = 0; i < models.size(); ++i) {
            if (!areJoined(i)) continue;
            const auto out = m_result.keys[i]->getOutTangent();
            const auto in = m_result.keys[i + 1]->getInTangent();
            if (out->get() != models[i].getOutTangent().get()) *out = models[i].getOutTangent();
            if (in->get() != models[i + 1].getInTangent().get()) *in = models[i + 1].getInTangent();
        }
    }

    FCurve& m_curve;
    FCurve& m_clip;
    std::shared_ptr<Interpolator> m_outside; // after the last key
    std::shared_ptr<Keyframe> m_last;
    std::shared_ptr<Interpolator> m_between; // after that key, if it gets another one behind it
    CurvePaste m_result;
};

} // namespace

CurvePaste PasteInto(FCurve& curve, FCurve& clip, bool replaces) {
    const auto keep = curve.getShared();
    return Pasting(curve, clip).run(replaces);
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
