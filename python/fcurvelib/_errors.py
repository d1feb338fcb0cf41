"""The exceptions of fcurvelib. str() of each is the message for people."""

from __future__ import annotations

from typing import Optional


class Error(Exception):
    """Root of every exception that the library raises, besides Python's own for wrong arguments."""


class FormatError(Error, ValueError):
    """What is wrong with a document that is read, or with what is to be written.

    str() is "walk.fcrvx:12:5: The attribute ..."; message the sentence alone. kind tells what is wrong in one word
    ("BadAttribute"). file, line and column (from 1) are None where they are not known.
    """

    def __init__(self, text: str, file: Optional[str] = None, line: Optional[int] = None, column: Optional[int] = None,
                 message: str = "", kind: str = "") -> None:
        super().__init__(text, file, line, column, message, kind)
        self.file = file
        self.line = line
        self.column = column
        self.message = message or text
        self.kind = kind

    def __str__(self) -> str:
        return str(self.args[0])


class UnknownFormatError(FormatError):
    """There is no format of that name, or none that recognises the document."""


class FormulaError(Error, ValueError):
    """A text that is no expression. position counts bytes from its start."""

    def __init__(self, message: str, position: int = 0, kind: str = "") -> None:
        super().__init__(message, position, kind)
        self.message = message
        self.position = position
        self.kind = kind

    def __str__(self) -> str:
        return self.message


class FileError(Error, OSError):
    """A file cannot be read or written. file is its name; errno and strerror are the system's.

    working_file is None, or, where the new file could not be put in the old one's place, the file beside it that has
    all that was to be saved.
    """

    def __init__(self, text: str, file: Optional[str] = None, code: Optional[int] = None, words: Optional[str] = None,
                 working_file: Optional[str] = None) -> None:
        super().__init__(text)
        self.message = text
        self.file = file
        self.filename = file
        self.errno = code  # type: ignore[assignment]
        self.strerror = words  # type: ignore[assignment]
        self.working_file = working_file

    def __str__(self) -> str:
        return self.message

    def __reduce__(self):  # type: ignore[no-untyped-def]
        return type(self), (self.message, self.file, self.errno, self.strerror, self.working_file)


class ToleranceWarning(UserWarning):
    """What was fitted is farther from what was asked for than the tolerance: fcurvelib.blend_report has figures."""


class FileMissingError(FileError, FileNotFoundError):
    """There is no such file or folder."""


class FileAccessError(FileError, PermissionError):
    """No permission."""


class PictureSizeError(Error, ValueError):
    """A picture's size is out of bounds, or leaves no room for its panels."""
