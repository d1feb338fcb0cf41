#include "Session.h"

#include <FCurveLib/ClipText.h>
#include <FCurveLib/CopyKeys.h>
#include <FCurveLib/DefaultFallbackParser.h>
#include <FCurveLib/DisplayProperties.h>
#include <FCurveLib/IndexLookup.h>
#include <FCurveLib/InsertBezierKeyframe.h>
#include <FCurveLib/Interpolator.h>
#include <FCurveLib/InterpolatorFactory.h>
#include <FCurveLib/Keys.h>
#include <FCurveLib/Segment.h>
#include <FCurveLib/SetKey.h>
#include <FCurveLib/UnknownExpression.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace editor {

namespace {

constexpr std::pair<const char*, Tangent::Type> kTypes[] = {{"fixed", Tangent::Fixed},
                                                            {"flat", Tangent::Flat},
                                                            {"linear", Tangent::Linear},
                                                            {"smooth", Tangent::Smooth},
                                                            {"clamped", Tangent::Clamped},
                                                            {"plateau", Tangent::Plateau},
                                                            {"continued", Tangent::SmoothContinued}};

// Pixels in x that a pull counts at least, where the handle has no length of its own to go by.
constexpr double kLeastPull = 4.0;

bool isKind(const std::string& text) {
    return std::any_of(InterpolatorFactory::begin(), InterpolatorFactory::end(),
                       [&](const auto& kind) { return kind.first == text; });
}

} // namespace

MoveOptions MoveOptionsOf(const Json& arguments) {
    const std::string others = Get(arguments, "others", std::string("stop"));
    MoveOptions options;
    if (others == "cross") options.others = MoveOptions::Cross;
    if (others == "ripple") options.others = MoveOptions::Ripple;
    options.frameStep = Get(arguments, "frameStep", 0.0);
    options.valueStep = Get(arguments, "valueStep", 0.0);
    return options;
}

void CheckArrived(bool isThere, const MoveOptions& options) {
    if (isThere) return;
    throw Refusal(options.others == MoveOptions::Cross
                      ? "Another key stands there: nothing was moved."
                      : "Another key is in the way: nothing was moved. With \"Cross others\" keys pass it.");
}

void TakeToFrame(Keyframe& key, double frame, const MoveOptions& options) {
    KeyGroup group({key.getShared()});
    MoveKeys(group, {frame - key.getX(), 0.0}, options);
    const bool isThere = std::fabs(key.getX() - frame) < Keyframe::getMinSeparation() / 2.0;
    if (isThere) key.setX(frame); // what was rounded off
    CheckArrived(isThere, options);
}

std::uint8_t TangentTypeOf(const std::string& name) {
    for (const auto& [text, type] : kTypes)
        if (name == text) return type;
    throw Refusal("There is no tangent type \"" + name + "\".");
}

std::shared_ptr<Interpolator> InterpolatorOf(const std::string& text) {
    const std::string kind = isKind(text + "()") ? text + "()" : text;
    auto interpolator = InterpolatorFactory::create(kind.c_str());
    if (std::dynamic_pointer_cast<UnknownExpression>(interpolator))
        throw Refusal("\"" + text + "\" is not a valid formula.");
    return interpolator;
}

void SetTangentType(Tangent& tangent, std::uint8_t type) {
    const auto segment = tangent.getOwningSegment();
    if (!segment) return;
    const auto present = segment->getInterpolator();
    if (segment->getLeftKey() && segment->getRightKey() && (!present || !present->usesTangents()))
        segment->setInterpolator(InterpolatorFactory::create("bezier()"));
    tangent.setType(type);
}

