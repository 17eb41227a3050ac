"""Archives and their entries."""

import datetime
import enum
import io
import os
import threading
from typing import Any, BinaryIO, Dict, Iterable, Iterator, List, Optional, Set, Tuple, Union, cast

from . import _native
from ._errors import BadArchive, Incomplete, Unusable
from ._native import byref, c_int64, lib
from ._patterns import Patterns, matcher
from ._source import AnySource, Callbacks, Handle, Path

_existing = {"error": 0, "never": 1, "always": 2}


class Attributes(enum.IntFlag):
    """The attributes that an archive states for an entry."""

    READ_ONLY = 1
    HIDDEN = 2
    SYSTEM = 4
    ARCHIVE = 32
    EXECUTABLE = 64


class Entry:
    """A file in an archive. Its values remain when the archive is closed; open() and read() need it open."""

    __slots__ = ("archive", "index", "name", "raw_name", "size", "modified", "attributes", "method", "_folder")

    archive: "Archive"
    index: int
    name: str  #: the path, with "/" between names; may hold names such as "..", which extracting leaves out
    raw_name: str  #: the path as the archive's record has it, even where `name` is another
    size: int  #: in bytes, as the archive states it
    modified: Optional[datetime.datetime]  #: without a zone; None if the archive has none, or no valid one
    attributes: Attributes
    method: str  #: how it is compressed, such as "LZX:21"; "" if that is unknown

    def __init__(self, archive: "Archive", handle: Any, index: int) -> None:
        self.archive, self.index = archive, index
        self.name = lib.path(handle, index).decode("utf-8", "surrogateescape")
        self.raw_name = _text(handle, index, b"pathName") or self.name
        self.method = _text(handle, index, b"compMethod")
        self.size = lib.size(handle, index)
        self.attributes = Attributes(lib.attributes(handle, index))
        folder = c_int64(-1)
        lib.number(handle, index, b"folderIndex", byref(folder))
        self._folder = folder.value
        time = _native.Time()
        self.modified = None
        if lib.modified(handle, index, byref(time)):
            try:
                self.modified = datetime.datetime(
                    time.year, time.month, time.day, time.hour, time.minute, time.second
                )
            except ValueError:
                pass

    def is_dir(self) -> bool:
        """False: the entries of an archive are its files; the folders are in their names."""
        return self.name.endswith("/")

    def open(self) -> BinaryIO:
        """A file object that decodes while it is read."""
        return self.archive.open(self)

    def read(self) -> bytes:
        """All bytes of the entry."""
        return self.archive.read(self)

    @property
    def filename(self) -> str:
        """As zipfile.ZipInfo has it: `name`."""
        return self.name

    @property
    def file_size(self) -> int:
        """As zipfile.ZipInfo has it: `size`."""
        return self.size

    @property
    def date_time(self) -> Tuple[int, int, int, int, int, int]:
        """As zipfile.ZipInfo has it: `modified`, or 1980-01-01 if there is none."""
        time = self.modified or datetime.datetime(1980, 1, 1)
        return (time.year, time.month, time.day, time.hour, time.minute, time.second)

    def __repr__(self) -> str:
        return f"<harbor6.Entry {self.name!r}, {self.size} bytes>"


def _text(handle: Any, index: int, key: bytes) -> str:
    found = lib.text(handle, index, key)
    return str(found, "utf-8", "surrogateescape") if found else ""


