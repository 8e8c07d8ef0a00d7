# SPDX-License-Identifier: Apache-2.0
"""Statistics of dask's collections: one pass over the partitions, and sums that are joined in a tree.

Results have the same bits for any number of workers, since partitions are joined in their order. The module needs dask,
``pip install 'tmk[dask]'``, and is imported by its own name.

>>> import tmk.dask
>>> summary = tmk.dask.describe(frame, nan="omit").compute()
"""

from ._batches import whole
from ._data import vector
from ._summary import RunningSummary

try:
    from dask import delayed as _delayed
except ImportError as _missing:
    raise ImportError("tmk.dask needs dask: pip install 'tmk[dask]'") from _missing

__all__ = ["describe"]

_JOINED_TOGETHER = 8


def describe(frame, *, weights=None, nan="propagate", quantiles=(0.25, 0.5, 0.75), matrices=True, counts=False, epsilon=0.001):
    """`tmk.stats.describe` of a collection that stays in its partitions: a Delayed, whose `compute` gives the `Summary`.

    Parameters
    ----------
    frame : dask.dataframe.DataFrame, Series, or dask.array.Array
        Columns are numbers. An array has one or two dimensions; its chunks are joined to whole rows.
    weights : str, optional
        The name of a column.
    nan, quantiles, matrices, counts, epsilon
        As for batches in `tmk.stats.describe`: quantiles are within epsilon of rank, `mad` is NaN.

    Raises
    ------
    TypeError
        For what has no partitions. What data and options are refused for, `compute` raises.
    """
    if not hasattr(frame, "to_delayed"):
        raise TypeError(f"frame is a {type(frame).__name__}, want a dataframe or array of dask")
    running = RunningSummary(weights is not None, vector(quantiles, "quantiles"), nan, matrices, counts, epsilon)
    if hasattr(frame, "chunks"):
        frame = frame.rechunk({1: -1}) if frame.ndim > 1 else frame
        parts = frame.to_delayed().ravel()
    else:
        parts = frame.to_delayed()
    seen = [_delayed(_seen)(running, part, weights) for part in parts]
    while len(seen) > 1:
        seen = [_delayed(_joined)(seen[k : k + _JOINED_TOGETHER]) for k in range(0, len(seen), _JOINED_TOGETHER)]
    return _delayed(RunningSummary.summary)(seen[0])


def _seen(empty, part, weights):
    return empty.copy().add(whole(part, weights), threads=1)  # workers are threads enough


def _joined(parts):
    first, *others = parts
    for other in others:
        first = first.joined(other)
    return first
