# SPDX-License-Identifier: Apache-2.0
"""Splines in one dimension, under the names and signatures that SciPy has for them.

`x` is finite and strictly ascending, `y` finite with as many values along `axis`; float32 stays float32. A spline is
called as s(sites, nu=0): the derivative of order nu, in an array of the shape of y with that of the sites in the place of
`axis`. It never changes but by `extrapolation`, so that threads may share it; `tmk.threads` is for its calls, too.

What holds outside, `extrapolate`, is True or "polynomial" (the outermost polynomial), "constant" (the value at the end),
"linear" (the tangent there), "periodic", False or "nan", or a pair of these for the left and the right side.
"""

import numpy as _np

from . import _core

__all__ = [
    "Akima1DInterpolator",
    "BesselInterpolator",
    "CubicHermiteSpline",
    "CubicSpline",
    "HymanInterpolator",
    "LinearInterpolator",
    "QuadraticSpline",
    "StepInterpolator",
    "SubbotinSpline",
]

_RULES = {"polynomial": 0, "constant": 1, "linear": 2, "periodic": 3, "nan": 4, True: 0, False: 4, None: 0}
_ENDS = {"natural": (2, 0.0), "clamped": (1, 0.0)}


def _real(a, name):
    a = _np.asarray(a)
    if a.dtype.kind not in "fiub" or a.dtype.itemsize > 8:
        raise TypeError(f"{name} has elements of type {a.dtype}, want float64, float32 or integers")
    return a


def _rules(extrapolate):
    pair = extrapolate if isinstance(extrapolate, (tuple, list)) else (extrapolate, extrapolate)
    if len(pair) != 2 or any(not isinstance(rule, (str, bool, _np.bool_, type(None))) or rule not in _RULES for rule in pair):
        raise ValueError(f"extrapolate is {extrapolate!r}, want one of {', '.join(map(repr, _RULES))}, or a pair of them")
    return tuple(_RULES[rule] for rule in pair)


def _end(condition, name):
    """(order, value) of a derivative."""
    if isinstance(condition, str) and condition in _ENDS:
        return _ENDS[condition]
    if isinstance(condition, (tuple, list)) and len(condition) == 2 and condition[0] in (1, 2):
        if _np.ndim(condition[1]):
            raise ValueError(f"{name} has a value for each function, want one for all")
        return int(condition[0]), float(condition[1])
    raise ValueError(f"{name} is {condition!r}, want 'natural', 'clamped', (1, value) or (2, value)")


class _Spline:
    """A spline of one or many functions."""

    def __init__(self, family, x, y, axis, extrapolate, left=None, right=None, slopes=None):
        x, y = _real(x, "x"), _real(y, "y")
        if x.ndim != 1:
            raise ValueError(f"x has {x.ndim} dimensions, want 1")
        if y.ndim == 0 or y.shape[axis] != x.size:
            raise ValueError(f"y has the shape {y.shape}, want {x.size} values along axis {axis}")
        self.axis = axis % y.ndim
        self._dtype = _np.dtype(_np.float32 if y.dtype == _np.float32 else _np.float64)
        self.x = _np.array(x, dtype=self._dtype)
        self.x.flags.writeable = False
        first = _np.moveaxis(y, self.axis, -1)
        self._rest = first.shape[:-1]
        self._family, self._left, self._right = family, left, right
        self._y = _np.ascontiguousarray(first, dtype=self._dtype).reshape(-1, x.size)
        if slopes is not None:
            slopes = _np.moveaxis(_real(slopes, "dydx"), self.axis, -1)
            if slopes.shape != first.shape:
                raise ValueError("dydx has another shape than y")
            slopes = _np.ascontiguousarray(slopes, dtype=self._dtype).reshape(-1, x.size)
        self._slopes = slopes
        self._rule = _rules(extrapolate)
        self._build()

    def _build(self):
        module = _core.interpolate
        make = (module.Spline32 if self._dtype == _np.float32 else module.Spline64).make
        self._core = make(self._family, self.x, self._y, self._left, self._right, self._slopes)
        self._core.extrapolate(False, self._rule[0])
        self._core.extrapolate(True, self._rule[1])

    @property
    def extrapolate(self):
        """What holds outside: a word for the left and one for the right side."""
        words = ("polynomial", "constant", "linear", "periodic", "nan")
        return tuple(words[rule] for rule in self._rule)

    def __call__(self, x, nu=0, *, out=None):
        """The derivative of order `nu` (0 to 15) at sites of any shape. `out` has the result's shape and type."""
        sites = _np.asarray(_real(x, "x"), dtype=self._dtype, order="C")
        shape = self._rest[: self.axis] + sites.shape + self._rest[self.axis :]
        if out is not None and (out.shape != shape or out.dtype != self._dtype or not out.flags.writeable):
            raise ValueError(f"out has the shape {out.shape} and type {out.dtype}, want {shape} and {self._dtype}")
        direct = out is not None and self.axis == 0 and out.flags.c_contiguous and out.flags.aligned
        flat = out if direct else _np.empty(sites.shape + self._rest, self._dtype)
        self._core.evaluate(sites.reshape(-1), int(nu), flat.reshape(-1), _core.threads())
        if direct:
            return out
        places = range(sites.ndim)
        result = _np.moveaxis(flat, places, [self.axis + k for k in places]) if self.axis else flat
        if out is None:
            return result
        out[...] = result
        return out

    def integrate(self, a, b):
        """The integral from a to b, numbers or arrays of one shape, which take the place of `axis`."""
        a, b = _np.broadcast_arrays(_real(a, "a"), _real(b, "b"))
        lo, hi = (_np.ascontiguousarray(v, dtype=self._dtype).reshape(-1) for v in (a, b))
        found = self._core.integrate(lo, hi).reshape(self._rest + a.shape)
        source = range(len(self._rest), len(self._rest) + a.ndim)
        return _np.moveaxis(found, source, [self.axis + k for k in range(a.ndim)])[()]

    def to_ppoly(self):
        """The spline as scipy.interpolate.PPoly, which knows only polynomials and NaN outside."""
        from scipy.interpolate import PPoly

        cells = self.x.size - 1
        c = self._core.coefficients().reshape(len(self._y), cells, -1)  # ascending powers
        c = _np.moveaxis(c[:, :, ::-1], (2, 1), (0, 1)).reshape((c.shape[2], cells, *self._rest))
        rule = {(0, 0): True, (4, 4): False, (3, 3): "periodic"}.get(self._rule)
        if rule is None:
            raise ValueError(f"extrapolate is {self.extrapolate}, which PPoly does not have")
        c = _np.moveaxis(c, (0, 1), (self.axis, self.axis + 1))  # where PPoly has them
        return PPoly(c.astype(_np.float64), self.x.astype(_np.float64), extrapolate=rule, axis=self.axis)

    def derivative(self, nu=1):
        """The derivative as a PPoly of SciPy's."""
        return self.to_ppoly().derivative(nu)

    def antiderivative(self, nu=1):
        """The antiderivative that is 0 at x[0], as a PPoly of SciPy's."""
        return self.to_ppoly().antiderivative(nu)

    def roots(self, discontinuity=True, extrapolate=None):
        """Where the spline is 0, as SciPy's PPoly.roots gives it."""
        return self.to_ppoly().roots(discontinuity, extrapolate)

    def solve(self, y=0.0, discontinuity=True, extrapolate=None):
        """Where the spline has the value y, as SciPy's PPoly.solve gives it."""
        return self.to_ppoly().solve(y, discontinuity, extrapolate)

    def __getstate__(self):
        return {name: value for name, value in self.__dict__.items() if name != "_core"}

    def __setstate__(self, state):
        self.__dict__.update(state)
        self._build()

    def __repr__(self):
        return f"{type(self).__name__}: {len(self._y)} functions, {self.x.size} points"


