# SPDX-License-Identifier: Apache-2.0
"""Robust covariance and outliers, as scikit-learn's covariance estimators have them."""

from numbers import Real as _Real

import numpy as _np
from sklearn.base import OutlierMixin
from sklearn.covariance import EmpiricalCovariance
from sklearn.metrics import accuracy_score
from sklearn.utils.validation import check_is_fitted, validate_data

from .. import stats as _stats
from ._shared import FLOATS, warn_unless


class RobustCovariance(EmpiricalCovariance):
    """Location and covariance of data some rows of which are wrong, by `tmk.stats.robust_covariance`.

    Where scikit-learn's `MinCovDet` draws random subsets, this one begins at fixed starts: there is no `random_state`.

    Parameters
    ----------
    method : {"tbs", "ogk"}
        S-estimate with Rocke's translated biweight, or the orthogonalized Gnanadesikan-Kettenring estimate.
    breakdown : float in (0, 0.5]
        The share of wrong rows to withstand.
    rejection : float in (0, 1)
        The share of the rows of normal data that get the weight 0.
    reweight : bool
        Ends with mean and covariance of the rows within the 0.975 quantile of the estimate.
    tol, max_iter : float, int
        Bound of the change of weights at which rounds end, and the most rounds.
    store_precision : bool
        Whether `precision_` is kept.
    threads : int or None

    Attributes
    ----------
    location_, covariance_, precision_ : ndarray
        Of the shapes (n_features,), (n_features, n_features), the same. Consistent at the normal distribution.
    dist_ : ndarray of shape (n_samples,)
        Squared Mahalanobis distances of the training rows, as in scikit-learn.
    support_ : ndarray of bool
        The training rows of positive weight.
    weights_ : ndarray
        Their weights, from 0 to 1.
    n_iter_ : int

    Raises
    ------
    ValueError
        For fewer than 2 n_features + 1 rows, a feature of which half the values are equal, and data of which more than half
        lies on a hyperplane.
    """

    def __init__(
        self,
        *,
        method="tbs",
        breakdown=0.5,
        rejection=0.001,
        reweight=True,
        tol=1e-6,
        max_iter=200,
        store_precision=True,
        threads=None,
    ):
        self.method = method
        self.breakdown = breakdown
        self.rejection = rejection
        self.reweight = reweight
        self.tol = tol
        self.max_iter = max_iter
        self.store_precision = store_precision
        self.threads = threads

    def fit(self, X, y=None):
        """Estimate from the rows of X; y is ignored."""
        X = validate_data(self, X, dtype=FLOATS, ensure_min_samples=2)
        e = _stats.robust_covariance(
            X,
            method=self.method,
            breakdown=self.breakdown,
            rejection=self.rejection,
            tolerance=self.tol,
            max_rounds=self.max_iter,
            reweight=self.reweight,
            threads=self.threads,
        )
        warn_unless(e.converged, "the robust covariance")
        self.location_, self.covariance_ = e.location, e.covariance
        self.precision_ = self._inverse(e) if self.store_precision else None
        self.dist_, self.weights_, self.support_ = e.distances**2, e.weights, e.weights > 0
        self.n_iter_ = e.rounds
        return self

    @staticmethod
    def _inverse(e):
        # By way of the correlations, lest features in small units be taken for roundoff.
        scale = _np.sqrt(_np.diag(e.covariance))
        return _np.linalg.inv(e.correlation) / _np.outer(scale, scale)

    def mahalanobis(self, X):
        """Squared Mahalanobis distances of the rows of X, of shape (n_samples,)."""
        check_is_fitted(self)
        X = validate_data(self, X, dtype=FLOATS, reset=False)
        return _stats.mahalanobis(X, self.location_, self.covariance_, threads=self.threads) ** 2


class EllipticEnvelope(OutlierMixin, RobustCovariance):
    """Outliers by their distance from a robust centre: -1, and 1 for the other rows.

    The interface is that of scikit-learn's class of this name, the estimate that of `RobustCovariance`, whose parameters and
    attributes it has.

    Parameters
    ----------
    contamination : float in (0, 0.5]
        The share of the training rows to be flagged.

    Attributes
    ----------
    offset_ : float
        The threshold of `score_samples`.
    """

    def __init__(
        self,
        *,
        contamination=0.1,
        method="tbs",
        breakdown=0.5,
        rejection=0.001,
        reweight=True,
        tol=1e-6,
        max_iter=200,
        store_precision=True,
        threads=None,
    ):
        super().__init__(
            method=method,
            breakdown=breakdown,
            rejection=rejection,
            reweight=reweight,
            tol=tol,
            max_iter=max_iter,
            store_precision=store_precision,
            threads=threads,
        )
        self.contamination = contamination

    def fit(self, X, y=None):
        """Estimate from the rows of X; y is ignored."""
        if not isinstance(self.contamination, _Real) or not 0 < self.contamination <= 0.5:
            raise ValueError(f"contamination is {self.contamination!r}, want a number above 0 and at most 0.5")
        super().fit(X)
        self.offset_ = _np.percentile(-self.dist_, 100 * self.contamination)
        return self

    def score_samples(self, X):
        """The squared Mahalanobis distances with a minus sign."""
        return -self.mahalanobis(X)

    def decision_function(self, X):
        """`score_samples` less `offset_`: negative for outliers."""
        check_is_fitted(self)
        return self.score_samples(X) - self.offset_

    def predict(self, X):
        """1 for each row within the envelope, -1 for each outlier."""
        return _np.where(self.decision_function(X) >= 0, 1, -1)

    def score(self, X, y, sample_weight=None):
        """The share of the rows of X whose label y, 1 or -1, is the one predicted."""
        return accuracy_score(y, self.predict(X), sample_weight=sample_weight)
