#!/usr/bin/env python3
"""Every example of the documents compiles and runs.

    examples_test.py SOURCE_DIR BUILD_DIR CC CXX FLAGS

The word behind the language of a fenced block says what is done with it:

    cpp, c      program   compiled and run against a virtual register, whose tty is its argument
                part      compiled inside a function
    python      program   run with the tty and the library as its arguments
    sh          register  run line by line; /dev/ttyUSB0 and /dev/pts/N are the register
                shown     not run: looked through for faults and for programs that are not there

Without such a word a block of C or C++ is a part, one of sh is shown, and one of Python is a fault.
The @code blocks of the host's header are parts in C, and the example of the library's man page is a
program in C, whose /dev/ttyUSB0 is the register. The commands of the programs' man pages are run by
program_examples_test.py.
"""
import os
import re
import struct
import subprocess
import sys
import tempfile
from pathlib import Path

# The uses of each language; the first stands for a block without a word.
USES = {"cpp": ("part", "program"), "c": ("part", "program"), "python": ("program",),
        "sh": ("shown", "register")}
NO_CODE = ("", "text", "console", "diff", "http", "ini", "json", "systemd", "xml", "yaml")
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]
PART_HEAD = {"c": "#include <VeskTarvoM5/VeskTarvoM5.h>\n#include <kkmcheck/kkmcheck.h>\n"
                  "#include <stdio.h>\n",
             "cpp": "#include <VeskTarvoM5/VeskTarvoM5.h>\n#include <iconv.h>\n\n#include <cstdio>\n"}


class Fault(Exception):
    pass


class Block:
    def __init__(self, name, language, use, text):
        self.name, self.language, self.text = name, language, text
        self.use = use or USES.get(language, ("",))[0]
        if self.use not in USES.get(language, ()):
            raise Fault(f"{name}: nobody knows how to test a block of '{language} {use}'")


def blocks(source):
    for path in [*sorted(source.glob("*.md")), *sorted((source / "docs").glob("*.md"))]:
        text = path.read_text(encoding="utf-8")
        for fence in re.finditer(r"^```(\w*) ?(\w*)\n(.*?)^```", text, re.S | re.M):
            line = text.count("\n", 0, fence.start()) + 1
            if fence[1] not in NO_CODE:
                yield Block(f"{path.relative_to(source)}:{line}", fence[1], fence[2], fence[3])
    header = source / "include/VeskTarvoM5/VeskTarvoM5.h"
    text = header.read_text(encoding="utf-8")
    for code in re.finditer(r"^/// @code\{\.c\}\n(.*?)^/// @endcode", text, re.S | re.M):
        line = text.count("\n", 0, code.start()) + 1
        yield Block(f"{header.name}:{line}", "c", "part", re.sub(r"^/// ?", "", code[1], flags=re.M))
    page = source / "docs/man/VeskTarvoM5.7"
    text = page.read_text(encoding="utf-8")
    for code in re.finditer(r"^\.Sh EXAMPLES\n\.Bd -literal\n(.*?)^\.Ed", text, re.S | re.M):
        line = text.count("\n", 0, code.start()) + 1
        yield Block(f"{page.name}:{line}", "c", "program", code[1].replace("\\e", "\\"))


class Tester:
    def __init__(self, source, build, cc, cxx, flags):
        self.source, self.build, self.flags = source, build, flags.split()
        self.compilers = {"c": [cc, "-std=c11"], "cpp": [cxx, "-std=c++17"]}
        self.driver = build / "libVeskTarvoM5.so.1"
        self.tty = ""

    def run(self, block, command, **more):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              timeout=60, check=False, stdin=subprocess.DEVNULL, **more)
        if done.returncode != 0:
            raise Fault(f"{block.name}: {' '.join(map(str, command))} gave {done.returncode}\n"
                        f"{done.stdout}")

    def compiled(self, block, text, *more):
        file = Path(f"example.{block.language}")
        file.write_text(text, encoding="utf-8")
        self.run(block, [*self.compilers[block.language], *self.flags, *WARNINGS,
                         "-I", self.source / "include", "-I", self.source / "companion/include",
                         file, *more])

    def test(self, block):
        if block.use == "part":
            text = PART_HEAD[block.language] + "void part(void);\nvoid part(void) {\n"
            self.compiled(block, text + block.text + "}\n", "-fsyntax-only")
        elif block.language in self.compilers:
            text = block.text.replace("/dev/ttyUSB0", self.tty)
            self.compiled(block, text, "-o", "example", self.driver, "-ldl",
                          f"-Wl,-rpath,{self.build}")
            self.run(block, ["./example", self.tty],
                     env=dict(os.environ, LD_LIBRARY_PATH=str(self.build)))
        elif block.language == "python":
            if self.driver.read_bytes()[4] * 4 != struct.calcsize("P"):
                return "left out: this Python is of another word size"
            Path("example.py").write_text(block.text, encoding="utf-8")
            self.run(block, [sys.executable, "example.py", self.tty, self.driver])
        elif block.use == "register":
            programs = f"{self.build}/tools/kkm:{os.environ['PATH']}"
            text = re.sub(r"/dev/ttyUSB0|/dev/pts/N", self.tty, block.text)
            self.run(block, ["bash", "-euc", text], env=dict(os.environ, PATH=programs))
        elif block.use == "shown":
            self.look_through(block)
        return ""

    def look_through(self, block):
        self.run(block, ["bash", "-n", "-c", block.text])
        for script in re.findall(r"(?:^|&& )(scripts/\S+)", block.text, re.M):
            if not os.access(self.source / script, os.X_OK):
                raise Fault(f"{block.name}: there is no {script}")
        for program in re.findall(r"(?:^|&& )build/i386/((?:tools|virtual_register)/\S+)",
                                  block.text, re.M):
            if not os.access(self.build / program, os.X_OK):
                raise Fault(f"{block.name}: there is no {program}")


def main(arguments):
    source, build = Path(arguments[0]).resolve(), Path(arguments[1]).resolve()
    tester = Tester(source, build, *arguments[2:])
    tested, bad = list(blocks(source)), 0
    assert len(tested) >= 19, len(tested)
    with tempfile.TemporaryDirectory() as folder, subprocess.Popen(
            [build / "virtual_register/tarvo-register", "--cashier", "auto", "--quiet"],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True, cwd=folder) as register:
        os.chdir(folder)
        # What the blocks name beside the register: the sources' examples, and this build.
        Path("examples").symlink_to(source / "examples")
        Path("build").mkdir()
        Path("build/i386").symlink_to(build)
        tester.tty = register.stdout.readline().split()[1]
        try:
            for block in tested:
                try:
                    remark = tester.test(block)
                    print(f"{block.name}: {block.language} {block.use}"
                          f"{', ' + remark if remark else ''}", flush=True)
                except (Fault, subprocess.TimeoutExpired) as fault:
                    bad += 1
                    print(fault, flush=True)
        finally:
            register.terminate()
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
