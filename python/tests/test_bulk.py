"""Arrays of keys, the tools, compiled curves and poses."""

import threading

import fcurvelib as fc
import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from strategies import curves


def without_properties(curve):
    curve = curve.copy()
    for part in [curve, *curve.segments, *curve.keys, *(s.in_tangent for s in curve.segments)]:
        part.properties = {}
    return curve


@given(curves())
def test_arrays_keep_every_bit_of_keys_and_handles(curve):
    arrays = curve.to_arrays()
    again = fc.Curve.from_arrays(*arrays, name=curve.name)
    assert np.array_equal(again.to_arrays().keys, arrays.keys) and again.to_arrays()[1:] == arrays[1:]
    assert list(again.interpolators) == list(curve.interpolators)
    x = np.linspace(-1300, 1300, 300)
    assert np.array_equal(again(x), curve(x), equal_nan=True)
    for key, row in zip(curve.keys, arrays.keys):
        assert key.position == (row["x"], row["y"]) and key.out_tangent.handle == (row["out_x"], row["out_y"])
        assert fc.tangent_types[row["in_type"]] == key.in_tangent.type and key.in_tangent.weighted == row["in_weighted"]
        assert (key.breakdown, key.unified) == (row["breakdown"], row["unified"])
        assert arrays.interpolators[row["interpolator"]] == key.interpolator


def test_keys_from_arrays_with_few_fields():
    keys = np.array([(0, 0), (4, 2), (9, 1)], dtype=[("x", "f4"), ("y", "i4")])
    line = fc.Curve.from_arrays(keys, "linear", "cycle", name="l")
    assert (line(2), line.name, line.extend) == (1, "l", ("cycle", "cycle"))
    smooth = np.zeros(3, dtype=[("x", float), ("y", float), ("in_type", int), ("out_type", int)])
    smooth["x"], smooth["y"], smooth["in_type"], smooth["out_type"] = [0, 4, 9], [0, 2, 1], 3, 3
    made = fc.Curve.from_arrays(smooth)
    byHand = fc.Curve("", [(0, 0), (4, 2), (9, 1)])
    for key in byHand.keys:
        key.in_tangent.type = key.out_tangent.type = "smooth"
    byHand.extend = "constant"
    assert np.allclose(made(np.linspace(0, 9, 50)), byHand(np.linspace(0, 9, 50)), atol=1e-12)


@pytest.mark.parametrize("field,value", [("x", 5), ("x", np.nan), ("y", np.inf), ("in_x", 1), ("out_x", -1), ("out_y", np.inf),
                                         ("in_type", 7), ("interpolator", 9), ("interpolator", -1)])
def test_wrong_arrays_raise(ball, field, value):
    arrays = ball.to_arrays()
    arrays.keys[field][0] = value if field != "x" or np.isnan(value) else 12
    with pytest.raises(ValueError, match="Key [01]: "):
        fc.Curve.from_arrays(*arrays)


@pytest.mark.parametrize("field,value", [("in_type", 256), ("in_type", -255), ("interpolator", 2**32 + 1), ("breakdown", 2),
                                         ("interpolator", 0.5)])
def test_numbers_that_no_field_holds_raise(field, value):
    with pytest.raises(ValueError, match=field):
        fc.Curve.from_arrays(np.array([(1, 0, value)], [("x", float), ("y", float), (field, type(value))]), ["linear", "bezier"])


def test_arrays_survive_a_file_of_numpy(ball, tmp_path):
    ball.extend = "cycle", "mirror"
    keys, kinds, leading = ball.to_arrays()
    np.savez(tmp_path / "a.npz", keys=keys, kinds=[str(kind) for kind in kinds], leading=leading)
    with np.load(tmp_path / "a.npz") as read:
        assert fc.Curve.from_arrays(read["keys"], read["kinds"], read["leading"], name="height") == ball


@pytest.mark.parametrize("wrong,error", [
    (lambda c: fc.Curve.from_arrays(c.to_arrays().keys, []), ValueError),
    (lambda c: fc.Curve.from_arrays(np.zeros(3)), TypeError), (lambda c: fc.fit([1, 2], [1], 0.1), ValueError),
    (lambda c: fc.Curve.from_arrays(np.zeros(1, [("x", float), ("y", float), ("z", float)])), ValueError),
    (lambda c: fc.fit("ab", [1], 0.1), TypeError), (lambda c: fc.fit([1], [1], -1), ValueError), (lambda c: c.bake(0), ValueError),
    (lambda c: c.smooth(-1), ValueError), (lambda c: c.smooth(1, "median"), ValueError), (lambda c: c.transform((0, 1)), ValueError),
    (lambda c: c.flip("z"), ValueError), (lambda c: fc.unroll(c, c, c), ValueError), (lambda c: c.sample(0, 1, np.nan), ValueError),
    (lambda c: fc.unroll(c, c.copy(), fc.Curve()), ValueError), (lambda c: c.compile().sample(0, 1, -1), ValueError),
    (lambda c: c.set_key(np.nan, 1), ValueError), (lambda c: c.set_key(1, 1, "round"), ValueError), (lambda c: fc.KeyGroup([3]), TypeError),
    (lambda c: fc.KeyGroup(c).scale((0, 0), (0, 1)), ValueError), (lambda c: fc.KeyClip("none"), fc.FormatError),
    (lambda c: fc.KeyClip(c).paste(c, mode="x"), ValueError), (lambda c: fc.draw(c, width=3), fc.PictureSizeError), (lambda c: fc.draw(c, height=3), fc.PictureSizeError),
    (lambda c: fc.draw(3), TypeError), (lambda c: fc.blend(c, c, "a"), TypeError)])
