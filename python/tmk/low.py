# SPDX-License-Identifier: Apache-2.0
"""The ufuncs of `tmk` below 4 ulp; the docstrings state the errors that were measured."""

from . import _core

_ufuncs = _core.ufuncs(_core.LOW)
globals().update(_ufuncs)

__all__ = list(_ufuncs)
