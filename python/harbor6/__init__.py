"""Opens Microsoft Cabinet files, and compound documents such as installers. The names are those of zipfile.

>>> import harbor6, pathlib
>>> with harbor6.open("example.cab") as archive:
...     for entry in archive:
...         print(entry.name, entry.size, entry.modified)
text/b.txt 5 2004-02-03 04:05:06
"""

from typing import Any, List, NamedTuple, Optional

from . import _native
from ._archive import Archive, Attributes, Entry
from ._errors import BadArchive, Error, Incomplete, NotAnArchive, SystemFailure, Unusable, fail
from ._source import Callbacks, Input, plain_file, source_of

__version__ = ".".join(str(_native.lib.version() >> shift & 255) for shift in (16, 8, 0))


def open(file: Input, *, offset: int = 0, allow_damaged: bool = False) -> Archive:
    """Opens an archive for reading.

    `file` is a path, bytes, or a file object for bytes; one that can't seek is copied to a temporary file first. The
    archive begins `offset` bytes further. A file object must stay open, and is left to the caller. The other files of an
    archive that has several are found beside a path, so those of a set of cabinets open by that of its first.

    NotAnArchive is raised if no format recognises it, BadArchive if its head is damaged; with `allow_damaged` the
    entries in front of the damage can be read, and the failure is in `archive.damage`.
    """
    return Archive(source_of(file, offset), allow_damaged)


def is_archive(file: Input) -> bool:
    """Whether open() would open it.

    >>> harbor6.is_archive("example.cab"), harbor6.is_archive(b"text")
    (True, False)
    """
    try:
        open(file).close()
    except SystemFailure:
        raise
    except Error:
        return False
    return True


class Found(NamedTuple):
    """An archive inside a file: `harbor6.open(file, offset=found.offset)` opens it."""

    format: str
    offset: int
    size: Optional[int]  #: None if it is unknown
    cut: bool  #: the file ends inside it


def find(file: Input) -> List[Found]:
    """The archives anywhere inside a file, such as a self-extracting program.

    >>> harbor6.find(b"anything" + pathlib.Path("example.cab").read_bytes())[0].offset
    8
    """
    result: List[Found] = []
    calls = Callbacks()

    def report(_context: Any, found: Any) -> int:
        each = found.contents
        size = None if each.size == (1 << 64) - 1 else each.size
        result.append(Found(each.format.decode(), each.offset, size, bool(each.cut)))
        return 0

    with plain_file(file) as plain:
        status = _native.lib.find(
            _native.formats, plain.fileno(), None, _native.FoundReport(calls.guarded(report, 1))
        )
    calls.reraise()
    if status:
        fail(status, "the file can't be searched")
    return result


__all__ = [
    "Archive",
    "Attributes",
    "BadArchive",
    "Entry",
    "Error",
    "Found",
    "Incomplete",
    "NotAnArchive",
    "SystemFailure",
    "Unusable",
    "find",
    "is_archive",
    "open",
]
