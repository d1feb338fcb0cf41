"""Curves, their parts, containers and properties as Python sees them."""

import copy
import pickle

import fcurvelib as fc
import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from hypothesis.extra import numpy as hnp
from strategies import curves, texts


def oracle(x, ball_left=(1, 0), ball_right=(12, 8)):
    """A flat-handled Bezier with handles of a third: y by bisection of x(t)."""
    (x0, y0), (x1, y1) = ball_left, ball_right
    t = (x - x0) / (x1 - x0)  # handles at exact thirds make x(t) linear
    return y0 + (y1 - y0) * t * t * (3 - 2 * t)


def test_values_of_numbers_and_arrays_of_any_shape(ball):
    assert ball(12) == 8.0 and isinstance(ball(12), float)
    assert ball(6.25) == pytest.approx(oracle(6.25), abs=1e-12)
    for x in (np.linspace(0, 30, 24).reshape(2, 3, 4), np.arange(30), np.float32([[1.5], [20]]), np.array(7.0),
              np.linspace(0, 30, 40)[::-3], np.asfortranarray(np.linspace(0, 30, 24).reshape(6, 4)), np.zeros((0, 3)),
              np.array([(1, 2.5)], dtype=[("a", "i1"), ("x", "f8")])["x"], np.arange(5).astype(">f8")):
        values = ball(x)
        assert np.shape(values) == x.shape
        assert np.array_equal(values, np.vectorize(ball, otypes=[float])(x))
        if x.ndim:
            out = np.empty(x.shape)
            assert ball(x, out=out) is out and np.array_equal(out, values)
    x = np.linspace(0, 30, 10_001)
    values, pose = ball(x), fc.Pose([ball])
    for function in (ball, ball.compile(), ball.inside):
        for shift in (0, 1, 7):
            both = np.concatenate([x, np.zeros(7)])
            assert np.array_equal(function(both[:x.size], out=both[shift:][:x.size]), function(x))
        both = x.copy()
        assert np.array_equal(function(both[::2], out=both[:5001]), function(x[::2]))
    both = x.copy()
    assert np.array_equal(pose(both[:-1], out=both[1:, None])[:, 0], pose(x[:-1])[:, 0])
    assert ball([1, 12]).tolist() == [0, 8]
    assert np.isnan(fc.Curve("line", [(0, 0), (2, 2)], "linear")(np.nan)) or ball(np.nan) == 0


@given(curves(), hnp.arrays(np.float64, hnp.array_shapes(max_dims=3), elements=st.floats(-2000, 2000)))
def test_arrays_give_the_values_of_numbers(curve, x):
    for function in (curve, curve.inside, curve.derivative, lambda at: curve.derivative(at, 2, side="left")):
        alone = np.array([function(float(at)) for at in x.flat])
        assert np.array_equal(function(x).ravel(), alone, equal_nan=True)


def test_derivatives(ball):
    x, h = np.linspace(2, 23, 50), 1e-5
    x = x[np.abs(x - 12) > 0.1]
    assert np.allclose(ball.derivative(x), (ball(x + h) - ball(x - h)) / (2 * h), atol=1e-6)
    assert np.allclose(ball.derivative(x, order=2), (ball.derivative(x + h) - ball.derivative(x - h)) / (2 * h), atol=1e-4)
    step = fc.Curve("step", [(0, 0), (5, 5), (10, 0)], "linear")
    assert (step.derivative(5), step.derivative(5, side="left"), step.derivative(5, side="right")) == (-1, 1, -1)


@pytest.mark.parametrize("bad", [
    lambda c: c("1"), lambda c: c(1j), lambda c: c(np.array(["1"])), lambda c: c(None), lambda c: c(np.zeros(2, complex)),
    lambda c: c(np.zeros(2), out=np.zeros(2, "f4")), lambda c: c.add_key("a", 1), lambda c: c.add_key(1, 2, out=3),
    lambda c: setattr(c, "name", 3), lambda c: c.properties.update(a=1), lambda c: setattr(c.keys[0], "interpolator", None),
    lambda c: fc.Container([3]), lambda c: fc.Container().add(None), lambda c: hash(c), lambda c: c.keys["a"],
    lambda c: c.add_key(5, 5, type=3)])
def test_wrong_types_raise_and_change_nothing(ball, bad):
    before = ball.copy()
    with pytest.raises(TypeError):
        bad(ball)
    assert ball == before


