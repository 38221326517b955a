"""What docs/performance/results.txt holds, and how tables show it."""
import math
import os
import re

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
FOLDER = os.path.join(ROOT, "docs", "performance")
WORDS = {"64": "64-bit", "32": "32-bit", "native": "64-bit", "i386": "32-bit"}


class Results:
    def __init__(self, path=os.path.join(FOLDER, "results.txt")):
        self.rows = []
        with open(path, encoding="utf-8") as file:
            for line in file:
                kind, *pairs = line.split()
                self.rows.append((kind, dict(pair.split("=", 1) for pair in pairs)))

    def of(self, kind, **wanted):
        return [row for name, row in self.rows if name == kind
                and all(row.get(key) == value for key, value in wanted.items())]

    def words(self, kind):
        return list(dict.fromkeys(row["word"] for row in self.of(kind)))

    def cost(self, kind, word, scenario, name):
        rows = self.of(kind, word=word, scenario=scenario, name=name)
        return float(rows[0]["figure"]) if rows else 0.0

    def checks(self):
        return [row for row in self.of("check") if "planted" not in row]

    def planted(self):
        return [row for row in self.of("check") if "planted" in row]

    def curve(self, word, name, unit="us"):
        return [(float(row["size"]), float(row[unit]))
                for row in self.of("growth", word=word, curve=name)]


def table(head, rows):
    numeric = [all(re.match(r"^[-+]?[\d.,]+( |$|%)", str(row[i])) for row in rows)
               for i in range(len(head))]
    lines = ["| " + " | ".join(head) + " |",
             "|" + "|".join("---:" if is_number else "---" for is_number in numeric) + "|"]
    return lines + ["| " + " | ".join(str(cell) for cell in row) + " |" for row in rows]


def above(row, name, prefix=""):
    return float(row[prefix + name]) - float(row["floor"])


def order(points):
    """Slope of the straight line through the logarithms, where the size outweighs what is fixed."""
    logs = [(math.log(x), math.log(y)) for x, y in points if x >= points[-1][0] / 100 and x > 0]
    mean_x = sum(x for x, _ in logs) / len(logs)
    mean_y = sum(y for _, y in logs) / len(logs)
    return (sum((x - mean_x) * (y - mean_y) for x, y in logs)
            / sum((x - mean_x) ** 2 for x, _ in logs))
