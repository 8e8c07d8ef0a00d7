# SPDX-License-Identifier: Apache-2.0
"""Robust covariance and outliers, for tmk.stats."""

from dataclasses import dataclass

import numpy as _np

from . import _core
from ._data import square, table, thread_count, vector

_stats = _core.stats


@dataclass(frozen=True, eq=False)
class RobustEstimate:
    """What `robust_covariance` returns."""

    location: _np.ndarray
    covariance: _np.ndarray  #: consistent at the normal distribution
    correlation: _np.ndarray
    distances: _np.ndarray  #: Mahalanobis distance of each row
    weights: _np.ndarray  #: of each row, from 0 to 1
    rounds: int
    converged: bool
    breakdown: float  #: in force
    rejection: float  #: in force

    def outliers(self, alpha=0.025):
        """The rows whose squared distance is above the chi-square quantile of 1 - alpha."""
        return _stats.beyond(vector(self.distances, "distances"), self.location.size, alpha)


@dataclass(frozen=True, eq=False)
class Outliers:
    """What `outliers` returns."""

    rows: _np.ndarray  #: the outliers, ascending
    distances: _np.ndarray  #: Mahalanobis distance of each row from the regular ones
    cutoff: float  #: distances of outliers are not below this
    rounds: int
    converged: bool

    @property
    def flags(self):
        """True for each row that is an outlier."""
        flags = _np.zeros(self.distances.size, bool)
        flags[self.rows] = True
        return flags


def _choice(value, names, name):
    if value not in names:
        raise ValueError(f"{name} is {value!r}, want one of {', '.join(map(repr, names))}")
    return names.index(value)


def robust_covariance(
    x,
    *,
    method="tbs",
    breakdown=0.5,
    rejection=0.001,
    tolerance=1e-6,
    max_rounds=200,
    reweight=True,
    threads=None,
    progress=None,
):
    """Location and covariance of data some rows of which are wrong, as a `RobustEstimate`.

    `method` "tbs" is an S-estimate with Rocke's translated biweight (1996) from deterministic starts (Hubert, Rousseeuw and
    Verdonck, 2012), "ogk" the orthogonalized Gnanadesikan-Kettenring estimate (Maronna and Zamar, 2002). `breakdown` is the
    share of wrong rows to withstand; with `reweight`, the estimate ends with the mean and covariance of the rows within its
    0.975 quantile. `progress(round, change)` is called after each round and stops by False.
    """
    number = _choice(method, ("tbs", "ogk"), "method")
    found = _stats.robust_covariance(
        table(x), number, breakdown, rejection, tolerance, max_rounds, reweight, thread_count(threads), progress
    )
    return RobustEstimate(**found)


def outliers(x, alpha=0.05, *, start="median", threads=None, progress=None):
    """Outlying rows by BACON (Billor, Hadi and Velleman, 2000), as `Outliers`.

    `alpha` is the probability that clean normal data have one. `start` "median" withstands some 40 % of outliers,
    "mahalanobis" some 20 %, but follows every linear change of the variables.
    """
    number = _choice(start, ("median", "mahalanobis"), "start")
    return Outliers(**_stats.outliers(table(x), alpha, number, thread_count(threads), progress))


def mahalanobis(x, location, covariance, *, threads=None):
    """Mahalanobis distances, not squared, of the rows of x."""
    rows = table(x)
    return _stats.mahalanobis(rows, vector(location, "location"), square(covariance, "covariance"), thread_count(threads))
