# SPDX-License-Identifier: Apache-2.0
"""Statistics compared with NumPy and SciPy; kinds of input, merging, pickles, refusals."""

import copy
import pickle
import threading

import numpy as np
import pytest
import scipy.stats

import tmk
from tmk import stats

RNG = np.random.default_rng(1)
X = RNG.normal(size=(5000, 4)) * [1, 2, 3, 4] + [0, 1e6, -5, 7]


def test_describe_against_numpy_and_scipy():
    s = stats.describe(X, quantiles=[0.1, 0.5, 0.99])
    np.testing.assert_allclose(s.mean, X.mean(axis=0), rtol=1e-13, atol=1e-13)
    np.testing.assert_allclose(s.variance, X.var(axis=0, ddof=1), rtol=1e-10)
    centred = X - X.mean(axis=0)  # an offset costs SciPy digits
    np.testing.assert_allclose(s.skewness, scipy.stats.skew(centred), rtol=1e-9, atol=1e-9)
    np.testing.assert_allclose(s.kurtosis, scipy.stats.kurtosis(centred), rtol=1e-9, atol=1e-9)
    np.testing.assert_array_equal([s.min, s.max], [X.min(axis=0), X.max(axis=0)])
    np.testing.assert_allclose(s.quantiles, np.quantile(X, s.orders, axis=0).T, rtol=1e-15)
    np.testing.assert_allclose(s.mad, scipy.stats.median_abs_deviation(X), rtol=1e-9)
    np.testing.assert_allclose(s.cov, np.cov(X.T), rtol=1e-9, atol=1e-9)
    np.testing.assert_allclose(s.corr, np.corrcoef(X.T), rtol=1e-9, atol=1e-9)
    np.testing.assert_array_equal(s.cov, stats.cov(X))
    np.testing.assert_array_equal(s.corr, stats.corr(X, threads=3))
    assert s.complete == 5000 and s.n.tolist() == [5000] * 4
    assert "kurtosis" in repr(s) and s._repr_html_().count("<td>") == 4 * len(s._rows())
    assert stats.describe(X, matrices=False).cov is None


# What holds the same values gives the same bits.
KINDS = {
    "fortran": np.asfortranarray,
    "strided": lambda a: np.repeat(np.repeat(a, 2, axis=0), 3, axis=1)[::2, ::3],
    "backward": lambda a: a[::-1, ::-1].copy()[::-1, ::-1],
    "swapped": lambda a: a.astype(">f8"),
    "read-only": lambda a: np.frombuffer(a.tobytes()).reshape(a.shape),
    "list": lambda a: a.tolist(),
    "masked": lambda a: np.ma.masked_array(a),
    "unaligned": lambda a: np.frombuffer(b"\0" + a.tobytes(), np.uint8)[1:].view(np.float64).reshape(a.shape),
}


@pytest.mark.parametrize("kind", KINDS)
def test_kinds_of_input(kind):
    want = stats.describe(X)
    got = stats.describe(KINDS[kind](X))
    for name in ("mean", "variance", "quantiles", "cov"):
        np.testing.assert_array_equal(getattr(got, name), getattr(want, name))


def test_types_and_masks():
    single = X.astype(np.float32)
    np.testing.assert_array_equal(stats.cov(single), stats.cov(single.astype(np.float64)))
    assert stats.median(np.arange(5)) == 2 and stats.quantile([True, False, True], 0.5) == 1
    assert stats.quantile(X, [0.5, 0.9]).shape == (4, 2) and stats.quantile(X, 0.5).shape == (4,)
    masked = np.ma.masked_array(X.copy(), mask=np.zeros_like(X, bool))
    masked[3, 1] = np.ma.masked
    assert stats.describe(masked, nan="omit").n.tolist() == [5000, 4999, 5000, 5000]
    integers = np.ma.masked_array([1, 2, 30], mask=[0, 0, 1])
    assert stats.describe(integers, nan="omit").mean[0] == 1.5
    for wrong in (X + 1j, X.astype(np.longdouble), np.array(["a"]), np.array([None])):
        with pytest.raises(TypeError, match="x has elements of type"):
            stats.describe(wrong)
    with pytest.raises(ValueError, match="3 dimensions"):
        stats.describe(np.zeros((2, 2, 2)))


