#!/usr/bin/env python3
"""Digests or unpacks many cabinets, each within limits of its own, and keeps the results as JSON lines.

    cabinet_digest.py folder/ results.jsonl
    cabinet_digest.py --share 3/8 manifest.txt results-3.jsonl

The rows of a cabinet follow each other: one for each member, with its size, time and SHA-256 or its failure, and last one
with "members" for the cabinet, with its failure if there was any. A cabinet whose last row exists is not done again.
Cabinets are read in a child process, so that one that takes too much memory or time, or ends the process, fails alone.
"""

import argparse
import fcntl
import fnmatch
import glob
import hashlib
import json
import os
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import zlib
from dataclasses import asdict, dataclass
from typing import Any, BinaryIO, Dict, Iterable, Iterator, List, NamedTuple, Optional, Set, Tuple

small_member = 1 << 20


class Cabinet(NamedTuple):
    path: str
    size: int
    target: str = ""  #: the folder to unpack to; "" if it is not unpacked


@dataclass
class Limits:
    """For each cabinet."""

    memory: int = 1 << 30  #: address space of the process, in bytes
    seconds: int = 60  #: of processor time; ten times as many may pass
    size: int = 64 << 30  #: the sizes of all members, in bytes


# --- In the child ---


def sha256(entry: Any) -> str:
    if entry.size <= small_member:
        return hashlib.sha256(entry.read()).hexdigest()
    digest, piece = hashlib.sha256(), memoryview(bytearray(small_member))
    with entry.open() as file:
        while came := file.readinto(piece):
            digest.update(piece[:came])
    return digest.hexdigest()


def unpack(archive: Any, target: str) -> None:
    """The folder gets its name when it is complete. What a process left that did not get so far is removed."""
    for stale in glob.glob(glob.escape(target) + ".*.part"):
        shutil.rmtree(stale, ignore_errors=True)
    parent, name = os.path.split(target)
    os.makedirs(parent, exist_ok=True)
    part = tempfile.mkdtemp(".part", name + ".", parent)
    try:
        archive.extractall(part)
    finally:
        shutil.rmtree(target, ignore_errors=True)
        os.chmod(part, 0o755)
        os.rename(part, target)


def rows_of(file: Any, target: str, limits: Limits) -> Iterator[Dict[str, Any]]:
    """A row for each member, and the last one; `file` is what harbor6.open() takes."""
    import harbor6

    begin = time.monotonic()
    members = size = 0
    failure: Optional[BaseException] = None
    try:
        with harbor6.open(file, allow_damaged=True) as archive:
            failure = archive.damage
            if sum(entry.size for entry in archive) > limits.size:
                raise ValueError(f"its members have more than {limits.size} bytes")
            for entry in archive:
                row: Dict[str, Any] = {"member": entry.name, "size": entry.size}
                row["time"] = entry.modified and entry.modified.isoformat()
                try:
                    row["sha256"] = sha256(entry)
                    members, size = members + 1, size + entry.size
                except harbor6.BadArchive as damage:
                    row["failure"] = str(damage)
                    failure = failure or damage
                yield row
            if target:
                unpack(archive, target)
    except MemoryError:
        failure = MemoryError(f"it needs more memory than {limits.memory} bytes")
    except Exception as raised:
        failure = failure or raised
    last = {"members": members, "bytes": size, "seconds": round(time.monotonic() - begin, 6)}
    yield {**last, "failure": str(failure) or repr(failure)} if failure else last


def line_of(path: str, row: Dict[str, Any]) -> bytes:
    return json.dumps({"cabinet": path, **row}).encode() + b"\n"


def child() -> None:
    """Reads a job, and writes an empty line when it is ready and after the rows of each cabinet."""
    import harbor6  # noqa: F401  what fails here is not the cabinets' failure

    cabinets, chosen = json.load(sys.stdin)
    limits = Limits(**chosen)
    resource.setrlimit(resource.RLIMIT_AS, (limits.memory, limits.memory))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    out = sys.stdout.buffer
    out.write(b"\n")
    out.flush()
    for path, _size, target in cabinets:
        used = resource.getrusage(resource.RUSAGE_SELF)
        seconds = int(used.ru_utime + used.ru_stime) + 1 + limits.seconds
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, resource.RLIM_INFINITY))
        signal.alarm(10 * limits.seconds)
        for row in rows_of(path, target, limits):
            out.write(line_of(path, row))
        out.write(b"\n")
        out.flush()


# --- In the process that supervises it ---


