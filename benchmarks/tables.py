"""The tables of docs/performance.md, each by its name there."""
import os
import sys

from results import ROOT, WORDS, above, order, table

sys.path.insert(0, os.path.join(ROOT, "tests", "cost"))
import procedure  # noqa: E402

NAMES = {"reset": "smallest (status reset)", "statistics": "statistics",
         "status_33": "status with 33 data bytes", "sale": "sale line",
         "largest": "largest answer (197 bytes)"}
LINE_CALLS = (("clock_nanosleep", "pauses"), ("ioctl", "flush"), ("write", "requests"),
              ("poll", "waits for a byte"), ("read", "bytes"))
TRACE_CALLS = ("openat", "lseek", "write", "close")
SCENARIOS = ("reset", "status", "sale_number", "key", "title", "sale", "statistics",
             "status_sale_add", "eeprom_197")
# Payloads of the driver and of the peer.
PEERS = (("driver_11", "reading_11", "modbus_10", "statistics"),
         ("driver_32", "reading_32", "modbus_32", "status of a line"),
         ("driver_197", "reading_197", "modbus_196", "largest answer"))
CURVES = (("fill", "fill the buffer with n lines"), ("sum", "sum of n lines"),
          ("delete_first", "delete the first of n lines"), ("clear", "clear n lines"),
          ("total", "grand total, n tape records"), ("cash_sum", "cash sum, n tape records"),
          ("trace", "one message to a trace file of n bytes"))
MEMORY = (("bytes_for_total", "grand total"), ("bytes_for_cash_sum", "cash sum"))


def three(row, prefix="", scale=1.0, digits=1):
    """p50, p99 and maximum."""
    return " / ".join(f"{float(row[prefix + key]) * scale:.{digits}f}"
                      for key in ("p50", "p99", "max"))


def machine_table(results):
    row = results.of("machine")[0]
    return [f'{row["processor"].replace("_", " ")}, {row["processors"]} processors, Linux '
            f'{row["kernel"]}, GCC {row["compiler"]}; load average at the start {row["load"]}.']


def exchange_table(results):
    rows = []
    for row in results.of("exchange"):
        rows.append([WORDS[row["word"]], row["baud"], NAMES[row["exchange"]],
                     f'{row["request"]} + {row["answer"]}', f'{float(row["floor"]):.2f}']
                    + [f"{above(row, name):.2f}" for name in ("p50", "p99", "max")]
                    + [f'{above(row, name, "null_"):.2f}' for name in ("p50", "p99", "max")]
                    + [f'{float(row["p50"]) / float(row["null_p50"]):.4f}', row["rounds"]])
    return table(["word", "baud", "exchange", "bytes", "floor, ms", "p50", "p99", "max", "null p50",
                  "null p99", "null max", "p50 : null p50", "rounds"], rows)


def processor_table(results):
    rows = [[WORDS[row["word"]], row["baud"], NAMES[row["exchange"]],
             f'{float(row["cpu"]) * 1e3:.0f}', f'{float(row["null_cpu"]) * 1e3:.0f}',
             f'{float(row["cpu"]) / float(row["null_cpu"]):.2f}', row["faults"],
             row["null_faults"]] for row in results.of("exchange")]
    return table(["word", "baud", "exchange", "processor, µs", "null run, µs", "ratio",
                  "page faults", "null run"], rows)


def procedure_table(_results):
    """Of one register, as an example; the text beside it tells what others have."""
    till = procedure.Till(303, 1, first=True)
    rows = []
    for part, steps in (("begin", procedure.begin(till)), ("each line", procedure.line(till)),
                        ("end", procedure.end(till))):
        for step in steps:
            if isinstance(step, procedure.Exchange):
                request, answer = procedure.frame_bytes(step)
                pause = f"{step.pause} between" if step.pause else ""
                rows.append([part, step.name, f"`0x{step.command:02X}`", f"{request} + {answer}",
                             pause])
            elif step > 1000:
                rows.append([part, "printing", "", "", "3000 and 500 for each line"])
            else:
                rows.append([part, "pause", "", "", str(step)])
    return table(["part", "exchange or pause", "command", "bytes", "pause, ms"], rows)


