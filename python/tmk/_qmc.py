# SPDX-License-Identifier: Apache-2.0
"""Quasi-random points with the interface of SciPy's engines, for tmk.random."""

from __future__ import annotations

import operator as _operator
import sys as _sys
from typing import TYPE_CHECKING

import numpy as _np

from . import _core

if TYPE_CHECKING:
    from typing import TypeAlias

    from numpy.typing import ArrayLike as _ArrayLike, NDArray as _NDArray
    from typing_extensions import Self as _Self

    _Points: TypeAlias = _NDArray[_np.float64]
    _Seed: TypeAlias = int | list[int] | _np.random.SeedSequence | _np.random.Generator | None

_random = _core.random
_LIMIT = 2**32  # points, by the bits of a coordinate


def _whole(value, name, least, most=None):
    try:
        n = _operator.index(value)
    except TypeError:
        raise TypeError(f"{name} is {value!r}, want a whole number") from None
    if n < least or (most is not None and n > most):
        raise ValueError(f"{name} is {n}, want {least} {'or more' if most is None else f'to {most}'}")
    return n


class QuasiRandom:
    """What `Sobol` and `Niederreiter` share. Its parameters, attributes and methods are those of `scipy.stats.qmc.QMCEngine`."""

    _most = 0  # dimensions

    def __init__(
        self, d: int, *, scramble: bool = True, rng: _Seed = None, seed: _Seed = None, optimization: None = None
    ) -> None:
        if rng is not None and seed is not None:
            raise TypeError("rng and seed are two names of one argument")
        if optimization is not None:
            raise ValueError(f"optimization is {optimization!r}, want None: moved points are no longer balanced")
        self.d = _whole(d, "d", 1, self._most)
        self.scramble = bool(scramble)
        given = seed if rng is None else rng
        self.rng = given.spawn(1)[0] if isinstance(given, _np.random.Generator) else _np.random.default_rng(given)
        self._key = int(self.rng.integers(2**64, dtype=_np.uint64))
        self.num_generated = 0
        self._optimization = None

    if not TYPE_CHECKING:  # which knows no __class__ but the type's own

        @property
        def __class__(self):
            # isinstance asks for this. SciPy's abstract class learns of ours when it does: to import scipy.stats for that
            # purpose takes longer than most programs draw, and which of the two is imported first must not matter.
            qmc = getattr(_sys.modules.get("scipy.stats"), "qmc", None)
            if hasattr(qmc, "QMCEngine"):
                qmc.QMCEngine.register(QuasiRandom)
            return type(self)

    def random(self, n: int = 1, *, workers: int = 1) -> _Points:
        """The next n points, of shape (n, d), at least 0 and below 1. `workers` is without effect."""
        n = self._count(n)
        points = self._points(self.num_generated, n) if n else _np.empty((0, self.d))
        self.num_generated += n
        return points

    def random_base2(self, m: int) -> _Points:
        """The next 2**m points. Refused where so many do not end at a power of two, since they are not balanced."""
        n = 2 ** _whole(m, "m", 0, 32)
        total = self.num_generated + n
        if total & (total - 1):
            raise ValueError(f"m is {m} after {self.num_generated} points: balanced sets end at a power of two")
        return self.random(n)

    def integers(
        self,
        l_bounds: _ArrayLike,
        *,
        u_bounds: _ArrayLike | None = None,
        n: int = 1,
        endpoint: bool = False,
        workers: int = 1,
    ) -> _NDArray[_np.int64]:
        """The next n points as integers from l_bounds to u_bounds, which `endpoint` includes, or from 0 to l_bounds.

        Bounds are numbers or have one for each dimension. The shape is (n, d), the type int64.
        """
        low, high = (0, l_bounds) if u_bounds is None else (l_bounds, u_bounds)
        low, high = _np.asarray(low), _np.asarray(high)
        for name, bounds in (("l_bounds", low), ("u_bounds", high)):
            if bounds.dtype.kind not in "iu":
                raise ValueError(f"{name} is of {bounds.dtype}, want integers")
            if bounds.shape not in ((), (1,), (self.d,)):
                raise ValueError(f"{name} has the shape {bounds.shape}, want one number or {self.d}")
        high = high + bool(endpoint)
        if _np.any(low >= high):
            raise ValueError(f"l_bounds is {low.tolist()}, want less than u_bounds, {high.tolist()}")
        return low + _np.floor(self.random(n) * (high - low)).astype(_np.int64)

    def fast_forward(self, n: int) -> _Self:
        """Leave n points out. Returns self."""
        self.num_generated += self._count(n)
        return self

    def reset(self) -> _Self:
        """Begin with the first point again, under the same scrambling. Returns self."""
        self.num_generated = 0
        return self

    def _points(self, first: int, n: int) -> _Points:
        """Points first, first + 1, ..., of which there is one at least."""
        raise NotImplementedError

    def _count(self, n):
        return _whole(n, "n", 0, _LIMIT - self.num_generated)

    def __repr__(self):
        return f"{type(self).__name__}({self.d}, scramble={self.scramble}), {self.num_generated} points drawn"


