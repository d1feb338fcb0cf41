#include "Session.h"

#include <FCurveInterchange/Formats.h>
#include <FCurveLib/AxisTicks.h>
#include <FCurveLib/CurveColours.h>
#include <FCurveLib/DisplayProperties.h>
#include <FCurveLib/Evaluation.h>
#include <FCurveLib/Exception.h>
#include <FCurveLib/ExceptionFormatter.h>
#include <FCurveLib/Extents.h>
#include <FCurveLib/Interpolator.h>
#include <FCurveLib/Keys.h>
#include <FCurveLib/Rectangle.h>
#include <FCurveLib/Segment.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <sstream>

namespace editor {

namespace {

// Undo reaches back as far as this goes: some million moved keys.
constexpr std::size_t kUndoBytes = std::size_t{256} << 20;
// Fewer pixels a key than this, and no key is drawn but the selected ones; fewer than the second, and no handles.
constexpr double kLeastKeySpacing = 4.0;
constexpr double kLeastHandleSpacing = 20.0;
constexpr std::size_t kMostSelectedDrawn = 20000;

bool IsSame(const CurveView& a, const CurveView& b) {
    return a.left == b.left && a.right == b.right && a.bottom == b.bottom && a.top == b.top && a.width == b.width
           && a.height == b.height;
}

} // namespace

bool IsLockedKey(const Keyframe& key) {
    return *key.getProperty("fc_lock") != '\0';
}

bool IsEditableKey(const Keyframe& key) {
    const auto curve = key.getOwningCurve();
    return curve && !IsLocked(*curve) && IsEditable(*curve) && !IsLockedKey(key);
}

double GetNumber(const Json& arguments, const char* name) {
    const auto found = arguments.find(name);
    if (found == arguments.end() || !found->is_number()) throw Refusal(std::string(name) + " is not a number");
    const double number = found->get<double>();
    if (!std::isfinite(number)) throw Refusal(std::string(name) + " is not a finite number");
    return number;
}

std::string ToUtf8(const char* text) {
    // The writer of JSON replaces what is no UTF-8; reading that back gives the text.
    return Json::parse(Json(text).dump(-1, ' ', false, Json::error_handler_t::replace)).get<std::string>();
}

Session::Session()
    : m_curves(FCurveContainer::create()), m_selection(m_curves), m_undo(m_selection, kUndoBytes),
      m_examiner(m_selection) {
    Interchange::RegisterFormats();
    EditGroup::subscribe(*m_curves, *this);
}

Session::~Session() {
    if (m_drag) m_drag->group->end();
    EditGroup::unsubscribe(*m_curves, *this);
}

const std::unordered_map<std::string, Session::Command>& Session::commands() {
    static const std::unordered_map<std::string, Command> table = {
        {"state", &Session::state},
        {"options", &Session::setOptions},
        {"frame", &Session::frame},
        {"axis", &Session::axis},
        {"velocityRange", &Session::velocityRange},
        {"pick", &Session::pick},
        {"marquee", &Session::marquee},
        {"selectAll", &Session::selectAll},
        {"selectNone", &Session::selectNone},
        {"selectCurve", &Session::selectCurve},
        {"selectKey", &Session::selectKey},
        {"stepKey", &Session::stepKey},
        {"selectHandles", &Session::selectHandles},
        {"selectSegments", &Session::selectSegments},
        {"dragBegin", &Session::dragBegin},
        {"dragTo", &Session::dragTo},
        {"dragEnd", &Session::dragEnd},
        {"dragCancel", &Session::dragCancel},
        {"nudge", &Session::nudge},
        {"scale", &Session::scale},
        {"stretch", &Session::stretch},
        {"addKey", &Session::addKey},
        {"removeKeys", &Session::removeKeys},
        {"tangentType", &Session::tangentType},
        {"tangentFlag", &Session::tangentFlag},
        {"keyFlag", &Session::keyFlag},
        {"interpolator", &Session::interpolator},
        {"checkFormula", &Session::checkFormula},
        {"copy", &Session::copy},
        {"cut", &Session::cut},
        {"paste", &Session::paste},
        {"undo", &Session::undo},
        {"redo", &Session::redo},
        {"addCurve", &Session::addCurve},
        {"removeCurve", &Session::removeCurve},
        {"moveCurve", &Session::moveCurve},
        {"setCurve", &Session::setCurve},
        {"properties", &Session::properties},
        {"setProperty", &Session::setProperty},
        {"rows", &Session::rows},
        {"setRow", &Session::setRow},
        {"preview", &Session::preview},
        {"apply", &Session::apply},
        {"endPreview", &Session::endPreview},
        {"formats", &Session::formats},
        {"open", &Session::open},
        {"save", &Session::save},
        {"saved", &Session::saved},
        {"fill", &Session::fill},
    };
    return table;
}

std::string Session::call(const std::string& command, const std::string& arguments) {
    const auto fail = [](const std::string& message) {
        return Json({{"error", message}}).dump(-1, ' ', false, Json::error_handler_t::replace);
    };
    try {
        const auto found = commands().find(command);
        if (found == commands().end()) return fail("There is no command \"" + command + "\".");
        const bool wasClean = m_undo.isClean();
        m_isEdited = false;
        const Json result = (this->*found->second)(arguments.empty() ? Json::object() : Json::parse(arguments));
        // What is selected is no part of what is saved, though selecting can be undone.
        if (wasClean && !m_isEdited && !m_undo.isClean()) m_undo.setClean();
        return result.dump(-1, ' ', false, Json::error_handler_t::replace);
    } catch (const Refusal& refusal) {
        return fail(refusal.what());
    } catch (const Json::exception& error) {
        return fail(std::string("The arguments of \"") + command + "\" are wrong: " + error.what());
    } catch (...) {
        ExceptionFormatter::LibraryFormatter library;
        ExceptionFormatter formatter;
        formatter.addFormatter(library);
        std::ostringstream text;
        formatter.formatException(text);
        return fail(text.str());
    }
}

void Session::editStepped(const EditSummary& edit) {
    ++m_revision;
    if (edit.name != "Select") m_isEdited = true;
    if (!m_drag) m_isSelectedStale = true; // a drag selects nothing, and a walk over all keys would slow it down
    for (const CurveEdit& change : edit.curves) {
        m_drawn.erase(change.curve.get());
        const auto found = m_overviews.find(change.curve.get());
        if (found != m_overviews.end() && !change.parts.isEmpty())
            found->second->invalidate(change.parts.start, change.parts.end);
    }
    if (!edit.container) return;
    m_drawn.clear();
    for (auto it = m_overviews.begin(); it != m_overviews.end();)
        it = m_curves->contains(*it->first) ? std::next(it) : m_overviews.erase(it);
    for (auto it = m_scales.begin(); it != m_scales.end();)
        it = m_curves->contains(*it->first) ? std::next(it) : m_scales.erase(it);
}

void Session::editEnded(const EditSummary&) {
    ++m_revision;
}

FCurve& Session::curveAt(const Json& arguments, const char* name) const {
    const double number = GetNumber(arguments, name);
    if (!(number >= 0.0 && number < static_cast<double>(m_curves->size()))) throw Refusal("There is no such curve.");
    auto it = m_curves->begin();
    std::advance(it, static_cast<std::ptrdiff_t>(number));
    return *it;
}

int Session::indexOf(const FCurve& curve) const {
    int index = 0;
    for (const FCurve& other : *m_curves) {
        if (&other == &curve) return index;
        ++index;
    }
    return -1;
}

FCurve* Session::activeCurve() const {
    const auto active = m_active.lock();
    if (active && m_curves->contains(*active)) return active.get();
    return m_curves->empty() ? nullptr : &*m_curves->begin();
}

CurveView Session::viewOf(const FCurve& curve, const CurveView& view) const {
    if (!m_isSeparate) return view;
    auto found = m_scales.find(&curve);
    if (found == m_scales.end()) {
        Frame range;
        Rectangle<double> box;
        if (GetInteriorExtents(curve, box)) {
            range = {box.y, box.y + box.height};
            if (!(box.height > 1e-9 * std::max(1.0, std::fabs(box.y)))) range = {box.y - 0.5, box.y + 0.5};
        }
        found = m_scales.emplace(&curve, range).first;
    }
    const Frame& range = found->second;
    CurveView own = view;
    own.bottom = range.low + view.bottom * (range.high - range.low);
    own.top = range.low + view.top * (range.high - range.low);
    return own;
}

// What 1 on the axis is in the active curve's values.
double Session::valueUnit() const {
    const FCurve* const active = activeCurve();
    if (!active) return 1.0;
    const CurveView view = viewOf(*active, m_view);
    return (view.top - view.bottom) / (m_view.top - m_view.bottom);
}

CurveOverview& Session::overviewOf(const FCurve& curve) {
    auto& overview = m_overviews[&curve];
    if (!overview) overview = std::make_unique<CurveOverview>(curve.getShared());
    return *overview;
}

const std::vector<HitRecord>& Session::selected() {
    if (m_isSelectedStale) {
        m_selected.clear();
        m_selectedCurves.clear();
        for (auto it = m_selection.begin(), end = m_selection.end(); it != end; ++it) {
            m_selected.push_back(*it);
            m_selectedCurves.insert(m_selected.back().getCurve().get());
        }
        m_isSelectedStale = false;
    }
    return m_selected;
}

std::vector<std::shared_ptr<Keyframe>> Session::selectedKeys() {
    std::vector<std::shared_ptr<Keyframe>> keys;
    for (const HitRecord& part : selected())
        if (part.getType() == HitRecord::KEYFRAME) keys.push_back(part.getKeyframe());
    return keys;
}

std::vector<std::shared_ptr<Keyframe>> Session::editableKeys() {
    auto keys = selectedKeys();
    const bool any = !keys.empty();
    keys.erase(std::remove_if(keys.begin(), keys.end(), [](const auto& key) { return !IsEditableKey(*key); }),
               keys.end());
    if (any && keys.empty()) throw refusal("The selected keys cannot be edited.");
    return keys;
}

std::vector<std::shared_ptr<Tangent>> Session::editableHandles() {
    std::vector<std::shared_ptr<Tangent>> handles;
    for (const HitRecord& part : selected()) {
        const auto tangent = part.getTangent();
        const auto key = tangent ? tangent->getOwningKeyframe() : nullptr;
        if (key && IsEditableKey(*key)) handles.push_back(tangent);
    }
    return handles;
}

// Why nothing of what is selected can be edited: locks, else as said.
Refusal Session::refusal(const char* otherwise) {
    bool isKeyLocked = false;
    for (const HitRecord& part : selected()) {
        const auto curve = part.getCurve();
        if (curve && IsLocked(*curve)) return Refusal("The curve " + ToUtf8(curve->getName()) + " is locked.");
        auto key = part.getKeyframe();
        if (const auto tangent = part.getTangent()) key = tangent->getOwningKeyframe();
        isKeyLocked = isKeyLocked || (key && IsLockedKey(*key));
    }
    return Refusal(isKeyLocked ? "What is selected is locked." : otherwise);
}

// Whatever a tool should work on: the curves of which something is selected, else the active one.
std::vector<std::shared_ptr<FCurve>> Session::targetCurves() {
    std::vector<std::shared_ptr<FCurve>> curves;
    std::set<const FCurve*> seen;
    for (const HitRecord& part : selected())
        if (auto curve = part.getCurve(); curve && seen.insert(curve.get()).second) curves.push_back(std::move(curve));
    if (curves.empty())
        if (FCurve* active = activeCurve()) curves.push_back(active->getShared());
    curves.erase(std::remove_if(curves.begin(), curves.end(), [](const auto& curve) { return IsLocked(*curve); }),
                 curves.end());
    return curves;
}

void Session::clearSelection() {
    for (const HitRecord& part : std::vector<HitRecord>(selected())) m_selection.deselect(part);
    m_isSelectedStale = true;
}

const std::vector<double>& Session::draw(const CurveView& view, ViewPolyline::Quantity quantity) {
    m_numbers.clear();
    if (!view.isValid()) return m_numbers;
    int index = 0;
    const bool isVelocity = quantity != ViewPolyline::Value;
    const bool isAnyMarked = isVelocity && marksVelocity();
    for (const FCurve& curve : *m_curves) {
        if (IsVisible(curve) && (!isAnyMarked || IsVelocityVisible(curve)))
            drawCurve(curve, index, false, view, quantity);
        ++index;
    }
    for (const auto& [number, curve] : m_preview) drawCurve(*curve, number, true, view, quantity);
    return m_numbers;
}

void Session::drawCurve(const FCurve& curve, int index, bool isPreview, const CurveView& view,
                        ViewPolyline::Quantity quantity) {
    const bool isValue = quantity == ViewPolyline::Value;
    CurveView own = view;
    if (isValue && isPreview && m_isSeparate) {
        auto it = m_curves->begin();
        std::advance(it, index);
        own = viewOf(*it, view);
    } else if (isValue) {
        own = viewOf(curve, view);
    }
    selected();
    const double isSelected = m_selectedCurves.count(&curve) != 0 ? 1.0 : 0.0;
    if (isPreview) {
        ViewLine(curve, own, m_line, quantity);
        m_numbers.insert(m_numbers.end(), {static_cast<double>(index), 1.0, isSelected, ++m_stamp});
        drawLine(m_line);
        m_numbers.insert(m_numbers.end(), {0.0, 0.0});
        return;
    }

    Drawn& drawn = m_drawn[&curve][isValue ? 0 : 1];
    const bool isKnown = drawn.stamp > 0.0 && IsSame(drawn.view, own);
    const double stamp = isKnown ? drawn.stamp : ++m_stamp;
    m_numbers.insert(m_numbers.end(), {static_cast<double>(index), 0.0, isSelected, stamp});
    if (isKnown) {
        m_numbers.insert(m_numbers.end(), drawn.numbers.begin(), drawn.numbers.end());
        return;
    }
    const std::size_t first = m_numbers.size();
    if (isValue) {
        ViewLine(overviewOf(curve), own, m_line);
        drawLine(m_line);
        drawParts(curve, own);
    } else {
        ViewLine(curve, own, m_line, quantity);
        drawLine(m_line);
        m_numbers.insert(m_numbers.end(), {0.0, 0.0});
    }
    drawn.stamp = 0.0; // should memory run out
    drawn.numbers.assign(m_numbers.begin() + static_cast<std::ptrdiff_t>(first), m_numbers.end());
    drawn.view = own;
    drawn.stamp = stamp;
}

void Session::drawLine(const ViewPolyline& line) {
    const auto put = [this](auto... numbers) { (m_numbers.push_back(static_cast<double>(numbers)), ...); };
    put(line.strokes.size());
    for (const ViewPolyline::Stroke& stroke : line.strokes) {
        put(static_cast<int>(stroke.place), stroke.count);
        for (std::size_t i = stroke.first; i < stroke.first + stroke.count; ++i)
            put(line.points[i].x, line.points[i].y);
    }
    put(line.jumps.size());
    for (const ViewPolyline::Jump& jump : line.jumps) put(jump.x, jump.from, jump.to);
}

void Session::drawParts(const FCurve& curve, const CurveView& view) {
    const double margin = 12.0 / view.pixelsPerFrame();
    const auto flagsOf = [this](const Keyframe& key) {
        return (m_selection.isSelected(key) ? KeySelected : 0U) | (key.isBreakdown() ? KeyBreakdown : 0U)
               | (IsLockedKey(key) ? KeyLocked : 0U);
    };
    const auto mostKeys = static_cast<std::size_t>(view.width / kLeastKeySpacing);
    std::vector<const Segment*> shown; // those that start at a key in view
    auto it = curve.findSegment(view.left - margin);
    if (it == curve.begin()) ++it;
    bool isDense = false;
    for (; it != curve.end() && !isDense; ++it) {
        if (it->getLeftKey()->getX() > view.right + margin) break;
        shown.push_back(&*it);
        isDense = shown.size() > mostKeys;
    }

    const std::size_t countAt = m_numbers.size();
    std::size_t count = 0;
    m_numbers.push_back(0.0);
    const auto putKey = [&](const Keyframe& key) {
        m_numbers.insert(m_numbers.end(),
                         {view.toPixelX(key.getX()), view.toPixelY(key.getY()), static_cast<double>(flagsOf(key))});
        ++count;
    };
    if (isDense) {
        for (const HitRecord& part : selected()) {
            if (part.getType() != HitRecord::KEYFRAME || count >= kMostSelectedDrawn) continue;
            const Keyframe& key = *part.getKeyframe();
            if (key.getX() >= view.left - margin && key.getX() <= view.right + margin
                && part.getCurve().get() == &curve) {
                putKey(key);
            }
        }
    } else {
        for (const Segment* segment : shown) putKey(*segment->getLeftKey());
    }
    m_numbers[countAt] = static_cast<double>(count);

    const std::size_t handlesAt = m_numbers.size();
    m_numbers.push_back(0.0);
    if (isDense || static_cast<double>(shown.size()) * kLeastHandleSpacing > view.width) return;
    std::size_t handles = 0;
    const double scale = GetTangentScale(curve);
    const auto putHandle = [&](const Segment& segment, const Keyframe& key, const Tangent& tangent) {
        const auto interpolator = segment.getInterpolator();
        if (!interpolator || !interpolator->usesTangents()) return;
        const Vector2D<double> tip(key.getX() + scale * tangent.getX(), key.getY() + scale * tangent.getY());
        m_numbers.insert(m_numbers.end(), {view.toPixelX(key.getX()), view.toPixelY(key.getY()), view.toPixelX(tip.x),
                                           view.toPixelY(tip.y), m_selection.isSelected(tangent) ? 1.0 : 0.0});
        ++handles;
    };
    for (const Segment* segment : shown) {
        const auto key = segment->getLeftKey();
        putHandle(*key->getLeftSegment(), *key, *key->getInTangent());
        putHandle(*segment, *key, *key->getOutTangent());
    }
    m_numbers[handlesAt] = static_cast<double>(handles);
}

const std::vector<double>& Session::valuesAt(double frame) {
    m_numbers.clear();
    for (const FCurve& curve : *m_curves) m_numbers.push_back(curve.eval(frame));
    return m_numbers;
}

Json Session::state(const Json&) {
    Json curves = Json::array();
    std::vector<std::string> names;
    for (const FCurve& curve : *m_curves) names.emplace_back(curve.getName());
    const auto colours = ChooseCurveColours(names);
    const FCurve* const active = activeCurve();
    std::size_t index = 0;
    for (const FCurve& curve : *m_curves) {
        const CurveView own = viewOf(curve, CurveView());
        curves.push_back({{"name", curve.getName()},
                          {"low", own.bottom},
                          {"high", own.top},
                          {"colour", colours[index++]},
                          {"visible", IsVisible(curve)},
                          {"locked", IsLocked(curve)},
                          {"velocity", IsVelocityVisible(curve)},
                          {"selected", m_selection.isSelected(curve)},
                          {"keys", curve.size() - 1}});
    }
    std::size_t keys = 0;
    std::size_t handles = 0;
    std::size_t segments = 0;
    for (const HitRecord& part : selected()) {
        keys += part.getType() == HitRecord::KEYFRAME ? 1U : 0U;
        handles += part.isTangent() ? 1U : 0U;
        segments += part.getType() == HitRecord::SEGMENT ? 1U : 0U;
    }
    return {{"curves", curves},
            {"active", active ? indexOf(*active) : -1},
            {"canUndo", m_undo.canUndo()},
            {"canRedo", m_undo.canRedo()},
            {"undo", m_undo.getUndoName()},
            {"redo", m_undo.getRedoName()},
            {"clean", m_undo.isClean()},
            {"separate", m_isSeparate},
            {"selectedKeys", keys},
            {"selectedHandles", handles},
            {"selectedSegments", segments},
            {"undoBytes", m_undo.getBytes()}};
}

Json Session::setOptions(const Json& arguments) {
    const bool separate = Get(arguments, "separate", m_isSeparate);
    if (separate != m_isSeparate) forgetScales();
    m_isSeparate = separate;
    ++m_revision;
    return Json::object();
}

// The box to show: {"what": "all" | "selected"}. Null where there is nothing.
Json Session::frame(const Json& arguments) {
    forgetScales();
    if (m_isSeparate) ++m_revision;
    Rectangle<double> box;
    bool found = false;
    if (Get(arguments, "what", std::string("all")) == "selected") found = GetSelectedExtents(m_selection, box);
    if (!found) found = GetVisibleExtents(*m_curves, m_selection, box);
    if (!found) return nullptr;
    double low = box.y;
    double high = box.y + box.height;
    if (m_isSeparate) {
        low = 0.0;
        high = 1.0;
    }
    return {{"left", box.x}, {"right", box.x + box.width}, {"bottom", low}, {"top", high}};
}

Json Session::axis(const Json& arguments) {
    const AxisTicks ticks =
        MakeAxisTicks(GetNumber(arguments, "low"), GetNumber(arguments, "high"), Get(arguments, "most", 10));
    Json marks = Json::array();
    for (const auto& mark : ticks.marks) marks.push_back({mark.value, mark.label});
    return {{"marks", marks}, {"exponent", ticks.exponent}};
}

// The curves that are marked for it show their velocity; without any mark all do.
bool Session::marksVelocity() const {
    return std::any_of(m_curves->begin(), m_curves->end(), &IsVelocityVisible);
}

// Of the curves that show their velocity, in the frames of the view. Without the steepest fiftieth, so that a jump does
// not flatten the rest.
Json Session::velocityRange(const Json&) {
    constexpr int kLooks = 500;
    std::vector<double> slopes = {0.0};
    const bool isAnyMarked = marksVelocity();
    for (const FCurve& curve : *m_curves) {
        if (curve.size() < 2 || !IsVisible(curve) || (isAnyMarked && !IsVelocityVisible(curve))) continue;
        for (int i = 0; i <= kLooks; ++i) {
            const double slope = GetFirstDerivative(curve, m_view.left + (m_view.right - m_view.left) * i / kLooks);
            if (std::isfinite(slope)) slopes.push_back(slope);
        }
    }
    std::sort(slopes.begin(), slopes.end());
    const std::size_t cut = slopes.size() / 100;
    double low = std::min(slopes[cut], 0.0);
    double high = std::max(slopes[slopes.size() - 1 - cut], 0.0);
    if (!(high - low > 1e-12)) {
        low -= 1.0;
        high += 1.0;
    }
    return {{"low", low}, {"high", high}};
}

} // namespace editor
