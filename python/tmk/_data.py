# SPDX-License-Identifier: Apache-2.0
"""What the functions of tmk.stats take for data: arrays, lists, masked arrays, series and frames."""

import numpy as _np

from . import _core


def has_batches(x):
    """Whether x is read by Arrow's C stream. pandas has one as well, but needs another package for it."""
    return hasattr(x, "__arrow_c_stream__") and not type(x).__module__.startswith("pandas")


def batches_of(x):
    """The batches of a table that has Arrow's C stream, rows by variables, and the names of the variables."""
    reader = _core.stats.ArrowBatches(x.__arrow_c_stream__())

    def batches():
        while (batch := reader.next()) is not None:
            yield batch.T

    return batches(), reader.names()


def names_of(x):
    """The column names of a frame, or the name of a series."""
    if hasattr(x, "column_names"):
        return [str(name) for name in x.column_names]
    if hasattr(x, "columns") and not callable(x.columns):
        return [str(name) for name in x.columns]
    name = getattr(x, "name", None)
    return [name] if isinstance(name, str) else None


def array(x, name):
    """A float32 or float64 array; integers become float64, and a wider or another type is refused."""
    if isinstance(x, _np.ma.MaskedArray):
        x = (x if x.dtype.kind == "f" else x.astype(_np.float64)).filled(_np.nan)
    elif has_batches(x):
        found = list(batches_of(x)[0])
        x = found[0] if len(found) == 1 else _np.concatenate(found) if found else _np.empty((0, 1))
    elif hasattr(x, "to_numpy"):
        x = _of_frame(x)
    a = _np.asarray(x)
    if a.dtype.kind not in "fiub" or a.dtype.itemsize > 8:
        raise TypeError(f"{name} has elements of type {a.dtype}, want float64, float32 or integers")
    if a.dtype in (_np.float32, _np.float64) and a.dtype.isnative and a.flags.aligned:
        return a
    return a.astype(_np.float32 if a.dtype == _np.float16 else _np.float64)


def _of_frame(x):
    """The numbers of a series or frame. Types with a missing value of their own become float64, that value NaN."""
    a = x.to_numpy()
    if a.dtype != object:
        return a
    try:
        return x.to_numpy(dtype=_np.float64, na_value=_np.nan)
    except (TypeError, ValueError):
        return a


def table(x, name="x"):
    """Rows by variables; one dimension is one variable."""
    a = array(x, name)
    if a.ndim == 1:
        a = a[:, None]
    if a.ndim != 2:
        raise ValueError(f"{name} has {a.ndim} dimensions, want rows by variables")
    return a


def square(m, name):
    return _np.ascontiguousarray(table(m, name), dtype=_np.float64)


def vector(x, name):
    a = _np.ascontiguousarray(array(x, name), dtype=_np.float64)
    if a.ndim != 1:
        raise ValueError(f"{name} has {a.ndim} dimensions, want 1")
    return a


def weights_or_none(weights):
    return None if weights is None else vector(weights, "weights")


def thread_count(threads):
    return _core.threads() if threads is None else threads