def test_weights():
    w = RNG.integers(0, 4, 5000)
    repeated = np.repeat(X, w, axis=0)
    s = stats.describe(X, weights=w, counts=True)
    np.testing.assert_allclose(s.variance, repeated.var(axis=0, ddof=1), rtol=1e-10)
    np.testing.assert_allclose(stats.quantile(X, 0.3, weights=w, counts=True), np.quantile(repeated, 0.3, axis=0))
    np.testing.assert_allclose(stats.cov(X, weights=w), np.cov(X.T, aweights=w), rtol=1e-9, atol=1e-9)


def test_batches_merge_and_travel():
    whole = stats.Moments(4).add(X)
    parts = [stats.Moments(list("abcd")).add(part) for part in np.split(X, 5)]
    joined = sum(parts[1:], start=parts[0])
    np.testing.assert_allclose(joined.cov, whole.cov, rtol=1e-12, atol=1e-12)
    np.testing.assert_allclose(joined.kurtosis, whole.kurtosis, rtol=1e-9)
    assert parts[0].count.tolist() == [1000] * 4  # + left it alone
    for twin in (pickle.loads(pickle.dumps(joined)), copy.deepcopy(joined), copy.copy(joined)):
        assert twin.to_bytes() == joined.to_bytes() and twin.names == list("abcd")
        twin.add(X[:1])
        assert twin.count[0] == 5001 and joined.count[0] == 5000
    again = stats.Moments.from_bytes(joined.to_bytes())
    again |= again
    assert again.count[0] == 10000
    np.testing.assert_allclose(joined.var(ddof=0), X.var(axis=0), rtol=1e-10)
    np.testing.assert_allclose(joined.raw(2), (X**2).mean(axis=0), rtol=1e-12)
    assert joined.add(np.empty((0, 4))).complete == 5000

    sketch = stats.QuantileSketch(4, 0.01)
    for part in np.split(X, 5):
        sketch += stats.QuantileSketch(4, 0.01).add(part)
    sketch = pickle.loads(pickle.dumps(sketch))
    for j in range(4):
        ranks = np.searchsorted(np.sort(X[:, j]), sketch.quantile([0.1, 0.5, 0.9], variable=j))
        np.testing.assert_allclose(ranks, [500, 2500, 4500], atol=51)
        value, low, high, count = sketch.bounds(0.5, variable=j)
        assert low <= np.sum(X[:, j] <= value) <= high and count == 5000
    assert sketch.count(2) == 5000 and sketch.rank(1e9)[1:] == (5000, 5000, 5000)


def test_golden_image():
    """What an earlier version wrote is read: 2 variables, rows (1, 2), (3, 5)."""
    image = stats.Moments(2).add([[1, 2], [3, 5]]).to_bytes()
    assert image[:8] == b"TMKMOMTS" and len(image) > 100
    m = stats.Moments.from_bytes(image)
    assert m.mean.tolist() == [2, 3.5] and m.cov.tolist() == [[2, 3], [3, 4.5]]


def test_one_object_and_many_threads():
    m = stats.Moments(4)
    threads = [threading.Thread(target=lambda: [m.add(X) for _ in range(20)]) for _ in range(4)]
    [t.start() for t in threads]
    [t.join() for t in threads]
    assert m.count.tolist() == [400000] * 4
    np.testing.assert_allclose(m.mean, X.mean(axis=0), rtol=1e-12, atol=1e-12)


def test_groups_and_matrices():
    labels = np.array(["x", "y", "y", "z"])[RNG.integers(0, 4, 5000)]
    g = stats.pooled_covariance(X, labels)
    assert g.labels.tolist() == ["x", "y", "z"]
    scatter = sum(np.cov(X[labels == label].T) * (np.sum(labels == label) - 1) for label in g.labels)
    np.testing.assert_allclose(g.covariance, scatter / 4997, rtol=1e-9, atol=1e-9)
    np.testing.assert_allclose(g.covariances[1], np.cov(X[labels == "y"].T), rtol=1e-9, atol=1e-9)
    c = stats.corr(X)
    k = np.linalg.inv(c)
    np.testing.assert_allclose(stats.partial_correlation(c, [2, 3])[0, 1], -k[0, 1] / np.sqrt(k[0, 0] * k[1, 1]))
    near = stats.nearest_correlation([[1, 1, 0], [1, 1, 1], [0, 1, 1]])
    np.testing.assert_allclose(near[0], [1, 0.7607, 0.1573], atol=5e-5)


