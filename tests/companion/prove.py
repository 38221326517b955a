#!/usr/bin/env python3
"""Proves the companion with whole processes: a register on a tty, kkm as the host, its worker.

Each point prints a check of three lines under a key and has something happen at one of its
exchanges: a process is killed, the register's plug is pulled, the line is cut, the paper ends, the
disk fills up. Then everything is started again and asked by key. The answer must be what the paper
says, and no check may be on the paper twice. Points run side by side; waits are shortened in the
worker's process.
"""
import argparse
import collections
import concurrent.futures
import itertools
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time

FIRMWARE = (301, 302, 303, 310, 400)
SHORTEN = 50
DEADLINE_S = "600"  # of the worker's own fast clock; 12 s of ours
CHECK = {"lines": [{"name": "Alpha", "price": 25.5, "quantity": 2},
                   {"name": "Beta", "price": 60, "quantity": 0.345},
                   {"name": "Gamma", "price": 199.99}], "discount": -5}
# As the register prints it, between the line of its kind and its payment.
RECEIPT = ["Alpha", "2 x 25.50         =51.00", "Beta", "0.345 x 60.00     =20.70",
           "Gamma", "1 x 199.99       =199.99", "СКИДКА -5%        -13.58",
           "ИТОГО            =258.11"]
# Sum and price, and quantity, of its records in the register's memory.
TAPE = [("000012ED0009F6", "0007D0000000"), ("000007AF001770", "010159000000"),
        ("00004A37004E1F", "0003E8000000")]
TRIES = 3
PRINTED, NOT_PRINTED, UNKNOWN = 0, 3, 4
NAMES = {PRINTED: "printed", NOT_PRINTED: "not printed", UNKNOWN: "unknown"}


class Wrong(Exception):
    """The companion said something else than the paper."""


class Register:
    """The register's program, with a cashier who obeys."""

    def __init__(self, build, folder, firmware):
        self.words = [f"{build}/virtual_register/tarvo-register", "--quiet", "--cashier", "prompt",
                      "--firmware", str(firmware), "--memory", f"{folder}/memory",
                      "--paper", f"{folder}/paper", "--link", f"{folder}/tty"]
        self.folder = folder
        self.held = []
        self.was_killed = False
        self.start()

    def start(self):
        self.process = subprocess.Popen(self.words, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True, bufsize=1)
        line = self.process.stdout.readline()
        if not line.startswith("tty "):
            raise RuntimeError("the register began with " + line)
        # The name of a tty that is open is not given to the register of another point.
        self.held.append(os.open(line.split()[1], os.O_RDWR | os.O_NOCTTY))

    def say(self, line):
        """Returns when the register has obeyed, and its files tell so."""
        for words in (line, "status", "status"):
            self.process.stdin.write(words + "\n")
            self.process.stdin.flush()
            while words == "status":
                answer = self.process.stdout.readline()
                if not answer:
                    raise RuntimeError("the register fell silent")
                if answer.startswith("indicator "):
                    break

    def revive(self):
        if self.process.poll() is not None:
            self.was_killed = True
            self.start()
            return True
        return False

    def stop(self):
        self.process.terminate()
        self.process.wait()
        for tty in self.held:
            os.close(tty)
        self.held = []

    def ask(self, command, payload=b""):
        """One request of somebody else's program."""
        body = bytes([1, command]) + payload
        frame = bytes([0, len(body) + 1]) + body + bytes([sum(body) & 0xFF])
        tty = os.open(f"{self.folder}/tty", os.O_RDWR | os.O_NOCTTY)
        subprocess.run(["stty", "-F", f"{self.folder}/tty", "raw", "-echo", "9600"], check=True)
        os.write(tty, frame)
        time.sleep(0.03)
        os.close(tty)

    def cashier_sells(self, prices):
        """A check of the cashier's own."""
        for price in prices:
            self.say(f"sell {price} Typed")
        self.ask(0x25, b"\x06")
        self.ask(0x7F)
        self.ask(0x7F)
        self.say("status")