def test_wrong_arguments_of_tools_change_nothing(ball, wrong, error):
    before = ball.copy()
    with pytest.raises(error):
        wrong(ball)
    assert ball == before


def test_fitting_and_reducing_hold_the_tolerance():
    x = np.arange(300.0)
    y = 10 * np.sin(x / 30) + 0.5 * np.sin(x / 3)
    curve, report = fc.fit_report(x, y, 0.05, name="s")
    assert np.abs(curve(x) - y).max() <= 0.05 * (1 + 1e-9) and report.keys_after == len(curve.keys) < 100 and curve.name == "s"
    assert fc.fit(x, y, 0.05, name="s") == curve and len(fc.fit(x, y, 0.05, weighted=True).keys) < len(curve.keys)
    before = curve.copy()
    report = curve.reduce(1.5, 50, 250)
    at = np.linspace(0, 299, 5000)
    assert np.abs(curve(at) - before(at)).max() <= 1.5 and report.keys_after < report.keys_before and report.within_tolerance


def test_tools_do_as_they_say(ball):
    x, y = ball.sample()
    assert x.tolist() == list(range(1, 25)) and np.array_equal(y, ball(x)) and len(ball.sample(1, 3, 0.5)[0]) == 5
    baked = ball.copy()
    baked.bake(2)
    assert baked.keys[0].x == 0 and np.array_equal(baked([2, 4]), ball([2, 4])) and baked.interpolators[1] == "linear()"
    baked.bake_samples([4, 5, 6], [1, 2, 3])
    assert baked(5.5) == 2.5
    noisy = fc.Curve.from_arrays(np.array([(i, (-1) ** i) for i in range(40)], [("x", float), ("y", float)]), "linear")
    noisy.smooth(4, "box")
    assert np.abs(noisy(np.arange(5, 35))).max() < 0.2
    moved = ball.copy()
    moved.interpolators[2] = "sin(x)"
    assert moved.transform((2, 3), (10, 1)) == [] and moved(2 * 6 + 10) == pytest.approx(3 * ball(6) + 1)
    moved.flip("xy", about=(0, 0))
    assert moved(-22) == pytest.approx(-(3 * ball(6) + 1))
    angles = fc.Curve("r", [(0, 170), (1, -175), (2, -160)])
    twin, flat = angles.copy(), fc.Curve("f", [(0, 0), (1, 0), (2, 0)])
    assert angles.unroll() == 2 and [key.y for key in angles.keys] == [170, 185, 200]
    assert fc.unroll(flat.copy(), flat, twin, "zyx") == 2 and twin.keys[2].y == 200
    slower = fc.Curve("by", [(0, 0), (48, 24)], "linear")
    assert ball.retime(slower)(24) == pytest.approx(ball(12), abs=1e-3)
    assert fc.blend(ball, flat, 0.25)(12) == pytest.approx(0.75 * ball(12), abs=1e-3) and fc.add(ball, ball)(12) == 16
    jagged = fc.Curve("j", [(0, 0), (24, 1)], lambda x, segment: x * 7.3 % 1)
    for plain, report in ((fc.add, fc.add_report), (lambda *of: fc.blend(*of, 0.5), lambda *of: fc.blend_report(*of, 0.5)),
                          (lambda a, b: b.retime(a), lambda a, b: b.retime_report(a))):
        with pytest.warns(fc.ToleranceWarning, match="off at frame"):
            missed = plain(ball, jagged)
        curve, told = report(ball, jagged)
        assert np.array_equal(curve.to_arrays().keys, missed.to_arrays().keys) and not told.within_tolerance and told.error > 1e-3
        assert not told.exact and told.fitted and not told.proved
    assert fc.add_report(ball, ball)[1].within_tolerance


