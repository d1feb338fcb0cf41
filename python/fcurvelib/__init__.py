"""Animation curves: hold, edit, evaluate, load and save them.

    >>> import fcurvelib as fc
    >>> curve = fc.Curve("height", [(1, 0), (12, 8), (24, 0)])
    >>> curve(12)
    8.0

x counts frames, y is whatever is animated; tangent handles are offsets from their key. One thread at a time edits a
curve; evaluating one that nobody edits is safe from any number.
"""

from . import _core, _views
from ._core import (CombineReport, CompiledCurve, Container, Curve, FitReport, Gesture, Interpolator, Interpolators, Key, KeyClip,
                    KeyGroup, Keys, Loss, MoveReport, PasteReport, Pose, Properties, Report, Segment, Segments,
                    Tangent, add, add_report, blend, blend_report, draw, fit_report, key_dtype, kinds, unroll)
from ._errors import (Error, FileAccessError, FileError, FileMissingError, FormatError, FormulaError, PictureSizeError,
                      ToleranceWarning, UnknownFormatError)
from ._files import Format, convert, dumps, formats, load, loads, save
from ._names import register, unregister
from ._observers import Change, Subscription, drag, edit, on_change
from ._tools import CurveArrays, fit, tangent_types

__version__ = "19.0.0"

__all__ = [
    "Change", "CombineReport", "CompiledCurve", "Container", "Curve", "CurveArrays", "Error", "FileAccessError", "FileError",
    "FileMissingError", "FitReport", "Format", "FormatError", "FormulaError", "Gesture", "Interpolator",
    "Interpolators", "Key", "KeyClip", "KeyGroup", "Keys", "Loss", "MoveReport", "PasteReport", "PictureSizeError",
    "Pose", "Properties", "Report", "Segment", "Segments", "Subscription", "Tangent", "ToleranceWarning",
    "UnknownFormatError", "add", "add_report", "blend", "blend_report", "convert", "draw", "drag", "dumps", "edit", "fit", "fit_report", "formats", "key_dtype", "kinds",
    "load", "loads", "on_change", "register", "save", "tangent_types", "unregister", "unroll",
]

_views.complete()
