// An edit script: the bytes are calls on three curves, their container and a selection, also from inside notifications
// and on parts that have left their curve. The curves that a call touched are sound after it, and within the first
// notification of every fourth; at the end all are.

#include "Require.h"
#include "ScriptBytes.h"
#include "Survival.h"
#include "support/Invariants.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cmath>
#include <deque>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace Fuzz {

namespace {

constexpr int kEdits = 64;            // of a script
constexpr int kDepth = 3;             // of edits from inside notifications
constexpr std::size_t kSegments = 24; // of a curve, from which on nothing is inserted
constexpr double kSamples = 60.0;     // of a bake
constexpr double kFarthest = 1e300;   // position up to which the library's arithmetic does not overflow

class Script final : FCurveObserver, ContainerObserver, SelectionObserver {
public:
    /// Thorough, it also asks for extents, and writes and reads in every format what is there at the end.
    Script(const std::uint8_t* data, std::size_t size, bool thorough)
        : m_bytes(data, size), m_container(FCurveContainer::create()), m_measures(thorough), m_thorough(thorough) {
        for (auto& curve : m_curves) {
            curve = FCurve::create();
            m_container->addCurve(curve);
        }
        m_selection.emplace(m_container);
        m_selection->subscribe(*this);
        m_container->subscribe(*this);
        FCurve::subscribeGlobal(*this);
    }
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;
    ~Script() override {
        FCurve::unsubscribeGlobal(*this);
        FCurve::setChangeType(FCurve::OrdinaryChange);
    }

    void run() {
        while (!m_bytes.ended() && m_edits < kEdits) edit();
        FCurve::unsubscribeGlobal(*this);
        for (const auto& curve : m_curves) {
            curve->unsubscribe(*this);
            const auto copy = FCurve::createCopy(*curve);
            RequireNone(Test::Difference(*curve, *copy), "a copy is equal");
            requireSound(*curve);
            requireSound(*copy);
            if (m_thorough) RequireSurvival(*curve);
        }
    }

private:
    using Part = std::variant<std::shared_ptr<FCurve>, std::shared_ptr<Segment>, std::shared_ptr<Keyframe>,
                              std::shared_ptr<Tangent>>;

    // --- notifications ---------------------------------------------------------------------------------------------

    void curveChanged(FCurve& curve) override { heard(&curve); }
    void containerChanged(FCurveContainer&) override { heard(nullptr); }
    void selected(const HitRecord& part) override {
        Require(part.getAddress() != nullptr, "a selected part is named");
        heard(nullptr);
    }
    void deselected(const HitRecord& part) override {
        Require(part.getAddress() != nullptr, "a deselected part is named");
        heard(nullptr);
    }
    void selectionCleared() override { heard(nullptr); }

    void heard(FCurve* curve) {
        if (curve && m_edits % 4 == 0 && !std::exchange(m_heard, true)) requireSound(*curve);
        if (m_armed == 0 || --m_armed > 0 || m_depth >= kDepth) return;
        ++m_depth;
        edit();
        --m_depth;
    }

    // --- what must hold --------------------------------------------------------------------------------------------

    static void requireFinite(FCurve& curve) {
        for (Segment& segment : curve) {
            if (const auto key = segment.getLeftKey())
                Require(std::isfinite(key->getX()) && std::isfinite(key->getY()), "keys are finite");
            const auto in = segment.getInTangent();
            const auto out = segment.getOutTangent();
            Require(std::isfinite(in->getX()) && std::isfinite(in->getY()), "in handles are finite");
            Require(std::isfinite(out->getX()) && std::isfinite(out->getY()), "out handles are finite");
            Require(in->getX() <= 0.0 && out->getX() >= 0.0, "handles do not point across their keys");
        }
    }

    static void requireSound(FCurve& curve) {
        RequireNone(Test::Fault(curve), "the curve is sound");
        requireFinite(curve);
    }

    // --- choices ---------------------------------------------------------------------------------------------------

    std::shared_ptr<FCurve>& place() {
        const unsigned chosen = m_bytes.below(static_cast<unsigned>(m_curves.size()));
        m_touched.set(chosen);
        return m_curves[chosen];
    }

    std::shared_ptr<FCurve> curve() { return place(); }