class Till:
    """A register, a journal and a host that begins anew with every call."""

    def __init__(self, build, preload, folder, firmware):
        self.build, self.preload, self.folder = build, preload, folder
        with open(f"{folder}/check.json", "w") as file:
            json.dump(CHECK, file)
        self.register = Register(build, folder, firmware)

    def start(self, *words, deadline=DEADLINE_S, **environment):
        variables = dict(os.environ, LD_PRELOAD=self.preload, SHORTEN=str(SHORTEN),
                         REGISTER_PID=str(self.register.process.pid))
        variables.update({name: str(value) for name, value in environment.items()})
        line = [f"{self.build}/tools/kkm/kkm", "--device", f"{self.folder}/tty", *words,
                "--journal", f"{self.folder}/journal", "--deadline", deadline]
        return subprocess.Popen(line, cwd=self.folder, env=variables, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, text=True)

    def run(self, *words, **more):
        """Exit status and output of a host. A register whose plug was pulled comes back."""
        host = self.start(*words, **more)
        while True:
            try:
                output = host.communicate(timeout=0.3)[0]
                return host.returncode, output
            except subprocess.TimeoutExpired:
                if self.register.revive():
                    self.register.say("host")

    def print(self, *words, **more):
        return self.run("check", f"{self.folder}/check.json", "--key", "K", *words, **more)

    def resolve(self, **more):
        self.register.revive()
        return self.run("resolve", "K", "--json", **more)

    def receipts(self):
        """Receipts on the paper with any line of the check, and those that are the check, line by
        line, and nothing else."""
        time.sleep(0.02)
        some = whole = 0
        body = []
        paper = f"{self.folder}/paper"
        for line in open(paper).read().splitlines() if os.path.exists(paper) else []:
            # A receipt that the paper's end broke off was not registered, and is begun anew.
            body = [] if line.startswith("ЧЕК ") else body + [line]
            if line.startswith("ИТОГО"):
                some += any(name in body for name in ("Alpha", "Beta", "Gamma"))
                whole += body[0].startswith("ПРОДАЖА") and body[1:] == RECEIPT
        if self.register.was_killed and not some:
            # Its program died between its memory and its paper, which a register has in one.
            with open(f"{self.folder}/memory") as file:
                sent = [(line[9:23], line.strip()[-12:]) for line in file
                        if line.startswith("tape ") and "4567890123" in line]
            return (len(sent) + 2) // 3, int(sent == TAPE)
        return some, whole


def judge(till, status, output):
    """Holds the answer against the paper; gives its reason."""
    some, whole = till.receipts()
    # The steps stand before it.
    answer = json.loads(output[output.find("{"):]) if "{" in output else {"reason": output}
    if some > 1:
        raise Wrong(f"{some} receipts, answered {status} {answer['reason']}")
    if status == PRINTED and whole != 1:
        raise Wrong(f"printed, and {whole} whole receipts of {some}: {answer['reason']}")
    if status == NOT_PRINTED and some != 0:
        raise Wrong(f"not printed, and {some} receipts: {answer['reason']}")
    if status not in NAMES:
        raise Wrong(f"status {status}: {output}")
    return answer["reason"]


def finish(till, status):
    """What was not printed is printed on request, once."""
    if status == NOT_PRINTED:
        till.register.revive()
        till.register.say("paper in")
        for _ in range(TRIES):  # a machine under load may make a register seem silent
            till.register.say("host")
            status, output = till.print("--again")
            if status == PRINTED:
                break
        if status != PRINTED or till.receipts() != (1, 1):
            raise Wrong(f"not printed on request: {status} {till.receipts()} {output}")


