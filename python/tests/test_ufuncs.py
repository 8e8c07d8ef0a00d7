# SPDX-License-Identifier: Apache-2.0
"""The ufuncs compared with mpmath in ulp and with NumPy's special values; layouts, types, flags, threads."""

import concurrent.futures
import multiprocessing
import pickle

import mpmath
import numpy as np
import pytest

import tmk

mpmath.mp.prec = 200

# Name, its value by mpmath, and where the arguments are drawn from.
REAL_UNARY = [
    ("square", lambda x: x * x, -9, 9),
    ("reciprocal", lambda x: 1 / x, 0.1, 9),
    ("sqrt", mpmath.sqrt, 0, 9),
    ("rsqrt", lambda x: 1 / mpmath.sqrt(x), 0.1, 9),
    ("cbrt", lambda x: mpmath.sign(x) * mpmath.cbrt(abs(x)), -9, 9),
    ("rcbrt", lambda x: 1 / mpmath.cbrt(x), 0.1, 9),
    ("pow2o3", lambda x: mpmath.cbrt(x * x), 0, 9),
    ("pow3o2", lambda x: x * mpmath.sqrt(x), 0, 9),
    ("exp", mpmath.exp, -80, 80),
    ("exp2", lambda x: mpmath.power(2, x), -80, 80),
    ("exp10", lambda x: mpmath.power(10, x), -30, 30),
    ("expm1", mpmath.expm1, -3, 3),
    ("log", mpmath.log, 0.01, 9),
    ("log2", lambda x: mpmath.log(x) / mpmath.log(2), 0.01, 9),
    ("log10", lambda x: mpmath.log(x) / mpmath.log(10), 0.01, 9),
    ("log1p", lambda x: mpmath.log(1 + x), -0.9, 9),
    ("sin", mpmath.sin, -1000, 1000),
    ("cos", mpmath.cos, -1000, 1000),
    ("tan", mpmath.tan, -1000, 1000),
    ("sinpi", lambda x: mpmath.sin(mpmath.pi * x), -5, 5),
    ("cospi", lambda x: mpmath.cos(mpmath.pi * x), -5, 5),
    ("tanpi", lambda x: mpmath.tan(mpmath.pi * x), -5, 5),
    ("sind", lambda x: mpmath.sin(mpmath.pi * x / 180), -720, 720),
    ("cosd", lambda x: mpmath.cos(mpmath.pi * x / 180), -720, 720),
    ("tand", lambda x: mpmath.tan(mpmath.pi * x / 180), -720, 720),
    ("arcsin", mpmath.asin, -1, 1),
    ("arccos", mpmath.acos, -1, 1),
    ("arctan", mpmath.atan, -9, 9),
    ("arcsinpi", lambda x: mpmath.asin(x) / mpmath.pi, -1, 1),
    ("arccospi", lambda x: mpmath.acos(x) / mpmath.pi, -1, 1),
    ("arctanpi", lambda x: mpmath.atan(x) / mpmath.pi, -9, 9),
    ("sinh", mpmath.sinh, -30, 30),
    ("cosh", mpmath.cosh, -30, 30),
    ("tanh", mpmath.tanh, -3, 3),
    ("arcsinh", mpmath.asinh, -9, 9),
    ("arccosh", mpmath.acosh, 1, 9),
    ("arctanh", mpmath.atanh, -1, 1),
    ("erf", mpmath.erf, -3, 3),
    ("erfc", mpmath.erfc, -3, 5),
    ("erfinv", mpmath.erfinv, -0.99, 0.99),
    ("erfcinv", lambda x: mpmath.erfinv(1 - x), 0.01, 1.9),
    ("ndtr", mpmath.ncdf, -5, 5),
    ("ndtri", lambda x: mpmath.sqrt(2) * mpmath.erfinv(2 * x - 1), 0.01, 0.99),
    ("gammaln", lambda x: mpmath.re(mpmath.loggamma(x)), 3, 30),
    ("gamma", mpmath.gamma, 0.1, 30),
    ("exp1", mpmath.e1, 0.1, 9),
]
REAL_BINARY = [
    ("power", mpmath.power, (0.1, 9), (-9, 9)),
    ("hypot", mpmath.hypot, (-9, 9), (-9, 9)),
    ("arctan2", mpmath.atan2, (-9, 9), (-9, 9)),
    ("arctan2pi", lambda y, x: mpmath.atan2(y, x) / mpmath.pi, (-9, 9), (-9, 9)),
    ("divide", lambda a, b: a / b, (-9, 9), (1, 9)),
]
SETS = [(tmk, 1.02), (tmk.low, 4), (tmk.fast, 2.0**28)]


