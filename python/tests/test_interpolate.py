# SPDX-License-Identifier: Apache-2.0
"""Splines compared with SciPy's, axes and shapes, rules outside, pickles, refusals."""

import pickle

import numpy as np
import pytest
import scipy.interpolate as si

import tmk
from tmk import interpolate as ti

RNG = np.random.default_rng(1)
X = np.cumsum(RNG.uniform(0.1, 1, 40))
Y = RNG.normal(size=(40, 2, 3))
SITES = np.linspace(X[0] - 0.5, X[-1] + 0.5, 301)

PAIRS = [
    (ti.CubicSpline, si.CubicSpline, {}),
    (ti.CubicSpline, si.CubicSpline, dict(bc_type="natural")),
    (ti.CubicSpline, si.CubicSpline, dict(bc_type="clamped")),
    (ti.CubicSpline, si.CubicSpline, dict(bc_type=("natural", "clamped"))),
    (ti.CubicSpline, si.CubicSpline, dict(bc_type="periodic")),
    (ti.Akima1DInterpolator, si.Akima1DInterpolator, dict(extrapolate=True)),
]


@pytest.mark.parametrize("ours, theirs, options", PAIRS, ids=[f"{p[0].__name__}-{k}" for k, p in enumerate(PAIRS)])
def test_splines_are_those_of_scipy(ours, theirs, options):
    for axis in (0, 1, -1):
        y = np.moveaxis(Y, 0, axis).copy()
        if options.get("bc_type") == "periodic":
            np.moveaxis(y, axis, 0)[-1] = np.moveaxis(y, axis, 0)[0]
        a, b = ours(X, y, axis=axis, **options), theirs(X, y, axis=axis, **options)
        for nu in (0, 1, 2):
            want = b(SITES, nu)
            np.testing.assert_allclose(a(SITES, nu), want, rtol=1e-9, atol=1e-9 * np.abs(want).max())
        assert a(1.5).shape == b(1.5).shape and a(SITES.reshape(7, 43)).shape == b(SITES.reshape(7, 43)).shape
        np.testing.assert_allclose(a.integrate(X[1], X[-2]), b.integrate(X[1], X[-2]), rtol=1e-10, atol=1e-10)
        np.testing.assert_allclose(a.to_ppoly()(SITES), b(SITES), rtol=1e-9, atol=1e-9)
        np.testing.assert_allclose(a.derivative()(SITES), b(SITES, 1), rtol=1e-8, atol=1e-8)
    s = ours(X, np.append(Y[:-1, 0, 0], Y[0, 0, 0]), **options)
    roots = s.roots(extrapolate=False)
    assert roots.size and np.all(np.abs(s(roots)) < 1e-12)
    np.testing.assert_allclose(s.antiderivative()(X[7]), s.integrate(X[0], X[7]), rtol=1e-12)


def test_other_families_pass_through_the_points():
    y = Y[:, 0, 0]
    for spline in (
        ti.HymanInterpolator(X, y),
        ti.BesselInterpolator(X, y),
        ti.LinearInterpolator(X, y),
        ti.QuadraticSpline(X, y),
        ti.SubbotinSpline(X, y),
        ti.CubicHermiteSpline(X, y, np.zeros(40)),
        ti.StepInterpolator(X, y),
        ti.StepInterpolator(X, y, side="right"),
    ):
        np.testing.assert_allclose(spline(X), y, rtol=1e-12, atol=1e-13)
    np.testing.assert_allclose(ti.LinearInterpolator(X, y)(SITES[20:280]), np.interp(SITES[20:280], X, y), atol=1e-14)
    np.testing.assert_allclose(
        ti.CubicHermiteSpline(X, Y, 2 * Y)(SITES), si.CubicHermiteSpline(X, Y, 2 * Y)(SITES), rtol=1e-10, atol=1e-10
    )
    ascending = np.sort(y)
    assert np.all(np.diff(ti.HymanInterpolator(X, ascending)(np.linspace(X[0], X[-1], 2000))) >= -1e-15)
    assert ti.CubicSpline([0, 1], [2.0, 3.0])(4.0) == 6.0
    ends = dict(bc_type=((1, 0.5), (2, -3.0)))
    np.testing.assert_allclose(ti.CubicSpline(X, y, **ends)(SITES), si.CubicSpline(X, y, **ends)(SITES), rtol=1e-9)


