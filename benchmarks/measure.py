"""Runs the benchmarks and writes one measurement in each line of a file, the kind of it first, then
name=value. Called by scripts/bench:

  measure.py [--short] RESULTS PARTS PRESET...

PARTS are "all" or some of those at the end of this file, with commas between them; what RESULTS
holds of the others stays. --short: a few times each."""
import contextlib
import json
import os
import platform
import struct
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
COST_TEST = os.path.join(ROOT, "tests", "cost", "cost_test.py")
sys.path.insert(0, os.path.dirname(COST_TEST))
import procedure  # noqa: E402

SHORT = "--short" in sys.argv
FIRMWARES = (301, 302, 303, 310, 400)
EXCHANGES = ("reset", "statistics", "status_33", "sale", "largest")
TIMES = {57600: 20, 9600: 5} if SHORT else {57600: 200, 9600: 100}  # baud: times
# An exchange that a busy machine disturbed is measured again, as long as there is time left for it.
QUIET_MS = 0.5
ROUNDS = 6
MORE_ROUNDS_S = 0 if SHORT else 240
# baud, lines, times
CHECKS = (((57600, 1, 1),) if SHORT else
          ((57600, 18, 3), (9600, 4, 3), (57600, 4, 5), (57600, 1, 5)))
PLANTED_US = 1000
# Checks and failures sleep nearly all the time and do not disturb one another.
AT_ONCE = 20
FAILURES = 1 if SHORT else 10
FAILURE_ROUNDS = 1 if SHORT else 4
DISTURBED = 1.01
LOADS = 50 if SHORT else 500
# Where times are measured of what sleeps most of the time.
TIMED = ("exchange", "check", "failure")


def program(word, name):
    return os.path.join(ROOT, "build", word, "benchmarks", name)


def run(*command):
    """Output lines of a command, run in an empty folder that costs no disk."""
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(dir=memory) as folder:
        done = subprocess.run([str(word) for word in command], cwd=folder, text=True, check=False,
                              stdout=subprocess.PIPE)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} gave {done.returncode}")
    return done.stdout.splitlines()


def steadily(*command):
    """The same with real-time priority, where the system grants it: other work disturbs less."""
    granted = subprocess.run(["chrt", "-f", "10", "true"], check=False,
                             stderr=subprocess.DEVNULL).returncode == 0
    return run(*(("chrt", "-f", "10") if granted else ()), *command)


@contextlib.contextmanager
def processors_awake():
    """No sleep of the processors, where the system grants it. How late one that sleeps wakes is the
    machine's affair, and on a virtual machine its host's."""
    with contextlib.ExitStack() as stack:
        with contextlib.suppress(OSError):
            latency = stack.enter_context(open("/dev/cpu_dma_latency", "wb", buffering=0))
            latency.write(struct.pack("i", 0))
        yield


def pairs(line):
    return dict(pair.split("=", 1) for pair in line.split() if "=" in pair)


def machine():
    model = "unknown processor"
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        for line in file:
            if line.startswith("model name"):
                model = line.split(":", 1)[1].strip()
                break
    compiler = run("g++", "--version")[0]
    load = os.getloadavg()[0]
    return [f"machine processor={model.replace(' ', '_')} processors={os.cpu_count()} "
            f"kernel={platform.release()} compiler={compiler.split()[-1]} load={load:.2f}"]


def lateness(line):
    row = pairs(line)
    return max(float(row["p99"]), float(row["null_p99"])) - float(row["floor"])


def exchanges(words):
    """Of several rounds the one that was disturbed least."""
    rounds = {}

    def measure(key):
        word, baud, exchange = key
        rounds.setdefault(key, []).extend(
            steadily(program(word, "exchange_bench"), baud, TIMES[baud], exchange))

    for word in words:
        for baud in TIMES:
            for exchange in EXCHANGES:
                measure((word, baud, exchange))
    end = time.monotonic() + MORE_ROUNDS_S
    while time.monotonic() < end:
        disturbed = {key: min(map(lateness, lines)) for key, lines in rounds.items()
                     if len(lines) < ROUNDS}
        if not disturbed or max(disturbed.values()) <= QUIET_MS:
            break
        measure(max(disturbed, key=disturbed.get))
    return [f"{min(lines, key=lateness)} rounds={len(lines)}" for lines in rounds.values()]


def judged(lines, steps_of, baud):
    """One line of a program that printed each of its runs before: held against the procedure."""
    runs, summary, ratios = [pairs(line) for line in lines[:-1]], lines[-1], []
    unasked, missing = [], []
    for row in runs:
        recorded = procedure.parse(row["exchanges"])
        steps = steps_of(row["first"] == "1")
        more, less = procedure.compare(steps, recorded)
        unasked += more
        missing += less
        required = procedure.required_ms(steps, baud)
        if row["first"] == "0":
            ratios.append(float(row["wall"]) / required)
    for text in unasked:
        print(f"nobody asks for {text}: {summary}", file=sys.stderr)
    for text in missing:
        print(f"missing {text}: {summary}", file=sys.stderr)
    ratios.sort()
    commands = [command for command, _, _ in recorded]
    counts = " ".join(f"0x{command:02X}={commands.count(command)}"
                      for command in sorted(set(commands)))
    return (f"{summary} must={required:.3f} ratio={ratios[len(ratios) // 2]:.5f} "
            f"worst={ratios[-1]:.5f} exchanges={len(recorded)} "
            f"required={len(procedure.exchanges(steps))} unasked={len(unasked)} "
            f"missing={len(missing)} {counts}")


def one_check(word, firmware, baud, lines, times, *planted):
    return judged(steadily(program(word, "check_bench"), firmware, baud, lines, times, *planted),
                  lambda first: procedure.check(procedure.Till(firmware, lines, first=first)), baud)


