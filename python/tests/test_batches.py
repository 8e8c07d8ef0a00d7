# SPDX-License-Identifier: Apache-2.0
"""Tables in batches: one pass gives what the whole gives, names agree, and nothing is half added."""

import io
import tracemalloc

import numpy as np
import pytest

import tmk
from tmk import stats

RNG = np.random.default_rng(2)
X = RNG.normal(size=(6000, 3)) * [1, 2, 3] + [0, 1e6, -5]
X[17, 1] = np.nan
W = RNG.integers(0, 3, 6000).astype(float)
CUTS = [0, 1, 700, 700, 4000, 6000]
PIECES = [X[a:b] for a, b in zip(CUTS, CUTS[1:])]
NAMES = ["a", "b", "c"]


def pandas_chunks():
    pandas = pytest.importorskip("pandas")
    text = pandas.DataFrame(X, columns=NAMES).to_csv(index=False)
    return pandas.read_csv(io.StringIO(text), chunksize=1000)


def polars_batches():
    polars = pytest.importorskip("polars")
    frame = polars.from_numpy(X, schema=NAMES).with_columns(polars.col("b").fill_nan(None))
    return frame.lazy().collect_batches(chunk_size=1000)


def arrow_tables():
    pyarrow = pytest.importorskip("pyarrow")
    return (pyarrow.table(dict(zip(NAMES, piece.T))) for piece in PIECES)


class Reiterable:
    def __iter__(self):
        return iter(PIECES)


SOURCES = {
    "generator": lambda: (piece for piece in PIECES),
    "list": lambda: PIECES,
    "tuple": lambda: tuple(PIECES),
    "object": Reiterable,
    "lists": lambda: (piece.tolist() or np.empty((0, 3)) for piece in PIECES),
    "read_csv": pandas_chunks,
    "collect_batches": polars_batches,
    "arrow": arrow_tables,
}


@pytest.mark.parametrize("source", SOURCES)
def test_batches_are_the_whole(source):
    want = stats.describe(X, nan="omit", quantiles=[0.1, 0.9])
    s = tmk.describe(SOURCES[source](), nan="omit", quantiles=[0.1, 0.9], epsilon=0.01)
    for name in ("n", "nans", "weight", "min", "max", "complete"):
        np.testing.assert_array_equal(getattr(s, name), getattr(want, name))
    for name in ("mean", "variance", "std", "skewness", "kurtosis", "cov", "corr"):
        np.testing.assert_allclose(getattr(s, name), getattr(want, name), rtol=1e-9, atol=1e-9)
    for j in range(3):
        values = np.sort(X[~np.isnan(X[:, j]), j])
        ranks = np.searchsorted(values, [*s.quantiles[j], s.median[j]])
        np.testing.assert_allclose(ranks, values.size * np.array([0.1, 0.9, 0.5]), atol=0.01 * values.size + 1)
    assert (s.epsilon, want.epsilon) == (0.01, 0) and np.isnan(s.mad).all()
    assert "within 0.01 of rank" in repr(s) and "within" not in repr(want) + want._repr_html_()
    assert s.names == (NAMES if source in ("read_csv", "collect_batches", "arrow") else ["0", "1", "2"])
    np.testing.assert_allclose(stats.cov(SOURCES[source](), nan="omit"), want.cov, rtol=1e-9, atol=1e-9)
    m = stats.Moments(3, nan="omit").add(X).add(SOURCES[source]())
    assert m.count.tolist() == [12000, 11998, 12000]
    q = stats.quantile(SOURCES[source](), [0.1, 0.9], nan="omit", epsilon=0.01)
    np.testing.assert_array_equal(q, s.quantiles)
    assert stats.QuantileSketch(3, nan="omit").add(SOURCES[source]()).count(1) == 5999


def test_shapes_of_quantiles_are_those_of_the_data():
    column = X[:, 0]
    assert stats.median(np.array_split(column[:, None], 3)).shape == (1,)
    assert np.ndim(stats.median(iter(np.array_split(column, 3)))) == 0
    assert stats.quantile(iter(np.array_split(column, 3)), [0.2, 0.5]).shape == (2,)


def tables_with_weights():
    pandas, polars, pyarrow = map(pytest.importorskip, ("pandas", "polars", "pyarrow"))
    columns = {"a": X[:, 0], "w": W, "c": X[:, 2]}
    yield pandas.DataFrame(columns)
    yield polars.DataFrame(columns)
    table = pyarrow.table(columns)
    yield pyarrow.concat_tables([table[:700], table[700:]])


