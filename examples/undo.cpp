// How do I undo and redo edits of curves, and the selection with them?
//
// Before an edit the host copies the curve (FCurve::createCopy) and the selection (SelectionSnapshot). Undo assigns the
// copy back. The curve's parts are new objects then; the snapshot finds those that were selected by their number. The
// change type tells every view that a drag starts, goes on and ends.

#include <FCurveLib/FCurveLib.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

using namespace VEM_FN::FCurveLib;

class History {
public:
    explicit History(Selection& selection) : m_selection(selection) {}

    // An edit starts: of one curve, or, with none, of the selection alone.
    void begin(const std::shared_ptr<FCurve>& curve = nullptr) {
        m_open = {curve, curve ? FCurve::createCopy(*curve) : nullptr, SelectionSnapshot(m_selection)};
        announce(FCurve::BeginChange);
        FCurve::setChangeType(FCurve::StepChange);
    }
    void end() {
        announce(FCurve::EndChange);
        FCurve::setChangeType(FCurve::OrdinaryChange);
        m_done.push_back(std::move(m_open));
        m_undone.clear();
    }

    bool undo() { return move(m_done, m_undone); }
    bool redo() { return move(m_undone, m_done); }

private:
    // What one edit has to put back. The history keeps the curve alive, as a removed curve may have to return.
    struct Step {
        std::shared_ptr<FCurve> curve;
        std::shared_ptr<FCurve> content;
        SelectionSnapshot selection;
    };

    void announce(FCurve::ChangeType type) {
        FCurve::setChangeType(type);
        if (m_open.curve) m_open.curve->notifyChanged();
    }

    // Exchanges the step's state with the present one: the same for undo and redo.
    bool move(std::vector<Step>& from, std::vector<Step>& to) {
        if (from.empty()) return false;
        Step step = std::move(from.back());
        from.pop_back();
        SelectionSnapshot present(m_selection);
        if (step.curve) {
            auto content = FCurve::createCopy(*step.curve);
            *step.curve = *step.content;
            step.content = std::move(content);
        }
        step.selection.restore(m_selection);
        step.selection = std::move(present);
        to.push_back(std::move(step));
        return true;
    }

    Selection& m_selection;
    Step m_open;
    std::vector<Step> m_done, m_undone;
};

// What a view hears.
class Viewer : public FCurveObserver {
public:
    void beginValueChange(FCurve&) override { std::printf("  view: a change starts\n"); }
    void endValueChange(FCurve&) override { std::printf("  view: the change ends\n"); }
    void keyframeIntrinsicChanged(Keyframe& key, KeyframeIntrinsicType) override {
        std::printf("  view: key at frame %g, value %g\n", key.getX(), key.getY());
    }
    void curveChanged(FCurve& curve) override { std::printf("  view: redraw %s\n", curve.getName()); }
};

int main() {
    const auto curve = FCurve::create();
    curve->setName("height");
    for (const double x : {0.0, 10.0, 20.0}) {
        Keyframe key;
        key.set(x, 0.0);
        curve->insertSegment(key, InterpolatorFactory::create("bezier()"));
    }
    const auto curves = FCurveContainer::create();
    curves->addCurve(curve);
    Selection selection(curves);
    History history(selection);
    Viewer viewer;
    curve->subscribe(viewer);

    std::printf("select the middle key\n");
    history.begin();
    selection.select(*GetIndexedKeyframe(*curve, 1));
    history.end();

    std::printf("drag what is selected\n");
    history.begin(curve);
    for (const double y : {2.0, 4.0, 6.0})
        for (auto it = BeginSelectedKeyframes(selection); it != EndSelectedKeyframes(selection); ++it)
            it->getKeyframe()->setY(y);
    history.end();

    std::printf("remove it\n");
    history.begin(curve);
    curve->removeSegment(curve->findSegment(10.0));
    history.end();

    // The states that the edits led through, and back, and forth again.
    struct State {
        std::size_t segments;
        double value; // at frame 10
        bool selected;
    };
    const State states[] = {{4, 0.0, false}, {4, 0.0, true}, {4, 6.0, true}, {3, 0.0, false}};
    const auto is = [&](const State& state) {
        const std::size_t keys =
            static_cast<std::size_t>(std::distance(BeginSelectedKeyframes(selection), EndSelectedKeyframes(selection)));
        return curve->size() == state.segments && curve->eval(10.0) == state.value
               && keys == (state.selected ? 1U : 0U);
    };
    int now = 3;
    bool right = is(states[now]);
    while (now > 0) {
        std::printf("undo\n");
        right = right && history.undo() && is(states[--now]);
        if (!right) return EXIT_FAILURE;
    }
    while (now < 3) {
        std::printf("redo\n");
        right = right && history.redo() && is(states[++now]);
        if (!right) return EXIT_FAILURE;
    }
    return !history.redo() && history.undo() ? EXIT_SUCCESS : EXIT_FAILURE;
}
