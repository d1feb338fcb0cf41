#include "FCurveLib/InsertBezierKeyframe.h"

#include "FCurveLib/Bezier.h"
#include "FCurveLib/Constant.h"
#include "FCurveLib/ConstantNext.h"
#include "FCurveLib/Evaluation.h"
#include "FCurveLib/Interpolator.h"
#include "interp/Kinds.h"
#include "model/Raw.h"
#include "model/TangentUpdate.h"
#include "tools/BezierCut.h"
#include "tools/HandleKeeper.h"
#include "tools/QuietEdit.h"
#include "tools/Resample.h"
#include "tools/Surroundings.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::BezierCut;
using Private::KindOf;
using Private::KindRow;
using Private::Raw;
using Private::Read;

namespace {

Private::Reads ReadsOf(const Segment& segment) noexcept {
    return Private::ReadsOf(Read::interpolator(segment), segment);
}

// Whether halves with the same interpolator have the segment's shape, whatever its keys are.
bool IsSelfSimilar(const Segment& segment) noexcept {
    const KindRow& row = KindOf(segment);
    return Read::hasBothKeys(segment) ? row.isStraight() : row.isStraight() && row.beyond == Private::Beyond::Flat;
}
// Whether the shape comes from the keys beside the segment's own.
bool ReadsNextKeys(const Segment& segment) noexcept {
    const KindRow& row = KindOf(segment);
    return Read::hasBothKeys(segment) && row.isBezier() && !row.isHost() && (row.reads & Private::kReadsNextKeys);
}

bool IsFinite(const Vector2D<double>& handle) noexcept {
    return std::isfinite(handle.x) && std::isfinite(handle.y);
}

// Near the end of the doubles a cut may need a handle beyond it: between keys, along handles, or a third of the way to
// the only key beside it.
bool HasFiniteHandlesAt(double x, const Segment& segment) {
    if (!KindOf(segment).isBezier()) return true;
    const Keyframe* left = Read::leftKey(segment);
    const Keyframe* right = Read::rightKey(segment);
    if ((left && !std::isfinite(x - left->getX())) || (right && !std::isfinite(right->getX() - x))) return false;
    std::optional<BezierCut> cut = Private::CutBezierSegment(segment, x);
    if (!cut && left && right) cut = Private::CutBezierArgs(Private::BezierArgsOf(segment), x);
    return !cut
           || (IsFinite(cut->leftOut) && IsFinite(cut->leftIn) && IsFinite(cut->rightOut) && IsFinite(cut->rightIn));
}

bool IsRoomFor(double x, const Segment& segment) {
    const Keyframe* left = Read::leftKey(segment);
    const Keyframe* right = Read::rightKey(segment);
    return std::isfinite(x) && !(left && x - left->getX() < Keyframe::getMinSeparation())
           && !(right && right->getX() - x < Keyframe::getMinSeparation()) && std::isfinite(EvalSegment(x, segment))
           && HasFiniteHandlesAt(x, segment);
}

// --- the insertion ---------------------------------------------------------------------------------------------------

class Insertion {
public:
    Insertion(FCurve& curve, double x, Segment& segment) : m_curve(curve), m_x(x), m_segment(segment) {}

    Segment& run() {
        const double y = EvalSegment(m_x, m_segment);
        m_left = m_right = m_segment.getInterpolator();
        if (KindOf(m_segment).isBezier()) cut(y);
        for (Segment* neighbour : {segmentBefore(), segmentAfter()})
            if (neighbour && ReadsNextKeys(*neighbour)) turnIntoBezier(*neighbour);

        m_handles.keepLeftOf(Read::leftKey(m_segment));
        m_handles.keepRightOf(Read::rightKey(m_segment));
        Segment& after = *m_curve.insertSegment(Private::FreeKey(m_x, y), m_right);
        Raw::setInterpolator(m_segment, m_left);
        if (m_cut) Raw::setUnified(*Read::leftKey(after), true);
        if (m_cut) {
            target(*Read::outTangent(m_segment), m_cut->leftOut, m_segment);
            target(*Read::inTangent(m_segment), m_cut->leftIn, m_segment);
            target(*Read::outTangent(after), m_cut->rightOut, after);
            target(*Read::inTangent(after), m_cut->rightIn, after);
        }
        // Tangents around the key that shape nothing may follow it.
        for (const auto& kept : m_handles.kept()) {
            const auto segment = kept.tangent->getOwningSegment();
            const Interpolator* interpolator = Read::interpolator(*segment);
            if (interpolator && interpolator->usesTangents()) target(*kept.tangent, kept.handle, *segment);
        }
        reachTargets();
        return after;
    }

