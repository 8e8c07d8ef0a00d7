# SPDX-License-Identifier: Apache-2.0
"""Random streams: jump-ahead, children and saved states for every generator, and laws in bulk.

`Stream` has the library's own laws, by wide registers and on several threads, with the same numbers for any number of
threads. The bit generators (`MT19937`, `Philox4x32x10`, ...) are NumPy's `BitGenerator` in every respect: they serve
`numpy.random.Generator`, SciPy's `random_state` and whatever else takes one. `Generator` is NumPy's with `random`, `bytes`
and full-range `integers` in bulk: the same numbers, faster. `Sobol` and `Niederreiter` are engines of quasi-random points
with the interface of those of `scipy.stats.qmc`.

>>> rng = tmk.random.default_rng(42)
>>> s = tmk.random.Stream("philox4x32x10", seed=7)
>>> x = s.normal(10.0, 2.0, size=1_000_000, threads=2)
"""

import inspect as _inspect
import operator as _operator
import threading as _threading

import numpy as _np

from . import _core
from ._qmc import Niederreiter, Sobol

_random = _core.random

__all__ = ["Generator", "Niederreiter", "Sobol", "Stream", "default_rng"]

_KINDS = {
    "mcg31m1": 0x100000,
    "r250": 0x200000,
    "mrg32k3a": 0x300000,
    "mcg59": 0x400000,
    "wh": 0x500000,
    "sobol": 0x600000,
    "niederreiter": 0x700000,
    "mt19937": 0x800000,
    "mt2203": 0x900000,
    "sfmt19937": 0xD00000,
    "hardware": 0xE00000,
    "ars5": 0xF00000,
    "philox4x32x10": 0x1000000,
}
_NAMES = {number: name for name, number in _KINDS.items()}
_METHODS = {"pairs": 0, "kept_pairs": 1, "inversion": 2, "ziggurat": 3}


def _words(value, name):
    """The 32-bit words of a number, lowest first, or of a list of numbers one after the other."""
    if _np.ndim(value):
        return [word for item in value for word in _words(item, name)]
    try:
        n = _operator.index(value)
    except TypeError:
        raise TypeError(f"{name} is {value!r}, want a whole number or a list of them") from None
    if n < 0:
        raise ValueError(f"{name} is {n}, want 0 or more")
    words = [n & 0xFFFFFFFF]
    while n := n >> 32:
        words.append(n & 0xFFFFFFFF)
    return words


def _seeded(kind, seed, set, raw):
    if seed is None and not raw:
        seed = _np.random.SeedSequence()
    if isinstance(seed, _np.random.SeedSequence):
        return _random.Stream(kind, _words(seed.entropy, "seed"), list(map(int, seed.spawn_key)), set, False)
    return _random.Stream(kind, [] if seed is None else _words(seed, "seed"), [], set, raw)


def _shape(size):
    return () if size is None else size if isinstance(size, tuple) else (size,)


