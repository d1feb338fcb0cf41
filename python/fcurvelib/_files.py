"""Reading and writing documents: paths, bytes, and file objects."""

from __future__ import annotations

import os
import pathlib
from collections.abc import Iterable, Mapping
from typing import Any, NamedTuple, Optional, Union

from . import _core
from ._errors import FileAccessError, FileError, FileMissingError

Path = Union[str, "os.PathLike[str]"]
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


def _raise(error: OSError, file: str) -> None:
    kind: type[FileError] = FileError
    if isinstance(error, FileNotFoundError):
        kind = FileMissingError
    elif isinstance(error, PermissionError):
        kind = FileAccessError
    raise kind(f"{file}: {error.strerror or error}", file) from error


def load(source: Any, format: Optional[str] = None) -> _core.Container:
    """The curves of a file: a path, or a file object (opened in binary or in text mode).

    The format is recognised by the content; name it to read as that one alone. Raises FormatError with line and column
    for a document that is wrong, FileError for a file that cannot be read.
    """
    if _is_file_object(source, "read"):
        data = source.read()
        name = getattr(source, "name", "")
        return _read(data, name if isinstance(name, str) else "", format)
    file = os.fspath(source)
    try:
        data = pathlib.Path(file).read_bytes()
    except OSError as error:
        _raise(error, file)
    return _read(data, file, format)


def loads(data: Union[str, bytes, bytearray, memoryview], format: Optional[str] = None) -> _core.Container:
    """As load, from the document itself."""
    return _read(data, "", format)


def _read(data: Any, file: str, format: Optional[str]) -> _core.Container:
    if isinstance(data, str):
        data = data.encode("utf-8", "surrogateescape")
    return _core._read(data, file, format)[0]


def _container(curves: Curves) -> _core.Container:
    if isinstance(curves, _core.Container):
        return curves
    return _core.Container([curves] if isinstance(curves, _core.Curve) else curves)


def _format_for(file: str) -> str:
    extension = os.path.splitext(file)[1][1:].lower()
    written = [known for known in formats() if known.writable]
    for known in written:
        if known.extension.lower() == extension and extension:
            return known.name
    extensions = ", ".join("." + known.extension for known in written)
    raise ValueError(f"{file}: no format that is written has this extension; there are {extensions}. "
                     "Name another one by its format")


def save(curves: Curves, target: Any, format: Optional[str] = None) -> None:
    """Writes a container, a curve or several curves to a path or a binary file object.

    The format is that of the path's extension (.fcrvx, .fcrvb) unless it is named; "xml" for a file object. A file that
    is there is replaced when the new one is whole, not before.
    """
    container = _container(curves)
    if _is_file_object(target, "write"):
        target.write(_core._write(container, format or "xml", ""))
        return
    file = os.fspath(target)
    _core._save(container, file, format or _format_for(file))


def dumps(curves: Curves, format: str = "xml") -> bytes:
    """As save, the document itself."""
    return _core._write(_container(curves), format, "")


def convert(source: Any, target: Any, format: Optional[str] = None, *, source_format: Optional[str] = None,
            frame_rate: float = 0.0, tolerance: float = 1e-4, settings: Optional[Mapping[str, str]] = None
            ) -> _core.Report:
    """Loads source and saves it as target, as load and save do, and returns a report of what that lost.

    frame_rate: frames a second where the file does not say; 0 for the format's own choice. tolerance: how far a curve
    may be off where it is split or fitted, as a share of its range of values. settings: of single formats, by
    "format.setting". An empty report: every curve came over with its shape, to 1e-9 of its range, and with all its
    parts.
    """
    report = _core.Report()
    with _core._Conversion(report, frame_rate, tolerance, dict(settings or {})):
        save(load(source, source_format), target, format)
    return report
