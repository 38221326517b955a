#!/usr/bin/env python3
"""Every example in the man pages and the --help of the programs runs and ends well.

    program_examples_test.py SOURCE_DIR BUILD_DIR

/dev/ttyUSB0 and the port 1 are a virtual register that always wants a check. A tarvo-register of an
example is ended after a second, as its user would end it; one that keeps, records or replays something
prints a check before.
"""
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

NO_NAMESPACES = 125  # of kkm run, where the kernel gives none
CHECK = '{"lines": [{"name": "Bread", "price": 25.5}]}'
TILL = "#!/bin/sh\nexec kkm --port 2 status\n"


def roff_text(line):
    return re.sub(r"\\(.)", lambda escape: {"e": "\\", "-": "-"}[escape[1]], line)


def of_man_page(path):
    """The commands of the section EXAMPLES, and the files that `cat` shows in it."""
    section = re.search(r"^\.Sh EXAMPLES\n(.*?)^\.Sh ", path.read_text(encoding="utf-8"), re.S | re.M)
    section = roff_text(section[1])
    commands = re.findall(r"^\.Dl (.*)", section, re.M)
    files = {}
    for block in re.findall(r"^\.Bd -literal.*?\n(.*?)^\.Ed", section, re.S | re.M):
        for command in re.finditer(r"^\$ ((?:.*\\\n)*.*)\n((?:(?!\$).*\n)*)", block, re.M):
            shown = re.fullmatch(r"cat (\S+)", command[1])
            if shown:
                files[shown[1]] = command[2]
            else:
                commands.append(command[1].replace("\\\n", " "))
    # What goes on in the background serves what comes next.
    return re.findall(r"(?:.* &\n)?.+", "\n".join(commands)), files


def of_help(program):
    text = subprocess.run([program, "--help"], capture_output=True, text=True, check=True).stdout
    examples = re.search(r"^Examples:\n((?:  .*\n)+)", text, re.M)
    return [line.strip() for line in examples[1].splitlines()]


class Tester:
    def __init__(self, source, build, folder):
        self.has_companion = (build / "libkkmcheck.so").exists()
        self.register = build / "virtual_register/tarvo-register"
        self.path = f"{folder}:{build}/tools/kkm:{os.environ['PATH']}"
        self.link = f"{folder}/till.tty"
        self.tty = ""
        for name, text in (("till", TILL), ("tarvo-register", f"""#!/bin/sh
[ "$1" != receipt ] || exec {self.register} "$@"
exec timeout --preserve-status "${{LIFE-1}}" {self.register} "$@" </dev/null
""")):
            Path(name).write_text(text, encoding="utf-8")
            Path(name).chmod(0o755)
        Path("check.json").write_text(CHECK, encoding="utf-8")
        for scenario in (source / "virtual_register/scenarios").glob("*"):
            Path(scenario.name).symlink_to(scenario)

    def run(self, command):
        """What is wrong with it, or nothing."""
        if not self.has_companion and re.search(r"--key|--journal", command):
            return ""
        text = command.replace("/tmp/till", self.link).replace("/dev/ttyUSB0", self.tty)
        runs_a_host = " run " in text
        if not runs_a_host:
            text = text.replace("--port 1", f"--device {self.tty}")
        if " --key " in text:
            text += "\nsleep 1"  # the companion's worker leaves the register behind its answer
        if re.match("tarvo-register .*--(record|replay|memory)", text) and "receipt" not in text:
            # What is kept, recorded or replayed needs somebody who prints a check.
            text += "" if re.search("--cashier|--replay", text) else " --cashier auto"
            text += f" --link {self.link} &\nkkm --device {self.link} check check.json"
        if " &\n" in text:
            server, client = text.split(" &\n")
            text = (f"LIFE=60 {server} & while [ ! -e {self.link} ]; do sleep 0.02; done\n"
                    f"{client}\nkill $! || true; wait $!")
        done = subprocess.run(["bash", "-euo", "pipefail", "-c", text], stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, timeout=60,
                              env=dict(os.environ, PATH=self.path), check=False)
        if done.returncode == 0 or (runs_a_host and done.returncode == NO_NAMESPACES):
            return ""
        return f"{command}\n  gave {done.returncode}: {done.stdout.decode()}"


def main(arguments):
    source, build = Path(arguments[0]).resolve(), Path(arguments[1]).resolve()
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        tester = Tester(source, build, folder)
        tested = []
        for program, page in ((build / "tools/kkm/kkm", "kkm.1"),
                              (tester.register, "tarvo-register.1")):
            commands, files = of_man_page(source / "docs/man" / page)
            for name, text in files.items():
                Path(name).write_text(text, encoding="utf-8")
            tested += commands + of_help(program)
        assert len(tested) >= 28, tested
        with subprocess.Popen([tester.register, "--cashier", "auto", "--quiet", "--memory",
                               "shop.mem.used"], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              text=True) as register:
            tester.tty = register.stdout.readline().split()[1]
            try:
                bad = [wrong for wrong in map(tester.run, tested) if wrong]
            finally:
                register.terminate()
    print(*tested, f"{len(tested)} examples, {len(bad)} bad", *bad, sep="\n")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
