#include "Session.h"

#include <FCurveLib/DisplayProperties.h>
#include <FCurveLib/IndexLookup.h>
#include <FCurveLib/Interpolator.h>
#include <FCurveLib/InterpolatorFactory.h>
#include <FCurveLib/Keys.h>
#include <FCurveLib/Segment.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>

namespace editor {

namespace {

// null where there is no part, {"mixed": true} where they differ, else {"value": ...}.
template<class T>
Json toJson(const Examined<T>& examined) {
    if (examined.isNone()) return nullptr;
    if (examined.isMixed()) return {{"mixed", true}};
    return {{"value", examined.getValue()}};
}

constexpr double kUpright = 1.5707963267948966;

const char* expressionOf(const Segment& segment) {
    const auto interpolator = segment.getInterpolator();
    return interpolator ? interpolator->getExpression() : "constant()";
}

} // namespace

// {"name"}: a curve with a key at frame 0, so that there is something to see and to grab.
Json Session::addCurve(const Json& arguments) {
    const auto curve = FCurve::create();
    curve->setName(Get(arguments, "name", std::string("curve")).c_str());
    curve->insertSegment(*Keyframe::create(0.0, 0.0), InterpolatorFactory::create("bezier()"));
    std::prev(curve->end())->setInterpolator(InterpolatorFactory::create("constant()"));
    EditGroup group(m_selection, "New curve");
    m_curves->addCurve(curve);
    group.end();
    m_active = curve;
    return {{"curve", m_curves->size() - 1}};
}

Json Session::removeCurve(const Json& arguments) {
    FCurve& curve = curveAt(arguments);
    if (IsLocked(curve)) throw Refusal("The curve is locked.");
    EditGroup group(m_selection, "Delete curve");
    auto it = m_curves->begin();
    std::advance(it, indexOf(curve));
    m_curves->removeCurve(it);
    group.end();
    return Json::object();
}

// {"curve", "to"}: becomes number "to".
Json Session::moveCurve(const Json& arguments) {
    FCurve& curve = curveAt(arguments);
    const auto last = static_cast<double>(m_curves->size() - 1);
    const double to = std::clamp(GetNumber(arguments, "to"), 0.0, last);
    auto position = m_curves->begin();
    std::advance(position, static_cast<std::ptrdiff_t>(to) + (to > indexOf(curve) ? 1 : 0));
    EditGroup group(m_selection, "Reorder curves");
    m_curves->moveCurve(position, curve);
    group.end();
    return Json::object();
}

// {"curve", "name" | "visible" | "locked" | "velocity"}
Json Session::setCurve(const Json& arguments) {
    FCurve& curve = curveAt(arguments);
    EditGroup group(m_selection, arguments.contains("name") ? "Rename curve" : "Set display");
    if (arguments.contains("name")) curve.setName(arguments.at("name").get<std::string>().c_str());
    if (arguments.contains("visible")) SetVisible(curve, arguments.at("visible").get<bool>());
    if (arguments.contains("locked")) SetLocked(curve, arguments.at("locked").get<bool>());
    if (arguments.contains("velocity")) SetVelocityVisible(curve, arguments.at("velocity").get<bool>());
    group.end();
    return Json::object();
}

// Of the selection. The tangents are the selected handles; without any, those of the selected keys, by side. The
// segments likewise: those that start at the selected keys where none is selected itself.
Json Session::properties(const Json&) {
    const auto& keys = m_examiner.getKeyframes();
    const auto& tangents = m_examiner.getTangents();
    const auto& segments = m_examiner.getSegments();
    Json result = {{"keys",
                    {{"count", keys.count},
                     {"x", toJson(keys.x)},
                     {"y", toJson(keys.y)},
                     {"breakdown", toJson(keys.breakdown)},
                     {"unified", toJson(keys.tangentsUnified)},
                     {"locked", toJson(keys.locked)}}}};
    struct Side {
        Examined<int> type;
        Examined<double> angle;
        Examined<double> weight;
        Examined<bool> weighted;
        Examined<bool> weightLocked;
        void include(const Tangent& tangent) {
            type.include(static_cast<int>(tangent.getType()));
            angle.include(tangent.getAngle());
            weight.include(tangent.getWeight());
            weighted.include(tangent.isWeighted());
            weightLocked.include(tangent.isWeightLocked());
        }
        Json json() const {
            return {{"type", toJson(type)},
                    {"angle", toJson(angle)},
                    {"weight", toJson(weight)},
                    {"weighted", toJson(weighted)},
                    {"weightLocked", toJson(weightLocked)}};
        }
    };
    if (tangents.count > 0) {
        result["tangents"] = {{"type", toJson(tangents.type)},
                              {"angle", toJson(tangents.angle)},
                              {"weight", toJson(tangents.weight)},
                              {"weighted", toJson(tangents.weighted)},
                              {"weightLocked", toJson(tangents.weightLocked)}};
    } else if (keys.count > 0) {
        Side in;
        Side out;
        for (const auto& key : selectedKeys()) {
            if (!key->getOwningCurve()) continue;
            in.include(*key->getInTangent());
            out.include(*key->getOutTangent());
        }
        result["in"] = in.json();
        result["out"] = out.json();
    }
    Examined<std::string> expression = segments.expression;
    if (segments.count == 0)
        for (const auto& key : selectedKeys())
            if (const auto segment = key->getRightSegment(); segment && segment->getRightKey())
                expression.include(std::string(expressionOf(*segment)));
    if (!expression.isNone())
        result["expression"] =
            expression.isMixed() ? Json{{"mixed", true}} : Json{{"value", ToUtf8(expression.getValue().c_str())}};
    Examined<std::string> before;
    Examined<std::string> after;
    for (const auto& curve : targetCurves()) {
        before.include(std::string(expressionOf(*curve->begin())));
        after.include(std::string(expressionOf(*std::prev(curve->end()))));
    }
    result["before"] = toJson(before);
    result["after"] = toJson(after);
    return result;
}

// {"field", "value", "relative", "others"}: fields "x", "y" of the selected keys; "angle" (radians), "weight" of the
// selected handles, or with "side" of those of the selected keys.
Json Session::setProperty(const Json& arguments) {
    const std::string field = Get(arguments, "field", std::string());
    const double value = GetNumber(arguments, "value");
    const std::string side = Get(arguments, "side", std::string());
    if (field == "x" || field == "y") {
        const auto keys = editableKeys();
        if (keys.empty()) throw Refusal("No key is selected.");
        const bool isX = field == "x";
        const MoveOptions options = MoveOptionsOf(arguments);
        if (Get(arguments, "relative", false)) {
            KeyGroup group(keys);
            EditGroup edit(m_selection, "Move keys");
            const Vector2D<double> by(isX ? value : 0.0, isX ? 0.0 : value);
            CheckArrived(!MoveKeys(group, by, options).isLimited, options);
            edit.end();
            return Json::object();
        }
        std::set<const FCurve*> curves;
        for (const auto& key : keys)
            if (isX && !curves.insert(key->getOwningCurve().get()).second)
                throw Refusal("Two keys of one curve cannot stand at the same frame.");
        EditGroup edit(m_selection, isX ? "Set frame" : "Set value");
        for (const auto& key : keys) {
            if (isX)
                TakeToFrame(*key, value, options);
            else
                key->setY(value);
        }
        edit.end();
        return Json::object();
    }
    if (field != "angle" && field != "weight") throw Refusal("There is no field \"" + field + "\".");
    const bool isAngle = field == "angle";
    if (isAngle && !(std::fabs(value) < kUpright))
        throw Refusal("An angle lies between -90 and 90 degrees: a handle does not point across its key.");
    if (!isAngle && !(value > 0.0)) throw Refusal("The length of a handle is more than 0.");
    std::vector<std::shared_ptr<Tangent>> tangents;
    for (const HitRecord& part : selected()) {
        if (const auto tangent = part.getTangent(); tangent && side.empty()) tangents.push_back(tangent);
        if (const auto key = part.getKeyframe(); key && !side.empty())
            tangents.push_back(side == "in" ? key->getInTangent() : key->getOutTangent());
    }
    const char* reason = "Select keys or handles first.";
    std::size_t count = 0;
    EditGroup edit(m_selection, isAngle ? "Set angle" : "Set weight");
    for (const auto& tangent : tangents) {
        const auto key = tangent->getOwningKeyframe();
        if (!key || !IsEditableKey(*key)) continue;
        if (!isAngle && (!tangent->isWeighted() || tangent->isWeightLocked())) {
            reason = tangent->isWeighted() ? "The length is locked: Shift+W, or \"Length locked\", takes that off."
                                           : "The length of a handle that is not weighted follows from its segment: "
                                             "make it weighted (W) first.";
            continue;
        }
        ++count;
        if (tangent->getType() != Tangent::Fixed && (isAngle || tangent->getType() != Tangent::Flat))
            tangent->setType(Tangent::Fixed);
        if (isAngle)
            tangent->setAngle(value);
        else
            tangent->setWeight(value);
    }
    if (count == 0) throw refusal(reason);
    edit.end();
    return Json::object();
}

// {"curve", "first", "count"}: of the curve's keys.
Json Session::rows(const Json& arguments) {
    FCurve& curve = curveAt(arguments);
    const std::size_t size = curve.size() - 1;
    const auto first = std::min(static_cast<std::size_t>(std::max(0.0, GetNumber(arguments, "first"))), size);
    const auto count = std::min(
        {static_cast<std::size_t>(std::max(0.0, GetNumber(arguments, "count"))), size - first, std::size_t{1000}});
    Json rows = Json::array();
    auto it = GetIndexedSegmentIterator(curve, static_cast<int>(first) + 1);
    for (std::size_t i = 0; i < count; ++i, ++it) {
        const auto key = it->getLeftKey();
        rows.push_back({{"x", key->getX()},
                        {"y", key->getY()},
                        {"in", static_cast<int>(key->getInTangent()->getType())},
                        {"out", static_cast<int>(key->getOutTangent()->getType())},
                        {"kind", ToUtf8(expressionOf(*it))},
                        {"selected", m_selection.isSelected(*key)}});
    }
    return {{"size", size}, {"first", first}, {"rows", rows}};
}

// {"curve", "key", "field", "value", "others"}: "x" and "y" of the key; "in" and "out", a type of its tangents; "kind",
// the interpolator of the segment that starts there.
Json Session::setRow(const Json& arguments) {
    FCurve& curve = curveAt(arguments);
    const auto key = GetIndexedKeyframe(curve, static_cast<int>(GetNumber(arguments, "key")));
    if (!key) throw Refusal("There is no such key.");
    if (!IsEditableKey(*key)) throw Refusal(IsLocked(curve) ? "The curve is locked." : "The key is locked.");
    const std::string field = Get(arguments, "field", std::string("y"));
    if (field == "in" || field == "out") {
        const std::uint8_t type = TangentTypeOf(Get(arguments, "value", std::string()));
        EditGroup group(m_selection, "Set tangents");
        SetTangentType(field == "in" ? *key->getInTangent() : *key->getOutTangent(), type);
        group.end();
        return Json::object();
    }
    if (field == "kind") {
        const auto interpolator = InterpolatorOf(Get(arguments, "value", std::string()));
        EditGroup group(m_selection, "Set interpolator");
        key->getRightSegment()->setInterpolator(interpolator);
        group.end();
        return Json::object();
    }
    if (field != "x" && field != "y") throw Refusal("There is no field \"" + field + "\".");
    const double value = GetNumber(arguments, "value");
    EditGroup group(m_selection, field == "x" ? "Set frame" : "Set value");
    if (field == "x")
        TakeToFrame(*key, value, MoveOptionsOf(arguments));
    else
        key->setY(value);
    group.end();
    return {{"x", key->getX()}, {"y", key->getY()}};
}

} // namespace editor
