# SPDX-License-Identifier: Apache-2.0
"""The estimators by scikit-learn's own checks, and compared with its classes."""

import pickle
import subprocess
import sys

import numpy as np
import pytest

pytest.importorskip("sklearn")
from sklearn import covariance, preprocessing
from sklearn.base import clone
from sklearn.pipeline import make_pipeline
from sklearn.utils.estimator_checks import check_estimator

from tmk.sklearn import EllipticEnvelope, NormalImputer, RobustCovariance, Scaler

RNG = np.random.default_rng(5)
MIXING = np.array([[1, 0, 0], [0.8, 0.6, 0], [0.5, 0.5, 0.7]])
CLEAN = RNG.normal(size=(700, 3)) @ MIXING.T + [5, 6, 7]
DIRTY = np.vstack([CLEAN, RNG.normal(size=(300, 3)) * 0.1 + [40, -40, 60]])
HOLED = np.where(RNG.random(CLEAN.shape) < 0.2, np.nan, CLEAN)
ALL = [RobustCovariance(), EllipticEnvelope(), NormalImputer(), Scaler()]
BY_CLASS = {"argvalues": ALL, "ids": lambda e: type(e).__name__}


@pytest.mark.parametrize("estimator", **BY_CLASS)
def test_checks_of_scikit_learn(estimator):
    results = check_estimator(estimator, on_skip=None)
    # A check of another array protocol runs only where an environment variable of SciPy asks for it.
    assert {r["check_name"] for r in results if r["status"] != "passed"} <= {"check_array_api_input"}


@pytest.mark.parametrize("estimator", **BY_CLASS)
def test_names_clones_and_pickles(estimator):
    pandas = pytest.importorskip("pandas")
    frame = pandas.DataFrame(CLEAN, columns=["a", "b", "c"], index=range(100, 800))
    fitted = clone(estimator).fit(frame)
    assert fitted.feature_names_in_.tolist() == ["a", "b", "c"]
    ask = fitted.transform if hasattr(fitted, "transform") else fitted.mahalanobis
    with pytest.raises(ValueError, match="feature names"):
        ask(frame[["c", "b", "a"]])
    twin = pickle.loads(pickle.dumps(fitted))
    np.testing.assert_array_equal(getattr(twin, ask.__name__)(frame), ask(frame))
    if hasattr(fitted, "transform"):
        out = make_pipeline(clone(estimator), Scaler()).set_output(transform="pandas").fit_transform(frame)
        assert out.columns.tolist() == ["a", "b", "c"] and out.index[0] == 100


# How much the estimates widen when 30 % of the rows are wrong.
@pytest.mark.parametrize("options, inflation", [({}, 1.1), ({"method": "ogk"}, 1.2), ({"reweight": False}, 2.2)])
def test_robust_covariance(options, inflation):
    estimator = RobustCovariance(**options)
    e = clone(estimator).fit(DIRTY)
    np.testing.assert_allclose(e.location_, [5, 6, 7], atol=0.2)
    np.testing.assert_allclose(e.covariance_, inflation * MIXING @ MIXING.T, atol=0.15)
    np.testing.assert_allclose(e.precision_ @ e.covariance_, np.eye(3), atol=1e-12)
    np.testing.assert_allclose(e.mahalanobis(DIRTY), e.dist_, rtol=1e-9)
    offset = DIRTY - e.location_
    np.testing.assert_allclose(e.dist_, np.einsum("ij,jk,ik->i", offset, e.precision_, offset), rtol=1e-9)
    assert e.support_[:700].mean() > 0.9 and not e.support_[700:].any()
    assert e.score(CLEAN) > covariance.EmpiricalCovariance().fit(DIRTY).score(CLEAN)
    # Units far apart must not reach the precision matrix.
    units = np.array([1e-9, 1, 1e9])
    scaled = clone(estimator).fit(DIRTY * units)
    np.testing.assert_allclose(scaled.precision_ * np.outer(units, units), e.precision_, rtol=1e-6)


def test_envelope_flags_what_scikit_learn_flags():
    x = DIRTY[:770]
    ours = EllipticEnvelope(contamination=0.1).fit(x)
    theirs = covariance.EllipticEnvelope(contamination=0.1, random_state=0).fit(x)
    np.testing.assert_array_equal(ours.predict(DIRTY[700:]), theirs.predict(DIRTY[700:]))
    assert np.all(ours.predict(DIRTY[700:]) == -1)
    assert np.mean(ours.predict(x) != theirs.predict(x)) < 0.02
    assert np.sum(ours.predict(x) == -1) == 77
    assert ours.score(x, np.repeat([1, -1], [700, 70])) > 0.98
    np.testing.assert_array_equal(ours.decision_function(x) < 0, ours.predict(x) < 0)


