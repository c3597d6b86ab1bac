#!/usr/bin/env python3
"""What the documents show is true: their programs compile, their commands run and print what stands below them.

usage: documents.py SOURCE_DIR BIN_DIR DOCUMENT...

BIN_DIR comes first in PATH; how libraries are found is up to the environment. In a document, a fenced block
    ```LANGUAGE FILE     is written to that file,
    ```console           holds commands after "$ " and what each prints (nothing: it only has to succeed; "...": any lines).
Each document has a folder of its own, with a copy of the examples.
"""

import difflib
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path


def blocks(text):
    """Line number, info string and lines of each fenced block."""
    opened = None
    for number, line in enumerate(text.splitlines(), start=1):
        fence = re.match(r"( *)```(.*)", line)
        if opened is None and fence:
            opened = (number, fence[2].split(), len(fence[1]), [])
        elif opened is not None and fence:
            yield opened[0], opened[1], opened[3]
            opened = None
        elif opened is not None:
            opened[3].append(line[opened[2]:] if line[:opened[2]].isspace() else line)


def commands(number, lines):
    """Line number, command and expected lines of each command of a console block."""
    found = []
    for offset, line in enumerate(lines, start=1):
        if line.startswith("$ "):
            found.append((number + offset, line[2:], []))
        elif found and found[-1][1].endswith("\\"):
            found[-1] = (found[-1][0], found[-1][1] + "\n" + line, [])
        elif found:
            found[-1][2].append(line)
    return found


def trimmed(lines):
    return "\n".join(line.rstrip() for line in lines).strip("\n").split("\n")


def agrees(expected, printed):
    pattern = "".join(r"(?:.*\n)*?" if line == "..." else re.escape(line) + r"\n" for line in expected)
    return re.fullmatch(pattern, "".join(line + "\n" for line in printed)) is not None


class Checker:
    def __init__(self, environment):
        self.environment = environment
        self.runs = 0
        self.failures = 0

    def run(self, place, command, expected, folder):
        self.runs += 1
        done = subprocess.run(["bash", "-c", command], cwd=folder, env=self.environment, text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        expected, printed = trimmed(expected), trimmed(done.stdout.splitlines())
        if done.returncode != 0 or (expected != [""] and not agrees(expected, printed)):
            self.failures += 1
            print(f"{place}: $ {command}\n  exit status {done.returncode}")
            print("\n".join("  " + line for line in difflib.unified_diff(expected, printed, "shown", "printed",
                                                                        lineterm="", n=1)))


def check_document(checker, document, folder):
    for number, info, lines in blocks(document.read_text()):
        if len(info) == 2:
            target = folder / info[1]
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_text("\n".join(lines) + "\n")
        elif info == ["console"]:
            for line, command, expected in commands(number, lines):
                checker.run(f"{document.name}:{line}", command, expected, folder)


def main():
    source, bin_dir, *documents = sys.argv[1:]
    environment = dict(os.environ, PATH=f"{bin_dir}:{os.environ['PATH']}", LC_ALL="C.UTF-8")
    checker = Checker(environment)
    for document in documents:
        with tempfile.TemporaryDirectory() as name:
            folder = Path(name)
            shutil.copytree(Path(source) / "examples", folder / "examples")
            check_document(checker, Path(document), folder)
    print(f"{checker.runs} commands run, {checker.failures} failures")
    return 0 if checker.runs > 0 and checker.failures == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