def strike(till, point, resolve_struck=False):
    till.register.say("host")
    environment = {name: value for name, value in point.items() if name.isupper()}
    till.print(**environment)
    if point.get("then"):
        point["then"](till)
    if resolve_struck:
        till.resolve(STRIKE="worker host", STRIKE_AT=point["again_at"], STRIKE_WHEN="sent")
    status, output = till.resolve()
    reason = judge(till, status, output)
    again, _ = till.print()
    if again != status and status != UNKNOWN:
        raise Wrong(f"the same key gave {again} behind {status}")
    if point.get("finish", True):
        finish(till, status)
    return status, reason


def runs_out_of_time(till, point):
    till.register.say("host")
    status, output = till.print("--json", deadline=str(point["deadline"]))
    judge(till, status, output)
    return strike_later(till, status)


def strike_later(till, status):
    later, output = till.resolve()
    reason = judge(till, later, output)
    if later != status and status != UNKNOWN:
        raise Wrong(f"{later} behind {status}")
    finish(till, later)
    return later, reason


def with_two_strikes(till, point):
    return strike(till, point, resolve_struck=True)


def full_disk(till, point):
    till.register.say("host")
    status, output = till.print(DISK_FULL_AT=point["at"], DISK_FULL_IN=point["where"])
    # Whether or not the journal took it, the host was told what is true.
    some, whole = till.receipts()
    if status == PRINTED and whole != 1 or status not in (PRINTED, UNKNOWN) and some != 0:
        raise Wrong(f"disk full: status {status}, {some} receipts: {output}")
    status, output = till.resolve()
    if status == 7:  # the key never came into the journal
        if till.receipts()[0] != 0:
            raise Wrong("printed without a journal")
        finish(till, NOT_PRINTED)
        return NOT_PRINTED, "no_key"
    reason = judge(till, status, output)
    finish(till, status)
    return status, reason


def cancels_and_sells(till):
    till.register.revive()
    till.register.say("power off")
    till.register.say("power on")
    till.register.say("cancel")
    till.register.cashier_sells([7])
    till.register.cashier_sells([5])


def sells_more(till):
    till.register.revive()
    till.register.say("power off")
    till.register.say("power on")
    till.register.say("cancel")
    till.register.cashier_sells([7, 5, 3])


def sells_into_it(till):
    till.register.revive()
    till.register.say("power off")
    till.register.say("power on")
    till.register.cashier_sells([7])


def puts_paper_in(till):
    till.register.revive()
    till.register.say("paper in")


def puts_paper_in_and_presses(till):
    puts_paper_in(till)
    till.register.say("key 1")


def closes_the_shift(till):
    till.register.revive()
    till.register.say("power off")
    till.register.say("power on")
    till.register.say("cancel")
    till.register.say("shift close")


def exchanges(build, preload, firmware):
    """How many a whole check takes."""
    with tempfile.TemporaryDirectory(prefix="prove-") as folder:
        till = Till(build, preload, folder, firmware)
        till.register.say("host")
        status, output = till.print(COUNT_FILE=f"{folder}/count")
        till.register.stop()
        if status != PRINTED:
            raise RuntimeError("no check is printed without any fault: " + output)
        return os.path.getsize(f"{folder}/count")


