# SPDX-License-Identifier: Apache-2.0
"""Missing values under a normal model, for tmk.stats."""

from dataclasses import dataclass

import numpy as _np

from . import _core
from ._data import table, thread_count, vector

_stats = _core.stats


@dataclass(frozen=True, eq=False)
class NormalModel:
    """The likeliest normal model of the observed values."""

    mean: _np.ndarray
    covariance: _np.ndarray  #: with divisor n
    log_likelihood: float
    rounds: int
    converged: bool


@dataclass(frozen=True)
class PooledEstimate:
    """One quantity, from its estimates in several completed data sets, by Rubin's rules (1987)."""

    estimate: float
    se: float
    within: float
    between: float
    df: float
    relative_increase: float
    missing_information: float


class Imputations:
    """What `impute` returns: the data with their holes filled, `count` times."""

    def __init__(self, data, found):
        self._data = data
        self.holes = found["holes"]  #: (row, column) of each hole, by rows
        self.values = found["values"]  #: (imputation, hole)
        self.chain = found["chain"]  #: means and lower triangle of the covariance after each round
        self.start = NormalModel(**found["start"])  #: from which the chains began

    @property
    def count(self):
        return len(self.values)

    def completed(self, k):
        """The data with their holes filled by imputation k."""
        full = _np.array(self._data, dtype=_np.float64)
        full[self.holes[:, 0], self.holes[:, 1]] = self.values[k]
        return full

    def __len__(self):
        return self.count

    def __iter__(self):
        return map(self.completed, range(self.count))

    def pool(self, estimates, variances, complete_df=_np.inf):
        """`pool_estimates` of one number for each imputation, or of a row of numbers: then a list."""
        a, b = _np.asarray(estimates, _np.float64), _np.asarray(variances, _np.float64)
        if a.shape != b.shape or a.ndim not in (1, 2) or len(a) != self.count:
            raise ValueError(f"estimates and variances have the shapes {a.shape} and {b.shape}, want {self.count} rows")
        if a.ndim == 1:
            return pool_estimates(a, b, complete_df)
        return [pool_estimates(*pair, complete_df) for pair in zip(a.T, b.T)]

    def __repr__(self):
        return f"Imputations: {self.count} of {len(self.holes)} holes"


def em_estimate(x, *, tolerance=1e-11, rounds=10_000, threads=None, progress=None):
    """The likeliest normal model of data with holes (NaN), by EM with extrapolation, as a `NormalModel`.

    `progress(imputation, round, change)` is called after each round, with -1 for the imputation, and stops by False.
    """
    return NormalModel(**_stats.em_estimate(table(x), tolerance, rounds, thread_count(threads), progress))


def impute(
    x, count=5, *, rounds=100, seed=0, stream=None, one_chain=False, keep_chain=True, threads=None, progress=None
):
    """Multiple imputation of the NaNs of x under a normal model by data augmentation (Schafer, 1997): `Imputations`.

    Holes are drawn given mean and covariance, and these given the completed data, `rounds` times before each imputation. A
    `stream` of tmk.random takes the place of the seed. Observed values stay as they are; x is not changed.
    """
    data = table(x)
    core = None if stream is None else stream._core
    found = _stats.impute(data, count, rounds, seed, core, one_chain, keep_chain, thread_count(threads), progress)
    return Imputations(_np.array(data), found)


def pool_estimates(estimates, variances, complete_df=_np.inf):
    """Rubin's rules for the estimates of one quantity and their variances, a `PooledEstimate`.

    With the degrees of freedom that complete data would have, those of Barnard and Rubin (1999).
    """
    a, b = vector(estimates, "estimates"), vector(variances, "variances")
    return PooledEstimate(**_stats.pool_estimates(a, b, complete_df))
