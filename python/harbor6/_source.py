"""Where the bytes of an archive come from: each source opens any number of handles of the C interface."""

import atexit
import ctypes
import io
import os
import stat
import threading
import weakref
from typing import IO, Any, Callable, List, Optional, Union

from ._errors import BadArchive, fail
from ._native import ABORTED, Read, Source, byref, c_void_p, formats, lib

Path = Union[str, "os.PathLike[str]"]
_longest_piece = 64 << 20

# Bytes to be filled at once: nobody else has them yet.
_new_bytes = ctypes.pythonapi.PyBytes_FromStringAndSize
_new_bytes.restype = ctypes.py_object
_new_bytes.argtypes = (c_void_p, ctypes.c_ssize_t)

Input = Union[Path, bytes, bytearray, memoryview, IO[bytes]]


class Callbacks:
    """Keeps what callbacks raise, as an exception can't pass through the library, until its call has returned."""

    def __init__(self) -> None:
        self.raised: Optional[BaseException] = None

    def guarded(self, function: Callable[..., Any], failed: int = 0) -> Callable[..., Any]:
        def call(*arguments: Any) -> Any:
            try:
                return function(*arguments)
            except BaseException as failure:
                self.raised = failure
                return failed

        return call

    def reraise(self) -> None:
        raised, self.raised = self.raised, None
        if raised is not None:
            raise raised


class Bytes:
    """Bytes in memory, which must not change meanwhile: what can change is copied."""

    calls: Optional["Callbacks"] = None

    def __init__(self, data: bytes) -> None:
        self.data = data

    def open(self, archive: Any) -> int:
        address = ctypes.cast(ctypes.c_char_p(self.data), c_void_p)
        return int(lib.open_memory(formats, address, len(self.data), archive))

    def close(self) -> None:
        pass


class Place:
    """A plain file of the system by its path, beside which the other files of an archive are found."""

    calls: Optional["Callbacks"] = None

    def __init__(self, path: bytes) -> None:
        self.path = path

    def open(self, archive: Any) -> int:
        return int(lib.open_path(formats, self.path, archive))

    def close(self) -> None:
        pass


class File:
    """A plain file of the system, from its present position."""

    calls: Optional["Callbacks"] = None

    def __init__(self, file: Any) -> None:
        self.file = file

    def open(self, archive: Any) -> int:
        return int(lib.open_descriptor(formats, self.file.fileno(), archive))

    def close(self) -> None:
        self.file.close()


class Object:
    """A Python file object that can seek, from its present position. It remains the caller's."""

    def __init__(self, file: IO[bytes]) -> None:
        start = file.tell()
        size = max(file.seek(0, io.SEEK_END) - start, 0)
        lock = threading.Lock()

        def read(_context: Any, offset: int, buffer: int, length: int, came: Any) -> int:
            with lock:
                file.seek(start + offset)
                data = file.read(length)
            if len(data) > length:
                raise ValueError("read() gave more bytes than asked")
            ctypes.memmove(buffer, bytes(data), len(data))
            came[0] = len(data)
            return 0

        self.calls = Callbacks()
        self.source = Source(None, size, Read(self.calls.guarded(read, 1)))

    def open(self, archive: Any) -> int:
        return int(lib.open_source(formats, byref(self.source), archive))

    def close(self) -> None:
        pass


AnySource = Union[Bytes, Place, File, Object]


def _copied(file: Any) -> IO[bytes]:
    import shutil  # here, as importing them takes as long as the rest of the package
    import tempfile

    copy = tempfile.TemporaryFile()
    try:
        shutil.copyfileobj(file, copy)
        copy.seek(0)
    except BaseException:
        copy.close()
        raise
    return copy


def plain_file(file: Input) -> Any:
    """A file of the system with these bytes, to be closed by the caller; for a path it may be a pipe."""
    if isinstance(file, (str, os.PathLike)):
        return io.FileIO(os.fspath(file))
    if isinstance(file, (bytes, bytearray, memoryview)):
        return _copied(io.BytesIO(file))
    if not hasattr(file, "read"):
        raise TypeError("harbor6 opens a path, bytes, or a file object for bytes")
    return _copied(file)


