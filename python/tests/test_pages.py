# SPDX-License-Identifier: Apache-2.0
"""The programs of the pages run."""

import re
import subprocess
import sys
from pathlib import Path

import pytest

import tmk

ROOT = Path(__file__).parents[2]
PROGRAMS = [
    pytest.param(program, id=f"{page}-{k}")
    for page in ("README.md", "docs/python.md")
    for k, program in enumerate(re.findall(r"```python\n(.*?)```", (ROOT / page).read_text(), re.S))
]


@pytest.mark.parametrize("program", PROGRAMS)
def test_program(program):
    exec(compile(program, "page", "exec"), {})


def test_there_are_programs():
    assert len(PROGRAMS) >= 3


def test_stubs_are_made_of_the_names(tmp_path):
    subprocess.run([sys.executable, ROOT / "python/tools/stubs.py", ROOT / "python/src/names.def", tmp_path], check=True)
    for stub in ("__init__", "low", "fast"):
        assert (tmp_path / f"{stub}.pyi").read_text() == (ROOT / f"python/tmk/{stub}.pyi").read_text()
    declared = set(re.findall(r"^(\w+): np.ufunc", (tmp_path / "low.pyi").read_text(), re.M))
    assert declared == set(tmk.low._ufuncs)
