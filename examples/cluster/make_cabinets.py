#!/usr/bin/env python3
"""Makes many small cabinets to try the others with: make_cabinets.py FOLDER COUNT

The same arguments make the same files. Of every 50 one is damaged, one cut short, and one is no cabinet.
"""

import pathlib
import random
import struct
import sys
import zlib
from typing import List, Tuple


def mszip(data: bytes, history: bytes) -> bytes:
    """A block, which may refer to the one in front of it."""
    packer = zlib.compressobj(6, zlib.DEFLATED, -15, zdict=history)
    return b"CK" + packer.compress(data) + packer.flush()


def cabinet(files: List[Tuple[str, bytes]], packed: bool) -> bytes:
    """With one folder, stored or MSZIP, and no checksums."""
    data = b"".join(content for _name, content in files)
    records, offset = b"", 0
    for name, content in files:
        records += struct.pack("<IIHHHH", len(content), offset, 0, 0x3043, 0x20A3, 0x20) + name.encode() + b"\0"
        offset += len(content)
    blocks = [data[at : at + 32768] for at in range(0, len(data), 32768)]
    begin, body = 36 + 8 + len(records), b""
    for history, block in zip([b"", *blocks], blocks):
        payload = mszip(block, history) if packed else block
        body += struct.pack("<IHH", 0, len(payload), len(block)) + payload
    head = struct.pack("<4sIIIIIBBHHHHH", b"MSCF", 0, begin + len(body), 0, 44, 0, 3, 1, 1, len(files), 0, 0, 0)
    return head + struct.pack("<IHH", begin, len(blocks), int(packed)) + records + body


def made(number: int) -> Tuple[bytes, List[Tuple[str, bytes]]]:
    """The bytes of a cabinet, and the members that can be read of it."""
    chance = random.Random(number)
    words = [bytes(chance.randrange(97, 123) for _ in range(chance.randrange(2, 10))) for _ in range(300)]
    files = []
    for index in range(chance.randrange(1, 9)):
        length = chance.choice((0, 50, 3000, 20000, 90000))
        files.append((f"d\\{number}-{index}.txt", b" ".join(chance.choices(words, k=length // 6))))
    files.append(("last", b"end"))
    data = cabinet(files, bool(number % 2))
    if number % 50 == 13:  # the only block without its signature
        files = [("a", b"text" * 100)]
        return cabinet(files, True).replace(b"CK", b"XX"), []
    if number % 50 == 27:
        return cabinet([("a", b"1" * 40000), ("b", b"2" * 40000)], False)[:60000], [("a", b"1" * 40000)]
    if number % 50 == 41:
        return b"no cabinet", []
    return data, files


def main(folder: pathlib.Path, count: int) -> None:
    for number in range(count):
        path = folder / f"{number // 1000:03}" / f"{number:06}.cab"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(made(number)[0])


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), int(sys.argv[2]))
