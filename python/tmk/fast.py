# SPDX-License-Identifier: Apache-2.0
"""The ufuncs of `tmk` with about half the bits; the docstrings state the errors that were measured."""

from . import _core

_ufuncs = _core.ufuncs(_core.FAST)
globals().update(_ufuncs)

__all__ = list(_ufuncs)