def why_ended(status: int, limits: Limits) -> str:
    if status == -signal.SIGXCPU:
        return f"it takes more than {limits.seconds} seconds of processor time"
    if status == -signal.SIGALRM:
        return f"it takes more than {10 * limits.seconds} seconds"
    return f"the process that read it ended with status {status}"


def digest(cabinets: Iterable[Cabinet], limits: Limits) -> Iterator[Tuple[str, bytes]]:
    """The path of each cabinet, in their order, with its rows as lines."""
    left = list(cabinets)
    while left:
        # Each arena of the allocator would reserve address space that counts.
        command, environment = [sys.executable, __file__, "--child"], {**os.environ, "MALLOC_ARENA_MAX": "2"}
        with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, env=environment) as process:
            assert process.stdin and process.stdout
            try:
                process.stdin.write(json.dumps([left, asdict(limits)]).encode())
                process.stdin.close()
            except BrokenPipeError:
                pass
            ready, lines = process.stdout.readline() == b"\n", []
            try:
                for line in process.stdout:
                    if line != b"\n":
                        lines.append(line)
                        continue
                    yield left.pop(0).path, b"".join(lines)
                    lines = []
            except BaseException:
                process.kill()
                raise
        if not ready:
            raise RuntimeError(f"the process that reads cabinets could not begin: status {process.returncode}")
        if left:
            ended = left.pop(0)
            whole = [line for line in lines if line.endswith(b"\n")]
            failure = why_ended(process.returncode, limits)
            row = {"members": sum(b'"sha256": ' in line for line in whole), "failure": failure}
            yield ended.path, b"".join([*whole, line_of(ended.path, row)])


def digest_all(cabinets: Iterable[Cabinet], limits: Limits) -> List[Tuple[str, bytes]]:
    return list(digest(cabinets, limits))


class Results:
    """The file of results. One process at a time adds to it; the rows of a cabinet that are not complete are dropped."""

    def __init__(self, path: str, retry: bool = False) -> None:
        self.path = path
        self.done: Set[str] = set()
        self.members = self.bytes = self.failed = self.new = 0
        self.file = self._open()
        if retry:
            self._drop_failed()
        complete = 0
        for end, _block, last in self._blocks():
            self._count(last)
            complete = end
        self.file.truncate(complete)

    def _open(self) -> BinaryIO:
        file = open(self.path, "a+b")
        try:
            fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            raise SystemExit(f"{self.path}: another process is writing to it") from None
        return file

    def _blocks(self) -> Iterator[Tuple[int, List[bytes], Dict[str, Any]]]:
        """Where the rows of each complete cabinet end, the rows, and the last of them."""
        self.file.seek(0)
        end, block = 0, []
        for line in self.file:
            end += len(line)
            block.append(line)
            if b'"members": ' in line and line.endswith(b"\n"):
                row = json.loads(line)
                if "members" in row:
                    yield end, block, row
                    block = []

    def _drop_failed(self) -> None:
        with open(self.path + ".new", "wb") as kept:
            for _end, block, last in self._blocks():
                if "failure" not in last:
                    kept.writelines(block)
            kept.flush()
            os.fsync(kept.fileno())
        os.replace(kept.name, self.path)
        self.file.close()
        self.file = self._open()

    def _count(self, last: Dict[str, Any]) -> None:
        self.done.add(last["cabinet"])
        self.members += last["members"]
        self.bytes += last.get("bytes", 0)
        self.failed += "failure" in last

    def add(self, path: str, lines: bytes) -> None:
        if path in self.done:
            return
        self.file.write(lines)
        self.file.flush()
        self.new += 1
        self._count(json.loads(lines[lines.rfind(b"\n", 0, -1) + 1 :]))

    def close(self) -> None:
        os.fsync(self.file.fileno())
        self.file.close()


class Progress:
    """A line on standard error: each second on a terminal, each half minute elsewhere."""

    def __init__(self, results: Results) -> None:
        self.results, self.begin = results, time.monotonic()
        self.terminal = sys.stderr.isatty()
        self.next = self.begin + 1

    def text(self) -> str:
        it, seconds = self.results, time.monotonic() - self.begin
        return (
            f"{len(it.done)} cabinets, {it.failed} failed, {it.members} members, {it.bytes >> 20} MiB; "
            f"{it.new} new in {seconds:.1f} s, {it.new / max(seconds, 1e-9):.1f} a second"
        )

    def show(self) -> None:
        if time.monotonic() >= self.next:
            self.next = time.monotonic() + (1 if self.terminal else 30)
            print("\r" + self.text() if self.terminal else self.text(), end="" if self.terminal else "\n", file=sys.stderr)

    def end(self) -> int:
        """The exit status, after the summary."""
        print(("\n" if self.terminal else "") + self.text(), file=sys.stderr)
        return 1 if self.results.failed else 0


