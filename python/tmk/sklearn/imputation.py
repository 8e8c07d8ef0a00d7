# SPDX-License-Identifier: Apache-2.0
"""NaNs filled under a normal model."""

import numpy as _np
from scipy.linalg import solve as _solve
from sklearn.base import BaseEstimator, OneToOneFeatureMixin, TransformerMixin
from sklearn.utils.validation import check_is_fitted, validate_data

from .. import stats as _stats
from ._shared import FLOATS, TakesNaN, warn_unless


class NormalImputer(TakesNaN, OneToOneFeatureMixin, TransformerMixin, BaseEstimator):
    """Fills NaNs by their expected values under a normal model that `tmk.stats.em_estimate` fits.

    A value is expected given those that its row has; a row without values gets the means. A feature that is constant is
    filled by its constant. Filled values vary less than true ones would: for standard errors use `tmk.stats.impute`.

    Parameters
    ----------
    tol : float
        Bound of the distance of means and covariances from their likeliest values, in standard deviations.
    max_iter : int
        The most rounds of EM.
    threads : int or None

    Attributes
    ----------
    location_, covariance_ : ndarray
        The likeliest ones, the covariance with divisor n.
    log_likelihood_ : float
        Of the observed values of the features that vary.
    n_iter_ : int

    Raises
    ------
    ValueError
        For a feature without values, features that depend on one another linearly, not more rows with a value than features.
    """

    def __init__(self, *, tol=1e-8, max_iter=10_000, threads=None):
        self.tol = tol
        self.max_iter = max_iter
        self.threads = threads

    def fit(self, X, y=None):
        """Fit the model to the rows of X; y is ignored."""
        X = validate_data(self, X, dtype=FLOATS, ensure_all_finite="allow-nan", ensure_min_samples=2)
        low, high = _np.fmin.reduce(X), _np.fmax.reduce(X)
        for j in _np.flatnonzero(_np.isnan(low)):
            raise ValueError(f"X has no value of the feature {getattr(self, 'feature_names_in_', range(j + 1))[j]!r}")
        varying = _np.flatnonzero(low < high)
        self.location_, self.covariance_ = low.astype(_np.float64), _np.zeros((low.size, low.size))
        self.log_likelihood_, self.n_iter_ = 0.0, 1
        if varying.size:
            e = _stats.em_estimate(X[:, varying], tolerance=self.tol, rounds=self.max_iter, threads=self.threads)
            warn_unless(e.converged, "EM")
            self.location_[varying] = e.mean
            self.covariance_[_np.ix_(varying, varying)] = e.covariance
            self.log_likelihood_, self.n_iter_ = e.log_likelihood, e.rounds
        return self

    def transform(self, X):
        """X with its NaNs filled, a new array of its type, of shape (n_samples, n_features)."""
        check_is_fitted(self)
        X = validate_data(self, X, dtype=FLOATS, ensure_all_finite="allow-nan", reset=False, copy=True)
        patterns, pattern_of = _np.unique(_np.isnan(X), axis=0, return_inverse=True)
        pattern_of = pattern_of.ravel()
        by_pattern = _np.split(_np.argsort(pattern_of, kind="stable"), _np.cumsum(_np.bincount(pattern_of))[:-1])
        for missing, rows in zip(patterns, by_pattern):
            if missing.any():
                X[_np.ix_(rows, missing)] = self._expected(X[rows], missing)
        return X

    def _expected(self, rows, missing):
        """The missing values of rows that miss the same ones: m_1 + S_12 inv(S_22) (x_2 - m_2), over standardised x."""
        scale = _np.sqrt(_np.diag(self.covariance_))
        given = ~missing & (scale > 0)
        cross = self.covariance_[_np.ix_(given, missing)] / scale[given, None]
        correlation = self.covariance_[_np.ix_(given, given)] / _np.outer(scale[given], scale[given])
        standard = (rows[:, given] - self.location_[given]) / scale[given]
        slopes = _solve(correlation, cross, assume_a="pos") if given.any() else cross
        return self.location_[missing] + standard @ slopes
