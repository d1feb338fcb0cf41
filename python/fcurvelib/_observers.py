"""Observers as callables, and drags."""

from __future__ import annotations

import atexit
import contextlib
import inspect
import weakref
from collections.abc import Callable, Iterable, Iterator
from typing import Any, NamedTuple, Optional, Union

from . import _core


class Change(NamedTuple):
    """One edit, as an observer hears of it.

    what    part                   detail
    ------------------------------------------------------------------------------------------------
    key     the Key                'position', 'unified' or 'breakdown'
    tangent the Tangent            'handle', 'type', 'weighted' or 'weight_locked'
    segment the Segment            'interpolator'
    added   the new Key
    removed the Key, out of its curve
    property the part or the curve the property's name; value is its new text, '' where it was erased
    name    the curve
    curve   the curve, which changed as a whole
    begin, step, end  the curve, in a drag
    container the container: its curves or properties changed
    """

    what: str
    subject: Union[_core.Curve, _core.Container]
    part: Union[_core.Curve, _core.Container, _core.Key, _core.Tangent, _core.Segment]
    detail: str = ""
    value: str = ""


Callback = Callable[[Change], Any]
_Reference = Callable[[], Optional[Callback]]

_entries: set[_Entry] = set()
_purge_at = 64


class _Entry:
    """One subscription: the listener that the curve calls, and a way to the callback."""

    def __init__(self, subject: Any, callback: Callback, weak: bool) -> None:
        self._find: _Reference = self._weakly(callback) if weak else lambda: callback
        kind = _core._ContainerListener if isinstance(subject, _core.Container) else _core._CurveListener
        self._listener: Any = kind(self._hear)
        self._listener.listen(subject)
        _entries.add(self)

    def _weakly(self, callback: Callback) -> _Reference:
        itself = weakref.ref(self)

        def gone(_: Any) -> None:
            entry = itself()
            if entry is not None:
                entry.cancel()

        if inspect.ismethod(callback):
            return weakref.WeakMethod(callback, gone)
        return weakref.ref(callback, gone)

    def _hear(self, *change: Any) -> None:
        callback = self._find()
        if callback is not None:
            callback(Change(*change))

    @property
    def active(self) -> bool:
        return self._listener is not None and not self._listener.is_orphan

    def cancel(self) -> None:
        self._listener = None
        self._find = lambda: None
        _entries.discard(self)


class Subscription:
    """A callback that hears of changes. It keeps the callback alive; cancel() ends it, as leaving `with` does."""

    def __init__(self, entry: _Entry, callback: Callback) -> None:
        self._entry = entry
        self._callback: Optional[Callback] = callback

    @property
    def active(self) -> bool:
        """Whether the callback is still called: False after cancel(), or when the curve has gone."""
        return self._entry.active

    def cancel(self) -> None:
        self._entry.cancel()
        self._callback = None

    def __enter__(self) -> Subscription:
        return self

    def __exit__(self, *_: Any) -> None:
        self.cancel()


def _subscribe(subject: Any, callback: Callback, weak: bool) -> Subscription:
    global _purge_at
    if not callable(callback):
        raise TypeError(f"Expected a callable, found {type(callback).__name__}")
    if len(_entries) >= _purge_at:  # those whose curves have gone; other threads subscribe meanwhile
        for entry in [known for known in _entries.copy() if not known.active]:
            entry.cancel()
        _purge_at = max(64, 2 * len(_entries))
    return Subscription(_Entry(subject, callback, weak), callback)


def observe(self: Union[_core.Curve, _core.Container], callback: Callback, *, weak: bool = True) -> Subscription:
    """Calls callback(change) at each edit, on the thread that edits, before the edit returns.

    Weakly: as long as something else holds the callback (or the object that it is a method of), or the Subscription
    that is returned. Methods of built-in types (list.append) are made anew whenever they are named: keep the
    Subscription. With weak=False until it is cancelled or the curve goes; what the callback holds is let go of then at
    one of the next subscriptions.

    What the callback raises comes out of the edit, which is complete then, and all observers were called: bulk edits
    (update, paste, del keys[a:b]) go through to their end, too. Of several exceptions the first comes out, or the first
    that is no Exception, as KeyboardInterrupt.
    """
    return _subscribe(self, callback, weak)


def on_change(callback: Callback, *, weak: bool = True) -> Subscription:
    """As Curve.on_change, for every curve."""
    return _subscribe(None, callback, weak)


@contextlib.contextmanager
def drag(curve: _core.Curve) -> Iterator[_core.Curve]:
    """One interactive edit: observers hear 'begin', 'step' for each curve.notify() inside, and 'end'.

    Edits of parts are told as always. One drag at a time: the library has one setting for all curves.
    """
    _core._set_change_type("begin")
    try:
        curve.notify()
        _core._set_change_type("step")
        yield curve
    finally:
        _core._set_change_type("end")
        try:
            curve.notify()
        finally:
            _core._set_change_type("ordinary")


def edit(curves: Union[_core.Curve, _core.Container, Iterable[_core.Curve]], name: str = "", *,
         quiet: bool = False) -> _core.Gesture:
    """One gesture of any edits, for a `with` block: an exception that leaves it, or cancel(), puts everything back.

    Of a curve, of several, or of a container, whose list of curves belongs to it then. What comes back are the same
    objects: keys that are held are in their curve again. Gestures nest. name is for the undo menu of a host.

    Observers hear of each edit as always; of a quiet gesture they hear, at the end, one 'curve' of each changed curve;
    with step() calls inside 'begin', 'step' for each of them and 'end', as in a drag, however the block ends. What an observer raises while the block ends comes out of it, and the edits stay.
    """
    if isinstance(curves, _core.Curve):
        curves = (curves,)
    container = curves if isinstance(curves, _core.Container) else _core.Container(curves)
    return _core.Gesture(container, name, quiet)


@atexit.register
def _forget() -> None:
    """Nothing of Python is called once the interpreter ends, whatever the library still holds."""
    for entry in list(_entries):
        entry.cancel()
    _core._forget_names()