_TEXT = """Parameters
    ----------
    d : int
        Dimensions, 1 to {most}.
    scramble : bool
        Owen's nested uniform scrambling: each bit of a coordinate is turned by chance depending on those above it. Each
        point is then uniform over the cube, so that means are unbiased and several seeds give a standard error, sets stay
        balanced, and for smooth integrands the error falls like n^(-3/2). Without it points are the sequence's own.
    rng, seed : int, numpy.random.SeedSequence, numpy.random.Generator, optional
        Of the scrambling: either name; of a Generator a child is used; None takes the system's entropy.
    optimization : None
        SciPy's name, for its callers; there is no other choice.

    Attributes
    ----------
    d, num_generated : int
    scramble : bool
    rng : numpy.random.Generator

    Notes
    -----
    Coordinates have 32 bits and there are 2**32 points. The first one is the origin, which belongs to the balance of the
    sequence: draw 2**m points, and leave none out at the beginning (A. B. Owen, On dropping the first Sobol' point, 2022).
    Scrambled coordinates are in the middle between two such numbers, never 0 and never 1. Points do not depend on how they
    are cut into calls. An engine is accepted where SciPy wants a `scipy.stats.qmc.QMCEngine`; it is used by one thread at
    a time, and pickles.
    """


class Sobol(QuasiRandom):
    """Sobol's points in the order of the Gray code, with the direction numbers of S. Joe and F. Y. Kuo (2008).

    {text}
    Examples
    --------
    >>> x = tmk.random.Sobol(5, rng=7).random_base2(10)
    """

    _most = 1111

    def _points(self, first, n):
        points = _np.empty((n, self.d))
        _random.sobol_points(points.reshape(-1), self.d, self.scramble, self._key, first)
        return points


class Niederreiter(QuasiRandom):
    """Niederreiter's points in base 2 in the order of the Gray code (P. Bratley, B. L. Fox, H. Niederreiter, 1992).

    Dimension i takes the i-th irreducible polynomial over GF(2), of degree 1 to 11. Where that has the degree e, 2**m points
    are balanced in intervals of 2**-j for multiples j of e; those of `Sobol` are for every j, which makes it the first choice.

    {text}
    Examples
    --------
    >>> x = tmk.random.Niederreiter(5, rng=7).random_base2(10)
    """

    _most = 318
    _block = 2**16  # words that are scrambled together

    def _points(self, first, n):
        points = _np.empty((n, self.d))
        stream = _random.Stream.niederreiter(self.d)
        stream.skip(max(first - 1, 0) * self.d)  # the stream begins with the point after the origin
        rows = min(n, max(1, self._block // self.d))
        words = _np.zeros(-(-rows * self.d // 16) * 16, _np.uint32)
        keys = _np.resize(_np.random.SeedSequence(self._key).generate_state(self.d), words.size)
        for at in range(0, n, rows):
            block = points[at : at + rows].reshape(-1)
            origin = 0 if first + at else self.d
            block[:origin] = 2.0**-33
            stream.fill64(block[origin:], "uniform", [0.0, 1.0], 0, 1)  # words and a half, times 2^-32
            if self.scramble:
                words[: block.size] = block * 2.0**32
                _random.scramble(words, keys)
                block[:] = (words[: block.size] + 0.5) * 2.0**-32
            else:
                block -= 2.0**-33
        return points


for _engine in (Sobol, Niederreiter):
    _engine.__doc__ = (_engine.__doc__ or "").format(text=_TEXT.format(most=_engine._most))
    _engine.__module__ = "tmk.random"
