"""Makes the tables of docs/performance.md and its pictures from docs/performance/results.txt.

  report.py                  writes document and pictures
  report.py --check          writes nothing, fails when they show anything else
  report.py --print RESULTS  the tables of those parts that another file has results of

In the document a table stands between `<!-- NAME -->` and `<!-- end -->`; the text around it is
written by hand."""
import os
import re
import sys

import picture
from goals import goal_table
from results import FOLDER, ROOT, WORDS, Results, above
from tables import TABLES

DOCUMENT = os.path.join(ROOT, "docs", "performance.md")
ALL_TABLES = {"goals": goal_table, **TABLES}
SHORT_NAMES = {"reset": "reset", "statistics": "statistics", "status_33": "status, 33 bytes",
               "sale": "sale line", "largest": "197 bytes"}


def pictures(results):
    made = {}
    for baud in ("57600", "9600"):
        rows = results.of("exchange", baud=baud, word="64")
        series = [(name, [above(row, key, prefix) for row in rows]) for name, key, prefix in
                  (("driver p50", "p50", ""), ("null run p50", "p50", "null_"),
                   ("driver p99", "p99", ""), ("null run p99", "p99", "null_"))]
        made[f"exchange-{baud}.svg"] = picture.bars(
            f"An exchange at {baud} baud: time above its floor (64-bit)", "ms",
            [SHORT_NAMES[row["exchange"]] for row in rows], series)
    for file, title, x_name, names in (
            ("buffer.svg", "The check buffer: processor time (64-bit)", "lines",
             ("fill", "sum", "delete_first", "clear")),
            ("tape.svg", "Reading the control tape: processor time", "records",
             ("total", "cash_sum")),
            ("trace.svg", "One message to a trace file: processor time", "bytes in the file",
             ("trace",))):
        words = results.words("growth") if len(names) < 3 else ["64"]
        series = [(name.replace("_", " ") + (f", {WORDS[word]}" if len(words) > 1 else ""),
                   results.curve(word, name)) for word in words for name in names]
        made[file] = picture.curves(title, x_name, "µs", series)
    return {os.path.join(FOLDER, file): svg for file, svg in made.items()}


def filled(text, results):
    for name, make in ALL_TABLES.items():
        block = f"<!-- {name} -->\n" + "\n".join(make(results)) + "\n<!-- end -->"
        text, count = re.subn(rf"<!-- {name} -->\n.*?<!-- end -->", lambda _, b=block: b, text,
                              flags=re.DOTALL)
        if count != 1:
            sys.exit(f"docs/performance.md has {count} places for the table '{name}'")
    return text


def print_tables(results):
    for name, make in ALL_TABLES.items():
        lines = make(results)
        if len(lines) > 2 or name == "machine":
            print(f"\n{name}\n" + "\n".join(lines))


def main():
    if "--print" in sys.argv:
        print_tables(Results(sys.argv[2]))
        return
    results = Results()
    with open(DOCUMENT, encoding="utf-8") as file:
        text = file.read()
    made = {DOCUMENT: filled(text, results), **pictures(results)}
    if "--check" not in sys.argv:
        for path, content in made.items():
            with open(path, "w", encoding="utf-8") as file:
                file.write(content)
        return
    for path, content in made.items():
        with open(path, encoding="utf-8") as file:
            if file.read() != content:
                sys.exit(f"{os.path.relpath(path, ROOT)} does not show the results: "
                         "scripts/bench --report")


if __name__ == "__main__":
    main()
