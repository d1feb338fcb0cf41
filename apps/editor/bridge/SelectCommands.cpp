#include "Session.h"

#include <FCurveLib/DisplayProperties.h>
#include <FCurveLib/IndexLookup.h>
#include <FCurveLib/Interpolator.h>
#include <FCurveLib/Picking.h>
#include <FCurveLib/Rectangle.h>
#include <FCurveLib/Segment.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace editor {

namespace {

int rankOf(const HitRecord& part) {
    if (part.getType() == HitRecord::KEYFRAME) return 0;
    return part.isTangent() ? 1 : 2;
}

Vector2D<double> placeOf(const HitRecord& part, const CurveView& view) {
    if (const auto key = part.getKeyframe()) return view.toPixel(key->get());
    if (const auto tangent = part.getTangent()) {
        const auto key = tangent->getOwningKeyframe();
        const auto curve = tangent->getOwningCurve();
        const double scale = curve ? GetTangentScale(*curve) : 1.0;
        if (key) return view.toPixel({key->getX() + scale * tangent->getX(), key->getY() + scale * tangent->getY()});
    }
    return {0.0, 0.0};
}

Json describe(const HitRecord& part, int curve) {
    if (const auto key = part.getKeyframe())
        return {{"type", "key"}, {"curve", curve}, {"x", key->getX()}, {"y", key->getY()}};
    if (const auto tangent = part.getTangent())
        return {{"type", "handle"}, {"curve", curve}, {"in", tangent->isInTangent()}};
    if (part.getType() == HitRecord::SEGMENT) return {{"type", "segment"}, {"curve", curve}};
    if (part.getType() == HitRecord::CURVE) return {{"type", "curve"}, {"curve", curve}};
    return {{"type", "none"}};
}

} // namespace

// Curves with scales of their own are asked one by one, and the nearest of the best kind is taken.
HitRecord Session::pickAt(double x, double y, double radius, bool wantsSegments) const {
    PickOptions options;
    if (wantsSegments) options.parts = PickOptions::Segments;
    if (!m_isSeparate) return Pick(*m_curves, m_view, {x, y}, radius, options);
    HitRecord best;
    double nearest = std::numeric_limits<double>::infinity();
    const auto alone = FCurveContainer::create();
    for (FCurve& curve : *m_curves) {
        alone->clear();
        alone->addCurve(curve.getShared());
        const CurveView view = viewOf(curve, m_view);
        const HitRecord hit = Pick(*alone, view, {x, y}, radius, options);
        if (hit.getType() == HitRecord::NONE) continue;
        const auto place = placeOf(hit, view);
        const double distance = 1e6 * rankOf(hit) + (rankOf(hit) < 2 ? std::hypot(place.x - x, place.y - y) : 0.0);
        if (distance > nearest) continue;
        nearest = distance;
        best = hit;
    }
    return best;
}

// {"x", "y", "radius", "mode": "look" | "set" | "toggle", "segments"}: what lies there, and whether it is selected
// then. "set" leaves the selection alone where the part belongs to it, so that all of it can be dragged.
Json Session::pick(const Json& arguments) {
    const double x = GetNumber(arguments, "x");
    const double y = GetNumber(arguments, "y");
    const std::string mode = Get(arguments, "mode", std::string("set"));
    const bool wantsSegments = Get(arguments, "segments", false);
    const HitRecord hit = pickAt(x, y, Get(arguments, "radius", 6.0), wantsSegments);
    const auto curve = hit.getCurve();
    Json result = describe(hit, curve ? indexOf(*curve) : -1);
    if (mode != "look") {
        if (curve) m_active = curve;
        if (hit.getType() == HitRecord::NONE) {
            if (mode == "set") selectNone(Json::object());
        } else {
            EditGroup group(m_selection, "Select", EditGroup::Merge);
            if (mode == "toggle" && m_selection.isSelected(hit)) {
                m_selection.deselect(hit);
            } else if (!m_selection.isSelected(hit)) {
                if (mode == "set") clearSelection();
                m_selection.select(hit);
            }
            group.end();
        }
        ++m_revision;
    }
    result["selected"] = m_selection.isSelected(hit);
    result["locked"] = curve && IsLocked(*curve);
    return result;
}