class Stream:
    """A generator with its state, and the laws that it can be asked for.

    `kind` is one of {kinds}. A `seed` (a number, a list of numbers, a `numpy.random.SeedSequence`, or the system's entropy
    by None) is hashed as NumPy does it, with `raw=True` its words go to the generator as they are. `set` selects a member
    of the families wh (273) and mt2203 (6024); for sobol and niederreiter `seed` is the number of dimensions.

    Laws take `size`, or a contiguous `out`, and `threads`; the numbers are the same for any number of threads, and 7 numbers
    and then 9 are what 16 would be. Continuous laws take `dtype` float64 or float32; discrete ones give int32.
    """

    def __init__(self, kind="philox4x32x10", seed=None, *, set=0, raw=False):
        if kind not in _KINDS:
            raise ValueError(f"kind is {kind!r}, want one of {', '.join(_KINDS)}")
        if kind in ("sobol", "niederreiter"):
            self._core = getattr(_random.Stream, kind)(1 if seed is None else _operator.index(seed))
        else:
            self._core = _seeded(_KINDS[kind], seed, set, raw)
        self._lock = _threading.RLock()

    @classmethod
    def _of(cls, core):
        self = cls.__new__(cls)
        self._core, self._lock = core, _threading.RLock()
        return self

    kind = property(lambda self: _NAMES[self._core.kind()])
    set = property(lambda self: self._core.set())

    def _fill(self, law, parameters, size, out, dtype, threads, method=0):
        if out is None:
            out = _np.empty(_shape(size), dtype)
        elif not isinstance(out, _np.ndarray):
            raise TypeError(f"out is a {type(out).__name__}, want an array")
        elif size is not None and _shape(size) != out.shape:
            raise ValueError(f"size is {size!r}, and out has the shape {out.shape}")
        elif out.dtype != dtype or not out.flags.c_contiguous or not out.flags.writeable or not out.flags.aligned:
            raise ValueError(f"out is not a contiguous, writeable array of {_np.dtype(dtype)}")
        fill = {"f8": self._core.fill64, "f4": self._core.fill32, "i4": self._core.fill_int}[out.dtype.str[1:]]
        threads = _core.threads() if threads is None else threads
        with self._lock:
            fill(out.reshape(-1), law, parameters, *([method] if out.dtype.kind == "f" else []), threads)
        return out if out.shape or size is not None else out[()]

    def bits(self, size=None, *, dtype=_np.uint32):
        """Random words, uint32 or uint64."""
        out = _np.empty(_shape(size), dtype)
        if out.dtype not in (_np.uint32, _np.uint64):
            raise TypeError(f"dtype is {out.dtype}, want uint32 or uint64")
        with self._lock:
            (self._core.bits32 if out.dtype == _np.uint32 else self._core.bits64)(out.reshape(-1))
        return out if size is not None else out[()]

    def permutation(self, n):
        """0 to n - 1 in random order."""
        with self._lock:
            return self._core.permutation(n)

    def skip(self, count):
        """Leave `count` elements of the generator out."""
        with self._lock:
            self._core.skip(count)

    def jump(self):
        """Leave 2**64 elements out."""
        with self._lock:
            self._core.jump()

    def leapfrog(self, k, parts):
        """Keep elements k, k + parts, k + 2 parts, ... from now on; for mcg31m1, mcg59 and wh."""
        with self._lock:
            self._core.leapfrog(k, parts)

    def spawn(self, n):
        """n streams that are unrelated to this one and to each other, the next children of its seed."""
        with self._lock:
            return [Stream._of(core) for core in self._core.spawn(n)]

    def copy(self):
        """A stream that continues on its own from here."""
        with self._lock:
            return Stream._of(self._core.copy())

    __copy__ = copy

    def __deepcopy__(self, memo):
        return self.copy()

    def save(self):
        """The state as bytes that are the same on every machine, with a hash at their end."""
        with self._lock:
            return self._core.save()

    @classmethod
    def load(cls, image):
        """A stream from what `save` gave. Raises `tmk.error` for one that is damaged."""
        return cls._of(_random.Stream.load(bytes(image)))

    def __reduce__(self):
        return Stream.load, (self.save(),)

    def __repr__(self):
        return f"Stream({self.kind!r}" + (f", set={self.set})" if self.kind in ("wh", "mt2203") else ")")


Stream.__doc__ = (Stream.__doc__ or "").format(kinds=", ".join(_KINDS))

