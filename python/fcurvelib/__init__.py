"""Animation curves: hold, edit, evaluate, load and save them.

    >>> import fcurvelib as fc
    >>> curve = fc.Curve("height", [(1, 0), (12, 8), (24, 0)])
    >>> curve(12)
    8.0

x counts frames, y is whatever is animated; tangent handles are offsets from their key. One thread at a time edits a
curve; evaluating one that nobody edits is safe from any number.
"""

from . import _core, _views
from ._core import (Container, Curve, Interpolator, Interpolators, Key, Keys, Properties, Segment, Segments, Tangent,
                    kinds)
from ._errors import (Error, FileAccessError, FileError, FileMissingError, FormatError, FormulaError, PictureSizeError,
                      UnknownFormatError)
from ._files import Format, dumps, formats, load, loads, save

__version__ = "19.0.0"

__all__ = [
    "Container", "Curve", "Error", "FileAccessError", "FileError", "FileMissingError", "Format", "FormatError",
    "FormulaError", "Interpolator", "Interpolators", "Key", "Keys", "PictureSizeError", "Properties", "Segment",
    "Segments", "Tangent", "UnknownFormatError", "dumps", "formats", "kinds", "load", "loads", "save",
]

_views.complete()
