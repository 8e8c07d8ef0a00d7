# SPDX-License-Identifier: Apache-2.0
"""Moments of data that come in batches, for tmk.stats."""

import threading as _threading

import numpy as _np

from . import _core
from ._data import thread_count
from ._mergeable import Mergeable, made, policy_number

_stats = _core.stats


class Moments(Mergeable):
    """Moments to order 4, extrema and cross-product of data that come in batches.

    `cols` is the number of variables or their names. `m.add(batch)`; `a + b`, `a |= b` join what two have seen, bit for
    bit the same in the same order; a pickle is the image of `to_bytes`. Without `cross`, no matrices are kept. Estimates have
    an element for each variable; those without enough observations are NaN.
    """

    __module__ = "tmk.stats"  # what pickles name
    _type = _stats.Moments

    def __init__(self, cols, *, nan="propagate", cross=True, counts=False):
        policy = policy_number(nan)
        self._core, self.names = made(cols, lambda n: self._type(n, cross, policy, counts))
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

    @property
    def count(self) -> _np.ndarray:
        """Observations that counted: of positive weight and not left out."""
        return self._core.count()

    @property
    def weight(self) -> _np.ndarray:
        """Their total weight."""
        return self._core.weight()

    @property
    def mean(self) -> _np.ndarray:
        """NaN without observations."""
        return self._core.mean()

    @property
    def std(self) -> _np.ndarray:
        """The root of the unbiased variance."""
        return self._core.std()

    @property
    def skewness(self) -> _np.ndarray:
        """m3 / m2 ** 1.5 of the central moments that divide by the weight."""
        return self._core.skewness()

    @property
    def kurtosis(self) -> _np.ndarray:
        """m4 / m2 ** 2 - 3: in excess of the normal distribution's."""
        return self._core.kurtosis()

    @property
    def min(self) -> _np.ndarray:
        """The least value."""
        return self._core.min()

    @property
    def max(self) -> _np.ndarray:
        """The greatest value."""
        return self._core.max()

    @property
    def complete(self) -> int:
        """Rows that the matrices are made of: those that counted for every variable."""
        return self._core.complete()

    @property
    def cov(self) -> _np.ndarray:
        """The unbiased covariance matrix."""
        return self._core.cov()

    @property
    def corr(self) -> _np.ndarray:
        """The correlation matrix; its diagonal is exactly 1, or NaN for a constant."""
        return self._core.corr()

    @property
    def cross_product(self) -> _np.ndarray:
        """The matrix of sums of products about the means."""
        return self._core.cross_product()

    def __repr__(self):
        count = int(self.count.max()) if self.cols else 0
        return f"Moments of {self.cols} variables, {count} rows"