// {"x0", "y0", "x1", "y1", "mode": "set" | "add" | "remove"}
Json Session::marquee(const Json& arguments) {
    const double x0 = GetNumber(arguments, "x0");
    const double y0 = GetNumber(arguments, "y0");
    const Rectangle<double> box{x0, y0, GetNumber(arguments, "x1") - x0, GetNumber(arguments, "y1") - y0};
    const std::string mode = Get(arguments, "mode", std::string("set"));
    std::vector<HitRecord> hits;
    if (m_isSeparate) {
        const auto alone = FCurveContainer::create();
        std::vector<HitRecord> some;
        for (FCurve& curve : *m_curves) {
            alone->clear();
            alone->addCurve(curve.getShared());
            PickRectangle(*alone, viewOf(curve, m_view), box, some);
            hits.insert(hits.end(), some.begin(), some.end());
        }
    } else {
        PickRectangle(*m_curves, m_view, box, hits);
    }
    EditGroup group(m_selection, "Select", EditGroup::Merge);
    if (mode == "set") clearSelection();
    for (const HitRecord& hit : hits) {
        if (mode == "remove")
            m_selection.deselect(hit);
        else
            m_selection.select(hit);
    }
    group.end();
    if (!hits.empty()) m_active = hits.front().getCurve();
    return {{"keys", hits.size()}};
}

// All keys of the visible curves, or of one: {"curve"}.
Json Session::selectAll(const Json& arguments) {
    const FCurve* const only = arguments.contains("curve") ? &curveAt(arguments) : nullptr;
    EditGroup group(m_selection, "Select", EditGroup::Merge);
    if (only) clearSelection();
    for (FCurve& curve : *m_curves) {
        if (!IsVisible(curve) || (only && only != &curve)) continue;
        for (Segment& segment : curve)
            if (const auto key = segment.getLeftKey()) m_selection.select(*key);
    }
    group.end();
    return Json::object();
}

Json Session::selectNone(const Json&) {
    if (selected().empty()) return Json::object();
    EditGroup group(m_selection, "Select", EditGroup::Merge);
    clearSelection();
    group.end();
    return Json::object();
}

// {"curve", "mode": "set" | "toggle"}
Json Session::selectCurve(const Json& arguments) {
    FCurve& curve = curveAt(arguments);
    const std::string mode = Get(arguments, "mode", std::string("set"));
    EditGroup group(m_selection, "Select", EditGroup::Merge);
    if (mode == "toggle" && m_selection.isSelected(curve)) {
        m_selection.deselect(curve);
    } else {
        if (mode == "set") clearSelection();
        m_selection.select(curve);
    }
    group.end();
    m_active = curve.getShared();
    ++m_revision;
    return Json::object();
}

// {"curve", "key", "mode": "set" | "add"}: by number, from the table.
Json Session::selectKey(const Json& arguments) {
    FCurve& curve = curveAt(arguments);
    const auto key = GetIndexedKeyframe(curve, static_cast<int>(GetNumber(arguments, "key")));
    if (!key) throw Refusal("There is no such key.");
    EditGroup group(m_selection, "Select", EditGroup::Merge);
    if (Get(arguments, "mode", std::string("set")) == "set") clearSelection();
    m_selection.select(*key);
    group.end();
    m_active = curve.getShared();
    return Json::object();
}

