"""Runs the benchmarks and writes docs/performance/results.txt: one measurement in each line, the
kind of it first, then name=value. Called by scripts/bench with the presets to measure."""
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


def exchanges(word):
    return (run(program(word, "exchange_bench"), 57600, 300) +
            run(program(word, "exchange_bench"), 9600, 100))


def checks(word):
    def of_firmware(firmware):
        return [line for lines, times in CHECKS.items()
                for line in run(program(word, "check_bench"), firmware, lines, times)]
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
    for measure in ("instructions", "calls"):
        for line in run(sys.executable, COST_TEST, path, word, measure, "--print"):
            scenario, name, figure = line.split()
            lines.append(f"word={word} scenario={scenario} name={name} figure={figure}")
    return lines


def loading(word):
    library = os.path.join(ROOT, "build", word, "libVeskTarvoM5.so.1")
    with tempfile.TemporaryDirectory() as folder:
        stripped = os.path.join(folder, "libVeskTarvoM5.so.1")
        subprocess.run(["strip", "-o", stripped, library], check=True)
        return run(program(word, "load_bench"), stripped, 500)


PARTS = {
    "exchange": exchanges,
    "check": checks,
    "cost": costs,
    "peer": peer,
    "growth": lambda word: run(program(word, "growth_bench")),
    "load": loading,
    "failure": lambda word: run(program(word, "failing_bench"), 10),
}


def main():
    results = machine()
    for part, measure in PARTS.items():
        for word in sys.argv[1:]:
            print(f"== measuring {part}, {word}", flush=True)
            results += [f"{part} {line}" for line in measure(word)]
    os.makedirs(os.path.dirname(RESULTS), exist_ok=True)
    with open(RESULTS, "w", encoding="utf-8") as file:
        file.writelines(line + "\n" for line in results)


if __name__ == "__main__":
    main()
