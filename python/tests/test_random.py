# SPDX-License-Identifier: Apache-2.0
"""Streams and bit generators: NumPy's own numbers, one sequence however it is drawn, states, laws."""

import copy
import pickle
import threading

import numpy as np
import pytest
import scipy.stats

import tmk
from tmk.random import Generator, Stream, default_rng

BIT_GENERATORS = "MT19937 SFMT19937 MT2203 R250 MRG32K3A MCG31M1 MCG59 WH Philox4x32x10".split()
WORDS_OF_32 = "mt19937 sfmt19937 mt2203 r250 philox4x32x10".split()


def test_the_twister_gives_the_numbers_of_numpy():
    words = [1, 2, 3]
    numpys = np.random.RandomState(words)
    legacy = np.random.Generator(numpys._bit_generator)
    ours = np.random.Generator(tmk.random.MT19937(words=words))
    bulk = Generator(tmk.random.MT19937(words=words))
    for draw in (
        lambda g: g.random(1000),
        lambda g: g.integers(0, 2**63, 100),
        lambda g: g.standard_normal(100),
        lambda g: g.bytes(37),
        lambda g: g.random(),
        lambda g: g.integers(0, 10, 7),
        lambda g: g.random((3, 5)),
        lambda g: g.random(9, dtype=np.float32),
        lambda g: g.permutation(10),
        lambda g: g.random(out=np.empty(600)),
    ):
        want = draw(legacy)
        np.testing.assert_array_equal(draw(ours), want)
        np.testing.assert_array_equal(draw(bulk), want)


@pytest.mark.parametrize("name", BIT_GENERATORS)
def test_bit_generators(name):
    kind = getattr(tmk.random, name)
    g = np.random.Generator(kind(42))
    x = g.random(20000)
    assert scipy.stats.kstest(x, "uniform").pvalue > 1e-3
    np.testing.assert_array_equal(np.random.Generator(kind(42)).random(20000), x)
    assert not np.any(np.random.Generator(kind(43)).random(100) == x[:100])
    g.random(3)
    for twin in (pickle.loads(pickle.dumps(g)), copy.deepcopy(g)):
        assert twin.bit_generator.state == g.bit_generator.state
        np.testing.assert_array_equal(twin.standard_normal(10), copy.deepcopy(g).standard_normal(10))
    children = g.bit_generator.spawn(2)
    assert type(children[0]) is kind and children[0].random_raw() != children[1].random_raw()
    saved = g.bit_generator.state
    after = g.random(5)
    g.bit_generator.state = saved
    np.testing.assert_array_equal(g.random(5), after)
    for wrong in ({}, {"bit_generator": "PCG64", "image": b""}):
        with pytest.raises(ValueError):
            g.bit_generator.state = wrong
    np.testing.assert_array_equal(g.bit_generator.ctypes.next_uint32(g.bit_generator.ctypes.state_address) >= 0, True)


def test_generator_and_default_rng():
    g = default_rng(5)
    assert default_rng(g) is g and isinstance(g, np.random.Generator)
    assert default_rng(5).random() == g.random()
    np.testing.assert_array_equal(default_rng(tmk.random.Philox4x32x10(1)).random(5), Generator(
        tmk.random.Philox4x32x10(1)).random(5))
    with pytest.raises(TypeError, match="PCG64"):
        Generator(np.random.PCG64())
    with pytest.raises((TypeError, ValueError)):
        g.random(out=np.empty(3, np.int64))
    with pytest.raises(ValueError):
        g.random(4, out=np.empty(3))
    jumped = tmk.random.MT19937(5).jumped()
    assert jumped.random_raw() != tmk.random.MT19937(5).random_raw()


def test_one_sequence_however_it_is_drawn():
    for kind in WORDS_OF_32:
        whole = Stream(kind, 9).normal(size=1600)
        s = Stream(kind, 9)
        np.testing.assert_array_equal(np.concatenate([s.normal(size=7), s.normal(size=(9,)), s.normal(size=1584)]), whole)
    for law in ("uniform", "gamma", "poisson"):
        want = getattr(Stream("mt19937", 3), law)(size=200_000)
        np.testing.assert_array_equal(getattr(Stream("mt19937", 3), law)(size=200_000, threads=3), want)
    # NumPy's view and the stream's share the words.
    shared = tmk.random.MT19937(words=[1])
    g, twin = np.random.Generator(shared), np.random.Generator(tmk.random.MT19937(words=[1]))
    g.random(), twin.random()
    out = np.empty(5, np.uint32)
    shared._stream.bits32(out)
    np.testing.assert_array_equal(out, twin.bit_generator.random_raw(5))