# The laws: parameters with their defaults, and what the law is. Scales, rates and shapes are positive.
_CONTINUOUS = {
    "uniform": ({"low": 0.0, "high": 1.0}, "Between low and high, neither of which occurs: 53 bits, of singles 24."),
    "exponential": ({"rate": 1.0, "location": 0.0}, "Density rate exp(-rate (x - location))."),
    "cauchy": ({"location": 0.0, "scale": 1.0}, "location + scale tan(pi (u - 1/2))."),
    "gumbel": ({"location": 0.0, "scale": 1.0}, "Of the greatest of many: location - scale log(-log(u))."),
    "laplace": ({"location": 0.0, "scale": 1.0}, "Density exp(-|x - location| / scale) / (2 scale)."),
    "rayleigh": ({"scale": 1.0, "location": 0.0}, "location + scale sqrt(-2 log(u))."),
    "weibull": ({"shape": 1.0, "scale": 1.0, "location": 0.0}, "location + scale (-log(u)) ** (1 / shape)."),
    "normal": ({"mean": 0.0, "sd": 1.0}, "The normal law, by `method` ziggurat, inversion, pairs or kept_pairs."),
    "lognormal": (
        {"log_mean": 0.0, "log_sd": 1.0, "location": 0.0, "scale": 1.0},
        "location + scale exp(z), z normal; `method` inversion or kept_pairs.",
    ),
    "gamma": ({"shape": 1.0, "scale": 1.0, "location": 0.0}, "location + scale x, x of density x^(shape - 1) exp(-x)."),
    "chisquare": ({"degrees": 1.0}, "The sum of `degrees` squares of standard normals, for any positive number."),
    "beta": ({"a": 1.0, "b": 1.0}, "Density x^(a - 1) (1 - x)^(b - 1)."),
    "standard_t": ({"degrees": 1.0, "location": 0.0, "scale": 1.0}, "Student's t, times scale, plus location."),
}
_DISCRETE = {
    "integers": ({"low": 0, "high": 1}, "low to high, both included, without bias."),
    "bernoulli": ({"p": 0.5}, "1 with probability p, else 0."),
    "geometric": ({"p": 0.5}, "Failures before the first success."),
    "poisson": ({"mean": 1.0}, "Events of rate 1 in a time of `mean`."),
    "binomial": ({"trials": 1, "p": 0.5}, "Successes among `trials`."),
    "negative_binomial": ({"successes": 1.0, "p": 0.5}, "Failures before the success number `successes`."),
    "hypergeometric": (
        {"population": 1, "sample": 1, "marked": 1},
        "Marked members in a sample that is drawn without replacement.",
    ),
}
_BY_METHOD = {"normal": "ziggurat", "lognormal": "inversion"}


def _number(value, name, default):
    if isinstance(default, int):
        try:
            n = _operator.index(value)
        except TypeError:
            raise TypeError(f"{name} is {value!r}, want a whole number") from None
        if not -(2**31) <= n < 2**31:
            raise ValueError(f"{name} is {n}, want an integer of 32 bits")
        return float(n)
    try:
        return float(value)
    except TypeError:
        raise TypeError(f"{name} is {value!r}, want a number") from None


def _method_of(law, defaults, text, discrete):
    """The method of Stream that draws from a law."""
    kinds = _inspect.Parameter
    chosen = _BY_METHOD.get(law)
    options = {"size": None, "out": None, **({} if discrete else {"dtype": None}), "threads": None}
    signature = _inspect.Signature(
        [kinds("self", kinds.POSITIONAL_ONLY)]
        + [kinds(name, kinds.POSITIONAL_OR_KEYWORD, default=value) for name, value in defaults.items()]
        + [kinds(name, kinds.KEYWORD_ONLY, default=value) for name, value in options.items()]
        + ([kinds("method", kinds.KEYWORD_ONLY, default=chosen)] if chosen else [])
    )

    def draw(self, /, *args, **kwargs):
        given = signature.bind(self, *args, **kwargs)
        given.apply_defaults()
        a = given.arguments
        parameters = [_number(a[name], name, value) for name, value in defaults.items()]
        method = a.get("method", "pairs")
        if method not in _METHODS:
            raise ValueError(f"method is {method!r}, want one of {', '.join(_METHODS)}")
        dtype = _np.dtype(_np.int32 if discrete else a["dtype"] or getattr(a["out"], "dtype", _np.float64))
        if not discrete and dtype not in (_np.float64, _np.float32):
            raise TypeError(f"dtype is {dtype}, want float64 or float32")
        return self._fill(law, parameters, a["size"], a["out"], dtype, a["threads"], _METHODS[method])

    draw.__name__, draw.__qualname__ = law, f"Stream.{law}"
    draw.__doc__, draw.__signature__ = text, signature
    return draw


for _laws, _is_discrete in ((_CONTINUOUS, False), (_DISCRETE, True)):
    for _law, (_defaults, _text) in _laws.items():
        setattr(Stream, _law, _method_of(_law, _defaults, _text, _is_discrete))


