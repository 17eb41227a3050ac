"""The library's C interface, called through ctypes, which releases the interpreter lock during each call."""

import ctypes
import os
from ctypes import POINTER, byref, c_char_p, c_int, c_int64, c_size_t, c_uint32, c_uint64, c_void_p
from typing import Any

OK, FAILED, NOT_AN_ARCHIVE, BAD_CONTENT, SYSTEM, NO_MEMORY, ABORTED, NO_ENTRY, INCOMPLETE = range(9)

Read = ctypes.CFUNCTYPE(c_int, c_void_p, c_uint64, c_void_p, c_size_t, POINTER(c_size_t))
Wants = ctypes.CFUNCTYPE(c_int, c_void_p, c_size_t)
Bytes = ctypes.CFUNCTYPE(c_int, c_void_p, c_size_t, c_void_p, c_size_t)
Ended = ctypes.CFUNCTYPE(None, c_void_p, c_size_t, c_int)
Report = ctypes.CFUNCTYPE(c_int, c_void_p, c_char_p, c_int, c_char_p)


class Source(ctypes.Structure):
    _fields_ = [("context", c_void_p), ("size", c_uint64), ("read", Read)]


class Time(ctypes.Structure):
    _fields_ = [(part, c_int) for part in ("year", "month", "day", "hour", "minute", "second")]


class Receiver(ctypes.Structure):
    _fields_ = [("context", c_void_p), ("wants", Wants), ("bytes", Bytes), ("ended", Ended)]


class Expansion(ctypes.Structure):
    _fields_ = [("context", c_void_p), ("existing", c_int), ("wants", Wants), ("report", Report), ("flags", c_uint32)]


class Found(ctypes.Structure):
    _fields_ = [("format", c_char_p), ("offset", c_uint64), ("size", c_uint64), ("cut", c_int)]


FoundReport = ctypes.CFUNCTYPE(c_int, c_void_p, POINTER(Found))

_functions = {
    "version": (c_uint32,),
    "formats_new": (c_void_p,),
    "formats_load": (c_int, c_void_p, c_char_p),
    "formats_error": (c_char_p, c_void_p),
    "open_path": (c_int, c_void_p, c_char_p, POINTER(c_void_p)),
    "open_descriptor": (c_int, c_void_p, c_int, POINTER(c_void_p)),
    "open_memory": (c_int, c_void_p, c_void_p, c_size_t, POINTER(c_void_p)),
    "open_source": (c_int, c_void_p, POINTER(Source), POINTER(c_void_p)),
    "close": (None, c_void_p),
    "error": (c_char_p, c_void_p),
    "format": (c_char_p, c_void_p),
    "count": (c_size_t, c_void_p),
    "path": (c_char_p, c_void_p, c_size_t),
    "size": (c_uint64, c_void_p, c_size_t),
    "modified": (c_int, c_void_p, c_size_t, POINTER(Time)),
    "attributes": (c_uint32, c_void_p, c_size_t),
    "text": (c_char_p, c_void_p, c_size_t, c_char_p),
    "number": (c_int, c_void_p, c_size_t, c_char_p, POINTER(c_int64)),
    "read": (c_int, c_void_p, POINTER(Receiver)),
    "pass_open": (c_int, c_void_p, c_size_t, POINTER(c_void_p)),
    "pass_next": (c_int, c_void_p, POINTER(c_size_t)),
    "pass_read": (c_int64, c_void_p, c_void_p, c_size_t),
    "pass_close": (c_int, c_void_p),
    "expand": (c_int, c_void_p, c_char_p, POINTER(Expansion)),
    "find": (c_int, c_void_p, c_int, c_void_p, FoundReport),
}


def prefix() -> str:
    """The folder with bin/ and lib/ of the library that this package uses."""
    return os.environ.get("HARBOR6_PREFIX") or os.path.join(os.path.dirname(__file__), "native")


def _load() -> Any:
    path = os.path.join(prefix(), "lib", "libharbor6.so.1")
    library = ctypes.CDLL(path if os.path.exists(path) else "libharbor6.so.1")
    for name, (result, *arguments) in _functions.items():
        function = getattr(library, "harbor6_" + name)
        function.restype = result
        function.argtypes = arguments
        setattr(library, name, function)
    return library


lib: Any = _load()
formats = lib.formats_new()
if lib.formats_load(formats, None) != OK:
    raise ImportError("harbor6: " + lib.formats_error(formats).decode())

__all__ = ["byref", "c_int64", "c_void_p", "formats", "lib", "prefix"]
