# SPDX-License-Identifier: Apache-2.0
"""Quasi-random engines: SciPy's points and interface, the streams' points, balance, scrambling."""

import copy
import pickle
import subprocess
import sys

import numpy as np
import pytest
import scipy.stats
from scipy.stats import qmc

from tmk.random import Niederreiter, Sobol, Stream

ENGINES = [Sobol, Niederreiter]
BOTH = pytest.mark.parametrize("scramble", [False, True])


@pytest.mark.parametrize("d", [1, 2, 40, 1111])
def test_sobol_points_are_those_of_scipy(d):
    np.testing.assert_array_equal(Sobol(d, scramble=False).random(256), qmc.Sobol(d, scramble=False).random(256))
    far = Sobol(d, scramble=False).fast_forward(2**20 + 3).random(5)
    np.testing.assert_array_equal(far, qmc.Sobol(d, scramble=False).fast_forward(2**20 + 3).random(5))


@pytest.mark.parametrize("engine, kind, d", [(Sobol, "sobol", 40), (Niederreiter, "niederreiter", 318)])
def test_points_are_those_of_the_stream_after_the_origin(engine, kind, d):
    points = engine(d, scramble=False).random(1000)
    assert not points[0].any()
    middles = Stream(kind, d).uniform(size=(999, d))
    np.testing.assert_array_equal(points[1:], middles - 2.0**-33)


# Irreducible polynomials over GF(2) of degrees 1, 2, ... (necklaces: Gauss's formula). Among 2^k points of Niederreiter's,
# a coordinate whose polynomial has degree e is balanced in intervals of 2^-j for every multiple j of e.
DEGREES = np.repeat(np.arange(1, 12), [2, 1, 2, 3, 6, 9, 18, 30, 56, 99, 186])


@BOTH
@pytest.mark.parametrize("engine", ENGINES)
def test_every_dyadic_interval_has_its_points(engine, scramble):
    for d in (1, 7, engine._most):
        e = engine(d, scramble=scramble, rng=3)
        degrees = DEGREES[:d] if engine is Niederreiter else np.ones(d, int)
        for k in (0, 5, 9):
            x = e.reset().random_base2(k)
            for column, degree in zip(x.T, degrees):
                bits = k // degree * degree
                found = np.bincount((column * 2**bits).astype(int), minlength=2**bits)
                assert np.all(found == 2 ** (k - bits))
    # Two dimensions: each box of 2^-a by 2^-(8 - a) has one of 256 points, for Sobol and Niederreiter alike (t = 0).
    x = engine(2, scramble=scramble, rng=4).random(256)
    for a in range(9):
        boxes = np.floor(x[:, 0] * 2**a) * 2 ** (8 - a) + np.floor(x[:, 1] * 2 ** (8 - a))
        assert len(np.unique(boxes)) == 256


@BOTH
@pytest.mark.parametrize("engine", ENGINES)
def test_one_sequence_however_it_is_cut(engine, scramble):
    whole = engine(5, scramble=scramble, rng=1).random(40_000)
    e = engine(5, scramble=scramble, rng=1)
    parts = np.concatenate([e.random(), e.random(0), e.random(14), e.random(39_985)])
    np.testing.assert_array_equal(parts, whole)
    assert e.num_generated == 40_000
    for n in (0, 1, 2, 700):
        assert e.reset() is e and e.fast_forward(n) is e
        np.testing.assert_array_equal(e.random(3), whole[n : n + 3])
    for twin in (pickle.loads(pickle.dumps(e)), copy.deepcopy(e), copy.copy(e)):
        assert type(twin) is engine and twin.num_generated == 703
        np.testing.assert_array_equal(twin.random(5), whole[703:708])
    last = e.fast_forward(2**32 - 703 - 2).random(2)
    assert len(np.unique(last)) == 10
    with pytest.raises(ValueError, match="n is 1, want 0 to 0"):
        e.random()


