# SPDX-License-Identifier: Apache-2.0
"""Moments and quantiles of data that come in batches, for tmk.stats."""

import threading as _threading

import numpy as _np

from . import _core
from ._batches import batches, in_parts, refusal
from ._data import thread_count

_stats = _core.stats
_POLICIES = {"propagate": 0, "omit": 1, "raise": 2}


def policy_number(nan):
    if nan not in _POLICIES:
        raise ValueError(f"nan is {nan!r}, want one of {', '.join(map(repr, _POLICIES))}")
    return _POLICIES[nan]


class _Mergeable:
    """What `Moments` and `QuantileSketch` share: batches, merging, copies, pickles, and one thread at a time."""

    def merge(self, other):
        """Add what the other has seen, as if it had been added here. Of two that have names these are the same."""
        if not isinstance(other, type(self)):
            raise TypeError(f"other is a {type(other).__name__}, want a {type(self).__name__}")
        self._join(other._core if other is not self else self._core.copy(), "other.names", other.names)
        return self

    def _join(self, core, argument, names):
        if self.names and names and list(names) != self.names:
            raise refusal(argument, list(names), f"{self.names}")
        with self._lock:
            self._core.merge(core)
        self.names = self.names or names

    def _add(self, x, weights, add):
        """Add x by add(core, rows). Of several parts, all are added or none: the last one may be bad."""
        parts = batches(x, weights)
        if not in_parts(x, weights):
            (rows,) = parts
            if self.names and rows.names and rows.names != self.names:
                raise refusal("x.names", rows.names, f"{self.names}")
            with self._lock:
                add(self._core, rows)
            self.names = self.names or rows.names
            return self
        together, names = self._core.copy(), None
        together.reset()
        for rows in parts:
            add(together, rows)
            names = names or rows.names
        self._join(together, "x.names", names)
        return self

    def __ior__(self, other):
        return self.merge(other)

    __iadd__ = __ior__

    def __add__(self, other):
        return self.copy().merge(other)

    __or__ = __add__

    def copy(self):
        return self._of(self._core.copy(), self.names)

    __copy__ = copy

    def __deepcopy__(self, memo):
        return self.copy()

    @classmethod
    def _of(cls, core, names=None):
        self = cls.__new__(cls)
        self._core, self._lock, self.names = core, _threading.Lock(), names
        return self

    def to_bytes(self):
        """An image that is the same on every machine, and that the C++ API reads."""
        return self._core.to_bytes()

    @classmethod
    def from_bytes(cls, image):
        """Raises `tmk.error` for one that is truncated, damaged, of another version or impossible."""
        return cls._of(cls._type.from_bytes(bytes(image)))

    def __reduce__(self):
        return type(self)._restored, (self.to_bytes(), self.names)

    @classmethod
    def _restored(cls, image, names):
        self = cls.from_bytes(image)
        self.names = names
        return self

    def reset(self):
        """Forget all data."""
        with self._lock:
            self._core.reset()

    @property
    def cols(self):
        return self._core.cols()


def _made(cols, core):
    """The core of that many variables, or of so many as are named, and the names."""
    names = None if isinstance(cols, (int, _np.integer)) else [str(name) for name in cols]
    return core(int(cols) if names is None else len(names)), names


class Moments(_Mergeable):
    """Moments to order 4, extrema and cross-product of data that come in batches.

    `cols` is the number of variables or their names. `m.add(batch)`; `a + b`, `a |= b` join what two have seen, bit for
    bit the same in the same order; a pickle is the image of `to_bytes`. Without `cross`, no matrices are kept.
    """

    __module__ = "tmk.stats"  # what pickles name
    _type = _stats.Moments

    def __init__(self, cols, *, nan="propagate", cross=True, counts=False):
        policy = policy_number(nan)
        self._core, self.names = _made(cols, lambda n: self._type(n, cross, policy, counts))
        self._lock = _threading.Lock()

    def add(self, x, weights=None, threads=None):
        """Add rows by variables, which may be none, or batches of them. Returns self.

        Tables that have Arrow's C stream, and iterables of tables, are read batch by batch, and added whole or, where one of
        them is refused, not at all. `weights` are a vector, not of an iterable, or name a column of x. Without names of its
        own, the object takes those of the first table that has some; tables of other names are refused.
        """
        count = thread_count(threads)
        return self._add(x, weights, lambda core, rows: core.add(rows.data, rows.weights, count))

    def var(self, ddof=None):
        """The unbiased variance; with `ddof`, over weight - ddof instead."""
        if ddof is None:
            return self._core.variance()
        weight = self._core.weight()
        return self._core.central(2) * weight / (weight - ddof)

    def raw(self, order):
        """The weighted mean of x ** order, for orders 1 to 4."""
        return self._core.raw(order)

    def central(self, order):
        """The weighted mean of (x - mean) ** order, for orders 1 to 4."""
        return self._core.central(order)

    count = property(lambda self: self._core.count(), doc="Observations that counted.")
    complete = property(lambda self: self._core.complete(), doc="Rows that the matrices are made of.")
    weight = property(lambda self: self._core.weight(), doc="Their total weight.")
    mean = property(lambda self: self._core.mean())
    std = property(lambda self: self._core.std(), doc="The root of the unbiased variance.")
    skewness = property(lambda self: self._core.skewness())
    kurtosis = property(lambda self: self._core.kurtosis(), doc="In excess of the normal distribution's.")
    min = property(lambda self: self._core.min())
    max = property(lambda self: self._core.max())
    cov = property(lambda self: self._core.cov())
    corr = property(lambda self: self._core.corr())
    cross_product = property(lambda self: self._core.cross_product(), doc="Sums of products about the means.")

    def __repr__(self):
        count = int(self.count.max()) if self.cols else 0
        return f"Moments of {self.cols} variables, {count} rows"


class QuantileSketch(_Mergeable):
    """Approximate quantiles of data that come in batches and are not kept.

    The rank of an answer is off by at most `epsilon` times the number of values, in whatever order they came and
    sketches were merged (blocks as in Zhang and Wang, 2007).
    """

    __module__ = "tmk.stats"
    _type = _stats.QuantileSketch

    def __init__(self, cols=1, epsilon=0.001, *, nan="propagate"):
        policy = policy_number(nan)
        self._core, self.names = _made(cols, lambda n: self._type(n, epsilon, policy))
        self._lock = _threading.Lock()

    def add(self, x):
        """Add rows by variables, or batches of them, as `Moments.add` does. Returns self."""
        return self._add(x, None, lambda core, rows: core.add(rows.data))

    epsilon = property(lambda self: self._core.epsilon())

    def count(self, variable=0):
        """Values of the variable so far, without NaNs."""
        return self._core.count(variable)

    def quantile(self, q, variable=0):
        """The quantile of order q, or an array of them."""
        found = [self._core.quantile(variable, float(order)) for order in _np.atleast_1d(q)]
        return _np.array(found) if _np.ndim(q) else found[0]

    def bounds(self, q, variable=0):
        """(value, lowest rank, highest rank, count) of the answer for order q."""
        return self._core.bounds(variable, q)

    def rank(self, value, variable=0):
        """(value, lowest rank, highest rank, count): how many values are not above this one."""
        return self._core.rank(variable, value)

    def __repr__(self):
        return f"QuantileSketch of {self.cols} variables, epsilon {self.epsilon:g}"