@pytest.mark.parametrize("bad", [
    lambda c: c(np.zeros(3), out=np.zeros(2)), lambda c: c.derivative(1, 3), lambda c: c.derivative(1, side="up"),
    lambda c: c.add_key(12, 0), lambda c: c.add_key(np.nan, 0), lambda c: c.add_key(5, 0, out=(-1, 0)),
    lambda c: c.add_key(5, 0, in_=(1, 0)), lambda c: c.add_key(5, 0, interpolator="sin("), lambda c: c.insert_key(12),
    lambda c: c.add_key(5, 0, type="round"), lambda c: setattr(c.keys[0], "x", np.inf), lambda c: setattr(c, "extend", "wobbly"),
    lambda c: setattr(c, "extend", ("linear", "cycle", "mirror")), lambda c: setattr(c, "name", "a\0b"),
    lambda c: c.remove_key(fc.Curve("", [(1, 1)]).keys[0]), lambda c: setattr(c, "interpolators", ["linear"]),
    lambda c: setattr(fc.Curve(), "extend", ("cycle", "mirror")),
    lambda c: setattr(c.keys[0].out_tangent, "type", "x"), lambda c: c.properties.update({"a": "b\0"})])
def test_wrong_values_raise_and_change_nothing(ball, bad):
    before = ball.copy()
    with pytest.raises(ValueError):
        bad(ball)
    assert ball == before


def test_a_formula_that_is_none_tells_where(ball):
    with pytest.raises(fc.FormulaError) as error:
        ball.interpolators[1] = "1 + cosy(x)"
    assert error.value.position == 4 and error.value.kind == "UnrecognizedFunction" and str(error.value)


def test_keys_are_a_sequence(ball):
    keys = ball.keys
    assert len(keys) == 3 and [key.x for key in keys] == [1, 12, 24] and keys[-1].x == 24
    assert [key.x for key in keys[::-1]] == [24, 12, 1] == [key.x for key in reversed(keys)]
    assert keys[1] is ball.keys[1] and keys.index(ball.keys[2]) == 2 and ball.keys[0] in keys
    assert fc.Curve("", [(1, 1)]).keys[0] not in keys
    with pytest.raises(IndexError):
        keys[3]
    keys[1].position = 13, 5
    keys[1].y += 1
    assert ball(13) == 6 and keys[1].previous is keys[0] and keys[1].next is keys[2] and keys[2].next is None
    assert keys[1].index == 1 and keys[1].curve is ball
    gone = keys[0]
    del keys[0:2]
    assert len(keys) == 1 and gone.curve is None and gone.in_tangent is None and gone.index is None
    with pytest.raises(ValueError):
        gone.interpolator
    del keys[-1]
    assert list(keys) == [] and ball.range is None


@given(st.lists(st.tuples(st.integers(0, 30), st.sampled_from(["remove", "add", "before", "next"])), max_size=30))
def test_keys_come_and_go_while_they_are_walked_over(edits):
    curve = fc.Curve("", [(x, 0) for x in range(0, 40, 4)])
    walked = []
    steps = iter(edits)
    for key in curve.keys:
        walked.append(key.x)
        offset, what = next(steps, (0, ""))
        if what == "remove":
            curve.remove_key(key)
        elif what == "add" and not curve.key_at(key.x + offset + 0.5):
            curve.add_key(key.x + offset + 0.5, 1)
        elif what == "before" and not curve.key_at(key.x - offset - 0.5):
            curve.add_key(key.x - offset - 0.5, 1)
        elif what == "next" and key.next is not None:
            curve.remove_key(key.next)
    assert walked == sorted(set(walked)) and len(curve.keys) == len(list(curve.keys))


def test_added_keys_keep_what_runs_beyond_the_keys():
    for order in ([1, 12, 24], [24, 12, 1], [12, 24, 1]):
        curve = fc.Curve("c", [(order[0], order[0])])
        curve.extend = "cycle", "mirror"
        for x in order[1:]:
            curve.add_key(x, x, interpolator="linear()")
        assert list(curve.interpolators) == ["cycle()", "linear()", "linear()", "mirror()"]
        assert curve.extend == ("cycle", "mirror")
    curve.interpolators = "bezier"
    curve.interpolators[0] = np.float32(3)
    curve.interpolators[:1:-1] = ["x", "sin(x)"]
    assert [str(kind) for kind in curve.interpolators] == ["3", "bezier()", "sin(x)", "x"] and curve(-100) == 3
    assert curve.add_key(6, 0).interpolator == "bezier()" and curve.add_key(18, 0).interpolator == "sin(x)"


