# SPDX-License-Identifier: Apache-2.0
"""Numerical kernels over NumPy.

The element-wise functions of this module are ufuncs of NumPy: ``out=``, ``where=``, ``dtype=``, casting,
broadcasting and ``numpy.errstate`` work as with NumPy's own, and so do Series, DataFrames, masked and lazy arrays
that know ufuncs. Here they are of high accuracy, below 1 ulp; `tmk.low` has the same functions below 4 ulp,
`tmk.fast` with about half the bits. Each docstring states the errors that were measured.

>>> import numpy as np, tmk
>>> tmk.exp(np.array([0.0, 1.0]))
array([1.        , 2.71828183])
"""

import os as _os
from contextlib import contextmanager as _contextmanager
from importlib import import_module as _import_module

import numpy as _np

from . import _core

__version__ = "0.1.0"

_ufuncs = _core.ufuncs(_core.HIGH)
globals().update(_ufuncs)

from . import fast, low  # noqa: E402

error = _core.stats.error

__all__ = [
    *_ufuncs,
    "bad_elements",
    "describe",
    "error",
    "fast",
    "interpolate",
    "low",
    "random",
    "select_tier",
    "stats",
    "threads",
    "tier",
]

_LATE = {"describe": "stats", "interpolate": "interpolate", "random": "random", "stats": "stats"}


def __getattr__(name):
    """The services, which are imported by their first use: together they take longer than all the rest."""
    if name not in _LATE:
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
    module = _import_module(f"{__name__}.{_LATE[name]}")
    globals()[name] = found = module if name == _LATE[name] else getattr(module, name)
    return found


def __dir__():
    return sorted({*globals(), *__all__})


STATUS_NAMES = {1: "domain", 2: "singularity", 3: "overflow", 4: "underflow"}


def tier():
    """The instruction set in force: "W7" (SSE2), "V3" (AVX2 and FMA) or "V4" (AVX-512)."""
    return _core.tier()


def select_tier(name):
    """Put "W7", "V3", "V4", or by "auto" the widest of this processor, in force for all threads; returns its name.

    On one tier results are the same bits on every machine that has it. Call it before other threads compute. The
    environment's TMK_TIER limits it. Raises ValueError for another name, or a tier that is not to be had; then
    nothing changes.
    """
    return _core.select_tier(name)


@_contextmanager
def _restored(before):
    try:
        yield
    finally:
        _core.set_threads(before)


def threads(n):
    """Take `n` threads for large contiguous arrays in calls of this thread: as a function for good, or in a `with`.

    Results have the same bits. The number is 1 at first, or the environment's TMK_NUM_THREADS.

    >>> with tmk.threads(4):
    ...     tmk.sin(x, out=x)
    """
    n = _checked_threads(n, "n")
    return _restored(_core.set_threads(n))


def _checked_threads(n, name):
    if isinstance(n, bool) or not hasattr(n, "__index__"):
        raise TypeError(f"{name} is {n!r}, want a whole number")
    if not 1 <= n.__index__() <= 1024:
        raise ValueError(f"{name} is {n!r}, want 1 to 1024")
    return n.__index__()


def bad_elements(f, *args):
    """The elements of f(*args) that have no result of their own.

    `f` is a ufunc of this package. Arguments are broadcast and made contiguous. The result is a structured array with
    the fields index (into the raveled arrays), status ("domain", "singularity", "overflow" or "underflow"), an
    argument each (a0, a1), and the first result; it is empty where all is well. No warning is raised.

    >>> tmk.bad_elements(tmk.log, [1.0, -1.0, 0.0])["status"].tolist()
    ['domain', 'singularity']
    """
    if not isinstance(f, _np.ufunc) or f not in _OURS:
        raise TypeError(f"f is {f!r}, want a ufunc of tmk")
    if len(args) != f.nin:
        raise TypeError(f"{f.__name__} takes {f.nin} arguments, got {len(args)}")
    types = f.resolve_dtypes((*(_np.asarray(a).dtype for a in args), *[None] * f.nout))
    arrays = _np.broadcast_arrays(*args)
    flat = [_np.ascontiguousarray(a, dtype=t).ravel() for a, t in zip(arrays, types)]
    if f.nin > 2:  # further arguments are single values
        raise TypeError(f"{f.__name__} has single values among its arguments")
    indices, statuses, result = _core.collect(f, *flat)
    first = result[0] if f.nout > 1 else result
    fields = [("index", _np.intp), ("status", "U11"), *((f"a{k}", a.dtype) for k, a in enumerate(flat))]
    bad = _np.empty(len(indices), dtype=[*fields, ("result", first.dtype)])
    at = _np.asarray(indices, dtype=_np.intp)
    bad["index"] = at
    bad["status"] = [STATUS_NAMES[s] for s in statuses]
    for k, a in enumerate(flat):
        bad[f"a{k}"] = a[at]
    bad["result"] = first[at]
    return bad


_OURS = frozenset((*_ufuncs.values(), *low._ufuncs.values(), *fast._ufuncs.values()))

if "TMK_NUM_THREADS" in _os.environ:
    try:
        _core.set_threads(_checked_threads(int(_os.environ["TMK_NUM_THREADS"]), "TMK_NUM_THREADS"))
    except ValueError as _refusal:
        raise ImportError(f"the environment's TMK_NUM_THREADS: {_refusal}") from None