@pytest.mark.parametrize("engine", ENGINES)
def test_scrambling(engine):
    x = engine(6, rng=5).random(512)
    assert x.min() > 0 and x.max() < 1
    np.testing.assert_array_equal(x, engine(6, seed=5).random(512))
    assert not np.any(x[:10] == engine(6, rng=6).random(10))
    parent = np.random.default_rng(5)
    assert np.any(engine(6, rng=parent).random(4) != engine(6, rng=parent).random(4))

    def error(n):
        # A smooth integrand of mean 1, over independent scramblings: unbiased, of error far below that of random points.
        means = np.array([np.prod(1 + (engine(6, rng=s).random(n) - 0.5), axis=1).mean() for s in range(40)])
        assert abs(means.mean() - 1) < 5 * means.std() / np.sqrt(40)
        return means.std()

    assert error(4096) < error(256) / 20  # random points: a quarter; n^(-3/2): 1 / 64


@pytest.mark.parametrize("engine", ENGINES)
def test_scipy_takes_them(engine):
    assert isinstance(engine(2), qmc.QMCEngine) and not isinstance(3, qmc.QMCEngine)
    x = qmc.MultivariateNormalQMC([1, 2], engine=engine(2, rng=1)).random(256)
    np.testing.assert_allclose(x.mean(axis=0), [1, 2], atol=0.02)
    y = scipy.stats.Normal(mu=3).sample((128, 2), rng=engine(1, rng=1))
    assert y.shape == (128, 2) and np.all(np.abs(y.mean(axis=0) - 3) < 0.02) and np.all(y[:, 0] != y[:, 1])
    assert qmc.discrepancy(engine(3, rng=1).random(256)) < 0.1 * qmc.discrepancy(np.random.default_rng(1).random((256, 3)))
    for bounds in ({"u_bounds": [4, 20], "endpoint": True}, {"u_bounds": 9}, {}):
        ours = Sobol(2, scramble=False).integers(3, n=64, **bounds)
        theirs = qmc.Sobol(2, scramble=False).integers(3, n=64, **bounds)
        np.testing.assert_array_equal(ours, theirs)
        assert ours.dtype == theirs.dtype


def test_scipy_may_be_imported_after_the_engine():
    program = """
import sys
import tmk
e = tmk.random.Sobol(2, rng=1)
e.random(4), repr(e), e.__class__
assert "scipy" not in sys.modules
from scipy.stats import qmc
assert isinstance(e, qmc.QMCEngine) and not issubclass(tmk.random.Stream, qmc.QMCEngine)
"""
    subprocess.run([sys.executable, "-c", program], check=True)


REFUSALS = [
    (lambda e: e(0), ValueError, "d is 0, want 1 to"),
    (lambda e: e(e._most + 1), ValueError, "want 1 to"),
    (lambda e: e(2.5), TypeError, "d is 2.5"),
    (lambda e: e(2, rng=-1), ValueError, "-1|negative"),
    (lambda e: e(2, rng=1, seed=1), TypeError, "two names"),
    (lambda e: e(2, optimization="lloyd"), ValueError, "optimization is 'lloyd'"),
    (lambda e: e(2).random(-1), ValueError, "n is -1"),
    (lambda e: e(2).fast_forward(2**32 + 1), ValueError, "n is 4294967297"),
    (lambda e: e(2).fast_forward(3).random_base2(2), ValueError, "m is 2 after 3 points"),
    (lambda e: e(2).integers(2.5), ValueError, "float64, want integers"),
    (lambda e: e(2).integers([1, 2, 3]), ValueError, "shape"),
    (lambda e: e(2).integers(5, u_bounds=5), ValueError, "l_bounds is 5"),
]


@pytest.mark.parametrize("engine", ENGINES)
@pytest.mark.parametrize("call, kind, text", REFUSALS, ids=[r[2] for r in REFUSALS])
def test_refusals(engine, call, kind, text):
    with pytest.raises(kind, match=text):
        call(engine)
