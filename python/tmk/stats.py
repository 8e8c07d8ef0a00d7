# SPDX-License-Identifier: Apache-2.0
"""Summary statistics of data in memory or in batches, to 15 digits, with weights, at any offset.

Data are rows by variables: arrays of any strides, lists, masked arrays (masked values are NaN), Series and DataFrames,
and tables that have Arrow's C stream (polars, pyarrow, duckdb; nulls are NaN). One dimension is one variable. float32 and
float64 are read where they are; integers and booleans become float64. Everything is computed in double; results are the
same bits for any number of threads and any layout.

`describe`, `quantile`, `median`, `cov`, `corr`, `Moments.add` and `QuantileSketch.add` take batches as well: a generator,
another iterator, or a list of tables that have the same columns, such as `pandas.read_csv(chunksize=...)` or polars'
`collect_batches()`. They are read in one pass, and no more than one is held. `weights` may name a column of a table.

What a NaN does is `nan`: "propagate" (estimates that it enters are NaN), "omit" (each variable leaves out its own;
matrices are over the complete rows) or "raise". Weights are finite and not negative; with `counts=True` they are whole
numbers and say how often a row was seen. Bad input raises `tmk.error`, a ValueError with `argument` and `value`.
"""

from dataclasses import dataclass

import numpy as _np

from . import _core
from ._impute import Imputations, NormalModel, PooledEstimate, em_estimate, impute, pool_estimates
from ._robust import Outliers, RobustEstimate, mahalanobis, outliers, robust_covariance
from ._batches import batches, is_iterable, refusal, whole
from ._data import square, table, thread_count, vector, weights_or_none
from ._mergeable import policy_number as _policy
from ._moments import Moments
from ._sketch import QuantileSketch
from ._summary import RunningSummary, Summary, variable_names

_stats = _core.stats
error = _stats.error

__all__ = [
    "Imputations",
    "Moments",
    "NormalModel",
    "Outliers",
    "PooledEstimate",
    "PooledEstimates",
    "QuantileSketch",
    "RobustEstimate",
    "Summary",
    "corr",
    "cov",
    "describe",
    "em_estimate",
    "impute",
    "mad",
    "mahalanobis",
    "median",
    "nearest_correlation",
    "outliers",
    "partial_correlation",
    "partial_covariance",
    "pool_estimates",
    "pooled_covariance",
    "quantile",
    "robust_covariance",
]


def describe(
    x,
    *,
    weights=None,
    nan="propagate",
    quantiles=(0.25, 0.5, 0.75),
    threads=None,
    matrices=True,
    counts=False,
    epsilon=0.001,
):
    """Moments to order 4, extrema, quantiles, covariance and correlation of each variable of `x`: a `Summary`.

    Quantiles interpolate linearly between ranks (type 7 of Hyndman and Fan, 1996), with weights by A. Akinshin's form
    of that rule (2023). Without `matrices`, cov and corr are None.

    Parameters
    ----------
    x : table or iterable of tables
        Of batches, quantiles and median are those of `QuantileSketch`: their ranks are off by at most `epsilon` times the
        number of values. `mad` is NaN, and with ``quantiles=()``, which is faster, so is the median.
    weights : array_like of shape (rows,) or str, optional
        A string names a column of x, and so it must for batches. The quantiles of batches have no weights:
        ask for ``quantiles=()``.
    nan : {"propagate", "omit", "raise"}
    quantiles : array_like
        Orders from 0 to 1.
    threads : int, optional
    matrices, counts : bool
    epsilon : float
        Used for batches alone.

    Raises
    ------
    tmk.error
        For bad weights and orders, no rows, a NaN under "raise", and batches whose columns differ.
    """
    orders = vector(quantiles, "quantiles")
    if is_iterable(x):
        running = RunningSummary(weights is not None, orders, nan, matrices, counts, epsilon)
        for rows in batches(x, weights):
            running.add(rows, threads)
        return running.summary()
    rows = whole(x, weights)
    found = _stats.describe(rows.data, rows.weights, thread_count(threads), _policy(nan), orders, matrices, counts)
    return Summary(names=variable_names(rows), orders=orders, **found)


