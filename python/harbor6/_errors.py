"""The exceptions of this package, with the texts of the library."""

from typing import Dict, List, NoReturn, Tuple

from . import _native


class Error(Exception):
    """The base of all exceptions that this package raises itself."""


class NotAnArchive(Error):
    """No format recognises the file."""


class BadArchive(Error):
    """The archive is damaged, cut short, or uses what its format does not support."""


class SystemFailure(Error, OSError):
    """A file or folder can't be read or written."""


class Unusable(Error, ValueError):
    """The archive or file is closed, or was opened by the process from which this one was forked."""


class Incomplete(Error):
    """Some files were not extracted: `failures` has a (path, reason) for each."""

    def __init__(self, text: str, failures: List[Tuple[str, str]]) -> None:
        super().__init__(text)
        self.failures = failures


_classes: Dict[int, type] = {
    _native.NOT_AN_ARCHIVE: NotAnArchive,
    _native.BAD_CONTENT: BadArchive,
    _native.SYSTEM: SystemFailure,
    _native.NO_MEMORY: MemoryError,
}


def fail(status: int, text: str) -> NoReturn:
    raise _classes.get(status, Error)(text)
