#!/usr/bin/env python3
"""Digests or unpacks many cabinets on a Dask cluster; the arguments and results are those of cabinet_digest.py.

    cluster.py --workers 8 folder/ results.jsonl
    cluster.py --scheduler tcp://head:8786 manifest.txt results.jsonl

The workers need harbor6, and the cabinets under the same paths as here. Only this process writes the results: a task that
ran twice, because a worker was lost while it ran, gives its rows once.
"""

import os
import sys
from typing import Dict, Iterator, List

import cabinet_digest
from cabinet_digest import Cabinet, Limits, Progress, Results
from distributed import Client, Future, KilledWorker, LocalCluster, as_completed


def run(client: Client, work: Iterator[List[Cabinet]], limits: Limits, results: Results, progress: Progress) -> None:
    client.upload_file(os.path.abspath(cabinet_digest.__file__))
    bundle_of: Dict[Future, List[Cabinet]] = {}
    completed = as_completed()

    def submit(bundle: List[Cabinet]) -> None:
        # Not as a pure function, as a file may have changed since Dask kept a result.
        future = client.submit(cabinet_digest.digest_all, bundle, limits, pure=False)
        bundle_of[future] = bundle
        completed.add(future)

    def fill() -> None:
        """As much work as keeps the workers busy, so that millions of cabinets take no memory here."""
        threads = sum(client.nthreads().values())
        while len(bundle_of) < max(4 * threads, 8):
            bundle = next(work, None)
            if bundle is None:
                return
            submit(bundle)

    fill()
    for future in completed:
        bundle = bundle_of.pop(future)
        try:
            done = future.result()
        except KilledWorker:
            # Several workers were lost with this task, so one of its cabinets may be the reason.
            if len(bundle) > 1:
                for each in bundle:
                    submit([each])
                continue
            row = {"members": 0, "failure": "each worker that read it was lost"}
            done = [(bundle[0].path, cabinet_digest.line_of(bundle[0].path, row))]
        for path, lines in done:
            results.add(path, lines)
            progress.show()
        fill()


def main() -> int:
    parser = cabinet_digest.arguments(__doc__ or "")
    place = parser.add_mutually_exclusive_group()
    place.add_argument("--scheduler", metavar="ADDRESS", help="a cluster that runs, such as tcp://head:8786")
    place.add_argument("--workers", type=int, default=os.cpu_count(), metavar="N", help="as many processes on this machine")
    chosen = parser.parse_args()
    results = Results(chosen.results, chosen.retry)
    progress = Progress(results)
    place_of_work = chosen.scheduler or LocalCluster(n_workers=chosen.workers, threads_per_worker=1, dashboard_address=None)
    with Client(place_of_work) as client:
        run(client, cabinet_digest.work_of(chosen, results), cabinet_digest.limits_of(chosen), results, progress)
    results.close()
    if not chosen.scheduler:
        place_of_work.close()
    return progress.end()


if __name__ == "__main__":
    sys.exit(main())