def checks(words):
    with ThreadPoolExecutor(AT_ONCE) as pool:
        jobs = [pool.submit(one_check, word, firmware, *check)
                for check in CHECKS for word in words for firmware in FIRMWARES]
        planted = [pool.submit(one_check, word, 303, 57600, 1, 1, PLANTED_US) for word in words]
        rows = sorted((job.result() for job in jobs), key=check_order)
        return rows + [f"{job.result()} planted={PLANTED_US}" for job in planted]


def check_order(line):
    row = pairs(line)
    return (-int(row["word"]), -int(row["baud"]), int(row["firmware"]), int(row["lines"]))


def failures(words):
    """Again while one of them was disturbed, and of each the round that was disturbed least."""
    def once(word):
        lines = steadily(program(word, "failing_bench"), FAILURES)
        done = []
        for line in lines[:-2 - FAILURES]:
            row = pairs(line)
            must = float(row["must"])
            done.append(f"{line} ratio={float(row['p50']) / must:.5f} "
                        f"worst={float(row['max']) / must:.5f}")
        return done + [judged(lines[-2 - FAILURES:], lambda first: procedure.refused_line(
            procedure.Till(303, 1, first=first)), 57600)]

    def worst(line):
        return float(pairs(line)["worst"])

    def of_word(word):
        rounds = [once(word)]
        while len(rounds) < FAILURE_ROUNDS and any(
                min(map(worst, lines)) > DISTURBED for lines in zip(*rounds)):
            rounds.append(once(word))
        return [f"{min(lines, key=worst)} rounds={len(rounds)}" for lines in zip(*rounds)]

    with ThreadPoolExecutor(len(words)) as pool:
        return [line for lines in pool.map(of_word, words) for line in lines]


def figures(word, command):
    lines = []
    for line in run(*command):
        if line.startswith("skipped"):
            sys.exit(line)
        scenario, name, figure = line.split()
        lines.append(f"word={word} scenario={scenario} name={name} figure={figure}")
    return lines


def costs(word):
    cost_program = os.path.join(ROOT, "build", word, "tests", "cost", "cost_program")
    library = os.path.join(ROOT, "build", word, "libVeskTarvoM5.so")
    return [line for measure in ("instructions", "calls", "system", "library")
            for line in figures(word, (sys.executable, COST_TEST,
                                       library if measure == "library" else cost_program,
                                       word, measure, "--print"))]


def peer(word):
    path = program(word, "modbus_peer")
    if not os.path.exists(path):
        return []
    return (figures(word, (sys.executable, COST_TEST, path, word, "instructions", "--print"))
            + figures(word, (path, "--time")))


def loading(word):
    library = os.path.join(ROOT, "build", word, "libVeskTarvoM5.so.1")
    with tempfile.TemporaryDirectory() as folder:
        stripped = os.path.join(folder, "libVeskTarvoM5.so.1")
        subprocess.run(["strip", "-o", stripped, library], check=True)
        os.sync()  # pages that are not on the disk yet would count as written by the process
        return steadily(program(word, "load_bench"), stripped, program(word, "libempty_library.so"),
                        LOADS)


def pure(word):
    path = program(word, "pure_bench")
    if not os.path.exists(path):
        return []
    options = ["--benchmark_min_time=0.02"] if SHORT else []
    report = json.loads("\n".join(run(path, "--benchmark_format=json", *options)))
    lines = []
    for row in report["benchmarks"]:
        name = row["name"].replace(" ", "_")
        if row["run_type"] == "iteration":
            lines.append(f"name={name} ns={row['cpu_time']:.2f}")
        elif row.get("aggregate_name") == "BigO":
            lines.append(f"name={name} order={row['big_o']} ns={row['cpu_coefficient']:.3f}")
    return lines


def each(measure):
    return lambda words: [line for word in words for line in measure(word)]


PARTS = {
    "exchange": exchanges,
    "check": checks,
    "failure": failures,
    "load": each(loading),
    "pure": each(pure),
    "growth": each(lambda word: steadily(program(word, "growth_bench"))),
    "peer": each(peer),
    "cost": each(costs),
}


def earlier(path, parts):
    """Lines of the other parts, as they were measured before."""
    if not os.path.exists(path):
        return []
    with open(path, encoding="utf-8") as file:
        return [line.rstrip("\n") for line in file
                if line.split()[0] not in parts and line.split()[0] != "machine"]


def main():
    path, parts, *words = [word for word in sys.argv[1:] if word != "--short"]
    parts = list(PARTS) if parts == "all" else parts.split(",")
    unknown = set(parts) - set(PARTS)
    if unknown:
        sys.exit(f"scripts/bench does not know {', '.join(unknown)}; it knows {', '.join(PARTS)}")
    os.makedirs(os.path.dirname(path) or ".", exist_ok=True)
    here, failed = machine(), []
    for part in parts:
        begin = time.monotonic()
        try:
            with processors_awake() if part in TIMED else contextlib.nullcontext():
                lines = PARTS[part](words)
        except SystemExit as fault:  # the other parts shall not be lost for it
            print(f"== cannot measure {part}: {fault}", flush=True)
            failed.append(part)
            continue
        print(f"== measured {part} in {time.monotonic() - begin:.0f} s", flush=True)
        results = here + earlier(path, [part]) + [f"{part} {line}" for line in lines]
        with open(path, "w", encoding="utf-8") as file:
            file.writelines(line + "\n" for line in results)
    if failed:
        sys.exit(f"not measured: {', '.join(failed)}; what was there of them before stays")


if __name__ == "__main__":
    main()