    // Whether halves with the shape of the segment were found. For kinds that are not Bezier-shaped: not known.
    bool keepsShape() const noexcept { return m_keepsShape; }

private:
    // Prepares the cut of a Bezier-shaped segment: the halves' interpolators and handles.
    void cut(double y) {
        const Keyframe* left = Read::leftKey(m_segment);
        const Keyframe* right = Read::rightKey(m_segment);
        m_keepsShape = true;
        m_cut = Private::CutBezierSegment(m_segment, m_x);
        if (m_cut || (!left && !right)) return;
        if (left && right)
            cutBetween(*left, *right);
        else
            cutOutside(left ? *left : *right, y, left != nullptr);
    }

    // Halves of "bezier()". A match need not pass through its keys, and there only a match can draw that end; beside a
    // half of "bezier()" it is the same cubic again.
    void cutBetween(const Keyframe& left, const Keyframe& right) {
        const Private::BezierArgs args = Private::BezierArgsOf(m_segment);
        const double rounding = 1e-14 * std::max(std::abs(args.y0), std::abs(args.y3));
        const bool leftMeets = std::abs(args.y0 - left.getY()) <= rounding;
        const bool rightMeets = std::abs(args.y3 - right.getY()) <= rounding;
        if (!leftMeets && !rightMeets) {
            m_keepsShape = false;
            return;
        }
        m_cut = Private::CutBezierArgs(args, m_x);
        const KindRow& row = KindOf(m_segment);
        if (leftMeets)
            m_left = Bezier::create();
        else if (row.leftHalf != row.kind)
            m_left = Private::RowOf(row.leftHalf).create();
        if (rightMeets)
            m_right = Bezier::create();
        else if (row.rightHalf != row.kind)
            m_right = Private::RowOf(row.rightHalf).create();
    }

    // Outside the keys these kinds are flat. A match may be so at another height than the key's, which the constant
    // half beside that key takes from the new one.
    void cutOutside(const Keyframe& key, double y, bool afterKey) {
        std::shared_ptr<Interpolator>& between = afterKey ? m_left : m_right;
        if (y != key.getY()) {
            between = afterKey ? ConstantNext::create() : Constant::create();
            return;
        }
        between = Bezier::create();
        const Vector2D<double> third(std::abs(m_x - key.getX()) / 3.0, 0.0);
        m_cut = BezierCut{y, third, -third, third, -third};
    }

    void turnIntoBezier(Segment& spline) {
        const Private::BezierArgs args = Private::BezierArgsOf(spline);
        Raw::setInterpolator(spline, Bezier::create());
        for (Tangent* tangent : {Read::outTangent(spline), Read::inTangent(spline)})
            Raw::setType(*tangent, Tangent::Fixed);
        const double span = args.x3 - args.x0;
        Private::SetCutHandle(*Read::outTangent(spline), {args.outX, args.outY}, span);
        Private::SetCutHandle(*Read::inTangent(spline), {args.inX, args.inY}, span);
    }

    // A tangent that has to have a handle now, and whenever it is recomputed.
    struct Target {
        Tangent* tangent;
        Segment* segment;
        Vector2D<double> handle;
    };

    void target(Tangent& tangent, const Vector2D<double>& handle, Segment& segment) {
        m_targets.push_back({&tangent, &segment, handle});
    }

    void reachTargets() {
        const auto setHandles = [this] {
            for (const Target& t : m_targets) Raw::setHandle(*t.tangent, t.handle.x, t.handle.y);
        };
        for (const Target& t : m_targets)
            if (Read::hasBothKeys(*t.segment))
                Private::SetCutHandle(*t.tangent, t.handle,
                                      Read::rightKey(*t.segment)->getX() - Read::leftKey(*t.segment)->getX());
        setHandles();
        for (const Target& t : m_targets) {
            Private::PendingChanges unheard(nullptr);
            Private::UpdateTangent(*t.tangent, t.segment, unheard);
            if (t.tangent->get() == t.handle) continue;
            Raw::setType(*t.tangent, Tangent::Fixed);
            setHandles(); // the update may have reached others
        }
    }

    Segment* segmentBefore() const {
        Keyframe* key = Read::leftKey(m_segment);
        return key ? Read::leftSegment(*key) : nullptr;
    }
    Segment* segmentAfter() const {
        Keyframe* key = Read::rightKey(m_segment);
        return key ? Read::rightSegment(*key) : nullptr;
    }

