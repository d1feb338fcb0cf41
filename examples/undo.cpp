// How do I group edits into gestures, and undo and redo them?
//
// An EditGroup brackets a gesture. Its observers get one summary for each step of it, with the range in which each
// curve has to be drawn again. An UndoStack keeps one step for each group: keys, handles, properties and the selection.
// What comes back are the same objects, so the key that was removed here is held all along.

#include <FCurveLib/FCurveLib.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

using namespace VEM_FN::FCurveLib;

// What a view hears: where to draw again, once a step.
class View : public EditObserver {
public:
    void editBegan(const EditSummary& edit) override { std::printf("%s%s\n", words[edit.kind], edit.name.c_str()); }
    void editStepped(const EditSummary& edit) override {
        for (const CurveEdit& one : edit.curves) redraw(*one.curve, one.parts.start, one.parts.end);
    }
    int redraws = 0;

private:
    void redraw(FCurve& curve, double start, double end) {
        std::printf("  redraw %s from %g to %g\n", curve.getName(), start, end);
        ++redraws;
    }

    static constexpr const char* words[] = {"", "cancel: ", "undo: ", "redo: "};
};

int main() {
    const auto curve = FCurve::create();
    curve->setName("height");
    for (const double x : {0.0, 10.0, 20.0, 30.0})
        curve->insertSegment(*Keyframe::create(x, 0.0), InterpolatorFactory::create("bezier()"));
    const auto curves = FCurveContainer::create();
    curves->addCurve(curve);

    Selection selection(curves);
    UndoStack history(selection); // from now on edits are recorded
    View view;
    EditGroup::subscribe(*curves, view);
    const auto key = GetIndexedKeyframe(*curve, 1);

    {
        EditGroup group(selection, "Select");
        selection.select(*key);
    }
    {
        EditGroup drag(selection, "Move keys"); // the button goes down
        KeyGroup keys(selection);
        for (const double y : {2.0, 4.0, 6.0}) { // each move of the pointer: the whole way since then
            MoveKeys(keys, {0.0, y});
            drag.step();
        }
    }
    {
        EditGroup drag(selection, "Move keys");
        key->setY(100.0);
        drag.cancel(); // the user pressed Escape
    }
    {
        EditGroup drag(selection, "Move keys"); // the button goes down
        key->setY(8.0);                         // each move of the pointer: any edits
        drag.step();
        drag.end(); // the button goes up; drag.cancel() on Escape
    }
    {
        EditGroup group(selection, "Remove keys");
        curve->removeSegment(curve->findSegment(10.0));
    }

    // The states that the edits led through, and back, and forth again.
    struct State {
        std::size_t segments;
        double value; // at frame 10
        bool selected;
    };
    const State states[] = {{5, 0.0, false}, {5, 0.0, true}, {5, 6.0, true}, {5, 8.0, true}, {4, 0.0, false}};
    const auto is = [&](const State& state) {
        const bool selected = BeginSelectedKeyframes(selection) != EndSelectedKeyframes(selection);
        return curve->size() == state.segments && curve->eval(10.0) == state.value && selected == state.selected;
    };
    int now = 4;
    bool right = is(states[now]) && history.undoSize() == 4;
    while (history.canUndo()) right = history.undo() && is(states[--now]) && right;
    right = right && now == 0 && key->getOwningCurve() == curve && key == GetIndexedKeyframe(*curve, 1);
    while (history.canRedo()) right = history.redo() && is(states[++now]) && right;
    return right && now == 4 && view.redraws == 15 ? EXIT_SUCCESS : EXIT_FAILURE;
}
