import gc
import hashlib
import io
import multiprocessing
import os
import pathlib
import subprocess
import sys
import threading
import venv

import harbor6
import pytest
from conftest import DATA, cabinet, damaged

SUMS = [line.split(maxsplit=1) for line in (DATA / "SHA256SUMS").read_text().splitlines()]
EXPECTED = {path: digest for digest, path in SUMS}
CABINETS = sorted({path.split("/")[0] for path in EXPECTED})


class Pipe(io.BytesIO):
    def seekable(self):
        return False


def digests(name, entries):
    return {f"{name}/{entry.name}": hashlib.sha256(data).hexdigest() for entry, data in entries}


@pytest.mark.parametrize("name", CABINETS)
def test_every_road_gives_the_same_bytes(name, tmp_path):
    path = DATA / name
    expected = {each: EXPECTED[each] for each in EXPECTED if each.startswith(name + "/")}
    others = (path.read_bytes(), path.open("rb"), Pipe(path.read_bytes()))
    # The other files of a set are found beside a path alone.
    for file in (path, str(path), *(() if name.startswith("set-") else others)):
        with harbor6.open(file) as archive:
            archive.test()
            assert archive.testzip() is None
            assert digests(name, ((each, each.read()) for each in archive)) == expected
            backwards = reversed(archive.infolist())
            assert digests(name, ((each, archive.read(each.name)) for each in backwards)) == expected
            files = [(each, each.open()) for each in archive]  # all at once
            assert digests(name, ((each, file.read()) for each, file in files)) == expected
            for written in archive.extractall(tmp_path, overwrite="always"):
                content = (tmp_path / written).read_bytes()
                assert hashlib.sha256(content).hexdigest() == expected[f"{name}/{written}"]


def test_zipfile_names():
    with harbor6.open(cabinet((b"d\\a.txt", b"1\n2\n"), (b"b", b""))) as archive:
        assert archive.namelist() == ["d/a.txt", "b"] and len(archive) == 2 and "b" in archive
        info = archive.getinfo("d/a.txt")
        assert (info.filename, info.file_size, info.is_dir()) == ("d/a.txt", 4, False)
        assert info.date_time == (2004, 2, 3, 4, 5, 6) and info.attributes == harbor6.Attributes.ARCHIVE
        assert list(archive.open(info)) == [b"1\n", b"2\n"] and archive.read("b") == b""
        with pytest.raises(KeyError):
            archive.read("none")


@pytest.mark.parametrize(
    "file, kind, text",
    [
        (b"", harbor6.NotAnArchive, "the file is empty"),
        (b"text", harbor6.NotAnArchive, "not an archive of a known format"),
        ((DATA / "refuse-next.cab").read_bytes(), harbor6.BadArchive, "expansion of segmented CAB archives not supported"),
        (DATA / "refuse-next.cab", harbor6.Error, "in which it goes on, is missing"),
        ("none.cab", FileNotFoundError, "No such file"),
        (7, TypeError, "path, bytes, or a file object"),
    ],
)
def test_why_opening_fails(file, kind, text):
    with pytest.raises(kind, match=text):
        harbor6.open(file)
    assert not issubclass(kind, harbor6.Error) or not harbor6.is_archive(file)


def test_damage_ends_nothing_but_its_own_entries(tmp_path):
    with harbor6.open(damaged()) as archive:
        for failing in (archive.test, lambda: archive.read("b"), lambda: archive.open("b").read()):
            with pytest.raises(harbor6.BadArchive, match="cut short: the input ends at byte"):
                failing()
        assert archive.testzip() == "b" and archive.read("a") == b"1" * 32768
        with pytest.raises(harbor6.BadArchive):
            archive.extractall(tmp_path / "x")
        assert os.listdir(tmp_path / "x") == ["a"]
    head = cabinet((b"a", b"1"), (b"b", b"2"))[:70]
    assert not harbor6.is_archive(head)
    with harbor6.open(head, allow_damaged=True) as archive, pytest.raises(harbor6.BadArchive):
        assert archive.namelist() == ["a"]
        archive.test()


