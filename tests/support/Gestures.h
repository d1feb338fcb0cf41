#pragma once

// A host that edits a document by gestures, cancels, undoes and redoes at random, and compares with what it remembers:
// the document to the last bit and part by part, what a curve observer would have made of the calls, and what a view
// would have drawn anew from the summaries.

#include "support/Echo.h"
#include "support/Invariants.h"
#include "support/Random.h"
#include "support/SameCurve.h"

#include <map>
#include <optional>
#include <vector>

namespace Test {

/// What a document was.
class Remembered {
public:
    explicit Remembered(FCurveContainer& container) : m_copy(FCurveContainer::create()) {
        for (auto i = container.beginProperties(); i != container.endProperties(); ++i)
            m_copy->setProperty(i->first.c_str(), i->second.c_str());
        for (FCurve& curve : container) {
            m_copy->addCurve(FCurve::createCopy(curve));
            m_curves.push_back(curve.getShared());
        }
        m_parts = partsOf(container);
    }
    /// Empty where the container is the same again.
    std::string differenceTo(FCurveContainer& container) const {
        const std::string difference = Difference(*m_copy, container);
        if (!difference.empty()) return difference;
        return m_parts == partsOf(container) ? "" : "other objects";
    }

private:
    static std::vector<const void*> partsOf(FCurveContainer& container) {
        std::vector<const void*> parts;
        for (FCurve& curve : container) {
            parts.push_back(&curve);
            for (Segment& segment : curve) {
                parts.push_back(&segment);
                parts.push_back(segment.getInterpolator().get());
            }
        }
        return parts;
    }

    std::shared_ptr<FCurveContainer> m_copy;
    std::vector<std::shared_ptr<FCurve>> m_curves; // kept, so that no address is used twice
    std::vector<const void*> m_parts;
};

/// Draws anew only what the summaries tell, and looks whether anything else changed.
class SummaryView : public EditObserver {
public:
    std::string fault;
    int begun = 0;
    int ended = 0;

    void redraw(FCurveContainer& container) {
        m_drawn.clear();
        for (FCurve& curve : container) m_drawn[curve.getShared()] = FCurve::createCopy(curve);
        m_container = &container;
    }
    void editBegan(const EditSummary&) override { ++begun; }
    void editEnded(const EditSummary&) override { ++ended; }
    void editStepped(const EditSummary& edit) override {
        for (FCurve& curve : *m_container) {
            const auto drawn = m_drawn.find(curve.getShared());
            if (drawn == m_drawn.end()) continue;
            const CurveEdit* told = nullptr;
            for (const CurveEdit& one : edit.curves)
                if (one.curve.get() == &curve) told = &one;
            compare(*drawn->second, curve, told);
        }
        redraw(*m_container);
    }

private:
    void compare(const FCurve& before, FCurve& now, const CurveEdit* told) {
        if (!told && !Difference(before, now).empty()) fault = "nothing was told of " + Difference(before, now);
        if (told && !told->keys && before.size() != now.size()) fault = "nothing was told of keys";
        if (!told || now.size() == 1 || before.size() == 1) return;
        const auto inside = [](const FCurve& curve, double x) {
            return x >= curve.begin()->getRightKey()->getX() && x < (--curve.end())->getLeftKey()->getX();
        };
        for (const FCurve* curve : {&before, static_cast<const FCurve*>(&now)})
            for (const Segment& segment : *curve) {
                const auto left = segment.getLeftKey(), right = segment.getRightKey();
                const double start = left ? left->getX() : right->getX() - 3.0;
                const double end = right ? right->getX() : left->getX() + 3.0;
                for (const double x : {start + 0.25 * (end - start), start + 0.75 * (end - start)}) {
                    const bool repeated = told->repeats && !(inside(before, x) && inside(now, x));
                    if (repeated || (x >= told->values.start && x <= told->values.end)) continue;
                    const double was = before.eval(x), is = now.eval(x);
                    if (!(was == is || (std::isnan(was) && std::isnan(is))))
                        fault = std::string("told too little of ") + now.getName() + " at " + std::to_string(x);
                }
            }
    }

    std::map<std::shared_ptr<FCurve>, std::shared_ptr<FCurve>> m_drawn;
    FCurveContainer* m_container = nullptr;
};

class GestureHost {
public:
    /// Of curves in a container; another one stands beside it.
    GestureHost(Choices& choices, std::vector<std::shared_ptr<FCurve>> curves)
        : m_choices(choices), m_container(FCurveContainer::create()), m_spare(curves.back()), m_selection(m_container) {
        curves.pop_back();
        for (const auto& curve : curves) add(curve);
        m_echo.watch(*m_spare);
        m_stack.emplace(m_selection);
        EditGroup::subscribe(*m_container, m_view);
        m_states.emplace_back(*m_container);
    }

