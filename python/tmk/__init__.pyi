# SPDX-License-Identifier: Apache-2.0
# Made by python/tools/stubs.py.
from contextlib import AbstractContextManager
from typing import Any

import numpy as np
import numpy.typing as npt

from . import fast as fast, interpolate as interpolate, low as low, random as random, stats as stats

__version__: str
STATUS_NAMES: dict[int, str]

class error(ValueError):
    argument: str
    value: str
    status: int

def tier() -> str: ...
def select_tier(name: str) -> str: ...
def threads(n: int) -> AbstractContextManager[None]: ...
def bad_elements(f: np.ufunc, *args: npt.ArrayLike) -> np.ndarray[Any, Any]: ...

from .stats import describe as describe
__all__ = [
    "add", "subtract", "sub", "multiply", "mul", "multiply_conj", "mul_by_conj", "divide", "div",
    "true_divide", "square", "sqr", "absolute", "abs", "conjugate", "conj", "angle", "arg", "linear_frac",
    "fmod", "ieee_remainder", "fdim", "fmax", "fmin", "max_mag", "min_mag", "copysign", "copy_sign",
    "nextafter", "next_after", "reciprocal", "inv", "sqrt", "rsqrt", "inv_sqrt", "cbrt", "rcbrt", "inv_cbrt",
    "power", "pow", "powr", "pow2o3", "pow3o2", "hypot", "exp", "exp2", "exp10", "expm1", "log", "ln", "log2",
    "log10", "log1p", "logb", "sin", "cos", "sin_cos", "tan", "cis", "sinpi", "cospi", "tanpi", "sind",
    "cosd", "tand", "arcsin", "asin", "arccos", "acos", "arctan", "atan", "arctan2", "atan2", "arcsinpi",
    "asinpi", "arccospi", "acospi", "arctanpi", "atanpi", "arctan2pi", "atan2pi", "sinh", "cosh", "tanh",
    "arcsinh", "asinh", "arccosh", "acosh", "arctanh", "atanh", "erf", "erfc", "erfinv", "erfcinv", "ndtr",
    "cdf_norm", "ndtri", "cdf_norm_inv", "gammaln", "lgamma", "gamma", "tgamma", "exp1", "exp_int1", "floor",
    "ceil", "trunc", "round_away", "nearby_int", "rint", "modf", "frac", "bad_elements", "describe", "error",
    "fast", "interpolate", "low", "random", "select_tier", "stats", "threads", "tier",
]

add: np.ufunc
subtract: np.ufunc
sub: np.ufunc
multiply: np.ufunc
mul: np.ufunc
multiply_conj: np.ufunc
mul_by_conj: np.ufunc
divide: np.ufunc
div: np.ufunc
true_divide: np.ufunc
square: np.ufunc
sqr: np.ufunc
absolute: np.ufunc
abs: np.ufunc
conjugate: np.ufunc
conj: np.ufunc
angle: np.ufunc
arg: np.ufunc
linear_frac: np.ufunc
fmod: np.ufunc
ieee_remainder: np.ufunc
fdim: np.ufunc
fmax: np.ufunc
fmin: np.ufunc
max_mag: np.ufunc
min_mag: np.ufunc
copysign: np.ufunc
copy_sign: np.ufunc
nextafter: np.ufunc
next_after: np.ufunc
reciprocal: np.ufunc
inv: np.ufunc
sqrt: np.ufunc
rsqrt: np.ufunc
inv_sqrt: np.ufunc
cbrt: np.ufunc
rcbrt: np.ufunc
inv_cbrt: np.ufunc
power: np.ufunc
pow: np.ufunc
powr: np.ufunc
pow2o3: np.ufunc
pow3o2: np.ufunc
hypot: np.ufunc
exp: np.ufunc
exp2: np.ufunc
exp10: np.ufunc
expm1: np.ufunc
log: np.ufunc
ln: np.ufunc
log2: np.ufunc
log10: np.ufunc
log1p: np.ufunc
logb: np.ufunc
sin: np.ufunc
cos: np.ufunc
sin_cos: np.ufunc
tan: np.ufunc
cis: np.ufunc
sinpi: np.ufunc
cospi: np.ufunc
tanpi: np.ufunc
sind: np.ufunc
cosd: np.ufunc
tand: np.ufunc
arcsin: np.ufunc
asin: np.ufunc
arccos: np.ufunc
acos: np.ufunc
arctan: np.ufunc
atan: np.ufunc
arctan2: np.ufunc
atan2: np.ufunc
arcsinpi: np.ufunc
asinpi: np.ufunc
arccospi: np.ufunc
acospi: np.ufunc
arctanpi: np.ufunc
atanpi: np.ufunc
arctan2pi: np.ufunc
atan2pi: np.ufunc
sinh: np.ufunc
cosh: np.ufunc
tanh: np.ufunc
arcsinh: np.ufunc
asinh: np.ufunc
arccosh: np.ufunc
acosh: np.ufunc
arctanh: np.ufunc
atanh: np.ufunc
erf: np.ufunc
erfc: np.ufunc
erfinv: np.ufunc
erfcinv: np.ufunc
ndtr: np.ufunc
cdf_norm: np.ufunc
ndtri: np.ufunc
cdf_norm_inv: np.ufunc
gammaln: np.ufunc
lgamma: np.ufunc
gamma: np.ufunc
tgamma: np.ufunc
exp1: np.ufunc
exp_int1: np.ufunc
floor: np.ufunc
ceil: np.ufunc
trunc: np.ufunc
round_away: np.ufunc
nearby_int: np.ufunc
rint: np.ufunc
modf: np.ufunc
frac: np.ufunc