    std::shared_ptr<Segment> segment() {
        if (m_bytes.below(8) == 0)
            if (const auto* kept = std::get_if<std::shared_ptr<Segment>>(keptPart())) return *kept;
        const auto in = curve();
        return GetIndexedSegment(*in, static_cast<int>(m_bytes.below(static_cast<unsigned>(in->size()))));
    }

    // Empty for a curve without keys.
    std::shared_ptr<Keyframe> key() {
        if (m_bytes.below(8) == 0)
            if (const auto* kept = std::get_if<std::shared_ptr<Keyframe>>(keptPart())) return *kept;
        const auto in = curve();
        if (in->size() == 1) return nullptr;
        return GetIndexedKeyframe(*in, static_cast<int>(m_bytes.below(static_cast<unsigned>(in->size() - 1))));
    }

    std::shared_ptr<Tangent> tangent() {
        if (m_bytes.below(8) == 0)
            if (const auto* kept = std::get_if<std::shared_ptr<Tangent>>(keptPart())) return *kept;
        const auto of = segment();
        return m_bytes.coin() ? of->getInTangent() : of->getOutTangent();
    }

    std::shared_ptr<Interpolator> interpolator() {
        static const char* const expressions[] = {
            "bezier()",  "linear()", "constant()", "constant_next()", "spline()",        "ease()",   "easein()",
            "easeout()", "match()",  "matchin()",  "matchout()",      "cycle()",         "mirror()", "cycle_offset()",
            "2.5",       "sin(x)",   "x**2 % 7",   "cycle() + x",     "no such thing (", "1 / x"};
        const unsigned choice = m_bytes.below(static_cast<unsigned>(std::size(expressions)) + 1);
        if (choice == std::size(expressions)) return nullptr;
        return InterpolatorFactory::create(expressions[choice]);
    }

    const char* text() {
        static const char* const texts[] = {"", "1", "a", "fc_sel", "fc_isUnified", "ü\x01\xff<&>\"", "0"};
        return texts[m_bytes.below(std::size(texts))];
    }

    // A part of any curve, or of none.
    const Part* keptPart() {
        if (m_kept.empty()) return nullptr;
        m_touched.set();
        return &m_kept[m_bytes.byte() % m_kept.size()];
    }

    void keep(Part part) {
        if (!std::visit([](const auto& pointer) { return pointer != nullptr; }, part)) return;
        m_kept.push_back(std::move(part));
        if (m_kept.size() > 12) m_kept.pop_front();
    }

    // --- edits -----------------------------------------------------------------------------------------------------

    void edit() {
        if (++m_edits > kEdits) return;
        m_heard = false;
        using Call = void (Script::*)();
        static constexpr Call reading[] = {
            &Script::setProperty,  &Script::keepPart,  &Script::select,       &Script::selectWhole, &Script::walk,
            &Script::editContents, &Script::arm,       &Script::evaluate,     &Script::silence,     &Script::lookUp,
            &Script::makeParts,    &Script::subscribe, &Script::undoSelection};
        static constexpr Call calls[] = {
            &Script::insert,       &Script::insert,        &Script::remove,      &Script::moveKey,
            &Script::moveKey,      &Script::drag,          &Script::shape,       &Script::shape,
            &Script::setType,      &Script::setFlags,      &Script::replaceKind, &Script::swap,
            &Script::copy,         &Script::clear,         &Script::setProperty, &Script::keepPart,
            &Script::select,       &Script::selectWhole,   &Script::walk,        &Script::bake,
            &Script::smooth,       &Script::editContents,  &Script::arm,         &Script::evaluate,
            &Script::silence,      &Script::lookUp,        &Script::makeParts,   &Script::destroyCurve,
            &Script::subscribe,    &Script::assignTangent, &Script::transform,   &Script::cut,
            &Script::undoSelection};
        const Call call = calls[m_bytes.below(std::size(calls))];
        (this->*call)();
        if (std::find(std::begin(reading), std::end(reading), call) == std::end(reading)) requireTouchedSound();
        if (m_depth == 0) m_touched.reset();
    }

    void requireTouchedSound() {
        for (std::size_t i = 0; i < m_curves.size(); ++i)
            if (m_touched.test(i)) requireSound(*m_curves[i]);
    }

