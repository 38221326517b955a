"""Makes the tables of docs/performance.md and its pictures from docs/performance/results.txt.

In the document a table stands between `<!-- NAME -->` and `<!-- end -->`; the text around it is
written by hand."""
import math
import os
import re
import sys

import picture

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
DOCUMENT = os.path.join(ROOT, "docs", "performance.md")
FOLDER = os.path.join(ROOT, "docs", "performance")
WORDS = {"64": "64-bit", "32": "32-bit", "native": "64-bit", "i386": "32-bit"}
NAMES = {"reset": "smallest (status reset)", "statistics": "statistics",
         "status_32": "status with 32 data bytes", "sale": "sale line",
         "largest": "largest answer (197 bytes)"}
TITLE_PIECES = 2  # of the 20 letters that the benchmark's goods have


class Results:
    def __init__(self):
        self.rows = []
        with open(os.path.join(FOLDER, "results.txt"), encoding="utf-8") as file:
            for line in file:
                kind, *pairs = line.split()
                self.rows.append((kind, dict(pair.split("=", 1) for pair in pairs)))

    def of(self, kind, **wanted):
        return [row for name, row in self.rows if name == kind
                and all(row.get(key) == value for key, value in wanted.items())]

    def cost(self, kind, word, scenario, name):
        rows = self.of(kind, word=word, scenario=scenario, name=name)
        return float(rows[0]["figure"]) if rows else 0.0


def table(head, rows):
    numeric = [all(re.match(r"^[-+]?[\d.,]+( |$|%)", str(row[i])) for row in rows)
               for i in range(len(head))]
    lines = ["| " + " | ".join(head) + " |",
             "|" + "|".join("---:" if is_number else "---" for is_number in numeric) + "|"]
    return lines + ["| " + " | ".join(str(cell) for cell in row) + " |" for row in rows]


def above(row, name, prefix=""):
    return float(row[prefix + name]) - float(row["floor"])


def exchange_table(results):
    rows = []
    for row in results.of("exchange"):
        rows.append([WORDS[row["word"]], row["baud"], NAMES[row["exchange"]],
                     f'{row["request"]} + {row["answer"]}', f'{float(row["floor"]):.2f}']
                    + [f"{above(row, name):.2f}" for name in ("p50", "p99", "max")]
                    + [f'{above(row, name, "null_"):.2f}' for name in ("p50", "p99", "max")]
                    + [f'{float(row["p50"]) / float(row["null_p50"]):.4f}'])
    return table(["word", "baud", "exchange", "bytes", "floor, ms", "p50", "p99", "max", "null p50",
                  "null p99", "null max", "p50 : null p50"], rows)


def processor_table(results):
    rows = [[WORDS[row["word"]], row["baud"], NAMES[row["exchange"]],
             f'{float(row["cpu"]) * 1e3:.0f}', f'{float(row["null_cpu"]) * 1e3:.0f}',
             f'{float(row["cpu"]) / float(row["null_cpu"]):.2f}', row["faults"],
             row["null_faults"]] for row in results.of("exchange")]
    return table(["word", "baud", "exchange", "processor, µs", "null run, µs", "ratio",
                  "page faults", "null run"], rows)


def required_exchanges(firmware, lines):
    """Exchanges of a check with cash and without discount, as the procedure has them."""
    lock = 2 if firmware > 302 and firmware != 400 else 0
    cash = 2 if 301 <= firmware <= 309 else 0
    titles = TITLE_PIECES if firmware > 301 else 0
    prepare = 3 + 1        # the query state costs three exchanges; the sale number
    begin = 3 + 1 + 1      # the query state again; the sale number; the counters before
    line = 5 + titles      # number, sale, status, reset, number
    close = 1 + 2 + 3      # reset; no card, reset; type, status, reset
    finish = cash + 2 + 1  # cash: status, cash; check-out: status, reset; the counters behind
    return prepare + begin + lines * line + close + finish + lock


def check_table(results):
    rows = []
    for row in results.of("check"):
        required = required_exchanges(int(row["firmware"]), int(row["lines"]))
        rows.append([WORDS[row["word"]], row["firmware"], row["lines"],
                     f'{float(row["required"]) / 1e3:.3f}', f'{float(row["p50"]) / 1e3:.3f}',
                     f'{float(row["ratio"]):.4f}', f'{float(row["worst"]):.4f}',
                     row["exchanges"], required, f'{float(row["cpu"]):.1f}', row["faults"]])
    return table(["word", "firmware", "lines", "must take, s", "takes, s", "ratio", "worst ratio",
                  "exchanges", "required", "processor, ms", "page faults"], rows)