def check_table(results):
    rows = []
    for row in results.checks():
        rows.append([WORDS[row["word"]], row["firmware"], row["baud"], row["lines"],
                     f'{float(row["must"]) / 1e3:.3f}', three(row, scale=1e-3, digits=3),
                     f'{float(row["ratio"]):.4f}', f'{float(row["worst"]):.4f}', row["exchanges"],
                     row["unasked"], row["missing"], f'{float(row["cpu"]):.1f}', row["faults"]])
    return table(["word", "firmware", "baud", "lines", "must take, s", "takes p50 / p99 / max, s",
                  "ratio p50", "ratio max", "exchanges", "nobody asks for", "missing",
                  "processor, ms", "page faults"], rows)


def planted_table(results):
    return table(["word", "each pause longer by, µs", "must take, s", "takes, s", "ratio"],
                 [[WORDS[row["word"]], row["planted"], f'{float(row["must"]) / 1e3:.3f}',
                   f'{float(row["p50"]) / 1e3:.3f}', f'{float(row["ratio"]):.4f}']
                  for row in results.planted()])


def commands_table(results):
    rows = [row for row in results.checks() if row["word"] == "64" and row["baud"] == "57600"]
    commands = sorted({key for row in rows for key in row if key.startswith("0x")})
    return table(["firmware", "lines"] + commands + ["all", "required"],
                 [[row["firmware"], row["lines"]] + [row.get(command, 0) for command in commands]
                  + [row["exchanges"], row["required"]] for row in rows])


def cost_table(results):
    rows = []
    for word in results.words("cost"):
        for scenario in SCENARIOS:
            def figure(name, scenario=scenario, word=word):
                return results.cost("cost", word, scenario, name)
            calls = [figure("system_" + name) for name, _ in LINE_CALLS]
            other = sum(float(row["figure"]) for row in results.of("cost", word=word,
                                                                   scenario=scenario)
                        if row["name"].startswith("system_")) - sum(calls)
            rows.append([WORDS[word], f"`{scenario}`", f'{figure("instructions"):.0f}',
                         f'{figure("allocations"):g}']
                        + [f"{count:g}" for count in calls] + [f"{other:g}"])
    return table(["word", "exchange", "instructions", "allocations", "clock_nanosleep",
                  "ioctl (flush)", "write", "poll", "read", "any other"], rows)


def required_calls():
    """What the check of `check_4` asks for: a pause before and behind each request, a flush, a
    write; a look for each of two pieces of the answer and for each of its bytes, and a read."""
    steps = procedure.check(procedure.Till(303, 4, cash=False))
    exchanges = procedure.exchanges(steps)
    read = sum(procedure.frame_bytes(exchange)[1] for exchange in exchanges)
    pauses = len(steps) - len(exchanges) + sum(exchange.pause > 0 for exchange in exchanges)
    return {"clock_nanosleep": 2 * len(exchanges) + pauses, "ioctl": len(exchanges),
            "write": len(exchanges), "poll": read + 2 * len(exchanges), "read": read}


def other_calls(results, word):
    """System calls of a check that are neither the line's nor those of the trace files, by name."""
    known = {"system_" + name for name, _ in LINE_CALLS}
    return [(row["name"][len("system_"):], float(row["figure"]))
            for row in results.of("cost", word=word, scenario="check_4")
            if row["name"].startswith("system_") and not row["name"].startswith("system_trace_")
            and row["name"] not in known]


def check_cost_table(results):
    words, required = results.words("cost"), required_calls()

    def row(text, name, asked=""):
        return [text] + [f'{results.cost("cost", word, "check_4", name):g}' if
                         results.cost("cost", word, "check_4", name) < 100000 else
                         f'{results.cost("cost", word, "check_4", name):.0f}'
                         for word in words] + [asked]

    rows = [row("instructions, without trace files", "instructions_without_trace_files"),
            row("heap allocations", "allocations")]
    rows += [row(f"`{name}` ({what})", "system_" + name, required[name])
             for name, what in LINE_CALLS]
    rows.append(["any other system call"]
                + [", ".join(f"`{name}` {count:g}" for name, count in other_calls(results, word))
                   or "0" for word in words] + [0])
    rows.append(row("trace files: instructions", "instructions_of_trace_files"))
    rows += [row(f"trace files: `{name}`", "system_trace_" + name) for name in TRACE_CALLS]
    return table(["of a check of 4 lines"] + [WORDS[word] for word in words] + ["required"], rows)


def peer_ratio(results, peer):
    driver, reading, modbus, _ = peer
    own = (results.cost("peer", "native", driver, "instructions")
           - results.cost("peer", "native", reading, "instructions"))
    return own, results.cost("peer", "native", modbus, "instructions")


