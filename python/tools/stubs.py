#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""stubs.py python/src/names.def python/tmk [OUT] writes the stubs of the modules whose names are made when they are imported."""

import re
import sys
import textwrap
from pathlib import Path

HEAD = "# SPDX-License-Identifier: Apache-2.0\n# Made by python/tools/stubs.py.\n"
PACKAGE = """from contextlib import AbstractContextManager
from typing import Any

import numpy as np
import numpy.typing as npt

from . import fast as fast, interpolate as interpolate, low as low, random as random, stats as stats

__version__: str
STATUS_NAMES: dict[int, str]

class error(ValueError):
    argument: str
    value: str
    status: int

def tier() -> str: ...
def select_tier(name: str) -> str: ...
def threads(n: int) -> AbstractContextManager[None]: ...
def bad_elements(f: np.ufunc, *args: npt.ArrayLike) -> np.ndarray[Any, Any]: ...

"""
DECLARED = "bad_elements error fast interpolate low random select_tier stats threads tier".split()


def others(package):
    """What the package makes public beyond the ufuncs."""
    listed = re.search(r"^__all__ = \[\s*\*_ufuncs,([^\]]*)", Path(package, "__init__.py").read_text(), re.M)[1]
    return re.findall(r'"(\w+)"', listed)


def public(names):
    lines = textwrap.fill(", ".join(f'"{name}"' for name in names), 110, initial_indent="    ", subsequent_indent="    ")
    return f"__all__ = [\n{lines},\n]\n\n"


def main(names, package, out=None):
    out, extra = out or package, others(package)
    rows = re.findall(r'^TMK_NAME\(\w+, (\w+), "([^"]*)"\)', Path(names).read_text(), re.M)
    names = [name for row in rows for name in [row[0], *row[1].split()]]
    ufuncs = "".join(f"{name}: np.ufunc\n" for name in names)
    imports = "".join(f"from .stats import {name} as {name}\n" for name in extra if name not in DECLARED)
    Path(out, "__init__.pyi").write_text(HEAD + PACKAGE + imports + public([*names, *extra]) + ufuncs)
    for level in ("low", "fast"):
        Path(out, f"{level}.pyi").write_text(HEAD + "import numpy as np\n\n" + public(names) + ufuncs)


if __name__ == "__main__":
    main(*sys.argv[1:])