def commands_table(results):
    rows = [row for row in results.of("check", lines="4", word="64")]
    commands = sorted({key for row in rows for key in row if key.startswith("0x")})
    return table(["firmware"] + commands,
                 [[row["firmware"]] + [row.get(command, 0) for command in commands]
                  for row in rows])


SCENARIOS = (("reset", "read_5"), ("status", "read_5"), ("sale_number", None), ("key", "read_5"),
             ("title", "read_5"), ("sale", None), ("statistics", "read_16"),
             ("status_sale_add", "read_38"), ("eeprom_197", "read_202"))


def words_of(results):
    return list(dict.fromkeys(row["word"] for row in results.of("cost")))


def cost_table(results):
    rows = []
    for word in words_of(results):
        for scenario, _ in SCENARIOS:
            def figure(name, scenario=scenario, word=word):
                return results.cost("cost", word, scenario, name)
            calls = {name: figure("system_" + name)
                     for name in ("clock_nanosleep", "ioctl", "write", "poll", "read")}
            other = sum(float(row["figure"]) for row in results.of("cost", word=word,
                                                                   scenario=scenario)
                        if row["name"].startswith("system_")) - sum(calls.values())
            rows.append([WORDS[word], f"`{scenario}`", f'{figure("instructions"):.0f}',
                         f'{figure("allocations"):g}']
                        + [f"{count:g}" for count in calls.values()] + [f"{other:g}"])
    return table(["word", "exchange", "instructions", "allocations", "clock_nanosleep",
                  "ioctl (flush)", "write", "poll", "read", "any other"], rows)


def check_cost_table(results):
    rows = []
    for word in words_of(results):
        def figure(name, word=word):
            return results.cost("cost", word, "check_4", name)
        rows.append([WORDS[word], f'{figure("instructions_without_trace_files"):.0f}',
                     f'{figure("instructions_of_trace_files"):.0f}', f'{figure("allocations"):g}']
                    + [f'{figure("system_" + name):g}' for name in
                       ("clock_nanosleep", "ioctl", "poll", "read", "write", "openat", "lseek",
                        "close")])
    return table(["word", "instructions", "and for trace files", "allocations", "clock_nanosleep",
                  "ioctl", "poll", "read", "write", "openat", "lseek", "close"], rows)


PEERS = (("statistics", "read_16", "modbus_10", 11), ("status_sale_add", "read_38", "modbus_32", 32),
         ("eeprom_197", "read_202", "modbus_196", 197))


def peer_ratio(results, peer):
    scenario, reading, modbus, _ = peer
    own = (results.cost("cost", "native", scenario, "instructions")
           - results.cost("cost", "native", reading, "instructions"))
    return own, results.cost("peer", "native", modbus, "instructions")


def peer_table(results):
    if not results.of("peer"):
        return ["(libmodbus was not there.)"]
    rows = []
    for peer in PEERS:
        scenario, reading, modbus, payload = peer
        own, other = peer_ratio(results, peer)
        own_ns = (results.cost("peer", "native", f"driver_{payload}", "processor_ns")
                  - results.cost("peer", "native", f"reading_{payload}", "processor_ns"))
        other_ns = results.cost("peer", "native", modbus, "processor_ns")
        rows.append([f"`{scenario}`", payload, modbus.split("_")[1], f"{own:.0f}", f"{other:.0f}",
                     f"{own / other:.2f}",
                     f'{results.cost("cost", "native", reading, "instructions"):.0f}',
                     f"{own_ns:.0f}", f"{other_ns:.0f}", f"{own_ns / other_ns:.2f}",
                     f'{results.cost("cost", "native", scenario, "allocations"):g}',
                     f'{results.cost("peer", "native", modbus, "allocations"):g}'])
    return table(["exchange", "payload", "peer's", "instructions", "peer's", "ratio",
                  "reading apart", "processor, ns", "peer's", "ratio", "allocations", "peer's"],
                 rows)