def peer_table(results):
    if not results.of("peer"):
        return ["(libmodbus was not there.)"]
    rows = []
    for peer in PEERS:
        driver, reading, modbus, name = peer
        own, other = peer_ratio(results, peer)

        def us(scenario):
            return results.cost("peer", "native", scenario, "processor_ns") / 1e3
        rows.append([name, driver.split("_")[1], modbus.split("_")[1], f"{own:.0f}", f"{other:.0f}",
                     f"{own / other:.2f}",
                     f'{results.cost("peer", "native", reading, "instructions"):.0f}',
                     f"{us(driver) - us(reading):.1f}", f"{us(modbus):.1f}",
                     f"{(us(driver) - us(reading)) / us(modbus):.2f}", f"{us(reading):.1f}",
                     f'{results.cost("peer", "native", driver, "allocations"):g}',
                     f'{results.cost("peer", "native", modbus, "allocations"):g}'])
    return table(["exchange", "payload", "peer's", "instructions", "peer's", "ratio",
                  "reading apart", "processor, µs", "peer's", "ratio", "reading apart",
                  "allocations", "peer's"], rows)


def pure_table(results):
    fits = {row["name"].rsplit("_", 1)[0]: row for row in results.of("pure") if "order" in row}
    times = {}
    for row in results.of("pure"):
        if "order" not in row:
            name, _, size = row["name"].partition("/")
            times.setdefault(name, []).append((int(size or 1), float(row["ns"])))
    rows = []
    for name, points in times.items():
        fit = f'{fits[name]["order"]}' if name in fits else ""
        sizes = f"{points[0][0]} / {points[-1][0]}" if len(points) > 1 else ""
        rows.append([f"`{name}`", sizes, " / ".join(
            f"{ns:.1f}" for _, ns in dict.fromkeys((points[0], points[-1]))), fit])
    return table(["function", "sizes", "ns", "order"], rows)


def growth_table(results):
    rows = []
    for word in results.words("growth"):
        for name, text in CURVES:
            points = results.curve(word, name)
            rows.append([WORDS[word], text, f"{points[0][1]:.2f} µs", f"{points[-1][1]:.2f} µs",
                         f"{points[-1][0]:.0f}", f"n^{max(order(points), 0):.2f}"])
        for name, text in MEMORY:
            points = results.curve(word, name, "bytes")
            rows.append([WORDS[word], f"memory for it: {text}", f"{points[0][1]:.0f} bytes",
                         f"{points[-1][1]:.0f} bytes", f"{points[-1][0]:.0f}",
                         "flat" if points[-1][1] <= points[0][1] + 1024 else "**grows**"])
    return table(["word", "what", "smallest n", "largest n", "largest n is", "order"], rows)


def load_table(results):
    rows = []
    for row in results.of("load"):
        word = "native" if row["word"] == "64" else "i386"
        rows.append([WORDS[word], f'{results.cost("cost", word, "library", "library_bytes"):.0f}',
                     f'{results.cost("cost", word, "library", "library_relocations"):.0f}']
                    + [three(row, prefix, 1e3, 0) for prefix in
                       ("load_", "null_load_", "unload_", "null_unload_")]
                    + [row["private"], row["dirty"]])
    return table(["word", "stripped, bytes", "relocations", "load p50 / p99 / max, µs",
                  "empty one's", "unload p50 / p99 / max, µs", "empty one's", "private, kB",
                  "of that written, kB"], rows)


def failure_table(results):
    rows = []
    for row in results.of("failure"):
        name = row["failure"].replace("_", " ").replace("stops at byte 0", "silent")
        rows.append([WORDS[row["word"]], name, f'{float(row["must"]):.1f}', three(row, digits=2),
                     f'{float(row["ratio"]):.4f}', f'{float(row["worst"]):.4f}', row["rounds"]])
    return table(["word", "failure", "limits, ms", "p50 / p99 / max, ms", "ratio p50", "ratio max",
                  "rounds"],
                 rows)


TABLES = {"machine": machine_table, "exchanges": exchange_table, "processor": processor_table,
          "procedure": procedure_table, "checks": check_table, "planted": planted_table,
          "commands": commands_table, "costs": cost_table, "check cost": check_cost_table,
          "peer": peer_table, "pure": pure_table, "growth": growth_table, "loading": load_table,
          "failures": failure_table}
