"""Each test runs in an empty folder, in which example.cab is."""

import os
import pathlib
import struct

import harbor6
import pytest

DATA = pathlib.Path(os.environ.get("HARBOR_TEST_DATA", pathlib.Path(__file__).parents[1] / "tests" / "data"))


def cabinet(*files, flags=0):
    """A cabinet with one stored folder: `files` are pairs of a name and bytes of at most 32768."""
    data = b"".join(content for _name, content in files)
    blocks = [data[at : at + 32768] for at in range(0, len(data), 32768)]
    records, offset = b"", 0
    for name, content in files:
        records += struct.pack("<IIHHHH", len(content), offset, 0, 0x3043, 0x20A3, 0x20) + name + b"\0"
        offset += len(content)
    begin = 36 + 8 + len(records)
    body = b"".join(struct.pack("<IHH", 0, len(block), len(block)) + block for block in blocks)
    head = struct.pack("<4sIIIIIBBHHHHH", b"MSCF", 0, begin + len(body), 0, 44, 0, 3, 1, 1, len(files), flags, 0, 0)
    return head + struct.pack("<IHH", begin, len(blocks), 0) + records + body


def damaged():
    """A sound entry "a" in front of one whose data are cut short."""
    return cabinet((b"a", b"1" * 32768), (b"b", b"2" * 99999))[:-70000]


@pytest.fixture(autouse=True)
def in_own_folder(tmp_path, monkeypatch, doctest_namespace):
    doctest_namespace.update(harbor6=harbor6, pathlib=pathlib)
    monkeypatch.chdir(tmp_path)
    (tmp_path / "example.cab").write_bytes(cabinet((b"text\\b.txt", b"hello")))
