"""Reading and writing documents: paths, bytes, and file objects."""

from __future__ import annotations

import io
import math
import os
import re
from collections.abc import Callable, Iterable, Mapping
from typing import Any, NamedTuple, Optional, Union

from . import _core
from ._errors import FileError, UnknownFormatError

_DECLARED = re.compile(r"""\ufeff?\s*<\?xml\b[^>]*?\s(encoding\s*=\s*(?:"[^">]*"|'[^'>]*'))""")

Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
Progress = Optional[Callable[[float], Any]]
Curves = Union[_core.Curve, _core.Container, Iterable[_core.Curve]]


class Format(NamedTuple):
    """A file format: the name that load and save take, a title, the extension of its files, what can be done."""

    name: str
    title: str
    extension: str
    readable: bool
    writable: bool


def formats() -> list[Format]:
    """All formats, by name."""
    return [Format(*row) for row in _core._formats()]


def _is_file_object(target: Any, method: str) -> bool:
    return not isinstance(target, (str, os.PathLike)) and hasattr(target, method)


def _path(path: Path) -> str:
    return os.fsdecode(os.fspath(path))


def load(source: Any, format: Optional[str] = None, *, progress: Progress = None) -> _core.Container:
    """The curves of a file: a path, or a file object (opened in binary or in text mode).

    The format is recognised by the content; name it to read as that one alone. Raises FormatError with line and column
    for a document that is wrong, FileError for a file that cannot be read. progress(share) hears, of a path, of the
    share that is done, rising to 1; what it raises ends the work.
    """
    if _is_file_object(source, "read"):
        data = source.read()
        name = getattr(source, "name", "")
        return _read(data, name if isinstance(name, str) else "", format)
    return _core._load(_path(source), format, progress)


def loads(data: Union[str, bytes, bytearray, memoryview], format: Optional[str] = None) -> _core.Container:
    """As load, from the document itself. A str counts as decoded, whatever encoding it names."""
    return _read(data, "", format)


def _read(data: Any, file: str, format: Optional[str]) -> _core.Container:
    if isinstance(data, str):
        declared = _DECLARED.match(data)
        if declared:  # in what it was encoded, before somebody decoded it; blanks keep line and column of errors
            data = data[:declared.start(1)] + " " * len(declared[1]) + data[declared.end(1):]
        data = data.encode("utf-8", "surrogateescape")
    return _core._read(data, file, format)


def _container(curves: Curves) -> _core.Container:
    if isinstance(curves, _core.Container):
        return curves
    return _core.Container([curves] if isinstance(curves, _core.Curve) else curves)


def _format_for(file: str) -> str:
    format = _core._format_of(file)
    if format is not None:
        return format
    extensions = ", ".join("." + known.extension for known in formats() if known.writable)
    raise UnknownFormatError(f"{file}: no format that is written has this extension; there are {extensions}. "
                             "Name another one by its format", file)


def _write_all(target: Any, document: bytes) -> None:
    rest: Union[bytes, memoryview] = document
    while rest:  # files without a buffer may take a part of it
        written = target.write(rest)
        if not isinstance(written, int):
            if isinstance(target, io.RawIOBase):
                raise FileError("The file takes no more now, as it does not wait: open it with a buffer")
            return
        if written <= 0:
            raise FileError("The file takes no more")
        rest = memoryview(rest)[written:]


def save(curves: Curves, target: Any, format: Optional[str] = None, *, progress: Progress = None) -> None:
    """Writes a container, a curve or several curves to a path or a binary file object.

    The format is that of the path's extension (.fcrvx, .fcrvb) unless it is named; "xml" for a file object. A file that
    is there is replaced when the new one is whole, not before; it keeps its permissions, and a link goes on leading to
    it. progress as in load: the old file stays when it raises. FileError says what the system refused.
    UnknownFormatError, which is a ValueError, where no format has the extension.
    """
    container = _container(curves)
    if _is_file_object(target, "write"):
        _write_all(target, _core._write(container, format or "xml", ""))
        return
    file = _path(target)
    _core._save(container, file, format or _format_for(file), progress)


def dumps(curves: Curves, format: str = "xml") -> bytes:
    """As save, the document itself."""
    return _core._write(_container(curves), format, "")


def convert(source: Any, target: Any, format: Optional[str] = None, *, source_format: Optional[str] = None,
            frame_rate: float = 0.0, tolerance: float = 1e-4, settings: Optional[Mapping[str, str]] = None
            ) -> _core.Report:
    """Loads source and saves it as target, as load and save do, and returns a report of what that lost.

    frame_rate: frames a second where the file does not say; 0 for the format's own choice. tolerance: how far a curve
    may be off where it is split or fitted, as a share of its range of values. settings: of single formats, by
    "format.setting"; ValueError for unknown ones, and for numbers below 0 or not finite. An empty report: every curve
    came over with its shape, to 1e-9 of its range, and with all its parts.
    """
    for label, number in (("frame_rate", frame_rate), ("tolerance", tolerance)):
        if not 0 <= number < math.inf:
            raise ValueError(f"Expected a {label} of 0 or more, found {number}")
    report = _core.Report()
    with _core._Conversion(report, frame_rate, tolerance, dict(settings or {})):
        save(load(source, source_format), target, format)
    return report
