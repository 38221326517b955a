#!/usr/bin/env python3
"""Turns a file into what Doxygen understands; the result goes to the standard output.

A guide: headings get the anchors that other viewers make of them, under names that are unique over
all files; links follow; what stands behind the language of a code block goes.
A header of the sources: its plain comments become documentation.
"""
import re
import sys
from pathlib import Path


def anchor(stem, heading):
    plain = re.sub(r"\[(.*?)\]\(.*?\)", r"\1", heading).lower()
    return stem + "_" + re.sub(r"[^\w\- ]", "", plain).replace(" ", "-")


def link(match, stem):
    file, name = match[1], match[2]
    return f"](#{Path(file).stem.lower() if file else stem}_{name})"


def guide(path, text):
    stem = path.stem.lower()
    out, in_code = [], False
    for line in text.split("\n"):
        if line.startswith("```"):
            in_code = not in_code
            line = re.sub(r"^```(\w*).*", r"```\1", line).replace("```text", "```")
            line = re.sub(r"^```(\w+)$", r"```{.\1}", line)
        elif not in_code:
            line = re.sub(r"\]\(([\w./-]+\.md)?#([\w-]+)\)", lambda match: link(match, stem), line)
            heading = re.match(r"(#{2,}) +(.*?) *$", line)
            if heading:
                line += f" {{#{anchor(stem, heading[2])}}}"
        out.append(line)
    return "\n".join(out)


def header(text):
    return re.sub(r"^( *)//( |$)", r"\1///\2", text, flags=re.M)


def main(path):
    text = path.read_text(encoding="utf-8")
    sys.stdout.reconfigure(encoding="utf-8")
    print(guide(path, text) if path.suffix == ".md" else header(text), end="")


if __name__ == "__main__":
    main(Path(sys.argv[1]))