    void insert() {
        const auto in = curve();
        if (in->size() > kSegments) return;
        Keyframe made;
        made.set(m_bytes.number(), m_bytes.number());
        const unsigned flags = m_bytes.byte();
        made.setBreakdown((flags & 1) != 0);
        made.setTangentsUnified((flags & 2) != 0);
        if ((flags & 4) != 0) made.setProperty("p", "v");
        in->insertSegment(made, interpolator());
    }

    void remove() {
        const auto from = curve();
        auto position = GetIndexedSegmentIterator(*from, static_cast<int>(m_bytes.below(100)));
        if (m_bytes.coin() && position != from->end()) keep(position->getShared());
        from->removeSegment(position);
    }

    void moveKey() {
        if (const auto moved = key()) moved->set(m_bytes.number(), m_bytes.number());
    }

    void drag() {
        const auto moved = key();
        if (!moved) return;
        const auto notify = [&](FCurve::ChangeType type) {
            FCurve::setChangeType(type);
            if (const auto of = moved->getOwningCurve()) of->notifyChanged();
        };
        notify(FCurve::BeginChange);
        for (unsigned i = m_bytes.below(6); i > 0; --i) {
            moved->set(moved->getX() + m_bytes.small(), moved->getY() + m_bytes.small());
            notify(FCurve::StepChange);
        }
        notify(FCurve::EndChange);
        FCurve::setChangeType(FCurve::OrdinaryChange);
    }

    void shape() {
        const auto shaped = tangent();
        if (!shaped) return;
        switch (m_bytes.below(4)) {
        case 0:
            return shaped->set(m_bytes.number(), m_bytes.number());
        case 1:
            return shaped->setAngle(m_bytes.number());
        case 2:
            return shaped->setWeight(m_bytes.number());
        default:
            return shaped->setX(m_bytes.number());
        }
    }

    void setType() {
        if (const auto shaped = tangent()) shaped->setType(static_cast<std::uint8_t>(m_bytes.below(9)));
    }

    void setFlags() {
        const unsigned choice = m_bytes.below(4);
        const bool on = m_bytes.coin();
        if (choice < 2) {
            const auto of = tangent();
            if (of && choice == 0) of->setWeighted(on);
            if (of && choice == 1) of->setWeightLocked(on);
        } else {
            const auto of = key();
            if (of && choice == 2) of->setBreakdown(on);
            if (of && choice == 3) of->setTangentsUnified(on);
        }
    }

    void replaceKind() {
        const auto of = segment();
        of->setInterpolator(interpolator());
    }

    void swap() {
        const auto a = curve();
        const auto b = curve();
        a->swap(*b);
    }

    void copy() {
        const auto to = curve();
        const auto from = curve();
        *to = *from;
    }

    void clear() {
        const bool undisturbed = m_armed == 0;
        const auto cleared = curve();
        const auto part = cleared->begin()->getShared();
        keep(part->getRightKey());
        keep(part->getInTangent());
        keep(part);
        cleared->clear();
        if (undisturbed) Require(cleared->size() == 1, "a cleared curve has one segment");
    }

    template<class P>
    void setPropertyOf(P& part) {
        const char* const name = text();
        const char* const value = text();
        if (m_bytes.below(8) == 0) {
            part.clearProperties();
        } else {
            part.setProperty(name, value);
        }
    }

    void setProperty() {
        switch (m_bytes.below(6)) {
        case 0:
            return curve()->setName(text());
        case 1:
            return setPropertyOf(*curve());
        case 2:
            return setPropertyOf(*segment());
        case 3:
            if (const auto of = key()) setPropertyOf(*of);
            return;
        case 4:
            if (const auto of = tangent()) setPropertyOf(*of);
            return;
        default:
            return setPropertyOf(*m_container);
        }
    }

    void keepPart() {
        switch (m_bytes.below(4)) {
        case 0:
            return keep(curve());
        case 1:
            return keep(segment());
        case 2:
            return keep(key());
        default:
            return keep(tangent());
        }
    }

    HitRecord record() {
        switch (m_bytes.below(5)) {
        case 0:
            return curve();
        case 1:
            return segment();
        case 2:
            return key();
        case 3:
            return HitRecord(tangent(), m_bytes.coin());
        default:
            return {};
        }
    }

    void select() {
        const bool undisturbed = m_armed == 0;
        const HitRecord part = record();
        const bool on = m_bytes.coin();
        on ? m_selection->select(part) : m_selection->deselect(part);
        if (undisturbed && part.getAddress()) Require(m_selection->isSelected(part) == on, "selecting selects");
    }

