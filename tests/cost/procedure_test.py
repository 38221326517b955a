#!/usr/bin/env python3
"""Holds checks of every firmware version against the procedure: every exchange, when it begins, and
every millisecond of waiting, in virtual time.

  procedure_test.py PROGRAM

First of all it makes sure of itself: an exchange or a pause too much must be noticed."""
import os
import subprocess
import sys
import tempfile

import procedure

FIRMWARES = (301, 302, 303, 310, 400)
LINES = (1, 4, 18)


def faults_of(steps, waited_ms, sent_at_ms, recorded):
    unasked, missing = procedure.compare(steps, recorded)
    faults = [f"nobody asks for {text}" for text in unasked]
    faults += [f"missing: {text}" for text in missing]
    required = procedure.required_ms(steps, None)
    if waited_ms != required:
        faults.append(f"{waited_ms:g} ms of waiting instead of {required:g}")
    at = zip(procedure.exchanges(steps), procedure.sent_at_ms(steps), sent_at_ms)
    wrong = [] if unasked or missing else [(step.name, due, sent) for step, due, sent in at
                                           if due != sent]
    faults += [f"{name} went out at {sent:g} ms, due at {due}" for name, due, sent in wrong[:1]]
    return faults


def notice_what_is_planted():
    till = procedure.Till(303, 2)
    steps = procedure.check(till)
    recorded = [(step.command, *procedure.frame_bytes(step)) for step in procedure.exchanges(steps)]
    waited = procedure.required_ms(steps, None)
    times = procedure.sent_at_ms(steps)
    late = times[:7] + [times[7] + 1] + times[8:]  # and the next pause that much shorter
    status_twice = recorded[:5] + [recorded[4]] + recorded[5:]
    planted = {"nothing": (waited, times, recorded, 0),
               "a millisecond": (waited + 1, times, recorded, 1),
               "a pause less": (waited - 10, times, recorded, 1),
               "a pause in another place": (waited, late, recorded, 1),
               "an exchange": (waited, times, status_twice, 1),
               "an exchange less": (waited, times, recorded[1:], 1)}
    for what, (*seen, faults) in planted.items():
        if len(faults_of(steps, *seen)) != faults:
            sys.exit(f"{what} planted: {faults_of(steps, *seen)}")


def main():
    notice_what_is_planted()
    program, checks, faults = os.path.abspath(sys.argv[1]), 0, []
    for firmware in FIRMWARES:
        for lines in LINES:
            with tempfile.TemporaryDirectory() as folder:
                printed = subprocess.run([program, str(firmware), str(lines)], cwd=folder,
                                         text=True, check=True, stdout=subprocess.PIPE).stdout
            for row in printed.splitlines():
                what, *pairs = row.split()
                row = dict(pair.split("=", 1) for pair in pairs)
                till = procedure.Till(firmware, lines, first=row["first"] == "1")
                steps = getattr(procedure, what)(till)
                faults += [f"firmware {firmware}, {lines} lines, {what}: {fault}" for fault in
                           faults_of(steps, float(row["waited_ms"]),
                                     [float(at) for at in row["sent_at_ms"].split(",")],
                                     procedure.parse(row["exchanges"]))]
                checks += 1
    if faults:
        print("\n".join(faults[:20] + ["..."] * (len(faults) > 20)))
        sys.exit(f"{len(faults)} faults in {checks} checks")
    print(f"{checks} checks: exchanges and waits are those of the procedure")


if __name__ == "__main__":
    main()
