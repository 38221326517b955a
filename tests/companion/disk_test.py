#!/usr/bin/env python3
"""A row of the journal is on the disk before the register hears what follows it.

    disk_test.py BUILD PRELOAD

Prints a check and follows what the host and the worker write, have the disk take and send, in the
order in which they do it.
"""
import os
import sys
import tempfile

import prove

SALE = "21"  # the request that has a line of the check
# The tables, and the rows of intended, counted and sending stand before the first line is sent ...
BEFORE_THE_FIRST_LINE = 4
# ... those of returned and of the outcome behind it.
ALL = 6


class Disk:
    """What a power cut would take."""

    def __init__(self, journal):
        self.journal, self.rollback = journal, journal + "-journal"
        self.folder = os.path.dirname(journal)
        self.unsafe = set()
        self.has_rollback = False
        self.commits = 0
        self.faults = []

    def demand_safe(self, paths, moment):
        self.faults += [f"{path} is not on the disk {moment}, behind commit {self.commits}"
                        for path in paths if path in self.unsafe]

    def write(self, path):
        if path == self.rollback and not self.has_rollback:
            self.has_rollback = True
            self.unsafe.add(self.folder)
        if path == self.journal:
            self.demand_safe([self.rollback, self.folder], "when the journal is written")
        if path in (self.journal, self.rollback):
            self.unsafe.add(path)

    def sync(self, path):
        self.unsafe.discard(path)

    def unlink(self, path):
        """The removal of the rollback journal is the commit."""
        if path == self.rollback and self.has_rollback:
            self.demand_safe([self.journal], "when it is committed")
            self.commits += 1
            self.has_rollback = False
            self.unsafe.discard(path)
            self.unsafe.add(self.folder)

    def request(self, command):
        self.demand_safe([self.journal, self.rollback, self.folder],
                         f"when request {command} is sent")


def main():
    build, preload = (os.path.abspath(path) for path in sys.argv[1:3])
    with tempfile.TemporaryDirectory(prefix="disk-") as folder:
        folder = os.path.realpath(folder)
        till = prove.Till(build, preload, folder, 310)
        till.register.say("host")
        status, output = till.print(TRACE_FILE=f"{folder}/trace")
        till.register.stop()
        disk = Disk(f"{folder}/journal")
        before_sales = []
        with open(f"{folder}/trace") as file:
            for event, what in (line.split() for line in file):
                if event == "request" and what == SALE:
                    before_sales.append(disk.commits)
                getattr(disk, event)(what)
        if status != prove.PRINTED:
            disk.faults.append(f"not printed: {output}")
        if not before_sales or before_sales[0] != BEFORE_THE_FIRST_LINE or disk.commits != ALL:
            disk.faults.append(f"commits before each line {before_sales}, {disk.commits} in all")
        print("\n".join(disk.faults) or
              f"{disk.commits} commits, each on the disk before the next request")
        return 1 if disk.faults else 0


if __name__ == "__main__":
    sys.exit(main())
