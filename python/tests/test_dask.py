# SPDX-License-Identifier: Apache-2.0
"""Collections of dask: what their partitions give is what the whole gives, with the same bits for any scheduler."""

import pickle

import numpy as np
import pytest

pytest.importorskip("dask")
pandas = pytest.importorskip("pandas")
import dask.array
import dask.dataframe

import tmk.dask
from tmk import stats

RNG = np.random.default_rng(4)
X = RNG.normal(size=(5000, 3)) * [1, 2, 3] + [0, 1e6, -5]
X[17, 1] = np.nan
FRAME = pandas.DataFrame(X, columns=["a", "b", "c"])
COLLECTIONS = {
    "frame": lambda: dask.dataframe.from_pandas(FRAME, npartitions=23),
    "array": lambda: dask.array.from_array(X, chunks=(400, 2)),
}


@pytest.mark.parametrize("kind", COLLECTIONS)
def test_partitions_are_the_whole(kind):
    want = stats.describe(X, nan="omit")
    lazy = tmk.dask.describe(COLLECTIONS[kind](), nan="omit", epsilon=0.01)
    s = lazy.compute(scheduler="synchronous")
    np.testing.assert_array_equal([s.n, s.nans, s.min, s.max], [want.n, want.nans, want.min, want.max])
    for name in ("mean", "variance", "skewness", "kurtosis", "cov"):
        np.testing.assert_allclose(getattr(s, name), getattr(want, name), rtol=1e-9, atol=1e-9)
    ranks = np.searchsorted(np.sort(X[:, 0]), s.quantiles[0])
    np.testing.assert_allclose(ranks, [1250, 2500, 3750], atol=51)
    assert s.names == (["0", "1", "2"] if kind == "array" else ["a", "b", "c"])
    threaded = lazy.compute(scheduler="threads", num_workers=4)
    for name in ("mean", "kurtosis", "quantiles", "cov"):
        np.testing.assert_array_equal(getattr(threaded, name), getattr(s, name))


def test_partitions_without_rows_weights_and_series():
    frame = dask.dataframe.from_pandas(FRAME, npartitions=5)
    some = tmk.dask.describe(frame[frame.a > 2.5], nan="omit").compute(scheduler="synchronous")
    assert some.n[0] == np.sum(X[:, 0] > 2.5)
    weighted = frame.assign(w=frame.c.abs())
    s = tmk.dask.describe(weighted[["a", "w"]], weights="w", quantiles=()).compute(scheduler="synchronous")
    np.testing.assert_allclose(s.mean, np.average(X[:, 0], weights=np.abs(X[:, 2])), rtol=1e-12)
    assert tmk.dask.describe(frame.c).compute(scheduler="synchronous").names == ["c"]
    assert pickle.loads(pickle.dumps(s)).names == ["a"]


def test_refusals():
    frame = dask.dataframe.from_pandas(FRAME, npartitions=2)
    for call, kind, text in [
        (lambda: tmk.dask.describe(FRAME), TypeError, "frame is a DataFrame"),
        (lambda: tmk.dask.describe(frame, quantiles=[2.0]), tmk.error, "2"),
        (lambda: tmk.dask.describe(frame, weights="w"), tmk.error, "quantiles"),
        (lambda: tmk.dask.describe(frame, nan="raise").compute(scheduler="synchronous"), tmk.error, r"x\(17, 1\)"),
        (lambda: tmk.dask.describe(frame[frame.a > 99]).compute(scheduler="synchronous"), tmk.error, "x.rows is 0"),
    ]:
        with pytest.raises(kind, match=text):
            call()
