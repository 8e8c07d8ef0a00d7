# SPDX-License-Identifier: Apache-2.0
"""Summary statistics of data in memory or in batches, to 15 digits, with weights, at any offset.

Data are rows by variables: arrays of any strides, lists, masked arrays (masked values are NaN), Series and DataFrames,
and tables that have
Arrow's C stream (polars, pyarrow, duckdb; nulls are NaN). One dimension is one variable. float32 and float64 are read where they are; integers and booleans become float64.
Everything is computed in double; results are the same bits for any number of threads and any layout.

What a NaN does is `nan`: "propagate" (estimates that it enters are NaN), "omit" (each variable leaves out its own;
matrices are over the complete rows) or "raise". Weights are finite and not negative; with `counts=True` they are whole
numbers and say how often a row was seen. Bad input raises `tmk.error`, a ValueError with `argument` and `value`.
"""

import threading as _threading
from dataclasses import dataclass, fields

import numpy as _np

from . import _core
from ._impute import Imputations, NormalModel, PooledEstimate, em_estimate, impute, pool_estimates
from ._robust import Outliers, RobustEstimate, mahalanobis, outliers, robust_covariance
from ._data import batches_of, has_batches, names_of, square, table, thread_count, vector, weights_or_none

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

_POLICIES = {"propagate": 0, "omit": 1, "raise": 2}


def _policy(nan):
    if nan not in _POLICIES:
        raise ValueError(f"nan is {nan!r}, want one of {', '.join(map(repr, _POLICIES))}")
    return _POLICIES[nan]


@dataclass(frozen=True, eq=False)
class Summary:
    """What `describe` returns: an array with an element for each variable, where nothing else is said."""

    names: list  #: of the variables
    n: _np.ndarray  #: observations that counted
    nans: _np.ndarray  #: NaNs among them, left out or not
    weight: _np.ndarray  #: the total weight of what counted
    mean: _np.ndarray
    variance: _np.ndarray
    std: _np.ndarray
    skewness: _np.ndarray
    kurtosis: _np.ndarray  #: in excess of the normal distribution's
    min: _np.ndarray
    max: _np.ndarray
    median: _np.ndarray
    mad: _np.ndarray  #: median of |x - median|; times 1.4826 it estimates the deviation of normal data
    orders: _np.ndarray  #: of the quantiles
    quantiles: _np.ndarray  #: (variable, order)
    complete: int  #: rows that the matrices are made of
    cov: _np.ndarray | None
    corr: _np.ndarray | None

    def _rows(self):
        plain = {f.name: getattr(self, f.name) for f in fields(self)}
        rows = {k: plain[k] for k in "n nans mean std skewness kurtosis min".split()}
        rows |= {f"{order:.4g}": self.quantiles[:, k] for k, order in enumerate(self.orders)}
        return rows | {"max": self.max}

    def to_frame(self):
        """A pandas DataFrame with a row for each estimate and a column for each variable."""
        import pandas

        return pandas.DataFrame(self._rows(), index=self.names).T

    def _repr_html_(self):
        head = "".join(f"<th>{_escaped(name)}</th>" for name in self.names)
        body = "".join(
            f"<tr><th>{name}</th>{''.join(f'<td>{value:.6g}</td>' for value in values)}</tr>"
            for name, values in self._rows().items()
        )
        return f"<table><thead><tr><th></th>{head}</tr></thead><tbody>{body}</tbody></table>"

    def __repr__(self):
        lines = [f"{'':10}" + "".join(f"{name[:12]:>13}" for name in self.names)]
        for name, values in self._rows().items():
            lines.append(f"{name:10}" + "".join(f"{value:13.6g}" for value in values))
        return "\n".join(lines)


def _escaped(text):
    import html

    return html.escape(str(text))


def describe(x, *, weights=None, nan="propagate", quantiles=(0.25, 0.5, 0.75), threads=None, matrices=True, counts=False):
    """Moments to order 4, extrema, quantiles, covariance and correlation of each variable of `x`: a `Summary`.

    Quantiles interpolate linearly between ranks (type 7 of Hyndman and Fan, 1996), with weights by A. Akinshin's form
    of that rule (2023). Without `matrices`, cov and corr are None.
    """
    names = names_of(x)
    data, orders = table(x), vector(quantiles, "quantiles")
    found = _stats.describe(data, weights_or_none(weights), thread_count(threads), _policy(nan), orders, matrices, counts)
    return Summary(names=names or [str(j) for j in range(data.shape[1])], orders=orders, **found)


