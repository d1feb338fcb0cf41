"""What is made of arrays: curves from keys, curves from samples."""

from __future__ import annotations

import operator
from collections.abc import Sequence
from typing import Any, NamedTuple, Optional, Union

import numpy as np
import numpy.typing as npt

from . import _core


def fit(x: npt.ArrayLike, y: npt.ArrayLike, tolerance: float, *, name: str = "", weighted: bool = False,
        broken: bool = False, keep_extremes: bool = False, whole_frames: bool = False, max_keys: int = 0) -> _core.Curve:
    """A curve of few Bezier keys that is nowhere farther than the tolerance (in the unit of y) from the samples.

    x (ascending, in frames) and y are arrays of shape (n,). Samples that are not finite, or whose x does not rise, are
    left out.

    weighted: handles of any length, which saves keys. broken: handles that need not lie on one line through their key.
    keep_extremes: keys stay at peaks. whole_frames: keys at whole x. max_keys: at most so many, 0 for any; it may cost
    the tolerance. fit_report tells.
    """
    return _core.fit_report(x, y, tolerance, name=name, weighted=weighted, broken=broken, keep_extremes=keep_extremes,
                            whole_frames=whole_frames, max_keys=max_keys)[0]


class CurveArrays(NamedTuple):
    """The keys of a curve as arrays."""

    keys: npt.NDArray[Any]
    """Shape (n,), of key_dtype: x (frames), y, handles in_x, in_y, out_x, out_y (offsets from the key), in_type and
    out_type (numbers, in the order of tangent_types), in_weighted, out_weighted, in_locked, out_locked, breakdown,
    unified, and interpolator: the place in interpolators of that of the segment which starts at the key."""
    interpolators: list[_core.Interpolator]
    leading: int
    """The place in interpolators of that which runs before the first key."""


tangent_types = ("fixed", "flat", "linear", "smooth", "smooth_continued", "clamped", "plateau")


def to_arrays(self: _core.Curve) -> CurveArrays:
    """The curve's keys as a structured array, and its interpolators. Properties stay out."""
    return CurveArrays(*_core._to_arrays(self))


def _index(number: Any) -> Optional[int]:
    """An int, or an integer of numpy, as an array of no dimension is one, too; None for all else."""
    try:
        return None if isinstance(number, bool) else operator.index(number)
    except TypeError:
        return None


def from_arrays(keys: npt.ArrayLike, interpolators: Union[_core._Kind, Sequence[_core._Kind]] = "bezier()",
                leading: Union[int, _core._Kind] = "constant()", *, name: str = "") -> _core.Curve:
    """A curve of keys: a structured array with some or all fields of key_dtype, x and y at least, in ascending x.

    Bits are kept; a handle that has no fields, or is NaN, is computed by its tangent's type. interpolators: one for all
    segments that start at keys, or a list that the field interpolator names. leading: that before the first key, or its
    place in the list. A last key without the field interpolator is followed by the leading one.
    ValueError where x does not rise, a number is not finite, a handle points across its key, or there is no tangent type
    or interpolator of a number.
    """
    several = isinstance(interpolators, (list, tuple, _core.Interpolators, np.ndarray))
    kinds: list[Any] = list(interpolators) if several else [interpolators]  # type: ignore[arg-type]
    given = np.asarray(keys)
    fields = given.dtype.names
    if fields is None or "x" not in fields or "y" not in fields:
        raise TypeError("Expected a structured array with fields x and y")
    if len(kinds) == 0:
        raise ValueError("Expected one interpolator at least")
    if given.ndim != 1:
        raise ValueError("Expected an array of one dimension")
    unknown = set(fields) - set(_core.key_dtype.names or ())
    if unknown:
        raise ValueError(f"There is no field {', '.join(sorted(unknown))} of keys")
    records = np.zeros(given.shape, _core.key_dtype)
    for field in ("in_x", "in_y", "out_x", "out_y"):
        records[field] = np.nan
    for field in fields:
        records[field] = given[field]
        if records[field].dtype.kind != "f" and not np.array_equal(records[field], given[field]):
            raise ValueError(f"The field {field} has a number that is out of its range")

    place = _index(leading) if several else None
    if place is None:
        kinds.append(leading)
        place = len(kinds) - 1
    if "interpolator" not in fields and records.size:
        records["interpolator"][-1] = place
    return _core._from_arrays(records, kinds, place, name)