    /// The first thing that is wrong; empty when nothing is.
    std::string run() {
        switch (below(8)) {
        case 0:
        case 1:
            while (m_stack->canUndo() && below(4) > 0) travel(true);
            break;
        case 2:
        case 3:
            while (m_stack->canRedo() && below(4) > 0) travel(false);
            break;
        case 4:
            loose();
            break;
        default:
            gesture();
        }
        for (FCurve& curve : *m_container) {
            check(Fault(curve));
            check(m_echo.differenceTo(curve));
        }
        check(m_view.fault);
        if (m_view.begun != m_view.ended) check("a beginning without an end");
        return m_fault.empty() ? "" : m_fault + " after " + m_log;
    }
    /// All the way back, forth, and back again.
    std::string runBack() {
        while (m_stack->canUndo()) travel(true);
        while (m_stack->canRedo()) travel(false);
        while (m_stack->canUndo()) travel(true);
        check(m_states.front().differenceTo(*m_container));
        return m_fault.empty() ? "" : m_fault + " after " + m_log;
    }

private:
    unsigned below(unsigned count) { return static_cast<unsigned>(m_choices.below(static_cast<int>(count))); }
    bool coin() { return m_choices.coin(); }
    // As a host has them: nothing overflows.
    double number() {
        const double number = m_choices.coordinate();
        return std::fabs(number) < 1e6 ? number : 3.0;
    }

    void check(const std::string& fault) {
        if (m_fault.empty()) m_fault = fault;
    }

    void travel(bool back) {
        m_log += back ? " undo" : " redo";
        if (!(back ? m_stack->undo() : m_stack->redo())) return check("nothing was undone or redone");
        const std::size_t now = m_stack->undoSize();
        check(now < m_states.size() ? m_states[now].differenceTo(*m_container) : "more steps than edits");
    }

    // Edits outside of groups.
    void loose() {
        m_log += " (";
        m_stack->setClean();
        for (unsigned i = 1 + below(3); i > 0; --i) edit();
        m_log += ")";
        m_view.redraw(*m_container);
        settle(m_stack->undoSize());
        if (coin() && m_stack->canUndo()) travel(true);
        m_stack->setClean();
    }

    void gesture() {
        m_log += " {";
        m_view.redraw(*m_container);
        const Remembered before(*m_container);
        const bool cancels = below(4) == 0;
        try {
            EditGroup group(m_selection, "gesture", coin() ? EditGroup::Plain : EditGroup::Merge);
            for (unsigned i = 1 + below(5); i > 0; --i) {
                if (below(6) == 0) nested();
                edit();
                if (coin()) group.step();
            }
            if (cancels && coin()) throw 1;
            if (cancels) group.cancel();
        } catch (int) {
            m_log += " !";
        }
        m_log += cancels ? " x}" : " }";
        if (cancels) check(before.differenceTo(*m_container));
        settle(m_stack->undoSize());
    }

    void nested() {
        const Remembered before(*m_container);
        EditGroup inner(*m_container);
        m_log += " [";
        for (unsigned i = 1 + below(3); i > 0; --i) edit();
        const bool cancels = coin();
        if (cancels) inner.cancel();
        m_log += cancels ? " x]" : " ]";
        if (cancels) check(before.differenceTo(*m_container));
    }

    // A new state, or one that was there.
    void settle(std::size_t now) {
        if (now > m_states.size()) return check("more steps than edits");
        if (m_stack->redoSize() == 0) {
            m_states.resize(std::min(now, m_states.size()), Remembered(*m_container));
            m_states.emplace_back(*m_container);
        } else {
            check(m_states[now].differenceTo(*m_container));
        }
    }

    // --- edits -------------------------------------------------------------------------------------------------------

    void add(const std::shared_ptr<FCurve>& curve) {
        m_echo.watch(*curve);
        m_container->addCurve(curve);
    }
    FCurve& curve() {
        if (m_container->empty() || below(12) == 0) return *m_spare;
        return m_choices.oneOf(*m_container);
    }
    Segment& segment() { return m_choices.oneOf(curve()); }
    std::shared_ptr<Keyframe> key() {
        const auto key = segment().getLeftKey();
        if (key && below(8) == 0) m_held.push_back(key);
        return !key && !m_held.empty() ? m_held[below(static_cast<unsigned>(m_held.size()))] : key;
    }
    std::shared_ptr<Tangent> tangent() {
        Segment& of = segment();
        return coin() ? of.getInTangent() : of.getOutTangent();
    }
    std::shared_ptr<Interpolator> interpolator() {
        static const char* const kinds[] = {"constant()", "linear()", "bezier()", "spline()", "match()",
                                            "ease()",     "cycle()",  "mirror()", "x * 0.5 ", "matchin()"};
        return InterpolatorFactory::create(kinds[below(std::size(kinds))]);
    }

