#!/usr/bin/env python3
"""Holds the driver's exact cost against figures.txt.

  cost_test.py PROGRAM WORD MEASURE            fails when a figure grew by more than 3 %
  cost_test.py PROGRAM WORD MEASURE --update   writes what was measured into figures.txt
  cost_test.py PROGRAM WORD MEASURE --print    prints "scenario name figure" lines

WORD is i386 or native, MEASURE one of: instructions (callgrind), calls (heap allocations and the
calls that the driver makes on the line), system (strace on a real tty, with the calls that write
the trace files apart), library (PROGRAM is the driver's library: bytes when stripped, relocations).
"""
import os
import re
import subprocess
import sys
import tempfile

FIGURES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "figures.txt")
GROWTH = 1.03
SKIPPED = 77
# On a tty an answer may come late when the machine is busy, and the driver then asks again.
ATTEMPTS = {"system": 4}
# The C library chooses its string functions by the processor; figures must not depend on that.
PLAIN_PROCESSOR = "glibc.cpu.hwcaps=-AVX2,-AVX,-AVX_Fast_Unaligned_Load,-AVX512F,-AVX512VL,-ERMS,-FSRM,-SSE4_2,-SSE4_1,-SSSE3"
TRACE_WRITER = "TraceLogFile("


class CannotMeasure(Exception):
    pass


class Failed(Exception):
    pass


def run(command, folder, **more):
    environment = dict(os.environ, LC_ALL="C", LD_BIND_NOW="1", GLIBC_TUNABLES=PLAIN_PROCESSOR)
    try:
        done = subprocess.run(command, cwd=folder, env=environment, capture_output=True, text=True,
                              timeout=100, check=False, **more)
    except FileNotFoundError as error:
        raise CannotMeasure(f"{command[0]} is not installed") from error
    if done.returncode != 0:
        tracer_refused = command[0] == "strace" and "ptrace" in done.stderr.lower()
        if tracer_refused:
            raise CannotMeasure("this system lets nobody trace a process")
        raise Failed(f"{' '.join(command)} gave {done.returncode}:\n{done.stderr}")
    return done.stdout


def count_calls(program, folder):
    figures = {}
    for line in run([program], folder).splitlines():
        scenario, measure, count = line.split()
        if float(count) or measure == "allocations":
            figures[scenario, measure] = float(count)
    return figures


def names_of(line, prefix, known):
    """The name behind `fn=` and its like: `(12) name` at first, then `(12)` alone."""
    number, name = re.match(prefix + r"=\((\d+)\)(?: (.*))?", line).groups()
    return known.setdefault(number, name)


def profile(path):
    """Calls as (caller, callee, times, instructions), all inclusive of what the callee calls."""
    known, caller, callee, times, arcs = {}, None, None, 0, []
    with open(path, encoding="utf-8", errors="replace") as file:
        for line in file:
            if line.startswith("fn="):
                caller = names_of(line, "fn", known)
            elif line.startswith("cfn="):
                callee = names_of(line, "cfn", known)
            elif line.startswith("calls="):
                times = int(line[6:].split()[0])
            elif callee is not None and times and re.match(r"[+\-*\d]", line):
                arcs.append((caller, callee, times, int(line.split()[1])))
                callee, times = None, 0
    return arcs


def count_instructions(program, folder):
    output = os.path.join(folder, "profile")
    run(["valgrind", "--tool=callgrind", "--collect-atstart=no", "--toggle-collect=measured_*",
         "--toggle-collect=outside_*", f"--callgrind-out-file={output}", program], folder)
    figures, traces, traced = {}, 0, 0
    checks = 1
    for caller, callee, times, instructions in profile(output):
        if caller.startswith("measured_"):
            scenario = callee[len("run_"):]
            figures[scenario, "instructions"] = instructions / times
            if scenario == "check_4":
                checks = times
        if callee.startswith(TRACE_WRITER) and not caller.startswith(TRACE_WRITER):
            traced += instructions
            traces += 1
    if not figures:
        sys.exit("the profile knows no scenario")
    if ("check_4", "instructions") in figures:
        if traces == 0:
            sys.exit("the profile knows no trace line")
        figures["check_4", "instructions_of_trace_files"] = traced / checks
        figures["check_4", "instructions_without_trace_files"] = (
            figures["check_4", "instructions"] - traced / checks)
    return figures


