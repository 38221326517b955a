#!/usr/bin/env python3
"""What a commit of one row costs on a disk, with the journal's settings and with others.

    commit_times.py FOLDER [COMMITS]     the folder on the disk in question
"""
import os
import sqlite3
import sys
import tempfile
import time


def milliseconds(folder, mode, synchronous, commits):
    """Median of a commit."""
    database = sqlite3.connect(f"{folder}/{mode}-{synchronous}", isolation_level=None)
    database.execute(f"PRAGMA journal_mode = {mode}")
    database.execute(f"PRAGMA synchronous = {synchronous}")
    database.execute("CREATE TABLE attempts (id INTEGER PRIMARY KEY, stage TEXT)")
    database.execute("INSERT INTO attempts VALUES (1, '')")
    times = []
    for number in range(commits):
        begun = time.perf_counter()
        database.execute("UPDATE attempts SET stage = ?", (str(number),))
        times.append(time.perf_counter() - begun)
    database.close()
    return sorted(times)[commits // 2] * 1000


def main():
    if len(sys.argv) not in (2, 3):
        print(__doc__.strip(), file=sys.stderr)
        return 2
    commits = int(sys.argv[2]) if len(sys.argv) == 3 else 200
    with tempfile.TemporaryDirectory(prefix="commits-", dir=os.path.abspath(sys.argv[1])) as folder:
        for mode, synchronous in (("DELETE", "EXTRA"), ("DELETE", "FULL"), ("WAL", "FULL")):
            print(f"{mode:6} {synchronous:5} "
                  f"{milliseconds(folder, mode, synchronous, commits):7.2f} ms a commit")
    return 0


if __name__ == "__main__":
    sys.exit(main())
