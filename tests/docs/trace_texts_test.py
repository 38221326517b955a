#!/usr/bin/env python3
"""Every text that the driver traces stands in the service guide, and the guide has no others.

    trace_texts_test.py SOURCE_DIR
"""
import re
import sys
from pathlib import Path

CALL = re.compile(r"\b(?:Trace|traceMsg)\(")
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')


def arguments(source, at):
    """The text between the parenthesis that opens before `at` and the one that closes it."""
    depth, quoted, begin = 1, False, at
    while depth:
        letter = source[at]
        if letter == "\\" and quoted:
            at += 1
        elif letter == '"':
            quoted = not quoted
        elif not quoted:
            depth += {"(": 1, ")": -1}.get(letter, 0)
        at += 1
    return source[begin:at - 1]


def pieces(call):
    """Its arguments: texts as they are traced, None for what is put in at run time."""
    call = re.sub(r"^\s*trace::Line\((.*)\)\s*$", r"\1", call, flags=re.S)
    found, rest = [], call.strip()
    while rest:
        literal = LITERAL.match(rest)
        if literal:
            found.append(literal[1].replace("\\n", "\n").replace('\\"', '"'))
            rest = rest[literal.end():]
        else:
            found.append(None)
            depth = at = 0
            while at < len(rest) and (rest[at] != "," or depth):
                depth += {"(": 1, "<": 1, ")": -1, ">": -1}.get(rest[at], 0)
                at += 1
            rest = rest[at:]
        rest = rest.lstrip(" ,\n")
    return found


def traced(folder):
    """A pattern for each line that the sources can trace, with the file it comes from."""
    for path in sorted(folder.rglob("*.cpp")):
        source = path.read_text(encoding="utf-8")
        for call in CALL.finditer(source):
            found = pieces(arguments(source, call.end()))
            if not any(found):
                continue  # passes on a text, or is the function itself
            pattern = "".join(".*" if text is None else re.escape(text) for text in found)
            for line in re.split(r"\\?\n", pattern):
                if line.strip(" .*\\"):
                    yield path.relative_to(folder), line


def main(source):
    lines = list(traced(source / "src"))
    guide = (source / "docs/service-guide.md").read_text(encoding="utf-8")
    rows = re.findall(r"^\| (`.*?`)(?: \*\*\+\*\*)? \|", guide.split("## Trace lines")[1], re.M)
    told = [text for row in rows for text in re.findall(r"`(.*?)`", row)]
    told += re.findall(r"^\d+:\d+:\d+ \d+:\d+:\d+ (.*)$", guide, re.M)
    assert len(lines) > 60 and len(told) > 60, (len(lines), len(told))

    bad = [f"{path}: the service guide does not tell of a line like {line}"
           for path, line in lines if not any(re.fullmatch(line, text) for text in told)]
    bad += [f"the service guide tells of a line that nothing traces: {text}"
            for text in told if not any(re.fullmatch(line, text) for _, line in lines)]
    blanks = re.findall(r'"( +)"', (source / "src/protocol/error_table.cpp").read_text())
    shown = re.findall(r"^\d+:.* Code=(\d), Msg=( *), ", guide, re.M)
    assert len(blanks) == 8 and shown, (len(blanks), shown)
    bad += [f"the message of code {code} is not {message!r}"
            for code, message in shown if message != blanks[int(code)]]
    print("\n".join(bad) or f"{len(lines)} traced lines, {len(told)} in the service guide")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1])))