def worst_ulp(got, want):
    """The largest error in units of the last place of the wanted values."""
    return max(abs((mpmath.mpf(float(g)) - w) / float(np.spacing(g.dtype.type(abs(w))))) for g, w in zip(got, want))


@pytest.mark.parametrize("dtype", [np.float32, np.float64])
@pytest.mark.parametrize("name, value, low, high", REAL_UNARY, ids=[row[0] for row in REAL_UNARY])
def test_errors_of_one_argument(name, value, low, high, dtype):
    x = np.random.default_rng(1).uniform(low, high, 60).astype(dtype)
    want = [value(mpmath.mpf(float(v))) for v in x]
    for functions, bound in SETS:
        if functions is tmk.fast and dtype == np.float32:
            bound = 2.0**14
        got = getattr(functions, name)(x)
        assert got.dtype == dtype
        assert worst_ulp(got, want) < bound


@pytest.mark.parametrize("name, value, first, second", REAL_BINARY, ids=[row[0] for row in REAL_BINARY])
def test_errors_of_two_arguments(name, value, first, second):
    rng = np.random.default_rng(2)
    a, b = rng.uniform(*first, 100), rng.uniform(*second, 100)
    want = [value(mpmath.mpf(u), mpmath.mpf(v)) for u, v in zip(a, b)]
    for functions, bound in SETS:
        assert worst_ulp(getattr(functions, name)(a, b), want) < bound


# Ours that NumPy has: special values and signs of zeros are NumPy's.
SPECIALS = np.array([0.0, -0.0, 1, -1, 0.5, 2, np.inf, -np.inf, np.nan, 5e-324, -5e-324, 1.7e308, 710, -746, 1e300])
SHARED_UNARY = """absolute square reciprocal sqrt cbrt exp exp2 expm1 log log2 log10 log1p sin cos tan arcsin arccos arctan
sinh cosh tanh arcsinh arccosh arctanh floor ceil trunc rint""".split()
SHARED_BINARY = "add subtract multiply divide power hypot arctan2 fmod fmax fmin copysign nextafter".split()


@pytest.mark.parametrize("name", SHARED_UNARY + SHARED_BINARY)
def test_special_values_are_those_of_numpy(name):
    args = [SPECIALS] if name in SHARED_UNARY else [v.ravel() for v in np.meshgrid(SPECIALS, SPECIALS)]
    with np.errstate(all="ignore"):
        got, want = getattr(tmk, name)(*args), getattr(np, name)(*args)
    same = (got == want) & (np.signbit(got) == np.signbit(want)) | np.isnan(got) & np.isnan(want)
    close = np.isclose(got, want, rtol=1e-14, atol=0) & np.isfinite(want)
    # Of two zeros C lets fmax and fmin give either.
    zeros = (got == 0) & (want == 0) if name in ("fmax", "fmin") else False
    assert np.all(same | close | zeros), [a[~(same | close | zeros)] for a in args]


def test_two_results_and_other_types():
    x = np.array([2.5, -3.25])
    assert [r.tolist() for r in tmk.modf(x)] == [r.tolist() for r in np.modf(x)]
    sine, cosine = tmk.sin_cos(x)
    np.testing.assert_allclose([sine, cosine], [np.sin(x), np.cos(x)], rtol=1e-15)
    z = x + 1j
    np.testing.assert_allclose(tmk.exp(z), np.exp(z), rtol=1e-15)
    np.testing.assert_allclose(tmk.cis(x), np.exp(1j * x), rtol=1e-15)
    assert tmk.angle(z).dtype == np.float64 and tmk.absolute(z.astype(np.complex64)).dtype == np.float32
    assert tmk.exp(np.int32(1)).dtype == np.float64 and tmk.exp(np.float16(1)).dtype == np.float32
    np.testing.assert_array_equal(tmk.linear_frac(x, x, 2.0, 1.0, 1.0, 0.5), (2 * x + 1) / (x + 0.5))
    np.testing.assert_array_equal(tmk.linear_frac(x, x, x, 1.0, 1.0, 0.5), (x * x + 1) / (x + 0.5))
    with pytest.raises(TypeError):
        tmk.exp(np.longdouble(1))
    with pytest.raises(TypeError):
        tmk.erf(1j)


