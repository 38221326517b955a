#!/usr/bin/env python3
"""A host that lives on has no worker for a child, whatever it does with its children's signals.

    children_test.py BUILD PRELOAD EXAMPLES
"""
import ctypes
import fcntl
import os
import signal
import subprocess
import sys
import tempfile

import prove

AMPLE_MS = 60000


def children():
    """Of this process, dead ones too."""
    found = []
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{name}/stat") as file:
                words = file.read().rsplit(")", 1)[1].split()
        except OSError:
            continue
        if int(words[1]) == os.getpid():
            found.append(int(name))
    return found


class Host:
    """Prints through the library, in this process."""

    def __init__(self, till, examples):
        sys.path.insert(0, examples)
        import sure_till
        self.types = sure_till
        self.till = till
        self.companion = ctypes.CDLL(f"{till.build}/libkkmcheck.so")
        self.companion.kkmcheck_print.argtypes = [
            ctypes.c_void_p, ctypes.c_char_p, ctypes.POINTER(sure_till.Check), ctypes.c_int,
            ctypes.POINTER(sure_till.Outcome)]
        self.companion.kkmcheck_close.argtypes = [ctypes.c_void_p]

    def print(self, key, deadline_ms):
        """The outcome, with a journal that is opened and closed for it."""
        lines = (self.types.Line * 1)(self.types.Line(b"Tea", 1, 1, 1))
        check = self.types.Check(lines, 1, 0, 0, 0)
        outcome = self.types.Outcome()
        journal = ctypes.c_void_p()
        self.till.register.say("host")
        self.companion.kkmcheck_open(f"{self.till.folder}/journal".encode(),
                                     f"{self.till.folder}/tty".encode(), ctypes.byref(journal))
        result = self.companion.kkmcheck_print(journal, key, ctypes.byref(check), deadline_ms,
                                               ctypes.byref(outcome))
        self.companion.kkmcheck_close(journal)
        return result, outcome.outcome


def demand(good, what):
    if not good:
        sys.exit(what)


def worker_is_gone(till):
    """Nobody holds the till: the worker has said good-bye to the register."""
    with open(f"{till.folder}/journal.lock") as file:
        try:
            fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            return False
    return True


def main():
    build, preload, examples = (os.path.abspath(path) for path in sys.argv[1:4])
    # For the worker; this process was started without.
    os.environ.update(LD_PRELOAD=preload, SHORTEN=str(prove.SHORTEN))
    with tempfile.TemporaryDirectory(prefix="children-") as folder:
        till = prove.Till(build, preload, folder, 310)
        others = children()
        host = Host(till, examples)
        ended = []
        for handling in (signal.SIG_DFL, signal.SIG_IGN, lambda *_: ended.append(1)):
            signal.signal(signal.SIGCHLD, handling)
            # A child of the host's own that has ended stays the host's to take leave of.
            own = subprocess.Popen(["true"]) if handling != signal.SIG_IGN else None
            answer = host.print(f"K{handling}".encode(), AMPLE_MS)
            demand(answer == (0, 1), f"not printed: {answer}")
            demand(worker_is_gone(till), "the worker is at the register behind the answer")
            demand(signal.getsignal(signal.SIGCHLD) == handling, "SIGCHLD is handled otherwise")
            demand(own is None or os.waitpid(own.pid, 0) == (own.pid, 0), "a child was taken away")
            demand(children() == others, f"children behind the call: {children()}")
        signal.signal(signal.SIGCHLD, signal.SIG_DFL)
        # The worker goes on behind the deadline.
        os.environ["SHORTEN"] = "1"
        answer = host.print(b"L", 2500)
        demand(answer == (0, 0) and not worker_is_gone(till), f"it does not go on: {answer}")
        demand(children() == others, f"children while it works: {children()}")
        demand(host.print(b"L", AMPLE_MS) == (0, 1), "it was not finished")
        demand(children() == others, f"children behind it: {children()}")
        till.register.stop()
    return 0


if __name__ == "__main__":
    sys.exit(main())