class CubicSpline(_Spline):
    """The cubic spline, twice continuously differentiable.

    `bc_type` is "not-a-knot", "periodic", "natural", "clamped", or a pair for the left and right end: "natural", "clamped",
    or (1, slope), (2, second derivative). Two points give a straight line and three without a knot a parabola.
    """

    def __init__(self, x, y, axis=0, bc_type="not-a-knot", extrapolate=None):
        if isinstance(bc_type, str) and bc_type in ("not-a-knot", "periodic"):
            family = "linear" if len(x) == 2 and bc_type == "not-a-knot" else bc_type.replace("-", "_")
            if extrapolate is None and bc_type == "periodic":
                extrapolate = "periodic"
            return super().__init__(family, x, y, axis, extrapolate)
        pair = (bc_type, bc_type) if isinstance(bc_type, str) else tuple(bc_type)
        if len(pair) != 2:
            raise ValueError(f"bc_type is {bc_type!r}, want a word or a pair")
        super().__init__("natural", x, y, axis, extrapolate, *(_end(c, f"bc_type[{k}]") for k, c in enumerate(pair)))


class CubicHermiteSpline(_Spline):
    """Cubics of the first derivatives given at all points."""

    def __init__(self, x, y, dydx, axis=0, extrapolate=None):
        super().__init__("hermite", x, y, axis, extrapolate, slopes=dydx)


def _family(name, family, text):
    def __init__(self, x, y, axis=0, extrapolate=None):
        _Spline.__init__(self, family, x, y, axis, extrapolate)

    return type(name, (_Spline,), {"__init__": __init__, "__doc__": text, "__module__": __name__})


Akima1DInterpolator = _family(
    "Akima1DInterpolator",
    "akima",
    "Slopes by Akima (1970), without overshoot next to straight parts. 5 points.",
)
HymanInterpolator = _family(
    "HymanInterpolator",
    "hyman",
    "Bessel's slopes, limited so that the spline is monotone wherever the points are (Hyman, 1983). 4 points.",
)
BesselInterpolator = _family(
    "BesselInterpolator",
    "bessel",
    "Each slope is that of the parabola through a point and its neighbours. 4 points.",
)
LinearInterpolator = _family("LinearInterpolator", "linear", "Straight lines between points.")
QuadraticSpline = _family(
    "QuadraticSpline",
    "quadratic",
    "Parabolas with a continuous slope, whose first is through the first three points.",
)
SubbotinSpline = _family(
    "SubbotinSpline",
    "subbotin",
    "Parabolas with a continuous slope and knots midway between the points (Subbotin, 1967). 3 points.",
)


class StepInterpolator(_Spline):
    """The value of the nearest point to the left, or with side="right" to the right, of a site."""

    def __init__(self, x, y, axis=0, extrapolate=None, *, side="left"):
        if side not in ("left", "right"):
            raise ValueError(f"side is {side!r}, want 'left' or 'right'")
        super().__init__(f"step_{side}", x, y, axis, extrapolate)