# Every way in which elements can lie in memory gives the bits that contiguous ones give.
N = 3000
LAYOUTS = {
    "contiguous": lambda a: a.copy(),
    "stride 2": lambda a: np.repeat(a, 2)[::2],
    "stride 7": lambda a: np.repeat(a, 7)[::7],
    "backward": lambda a: a[::-1].copy()[::-1],
    "unaligned": lambda a: np.frombuffer(b"\0" + a.tobytes(), dtype=np.uint8)[1:].view(a.dtype),
    "swapped": lambda a: a.astype(a.dtype.newbyteorder()),
    "fields": lambda a: np.rec.fromarrays([a, a]).f1,
}


@pytest.mark.parametrize("dtype", [np.float32, np.float64, np.complex64, np.complex128])
@pytest.mark.parametrize("layout", LAYOUTS)
def test_layouts(layout, dtype):
    rng = np.random.default_rng(3)
    a = (rng.normal(size=N) + 1j * rng.normal(size=N)).astype(dtype) if np.dtype(dtype).kind == "c" else rng.normal(
        size=N).astype(dtype)
    b = np.abs(a).astype(dtype) + 1
    view, second = LAYOUTS[layout](a), LAYOUTS[layout](b)
    want = tmk.exp(a.copy())
    np.testing.assert_array_equal(tmk.exp(view), want)
    out = LAYOUTS[layout](np.zeros_like(a)) if layout != "unaligned" else np.zeros_like(a)
    assert tmk.exp(view, out=out) is out
    np.testing.assert_array_equal(out, want)
    np.testing.assert_array_equal(tmk.power(second, view), tmk.power(b, a))
    np.testing.assert_array_equal(tmk.power(second, dtype(2.5)), tmk.power(b, np.full(N, 2.5, dtype)))
    in_place = a.copy()
    tmk.exp(in_place, out=in_place)
    np.testing.assert_array_equal(in_place, want)
    overlapping = np.zeros(N + 1, dtype)
    overlapping[1:] = a
    tmk.exp(overlapping[1:], out=overlapping[:-1])
    np.testing.assert_array_equal(overlapping[:-1], want)


def test_where_broadcasting_and_reductions():
    a = np.arange(1, 13.0).reshape(3, 4)
    np.testing.assert_allclose(tmk.power(a[:, :1], a[0]), np.power(a[:, :1], a[0]), rtol=1e-15)
    out = np.full_like(a, -1)
    tmk.sqrt(a, out=out, where=a > 5)
    np.testing.assert_array_equal(out, np.where(a > 5, np.sqrt(a), -1))
    for f in ("add", "multiply"):
        ours, numpys = getattr(tmk, f), getattr(np, f)
        np.testing.assert_array_equal(ours.reduce(a, axis=0), numpys.reduce(a, axis=0))
        np.testing.assert_array_equal(ours.accumulate(a, axis=1), numpys.accumulate(a, axis=1))
        np.testing.assert_array_equal(ours.outer(a[0], a[1]), numpys.outer(a[0], a[1]))
    assert tmk.add.reduce(np.arange(5000.0)) == 12497500
    counts = np.zeros(3)
    tmk.add.at(counts, [0, 0, 2], 1.0)
    assert counts.tolist() == [2, 0, 1]
    assert tmk.exp(np.zeros((0, 3))).shape == (0, 3)


FLAGS = [
    ("invalid", "log", -1.0),
    ("divide", "log", 0.0),
    ("over", "exp", 1000.0),
    ("under", "exp", -1000.0),
    ("invalid", "sqrt", -1.0),
    ("divide", "gamma", 0.0),
]