    template<class Part>
    void editProperty(Part& part) {
        static const char* const texts[] = {"", "1", "some longer text than a string keeps in itself", "2"};
        if (below(6) == 0) return part.clearProperties();
        part.setProperty(coin() ? "fc_sel" : texts[1 + below(3)], texts[below(4)]);
    }

    void editTangent(Tangent& of) {
        m_choices.act({{"type", [&] { of.setType(static_cast<std::uint8_t>(below(7))); }},
                       {"weighted", [&] { of.setWeighted(coin()); }},
                       {"weight lock", [&] { of.setWeightLocked(coin()); }},
                       {"assign", [&] { of = *tangent(); }},
                       {"handle", [&] { of.set(number(), number()); }}});
    }

    void editWhole() {
        FCurve& of = curve();
        m_choices.act({{"clear", [&] { of.clear(); }},
                       {"assign", [&] { of = curve(); }},
                       {"swap", [&] { of.swap(curve()); }},
                       {"transform",
                        [&] {
                            TransformCurve(of, {coin() ? 2.0 : -1.0, 0.5}, {1.0, number()});
                        }},
                       {"bake",
                        [&] {
                            if (std::fabs(number()) < 8.0) BakeCurve(of, -6.0, 6.0, 2.0);
                        }},
                       {"cut", [&] { InsertBezierKeyframe(of, number()); }},
                       {"select", [&] { SelectCurveCompletely(m_selection, of); }},
                       {"deselect", [&] { coin() ? m_selection.clear() : DeselectSelectedParts(m_selection); }},
                       {"name", [&] { of.setName(coin() ? "a" : "another name, which is longer than the other"); }}});
    }

    void editContainer() {
        FCurveContainer& curves = *m_container;
        m_choices.act({{"copy", [&] { add(FCurve::createCopy(curve())); }},
                       {"remove",
                        [&] {
                            if (curves.size() < 2) return add(FCurve::create());
                            curves.removeCurve(m_choices.placeIn(curves));
                        }},
                       {"move",
                        [&] {
                            if (curves.empty()) return;
                            const auto moved = curves.begin()->getShared();
                            curves.removeCurve(curves.begin());
                            const unsigned places = static_cast<unsigned>(curves.size()) + 1;
                            curves.insertCurve(std::next(curves.begin(), below(places)), moved);
                        }},
                       {"clear", [&] { below(4) == 0 ? curves.clear() : add(FCurve::createCopy(*m_spare)); }},
                       {"property", [&] { editProperty(curves); }}});
    }

    void edit() {
        const Edit move{"move", [this] {
                            if (const auto moved = key())
                                moved->set(coin() ? moved->getX() + number() : number(), number());
                        }};
        const Edit turn{"turn", [this] { editTangent(*tangent()); }};
        const Edit insert{"insert", [this] {
                              if (FCurve& of = curve(); of.size() < 24)
                                  of.insertSegment(*Keyframe::create(number(), number()), interpolator());
                          }};
        const Edit remove{"remove", [this] {
                              FCurve& of = curve();
                              of.removeSegment(m_choices.placeIn(of));
                          }};
        const Edit flag{"flag", [this] {
                            if (const auto of = key())
                                coin() ? of->setBreakdown(coin()) : of->setTangentsUnified(coin());
                        }};
        const Edit keysProperty{"key's property", [this] {
                                    if (const auto of = key()) editProperty(*of);
                                }};
        m_log += std::string(" ")
                 + m_choices.act({move,
                                  move,
                                  move,
                                  flag,
                                  turn,
                                  turn,
                                  {"kind", [this] { segment().setInterpolator(interpolator()); }},
                                  insert,
                                  insert,
                                  remove,
                                  remove,
                                  {"segment's property", [this] { editProperty(segment()); }},
                                  keysProperty,
                                  {"property", [this] { coin() ? editProperty(*tangent()) : editProperty(curve()); }},
                                  {"whole", [this] { editWhole(); }},
                                  {"container", [this] { editContainer(); }}});
    }

    Choices& m_choices;
    std::shared_ptr<FCurveContainer> m_container;
    std::shared_ptr<FCurve> m_spare;
    Selection m_selection;
    Echo m_echo;
    SummaryView m_view;
    std::optional<UndoStack> m_stack;
    std::vector<Remembered> m_states; // after that many steps
    std::vector<std::shared_ptr<Keyframe>> m_held;
    std::string m_fault, m_log;
};

} // namespace Test