def test_handles_and_types(ball):
    key = ball.add_key(18, 5, in_=(-2, 1), out=(3, 0))
    assert (key.in_tangent.handle, key.out_tangent.handle) == ((-2, 1), (3, 0))
    assert key.out_tangent.type == "fixed" and key.out_tangent.weighted and key.out_tangent.opposite is key.in_tangent
    key.out_tangent.type = "plateau"
    smooth = ball.add_key(20, 4, type="smooth")
    assert smooth.in_tangent.type == smooth.out_tangent.type == "smooth"
    assert smooth.out_tangent.y / smooth.out_tangent.x == pytest.approx((0 - 5) / (24 - 18))
    assert smooth.out_tangent.key is smooth and smooth.out_tangent.segment is smooth.right_segment
    inserted = ball.insert_key(6)
    assert ball.preview_key(7)[0] == "keeps shape" and inserted.unified


def test_properties_are_a_mapping(ball):
    properties = ball.keys[0].properties
    properties["b"] = "2"
    properties.update(a="1", c="")
    assert properties == {"a": "1", "b": "2"} and list(properties) == ["a", "b"] and "c" not in properties
    assert properties.get("z", "?") == "?" and properties.pop("a") == "1" and len(properties) == 1
    with pytest.raises(KeyError):
        properties["a"]
    for mapping in (properties, fc.Container()):
        assert mapping.pop("none", 3) == 3 and mapping.pop("none", None) is None
        with pytest.raises(KeyError):
            mapping.pop("none")
    with pytest.raises(KeyError):
        del properties["a"]
    ball.properties = properties
    assert dict(ball.properties) == {"b": "2"} and repr(ball.properties) == "{'b': '2'}"
    ball.properties["bytes"] = "\udcff"
    assert ball.properties["bytes"] == "\udcff"


def test_a_container_is_an_ordered_mapping(ball):
    other, twin = fc.Curve("squash"), fc.Curve("height", [(0, 1)])
    curves = fc.Container([ball, other])
    curves.add(twin)
    assert list(curves) == ["height", "squash", "height"] and curves["height"] is ball and "squash" in curves
    assert [curve is twin for curve in curves.values()] == [False, False, True] and twin in curves
    assert [name for name, _ in curves.items()] == list(curves.keys())
    assert list(fc.Container(curves).values()) == [ball, other, twin] == [*reversed(curves.values())][::-1]
    assert twin in curves.values() and ("height", twin) in curves.items() and [*reversed(curves.items())][0] == ("height", twin)
    assert [*reversed(curves.keys())] == ["height", "squash", "height"] and ball.keys == ball.keys != twin.keys
    curves["squash"] = twin
    assert list(curves) == ["height", "squash"] and twin.name == "squash" and other not in curves
    assert curves.get("none") is None and curves.pop("height") is ball and len(curves) == 1
    with pytest.raises(KeyError):
        curves["height"]
    with pytest.raises(ValueError):
        curves.add(twin)
    curves.update(a=fc.Curve("x"))
    assert list(curves) == ["squash", "a"] and list(reversed(curves)) == ["a", "squash"] and fc.Container({"q": ball})["q"].name == "q"
    del curves["a"]
    curves.remove(twin)
    assert not curves


@given(curves(), texts)
def test_copies_and_pickles_are_equal_and_independent(curve, name):
    container = fc.Container([curve])
    container.properties["p"] = name
    for make in (copy.copy, copy.deepcopy, lambda it: pickle.loads(pickle.dumps(it))):
        assert make(curve) == curve and make(container) == container and make(curve) is not curve
        twin = make(curve)
        twin.name += "!"
        assert twin != curve
        if curve.keys:
            twin = make(curve)
            twin.keys[0].properties["changed"] = "1"
            assert twin != curve
            twin = make(curve)
            twin.keys[-1].y += 1
            assert twin != curve and twin.keys[-1].y != curve.keys[-1].y
    assert curve != 3 and curve == curve.copy()


def test_reprs(ball):
    ball.keys[1].out_tangent.weighted = True
    ball.keys[1].out_tangent.handle = 3, 0.5
    texts = [repr(it) for it in (ball, fc.Curve(), ball.keys[1], ball.keys[1].out_tangent, ball.segments[0],
                                 ball.interpolators[1], fc.Container([ball]))]
    assert texts == ["<Curve 'height', 3 keys from 1 to 24>", "<Curve '', no keys>", "<Key 1 (12, 8)>",
                     "<Tangent out (3, 0.5) fixed>", "<Segment constant() ..1>", "Interpolator('bezier()')",
                     "<Container of ['height']>"]
