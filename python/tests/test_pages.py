# SPDX-License-Identifier: Apache-2.0
"""The programs of the pages run."""

import re
from pathlib import Path

import pytest

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