def curve(results, word, name):
    return [(float(row["size"]), float(row["us"]))
            for row in results.of("growth", word=word, curve=name)]


def order(points):
    """Slope of the straight line through the logarithms, where the size outweighs what is fixed."""
    logs = [(math.log(x), math.log(y)) for x, y in points if x >= points[-1][0] / 100 and x > 0]
    mean_x = sum(x for x, _ in logs) / len(logs)
    mean_y = sum(y for _, y in logs) / len(logs)
    return (sum((x - mean_x) * (y - mean_y) for x, y in logs)
            / sum((x - mean_x) ** 2 for x, _ in logs))


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


CURVES = (("fill", "fill the buffer with n lines", 10000), ("sum", "sum of n lines", 10000),
          ("delete_first", "delete the first of n lines", 10000),
          ("clear", "clear n lines", 10000), ("total", "grand total, n tape records", 65535),
          ("cash_sum", "cash sum, n tape records", 65535),
          ("trace", "one message to a trace file of n bytes", 1e9))


def growth_words(results):
    return list(dict.fromkeys(row["word"] for row in results.of("growth")))


def growth_table(results):
    rows = []
    for word in growth_words(results):
        for name, text, _ in CURVES:
            points = curve(results, word, name)
            rows.append([WORDS[word], text, f"{points[0][1]:.2f}", f"{points[-1][1]:.2f}",
                         f"{points[-1][0]:.0f}", f"n^{max(order(points), 0):.2f}"])
        memory = curve(results, word, "kb_for_reading")
        rows.append([WORDS[word], "memory for reading a tape, kB", f"{memory[0][1]:.0f}",
                     f"{memory[-1][1]:.0f}", f"{memory[-1][0]:.0f}", "flat"])
    return table(["word", "what", "smallest n, µs", "largest n, µs", "largest n", "order"], rows)


def load_table(results):
    rows = []
    for row in results.of("load"):
        word = "native" if row["word"] == "64" else "i386"
        rows.append([WORDS[word], f'{results.cost("cost", word, "library", "library_bytes"):.0f}',
                     f'{results.cost("cost", word, "library", "library_relocations"):.0f}',
                     f'{float(row["load_p50"]) * 1e3:.0f} / {float(row["load_p99"]) * 1e3:.0f} / '
                     f'{float(row["load_max"]) * 1e3:.0f}',
                     f'{float(row["unload_p50"]) * 1e3:.0f} / {float(row["unload_p99"]) * 1e3:.0f}'
                     f' / {float(row["unload_max"]) * 1e3:.0f}', row["private"], row["dirty"]])
    return table(["word", "stripped, bytes", "relocations", "load p50 / p99 / max, µs",
                  "unload p50 / p99 / max, µs", "private, kB", "of that written, kB"], rows)


def failure_table(results):
    rows = [[WORDS[row["word"]], row["failure"].replace("_", " "), f'{float(row["must"]):.1f}',
             f'{float(row["p50"]):.1f}', f'{float(row["max"]):.1f}', f'{float(row["ratio"]):.4f}']
            for row in results.of("failure")]
    return table(["word", "failure", "limits, ms", "p50, ms", "max, ms", "ratio"], rows)


def machine_table(results):
    row = results.of("machine")[0]
    return [f'{row["processor"].replace("_", " ")}, {row["processors"]} processors, Linux '
            f'{row["kernel"]}, GCC {row["compiler"]}; load average at the start {row["load"]}.']


