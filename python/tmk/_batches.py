# SPDX-License-Identifier: Apache-2.0
"""Data that come in one piece or in many: tables, Arrow streams, and iterables of either, with weights by name."""

from itertools import chain
from typing import NamedTuple

import numpy as _np

from . import _core
from ._data import batches_of, has_batches, names_of, table, weights_or_none


class Rows(NamedTuple):
    """Rows that are in memory."""

    data: _np.ndarray  #: rows by variables
    weights: _np.ndarray | None
    names: list | None  #: of the variables
    vector: bool  #: whether what was given had one dimension


def refusal(argument, value, want):
    """The exception that says `argument is value, want ...`."""
    e = _core.stats.error(f"{argument} is {value}, want {want}")
    e.argument, e.value, e.status = argument, str(value), None
    return e


def is_iterable(x):
    """Whether x gives tables one after the other: an iterator, or a list or tuple of tables."""
    if isinstance(x, (list, tuple)):
        return bool(x) and len(getattr(x[0], "shape", ())) == 2
    if hasattr(x, "__next__"):  # some have a stream as well, of which all rows would be wanted at once
        return True
    return hasattr(x, "__iter__") and not hasattr(x, "__getitem__") and not hasattr(x, "__array__") and not has_batches(x)


def in_parts(x, weights):
    """Whether `batches` may give more than one part. A vector of weights is for all rows of an Arrow table at once."""
    return is_iterable(x) or (has_batches(x) and (weights is None or isinstance(weights, str)))


def whole(x, weights=None):
    """All rows of one table."""
    if not has_batches(x):
        return _rows(table(x), weights, names_of(x), _is_vector(x))
    found, names = batches_of(x)
    parts = list(found) or [_np.empty((0, len(names)))]
    return _rows(parts[0] if len(parts) == 1 else _np.concatenate(parts), weights, names, _is_vector(x))


def batches(x, weights=None):
    """The rows of x, part by part. `weights` is a vector for one table, or names a column.

    Raises for parts whose number or names of columns differ, and where there is none.
    """
    if not is_iterable(x):
        yield from _parts(x, weights)
        return
    if weights is not None and not isinstance(weights, str):
        raise refusal("weights", f"a {type(weights).__name__}", "the name of a column where x is batches")
    first = None
    for k, item in enumerate(x):
        for rows in _parts(item, weights):
            first = first or rows
            _check_alike(first, rows, k)
            yield rows
    if first is None:
        raise refusal("x", "an iterable without batches", "one at least")


def _check_alike(first, rows, k):
    if rows.data.shape[1] != first.data.shape[1]:
        raise refusal(f"x[{k}].cols", rows.data.shape[1], f"{first.data.shape[1]}, as in the first batch")
    if rows.names and first.names and rows.names != first.names:
        raise refusal(f"x[{k}].names", rows.names, f"{first.names}, as in the first batch")


def _parts(x, weights):
    if not in_parts(x, weights):
        yield whole(x, weights)
        return
    found, names = batches_of(x)
    empty = _np.empty((0, len(names)))  # a table without rows has columns
    for data in chain([next(found, empty)], found):
        yield _rows(data, weights, names, _is_vector(x))


def _is_vector(x):
    if hasattr(x, "shape"):
        return len(x.shape) < 2
    if has_batches(x):
        return not any(hasattr(x, name) for name in ("columns", "column_names", "schema"))
    return _np.ndim(x) < 2


def _rows(data, weights, names, vector):
    if isinstance(weights, str):
        data, weights, names = _without(weights, data, names)
    if names == [str(j) for j in range(data.shape[1])] or names == [""]:
        names = None  # what frames and Arrow's columns have where nobody named them
    return Rows(data, weights_or_none(weights), names, vector)


def _without(column, data, names):
    """The other columns, that column, and the names of the others."""
    if names is None or column not in names:
        raise refusal("weights", repr(column), f"the name of a column of x, which has {names or 'no names'}")
    j = names.index(column)
    others = [k for k in range(len(names)) if k != j]
    return data[:, others], data[:, j], [names[k] for k in others]