// The tip of a handle goes to a point, by hand. It never points across its key. Of an unweighted handle only the
// direction counts, which near the vertical would make a curve of millions: so its tip rises at most four times as far
// as it is pulled, and does not leave the view.
void Session::pullHandle(Tangent& handle, const Vector2D<double>& tip) const {
    const auto key = handle.getOwningKeyframe();
    const auto curve = handle.getOwningCurve();
    if (!key || !curve) return;
    const CurveView view = viewOf(*curve, m_view);
    const auto reach = [](const Tangent& tangent) { // how far it goes in x while it is not weighted
        const auto segment = tangent.getOwningSegment();
        const auto left = segment ? segment->getLeftKey() : nullptr;
        const auto right = segment ? segment->getRightKey() : nullptr;
        return left && right ? (right->getX() - left->getX()) / 3.0 : 0.0;
    };
    const double set = GetTangentScale(*curve);
    const double scale = set > 0.0 ? set : 1.0;
    const double side = handle.isInTangent() ? -1.0 : 1.0;
    const double own = handle.isWeighted() ? 0.0 : reach(handle);
    const auto other = handle.getOppositeTangent();
    double least = own / 4.0;
    if (!handle.isWeighted() && own == 0.0 && view.isValid())
        least = kLeastPull / view.pixelsPerFrame() / scale;
    else if (handle.isWeighted() && key->isTangentsUnified() && other && !other->isWeighted())
        least = reach(*other) / 4.0; // it turns as well
    const double x = std::max(side * (tip.x - key->getX()) / scale, least);
    double y = (tip.y - key->getY()) / scale;
    if (own > 0.0 && view.isValid()) {
        const double from = view.toPixelY(key->getY());
        const double present = view.toPixelY(key->getY() + scale * handle.getY());
        const double there = view.toPixelY(key->getY() + scale * y * own / x);
        const double shown = std::clamp(there, std::min({0.0, from, present}), std::max({view.height, from, present}));
        if (shown != there) y *= (shown - from) / (there - from);
    }
    if (handle.getType() != Tangent::Fixed) handle.setType(Tangent::Fixed);
    handle.set(side * x, y);
}

// {"what": "keys" | "scale" | "handle", "x", "y", "curve", "others", "frameStep", "valueStep"}: x and y are the pixels
// where it was grabbed, the curve is the one to whose scale they belong. Scaling leaves the corner of the selection
// where it is that is farthest from there. A selected handle takes the other selected ones along.
Json Session::dragBegin(const Json& arguments) {
    if (m_drag) dragEnd(Json::object());
    dropPreview();
    const std::string what = Get(arguments, "what", std::string("keys"));
    const Vector2D<double> pixel(Get(arguments, "x", 0.0), Get(arguments, "y", 0.0));
    Drag drag;
    drag.options = MoveOptionsOf(arguments);
    if (what == "handle") {
        const HitRecord hit = pickAt(pixel.x, pixel.y, 8.0, false);
        drag.what = Drag::Handle;
        const auto grabbed = hit.getTangent();
        drag.curve = hit.getCurve();
        if (!grabbed) throw Refusal("There is no handle here.");
        const auto key = grabbed->getOwningKeyframe();
        if (!key || !IsEditableKey(*key))
            throw Refusal(IsLocked(*drag.curve) ? "The curve is locked." : "The key of this handle is locked.");
        const auto grip = [&](const std::shared_ptr<Tangent>& handle) {
            const auto owner = handle->getOwningKeyframe();
            const auto curve = handle->getOwningCurve();
            const double scale = GetTangentScale(*curve);
            const Vector2D<double> start = viewOf(*curve, m_view).toPoint(pixel);
            drag.grips.push_back(
                {handle,
                 {owner->getX() + scale * handle->getX() - start.x, owner->getY() + scale * handle->getY() - start.y}});
        };
        if (m_selection.isSelected(*grabbed))
            for (const auto& handle : editableHandles()) {
                const bool turnsAnyway = handle->getOwningKeyframe() == key && key->isTangentsUnified();
                if (handle != grabbed && !turnsAnyway) grip(handle);
            }
        grip(grabbed);
    } else {
        drag.what = what == "scale" ? Drag::Scale : Drag::Keys;
        const auto keys = editableKeys();
        if (keys.empty()) throw Refusal("No key is selected.");
        drag.curve = arguments.contains("curve") ? curveAt(arguments).getShared() : keys.front()->getOwningCurve();
        drag.start = viewOf(*drag.curve, m_view).toPoint(pixel);
        double left = drag.start.x;
        double right = drag.start.x;
        double bottom = drag.start.y;
        double top = drag.start.y;
        for (const auto& key : keys) {
            left = std::min(left, key->getX());
            right = std::max(right, key->getX());
            bottom = std::min(bottom, key->getY());
            top = std::max(top, key->getY());
        }
        drag.pivot = {drag.start.x - left > right - drag.start.x ? left : right,
                      drag.start.y - bottom > top - drag.start.y ? bottom : top};
        drag.keys = KeyGroup(keys);
    }
    const char* const name = drag.what == Drag::Handle  ? "Move handle"
                             : drag.what == Drag::Scale ? "Scale keys"
                                                        : "Move keys";
    drag.group = std::make_unique<EditGroup>(m_selection, name);
    m_drag = std::move(drag);
    return Json::object();
}