    FCurve& m_curve;
    const double m_x;
    Segment& m_segment; // the one that is cut; afterwards its left half
    std::optional<BezierCut> m_cut;
    std::shared_ptr<Interpolator> m_left, m_right; // of the halves
    bool m_keepsShape = false;
    Private::HandleKeeper m_handles;
    std::vector<Target> m_targets;
};

// --- the preview -----------------------------------------------------------------------------------------------------

bool RepeatsBeyondItsKeys(const FCurve& curve) noexcept {
    const auto reads = ReadsOf(Read::firstSegment(curve)) | ReadsOf(Read::lastSegment(curve));
    return (reads & Private::kReadsCurve) != 0;
}

struct Comparison {
    double error = 0.0;
    double range = 0.0;

    void add(const FCurve& before, const FCurve& after, double from, double to) {
        constexpr int places = 1000;
        for (int i = 0; i < places; ++i) {
            const double x = from + (to - from) * (static_cast<double>(i) + 0.5) / places;
            const double y = before.eval(x);
            if (!std::isfinite(y)) continue;
            range = std::max(range, std::abs(y));
            const double change = std::abs(after.eval(x) - y);
            error = std::isfinite(change) ? std::max(error, change) : change;
        }
    }
};

// What a key at x may change by way of a repetition: that at the other end, if x lies outside the keyed range, and a
// match at the first or the last key, which looks across the joint.
void CompareElsewhere(const FCurve& before, const FCurve& after, double x, Comparison& sum) {
    const double first = Read::rightKey(Read::firstSegment(after))->getX();
    const double last = Read::leftKey(Read::lastSegment(after))->getX();
    if (x == last) sum.add(before, after, first - (last - first), first);
    if (x == first) sum.add(before, after, last, last + (last - first));
    const double second = Read::rightKey(*Read::rightSegment(*Read::rightKey(Read::firstSegment(after))))->getX();
    const double lastButOne = Read::leftKey(*Read::leftSegment(*Read::leftKey(Read::lastSegment(after))))->getX();
    if (x > second) sum.add(before, after, first, second);
    if (x < lastButOne) sum.add(before, after, lastButOne, last);
}

} // namespace

KeyframeInsertion PreviewBezierKeyframe(const FCurve& curve, double x) {
    const Segment& segment = Read::findSegment(curve, x);
    if (!IsRoomFor(x, segment)) return {};
    const bool repeats = RepeatsBeyondItsKeys(curve);
    const bool local = !repeats && (IsSelfSimilar(segment) || KindOf(segment).isBezier());
    const auto before = local ? Private::CopyAround(segment) : FCurve::createCopy(curve);
    const auto after = FCurve::createCopy(*before);
    const FCurve::Switch quiet(*after);
    Insertion insertion(*after, x, Read::findSegment(*after, x));
    insertion.run();

    // The segment and its neighbours; outside the keys as far beyond x as x is beyond them.
    const Keyframe* left = Read::leftKey(segment);
    const Keyframe* right = Read::rightKey(segment);
    double from = left ? left->getX() : right ? 2.0 * x - right->getX() : x - 1.0;
    double to = right ? right->getX() : left ? 2.0 * x - left->getX() : x + 1.0;
    if (left && Read::leftKey(*Read::leftSegment(*left))) from = Read::leftKey(*Read::leftSegment(*left))->getX();
    if (right && Read::rightKey(*Read::rightSegment(*right))) to = Read::rightKey(*Read::rightSegment(*right))->getX();
    Comparison here;
    here.add(*before, *after, from, to);
    Comparison elsewhere;
    if (repeats && after->size() > 2) CompareElsewhere(*before, *after, x, elsewhere);

    KeyframeInsertion result;
    result.error = std::max(here.error, elsewhere.error);
    const double range = std::max(here.range, elsewhere.range);
    const bool known = IsSelfSimilar(segment) || insertion.keepsShape();
    // Near a vertical place the last bit of a handle moves the value by its cube root.
    const double rounding = known && KindOf(segment).beyond == Private::Beyond::Handle ? 1e-4 : 1e-9;
    const bool keeps = here.error <= rounding * range && elsewhere.error <= 1e-9 * range;
    result.outcome = !keeps  ? KeyframeInsertion::ChangesShape
                     : known ? KeyframeInsertion::KeepsShape
                             : KeyframeInsertion::KeepsExpression;
    return result;
}

FCurve::iterator InsertBezierKeyframe(FCurve& curve, double x) {
    Segment& segment = Read::findSegment(curve, x);
    if (!IsRoomFor(x, segment)) return curve.end();
    std::shared_ptr<Segment> added;
    Private::QuietEdit(curve, [&] {
        added = Insertion(curve, x, segment).run().getShared();
        return true;
    });
    // An observer may have taken it out again.
    return Read::curve(*added) == &curve ? Read::iteratorAt(curve, *added) : curve.end();
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
