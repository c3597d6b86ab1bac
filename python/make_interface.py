"""Makes the modules of the package that follow from the C header, so that they are always in line with it.

usage: make_interface.py HEADER VERSION FOLDER

FOLDER/quarn/ gets _interface.py, all functions for cffi, and _constants.py, the enumerations for Python and the version.
"""

import re
import sys
from pathlib import Path

from cffi import FFI

ENUMERATIONS = {
    "error": ("ErrorCode", "Why a call of the library failed."),
    "category": ("Category", "What a node is for."),
    "kind": ("Kind", "What values a node takes: states, real numbers, or neither."),
    "subtype": ("Subtype", "How the states of a discrete node are meant."),
    "triangulate": ("Triangulation", "How a network is triangulated."),
    "equilibrium": ("Equilibrium", "Whether results are sums (beliefs) or maxima (most probable configurations)."),
    "mode": ("Mode", "Whether a belief takes the evidence on its own node into account."),
}


def declarations(header: str) -> str:
    """What cffi reads of a header: no comments, no preprocessor lines, no attributes, no linkage."""
    text = re.sub(r"/\*.*?\*/", "", header, flags=re.DOTALL)
    text = re.sub(r"//.*", "", text)
    text = re.sub(r"#\s*ifdef __cplusplus.*?#\s*endif", "", text, flags=re.DOTALL)
    text = re.sub(r"^\s*#.*(?:\\\n.*)*", "", text, flags=re.MULTILINE)
    return re.sub(r"\bQ_API\b", "", text)


def constants(text: str, version: str) -> str:
    """The enumerations of a header as Python classes, and the version."""
    lines = ['"""The enumerations of the C header. Made by make_interface.py."""\n\nfrom enum import IntEnum\n']
    lines.append(f'VERSION = "{version}"')
    for body in re.findall(r"enum\s*{(.*?)}", text, flags=re.DOTALL):
        members = re.findall(r"q_([a-z]+)_(\w+)\s*=\s*(-?\d+)", body)
        if members[0][0] not in ENUMERATIONS:
            continue
        name, meaning = ENUMERATIONS[members[0][0]]
        lines.append(f'\n\nclass {name}(IntEnum):\n    """{meaning}"""\n')
        lines += [f"    {member.upper()} = {number}" for _, member, number in members]
    return "\n".join(lines) + "\n"


def main(header: str, version: str, folder: str) -> None:
    package = Path(folder, "quarn")
    package.mkdir(parents=True, exist_ok=True)
    text = declarations(Path(header).read_text(encoding="utf-8"))
    (package / "_constants.py").write_text(constants(text, version), encoding="utf-8")
    ffi = FFI()
    ffi.cdef(text)
    ffi.set_source("quarn._interface", None)
    ffi.compile(tmpdir=folder)


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