def goal_table(results):
    exchanges = results.of("exchange")
    rows = []

    def goal(text, limit, measured, met):
        rows.append([text, limit, measured, "yes" if met else "**no**"])

    worst = max(above(row, "p50") for row in exchanges)
    goal("an exchange, p50 above its floor", "0.3 ms", f"{worst:.2f} ms at most", worst <= 0.3)
    worst = max(float(row["p99"]) - float(row["null_p99"]) for row in exchanges)
    goal("an exchange, p99 above that of the null run", "0.5 ms", f"{worst:+.2f} ms at most",
         worst <= 0.5)
    worst = max(float(row["ratio"]) for row in results.of("check"))
    goal("a check, beside what has to be waited for", "1.01", f"{worst:.4f} at most", worst <= 1.01)
    more = sum(int(row["exchanges"]) - required_exchanges(int(row["firmware"]), int(row["lines"]))
               for row in results.of("check"))
    goal("exchanges of a check that nobody requires", "0", str(more), more == 0)
    others = [row for row in results.of("cost") if row["name"].startswith("system_")
              and row["scenario"] != "check_4" and row["name"][7:] not in
              ("clock_nanosleep", "ioctl", "write", "poll", "read")]
    goal("system calls of an exchange beside sleep, flush, write, poll, read", "0",
         str(len(others)), not others)
    worst = max(results.cost("cost", word, scenario, "allocations")
                for word in words_of(results) for scenario, _ in SCENARIOS)
    goal("heap allocations of an exchange", "2", f"{worst:g} at most", worst <= 2)
    if results.of("peer"):
        ratios = [own / other for own, other in (peer_ratio(results, peer) for peer in PEERS)]
        goal("instructions beside the peer's, reading apart", "1",
             ", ".join(f"{ratio:.2f}" for ratio in ratios), max(ratios) < 1)
    worst = max(order(curve(results, word, name)) for word in growth_words(results)
                for name, _, _ in CURVES)
    goal("growth", "n^1", f"n^{worst:.2f} at most", worst <= 1.1)
    loads = results.of("load")
    worst = max(float(row["load_p99"]) for row in loads)
    goal("loading, p99", "1 ms", f"{worst:.2f} ms", worst < 1)
    worst = max(results.cost("cost", word, "library", "library_bytes") for word in words_of(results))
    goal("the library, stripped", "150 KB", f"{worst / 1000:.0f} KB at most", worst <= 150000)
    worst = max(int(row["private"]) for row in loads)
    goal("private memory after loading", "200 KB", f"{worst} KB at most", worst <= 200)
    worst = max(abs(float(row["ratio"]) - 1) for row in results.of("failure"))
    goal("being told of a failure, beside the limits", "1 %", f"{worst * 100:.2f} % at most",
         worst <= 0.01)
    return table(["what", "goal", "measured", "met"], rows)


TABLES = {"goals": goal_table, "machine": machine_table, "exchanges": exchange_table,
          "processor": processor_table, "checks": check_table, "commands": commands_table,
          "costs": cost_table, "check cost": check_cost_table, "peer": peer_table,
          "pure": pure_table, "growth": growth_table, "loading": load_table, "failures": failure_table}


def pictures(results):
    made = {}
    for baud in ("57600", "9600"):
        rows = results.of("exchange", baud=baud, word="64")
        series = [(name, [above(row, key, prefix) for row in rows]) for name, key, prefix in
                  (("driver p50", "p50", ""), ("null run p50", "p50", "null_"),
                   ("driver p99", "p99", ""), ("null run p99", "p99", "null_"))]
        made[f"exchange-{baud}.svg"] = picture.bars(
            f"An exchange at {baud} baud: time above its floor (64-bit)", "ms",
            [row["exchange"] for row in rows], series, 2.0)
    for file, title, x_name, names in (
            ("buffer.svg", "The check buffer", "lines", ("fill", "sum", "delete_first", "clear")),
            ("tape.svg", "Reading the control tape: processor time", "records",
             ("total", "cash_sum")),
            ("trace.svg", "One message to a trace file", "bytes in the file", ("trace",))):
        series = [(f"{name.replace('_', ' ')}, {WORDS[word]}",
                   [(max(x, 1), y) for x, y in curve(results, word, name)])
                  for name in names for word in growth_words(results)
                  if len(names) < 3 or word == "64"]
        made[file] = picture.curves(title, x_name, "µs", series)
    for file, svg in made.items():
        with open(os.path.join(FOLDER, file), "w", encoding="utf-8") as target:
            target.write(svg)


def main():
    results = Results()
    with open(DOCUMENT, encoding="utf-8") as file:
        text = file.read()
    for name, make in TABLES.items():
        block = f"<!-- {name} -->\n" + "\n".join(make(results)) + "\n<!-- end -->"
        text, count = re.subn(rf"<!-- {name} -->\n.*?<!-- end -->", lambda _, b=block: b, text,
                              flags=re.DOTALL)
        if count != 1:
            sys.exit(f"docs/performance.md has {count} places for the table '{name}'")
    with open(DOCUMENT, "w", encoding="utf-8") as file:
        file.write(text)
    pictures(results)


if __name__ == "__main__":
    main()