class Archive:
    """An open archive: an iterable of its entries, and a context manager that closes it.

    Threads may share it: reading by several of them at once decodes in parallel. A process that is forked from the
    one that opened it can't use it. Reading entries in their order is fast; entries of one compressed folder that
    are read in another order are decoded from the folder's start each time.
    """

    def __init__(self, source: AnySource, allow_damaged: bool = False) -> None:
        self._source: Optional[AnySource] = source
        self._pid = os.getpid()
        self._lock = threading.Lock()
        self._entries: Optional[List[Entry]] = None
        self._names: Dict[str, Entry] = {}
        self._idle: List[Handle] = []
        #: What ended the reading of the archive's head, with allow_damaged; else None.
        self.damage: Optional[BadArchive] = None
        handle = Handle(source)
        try:
            handle.check(handle.opened)
        except BaseException as failure:
            if not allow_damaged or not isinstance(failure, BadArchive):
                handle.close()
                source.close()
                raise
            self.damage = failure
        self._idle.append(handle)
        #: The short name of the format, such as "cab".
        self.format: str = lib.format(handle.archive).decode()
        self._count: int = lib.count(handle.archive)

    # Handles: an operation takes an idle one, or opens another while other threads or files use them.

    def _take(self) -> Handle:
        if self._pid != os.getpid():
            raise Unusable("the archive was opened by another process; open it again after the fork")
        with self._lock:
            source = self._source
            if source is None:
                raise Unusable("the archive is closed")
            if self._idle:
                return self._idle.pop()
        handle = Handle(source)
        if self.damage is None:
            handle.check(handle.opened)
        return handle

    def _give_back(self, handle: Handle) -> None:
        if self._pid == os.getpid():
            with self._lock:
                if self._source is not None and len(self._idle) < 4:
                    self._idle.append(handle)
                    return
        handle.close()

    def close(self) -> None:
        """Closes the archive; files that are open in it can be read on."""
        if self._pid != os.getpid():
            return
        with self._lock:
            source, self._source = self._source, None
            idle, self._idle = self._idle, []
        for handle in idle:
            handle.close()
        if source is not None:
            source.close()

    def __enter__(self) -> "Archive":
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    # Entries

    def infolist(self) -> List[Entry]:
        """The entries, in the archive's order."""
        if self._entries is None:
            handle = self._take()
            try:
                entries = [Entry(self, handle.archive, index) for index in range(self._count)]
            finally:
                self._give_back(handle)
            for entry in reversed(entries):
                self._names[entry.name] = entry
            self._entries = entries
        return self._entries

    def namelist(self) -> List[str]:
        """The names of the entries, in the archive's order."""
        return [entry.name for entry in self.infolist()]

    def getinfo(self, name: str) -> Entry:
        """The first entry of that name; KeyError if there is none."""
        self.infolist()
        try:
            return self._names[name]
        except KeyError:
            raise KeyError(f"There is no item named {name!r} in the archive") from None

    def __iter__(self) -> Iterator[Entry]:
        return iter(self.infolist())

    def __len__(self) -> int:
        return self._count

    def __contains__(self, name: object) -> bool:
        self.infolist()
        return name in self._names

    def _entry(self, entry: Union[str, Entry]) -> Entry:
        if isinstance(entry, str):
            return self.getinfo(entry)
        if entry.archive is not self:
            raise ValueError("the entry is of another archive")
        return entry

    # Reading

    def _take_at(self, entry: Entry) -> Handle:
        handle = self._take()
        try:
            known = self.infolist() if handle.current < 0 else cast(List[Entry], self._entries)
            same = 0 <= handle.current and known[handle.current]._folder == entry._folder
            handle.go_to(entry.index, entry.name, same)
        except BaseException:
            self._give_back(handle)
            raise
        return handle

    def read(self, name: Union[str, Entry]) -> bytes:
        """All bytes of an entry.

        >>> with harbor6.open("example.cab") as archive:
        ...     archive.read("text/b.txt")[:5]
        b'hello'
        """
        entry = self._entry(name)
        handle = self._take_at(entry)
        try:
            return handle.read_rest(entry.size, entry.name)
        finally:
            self._give_back(handle)

    def open(self, name: Union[str, Entry]) -> BinaryIO:
        """A file object over the bytes of an entry, which are decoded while it is read, in constant memory."""
        return cast(BinaryIO, io.BufferedReader(_EntryFile(self, self._entry(name)), 1 << 17))

    def _read_all(self) -> Tuple[Optional[BadArchive], List[Entry]]:
        """The failure that ended the pass, and the entries that did not come complete."""
        complete = bytearray(self._count)
        calls = Callbacks()

        def ended(_context: Any, entry: int, whole: int) -> None:
            complete[entry] = whole

        receiver = _native.Receiver(ended=_native.Ended(calls.guarded(ended)))
        handle = self._take()
        failure = None
        try:
            handle.end_pass()
            status = lib.read(handle.archive, byref(receiver))
            calls.reraise()
            handle.check(status)
        except BadArchive as raised:
            failure = raised
        finally:
            self._give_back(handle)
        return failure, [entry for entry in self.infolist() if not complete[entry.index]]

    def test(self) -> None:
        """Reads everything and tests every checksum; raises BadArchive if something is damaged or missing."""
        failure, missing = self._read_all()
        if failure or self.damage:
            raise failure or cast(BadArchive, self.damage)
        if missing:
            raise BadArchive(missing[0].name + ": the entry is incomplete")

    def testzip(self) -> Optional[str]:
        """As zipfile has it: the name of the first entry that is damaged, or None."""
        missing = self._read_all()[1]
        return missing[0].name if missing else None

    # Extracting

    def extract(self, member: Union[str, Entry], folder: Path = ".", *, overwrite: str = "error") -> str:
        """Writes one entry below `folder`, and returns the path of the file. As extractall()."""
        written = self._expand(folder, {self._entry(member).index}, overwrite)
        return os.path.join(os.fspath(folder), written[0]) if written else ""

    def extractall(
        self,
        folder: Path = ".",
        members: Optional[Iterable[Union[str, Entry]]] = None,
        *,
        only: Optional[Patterns] = None,
        exclude: Optional[Patterns] = None,
        overwrite: str = "error",
    ) -> List[str]:
        """Writes entries below `folder`, which is made if need be, and returns the paths of the files in it.

        `only` and `exclude` are patterns such as "*.dll" or ["docs/**"], with the meaning that they have for the
        program. Where a file exists, "error" keeps it and reports that, "never" keeps it, and "always" replaces it
        once the new one is complete. Nothing is written outside the folder, whatever the archive says and whatever
        links are in it. Files that can't be written raise Incomplete, after all others were written.

        >>> with harbor6.open("example.cab") as archive:
        ...     archive.extractall("out", only="text/*.txt")
        ['text/b.txt']
        """
        wanted: Optional[Set[int]] = None
        if members is not None or only is not None or exclude is not None:
            chosen = self.infolist() if members is None else [self._entry(each) for each in members]
            takes = matcher(only) if only is not None else lambda name: True
            drops = matcher(exclude) if exclude is not None else lambda name: False
            wanted = {each.index for each in chosen if takes(each.name) and not drops(each.name)}
        return self._expand(folder, wanted, overwrite)

    def _expand(self, folder: Path, wanted: Optional[Set[int]], overwrite: str) -> List[str]:
        if overwrite not in _existing:
            raise ValueError(f"overwrite is one of {', '.join(_existing)}, not {overwrite!r}")
        reports: List[Tuple[str, int, str]] = []
        calls = Callbacks()

        def report(_context: Any, path: bytes, status: int, text: bytes) -> int:
            reports.append((path.decode("utf-8", "surrogateescape"), status, text.decode("utf-8", "replace")))
            return 0

        expansion = _native.Expansion(
            existing=_existing[overwrite], report=_native.Report(calls.guarded(report, 1))
        )
        if wanted is not None:
            takes = wanted.__contains__
            expansion.wants = _native.Wants(calls.guarded(lambda _context, entry: takes(entry)))
        handle = self._take()
        try:
            handle.end_pass()
            status = lib.expand(handle.archive, os.fsencode(folder), byref(expansion))
            calls.reraise()
            if status == _native.INCOMPLETE:
                failures = [(path, text) for path, code, text in reports if code]
                raise Incomplete(lib.error(handle.archive).decode("utf-8", "replace"), failures)
            handle.check(status)
        finally:
            self._give_back(handle)
        if self.damage:
            raise self.damage
        return [path for path, _code, text in reports if not text]


class _EntryFile(io.RawIOBase):
    def __init__(self, archive: Archive, entry: Entry) -> None:
        self._archive, self._entry, self.name = archive, entry, entry.name
        self._use = threading.Lock()
        self._done = 0
        self._handle: Optional[Handle] = None
        self._handle = archive._take_at(entry)

    def readable(self) -> bool:
        return True

    def _usable(self) -> Handle:
        if self._handle is None:
            raise Unusable("the file is closed")
        if self._handle.pid != os.getpid():
            raise Unusable("the file was opened by another process; open it again after the fork")
        return self._handle

    def readinto(self, buffer: Any) -> int:
        with self._use:
            came = self._usable().read_into(memoryview(buffer).cast("B"), self.name)
            self._done += came
            return came

    def readall(self) -> bytes:
        with self._use:
            rest = self._usable().read_rest(self._entry.size - self._done, self.name)
            self._done += len(rest)
            return rest

    def close(self) -> None:
        with self._use:
            handle, self._handle = self._handle, None
        super().close()
        if handle is not None:
            self._archive._give_back(handle)