def count_system_calls(program, folder):
    log = os.path.join(folder, "calls")
    run(["strace", "-qq", "-s", "100", "-e", "signal=none", "-o", log, program, "--tty"], folder)
    sums, times, scenario, trace = {}, {}, None, None
    with open(log, encoding="utf-8", errors="replace") as file:
        for line in file:
            mark = re.match(r'write\(-1, "(begin|end) (\w+)"', line)
            if mark:
                scenario = mark[2] if mark[1] == "begin" else None
                times[mark[2]] = times.get(mark[2], 0) + (mark[1] == "begin")
            elif scenario:
                name = re.match(r"\w+", line)[0]
                # One call under two names: that of the 32-bit clock and that of the 64-bit one.
                name = name.replace("clock_nanosleep_time64", "clock_nanosleep")
                name = name.replace("_llseek", "lseek")
                opened = re.match(r'openat\(AT_FDCWD, "\w+\.log", .* = (\d+)', line)
                trace = opened[1] if opened else trace
                of_trace = opened or re.match(rf"\w+\({trace}[,)]", line)
                key = scenario, ("system_trace_" if of_trace else "system_") + name
                sums[key] = sums.get(key, 0) + 1
                if of_trace and name == "close":
                    trace = None
    return {key: count / times[key[0]] for key, count in sums.items()}


def measure_library(library, folder):
    stripped = os.path.join(folder, "stripped")
    run(["strip", "-o", stripped, library], folder)
    relocations = re.findall(r" R_\w+", run(["readelf", "--relocs", "--wide", stripped], folder))
    return {("library", "library_bytes"): os.path.getsize(stripped),
            ("library", "library_relocations"): len(relocations)}


MEASURES = {"calls": count_calls, "instructions": count_instructions,
            "library": measure_library, "system": count_system_calls}


def belongs(name, measure):
    kind = name.split("_")[0]
    return (kind if kind in MEASURES else "calls") == measure


def read_figures():
    figures = {}
    with open(FIGURES, encoding="utf-8") as file:
        for line in file:
            if line.strip() and not line.startswith("#"):
                word, scenario, name, figure = line.split()
                figures[word, scenario, name] = float(figure)
    return figures


def write_figures(figures):
    with open(FIGURES, encoding="utf-8") as file:
        head = [line for line in file if line.startswith("#")]
    rows = [f"{word:7} {scenario:17} {name:34} {figure:g}\n".replace("e+", "e")
            if figure < 100000 else f"{word:7} {scenario:17} {name:34} {figure:.0f}\n"
            for (word, scenario, name), figure in sorted(figures.items())]
    with open(FIGURES, "w", encoding="utf-8") as file:
        file.writelines(head + rows)


def compare(word, measure, measured):
    checked_in = {key[1:]: figure for key, figure in read_figures().items()
                  if key[0] == word and belongs(key[2], measure)}
    faults = []
    for key in sorted(set(checked_in) | set(measured)):
        was, now = checked_in.get(key, 0.0), measured.get(key, 0.0)
        if key in checked_in and key not in measured:
            faults.append(f"{key[0]}: {key[1]} was {was:g} and is not there any more")
        elif now > was * GROWTH:
            faults.append(f"{key[0]}: {key[1]} grew from {was:g} to {now:g}")
    if faults:
        raise Failed("\n".join(faults) + "\nthe driver costs more; if it has to, update "
                     "tests/cost/figures.txt (--update)")
    print(f"{len(measured)} figures of {word}: none grew by more than 3 %")


def use(measured, word, measure):
    if "--print" in sys.argv:
        for (scenario, name), figure in sorted(measured.items()):
            print(scenario, name, f"{figure:g}")
    elif "--update" in sys.argv:
        figures = {key: figure for key, figure in read_figures().items()
                   if key[0] != word or not belongs(key[2], measure)}
        figures.update({(word, *key): figure for key, figure in measured.items()})
        write_figures(figures)
    else:
        compare(word, measure, measured)


def main():
    program, word, measure = sys.argv[1:4]
    attempts = ATTEMPTS.get(measure, 1)
    for attempt in range(1, attempts + 1):
        with tempfile.TemporaryDirectory() as folder:
            try:
                use(MEASURES[measure](os.path.abspath(program), folder), word, measure)
                return
            except CannotMeasure as reason:
                print(f"skipped: {reason}")
                sys.exit(SKIPPED)
            except Failed as failure:
                print(failure)
                if attempt == attempts:
                    sys.exit(1)


if __name__ == "__main__":
    main()
