"""Observers and interpolators that are written in Python, and whatever goes first."""

import contextlib
import gc
import math
import pickle
import subprocess
import sys
import threading
import weakref

import fcurvelib as fc
import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from strategies import curves


def heard(changes):
    return [" ".join(filter(None, (it.what, it.detail, it.value))) for it in changes]


def test_observers_hear_each_edit_once(ball):
    changes = []
    subscription = ball.on_change(changes.append)
    ball.keys[1].y = 9
    assert changes[0].subject is ball and changes[0].part is ball.keys[1] and heard(changes)[0] == "key position"
    changes.clear()
    ball.name = "h"
    ball.name = "h"
    ball.properties["a"] = "1"
    ball.keys[0].properties["b"] = "2"
    ball.keys[0].out_tangent.type = "plateau"
    ball.interpolators[1] = "linear"
    ball.keys[2].breakdown = True
    added = ball.add_key(30, 0)
    assert heard(changes)[:4] == ["name", "property a 1", "property b 2", "tangent type"]
    assert {"segment interpolator", "key breakdown", "added"} <= set(heard(changes))
    assert [it.part for it in changes if it.what == "added"] == [added]
    changes.clear()
    ball.remove_key(added)
    assert changes[0].what == "removed" and changes[0].part is added and added.curve is None
    with fc.drag(ball):
        changes.clear()
        ball.notify()
    assert heard(changes) == ["step", "end"]
    subscription.cancel()
    ball.clear()
    assert heard(changes) == ["step", "end"] and not subscription.active


@given(curves(), st.data())
def test_a_gesture_that_fails_never_happened(curve, data):
    before, keys = curve.copy(), list(curve.keys)
    edits = [lambda: curve.add_key(data.draw(st.floats(-50, 50)), 3), lambda: curve.keys.__delitem__(0),
             lambda: setattr(curve.keys[-1], "position", (data.draw(st.floats(-50, 50)), 7)), lambda: curve.bake(),
             lambda: setattr(curve, "interpolators", "linear"), lambda: setattr(curve, "name", "other"),
             lambda: curve.reduce(0.1), lambda: curve.properties.update(a="1"), lambda: curve.clear(),
             lambda: setattr(curve.keys[0].out_tangent, "type", "flat"), lambda: curve.transform((2, 3), (1, 0))]
    with pytest.raises(ZeroDivisionError):
        with curve.edit("Many"):
            for edit in data.draw(st.lists(st.sampled_from(edits), max_size=6)):
                with contextlib.suppress(IndexError, ValueError):
                    edit()
            1 / 0
    assert curve == before and all(a is b for a, b in zip(curve.keys, keys)) and len(curve.keys) == len(keys)


def test_gestures_end_step_nest_and_tell(ball):
    changes, other = [], fc.Curve("b", [(0, 1)])
    subscription = ball.on_change(changes.append)
    with ball.edit(quiet=True) as gesture:
        for y in (1, 2):
            ball.keys[1].y = y
            ball.keys[2].y = y
            gesture.step()
        assert gesture.open
    assert heard(changes) == ["begin", "step", "step", "end"]
    assert ball.keys[1].y == 2 and not gesture.open
    changes.clear()
    with ball.edit(quiet=True):
        ball.keys[0].y = 5
    assert heard(changes) == ["curve"]
    for error in (None, KeyError):
        changes.clear()
        with contextlib.suppress(KeyError), ball.edit(quiet=True) as gesture:
            ball.keys[0].y = 6
            gesture.step()
            raise error if error else KeyError(gesture.cancel())
        assert heard(changes) == ["begin", "step", "step", "end"] and ball.keys[0].y == 5
    subscription.cancel()

    def refuse(change):
        raise LookupError

    with ball.on_change(refuse), pytest.raises(LookupError):
        with ball.edit(quiet=True):
            ball.keys[2].y = 4
    assert ball.keys[2].y == 4

    container = fc.Container([ball])
    with container.edit() as outer:
        with fc.edit([ball, other]) as inner:
            ball.keys[0].y = other.keys[0].y = 9
            inner.cancel()
            assert (ball.keys[0].y, other.keys[0].y) == (5, 1)
        container.add(other)
        del container["height"]
        ball.keys[0].y = 7
        outer.cancel()
        ball.keys[1].y = 8  # no longer belongs to it
    assert list(container) == ["height"] and (ball.keys[0].y, ball.keys[1].y) == (5, 8)
    with pytest.raises(RuntimeError):
        outer.step()
    with outer:
        with pytest.raises(RuntimeError):
            outer.__enter__()
    abandoned = fc.edit([fc.Curve("c", [(0, 1)]), ball]).__enter__()  # keeps its curves, and ends with its last reference
    ball.keys[0].y = 3
    del abandoned
    gc.collect()
    assert ball.keys[0].y == 3


