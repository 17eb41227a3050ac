"""The example that reads many cabinets, alone and on a cluster of two worker processes."""

import hashlib
import json
import os
import pathlib
import signal
import struct
import subprocess
import sys
import threading
import time

import pytest
from conftest import cabinet

FOLDER = pathlib.Path(__file__).parents[2] / "examples" / "cluster"
sys.path.insert(0, str(FOLDER))

import cabinet_digest  # noqa: E402
import make_cabinets  # noqa: E402

COUNT = int(os.environ.get("HARBOR_CLUSTER_CABINETS", "300"))


def rows(path="results.jsonl"):
    return [json.loads(line) for line in pathlib.Path(path).read_text().splitlines()]


def alone(*arguments, source="in"):
    command = [sys.executable, FOLDER / "cabinet_digest.py", *arguments, source, "results.jsonl"]
    return subprocess.run(command, capture_output=True, text=True)


def last_rows():
    return {pathlib.Path(row["cabinet"]).stem: row for row in rows() if "members" in row}


def expect_everything_once(count):
    found = rows()
    last = [row for row in found if "members" in row]
    assert sorted(int(pathlib.Path(row["cabinet"]).stem) for row in last) == list(range(count))
    came = sorted((int(pathlib.Path(r["cabinet"]).stem), r["member"], r["sha256"]) for r in found if "sha256" in r)
    expected, damaged = [], set()
    for number in range(count):
        _data, files = make_cabinets.made(number)
        expected += [(number, name.replace("\\", "/"), hashlib.sha256(content).hexdigest()) for name, content in files]
        if number % 50 in (13, 27, 41):
            damaged.add(number)
    assert came == sorted(expected)
    assert {int(pathlib.Path(row["cabinet"]).stem) for row in last if "failure" in row} == damaged


def test_nothing_is_lost_or_done_twice_when_a_worker_is_killed():
    distributed = pytest.importorskip("distributed")
    import cluster

    make_cabinets.main(pathlib.Path("in"), COUNT)
    chosen = cabinet_digest.arguments("").parse_args(["in", "results.jsonl"])
    results = cabinet_digest.Results("results.jsonl")
    work = cabinet_digest.bundles((c for bundle in cabinet_digest.work_of(chosen, results) for c in bundle), COUNT // 30)
    killed = []

    def kill(client):
        victim = next(iter(client.run(os.getpid).values()))
        while len(results.done) < COUNT // 5:
            time.sleep(0.001)
        os.kill(victim, signal.SIGKILL)
        killed.append(len(results.done))

    options = {"n_workers": 2, "threads_per_worker": 1, "dashboard_address": None}
    with distributed.LocalCluster(**options) as local, distributed.Client(local) as client:
        killer = threading.Thread(target=kill, args=(client,))
        killer.start()
        cluster.run(client, work, cabinet_digest.limits_of(chosen), results, cabinet_digest.Progress(results))
        killer.join()
    results.close()
    assert killed[0] < COUNT and results.new == COUNT
    expect_everything_once(COUNT)


def test_what_was_half_done_is_done_again():
    make_cabinets.main(pathlib.Path("in"), 50)
    assert alone("--extract", "out").returncode == 1
    whole = pathlib.Path("results.jsonl").read_bytes()
    out = pathlib.Path("out/000/000007.cab")
    assert len([path for path in out.rglob("*") if path.is_file()]) == len(make_cabinets.made(7)[1])
    for cut in (len(whole) // 2, whole.rfind(b"\n", 0, len(whole) // 2) + 1):
        pathlib.Path("results.jsonl").write_bytes(whole[:cut])
        kept = len({row["cabinet"] for row in map(json.loads, whole[:cut].splitlines()[:-1]) if "members" in row})
        assert f"50 cabinets, 3 failed" in (done := alone()).stderr and f"; {50 - kept} new" in done.stderr
        expect_everything_once(50)
    assert "; 0 new" in alone().stderr
    (pathlib.Path("in/000/000041.cab")).write_bytes(make_cabinets.cabinet([("a", b"1")], True))
    assert "50 cabinets, 2 failed" in (done := alone("--retry")).stderr and "; 3 new" in done.stderr


def test_each_cabinet_fails_alone():
    """What harms the process that reads cabinets ends it, and another one does the rest."""
    os.mkdir("in")
    many = [("%05d" % number, b"") for number in range(60000)]
    bomb = bytearray(make_cabinets.cabinet([("%05d" % 0, bytes(16 << 20)), *many[1:1000]], True))
    for number in range(1000):  # each member is all of the folder
        struct.pack_into("<II", bomb, 44 + 22 * number, 16 << 20, 0)
    stated = bytearray(cabinet((b"x", b"1")))
    struct.pack_into("<I", stated, 44, 0x7FFF0000)
    sound = cabinet((b"x", b"1"))
    files = {"a": sound, "bomb": bomb, "memory": make_cabinets.cabinet(many, False), "size": stated, "z": sound}
    for name, data in files.items():
        pathlib.Path(f"in/{name}.cab").write_bytes(data)
    assert alone("--seconds", "1", "--size", "20000").returncode == 1
    last = last_rows()
    assert last["a"]["members"] == last["z"]["members"] == 1
    assert last["bomb"]["failure"] == "it takes more than 1 seconds of processor time"
    assert last["size"]["failure"] == "x: the entry is incomplete"
    os.remove("results.jsonl")
    alone("--memory", "150", "--size", "100")
    last = last_rows()
    assert last["a"]["members"] == last["z"]["members"] == 1
    assert last["bomb"]["failure"] == last["size"]["failure"] == f"its members have more than {100 << 20} bytes"
    assert "memory" in last["memory"]["failure"] or "status" in last["memory"]["failure"]
