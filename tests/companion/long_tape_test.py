#!/usr/bin/env python3
"""A tape too long for the host's deadline is read all the same, and told as far as it is read.

    long_tape_test.py BUILD PRELOAD
"""
import json
import os
import subprocess
import sys
import tempfile

import prove

SOLD = 100  # records typed behind the check that broke off
SHORT_S = "4"


def broken_off(build, preload, folder):
    """A till whose check's first lines were sent, and cancelled, before the cashier sold a lot."""
    till = prove.Till(build, preload, folder, 310)
    till.register.say("host")
    till.print(STRIKE="host worker", STRIKE_AT=40, STRIKE_WHEN="answered")
    for words in ("power off", "power on", "cancel"):
        till.register.say(words)
    till.register.cashier_sells([1] * SOLD)
    return till


def ask(till, command="resolve", **more):
    status, output = till.run(command, "K", "--json", **more)
    answer = json.loads(output[output.find("{"):])
    return status, answer["reason"], answer["text"]


def demand(got, status, reason, *texts):
    if got[:2] != (status, reason) or not all(text in got[2] for text in texts):
        raise SystemExit(f"{got}, not {status} {reason} {texts}")


def outcome(till):
    """As the journal has it."""
    words = [f"{till.build}/tools/kkm/kkm", "outcome", "K", "--json", "--journal",
             f"{till.folder}/journal"]
    done = subprocess.run(words, stdout=subprocess.PIPE, text=True)
    answer = json.loads(done.stdout)
    return done.returncode, answer["reason"], answer["text"]


def goes_on_behind_the_deadline(build, preload, folder):
    till = broken_off(build, preload, folder)
    begun = ask(till, deadline=SHORT_S, SHORTEN=1)
    demand(begun, prove.UNKNOWN, "still_working", " of the tape's 100 new records are read.")
    # Whoever asks next waits for it and needs no register.
    demand(ask(till, deadline="60", SHORTEN=1), prove.NOT_PRINTED, "not_on_tape")
    till.register.stop()


def tells_how_far_it_is_read(build, preload, folder):
    till = broken_off(build, preload, folder)
    for first, read in ((70, 64), (5, 0)):  # 32 at a time
        unread = ask(till, deadline="30", SHORTEN=100, UNREADABLE_FROM=first)
        demand(unread, prove.UNKNOWN, "tape_unread",
               f"{read} of the tape's 100 new records are read.", "To look for: a check of 3 lines")
        demand(outcome(till), *unread)
    demand(ask(till), prove.NOT_PRINTED, "not_on_tape")
    till.register.stop()


def main():
    build, preload = (os.path.abspath(path) for path in sys.argv[1:3])
    for test in (goes_on_behind_the_deadline, tells_how_far_it_is_read):
        with tempfile.TemporaryDirectory(prefix="tape-") as folder:
            test(build, preload, folder)
    return 0


if __name__ == "__main__":
    sys.exit(main())