def test_observers_are_weak_unless_asked():
    ball = fc.Curve("height", [(1, 0), (12, 8), (24, 0)])

    class Panel:
        changes = 0

        def update(self, change):
            self.changes += 1

    panel, calls = Panel(), []
    ball.on_change(panel.update)
    ball.on_change(lambda change: calls.append("weak"))
    kept = ball.on_change(lambda change: calls.append("kept"))
    strong = ball.on_change(lambda change: calls.append("strong"), weak=False)
    every = fc.on_change(lambda change: calls.append("every"))
    ball.notify()
    assert panel.changes == 1 and calls == ["kept", "strong", "every"]
    gone = weakref.ref(panel)
    del panel, every
    gc.collect()
    assert gone() is None
    ball.notify()
    assert calls[3:] == ["kept", "strong"]
    del ball
    gc.collect()
    assert not kept.active and not strong.active and len(fc._observers._entries) < 200
    for _ in range(500):  # those of curves that are gone do not pile up
        fc.Curve().on_change(print, weak=False)
    assert len(fc._observers._entries) < 200


def test_what_a_callback_raises_comes_out_of_the_edit(ball):
    def refuse(change):
        raise LookupError("no")

    with ball.on_change(refuse):
        with pytest.raises(LookupError, match="no"):
            ball.keys[1].y = 5
        with pytest.raises(LookupError):
            ball.bake()
    assert len(ball.keys) == 24
    ball.keys[1].y = 6
    with pytest.raises(TypeError):
        ball.on_change(3)


@pytest.mark.parametrize("edit", [
    lambda c: c.__setitem__("b", c["height"]), lambda c: c.update(b=fc.Curve("x"), c=fc.Curve("y")), lambda c: c.pop("height"),
    lambda c: setattr(c["height"], "extend", ("cycle", "mirror")), lambda c: setattr(c["height"], "interpolators", ["linear"] * 4),
    lambda c: setattr(c["height"], "properties", {"a": "1", "b": "2"}), lambda c: c["height"].properties.update(a="1", b="2"),
    lambda c: c["height"].keys.__delitem__(slice(0, 2)), lambda c: c["height"].set_key(6, 1, "stepped"),
    lambda c: c["height"].add_key(5, 5, in_=(-1, 1), out=(2, 2), breakdown=True), lambda c: fc.KeyClip(c["b"]).paste(c["height"], 5)])
def test_an_edit_is_complete_before_observers_errors_come_out_of_it(edit):
    made = [fc.Container([fc.Curve("height", [(1, 0), (12, 8), (24, 0)]), fc.Curve("b", [(0, 1), (2, 2)])]) for _ in range(2)]
    heard = []

    def refuse(change):
        heard.append(change.what)
        raise KeyboardInterrupt if len(heard) == 2 else LookupError

    edit(made[0])
    with made[1].on_change(refuse), made[1]["height"].on_change(refuse), made[1]["b"].on_change(refuse):
        with pytest.raises((LookupError, KeyboardInterrupt)) as raised:
            edit(made[1])
    assert made[1] == made[0] and raised.type is (KeyboardInterrupt if len(heard) > 1 else LookupError)


def test_a_callback_may_do_anything():
    """Edit, cancel itself and others, subscribe, drop the curve."""
    container, log = fc.Container([fc.Curve("height", [(1, 0), (12, 8), (24, 0)])]), []

    def first(change):
        log.append(change.what)
        subscriptions.pop(0).cancel()
        subscriptions[0].cancel()
        subscriptions.append(change.subject.on_change(third))
        container.clear()
        change.subject.clear()
        gc.collect()

    def second(change):
        log.append("second")

    def third(change):
        log.append("third " + change.what)

    subscriptions = [container["height"].on_change(first), container["height"].on_change(second)]
    seen = []
    outer = container.on_change(lambda change: seen.append((change.what, change.subject is container)))
    container["height"].keys[0].y = 3
    assert log[:2] == ["key", "third curve"] and "second" not in log and seen == [("container", True)]
    outer.cancel()


def wobble(x, segment):
    return segment.left_key.y + math.sin(x)


wobble.derivative = lambda x, segment: math.cos(x)


