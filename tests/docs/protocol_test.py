#!/usr/bin/env python3
"""The protocol reference against the sources: frames, codes and addresses that it shows.

    protocol_test.py SOURCE_DIR
"""
import re
import sys
from pathlib import Path


def frames(text):
    """Faults of the frames that are shown as bytes."""
    shown = re.findall(r"^(?:->|<-) (.*)$", text, re.M)
    assert len(shown) > 15, len(shown)
    for line in shown:
        frame = bytes.fromhex(line)
        if frame[0] != 0 or frame[1] != len(frame) - 2:
            yield f"start or length: {line}"
        elif sum(frame[2:-1]) % 256 != frame[-1]:
            yield f"checksum: {line}"


def commands(text, header):
    """The driver's requests and the answers that it expects, in the table of commands."""
    codes = {name: int(code, 16) for name, code in re.findall(r"(\w+) = 0x(\w\w)", header)}
    told = {}
    table = text.split("## Commands")[1].split("\n## ")[0]
    for row in re.findall(r"^\| 0x\w\w \| `.*$", table, re.M):
        cells = row.split("|")
        told[int(cells[1], 16)] = {int(code, 16) for code in re.findall(r"0x(\w\w)", cells[5])}
    used = re.findall(r"constexpr Command \w+\{(\w+), (?:Answer\(0x(\w\w)\)|(\w+))", header)
    assert len(told) >= 34 and len(used) >= 26, (len(told), len(used))
    for request, literal, name in used:
        answer = int(literal, 16) if literal else codes[name]
        if answer not in told.get(codes[request], set()):
            yield f"{request}: the driver expects the answer 0x{answer:02X}"
    states = dict(re.findall(r"^\| 0x(\w\w) \| `(ks_\w+)` \|", text, re.M))
    for name, code in codes.items():
        if name.startswith("ks_") and states.get(f"{code:02X}") != name:
            yield f"{name} is 0x{code:02X}"


def addresses(text, ram_map):
    """What the driver reads from the working memory, in its order and by version."""
    columns = re.findall(r"GetAddr: kkm_ver_(\d+) - \",\s*\{(.*?)\}\}", ram_map, re.S)
    assert len(columns) == 3, len(columns)
    for place, (version, cells) in enumerate(columns):
        for address in re.findall(r"At\((0x\w+)\)", cells):
            if not any(row[place] == address for row in memory_rows(text)):
                yield f"version {version}: {address}"


def memory_rows(text):
    table = text.split("### Working memory")[1].split("### EEPROM")[0]
    for row in re.findall(r"^\| \w.*$", table, re.M):
        yield [cell.strip() for cell in row.split("|")[3:6]]


def main(source):
    text = (source / "docs/protocol.md").read_text(encoding="utf-8")
    header = (source / "src/protocol/commands.h").read_text(encoding="utf-8")
    ram_map = (source / "src/protocol/ram_map.cpp").read_text(encoding="utf-8")
    bad = [*frames(text), *commands(text, header), *addresses(text, ram_map)]
    print("\n".join(bad) or "frames, codes and addresses are right")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1])))
