"""The wheel: built, installed where nothing else is, and used."""

import os
import subprocess
import sys
import zipfile
from pathlib import Path

import pytest
from conftest import EXAMPLES

PROGRAM = """
import sys, quarn
assert quarn.__file__.startswith(sys.prefix)
domain = quarn.Domain.load(sys.argv[1])
domain.evidence["asia"] = "yes"
print(quarn.__version__, round(domain["tuberculosis"].beliefs["yes"], 9))
"""


def test_wheel(tmp_path):
    build = os.environ.get("QUARN_BUILD_DIR")
    if not build or not Path(build, "tools", "quarn").exists():
        pytest.skip("no build to make a wheel of")
    for module in ("setuptools", "wheel", "venv", "ensurepip"):
        pytest.importorskip(module)

    def run(*command, **environment):
        return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, env=environment).stdout

    script = EXAMPLES.parent / "scripts" / "wheel"
    wheel = run(script, tmp_path, BUILD_DIR=build, PATH=os.environ["PATH"], QUARN_PYTHON=sys.executable).strip()
    names = zipfile.ZipFile(wheel).namelist()
    assert "quarn/py.typed" in names and not [name for name in names if "test" in name or name.endswith(".net")]
    run(sys.executable, "-m", "venv", "--system-site-packages", tmp_path / "venv")
    installed = tmp_path / "venv" / "bin"
    run(installed / "python", "-m", "pip", "install", "-q", "--no-index", "--no-deps", wheel)
    clinic = str(EXAMPLES / "chest_clinic.net")
    version, belief = run(installed / "python", "-c", PROGRAM, clinic).split()
    assert version in wheel and belief == "0.05"
    assert version in run(installed / "quarn", "--version")
    assert "tuberculosis" in run(installed / "quarn", "beliefs", clinic)