@pytest.mark.parametrize("kind, name, x", FLAGS)
def test_errstate(kind, name, x):
    """A bad element raises its own flag and no other one, whatever its place and layout; good ones raise none."""
    f = getattr(tmk, name)
    ignored = dict.fromkeys(("invalid", "divide", "over", "under"), "ignore")
    good = np.linspace(0.5, 2, 5000)
    for values in (np.array([x]), np.append(good, x), np.append(good, x)[::-1], np.repeat(np.append(good, x), 3)[::3]):
        with np.errstate(**{**dict.fromkeys(ignored, "raise"), kind: "ignore"}):
            f(values)
        with np.errstate(**{**ignored, kind: "raise"}), pytest.raises(FloatingPointError):
            f(values)
    with np.errstate(all="raise"):
        f(good), f(np.array([np.nan]))


def test_bad_elements():
    x = np.linspace(-2, 2, 40001)
    bad = tmk.bad_elements(tmk.log, x)
    assert bad["index"].tolist() == list(range(20001))
    assert set(bad["status"][:-1]) == {"domain"} and bad["status"][-1] == "singularity"
    np.testing.assert_array_equal(bad["a0"], x[:20001])
    pairs = tmk.bad_elements(tmk.low.power, [[0.0], [-8.0]], [-1.0, 0.5])
    assert list(zip(pairs["index"].tolist(), pairs["status"].tolist())) == [(0, "singularity"), (3, "domain")]
    assert len(tmk.bad_elements(tmk.sin_cos, [1.0])) == 0
    with np.errstate(all="raise"):
        tmk.bad_elements(tmk.log, -1.0)
        with pytest.raises(FloatingPointError):
            tmk.log(-1.0)
    for f, args in ((np.log, [1.0]), ("log", [1.0]), (tmk.log, []), (tmk.log, [1.0, 2.0])):
        with pytest.raises(TypeError):
            tmk.bad_elements(f, *args)


def test_threads_give_the_same_bits_and_flags():
    x = np.random.default_rng(4).normal(size=300001)
    want = tmk.sin(x)
    for n in (2, 3, 7):
        with tmk.threads(n):
            np.testing.assert_array_equal(tmk.sin(x), want)
            spoiled = x.copy()
            spoiled[-1] = np.inf
            with np.errstate(invalid="raise"), pytest.raises(FloatingPointError):
                tmk.sin(spoiled)
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        for got in pool.map(lambda _: tmk.sin(x), range(8)):
            np.testing.assert_array_equal(got, want)
    for wrong, kind in ((0, ValueError), (2000, ValueError), (1.5, TypeError), ("2", TypeError), (True, TypeError)):
        with pytest.raises(kind, match="n is"):
            tmk.threads(wrong)


def _sum_of_sines(x):
    with tmk.threads(2):
        return float(np.sum(tmk.sin(x)))


@pytest.mark.parametrize("method", ["fork", "forkserver", "spawn"])
@pytest.mark.filterwarnings("ignore:.*fork.*:DeprecationWarning")
def test_children_compute_after_the_parent_had_threads(method):
    x = np.linspace(0, 100, 200000)
    want = _sum_of_sines(x)
    with multiprocessing.get_context(method).Pool(1) as pool:
        assert pool.apply_async(_sum_of_sines, (x,)).get(timeout=60) == want


def test_tiers():
    before = tmk.tier()
    x = np.linspace(-3, 3, 1001)
    assert tmk.select_tier("W7") == "W7" == tmk.tier()
    np.testing.assert_allclose(tmk.sinh(x), np.sinh(x), rtol=1e-15)
    for wrong in ("V5", "", "w7"):
        with pytest.raises(ValueError, match="name"):
            tmk.select_tier(wrong)
    assert tmk.tier() == "W7"
    assert tmk.select_tier(before) == before


def test_names_texts_and_pickles():
    for functions in (tmk, tmk.low, tmk.fast):
        for name, f in functions._ufuncs.items():
            assert getattr(functions, name) is f
            assert pickle.loads(pickle.dumps(f)) is f
            assert "Errors measured" in f.__doc__ and f.__doc__.split("\n\n")[1].strip(), name
    assert "float64: 0." in tmk.exp.__doc__ and "correct bits" in tmk.fast.exp.__doc__
    assert tmk.asin is tmk.arcsin and tmk.lgamma is tmk.gammaln
