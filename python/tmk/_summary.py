# SPDX-License-Identifier: Apache-2.0
"""What tmk.stats.describe returns, and how it comes by it from batches."""

import copy as _copy
from dataclasses import dataclass, fields

import numpy as _np

from ._batches import refusal
from ._moments import Moments
from ._sketch import QuantileSketch


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
    epsilon: float = 0.0  #: 0 where quantiles are exact; of batches, their ranks are off by at most this share of n

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
        import html

        head = "".join(f"<th>{html.escape(str(name))}</th>" for name in self.names)
        body = "".join(
            f"<tr><th>{name}</th>{''.join(f'<td>{value:.6g}</td>' for value in values)}</tr>"
            for name, values in self._rows().items()
        )
        return f"<table><thead><tr><th></th>{head}</tr></thead><tbody>{body}</tbody></table>{self._note()}"

    def __repr__(self):
        lines = [f"{'':10}" + "".join(f"{name[:12]:>13}" for name in self.names)]
        for name, values in self._rows().items():
            lines.append(f"{name:10}" + "".join(f"{value:13.6g}" for value in values))
        return "\n".join([*lines, *filter(None, [self._note()])])

    def _note(self):
        return f"quantiles within {self.epsilon:g} of rank" if self.epsilon and self.orders.size else ""


def variable_names(rows):
    return rows.names or [str(j) for j in range(rows.data.shape[1])]


class RunningSummary:
    """A summary of rows that come part by part, or from several places: what two have seen is joined in their order."""

    def __init__(self, weighted, orders, nan, matrices, counts, epsilon):
        if weighted and orders.size:
            raise refusal("quantiles", orders.tolist(), "none of weighted batches: their quantiles need all rows at once")
        QuantileSketch(1, epsilon).quantile(orders)  # refuses bad ones before data are read
        self._orders, self._nan, self._matrices, self._counts, self._epsilon = orders, nan, matrices, counts, epsilon
        self._moments = None

    def copy(self):
        """One that sees other rows from here on."""
        return _copy.deepcopy(self)

    def add(self, rows, threads=None):
        if self._moments is None:
            names = variable_names(rows)
            self._moments = Moments(names, nan=self._nan, cross=self._matrices, counts=self._counts)
            self._sketch = QuantileSketch(names, self._epsilon, nan=self._nan)
            self._nans = _np.zeros(len(names), _np.int64)
        self._moments.add(rows.data, rows.weights, threads)
        if self._orders.size:
            self._sketch.add(rows.data)
        counted = rows.data if rows.weights is None else rows.data[rows.weights > 0]
        self._nans += _np.isnan(counted).sum(axis=0)
        return self

    def joined(self, other):
        """A third one, of what both have seen. Both have seen rows, or a part without any."""
        both = self.copy()
        both._moments = self._moments + other._moments
        both._sketch = self._sketch + other._sketch
        both._nans = self._nans + other._nans
        return both

    def summary(self):
        m = self._moments
        if m is None or not (m.count.any() or self._nans.any()):
            raise refusal("x.rows", 0, "1 or more")
        by_order = _np.array([self._sketch.quantile([*self._orders, 0.5], variable=j) for j in range(m.cols)])
        return Summary(
            names=m.names,
            n=m.count,
            nans=self._nans,
            weight=m.weight,
            mean=m.mean,
            variance=m.var(),
            std=m.std,
            skewness=m.skewness,
            kurtosis=m.kurtosis,
            min=m.min,
            max=m.max,
            median=by_order[:, -1],
            mad=_np.full(m.cols, _np.nan),
            orders=self._orders,
            quantiles=by_order[:, :-1],
            complete=m.complete if self._matrices else 0,
            cov=m.cov if self._matrices else None,
            corr=m.corr if self._matrices else None,
            epsilon=self._epsilon,
        )