// {"x", "y"}: where the pointer is, in pixels.
Json Session::dragTo(const Json& arguments) {
    if (!m_drag) throw Refusal("Nothing is being dragged.");
    Drag& drag = *m_drag;
    const Vector2D<double> pixel(GetNumber(arguments, "x"), GetNumber(arguments, "y"));
    const Vector2D<double> to = viewOf(*drag.curve, m_view).toPoint(pixel);
    Json result = Json::object();
    if (drag.what == Drag::Handle) {
        for (const Grip& grip : drag.grips) {
            const auto curve = grip.handle->getOwningCurve();
            if (!curve) continue;
            const Vector2D<double> there = viewOf(*curve, m_view).toPoint(pixel);
            pullHandle(*grip.handle, {there.x + grip.away.x, there.y + grip.away.y});
        }
    } else {
        const auto part = [](double from, double there, double pivot) {
            return std::fabs(from - pivot) > 1e-9 ? (there - pivot) / (from - pivot) : 1.0;
        };
        const MoveReport report = drag.what == Drag::Scale
                                      ? ScaleKeys(drag.keys, drag.pivot,
                                                  {std::max(0.001, part(drag.start.x, to.x, drag.pivot.x)),
                                                   part(drag.start.y, to.y, drag.pivot.y)},
                                                  drag.options)
                                      : MoveKeys(drag.keys, {to.x - drag.start.x, to.y - drag.start.y}, drag.options);
        if (report.passed > 0) m_isSelectedStale = true;
        result = {{"x", report.offset.x}, {"y", report.offset.y}, {"limited", report.isLimited}};
    }
    drag.group->step();
    return result;
}

Json Session::dragEnd(const Json&) {
    if (!m_drag) return Json::object();
    const std::unique_ptr<EditGroup> group = std::move(m_drag->group);
    m_drag.reset();
    m_isSelectedStale = true;
    group->end();
    return Json::object();
}

Json Session::dragCancel(const Json&) {
    if (!m_drag) return Json::object();
    const std::unique_ptr<EditGroup> group = std::move(m_drag->group);
    m_drag.reset();
    m_isSelectedStale = true;
    group->cancel();
    return Json::object();
}

// {"x", "y", "others", "frameStep"}: by the keyboard, in frames and in what the view shows of values; strokes that
// follow each other are one step. The selected keys; without any the tips of the selected handles.
Json Session::nudge(const Json& arguments) {
    KeyGroup keys(editableKeys());
    const auto handles = editableHandles();
    if (keys.empty() && handles.empty()) throw refusal("No key and no handle is selected.");
    const Vector2D<double> by(GetNumber(arguments, "x"), GetNumber(arguments, "y") * valueUnit());
    MoveOptions options = MoveOptionsOf(arguments);
    if (by.x == 0.0) options.frameStep = 0.0;
    if (keys.empty()) {
        EditGroup group(m_selection, "Nudge handles", EditGroup::Merge);
        for (const auto& handle : handles) {
            const auto key = handle->getOwningKeyframe();
            const double scale = GetTangentScale(*handle->getOwningCurve());
            pullHandle(*handle,
                       {key->getX() + scale * handle->getX() + by.x, key->getY() + scale * handle->getY() + by.y});
        }
        group.end();
        return Json::object();
    }
    EditGroup group(m_selection, "Nudge keys", EditGroup::Merge);
    MoveKeys(keys, by, options);
    group.end();
    return Json::object();
}

// {"x", "y", "pivotX", "pivotY", "others"}: factors, about a point.
Json Session::scale(const Json& arguments) {
    KeyGroup keys(editableKeys());
    if (keys.empty()) throw Refusal("No key is selected.");
    const double x = GetNumber(arguments, "x");
    if (!(x > 0.0)) throw Refusal("Time can only be scaled by more than 0.");
    const MoveOptions options = MoveOptionsOf(arguments);
    EditGroup group(m_selection, "Scale keys");
    const Vector2D<double> pivot(GetNumber(arguments, "pivotX"), GetNumber(arguments, "pivotY"));
    const MoveReport report = ScaleKeys(keys, pivot, {x, GetNumber(arguments, "y")}, options);
    CheckArrived(!report.isLimited, options);
    group.end();
    return Json::object();
}

