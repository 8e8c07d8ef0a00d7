# SPDX-License-Identifier: Apache-2.0
"""Standardised features."""

import numpy as _np
from sklearn.base import BaseEstimator, OneToOneFeatureMixin, TransformerMixin
from sklearn.utils.validation import check_array, check_is_fitted, validate_data

from .. import stats as _stats
from ._shared import FLOATS, TakesNaN


class Scaler(TakesNaN, OneToOneFeatureMixin, TransformerMixin, BaseEstimator):
    """Features less their means, divided by their standard deviations, which may be learnt from batches.

    As scikit-learn's `StandardScaler`: the divisor of the variance is n, NaNs are left out and stay, constant features are
    divided by 1. The sums are `tmk.stats.Moments`, in double also of single-precision data; scalers that have seen different
    batches are joined by `merge`.

    Parameters
    ----------
    with_mean, with_std : bool
        Whether means are taken off, and whether features are divided.
    threads : int or None

    Attributes
    ----------
    mean_, var_, scale_ : ndarray of shape (n_features,), or None where they are not used
    n_samples_seen_ : ndarray or number
        Values without NaN of each feature, or their weights; one number if all are equal.
    moments_ : tmk.stats.Moments
    """

    def __init__(self, *, with_mean=True, with_std=True, threads=None):
        self.with_mean = with_mean
        self.with_std = with_std
        self.threads = threads

    def fit(self, X, y=None, sample_weight=None):
        """Learn from X alone; y is ignored. Weights are not negative, of shape (n_samples,)."""
        if hasattr(self, "moments_"):
            del self.moments_
        return self.partial_fit(X, y, sample_weight)

    def partial_fit(self, X, y=None, sample_weight=None):
        """Learn from X as well as from what was seen before."""
        first = not hasattr(self, "moments_")
        X = validate_data(self, X, dtype=FLOATS, ensure_all_finite="allow-nan", reset=first)
        moments = _stats.Moments(X.shape[1], nan="omit", cross=False) if first else self.moments_
        if sample_weight is not None:
            sample_weight = check_array(sample_weight, ensure_2d=False, dtype=_np.float64, input_name="sample_weight")
            if sample_weight.ndim == 1 and not sample_weight.any():
                raise ValueError("sample_weight has no weight above zero")
        moments.add(X, sample_weight, self.threads)
        return self._learnt(moments)

    def merge(self, other):
        """Learn what another fitted scaler has learnt, as if its data had come here. Returns self."""
        check_is_fitted(self)
        check_is_fitted(other)
        if list(getattr(self, "feature_names_in_", ())) != list(getattr(other, "feature_names_in_", ())):
            raise ValueError("other has learnt from features of other names")
        return self._learnt(self.moments_.merge(other.moments_))

    def _learnt(self, moments):
        self.moments_ = moments
        self.mean_ = moments.mean if self.with_mean or self.with_std else None
        self.var_ = moments.central(2) if self.with_std else None
        self.scale_ = self._scale(moments, self.var_) if self.with_std else None
        seen = moments.weight if _np.any(moments.weight != moments.count) else moments.count
        self.n_samples_seen_ = seen[0] if _np.all(seen == seen[0]) else seen
        return self

    @staticmethod
    def _scale(moments, variance):
        # The extrema tell a constant from a feature of small spread, whatever roundoff left in the variance.
        constant = (moments.min == moments.max) | (variance == 0)
        return _np.where(constant, 1.0, _np.sqrt(variance))

    def transform(self, X):
        """The scaled features, a new array of the type of X."""
        check_is_fitted(self)
        X = validate_data(self, X, dtype=FLOATS, ensure_all_finite="allow-nan", reset=False, copy=True)
        if self.with_mean:
            X -= self.mean_  # in double, also where X is single: a mean far from 0 would lose its digits
        if self.with_std:
            X /= self.scale_
        return X

    def inverse_transform(self, X):
        """Features in their own units, from scaled ones."""
        check_is_fitted(self)
        X = check_array(X, dtype=FLOATS, ensure_all_finite="allow-nan", copy=True)
        if X.shape[1] != self.n_features_in_:
            raise ValueError(f"X has {X.shape[1]} features, but {type(self).__name__} expects {self.n_features_in_}")
        if self.with_std:
            X *= self.scale_
        if self.with_mean:
            X += self.mean_
        return X