REFUSALS = [
    (lambda: stats.describe(X, weights=np.ones(3)), "weights", "3"),
    (lambda: stats.describe(X, weights=-np.ones(5000)), "weights[0]", "-1"),
    (lambda: stats.describe(X, quantiles=[1.5]), "orders[0]", "1.5"),
    (lambda: stats.describe([[1, np.nan]], nan="raise"), "x(0, 1)", "nan"),
    (lambda: stats.describe(np.empty((0, 2))), "x.rows", "0"),
    (lambda: stats.describe(X, threads=0), "threads", "0"),
    (lambda: stats.Moments(0), "cols", "0"),
    (lambda: stats.Moments(2).add(X), "x.cols", "4"),
    (lambda: stats.Moments(2).merge(stats.Moments(3)), "other.cols", "3"),
    (lambda: stats.Moments.from_bytes(b"TMKMOMTS"), "bytes", "8 bytes"),
    (lambda: stats.QuantileSketch(1, 2.0), "epsilon", "2"),
    (lambda: stats.partial_covariance(np.eye(3), [3]), "given[0]", "3"),
    (lambda: stats.nearest_correlation(np.ones((2, 3))), "m.cols", "3"),
]


@pytest.mark.parametrize("call, argument, value", REFUSALS, ids=[f"{r[1]}={r[2]}" for r in REFUSALS])
def test_refusals_name_argument_and_value(call, argument, value):
    with pytest.raises(tmk.error) as caught:
        call()
    assert isinstance(caught.value, ValueError)
    assert (caught.value.argument, caught.value.value) == (argument, value)
    assert argument in str(caught.value) and "tmk::" not in str(caught.value)


def test_refusals_of_the_python_layer():
    m = stats.Moments(4).add(X)
    image = m.to_bytes()
    for call, kind, text in [
        (lambda: stats.describe(X, nan="drop"), ValueError, "nan is 'drop'"),
        (lambda: m.merge(3), TypeError, "other is a int"),
        (lambda: m.add(X, weights=np.ones((2, 2))), ValueError, "weights has 2 dimensions"),
        (lambda: m.add("abc"), TypeError, "x has elements"),
    ]:
        with pytest.raises(kind, match=text):
            call()
    assert m.to_bytes() == image


def test_frames_and_series():
    pandas = pytest.importorskip("pandas")
    frame = pandas.DataFrame(X, columns=list("abcd"))
    s = stats.describe(frame)
    assert s.names == list("abcd") and s.to_frame().loc["mean", "c"] == s.mean[2]
    np.testing.assert_array_equal(s.cov, stats.cov(X))
    assert stats.describe(pandas.Series([1, None, 3], dtype="Int64", name="n"), nan="omit").mean[0] == 2
    np.testing.assert_array_equal(tmk.exp(frame["a"]).to_numpy(), tmk.exp(X[:, 0].copy()))


def test_tables_by_the_arrow_stream():
    pyarrow = pytest.importorskip("pyarrow")
    columns = {"a": X[:, 0], "b": X[:, 1].astype(np.float32), "c": np.arange(5000, dtype=np.int16), "d": X[:, 3] > 7}
    table = pyarrow.table(columns)
    want = np.column_stack([np.asarray(v, np.float64) for v in columns.values()])
    np.testing.assert_array_equal(stats.cov(table), stats.cov(want))
    assert stats.describe(table).names == list("abcd")
    pieces = pyarrow.concat_tables([table[:7], table[7:4000], table[4000:]])
    m = stats.Moments(4).add(pieces)
    np.testing.assert_allclose(m.mean, want.mean(axis=0), rtol=1e-13, atol=1e-13)
    assert m.count[0] == 5000 and stats.QuantileSketch(4).add(pieces).count(3) == 5000
    holes = pyarrow.table({"a": [1.0, None, 3.0, 4.0], "b": [True, False, None, True]})[1:]
    s = stats.describe(holes, nan="omit")
    assert s.n.tolist() == [2, 2] and s.mean.tolist() == [3.5, 0.5]
    assert stats.median(pyarrow.chunked_array([[1, 2], [30]])) == 2
    with pytest.raises(TypeError, match="column 's' of the Arrow type"):
        stats.describe(pyarrow.table({"s": ["x"]}))