// {"by": 1 | -1, "frame", "add"}: from the selected key, handle or segment of the active curve to the next one of its
// kind; from nothing to the key at that frame or, that way, next to it. "add" keeps what is selected.
Json Session::stepKey(const Json& arguments) {
    const int by = GetNumber(arguments, "by") > 0.0 ? 1 : -1;
    FCurve* const curve = activeCurve();
    if (!curve || curve->size() < 2) return nullptr;
    // Keys and segments have numbers of their own, tangents two for each key.
    int index = -1;
    HitRecord::Type type = HitRecord::NONE;
    for (const HitRecord& part : selected()) {
        if (part.getCurve().get() != curve || part.getType() == HitRecord::CURVE) continue;
        if (by < 0 && type != HitRecord::NONE) break;
        type = part.getType();
        if (const auto key = part.getKeyframe())
            index = GetKeyframeIndex(*curve, *key);
        else if (const auto tangent = part.getTangent())
            index = GetTangentIndex(*curve, *tangent);
        else
            index = GetSegmentIndex(*curve, *part.getSegment());
    }
    HitRecord next;
    int number = 0;
    if (type == HitRecord::NONE) {
        const double frame = GetNumber(arguments, "frame");
        const auto cut = curve->findSegment(frame);
        const bool isThere = cut->getLeftKey() && cut->getLeftKey()->getX() == frame;
        number = GetSegmentIndex(*curve, *cut) - (by > 0 && !isThere ? 0 : 1);
        number = std::clamp(number, 0, static_cast<int>(curve->size()) - 2);
        next = HitRecord(GetIndexedKeyframe(*curve, number));
    } else if (type == HitRecord::KEYFRAME) {
        number = index + by;
        next = HitRecord(GetIndexedKeyframe(*curve, number));
    } else if (type == HitRecord::SEGMENT) {
        number = index + by;
        next = HitRecord(GetIndexedSegment(*curve, number));
    } else {
        number = (index + 2 * by) / 2;
        next = HitRecord(GetIndexedTangent(*curve, index + 2 * by), true);
    }
    if (!next.getAddress()) return nullptr;
    EditGroup group(m_selection, "Select", EditGroup::Merge);
    if (!Get(arguments, "add", false)) clearSelection();
    m_selection.select(next);
    group.end();
    // Where the view has to be: the key, or an end of the segment.
    auto key = next.getKeyframe();
    if (const auto tangent = next.getTangent()) key = tangent->getOwningKeyframe();
    if (const auto segment = next.getSegment())
        key = segment->getLeftKey() ? segment->getLeftKey() : segment->getRightKey();
    if (!key) return nullptr;
    return {{"x", key->getX()}, {"y", key->getY()}, {"key", number}, {"curve", indexOf(*curve)}};
}

// From the selected keys to their in handles, from there to the out handles, and back to the keys; handles that are not
// shown are left out.
Json Session::selectHandles(const Json&) {
    std::vector<std::shared_ptr<Keyframe>> keys;
    bool hasIn = false;
    bool hasOut = false;
    for (const HitRecord& part : selected()) {
        auto key = part.getKeyframe();
        if (const auto tangent = part.getTangent()) {
            (tangent->isInTangent() ? hasIn : hasOut) = true;
            key = tangent->getOwningKeyframe();
        }
        if (key) keys.push_back(key);
    }
    if (keys.empty()) throw Refusal("Select keys first.");
    const auto handlesOf = [&](bool in) {
        std::vector<HitRecord> handles;
        for (const auto& key : keys) {
            const auto segment = in ? key->getLeftSegment() : key->getRightSegment();
            const auto interpolator = segment ? segment->getInterpolator() : nullptr;
            if (interpolator && interpolator->usesTangents())
                handles.emplace_back(in ? key->getInTangent() : key->getOutTangent(), true);
        }
        return handles;
    };
    std::vector<HitRecord> chosen;
    if (!hasIn && !hasOut) chosen = handlesOf(true);
    if (chosen.empty() && !hasOut) chosen = handlesOf(false);
    if (chosen.empty() && !hasIn && !hasOut) throw Refusal("The segments beside the selected keys have no handles.");
    if (chosen.empty()) chosen.assign(keys.begin(), keys.end());
    EditGroup group(m_selection, "Select", EditGroup::Merge);
    clearSelection();
    for (const HitRecord& part : chosen) m_selection.select(part);
    group.end();
    return {{"parts", chosen.size()}};
}

// From the selected keys to the segments that start there, and back.
Json Session::selectSegments(const Json&) {
    std::vector<HitRecord> chosen;
    for (const HitRecord& part : selected()) {
        auto key = part.getKeyframe();
        if (const auto tangent = part.getTangent()) key = tangent->getOwningKeyframe();
        if (const auto segment = part.getSegment()) {
            if (const auto end = segment->getLeftKey() ? segment->getLeftKey() : segment->getRightKey())
                chosen.emplace_back(end);
        } else if (key) {
            if (const auto next = key->getRightSegment()) chosen.emplace_back(next);
        }
    }
    if (chosen.empty()) throw Refusal("Select keys first.");
    EditGroup group(m_selection, "Select", EditGroup::Merge);
    clearSelection();
    for (const HitRecord& part : chosen) m_selection.select(part);
    group.end();
    return {{"parts", chosen.size()}};
}

} // namespace editor