// {"x", "y", "frame", "others", "frameStep"}: by the keyboard, about the cursor, that is this frame and the active
// curve's value there: the key farthest from it comes farther by so many frames and so much of value, the others in
// proportion.
Json Session::stretch(const Json& arguments) {
    const auto keys = editableKeys();
    if (keys.empty()) throw Refusal("No key is selected.");
    const double frame = GetNumber(arguments, "frame");
    const Vector2D<double> pivot(frame, activeCurve()->eval(frame));
    Vector2D<double> reach(0.0, 0.0);
    for (const auto& key : keys) {
        reach.x = std::max(reach.x, std::fabs(key->getX() - pivot.x));
        reach.y = std::max(reach.y, std::fabs(key->getY() - pivot.y));
    }
    const auto factor = [](double length, double by) {
        if (by == 0.0) return 1.0;
        if (!(length > 1e-9)) throw Refusal("The cursor stands where the selected keys are: move it to scale them.");
        return std::max(1e-3, (length + by) / length);
    };
    const Vector2D<double> by(factor(reach.x, GetNumber(arguments, "x")),
                              factor(reach.y, GetNumber(arguments, "y") * valueUnit()));
    MoveOptions options = MoveOptionsOf(arguments);
    if (by.x == 1.0) options.frameStep = 0.0;
    KeyGroup group(keys);
    EditGroup edit(m_selection, "Scale keys", EditGroup::Merge);
    ScaleKeys(group, pivot, by, options);
    edit.end();
    return Json::object();
}

// {"curve", "frame", "y", "valueStep"}: at the height of a pixel, on the grid of that step if there is one; keeps the
// shape where none is given, and tells as "change" by how much that fails.
Json Session::addKey(const Json& arguments) {
    FCurve* curve = arguments.contains("curve") ? &curveAt(arguments) : activeCurve();
    if (!curve) throw Refusal("There is no curve to add a key to.");
    if (IsLocked(*curve)) throw Refusal("The curve is locked.");
    const double frame = GetNumber(arguments, "frame");
    KeyframeInsertion insertion;
    if (!arguments.contains("y")) insertion = PreviewBezierKeyframe(*curve, frame);
    EditGroup group(m_selection, "Add key");
    std::shared_ptr<Keyframe> key;
    if (arguments.contains("y")) {
        const double value = viewOf(*curve, m_view).toValue(GetNumber(arguments, "y"));
        const double step = Get(arguments, "valueStep", 0.0);
        key = SetKey(*curve, frame, step > 0.0 ? std::round(value / step) * step : value).key;
    } else {
        const auto position = InsertBezierKeyframe(*curve, frame);
        if (position != curve->end()) key = position->getLeftKey();
    }
    if (!key) throw Refusal("No key can stand here: another one is too near, or the curve has no value.");
    clearSelection();
    m_selection.select(*key);
    group.end();
    m_active = curve->getShared();
    const bool isOther = insertion.outcome == KeyframeInsertion::ChangesShape;
    return {{"x", key->getX()}, {"y", key->getY()}, {"change", isOther ? insertion.error : 0.0}};
}

Json Session::removeKeys(const Json& arguments) {
    const auto keys = editableKeys();
    if (keys.empty()) {
        if (Get(arguments, "quiet", false)) return Json::object();
        throw Refusal("No key is selected.");
    }
    const std::size_t kept = selectedKeys().size() - keys.size();
    EditGroup group(m_selection, Get(arguments, "quiet", false) ? "Cut keys" : "Delete keys");
    for (const auto& key : keys) {
        const auto curve = key->getOwningCurve();
        const int index = curve ? GetKeyframeIndex(*curve, *key) : -1;
        if (index >= 0) curve->removeSegment(GetIndexedSegmentIterator(*curve, index + 1));
    }
    group.end();
    return {{"keys", keys.size()}, {"kept", kept}};
}