def test_robust_covariance_and_outliers():
    clean = RNG.normal(size=(700, 3)) @ np.array([[1, 0, 0], [0.5, 1, 0], [0, 0.2, 2]]).T
    x = np.vstack([clean, RNG.normal(size=(300, 3)) * 0.1 + [50, -50, 80]])
    e = stats.robust_covariance(x, threads=2)
    assert e.converged and np.all(np.abs(e.location) < 0.3)
    np.testing.assert_allclose(e.correlation, np.corrcoef(clean.T), atol=0.15)
    reweighted = stats.robust_covariance(x, reweight=True)
    np.testing.assert_allclose(reweighted.covariance, np.cov(clean.T), rtol=0.3, atol=0.3)
    assert set(range(700, 1000)) <= set(e.outliers(0.01).tolist()) and np.all(e.weights[700:] == 0)
    np.testing.assert_allclose(stats.mahalanobis(x, e.location, e.covariance), e.distances, rtol=1e-9)
    found = stats.outliers(x[:850])
    assert set(range(700, 850)) <= set(found.rows.tolist()) and found.flags[700:].all()
    rounds = []
    stopped = stats.robust_covariance(x, tolerance=1e-15, progress=lambda k, change: rounds.append(change) or k < 3)
    assert len(rounds) == 3 and not stopped.converged
    with pytest.raises(ZeroDivisionError):
        stats.robust_covariance(x, progress=lambda *_: 1 / 0)
    for call, argument in [
        (lambda: stats.robust_covariance(x, breakdown=0.7), "breakdown"),
        (lambda: stats.robust_covariance(x[:6]), "x.rows"),
        (lambda: stats.outliers(x, 1.5), "alpha"),
        (lambda: stats.mahalanobis(x, e.location[:2], e.covariance), "location"),
    ]:
        with pytest.raises(tmk.error) as caught:
            call()
        assert argument in caught.value.argument
    with pytest.raises(ValueError, match="method is 'mcd'"):
        stats.robust_covariance(x, method="mcd")


def test_imputation():
    full = RNG.normal(size=(400, 3)) @ np.array([[1, 0, 0], [0.8, 0.6, 0], [0.5, 0.5, 0.7]]).T + [5, 6, 7]
    x = np.where(RNG.random(full.shape) < 0.15, np.nan, full)
    e = stats.em_estimate(x)
    assert e.converged
    np.testing.assert_allclose(e.mean, full.mean(axis=0), atol=0.1)
    m = stats.impute(x, 10, rounds=20, seed=7)
    assert len(m) == m.count == 10 and len(m.holes) == np.isnan(x).sum()
    for filled in m:
        assert not np.isnan(filled).any()
        np.testing.assert_array_equal(filled[~np.isnan(x)], x[~np.isnan(x)])
    np.testing.assert_array_equal(m.completed(3), stats.impute(x, 10, rounds=20, seed=7, threads=2).completed(3))
    assert np.any(m.values != stats.impute(x, 10, rounds=20, seed=8).values)
    assert m.chain.shape == (200, 9)
    means, variances = [f.mean(axis=0) for f in m], [f.var(axis=0, ddof=1) / 400 for f in m]
    for j, pooled in enumerate(m.pool(means, variances, complete_df=399)):
        assert abs(pooled.estimate - full[:, j].mean()) < 4 * pooled.se and pooled.df < 399
    drawn = stats.impute(x, 2, rounds=5, stream=tmk.random.Stream(seed=1))
    assert drawn.count == 2
    infinite = x.copy()
    infinite[3, 1] = np.inf
    for call, argument in [
        (lambda: stats.impute(x, 0), "count"),
        (lambda: stats.impute(infinite), "x(3, 1)"),
        (lambda: stats.em_estimate(np.where(np.arange(3) == 1, np.nan, x)), "x"),
        (lambda: stats.pool_estimates([1.0, 2.0], [-1.0, 1.0]), "variances[0]"),
    ]:
        with pytest.raises(tmk.error) as caught:
            call()
        assert argument in caught.value.argument
    with pytest.raises(ValueError, match="want 10 rows"):
        m.pool([1.0], [1.0])