LAWS = [
    ("uniform", dict(low=-1, high=3), scipy.stats.uniform(-1, 4)),
    ("exponential", dict(rate=2), scipy.stats.expon(scale=0.5)),
    ("cauchy", dict(location=1, scale=2), scipy.stats.cauchy(1, 2)),
    ("gumbel", dict(location=1, scale=2), scipy.stats.gumbel_r(1, 2)),
    ("laplace", dict(scale=2), scipy.stats.laplace(0, 2)),
    ("rayleigh", dict(scale=2), scipy.stats.rayleigh(scale=2)),
    ("weibull", dict(shape=1.5, scale=2), scipy.stats.weibull_min(1.5, scale=2)),
    ("normal", dict(mean=1, sd=2), scipy.stats.norm(1, 2)),
    ("normal", dict(method="inversion"), scipy.stats.norm()),
    ("lognormal", dict(log_sd=0.5), scipy.stats.lognorm(0.5)),
    ("gamma", dict(shape=0.7, scale=2), scipy.stats.gamma(0.7, scale=2)),
    ("chisquare", dict(degrees=3.5), scipy.stats.chi2(3.5)),
    ("beta", dict(a=2, b=0.5), scipy.stats.beta(2, 0.5)),
    ("standard_t", dict(degrees=4), scipy.stats.t(4)),
    ("integers", dict(low=-2, high=5), scipy.stats.randint(-2, 6)),
    ("bernoulli", dict(p=0.3), scipy.stats.bernoulli(0.3)),
    ("geometric", dict(p=0.3), scipy.stats.geom(0.3, loc=-1)),
    ("poisson", dict(mean=7), scipy.stats.poisson(7)),
    ("binomial", dict(trials=20, p=0.3), scipy.stats.binom(20, 0.3)),
    ("negative_binomial", dict(successes=2.5, p=0.4), scipy.stats.nbinom(2.5, 0.4)),
    ("hypergeometric", dict(population=50, sample=10, marked=20), scipy.stats.hypergeom(50, 20, 10)),
]


@pytest.mark.parametrize("law, parameters, peer", LAWS, ids=[f"{row[0]}-{k}" for k, row in enumerate(LAWS)])
def test_laws_are_those_of_scipy(law, parameters, peer):
    draw = getattr(Stream(seed=11), law)
    x = draw(**parameters, size=40_000)
    if x.dtype == np.float64:
        assert scipy.stats.kstest(x, peer.cdf).pvalue > 1e-4
        single = draw(**parameters, size=(4, 10_000), dtype=np.float32)
        assert single.dtype == np.float32 and scipy.stats.kstest(single.ravel(), peer.cdf).pvalue > 1e-4
    else:
        values = np.arange(peer.ppf(0.01), peer.ppf(0.99) + 1)
        counts, want = [np.sum(x == v) for v in values], peer.pmf(values) * x.size
        assert np.all(np.abs(counts - want) < 5 * np.sqrt(want))
    assert np.ndim(draw(**parameters)) == 0


def test_streams_skip_spawn_and_travel():
    s = Stream("mrg32k3a", 1)
    t = s.copy()
    x = s.uniform(size=100, dtype=np.float32)
    t.skip(40)
    np.testing.assert_array_equal(t.uniform(size=60, dtype=np.float32), x[40:])
    for twin in (Stream.load(s.save()), pickle.loads(pickle.dumps(s)), copy.deepcopy(s)):
        assert twin.kind == "mrg32k3a" and twin.save() == s.save()
    a, b = s.spawn(2)
    assert a.uniform() != b.uniform()
    part = Stream("mcg59", 1)
    whole = part.copy().uniform(size=30, dtype=np.float32)
    part.leapfrog(1, 3)
    np.testing.assert_array_equal(part.uniform(size=10, dtype=np.float32), whole[1::3])
    assert Stream("wh", 1, set=7).set == 7 and "set=7" in repr(Stream("wh", 1, set=7))
    assert Stream("sobol", 2).uniform(size=6).reshape(3, 2).shape == (3, 2)
    assert sorted(s.permutation(10)) == list(range(10))
    assert Stream("mt19937", [5], raw=True).bits() == np.random.RandomState([5])._bit_generator.random_raw()


def test_threads_share_one_stream():
    s = Stream(seed=3)
    drawn = []
    threads = [threading.Thread(target=lambda: drawn.append(s.uniform(size=50_000))) for _ in range(4)]
    [t.start() for t in threads]
    [t.join() for t in threads]
    want = Stream(seed=3).uniform(size=200_000)
    np.testing.assert_array_equal(np.sort(np.concatenate(drawn)), np.sort(want))


REFUSALS = [
    (lambda: Stream("mt1937"), ValueError, "kind is 'mt1937'"),
    (lambda: Stream(seed=-1), ValueError, "seed is -1"),
    (lambda: Stream(seed=1.5), TypeError, "seed is 1.5"),
    (lambda: Stream("wh", 1, set=273), tmk.error, "set"),
    (lambda: Stream(seed=1).exponential(rate=-1, size=3), tmk.error, "rate"),
    (lambda: Stream(seed=1).normal("a"), (TypeError, ValueError), "a"),
    (lambda: Stream(seed=1).normal(method="zig"), ValueError, "method is 'zig'"),
    (lambda: Stream(seed=1).normal(size=3, dtype=np.int32), (TypeError, ValueError), "dtype is int32"),
    (lambda: Stream(seed=1).binomial(trials=1.5), TypeError, "trials is 1.5"),
    (lambda: Stream(seed=1).binomial(trials=2**31), ValueError, "trials is 2147483648"),
    (lambda: Stream(seed=1).uniform(sise=3), TypeError, "sise"),
    (lambda: Stream(seed=1).uniform(out=np.zeros((3, 3)).T[:, ::2]), ValueError, "out is not a contiguous"),
    (lambda: Stream(seed=1).uniform(size=2, out=np.zeros(3)), ValueError, "size is 2"),
    (lambda: Stream(seed=1).uniform(size=2, threads=0), tmk.error, "threads"),
    (lambda: Stream("r250", 1).skip(5), tmk.error, "skip"),
    (lambda: Stream.load(b"abc"), tmk.error, "image"),
]


@pytest.mark.parametrize("call, kind, text", REFUSALS)
def test_refusals(call, kind, text):
    with pytest.raises(kind, match=text):
        call()