    void selectWhole() {
        const bool undisturbed = m_armed == 0;
        const auto of = curve();
        switch (m_bytes.below(6)) {
        case 0:
            return SelectCurveCompletely(*m_selection, *of);
        case 1:
            return DeselectCurveCompletely(*m_selection, *of);
        case 2:
            return DeselectSelectedParts(*m_selection);
        case 3:
            return NotifyCurveChanges(*m_selection);
        case 4: {
            std::set<HitRecord, CompareRecord> parts;
            GetSelected(*m_selection, parts);
            m_selection->deselect(parts);
            return m_selection->select(parts);
        }
        default:
            m_selection->clear();
            if (undisturbed) Require(m_selection->begin() == m_selection->end(), "a cleared selection is empty");
        }
    }

    void walk() {
        std::size_t parts = 0;
        std::vector<const void*> forward;
        for (auto i = HitRecordIterator::begin(*m_container); i != HitRecordIterator::end(*m_container); ++i) {
            forward.push_back(i->getAddress());
            if (m_selection->isSelected(*i)) ++parts;
        }
        auto i = HitRecordIterator::end(*m_container);
        while (i != HitRecordIterator::begin(*m_container)) {
            --i;
            Require(!forward.empty() && forward.back() == i->getAddress(), "the walk backward is the walk forward");
            forward.pop_back();
        }
        Require(forward.empty(), "the walk backward reaches the beginning");
        for (const HitRecord& part : *m_selection) {
            Require(m_selection->isSelected(part), "a selection's parts are selected");
            --parts;
        }
        Require(parts == 0, "a selection has all selected parts");
    }

    // Whether sampling would give no more than a script can afford.
    static bool affordable(double start, double end, double step) {
        return !(step > 0.0) || !(end - start > kSamples * step);
    }
    static bool affordable(FCurve& curve, double step) {
        if (curve.size() == 1) return true;
        const double start = curve.begin()->getRightKey()->getX();
        return affordable(start - step, (--curve.end())->getLeftKey()->getX() + step, step);
    }

    void bake() {
        const auto of = curve();
        const double step = m_bytes.number();
        if (m_bytes.coin()) {
            if (affordable(*of, step)) BakeInterior(*of, step);
        } else {
            const double start = m_bytes.number();
            const double end = m_bytes.number();
            if (affordable(start, end, step)) BakeCurve(*of, start, end, step);
        }
    }

    void smooth() {
        const auto of = curve();
        const double step = m_bytes.number();
        const int width = static_cast<int>(m_bytes.below(20)) - 1;
        const auto filter = static_cast<SmoothFilter>(m_bytes.below(5));
        if (m_bytes.coin()) {
            if (affordable(*of, step)) SmoothCurveInterior(*of, step, width, filter);
        } else {
            const double start = m_bytes.number();
            const double end = m_bytes.number();
            if (affordable(start, end, step)) SmoothCurve(*of, start, end, step, width, filter);
        }
    }

    void editContents() {
        switch (m_bytes.below(3)) {
        case 0:
            m_container->addCurve(curve());
            return;
        case 1:
            if (!m_container->empty()) m_container->removeCurve(m_container->begin());
            return;
        default:
            return m_container->clear();
        }
    }

    // The next edit but a few happens inside a notification.
    void arm() { m_armed = m_bytes.below(8) + 1; }

    void evaluate() {
        const auto of = curve();
        const double x = m_bytes.number();
        of->eval(x);
        EvalInInterior(x, *of);
        GetFirstDerivativeLeft(*of, x);
        GetSecondDerivativeRight(*of, x);
        if (std::exchange(m_measures, false)) {
            Rectangle<double> box;
            if (GetInteriorExtents(*of, box)) Require(box.width >= 0.0 && box.height >= 0.0, "a box has a size");
            GetVisibleExtents(*m_container, *m_selection, box);
        }
        const Segment& at = *of->findSegment(x);
        const auto left = at.getLeftKey();
        const auto right = at.getRightKey();
        const auto kind = at.getInterpolator();
        if (!left || !right || !kind || std::abs(left->getX()) > kFarthest || std::abs(right->getX()) > kFarthest)
            return;
        std::vector<Vector2D<double>> points;
        kind->computePolyline(at, left->getX(), right->getX(), 17, points);
        for (std::size_t i = 1; i < points.size(); ++i)
            Require(points[i - 1].x <= points[i].x, "a polyline runs to the right");
    }