def test_imputer_fills_by_conditional_means():
    imputer = NormalImputer().fit(HOLED)
    np.testing.assert_allclose(imputer.location_, CLEAN.mean(axis=0), atol=0.1)
    new = np.array([[1.0, np.nan, np.nan], [np.nan, 2.0, 3.0], [np.nan] * 3, [1.0, 2.0, 3.0], [9.0, np.nan, np.nan]])
    filled = imputer.transform(new)
    precision = np.linalg.inv(imputer.covariance_)  # the conditional mean minimises the quadratic form
    gradient = (filled - imputer.location_) @ precision
    assert np.all(np.abs(gradient[np.isnan(new)]) < 1e-9)
    np.testing.assert_array_equal(filled[~np.isnan(new)], new[~np.isnan(new)])
    np.testing.assert_array_equal(filled[2], imputer.location_)
    assert np.isnan(new[0, 1])
    assert imputer.transform(new.astype(np.float32)).dtype == np.float32
    holes = np.isnan(HOLED)
    error = np.sqrt(np.mean((imputer.transform(HOLED) - CLEAN)[holes] ** 2))
    assert error < 0.85 * np.sqrt(np.mean((np.nanmean(HOLED, axis=0) - CLEAN)[holes] ** 2))


def test_imputer_with_constant_features():
    constant = np.column_stack([np.full(700, 3.0), HOLED])
    constant[4, 0] = np.nan
    with_constant = NormalImputer().fit_transform(constant)
    np.testing.assert_array_equal(with_constant[:, 0], 3)
    np.testing.assert_array_equal(with_constant[:, 1:], NormalImputer().fit_transform(HOLED))


@pytest.mark.parametrize("options", [{}, {"with_mean": False}, {"with_std": False}])
@pytest.mark.parametrize("weights", [None, RNG.integers(0, 3, 700).astype(float)], ids=["plain", "weighted"])
def test_scaler_against_scikit_learn(options, weights):
    x = HOLED.copy()
    x[:, 2] = 0.1  # three times this is no multiple of it: a variance of roundoff
    ours, theirs = Scaler(**options), preprocessing.StandardScaler(**options)
    for part in np.array_split(np.arange(700), 4):
        batch_weights = None if weights is None else weights[part]
        ours.partial_fit(x[part], sample_weight=batch_weights)
        theirs.partial_fit(x[part], sample_weight=batch_weights)
    for name in ("mean_", "scale_", "n_samples_seen_"):
        if getattr(theirs, name) is not None:
            np.testing.assert_allclose(getattr(ours, name), getattr(theirs, name), rtol=1e-12)
    np.testing.assert_allclose(ours.transform(x), theirs.transform(x), atol=1e-11)
    np.testing.assert_allclose(ours.inverse_transform(ours.transform(x)), x, rtol=1e-14)


def test_scaler_joins_and_keeps_digits():
    whole = Scaler().fit(HOLED)
    a, b = Scaler().fit(HOLED[:300]), Scaler().fit(HOLED[300:])
    np.testing.assert_allclose(a.merge(pickle.loads(pickle.dumps(b))).scale_, whole.scale_, rtol=1e-14)
    assert a.n_samples_seen_.tolist() == whole.n_samples_seen_.tolist()
    far = (RNG.normal(size=(1000, 1)) + 1e5).astype(np.float32)
    scaled = Scaler().fit_transform(far)
    assert scaled.dtype == np.float32 and abs(scaled.mean(dtype=float)) < 1e-7
    np.testing.assert_array_equal(Scaler().fit([[1e-200], [3e-200]]).scale_, 1)  # a variance below all numbers


REFUSALS = [
    (lambda: RobustCovariance(breakdown=0.7).fit(CLEAN), "breakdown is 0.7"),
    (lambda: RobustCovariance(method="mcd").fit(CLEAN), "method is 'mcd'"),
    (lambda: RobustCovariance().fit(CLEAN[:6]), "x.rows is 6"),
    (lambda: RobustCovariance().fit(HOLED), "contains NaN"),
    (lambda: EllipticEnvelope(contamination=0.6).fit(CLEAN), "contamination is 0.6"),
    (lambda: NormalImputer().fit(CLEAN * [1, np.nan, 1]), "no value of the feature 1"),
    (lambda: NormalImputer().fit(CLEAN[:3]), "rows"),
    (lambda: NormalImputer().fit(CLEAN[:, [0, 1, 0]]), "x"),
    (lambda: Scaler().fit(CLEAN, sample_weight=-np.ones(700)), r"weights\[0\] is -1"),
    (lambda: Scaler().fit(CLEAN).inverse_transform(CLEAN[:, :2]), "X has 2 features"),
    (lambda: Scaler().fit(CLEAN).merge(Scaler().fit(CLEAN[:, :2])), "other.cols is 2"),
]


@pytest.mark.parametrize("call, text", REFUSALS, ids=[r[1] for r in REFUSALS])
def test_refusals(call, text):
    with pytest.raises(ValueError, match=text):
        call()


def test_a_missing_scikit_learn_names_the_extra():
    program = "import sys; sys.modules['sklearn.base'] = None; import tmk; import tmk.sklearn"
    run = subprocess.run([sys.executable, "-c", program], check=False, capture_output=True, text=True)
    assert run.returncode == 1 and "pip install 'tmk[sklearn]'" in run.stderr
    subprocess.run([sys.executable, "-c", "import tmk, sys; assert 'sklearn' not in sys.modules"], check=True)
