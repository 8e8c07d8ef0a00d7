# SPDX-License-Identifier: Apache-2.0
"""Estimators for scikit-learn: `RobustCovariance`, `EllipticEnvelope`, `NormalImputer`, `Scaler`.

They take what scikit-learn's own do, arrays and frames of n_samples by n_features, and work in pipelines, searches, clones and
pickles. Names of features are kept, and `set_output` is obeyed. What the library refuses is `tmk.error`, a ValueError.
`threads` is the number of the library's threads, None for that of `tmk.threads`; results have the same bits for any.

The module needs scikit-learn, ``pip install 'tmk[sklearn]'``, and is imported by its own name.

>>> import tmk.sklearn
>>> flags = tmk.sklearn.EllipticEnvelope(contamination=0.05).fit_predict(x)
"""

try:
    from .covariance import EllipticEnvelope, RobustCovariance
    from .imputation import NormalImputer
    from .scaling import Scaler
except ImportError as _missing:
    raise ImportError("tmk.sklearn needs scikit-learn 1.6 or later: pip install 'tmk[sklearn]'") from _missing

__all__ = ["EllipticEnvelope", "NormalImputer", "RobustCovariance", "Scaler"]