def test_rules_outside():
    x, y = [0.0, 1.0, 2.0, 3.0], [0.0, 1.0, 4.0, 9.0]
    for rule, want in {
        "polynomial": 16.0,
        True: 16.0,
        "constant": 9.0,
        "linear": 15.0,
        "periodic": 1.0,
        "nan": np.nan,
        False: np.nan,
    }.items():
        np.testing.assert_allclose(ti.CubicSpline(x, y, extrapolate=rule)(4.0), want, rtol=1e-13)
    mixed = ti.CubicSpline(x, y, extrapolate=("constant", "nan"))
    np.testing.assert_array_equal(mixed([-1.0, 4.0]), [0.0, np.nan])
    assert mixed.extrapolate == ("constant", "nan")
    with pytest.raises(ValueError, match="PPoly"):
        mixed.to_ppoly()


def test_types_outputs_threads_and_pickles():
    s = ti.CubicSpline(X, Y.astype(np.float32))
    assert s(SITES).dtype == np.float32 and s(1).shape == (2, 3)
    s = ti.CubicSpline(X, Y, axis=0)
    want = s(SITES)
    out = np.empty_like(want)
    assert s(SITES, out=out) is out
    np.testing.assert_array_equal(out, want)
    view = np.empty((301, 3, 2)).transpose(0, 2, 1)
    s(SITES, out=view)
    np.testing.assert_array_equal(view, want)
    with tmk.threads(2):
        many = np.linspace(X[0], X[-1], 200_000)
        threaded = s(many)
    np.testing.assert_array_equal(threaded, s(many))
    twin = pickle.loads(pickle.dumps(ti.CubicSpline(X, Y, extrapolate=("linear", "nan"))))
    np.testing.assert_array_equal(twin(SITES), ti.CubicSpline(X, Y, extrapolate=("linear", "nan"))(SITES))
    assert "6 functions, 40 points" in repr(twin)


REFUSALS = [
    (lambda: ti.CubicSpline([0, 2, 1], [1, 2, 3]), tmk.error, r"x\[2\]"),
    (lambda: ti.CubicSpline([0, 1, 2], [1, np.nan, 3]), tmk.error, "y"),
    (lambda: ti.CubicSpline([0, 1, 2], [1, 2]), ValueError, r"y has the shape \(2,\)"),
    (lambda: ti.CubicSpline([[0, 1]], [1, 2]), ValueError, "x has 2 dimensions"),
    (lambda: ti.CubicSpline([0, 1, 2], [1j, 2, 3]), TypeError, "y has elements of type complex128"),
    (lambda: ti.CubicSpline(X, Y, bc_type="knot"), ValueError, r"bc_type\[0\] is 'knot'"),
    (lambda: ti.CubicSpline(X, Y, bc_type=((3, 0), "natural")), ValueError, r"bc_type\[0\]"),
    (lambda: ti.CubicSpline(X, Y, extrapolate="flat"), ValueError, "extrapolate is 'flat'"),
    (lambda: ti.CubicSpline(X, Y, extrapolate=(True, True, True)), ValueError, "extrapolate"),
    (lambda: ti.Akima1DInterpolator([0, 1, 2], [1, 2, 3]), tmk.error, "x"),
    (lambda: ti.CubicSpline(X, Y)(SITES, 16), tmk.error, "16"),
    (lambda: ti.CubicSpline(X, Y)(SITES, out=np.empty(3)), ValueError, "out has the shape"),
    (lambda: ti.StepInterpolator(X, Y, side="middle"), ValueError, "side is 'middle'"),
]


@pytest.mark.parametrize("call, kind, text", REFUSALS)
def test_refusals(call, kind, text):
    with pytest.raises(kind, match=text):
        call()