def test_extracting_is_safe_and_tells_what_it_left(tmp_path):
    data = cabinet((b"..\\..\\up", b"1"), (b"..", b"2"), (b"link\\x", b"3"), (b"d\\new", b"4"), (b"old", b"5"))
    place = tmp_path / "place"
    place.mkdir()
    (place / "link").symlink_to(tmp_path)
    (place / "old").write_text("mine")
    with harbor6.open(data) as archive:
        with pytest.raises(harbor6.Incomplete) as raised:
            archive.extractall(place)
        assert {path for path, _reason in raised.value.failures} == {"..", "link/x", "old"}
        assert (place / "up").read_text() == "1" and (place / "old").read_text() == "mine"
        assert not (tmp_path / "x").exists() and not (tmp_path / "up").exists()
        assert archive.extractall(place, only=["old", "d"], overwrite="never") == []
        assert pathlib.Path(archive.extract("old", place, overwrite="always")).read_text() == "5"
        assert archive.extractall(tmp_path / "some", exclude=["**/[x-z]", "d/*", ".."], only="*") == ["up", "old"]


def test_what_a_file_object_raises_arrives():
    class Failing(io.BytesIO):
        calls = 0

        def read(self, size=-1):
            self.calls += 1
            if self.calls > self.most:
                raise ZeroDivisionError("mine")
            return super().read(size)

    for most in (0, 3):
        file = Failing(cabinet((b"a", b"1" * 300000)))
        file.most = most
        with pytest.raises(ZeroDivisionError, match="mine"):
            harbor6.open(file).read("a")


def _child(archive, file, queue):
    for use in (lambda: archive.read("a"), file.read):
        try:
            queue.put(str(use() and None))
        except harbor6.Unusable as failure:
            queue.put(str(failure))
    archive.close()


def test_wrong_use_is_told():
    archive = harbor6.open(cabinet((b"a", b"1" * 4000000)))
    file = archive.open("a")
    queue = multiprocessing.get_context("fork").SimpleQueue()
    child = multiprocessing.get_context("fork").Process(target=_child, args=(archive, file, queue))
    child.start()
    assert all("opened by another process" in queue.get() for _ in range(2))
    child.join()
    assert child.exitcode == 0
    archive.close()
    assert file.read() == b"1" * 4000000
    file.close()
    with pytest.raises(ValueError, match="closed"):
        file.read()
    with pytest.raises(harbor6.Unusable, match="the archive is closed"):
        archive.read("a")


def test_threads_share_an_archive():
    with harbor6.open(DATA / "mszip.cab") as archive:
        expected = [each.read() for each in archive]
        results = []
        work = [threading.Thread(target=lambda: results.append([e.read() for e in archive])) for _ in range(4)]
        for each in work:
            each.start()
        for each in work:
            each.join()
    assert results == [expected] * 4


def test_opening_leaves_nothing_behind():
    def used():
        gc.collect()
        resident = int(pathlib.Path("/proc/self/statm").read_text().split()[1]) * os.sysconf("SC_PAGE_SIZE")
        return len(os.listdir("/proc/self/fd")), threading.active_count(), resident

    def open_often():
        for _ in range(1500):
            harbor6.open("example.cab").open("text/b.txt").read(1)

    open_often()
    files, threads, resident = used()
    open_often()
    after = used()
    assert after[:2] == (files, threads)
    assert after[2] < resident + (1 << 20) or "ASAN_OPTIONS" in os.environ  # which keeps what is freed for a while


@pytest.mark.skipif("HARBOR_TEST_WHEEL" not in os.environ, reason="there is no wheel")
def test_the_wheel_needs_nothing_else(tmp_path):
    venv.create(tmp_path / "empty", with_pip=True)
    python = tmp_path / "empty" / "bin" / "python"
    wheel = next(pathlib.Path(os.environ["HARBOR_TEST_WHEEL"]).glob("*.whl"))
    clean = {name: value for name, value in os.environ.items() if not name.startswith(("PYTHON", "HARBOR"))}

    def run(*arguments):
        return subprocess.run([python, *arguments], check=True, env=clean, capture_output=True, text=True).stdout

    run("-m", "pip", "install", "--no-index", "--quiet", wheel)
    assert run("-c", "import harbor6; print(harbor6.open('example.cab').namelist())") == "['text/b.txt']\n"
    assert "text/b.txt" in run("-m", "harbor6", "list", "example.cab")
