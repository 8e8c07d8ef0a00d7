#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""stubs.py python/src/names.def python/tmk writes the stubs of the modules whose names are made when they are imported."""

import re
import sys
from pathlib import Path

HEAD = "# SPDX-License-Identifier: Apache-2.0\n# Made by python/tools/stubs.py.\n"
PACKAGE = """from contextlib import AbstractContextManager
from typing import Any

import numpy as np
import numpy.typing as npt

from . import fast as fast, interpolate as interpolate, low as low, random as random, stats as stats
from .stats import describe as describe, error as error

__version__: str
STATUS_NAMES: dict[int, str]

def tier() -> str: ...
def select_tier(name: str) -> str: ...
def threads(n: int) -> AbstractContextManager[None]: ...
def bad_elements(f: np.ufunc, *args: npt.ArrayLike) -> np.ndarray[Any, Any]: ...

"""


def main(names, package):
    rows = re.findall(r'^TMK_NAME\(\w+, (\w+), "([^"]*)"\)', Path(names).read_text(), re.M)
    ufuncs = "".join(f"{name}: np.ufunc\n" for row in rows for name in [row[0], *row[1].split()])
    Path(package, "__init__.pyi").write_text(HEAD + PACKAGE + ufuncs)
    for level in ("low", "fast"):
        Path(package, f"{level}.pyi").write_text(HEAD + "import numpy as np\n\n" + ufuncs)


if __name__ == "__main__":
    main(*sys.argv[1:])
