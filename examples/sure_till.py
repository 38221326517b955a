#!/usr/bin/env python3
"""A till that always knows, in Python: prints a check under a key, once, however often it is started,
and says what came of it.

    sure_till.py DEVICE JOURNAL KEY [LIBRARY]     (for example /dev/ttyUSB0 till1.journal order-4711)

LIBRARY is libkkmcheck.so.1 where the system finds it, or a path.
"""
import ctypes
import sys
from ctypes import POINTER, Structure, byref, c_char, c_char_p, c_double, c_int, c_void_p

OK, PRINTED, NOT_PRINTED = 0, 1, 2


class Line(Structure):
    _fields_ = [("name", c_char_p), ("price", c_double), ("quantity", c_double),
                ("section", c_int)]


class Check(Structure):
    _fields_ = [("lines", POINTER(Line)), ("line_count", c_int), ("mode", c_int),
                ("discount", c_int), ("cash", c_double)]


class Outcome(Structure):
    _fields_ = ([(name, c_int) for name in
                 ("outcome", "reason", "attempts", "driver_result", "driver_error", "firmware",
                  "serial_number", "tape_before", "checks_before", "records_before", "tape_after",
                  "checks_after", "records_after", "first_record", "line_count")] +
                [("total", c_double)] +
                [(name, c_char * 32) for name in
                 ("intended_at", "sending_at", "returned_at", "decided_at")] +
                [("text", c_char * 512), ("records", c_char * 1024)])


def main():
    if len(sys.argv) not in (4, 5):
        print(__doc__.strip(), file=sys.stderr)
        return 2
    library = ctypes.CDLL(sys.argv[4] if len(sys.argv) == 5 else "libkkmcheck.so.1")
    library.kkmcheck_error.argtypes = [c_void_p]
    library.kkmcheck_error.restype = c_char_p
    library.kkmcheck_print.argtypes = [c_void_p, c_char_p, POINTER(Check), c_int,
                                       POINTER(Outcome)]
    library.kkmcheck_close.argtypes = [c_void_p]
    device, path, key = (text.encode() for text in sys.argv[1:4])
    lines = (Line * 2)(Line("Bread".encode("cp866"), 25.50, 2, 1),
                       Line("Apples".encode("cp866"), 80.00, 0.75, 2))
    check = Check(lines, 2, 0, -5, 200.00)
    journal = c_void_p()
    outcome = Outcome()
    result = library.kkmcheck_open(path, device, byref(journal))
    if result == OK:
        # A new key prints; a key that was used tells, and is found out first if need be.
        result = library.kkmcheck_print(journal, key, byref(check), 60000, byref(outcome))
    if result != OK:  # nothing was printed by this call
        print(library.kkmcheck_error(journal).decode(), file=sys.stderr)
        library.kkmcheck_close(journal)
        return 2
    library.kkmcheck_close(journal)
    if outcome.outcome == PRINTED:
        print("printed: %.2f, record %d of the tape" % (outcome.total, outcome.first_record))
        return 0
    told = "not printed" if outcome.outcome == NOT_PRINTED else "nobody knows"
    print("%s: %s" % (told, outcome.text.decode()))
    return 3 if outcome.outcome == NOT_PRINTED else 4


if __name__ == "__main__":
    sys.exit(main())