def quantile(x, q, *, weights=None, nan="propagate", threads=None, counts=False):
    """Exact quantiles of the orders `q`, as in `describe`.

    The shape is (variables, orders); a number for `q`, or a vector for `x`, leaves out its dimension.
    """
    data, orders = table(x), vector(_np.atleast_1d(q), "q")
    found = _stats.quantiles(data, orders, weights_or_none(weights), thread_count(threads), _policy(nan), counts)
    found = found if _np.ndim(q) else found[:, 0]
    return found if _np.ndim(x) == 2 else found[0]


def median(x, **options):
    """`quantile` of order 0.5."""
    return quantile(x, 0.5, **options)


def mad(x, *, weights=None, nan="propagate", threads=None, counts=False):
    """The median of |x - median| of each variable; times 1.4826 it estimates the deviation of normal data."""
    return describe(x, weights=weights, nan=nan, quantiles=(), threads=threads, matrices=False, counts=counts).mad


def cov(x, *, weights=None, nan="propagate", threads=None, counts=False):
    """The covariance matrix of the variables, unbiased: over n - 1, or W - W2 / W with weights."""
    return _moments_of(x, weights, nan, threads, counts).cov


def corr(x, *, weights=None, nan="propagate", threads=None, counts=False):
    """The correlation matrix of the variables; its diagonal is exactly 1, or NaN for a constant."""
    return _moments_of(x, weights, nan, threads, counts).corr


def _moments_of(x, weights, nan, threads, counts):
    m = Moments(table(x).shape[1], nan=nan, counts=counts)
    m.add(x, weights, threads)
    return m


class _Mergeable:
    """What `Moments` and `QuantileSketch` share: merging, copies, pickles, and one thread at a time."""

    def merge(self, other):
        """Add what the other has seen, as if it had been added here."""
        if not isinstance(other, type(self)):
            raise TypeError(f"other is a {type(other).__name__}, want a {type(self).__name__}")
        image = other._core if other is not self else self._core.copy()
        with self._lock:
            self._core.merge(image)
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
        return _restore, (type(self), self.to_bytes(), self.names)

    def reset(self):
        """Forget all data."""
        with self._lock:
            self._core.reset()

    @property
    def cols(self):
        return self._core.cols()


def _restore(cls, image, names):
    self = cls.from_bytes(image)
    self.names = names
    return self


def _made(cols, core):
    """The core of that many variables, or of so many as are named, and the names."""
    names = None if isinstance(cols, (int, _np.integer)) else [str(name) for name in cols]
    return core(int(cols) if names is None else len(names)), names


class Moments(_Mergeable):
    """Moments to order 4, extrema and cross-product of data that come in batches.

    `cols` is the number of variables or their names. `m.add(batch)`; `a + b`, `a |= b` join what two have seen, bit for
    bit the same in the same order; a pickle is the image of `to_bytes`. Without `cross`, no matrices are kept.
    """

    _type = _stats.Moments

    def __init__(self, cols, *, nan="propagate", cross=True, counts=False):
        policy = _policy(nan)
        self._core, self.names = _made(cols, lambda n: self._type(n, cross, policy, counts))
        self._lock = _threading.Lock()

    def add(self, x, weights=None, threads=None):
        """Add a batch: rows by variables, which may have no rows. Returns self.

        A table that has Arrow's C stream (polars, pyarrow, duckdb) is read batch by batch, without weights.
        """
        if has_batches(x) and weights is None:
            for batch in batches_of(x)[0]:
                self.add(batch, None, threads)
            return self
        data, w = table(x), weights_or_none(weights)
        with self._lock:
            self._core.add(data, w, thread_count(threads))
        return self

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

    _type = _stats.QuantileSketch

    def __init__(self, cols=1, epsilon=0.001, *, nan="propagate"):
        policy = _policy(nan)
        self._core, self.names = _made(cols, lambda n: self._type(n, epsilon, policy))
        self._lock = _threading.Lock()

    def add(self, x):
        """Add a batch. Returns self. Tables are read as by Moments."""
        if has_batches(x):
            for batch in batches_of(x)[0]:
                self.add(batch)
            return self
        data = table(x)
        with self._lock:
            self._core.add(data)
        return self

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