    void silence() {
        std::optional<FCurve::Switch> all;
        if (m_bytes.coin()) all.emplace();
        const FCurve::Switch one(*curve());
        if (m_depth >= kDepth) return;
        ++m_depth;
        edit();
        --m_depth;
    }

    void lookUp() {
        const auto in = curve();
        int i = 0;
        for (const Segment& at : *in) {
            Require(GetSegmentIndex(*in, at) == i, "a segment has its number");
            if (const auto left = at.getLeftKey())
                Require(GetKeyframeIndex(*in, *left) == i - 1, "a key has its number");
            ++i;
        }
        Require(!GetIndexedSegment(*in, i), "no segment after the last");
    }

    void makeParts() {
        const auto of = curve();
        const auto from = segment();
        const auto made = Segment::create(of, from->getLeftKey(), interpolator(), from->getRightKey());
        keep(made);
        const auto free = Keyframe::create(m_bytes.number(), m_bytes.number());
        free->setX(m_bytes.number());
        keep(free);
        if (const auto kind = made->getInterpolator()) kind->eval(m_bytes.number(), *made);
    }

    void destroyCurve() {
        auto& replaced = place();
        for (auto i = m_container->begin(); i != m_container->end(); ++i) {
            if (&*i == replaced.get()) {
                m_container->removeCurve(i);
                break;
            }
        }
        replaced = m_bytes.coin() ? FCurve::createCopy(*replaced) : FCurve::create();
        m_container->addCurve(replaced);
    }

    void subscribe() {
        const auto to = curve();
        m_bytes.coin() ? to->subscribe(*this) : to->unsubscribe(*this);
    }

    void assignTangent() {
        const auto to = tangent();
        const auto from = tangent();
        if (to && from) *to = *from;
    }

    void transform() {
        const auto of = curve();
        const std::size_t size = of->size();
        const bool undisturbed = m_armed == 0;
        if (m_bytes.coin()) {
            const Vector2D<double> scale{m_bytes.number(), m_bytes.number()};
            TransformCurve(*of, scale, {m_bytes.number(), m_bytes.number()});
        } else if (m_bytes.coin()) {
            FlipCurveAboutCentroid(*of, static_cast<FlipType>(m_bytes.below(4)));
        } else {
            const auto type = static_cast<FlipType>(m_bytes.below(4));
            const double centre = m_bytes.number();
            FlipCurve(*of, type, centre, m_bytes.number());
        }
        if (undisturbed) Require(of->size() == size, "a transformation keeps the number of keys");
    }

    void cut() {
        const auto of = curve();
        if (of->size() > kSegments) return;
        const std::size_t size = of->size();
        const bool undisturbed = m_armed == 0;
        const double x = m_bytes.number();
        const bool refused = PreviewBezierKeyframe(*of, x).outcome == KeyframeInsertion::Refused;
        InsertBezierKeyframe(*of, x);
        if (undisturbed) Require(of->size() == size + (refused ? 0 : 1), "an insertion does what its preview says");
    }

    void undoSelection() {
        const bool undisturbed = m_armed == 0;
        const SelectionSnapshot before(*m_selection);
        select();
        const SelectionSnapshot after(*m_selection);
        const std::size_t lost = before.restore(*m_selection);
        if (!undisturbed) return;
        Require(lost == 0 && SelectionSnapshot(*m_selection) == before, "a selection is brought back");
        SelectionSnapshot both(before);
        both.merge(after);
        both.subtract(after);
        Require(both.size() <= before.size(), "what is subtracted is gone");
    }

    ScriptBytes m_bytes;
    std::array<std::shared_ptr<FCurve>, 3> m_curves;
    std::shared_ptr<FCurveContainer> m_container;
    std::optional<Selection> m_selection;
    std::deque<Part> m_kept;
    std::bitset<3> m_touched; // by the edit that runs
    unsigned m_armed = 0;
    bool m_heard = false; // a notification since the last edit
    bool m_measures;      // deliberate: extents at most once, as those of formulas take longer than all the rest
    bool m_thorough;
    int m_depth = 0;
    int m_edits = 0;
};

} // namespace

} // namespace Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::Script(data, size, Fuzz::OneInSixteen(data, size)).run();
    return 0;
}