// {"type", "side": "in" | "out" | "both"}: of the selected keys, and the selected handles.
Json Session::tangentType(const Json& arguments) {
    const std::string name = Get(arguments, "type", std::string());
    const std::string side = Get(arguments, "side", std::string("both"));
    const bool isStepped = name == "stepped";
    const std::uint8_t type = isStepped ? std::uint8_t{Tangent::Fixed} : TangentTypeOf(name);
    std::vector<std::shared_ptr<Tangent>> tangents;
    for (const HitRecord& part : selected()) {
        if (const auto key = part.getKeyframe()) {
            if (!IsEditableKey(*key)) continue;
            if (side != "out") tangents.push_back(key->getInTangent());
            if (side != "in") tangents.push_back(key->getOutTangent());
        } else if (const auto tangent = part.getTangent()) {
            const auto owner = tangent->getOwningKeyframe();
            if (owner && IsEditableKey(*owner)) tangents.push_back(tangent);
        }
    }
    if (isStepped) { // the end after the last key has a menu of its own
        const auto isNone = [](const auto& tangent) {
            const auto segment = tangent->getOwningSegment();
            return tangent->isInTangent() || !segment || !segment->getRightKey();
        };
        tangents.erase(std::remove_if(tangents.begin(), tangents.end(), isNone), tangents.end());
    }
    if (tangents.empty())
        throw refusal(isStepped ? "Select keys before the last one, or their out handles."
                                : "Select keys or handles first.");
    EditGroup group(m_selection, "Set tangents");
    for (const auto& tangent : tangents) {
        if (isStepped)
            tangent->getOwningSegment()->setInterpolator(InterpolatorFactory::create("constant()"));
        else
            SetTangentType(*tangent, type);
    }
    group.end();
    return {{"handles", tangents.size()}};
}

// {"flag": "weighted" | "weightLocked", "on"}: of the selected handles, and those of the selected keys.
Json Session::tangentFlag(const Json& arguments) {
    const std::string flag = Get(arguments, "flag", std::string());
    const bool on = Get(arguments, "on", true);
    std::size_t count = 0;
    const auto set = [&](Tangent& tangent) {
        const auto key = tangent.getOwningKeyframe();
        if (!key || !IsEditableKey(*key)) return;
        ++count;
        if (flag == "weighted")
            tangent.setWeighted(on);
        else if (flag == "weightLocked")
            tangent.setWeightLocked(on);
        else
            throw Refusal("Handles have no flag \"" + flag + "\".");
    };
    const std::vector<HitRecord> parts = selected();
    EditGroup group(m_selection, flag == "weighted" ? "Set weighted" : "Lock weights");
    for (const HitRecord& part : parts) {
        if (const auto key = part.getKeyframe()) {
            set(*key->getInTangent());
            set(*key->getOutTangent());
        } else if (const auto tangent = part.getTangent()) {
            set(*tangent);
        }
    }
    if (count == 0) throw refusal("Select keys or handles first.");
    group.end();
    return {{"handles", count}};
}

// {"flag": "breakdown" | "unified" | "locked", "on"}: of the selected keys, and those of the selected handles. Locks
// can be taken off what is locked, but for the curve's own.
Json Session::keyFlag(const Json& arguments) {
    const std::string flag = Get(arguments, "flag", std::string());
    const bool on = Get(arguments, "on", true);
    const std::vector<HitRecord> parts = selected();
    EditGroup group(m_selection, flag == "breakdown" ? "Set breakdown"
                                 : flag == "unified" ? "Unify tangents"
                                                     : "Lock keys");
    std::size_t count = 0;
    for (const HitRecord& part : parts) {
        auto key = part.getKeyframe();
        if (const auto tangent = part.getTangent()) key = tangent->getOwningKeyframe();
        const auto curve = key ? key->getOwningCurve() : nullptr;
        if (!curve || IsLocked(*curve) || (flag != "locked" && !IsEditableKey(*key))) continue;
        ++count;
        if (flag == "locked")
            SetLocked(*key, on);
        else if (flag == "breakdown")
            key->setBreakdown(on);
        else if (flag == "unified")
            key->setTangentsUnified(on);
        else
            throw Refusal("Keys have no flag \"" + flag + "\".");
    }
    if (count == 0) throw refusal("Select keys first.");
    group.end();
    return {{"keys", count}};
}

// {"where": "segments" | "before" | "after", "text"}: of the segments that are selected or start at selected keys; of
// the ends of the curves concerned.
Json Session::interpolator(const Json& arguments) {
    const std::string where = Get(arguments, "where", std::string("segments"));
    const std::string text = Get(arguments, "text", std::string());
    const auto chosen = InterpolatorOf(text);
    std::vector<std::shared_ptr<Segment>> segments;
    if (where == "segments") {
        for (const HitRecord& part : selected()) {
            auto segment = part.getSegment();
            if (const auto key = part.getKeyframe(); key && IsEditableKey(*key)) segment = key->getRightSegment();
            const auto curve = segment ? segment->getOwningCurve() : nullptr;
            // The end after the last key has a menu of its own.
            const bool isInside = segment && (segment->getRightKey() || part.getType() == HitRecord::SEGMENT);
            if (curve && !IsLocked(*curve) && isInside) segments.push_back(segment);
        }
        if (segments.empty()) throw refusal("Select a segment, or the key where it starts.");
    } else {
        for (const auto& curve : targetCurves()) {
            auto it = where == "before" ? curve->begin() : std::prev(curve->end());
            segments.push_back(it->getShared());
        }
        if (segments.empty()) throw Refusal("There is no curve that is not locked.");
    }
    EditGroup group(m_selection, "Set interpolator");
    for (const auto& segment : segments) segment->setInterpolator(chosen);
    group.end();
    return {{"segments", segments.size()}};
}