def test_weights_by_the_name_of_a_column():
    both = X[:, [0, 2]]
    want = stats.describe(both, weights=W)
    for frame in tables_with_weights():
        s = stats.describe(frame, weights="w")
        assert s.names == ["a", "c"]
        np.testing.assert_array_equal(s.quantiles, want.quantiles)
        np.testing.assert_array_equal(s.cov, want.cov)
        np.testing.assert_array_equal(stats.median(frame, weights="w"), want.median)
        np.testing.assert_allclose(stats.corr(frame, weights="w"), want.corr, rtol=1e-12)
        parts = stats.describe((frame[a:b] for a, b in zip(CUTS, CUTS[1:])), weights="w", quantiles=())
        np.testing.assert_allclose(parts.cov, want.cov, rtol=1e-12)
        np.testing.assert_array_equal(parts.n, want.n)
        assert np.isnan(parts.median).all() and parts.quantiles.shape == (2, 0)
        m = stats.Moments(2).add(frame, weights="w")
        np.testing.assert_allclose(m.mean, want.mean, rtol=1e-12)
        assert m.names == ["a", "c"]
        np.testing.assert_allclose(stats.Moments(2).add(frame[["a", "c"]] if hasattr(frame, "iloc") else both, W).cov, m.cov)


def frames(*columns):
    pandas = pytest.importorskip("pandas")
    return [pandas.DataFrame(np.arange(2.0 * len(names)).reshape(2, -1), columns=names) for names in columns]


REFUSALS = [
    (lambda: stats.describe(iter([X, X[:, :2]])), "x[1].cols", "2", "3, as in"),
    (lambda: stats.cov(frames(["a", "b"], ["b", "a"])), "x[1].names", "['b', 'a']", "['a', 'b']"),
    (lambda: stats.Moments(["a", "b"]).add(frames(["a", "c"])[0]), "x.names", "['a', 'c']", "['a', 'b']"),
    (lambda: stats.Moments(["a", "b"]).merge(stats.Moments(["a", "c"])), "other.names", "['a', 'c']", "['a', 'b']"),
    (lambda: stats.describe(iter([])), "x", "an iterable without batches", "one at least"),
    (lambda: stats.quantile(iter([]), 0.5), "x", "an iterable without batches", "one at least"),
    (lambda: stats.describe(iter([X[:0]])), "x.rows", "0", "1 or more"),
    (lambda: stats.describe(iter([X]), nan="raise"), "x(17, 1)", "nan", ""),
    (lambda: stats.describe(iter([X]), weights=W, quantiles=()), "weights", "a ndarray", "name of a column"),
    (lambda: stats.describe(frames(["a", "w"]), weights="w"), "quantiles", "[0.25, 0.5, 0.75]", "none of weighted"),
    (lambda: stats.describe(frames(["a", "w"])[0], weights="v"), "weights", "'v'", "['a', 'w']"),
    (lambda: stats.describe(X, weights="v"), "weights", "'v'", "no names"),
    (lambda: stats.median(frames(["a", "w"]), weights="w"), "weights", "'w'", "none for batches"),
    (lambda: stats.mad(iter([X])), "x", "a list_iterator", "all rows at once"),
]


@pytest.mark.parametrize("call, argument, value, text", REFUSALS, ids=[f"{r[1]}={r[2]}" for r in REFUSALS])
def test_refusals_name_argument_and_value(call, argument, value, text):
    with pytest.raises(tmk.error) as caught:
        call()
    assert (caught.value.argument, caught.value.value) == (argument, value) and text in str(caught.value)


@pytest.mark.parametrize("call", [stats.quantile, lambda x, q: stats.describe(x, quantiles=q)])
def test_bad_orders_are_refused_before_data_are_read(call):
    source = iter([X, X, X])
    with pytest.raises(tmk.error, match="1.5"):
        call(source, [1.5])
    assert len(list(source)) == 3


def broken():
    yield X
    raise OSError("the disk is gone")


@pytest.mark.parametrize("bad", [lambda: iter([X, X[:, :2]]), lambda: iter([X, np.array([["a", "b", "c"]])]), broken])
def test_a_bad_batch_leaves_nothing(bad):
    for object_ in (stats.Moments(3).add(X), stats.QuantileSketch(3).add(X)):
        image = object_.to_bytes()
        with pytest.raises((ValueError, TypeError, OSError)):
            object_.add(bad())
        assert object_.to_bytes() == image


def test_no_more_than_a_batch_is_held():
    def many():
        for _ in range(40):
            yield np.ones((50_000, 2))

    tracemalloc.start()
    s = stats.describe(many(), matrices=False)
    peak = tracemalloc.get_traced_memory()[1]
    tracemalloc.stop()
    assert s.n[0] == 2_000_000 and peak < 5 * 50_000 * 2 * 8