@given(curves(), st.lists(st.floats(-2000, 2000), min_size=1, max_size=20))
def test_compiled_curves_have_the_values_of_curves(curve, x):
    compiled, x = curve.compile(), np.array(x)
    y = curve(x)
    scale = 1 + np.abs(y[np.isfinite(y)]).max(initial=0)
    assert np.allclose(compiled.eval(x), y, rtol=1e-9, atol=1e-9 * scale, equal_nan=True)
    assert np.array_equal(compiled(x), [compiled(float(at)) for at in x], equal_nan=True)
    assert compiled.sample(x[0], 0.5, 3).tolist() == [compiled(x[0] + i * 0.5) for i in range(3)] or np.isnan(y).any()


def test_poses_are_arrays_of_frames_and_curves(ball, data):
    curves = fc.load(data / "ball.fcrvx")
    curves.add(ball)
    pose, frames = curves.compile(), np.linspace(0, 72, 30).reshape(5, 6)
    expected = np.stack([curve.compile()(frames) for curve in curves.values()], axis=-1)
    assert pose.names == list(curves) and len(pose) == len(curves) and pose.eval(3.0).shape == (len(pose),)
    assert np.array_equal(pose.eval(frames), expected) and np.array_equal(fc.Pose(curves.values())(frames[::2]), expected[::2])
    out = np.empty_like(expected)
    assert pose.eval(frames, out=out) is out and np.array_equal(out, expected)
    assert np.array_equal(pose[-1](frames), expected[..., -1]) and fc.Pose([]).eval([1, 2]).shape == (2, 0)


def test_threads_evaluate_while_others_run(ball):
    """Values of compiled curves are computed without the interpreter's lock: a thread that waits inside one, in an
    interpolator of Python, lets another go on."""
    inside, go_on = threading.Event(), threading.Event()

    def waits(x, segment):
        inside.set()
        assert go_on.wait(60)
        return x

    ball.interpolators[1] = waits
    compiled, results = ball.compile(), []
    thread = threading.Thread(target=lambda: results.append(compiled.eval(np.full(1000, 5.0))))
    thread.start()
    assert inside.wait(60)
    del ball
    go_on.set()
    thread.join()
    assert results[0].tolist() == [5.0] * 1000


def test_keys_are_set_moved_copied_and_compared(ball):
    shape = ball.copy()
    assert ball.set_key(6, ball(6)).x == 6 and ball.set_key(6.0005, 5, "flat").y == 5 and len(ball.keys) == 4
    parts, largest, x = shape.diff(ball)
    assert {"part": "key", "what": ["added"], "first": None, "second": 1, "x": 6.0} in parts and ball(x) != shape(x)
    assert largest == pytest.approx(abs(ball(x) - shape(x))) and shape.diff(shape.copy())[0] == []
    group = fc.KeyGroup(ball.keys[1:3])
    assert group.move((100, 1)).is_limited and ball.keys[2].x == pytest.approx(23.999) and len(group) == 2
    group.move((0, 0))
    report = group.move((14.3, 0), "ripple", frame_step=1)
    assert [key.x for key in ball.keys] == [1, 20, 26, 38] and report.offset == (14, 0) and report.others == 1
    assert fc.KeyGroup(ball).scale((1, 0), (2, 1)).factor == (2, 1) and ball.keys[-1].x == 75
    clip = fc.KeyClip(shape.keys[:2])
    target = fc.Curve("height", [(40, 3)])
    pasted = fc.KeyClip(clip.text).paste(target, frame=50)
    assert [key.x for key in pasted.keys] == [50, 61] and np.allclose(target(np.arange(50.0, 61)), shape(np.arange(1.0, 12)))
    assert clip.paste(fc.Container([fc.Curve("b")])).unmatched == ["height"] and len(clip) == 2


def test_pictures(ball):
    picture = ball._repr_svg_()
    assert picture.startswith("<svg") and "height" in picture and fc.Container([ball, ball.copy()])._repr_svg_()
    assert "Ball &amp; all" in fc.draw({"tx": ball}, title="Ball & all", frames=(0, 10), before=[ball.copy()], keys=False)


def test_plotting_hands_over_lines_and_keys(ball):
    class Axes:
        def __init__(self):
            self.lines = []

        def plot(self, x, y, **style):
            self.lines.append((np.array(x), np.array(y), style))
            return [type("Line", (), {"get_color": lambda self: "C0"})()]

        def set_xlabel(self, text):
            self.label = text

    axes = Axes()
    assert ball.plot(axes, count=50, handles=True, linewidth=2) is axes
    (x, y, style), *handles, keys = axes.lines
    assert np.array_equal(y, ball(x)) and {1, 12, 24} <= set(x) and style == {"label": "height", "linewidth": 2}
    assert keys[0].tolist() == [1, 12, 24] and keys[1].tolist() == [0, 8, 0] and len(handles) == 6