class _OurBitGenerator(_np.random.BitGenerator):
    """NumPy's BitGenerator over a stream of tmk."""

    _kind = None

    def __init__(self, seed=None, *, set=0, words=None):
        super().__init__(seed)
        self._stream = _seeded(self._kind, self.seed_seq if words is None else words, set, words is not None)
        _random.attach(self.capsule, self._stream)

    @property
    def state(self):
        """A dictionary with the stream's image; it may be assigned."""
        return {"bit_generator": type(self).__name__, "image": self._stream.save()}

    @state.setter
    def state(self, value):
        if not isinstance(value, dict) or value.get("bit_generator") != type(self).__name__:
            raise ValueError(f"state is not one of {type(self).__name__}")
        loaded = _random.Stream.load(bytes(value["image"]))
        if loaded.kind() != self._kind:
            raise ValueError(f"state holds another generator than {type(self).__name__}")
        with self.lock:
            self._stream.assign(loaded)

    def jumped(self, jumps=1):
        """A copy that is `jumps` times 2**64 elements ahead."""
        other = type(self)(self.seed_seq)
        other.state = self.state
        for _ in range(_operator.index(jumps)):
            other._stream.jump()
        return other


def _bit_generator(name, kind, text):
    return type(name, (_OurBitGenerator,), {"__doc__": text, "__module__": __name__, "_kind": _KINDS[kind]})


_GENERATORS = [
    ("MT19937", "mt19937", "The Mersenne twister. `words` gives the numbers of numpy.random.RandomState(words)."),
    ("SFMT19937", "sfmt19937", "The twister of 128-bit words."),
    ("MT2203", "mt2203", "6024 small twisters, by `set`."),
    ("R250", "r250", "The shift register of Kirkpatrick and Stoll."),
    ("MRG32K3A", "mrg32k3a", "L'Ecuyer's combined recurrence."),
    ("MCG31M1", "mcg31m1", "A multiplicative congruence of 31 bits."),
    ("MCG59", "mcg59", "A multiplicative congruence of 59 bits."),
    ("WH", "wh", "273 generators of Wichmann and Hill, by `set`."),
    ("Philox4x32x10", "philox4x32x10", "A counter in ten rounds; not NumPy's Philox, which has words of 64 bits."),
    ("ARS5", "ars5", "A counter in five rounds of AES; processors with AES instructions."),
    ("Hardware", "hardware", "The processor's own entropy; it has no state to save."),
]
for _name, _kind_name, _text in _GENERATORS:
    globals()[_name] = _bit_generator(_name, _kind_name, _text)
    __all__.append(_name)


class Generator(_np.random.Generator):
    """`numpy.random.Generator` over a bit generator of this module, in bulk where NumPy draws one by one.

    The numbers are those that NumPy's gives over the same bit generator.
    """

    def __init__(self, bit_generator):
        if not isinstance(bit_generator, _OurBitGenerator):
            raise TypeError(f"bit_generator is a {type(bit_generator).__name__}, want one of tmk.random")
        super().__init__(bit_generator)

    def random(self, size=None, dtype=_np.float64, out=None):
        """As numpy.random.Generator.random."""
        stream = self.bit_generator._stream
        if _np.dtype(dtype) != _np.float64 or (out is None and size is None) or not _bulk(out, size, _np.float64):
            return super().random(size, dtype, out)
        out = _np.empty(_shape(size)) if out is None else out
        with self.bit_generator.lock:
            stream.numpy_doubles(out.reshape(-1))
        return out


def _bulk(out, size, dtype):
    """Whether an output needs none of NumPy's checks."""
    if out is None:
        return True
    plain = isinstance(out, _np.ndarray) and out.dtype == dtype and out.flags.c_contiguous and out.flags.writeable
    return plain and out.flags.aligned and (size is None or _shape(size) == out.shape)


def default_rng(seed=None):
    """A `Generator`: over `MT19937` of that seed, or over a bit generator of this module; a Generator is returned as it is."""
    if isinstance(seed, _np.random.Generator):
        return seed
    return Generator(seed if isinstance(seed, _OurBitGenerator) else globals()["MT19937"](seed))
