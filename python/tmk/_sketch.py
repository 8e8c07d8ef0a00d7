# SPDX-License-Identifier: Apache-2.0
"""Quantiles of data that come in batches, for tmk.stats."""

import threading as _threading

import numpy as _np

from . import _core
from ._mergeable import Mergeable, made, policy_number

_stats = _core.stats


class QuantileSketch(Mergeable):
    """Approximate quantiles of data that come in batches and are not kept.

    The rank of an answer is off by at most `epsilon` times the number of values, in whatever order they came and
    sketches were merged (blocks as in Zhang and Wang, 2007).
    """

    __module__ = "tmk.stats"
    _type = _stats.QuantileSketch

    def __init__(self, cols=1, epsilon=0.001, *, nan="propagate"):
        policy = policy_number(nan)
        self._core, self.names = made(cols, lambda n: self._type(n, epsilon, policy))
        self._lock = _threading.Lock()

    def add(self, x):
        """Add rows by variables, or batches of them, as `Moments.add` does. Returns self."""
        return self._add(x, None, lambda core, rows: core.add(rows.data))

    @property
    def epsilon(self) -> float:
        """The bound in force: of merged sketches the larger one."""
        return self._core.epsilon()

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