def source_of(file: Input, offset: int = 0) -> AnySource:
    if isinstance(file, (bytes, bytearray, memoryview)):
        return Bytes(bytes(file)[offset:])
    if not isinstance(file, (str, os.PathLike)) and hasattr(file, "seekable") and file.seekable():
        file.seek(offset, io.SEEK_CUR)
        return Object(file)
    plain = plain_file(file)
    if not stat.S_ISREG(os.fstat(plain.fileno()).st_mode):
        with plain:
            plain = _copied(plain)
    elif offset == 0 and isinstance(file, (str, os.PathLike)):
        plain.close()
        return Place(os.path.abspath(os.fsencode(file)))
    plain.seek(offset)
    return File(plain)


_handles: "weakref.WeakSet[Handle]" = weakref.WeakSet()


@atexit.register
def _close_all() -> None:
    """Ends the threads that may still call the interpreter, while it can be called."""
    for handle in list(_handles):
        handle.close()


class Handle:
    """An archive of the C interface, and the pass that reads it: the user's alone, one thread at a time."""

    def __init__(self, source: AnySource) -> None:
        self.pid = os.getpid()
        self.source = source
        self.archive = c_void_p()
        self.reading = c_void_p()
        self.current = -1
        self.opened = source.open(byref(self.archive))
        _handles.add(self)

    def check(self, status: int, about: str = "") -> None:
        """Raises what the status means."""
        if status == ABORTED and self.source.calls is not None:
            self.source.calls.reraise()
        if status:
            fail(status, about + lib.error(self.archive).decode("utf-8", "replace"))

    def end_pass(self) -> int:
        reading, self.reading = self.reading, c_void_p()
        return int(lib.pass_close(reading))

    def close(self) -> None:
        # A forked child does not have the threads of its parent, so waiting for them would not end.
        if self.archive and self.pid == os.getpid():
            self.end_pass()
            lib.close(self.archive)
        self.archive = c_void_p()

    def __del__(self) -> None:
        self.close()

    def go_to(self, entry: int, path: str, same_folder: bool) -> None:
        """Has the pass deliver the entry next. It goes on with the present pass where that decodes nothing
        that a new one would not."""
        if self.reading and entry > self.current and (entry == self.current + 1 or same_folder):
            if self._advance(entry):
                return
        self.end_pass()
        self.check(lib.pass_open(self.archive, entry, byref(self.reading)))
        if not self._advance(entry):
            self.check(self.end_pass(), path + ": ")
            raise BadArchive(path + ": the entry is incomplete")

    def _advance(self, entry: int) -> bool:
        reached = ctypes.c_size_t()
        while lib.pass_next(self.reading, byref(reached)):
            self.current = reached.value
            if self.current == entry:
                return True
        return False

    def read_into(self, buffer: Any, path: str) -> int:
        """Fills the buffer with the next bytes of the entry; returns how many came, fewer only at its end."""
        return self._read(byref(ctypes.c_char.from_buffer(buffer)), len(buffer), path) if len(buffer) else 0

    def read_rest(self, expected: int, path: str) -> bytes:
        """The bytes of the entry that are left: `expected`, if its archive states the size as it is."""
        pieces: List[bytes] = []
        while True:
            # A statement about a size costs no more memory than a large piece beyond what came.
            length = min(max(expected, 1), _longest_piece)
            piece = _new_bytes(None, length)
            came = self._read(piece, length, path)
            if not came:
                return b"".join(pieces)
            pieces.append(piece[:came])
            expected = expected - came if came == length else 0

    def _read(self, target: Any, length: int, path: str) -> int:
        came = int(lib.pass_read(self.reading, target, length))
        if came < 0:
            self.check(self.end_pass(), path + ": ")
            raise BadArchive(path + ": the entry is incomplete")
        return came
