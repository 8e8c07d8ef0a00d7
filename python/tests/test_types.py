# SPDX-License-Identifier: Apache-2.0
"""Type checkers see what is there: the stubs agree with the modules, and say what calls give."""

import os
import subprocess
import sys
from pathlib import Path

import pytest

import tmk

pytest.importorskip("mypy")
ROOT = Path(__file__).parents[2]
PACKAGES = str(Path(tmk.__file__).parents[1])

# Expressions, and their types or what is wrong with them.
REVEALED = {
    "tmk.exp": "numpy.ufunc",
    "tmk.fast.pow": "numpy.ufunc",
    "tmk.error('x').argument": "str",
    "tmk.random.Stream().spawn(2)": "list[tmk.random.Stream]",
    "tmk.random.MT19937(1, words=[1])": "tmk.random.MT19937",
    "tmk.stats.describe([1.0])": "Summary",
    "tmk.stats.Moments(3).add([[1, 2, 3]])": "Moments",
    "tmk.stats.Moments(3).var(ddof=0)": "numpy.ndarray",
    "tmk.stats.robust_covariance([[1.0]]).rounds": "int",
    "tmk.interpolate.CubicSpline([0, 1], [0, 1]).extrapolate": "tuple[str, str]",
    "tmk.exponent": 'Module has no attribute "exponent"',
    "tmk.random.Stream().normal(men=1.0)": 'Unexpected keyword argument "men"',
    "tmk.random.Stream().poisson('3')": 'has incompatible type "str"; expected "float"',
    "tmk.stats.Moments(3).means": 'has no attribute "means"',
}


def mypy(module, *arguments, cwd):
    environment = dict(os.environ, PYTHONPATH=PACKAGES)
    if "site-packages" not in PACKAGES:  # which mypy looks through unasked, and refuses as a path
        environment["MYPYPATH"] = PACKAGES
    command = [sys.executable, "-m", module, *map(str, arguments)]
    return subprocess.run(command, cwd=cwd, env=environment, capture_output=True, text=True, timeout=300)


def test_stubs_agree_with_the_modules(tmp_path):
    options = ["--mypy-config-file", ROOT / "pyproject.toml", "--allowlist", ROOT / "python/tests/stubtest.allow"]
    done = mypy("mypy.stubtest", *options, "--ignore-unused-allowlist", "tmk", cwd=tmp_path)
    assert done.returncode == 0, done.stdout + done.stderr


def test_types_of_calls(tmp_path):
    program = tmp_path / "program.py"
    program.write_text("import tmk\n" + "".join(f"reveal_type({expression})\n" for expression in REVEALED))
    done = mypy("mypy", "--config-file", ROOT / "pyproject.toml", program, cwd=tmp_path)
    lines = [line for line in done.stdout.splitlines() if line.startswith("program.py:")]
    for k, (expression, want) in enumerate(REVEALED.items()):
        said = [line for line in lines if line.startswith(f"program.py:{k + 2}:")]
        assert any(want in line for line in said), (expression, said or done.stdout + done.stderr)