def test_interpolators_in_python(ball):
    ball.interpolators[1] = wobble
    x = np.linspace(1, 11.9, 20)
    assert np.allclose(ball(x), np.sin(x)) and np.allclose(ball.derivative(x), np.cos(x)) and ball(12) == 8
    assert ball.interpolators[1].function is wobble and ball.interpolators[1] == "wobble()" and ball.to_arrays().interpolators
    assert np.allclose(ball.compile().eval(x), np.sin(x)) and ball.extents[3] >= 8
    twin = pickle.loads(pickle.dumps(ball))
    assert twin == ball == ball.copy() and twin.interpolators[1].function is wobble and np.array_equal(twin(x), ball(x))
    ball.interpolators[1] = lambda x, segment: 1 / 0
    for function in (ball, ball.compile(), ball.derivative, lambda x: ball.compile().eval(np.full(1000, x))):
        with pytest.raises(ZeroDivisionError):
            function(5.0)
    ball.interpolators[1] = lambda x, segment: "text"
    with pytest.raises(TypeError):
        ball(5.0)
    ball, stash = ball.copy(), []
    ball.interpolators[1] = lambda x, segment: stash.append(segment) or 0
    ball.compile().eval(5.0)
    del ball
    gc.collect()
    assert stash[0].left_key.position == (1, 0)


@pytest.mark.parametrize("edit", [
    lambda c, s: setattr(s, "interpolator", "linear"), lambda c, s: c.keys.__delitem__(0), lambda c, s: c.clear(), lambda c, s: c.add_key(3, 3),
    lambda c, s: setattr(s.left_key, "y", 5), lambda c, s: c.bake(), lambda c, s: c.edit().__enter__(), lambda c, s: fc.Container().add(c)])
@pytest.mark.parametrize("call", [lambda c: c(5.0), lambda c: c.derivative(5.0), lambda c: c.bake(), lambda c: c.smooth(2), lambda c: c.extents,
                                  lambda c: c.compile()(np.full(300, 5.0)), lambda c: fc.blend(c, c, 0.5)])
def test_nothing_is_edited_while_an_interpolator_is_called(ball, call, edit):
    ball.interpolators[1] = lambda x, segment: edit(ball, segment) or 1.0
    before = ball.copy()
    with pytest.raises(fc.Error, match="edited"):
        call(ball)
    assert ball == before


def test_curves_that_their_interpolators_refer_to_are_collected():
    def alone(several):
        curve = fc.Curve("c", [(0, 0), (5, 5), (9, 1)])
        curve.interpolators = (lambda x, segment: curve.keys[0].y) if several else "linear"
        curve.interpolators[-1] = lambda x, segment: curve(0)
        return weakref.ref(curve)

    def together():
        container = fc.Container([fc.Curve("a", [(0, 0)]), fc.Curve("b")])
        container["a"].extend = lambda x, segment: container["b"](x)
        return weakref.ref(container)

    gone = [alone(False), alone(True), together()]
    gc.collect()
    assert [it() for it in gone] == [None] * 3

    def shared():
        curve = fc.Curve("c", [(0, 0), (5, 5)])
        curve.interpolators = lambda x, segment: 7.0 if curve else 0.0
        keepers.extend([fc.Container([curve]), curve.copy(), curve.compile(), curve.segments[1], curve.interpolators[1]])

    keepers = []
    shared()
    for _ in range(3):
        gc.collect()
        container, copied, compiled, segment, kind = keepers
        assert (container["c"](2.0), copied(2.0), compiled(2.0), kind(2.0, segment)) == (7, 7, 7, 7)


def test_smoothing_is_all_or_nothing(ball):
    ball.interpolators[-1] = lambda x, segment: 1 / 0 if x >= 24 and len(ball.keys) > 3 else 0.0
    before = ball.copy()
    with pytest.raises(ZeroDivisionError):
        ball.smooth(2)
    assert ball == before


def test_makers_that_fail(ball, tmp_path):
    def fails(what):
        class Marked(what):
            pass

        failed.append(weakref.ref(Marked))
        raise Marked("it")

    failed, makers = [], {"rr": lambda: fc.Interpolator("rr"), "stop": lambda: fails(KeyboardInterrupt), "full": lambda: fails(MemoryError),
                          "wrong": lambda: [3], "nan": lambda: math.nan, "bad": lambda: fails(KeyError)}
    for name in ("sin", "linear", "x", "pi", "", "a b", "1a", "a(", "cycle"):
        with pytest.raises(ValueError, match="name"):
            fc.register(name, lambda: 1)
    try:
        for name, maker in makers.items():
            fc.register(name, maker)
        for text, error, words in (("1 + rr", RecursionError, "end"), ("stop + 1", KeyboardInterrupt, ""), ("full()", MemoryError, ""),
                                   ("1 + wrong", fc.FormulaError, r"\[3\]"), ("nan", fc.FormulaError, "finite"), ("x * bad", fc.FormulaError, "it")):
            with pytest.raises(error, match=words) as raised:
                ball.interpolators[1] = text
            assert error is not fc.FormulaError or raised.value.position == max(text.find("wrong"), text.find("bad"), 0)
        document = fc.dumps(ball).decode()
        for name, error in (("rr", None), ("stop", KeyboardInterrupt), ("full", MemoryError), ("bad", None)):
            with pytest.raises(error) if error else contextlib.nullcontext():
                assert fc.loads(document.replace("bezier()", name))["height"](5.0) == 0
    finally:
        for name in makers:
            fc.unregister(name)
    del raised
    gc.collect()
    assert [it() for it in failed] == [None] * len(failed)


