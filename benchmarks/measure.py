"""Runs the benchmarks and writes docs/performance/results.txt: one measurement in each line, the
kind of it first, then name=value. Called by scripts/bench with the parts to measure (or "all"), with
commas between them, and then the presets. The part "again" measures those exchanges again which a
busy machine has disturbed."""
import json
import os
import platform
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
RESULTS = os.path.join(ROOT, "docs", "performance", "results.txt")
COST_TEST = os.path.join(ROOT, "tests", "cost", "cost_test.py")
FIRMWARES = (301, 302, 303, 310, 400)
TIMES = {57600: 300, 9600: 100}  # baud: times
EXCHANGES = ("reset", "statistics", "status_32", "sale", "largest")
# An exchange is measured again while a busy machine delays driver or null run.
ROUNDS = 5
QUIET_MS = 0.5
CHECKS = {1: 5, 4: 5, 18: 3}  # lines: times


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
    """The same with real-time priority, where the system grants it: other work then disturbs less."""
    granted = subprocess.run(["chrt", "-f", "10", "true"], check=False,
                             stderr=subprocess.DEVNULL).returncode == 0
    return run(*(("chrt", "-f", "10") if granted else ()), *command)


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
    row = dict(pair.split("=", 1) for pair in line.split())
    return max(float(row["p99"]), float(row["null_p99"])) - float(row["floor"])


def quietest(word, baud, exchange, rounds):
    """The round that was disturbed least, of those there are and as many more as it takes."""
    rounds, most = list(rounds), len(rounds) + ROUNDS
    while len(rounds) < most and (not rounds or min(map(lateness, rounds)) > QUIET_MS):
        rounds += steadily(program(word, "exchange_bench"), baud, TIMES[baud], exchange)
    return min(rounds, key=lateness)


def exchanges(word):
    return [quietest(word, baud, exchange, []) for baud in TIMES for exchange in EXCHANGES]


def exchanges_again(word):
    """What is there, with more rounds for those that no round has been quiet for."""
    size = "64" if word == "native" else "32"
    lines = []
    for line in earlier({part for part in PARTS if part != "exchange"}):
        row = dict(pair.split("=", 1) for pair in line.split()[1:])
        if row["word"] == size:
            lines.append(quietest(word, int(row["baud"]), row["exchange"],
                                  [line.partition(" ")[2]]))
    return lines


def checks(word):
    def of_firmware(firmware):
        return [line for lines, times in CHECKS.items()
                for line in steadily(program(word, "check_bench"), firmware, lines, times)]
    # They sleep nearly all the time and disturb one another less than they would take in a row.
    with ThreadPoolExecutor(len(FIRMWARES)) as pool:
        return [line for lines in pool.map(of_firmware, FIRMWARES) for line in lines]


def costs(word):
    cost_program = os.path.join(ROOT, "build", word, "tests", "cost", "cost_program")
    library = os.path.join(ROOT, "build", word, "libVeskTarvoM5.so")
    lines = []
    for measure in ("instructions", "calls", "system", "library"):
        measured = library if measure == "library" else cost_program
        for line in run(sys.executable, COST_TEST, measured, word, measure, "--print"):
            if line.startswith("skipped"):
                sys.exit(line)
            scenario, name, figure = line.split()
            lines.append(f"word={word} scenario={scenario} name={name} figure={figure}")
    return lines


def peer(word):
    path = program(word, "modbus_peer")
    if not os.path.exists(path):
        return []
    lines = []
    for command in ((sys.executable, COST_TEST, path, word, "instructions", "--print"),
                    (path, "--time")):
        for line in run(*command):
            scenario, name, figure = line.split()
            lines.append(f"word={word} scenario={scenario} name={name} figure={figure}")
    return lines


def loading(word):
    library = os.path.join(ROOT, "build", word, "libVeskTarvoM5.so.1")
    with tempfile.TemporaryDirectory() as folder:
        stripped = os.path.join(folder, "libVeskTarvoM5.so.1")
        subprocess.run(["strip", "-o", stripped, library], check=True)
        os.sync()  # pages that are not on the disk yet would count as written by the process
        return run(program(word, "load_bench"), stripped, 500)


def pure(word):
    path = program(word, "pure_bench")
    if not os.path.exists(path):
        return []
    report = json.loads("\n".join(run(path, "--benchmark_format=json")))
    lines = []
    for row in report["benchmarks"]:
        name = row["name"].replace(" ", "_")
        if row["run_type"] == "iteration":
            lines.append(f"name={name} ns={row['cpu_time']:.2f}")
        elif row.get("aggregate_name") == "BigO":
            lines.append(f"name={name} order={row['big_o']} ns={row['cpu_coefficient']:.3f}")
    return lines


PARTS = {
    "exchange": exchanges,
    "check": checks,
    "cost": costs,
    "peer": peer,
    "pure": pure,
    "growth": lambda word: run(program(word, "growth_bench")),
    "load": loading,
    "failure": lambda word: steadily(program(word, "failing_bench"), 10),
}


def earlier(parts):
    """Lines of the other parts, as they were measured before."""
    if not os.path.exists(RESULTS):
        return []
    with open(RESULTS, encoding="utf-8") as file:
        return [line.rstrip("\n") for line in file
                if line.split()[0] not in parts and line.split()[0] != "machine"]


def main():
    parts, words = sys.argv[1].split(","), sys.argv[2:]
    if parts == ["all"]:
        parts = list(PARTS)
    measures = {part: PARTS[part] for part in parts if part != "again"}
    if "again" in parts:
        measures["exchange"] = exchanges_again
    results = machine() + earlier(measures)
    for part, measure in measures.items():
        for word in words:
            print(f"== measuring {part}, {word}", flush=True)
            results += [f"{part} {line}" for line in measure(word)]
    os.makedirs(os.path.dirname(RESULTS), exist_ok=True)
    with open(RESULTS, "w", encoding="utf-8") as file:
        file.writelines(line + "\n" for line in results)


if __name__ == "__main__":
    main()
