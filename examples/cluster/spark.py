#!/usr/bin/env python3
"""Digests the cabinets that Spark reads, from any storage that it knows.

    spark-submit --py-files cabinet_digest.py spark.py 's3a://bucket/cabinets/*.cab' s3a://bucket/results
"""

import itertools
import json
import os
import sys
import tempfile
from typing import Iterator, Tuple

from pyspark.sql import SparkSession


def digests(records: Iterator[Tuple[str, bytes]]) -> Iterator[str]:
    """The rows of the cabinets of a partition. Spark has each whole in memory; here they go to files, some at a time."""
    from cabinet_digest import Cabinet, Limits, digest

    while True:
        with tempfile.TemporaryDirectory() as folder:
            path_of = {}
            for number, (path, content) in enumerate(itertools.islice(records, 100)):
                file = os.path.join(folder, str(number))
                with open(file, "wb") as copy:
                    copy.write(content)
                path_of[file] = path
            if not path_of:
                return
            for file, lines in digest([Cabinet(file, 0) for file in path_of], Limits()):
                for line in lines.splitlines():
                    yield json.dumps({**json.loads(line), "cabinet": path_of[file]})


def main(source: str, target: str) -> None:
    spark = SparkSession.builder.appName("cabinets").getOrCreate()
    spark.sparkContext.binaryFiles(source, minPartitions=1000).mapPartitions(digests).saveAsTextFile(target)
    spark.stop()


if __name__ == "__main__":
    main(*sys.argv[1:])