def test_names_in_python_work_in_curves_formulas_and_files(ball):
    @fc.register("bump")
    def bump(size=1.0, where="here", inner=None):
        if where == "fail":
            raise KeyError("where")
        return lambda x, segment: size * x + (inner(x, segment) if inner else 0)

    try:
        ball.interpolators[1] = '1 + bump(2, "there", x**2)'
        ball.interpolators[2] = "bump"
        assert ball(3) == 1 + 6 + 9 and ball(13) == 13
        loaded = fc.loads(fc.dumps(ball, "binary"))["height"]
        assert loaded(3) == 16 and loaded == ball and loaded.interpolators[2] == "bump"
        assert pickle.loads(pickle.dumps(ball))(3) == 16
        for text in ('bump(1, "fail")', "bump(1, 2, 3, 4)"):
            with pytest.raises(fc.FormulaError) as raised:
                ball.interpolators[1] = text
            assert isinstance(raised.value.__cause__, (KeyError, TypeError))
    finally:
        fc.unregister("bump")
    assert ball(3) == 16
    with pytest.raises(fc.FormulaError):
        ball.interpolators[1] = "bump"
    unknown = fc.loads(fc.dumps(ball))["height"]
    assert unknown.interpolators[2] == "bump" and unknown(13) == 0


def test_parts_outlive_their_curves():
    curve = fc.Curve("c", [(0, 0), (5, 5)])
    parts = [curve.keys[0], curve.keys[0].out_tangent, curve.segments[1], curve.keys[1].properties]
    keys, walk, compiled = curve.keys, iter(curve.keys), curve.compile()
    next(walk)
    del curve
    assert len(keys) == 2 and next(walk).x == 5
    del keys, walk
    gc.collect()
    assert parts[0].curve is None and parts[0].position == (0, 0) and parts[1].type == "fixed" and compiled(2.5) == 2.5
    parts[3]["still"] = "here"
    parts[0].x = 7
    assert parts[0].x == 7 and dict(parts[3]) == {"still": "here"} and parts[2].interpolator


def test_threads_load_evaluate_and_drop(data):
    document, failures = (data / "ball.fcrvx").read_bytes(), []

    def work():
        try:
            for _ in range(20):
                curves = fc.loads(document)
                calls = []
                curve = curves["height"]
                curve.interpolators[1] = lambda x, segment: float(x)
                subscription = curve.on_change(lambda change: calls.append(change))
                pose = curves.compile()
                del curves
                curve.keys[0].y += 1
                for _ in range(100):
                    fc.Curve().on_change(print, weak=False)
                assert calls and np.isfinite(pose.eval(np.arange(500.0))).all() and subscription.active
        except BaseException as error:
            failures.append(error)

    threads = [threading.Thread(target=work) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not failures


@pytest.mark.parametrize("last", [
    "", "del curve", "fc.register('late', lambda: lambda x, s: 1); curve.extend = 'late'",
    "import atexit; atexit.register(lambda: setattr(curve.keys[0], 'y', 3))",
    "threading.Thread(target=lambda: [compiled.eval(np.arange(5000.0)) for _ in range(20)], daemon=True).start()",
    *(f"def loop():\n    while True:\n        try: {work}\n        except Exception: pass\n"
      "for _ in range(3): threading.Thread(target=loop, daemon=True).start()\nimport time; time.sleep(0.1)"
      for work in ("fc.Interpolator('sin(')", "curve.copy()(3.0)", "fc.Curve('c', [(0, 0)]).notify()",
                   "fc.Curve('c', iter([(0, 0), (1, 1)])).edit().__enter__().cancel()", "fc.dumps(fc.loads(fc.dumps(curve)))")),
    "class Last:\n    def __del__(self): curve.keys[0].y = 4\nlast = Last(); last.me = last"])
def test_the_interpreter_may_end_first(last):
    program = f"""
import fcurvelib as fc, numpy as np, threading, sys
curve = fc.Curve("c", [(0, 0), (5, 5), (9, 1)])
curve.interpolators[1] = lambda x, segment: x
container, compiled = fc.Container([curve]), curve.compile()
strong = curve.on_change(lambda change: None, weak=False)
every = fc.on_change(print if False else (lambda change: change), weak=False)
held = [curve.keys[0], curve.segments[1], iter(curve.keys), container.compile()]
sys.modules["keeps"] = held
{last}
print("done")
"""
    ended = subprocess.run([sys.executable, "-c", program], text=True, capture_output=True)
    assert (ended.returncode, ended.stdout.strip()) == (0, "done"), ended.stderr
    assert "Error" not in ended.stderr and "rror:" not in ended.stderr