// {"text"}: {} where it can be used, else {"message", "position"}, in characters of UTF-16 as the page counts them.
Json Session::checkFormula(const Json& arguments) {
    const std::string text = Get(arguments, "text", std::string());
    if (isKind(text) || isKind(text + "()")) return Json::object();
    try {
        DefaultFallbackParser().parseOrThrow(text.c_str());
        return Json::object();
    } catch (const DefaultFallbackParser::ParseError& error) {
        if (!std::dynamic_pointer_cast<UnknownExpression>(InterpolatorFactory::create(text.c_str())))
            return Json::object();
        std::size_t position = 0;
        for (std::size_t i = 0; i < error.getPosition() && i < text.size(); ++i) {
            const auto byte = static_cast<unsigned char>(text[i]);
            if ((byte & 0xC0U) != 0x80U) position += byte >= 0xF0U ? 2 : 1;
        }
        return {{"message", error.getMessage()}, {"position", position}};
    }
}

Json Session::copy(const Json&) {
    const KeyClip clip = CopyKeys(m_selection);
    if (clip.empty()) throw Refusal("No key is selected.");
    // A comment tells copied keys from a document that was copied as text: the page opens one, and pastes the other.
    return {{"text", "# copied keys\n" + ToUtf8(ClipToText(clip).c_str())}, {"keys", clip.size()}};
}

Json Session::cut(const Json&) {
    Json result = copy(Json::object());
    removeKeys({{"quiet", true}});
    return result;
}

// {"text", "frame", "mode": "insert" | "replace" | "ripple"}: onto curves of the same names; a clip of one curve whose
// name is not here goes to the active curve.
Json Session::paste(const Json& arguments) {
    const KeyClip clip = ClipFromText(Get(arguments, "text", std::string()));
    if (clip.empty()) throw Refusal("There are no keys in what was copied.");
    PasteOptions options;
    const std::string mode = Get(arguments, "mode", std::string("insert"));
    options.mode = mode == "replace"  ? PasteOptions::Replace
                   : mode == "ripple" ? PasteOptions::Ripple
                                      : PasteOptions::Insert;
    if (arguments.contains("frame")) options.frame = GetNumber(arguments, "frame");
    EditGroup group(m_selection, "Paste keys");
    PasteReport report;
    FCurve* const active = activeCurve();
    const auto names = [&](const FCurve& source) {
        return std::any_of(m_curves->begin(), m_curves->end(),
                           [&](const FCurve& curve) { return std::string(curve.getName()) == source.getName(); });
    };
    if (clip.getCurves().size() == 1 && active
        && (std::string(active->getName()) != clip.getCurves().begin()->getName())
        && (arguments.contains("frame") || !names(*clip.getCurves().begin()))) {
        if (IsLocked(*active)) throw Refusal("The curve is locked.");
        options.match = PasteOptions::ByOrder;
        report = PasteKeys(clip, {active->getShared()}, options);
    } else {
        std::vector<std::shared_ptr<FCurve>> open;
        for (FCurve& curve : *m_curves)
            if (!IsLocked(curve)) open.push_back(curve.getShared());
        report = PasteKeys(clip, open, options);
    }
    if (report.keys.empty()) throw Refusal("No curve here has the name of a copied one, or it is locked.");
    clearSelection();
    for (const auto& key : report.keys) m_selection.select(*key);
    group.end();
    Json unmatched = Json::array();
    for (const std::string& name : report.unmatched) unmatched.push_back(ToUtf8(name.c_str()));
    return {{"keys", report.keys.size()}, {"removed", report.removed}, {"unmatched", unmatched}};
}

Json Session::undo(const Json&) {
    dropPreview();
    if (m_drag) return dragCancel(Json::object());
    return {{"done", m_undo.undo()}};
}

Json Session::redo(const Json&) {
    dropPreview();
    if (m_drag) return dragCancel(Json::object());
    return {{"done", m_undo.redo()}};
}

} // namespace editor
