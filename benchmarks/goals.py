"""The goals of docs/performance.md, and whether they are met."""
from results import above, order, table
from tables import (CURVES, LINE_CALLS, MEMORY, PEERS, SCENARIOS, other_calls, peer_ratio,
                    required_calls)


def of_exchanges(results, goal):
    exchanges = results.of("exchange")
    worst = max(above(row, "p50") for row in exchanges)
    goal("an exchange, p50 above its floor", "0.3 ms", f"{worst:.2f} ms in the worst row",
         worst <= 0.3)
    worst = max(float(row["p99"]) - float(row["null_p99"]) for row in exchanges)
    goal("an exchange, p99 above that of the null run", "0.5 ms",
         f"{worst:+.2f} ms in the worst row", worst <= 0.5)


def of_checks(results, goal):
    checks = results.checks()
    p50 = max(float(row["ratio"]) for row in checks)
    worst = max(float(row["worst"]) for row in checks)
    goal("a check, beside what has to be waited for, every single one", "1.01",
         f"p50 {p50:.4f}, max {worst:.4f} in the worst rows", worst <= 1.01)
    least = min((float(row["ratio"]) for row in results.planted()), default=0.0)
    goal("the same with pauses that are too long: noticed", "above 1.01", f"{least:.4f}",
         least > 1.01)
    unasked = sum(int(row["unasked"]) for row in checks)
    missing = sum(int(row["missing"]) for row in checks)
    goal("exchanges of a check that nobody requires", "0", f"{unasked}; {missing} missing",
         unasked + missing == 0)


def of_costs(results, goal):
    words = results.words("cost")
    line = {"system_" + name for name, _ in LINE_CALLS}
    others = [row for row in results.of("cost") if row["name"].startswith("system_")
              and row["scenario"] != "check_4" and row["name"] not in line]
    goal("system calls of an exchange beside sleep, flush, write, poll, read", "0",
         str(len(others)), not others)
    more = sum(results.cost("cost", word, "check_4", "system_" + name) - count
               for word in words for name, count in required_calls().items())
    more += sum(count for word in words for _, count in other_calls(results, word))
    goal("system calls of a check that nobody requires, trace files apart", "0", f"{more:g}",
         more == 0)
    worst = max(results.cost("cost", word, scenario, "allocations")
                for word in words for scenario in SCENARIOS)
    goal("heap allocations of an exchange", "2", f"{worst:g} at most", worst <= 2)
    worst = max(results.cost("cost", word, "library", "library_bytes") for word in words)
    goal("the library, stripped", "150 KB", f"{worst / 1000:.0f} KB, the larger one",
         worst <= 150000)


def of_the_peer(results, goal):
    ratios = [own / other for own, other in (peer_ratio(results, peer) for peer in PEERS)]
    goal("instructions beside the peer's, reading apart", "below 1",
         ", ".join(f"{ratio:.2f}" for ratio in ratios), max(ratios) < 1)


def of_growth(results, goal):
    words = results.words("growth")
    worst = max(order(results.curve(word, name)) for word in words for name, _ in CURVES)
    goal("growth", "n^1", f"n^{worst:.2f} at most", worst <= 1.1)
    curves = [results.curve(word, name, "bytes") for word in words for name, _ in MEMORY]
    more = max(points[-1][1] - points[0][1] for points in curves)
    goal("memory for reading 65,535 records beside that for one", "flat", f"{more:+.0f} bytes",
         more <= 1024)


def of_loading(results, goal):
    rows = results.of("load")
    p50, p99, most = (max(float(row["load_" + key]) for row in rows)
                      for key in ("p50", "p99", "max"))
    goal("loading, p99", "1 ms", f"p50 {p50:.2f} ms, p99 {p99:.2f} ms, max {most:.2f} ms", p99 < 1)
    worst = max(int(row["private"]) for row in rows)
    goal("private memory after loading", "200 KB", f"{worst} KB, the larger one", worst <= 200)


def of_failures(results, goal):
    rows = results.of("failure")
    p50 = max(abs(float(row["ratio"]) - 1) for row in rows)
    worst = max(abs(float(row["worst"]) - 1) for row in rows)
    goal("being told of a failure, beside the limits, every single time", "1 %",
         f"p50 {p50 * 100:.2f} %, max {worst * 100:.2f} % in the worst rows", worst <= 0.01)


GOALS = {"exchange": of_exchanges, "check": of_checks, "cost": of_costs, "peer": of_the_peer,
         "growth": of_growth, "load": of_loading, "failure": of_failures}


def goal_table(results):
    rows = []

    def goal(text, limit, measured, met):
        rows.append([text, limit, measured, "yes" if met else "**no**"])

    for part, judge in GOALS.items():
        if results.of(part):
            judge(results, goal)
    return table(["what", "goal", "measured", "met"], rows)