def points(counts, dice):
    """Every point of every kind: (kind, firmware, run, parameters)."""
    whens = ("before", "sent", "answered")
    for firmware, count in counts.items():
        places = list(itertools.product(range(1, count + 1), whens))
        for at, when in places:
            base = {"STRIKE_AT": at, "STRIKE_WHEN": when}
            for kind, whom in (("host killed", "host"), ("worker killed", "worker"),
                               ("both killed", "host worker"), ("plug pulled", "register"),
                               ("all three", "host worker register")):
                yield kind, firmware, strike, dict(base, STRIKE=whom)
            both = dict(base, STRIKE="host worker")
            yield ("killed twice", firmware, with_two_strikes,
                   dict(both, again_at=dice.randint(1, 40)))
            yield "then cashier's checks", firmware, strike, dict(both, then=cancels_and_sells)
            yield "then a longer check", firmware, strike, dict(both, then=sells_more)
            yield ("then typed into it", firmware, strike,
                   dict(both, then=sells_into_it, finish=False))
            yield "then shift closed", firmware, strike, dict(both, then=closes_the_shift,
                                                              finish=False)
        for at in range(1, count + 1):
            for length in (1, 3, 10, 100):
                yield "line cut", firmware, strike, {"STRIKE": "cut", "STRIKE_AT": at,
                                                     "STRIKE_FOR": length}
            for then in (puts_paper_in, puts_paper_in_and_presses):
                yield "paper out", firmware, without_paper, {
                    "STRIKE": "host worker", "STRIKE_AT": at, "STRIKE_WHEN": "answered",
                    "then": then}
        for tenths in range(2, 402, 4):
            yield "deadline", firmware, runs_out_of_time, {"deadline": tenths / 10}
        for at in range(1, 60):
            for where in ("host", "worker"):
                yield "disk full", firmware, full_disk, {"at": at, "where": where}


def without_paper(till, point):
    till.register.say("paper out")
    return strike(till, point)


def run_point(build, preload, number, kind, firmware, run, point):
    folder = tempfile.mkdtemp(prefix=f"prove-{number}-")
    till = None
    try:
        till = Till(build, preload, folder, firmware)
        status, reason = run(till, point)
        return kind, firmware, status, reason, None
    except Exception as error:  # whatever it is, the point is told
        told = {name: getattr(value, "__name__", value) for name, value in point.items()}
        return kind, firmware, None, "", f"{kind}, firmware {firmware}, {told}: {error!r}"
    finally:
        if till is not None:
            till.register.stop()
        shutil.rmtree(folder, ignore_errors=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", help="build folder of a preset")
    parser.add_argument("preload", help="the library that is preloaded into the worker")
    parser.add_argument("--points", type=int, default=0, help="so many of each kind; 0: all")
    parser.add_argument("--kind", help="only this kind")
    parser.add_argument("--firmware", type=int, nargs="*", default=FIRMWARE)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    dice = random.Random(options.seed)
    begun = time.time()
    build, preload = os.path.abspath(options.build), os.path.abspath(options.preload)
    counts = {firmware: exchanges(build, preload, firmware) for firmware in options.firmware}
    print("exchanges of a whole check: " +
          ", ".join(f"{count} on {firmware}" for firmware, count in counts.items()), flush=True)
    kinds = collections.OrderedDict()
    for point in points(counts, dice):
        if options.kind in (None, point[0]):
            kinds.setdefault(point[0], []).append(point)
    chosen = []
    for of_kind in kinds.values():
        few = options.points and options.points < len(of_kind)
        chosen += dice.sample(of_kind, options.points) if few else of_kind
    outcomes = collections.defaultdict(collections.Counter)
    wrong = []
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        running = [pool.submit(run_point, build, preload, number, *point)
                   for number, point in enumerate(chosen)]
        for done in concurrent.futures.as_completed(running):
            kind, _, status, reason, error = done.result()
            if error is not None:
                wrong.append(error)
                print("WRONG: " + error, flush=True)
            else:
                outcomes[kind][(NAMES[status], reason)] += 1
    print(f"{'kind':24}{'points':>7}{'printed':>9}{'not':>6}{'unknown':>9}  unknown because")
    for kind in kinds:
        of = outcomes[kind]
        total = [sum(count for (name, _), count in of.items() if name == wanted)
                 for wanted in NAMES.values()]
        why = ", ".join(f"{reason} {count}" for (name, reason), count in sorted(of.items())
                        if name == "unknown")
        print(f"{kind:24}{sum(of.values()):7}{total[0]:9}{total[1]:6}{total[2]:9}  {why}")
    print(f"{len(chosen)} points, {len(wrong)} wrong, {time.time() - begun:.0f} s")
    return 1 if wrong or not chosen else 0


if __name__ == "__main__":
    sys.exit(main())