# --- What there is to do ---


def size_of(path: str) -> int:
    try:
        return os.path.getsize(path)
    except OSError:  # which opening it will tell
        return 0


def found_in(source: str, match: str, extract: str) -> Iterator[Cabinet]:
    """The cabinets of a folder, or of a manifest with a path on each line, "-" being standard input."""
    if os.path.isdir(source):
        for folder, folders, names in os.walk(os.path.abspath(source)):
            folders.sort()
            for name in sorted(names):
                path = os.path.join(folder, name)
                if fnmatch.fnmatch(name.lower(), match.lower()) and os.path.isfile(path):
                    target = os.path.join(os.path.abspath(extract), os.path.relpath(path, source)) if extract else ""
                    yield Cabinet(path, size_of(path), target)
        return
    with open(0 if source == "-" else source, errors="surrogateescape") as lines:
        for line in lines:
            if not line.strip():
                continue
            path = os.path.abspath(line.rstrip("\r\n"))
            target = os.path.join(os.path.abspath(extract), path.lstrip("/")) if extract else ""
            yield Cabinet(path, size_of(path), target)


def share_of(cabinets: Iterable[Cabinet], share: str) -> Iterator[Cabinet]:
    """A part of "3/8" is the cabinets whose paths give 3 of 0 to 7, so it is the same when others are added."""
    part, parts = map(int, share.split("/"))
    if not 0 <= part < parts:
        raise SystemExit(f"--share {share}: the first number is from 0 to {parts - 1}")
    return (each for each in cabinets if zlib.crc32(os.fsencode(each.path)) % parts == part)


def bundles(cabinets: Iterable[Cabinet], most: int = 200, size: int = 32 << 20) -> Iterator[List[Cabinet]]:
    """Small cabinets together, as starting a process takes longer than reading one of them; large ones alone."""
    bundle: List[Cabinet] = []
    for each in cabinets:
        if bundle and (len(bundle) == most or sum(other.size for other in bundle) + each.size > size):
            yield bundle
            bundle = []
        bundle.append(each)
    if bundle:
        yield bundle


def arguments(about: str) -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(description=about.split("\n")[0])
    parser.add_argument("source", help='a folder, or a manifest with a path on each line ("-": standard input)')
    parser.add_argument("results", help="the file of JSON lines; what is in it is not done again")
    parser.add_argument("--match", default="*.cab", help="the names in a folder (default: %(default)s)")
    parser.add_argument("--extract", default="", metavar="FOLDER", help="also unpack each cabinet to a folder below it")
    parser.add_argument("--retry", action="store_true", help="do those again that failed")
    parser.add_argument("--memory", type=int, default=1024, metavar="MIB", help="for a cabinet (default: %(default)s)")
    parser.add_argument("--seconds", type=int, default=60, metavar="N", help="processor time (default: %(default)s)")
    parser.add_argument("--size", type=int, default=65536, metavar="MIB", help="of all members (default: %(default)s)")
    parser.add_argument("--share", default="0/1", metavar="I/N", help="only part I of N, from 0 to N - 1")
    return parser


def work_of(chosen: argparse.Namespace, results: Results) -> Iterator[List[Cabinet]]:
    if chosen.source != "-" and not os.path.exists(chosen.source):
        raise SystemExit(f"{chosen.source}: no such file or folder")
    found = share_of(found_in(chosen.source, chosen.match, chosen.extract), chosen.share)
    return bundles(each for each in found if each.path not in results.done)


def limits_of(chosen: argparse.Namespace) -> Limits:
    return Limits(memory=chosen.memory << 20, seconds=chosen.seconds, size=chosen.size << 20)


def main() -> int:
    chosen = arguments(__doc__ or "").parse_args()
    results = Results(chosen.results, chosen.retry)
    progress = Progress(results)
    for bundle in work_of(chosen, results):
        for path, lines in digest(bundle, limits_of(chosen)):
            results.add(path, lines)
            progress.show()
    results.close()
    return progress.end()


if __name__ == "__main__":
    if sys.argv[1:] == ["--child"]:
        child()
    else:
        sys.exit(main())