def quantile(x, q, *, weights=None, nan="propagate", threads=None, counts=False, epsilon=0.001):
    """Quantiles of the orders `q`: exact, as in `describe`, or of batches within `epsilon` of rank.

    The shape is (variables, orders); a number for `q`, or one dimension of `x`, leaves out its dimension. `weights` are a
    vector or name a column of the table x; batches take none.
    """
    orders = vector(_np.atleast_1d(q), "q")
    if is_iterable(x):
        found, is_vector = _quantiles_of_batches(x, orders, weights, nan, epsilon)
    else:
        rows = whole(x, weights)
        found = _stats.quantiles(rows.data, orders, rows.weights, thread_count(threads), _policy(nan), counts)
        is_vector = rows.vector
    found = found if _np.ndim(q) else found[:, 0]
    return found[0] if is_vector else found


def _quantiles_of_batches(x, orders, weights, nan, epsilon):
    if weights is not None:
        raise refusal("weights", repr(weights), "none for batches, whose weighted quantiles need all rows at once")
    QuantileSketch(1, epsilon).quantile(orders)  # refuses bad ones before data are read
    sketch = None
    for rows in batches(x):
        if sketch is None:
            sketch = QuantileSketch(rows.data.shape[1], epsilon, nan=nan)
        sketch.add(rows.data)
    return _np.array([sketch.quantile(orders, variable=j) for j in range(sketch.cols)]), rows.vector


def median(x, **options):
    """`quantile` of order 0.5."""
    return quantile(x, 0.5, **options)


def mad(x, *, weights=None, nan="propagate", threads=None, counts=False):
    """The median of |x - median| of each variable; times 1.4826 it estimates the deviation of normal data.

    It looks at the data twice: batches are refused.
    """
    if is_iterable(x):
        raise refusal("x", f"a {type(x).__name__}", "all rows at once")
    return describe(x, weights=weights, nan=nan, quantiles=(), threads=threads, matrices=False, counts=counts).mad


def cov(x, *, weights=None, nan="propagate", threads=None, counts=False):
    """The covariance matrix of the variables, unbiased: over n - 1, or W - W2 / W with weights."""
    return _moments_of(x, weights, nan, threads, counts).cov


def corr(x, *, weights=None, nan="propagate", threads=None, counts=False):
    """The correlation matrix of the variables; its diagonal is exactly 1, or NaN for a constant."""
    return _moments_of(x, weights, nan, threads, counts).corr


def _moments_of(x, weights, nan, threads, counts):
    m = None
    for rows in batches(x, weights):
        m = m or Moments(rows.data.shape[1], nan=nan, counts=counts)
        m.add(rows.data, rows.weights, threads)
    return m


@dataclass(frozen=True, eq=False)
class PooledEstimates:
    """What `pooled_covariance` returns."""

    labels: _np.ndarray  #: the distinct ones, sorted; what follows is in their order
    n: _np.ndarray  #: observations of each group that counted
    weight: _np.ndarray
    means: _np.ndarray  #: (group, variable)
    covariances: _np.ndarray  #: (group, variable, variable)
    mean: _np.ndarray  #: of all observations
    covariance: _np.ndarray  #: within groups


def pooled_covariance(x, groups, *, weights=None, nan="propagate", threads=None, counts=False):
    """Means and covariances of groups of rows, and the covariance within groups, as `PooledEstimates`.

    `groups` has a label for each row, of any type that sorts. nan="omit" leaves out the rows with a NaN.
    """
    labels, numbers = _np.unique(_np.asarray(groups), return_inverse=True)
    data = table(x)
    found = _stats.pooled_covariance(
        data, numbers.ravel().astype(_np.int64), weights_or_none(weights), thread_count(threads), _policy(nan), counts
    )
    return PooledEstimates(**(found | {"labels": labels}))


def partial_covariance(cov, given):
    """The covariance of the other variables, in their order, given those whose numbers are listed."""
    return _stats.partial(square(cov, "cov"), [int(j) for j in given], False)


def partial_correlation(cov, given):
    """The same as correlations; `cov` may be a correlation matrix as well."""
    return _stats.partial(square(cov, "cov"), [int(j) for j in given], True)


def nearest_correlation(m):
    """The correlation matrix nearest to m in the sum of squared differences (Qi and Sun, 2006)."""
    return _stats.nearest_correlation(square(m, "m"))
