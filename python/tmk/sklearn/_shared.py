# SPDX-License-Identifier: Apache-2.0
"""What the estimators share."""

import warnings as _warnings

import numpy as _np
from sklearn.exceptions import ConvergenceWarning

FLOATS: tuple[type, ...] = (_np.float64, _np.float32)  #: types that are taken as they are; others become the first


def warn_unless(converged, what):
    if not converged:
        _warnings.warn(f"{what} did not converge: raise max_iter or tol", ConvergenceWarning, stacklevel=3)


class TakesNaN:
    """The tags of transformers that take NaNs and give what they got, single or double."""

    def __sklearn_tags__(self):
        tags = super().__sklearn_tags__()
        tags.input_tags.allow_nan = True
        tags.transformer_tags.preserves_dtype = ["float64", "float32"]
        return tags
