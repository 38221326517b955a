#!/usr/bin/env python3
"""Every link of the documents leads somewhere: to a file of the sources, or to a heading.

    links_test.py SOURCE_DIR
"""
import re
import sys
from pathlib import Path

FOLDERS = ("", "docs", "examples", "virtual_register", "companion", "benchmarks")


def without_code(text):
    return re.sub(r"`[^`\n]*`", "", re.sub(r"^```.*?^```", "", text, flags=re.S | re.M))


def anchors(path):
    """The names that a heading is known by, as the usual viewers make them."""
    text = re.sub(r"^```.*?^```", "", path.read_text(encoding="utf-8"), flags=re.S | re.M)
    names = set()
    for heading in re.findall(r"^#+ +(.*?) *$", text, re.M):
        plain = re.sub(r"\[(.*?)\]\(.*?\)", r"\1", heading).lower()
        name = re.sub(r"[^\w\- ]", "", plain).replace(" ", "-")
        again = sum(1 for one in names if re.fullmatch(re.escape(name) + r"(-\d+)?", one))
        names.add(f"{name}-{again}" if again else name)
    return names


def main(source):
    documents = [path for folder in FOLDERS for path in sorted((source / folder).glob("*.md"))]
    bad, links = [], 0
    for document in documents:
        text = without_code(document.read_text(encoding="utf-8"))
        for target in re.findall(r"\]\(([^)\s]+)\)", text):
            links += 1
            if re.match(r"[a-z]+:", target):
                continue
            file, _, anchor = target.partition("#")
            path = (document.parent / file).resolve() if file else document
            name = document.relative_to(source)
            if not path.exists():
                bad.append(f"{name}: no such file: {target}")
            elif anchor and anchor not in anchors(path):
                bad.append(f"{name}: no such heading: {target}")
    assert len(documents) >= 6 and links > 30, (len(documents), links)
    print("\n".join(bad) or f"{links} links in {len(documents)} documents")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1]).resolve()))
