"""The procedure of a check, as a list of exchanges and pauses: what has to be exchanged with the
register and how long has to be waited, whatever the driver does. Written from the register's
protocol and not from the driver; procedure_test.py and benchmarks/ hold the driver against it."""
from collections import namedtuple

# Milliseconds before every request, and from there to the first look for its answer.
PAUSE = 10

# Payload bytes of request and answer; `pause` stands between the two beside the usual one.
Exchange = namedtuple("Exchange", "name command request answer pause", defaults=(0,))

QUERY = Exchange("status: a check is asked for", 0x20, 0, 7)
COUNTERS = Exchange("counters", 0x0A, 0, 11)
NUMBER_IN_MEMORY = Exchange("sale number, in memory", 0x04, 3, 1)
NUMBER = Exchange("sale number", 0x37, 0, 1)
SECTION = Exchange("section", 0x02, 3, 1)
SECTION_FROM_400 = Exchange("section, long address", 0x02, 5, 1)
LOCK = Exchange("lock the keyboard", 0x36, 1, 0)
UNLOCK = Exchange("unlock the keyboard", 0x36, 1, 0)
SALE = Exchange("sale line", 0x21, 41, 1)
ADDED = Exchange("status: line added", 0x20, 0, 32)
RESET = Exchange("reset the status", 0x7F, 0, 0)
NAME_PIECE = Exchange("18 letters of the name", 0x27, 20, 0)
NO_CARD = Exchange("no discount card", 0x24, 3, 0, 50)
TYPE = Exchange("type of the check", 0x25, 1, 1)
READY = Exchange("status: ready", 0x20, 0, 0)
CHECK_OUT = Exchange("status: check-out", 0x20, 0, 19)
CASH = Exchange("cash", 0x28, 5, 1)
SIMPLE_LOCK = Exchange("lock the keyboard, whatever the version", 0x10, 0, 0)
CLEAR = Exchange("clear the check", 0x03, 0, 0)
KEY = Exchange("press a key", 0x29, 1, 0)


class Till:
    """A register, its check and what they make of the procedure. `first`: the first check of a
    connection, when the driver does not know the register's section yet."""

    def __init__(self, firmware, lines, cash=True, first=False, letters=20):
        self.lines = lines
        self.number = NUMBER if firmware >= 400 else NUMBER_IN_MEMORY
        self.section = [SECTION_FROM_400 if firmware >= 400 else SECTION] if first else []
        self.locks = firmware > 302 and firmware != 400
        self.unlocks_after_failure = firmware > 302
        self.takes_cash = cash and 301 <= firmware <= 309
        self.name_pieces = min(-(-letters // 18), 4) if firmware > 301 else 0


def begin(till):
    """The register is made ready; then it asks for the check, and the check begins."""
    return ([QUERY, COUNTERS, till.number] + till.section + [till.number]
            + [QUERY, COUNTERS, till.number, till.number]
            + ([LOCK] if till.locks else []) + [COUNTERS])


def line(till):
    return ([till.number, SALE, ADDED, RESET, 100, till.number] + [NAME_PIECE] * till.name_pieces)


def end(till):
    """Closing, the time that printing takes, and the proof that the check is on the paper."""
    return ([RESET, NO_CARD, RESET, 50, TYPE, READY, RESET, 50]
            + ([CHECK_OUT, CASH] if till.takes_cash else [])
            + [50, CHECK_OUT, RESET, 3000 + 500 * till.lines, COUNTERS]
            + ([UNLOCK] if till.locks else []))


def check(till):
    """Exchanges, and pauses in milliseconds, in their order."""
    return begin(till) + line(till) * till.lines + end(till)


def refused_line(till):
    """A check whose first line is refused: it is cancelled at the register."""
    return (begin(till) + [till.number, SALE] + ([UNLOCK] if till.unlocks_after_failure else [])
            + [SIMPLE_LOCK, RESET, 50, CLEAR, 50, KEY, 50, KEY, 50, RESET])


def exchanges(steps):
    return [step for step in steps if isinstance(step, Exchange)]


def frame_bytes(exchange):
    """Of request and answer: four bytes before the payload, one behind it."""
    return exchange.request + 5, exchange.answer + 5


def required_ms(steps, baud):
    """The least time it can take; `baud` None: on a line whose bytes take no time."""
    # Whole microseconds, as the virtual register has it.
    byte_ms = 10 * 1000000 // baud / 1e3 if baud else 0
    total = 0
    for step in steps:
        if isinstance(step, Exchange):
            total += PAUSE + max(PAUSE + step.pause, sum(frame_bytes(step)) * byte_ms)
        else:
            total += step
    return total


def sent_at_ms(steps):
    """When each request may go out at the earliest, on a line whose bytes take no time."""
    now, times = 0, []
    for step in steps:
        if isinstance(step, Exchange):
            times.append(now + PAUSE)
            now += PAUSE + PAUSE + step.pause
        else:
            now += step
    return times


def parse(text):
    """What a program recorded: "20:5:12,0A:5:16", command, bytes of request and of answer."""
    recorded = []
    for one in text.split(",") if text else []:
        command, request, answer = one.split(":")
        recorded.append((int(command, 16), int(request), int(answer)))
    return recorded


def common(left, right):
    """Positions in both of the longest sequence that they share. (That of difflib is not the
    longest.)"""
    longest = [[0] * (len(right) + 1) for _ in range(len(left) + 1)]
    for i in reversed(range(len(left))):
        for j in reversed(range(len(right))):
            longest[i][j] = (longest[i + 1][j + 1] + 1 if left[i] == right[j]
                             else max(longest[i + 1][j], longest[i][j + 1]))
    pairs, i, j = [], 0, 0
    while i < len(left) and j < len(right):
        if left[i] == right[j]:
            pairs.append((i, j))
            i, j = i + 1, j + 1
        elif longest[i + 1][j] >= longest[i][j + 1]:
            i += 1
        else:
            j += 1
    return pairs


def compare(steps, recorded):
    """Exchanges that nobody asked for, and those that are missing, each in words."""
    expected = [(step.command, *frame_bytes(step)) for step in exchanges(steps)]
    pairs = common(expected, recorded)
    there, asked = {i for i, _ in pairs}, {j for _, j in pairs}
    missing = [f"{step.name} (exchange {i})" for i, step in enumerate(exchanges(steps))
               if i not in there]
    unasked = [f"0x{command:02X}, {request} and {answer} bytes (exchange {j})"
               for j, (command, request, answer) in enumerate(recorded) if j not in asked]
    return unasked, missing
