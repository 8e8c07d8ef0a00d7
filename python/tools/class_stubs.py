#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""class_stubs.py FOLDER writes the stubs of the modules of FOLDER/tmk whose classes and methods are made from tables.

Type checkers, which do not run the tables, would know neither the laws of a Stream nor the bit generators nor what the
estimates of Moments are.
"""

import dataclasses
import importlib
import inspect
import math
import pkgutil
import re
import sys
from pathlib import Path

ELSEWHERE = ("_core", "fast", "low")  # by nanobind and by stubs.py
UNTOUCHED = ("dask", "sklearn")  # whose bases are not installed everywhere
HEAD = """# SPDX-License-Identifier: Apache-2.0
# Made by python/tools/class_stubs.py.
from collections.abc import Iterator
from dataclasses import dataclass
from typing import Any

import numpy
import numpy.typing as npt
from typing_extensions import Self

_Array = numpy.ndarray[Any, numpy.dtype[Any]]
_Rule = str | bool | None
"""

# Parameters that have one type wherever they occur; others have the type of their default.
PARAMETERS = {
    "bc_type": "str | tuple[Any, Any]",
    "bit_generator": "numpy.random.BitGenerator",
    "cov": "npt.ArrayLike",
    "count": "int",
    "ddof": "float | None",
    "dtype": "npt.DTypeLike | None",
    "dydx": "npt.ArrayLike",
    "extrapolate": "_Rule | tuple[_Rule, _Rule]",
    "image": "bytes",
    "k": "int",
    "n": "int",
    "order": "int",
    "other": "Self",
    "out": "_Array | None",
    "parts": "int",
    "q": "npt.ArrayLike",
    "quantiles": "npt.ArrayLike",
    "size": "int | tuple[int, ...] | None",
    "threads": "int | None",
    "value": "float",
    "weights": "npt.ArrayLike | None",
    "y": "npt.ArrayLike",
}
SELF = ("__add__", "__copy__", "__deepcopy__", "__iadd__", "__ior__", "__or__", "add", "copy", "from_bytes", "load", "merge")
ARRAYS = ("__call__ central completed corr cov cross_product kurtosis mad mahalanobis max mean median min nearest_correlation partial_correlation "
          "partial_covariance permutation raw skewness std var weight").split()
RESULTS = {
    **dict.fromkeys(SELF, "Self"),
    **dict.fromkeys(ARRAYS, "_Array"),
    "__init__": "None",
    "__len__": "int",
    "__repr__": "str",
    "cols": "int",
    "complete": "int",
    "default_rng": "numpy.random.Generator",
    "describe": "Summary",
    "em_estimate": "NormalModel",
    "epsilon": "float",
    "extrapolate": "tuple[str, str]",
    "impute": "Imputations",
    "jump": "None",
    "kind": "str",
    "leapfrog": "None",
    "outliers": "Outliers",
    "pool_estimates": "PooledEstimate",
    "pooled_covariance": "PooledEstimates",
    "reset": "None",
    "robust_covariance": "RobustEstimate",
    "save": "bytes",
    "set": "int",
    "skip": "None",
    "spawn": "list[Self]",
    "to_bytes": "bytes",
}
METHODS = {"RobustEstimate.outliers": "_Array", "Imputations.__iter__": "Iterator[_Array]", "Imputations.count": "int"}
ATTRIBUTES = {  # set by __init__
    "Imputations": ["holes: _Array", "values: _Array", "chain: _Array", "start: NormalModel"],
    "_Mergeable": ["names: list[str] | None"],
    "_Spline": ["axis: int", "x: _Array"],
}
LITERALS = (bool, int, str, type(None))
SHOWN = "__add__ __call__ __copy__ __deepcopy__ __iadd__ __init__ __ior__ __iter__ __len__ __or__ __repr__".split()


class Verbatim:
    """A text that inspect.Signature prints as it is."""

    def __init__(self, text):
        self.text = text

    def __repr__(self):
        return self.text


def declared(parameter):
    """The parameter with its type, and a default that a stub can show."""
    if parameter.name in ("self", "cls"):
        return parameter
    plain = {bool: "bool", int: "int", float: "float", str: "str"}.get(type(parameter.default), "Any")
    typed = parameter.replace(annotation=Verbatim(PARAMETERS.get(parameter.name, plain)))
    shown = parameter.default is parameter.empty or isinstance(parameter.default, LITERALS) or is_finite(parameter.default)
    return typed if shown else typed.replace(default=Verbatim("..."))


def is_finite(default):
    return isinstance(default, float) and math.isfinite(default)


def definition(name, function, owner=""):
    signature = inspect.signature(function)
    parameters = [declared(p) for p in signature.parameters.values()]
    return f"def {name}{signature.replace(parameters=parameters, return_annotation=signature.empty)} -> {result_of(name, owner)}: ..."


def result_of(name, owner):
    return METHODS.get(f"{owner}.{name}") or RESULTS.get(name, "Any")


def member(name, value, owner):
    """The lines that declare what a class has under a name; none for what is no affair of users."""
    if name.startswith("_") and name not in SHOWN:
        return []
    if isinstance(value, property):
        result = result_of(name, owner)
        setter = [f"@{name}.setter", f"def {name}(self, value: {result}) -> None: ..."] if value.fset else []
        return ["@property", f"def {name}(self) -> {result}: ...", *setter]
    if isinstance(value, classmethod):
        return ["@classmethod", definition(name, value.__func__, owner)]
    return [definition(name, value, owner)] if inspect.isfunction(value) else []


def base_name(base, module):
    """numpy.random.Generator, for one, says that it is of a private module."""
    if base.__module__ in (module.__name__, "builtins"):
        return base.__name__
    public = "numpy.random" if base.__module__.startswith("numpy.random.") else base.__module__
    return f"{public}.{base.__qualname__}"


def class_head(cls, module):
    base = cls.__base__
    head = f"class {cls.__name__}({base_name(base, module)}):" if base is not object else f"class {cls.__name__}:"
    if not dataclasses.is_dataclass(cls):
        return [head, *("    " + line for line in ATTRIBUTES.get(cls.__name__, []))]
    options = cls.__dataclass_params__
    missing = dataclasses.MISSING
    fields = [f"    {f.name}: {type_name(f.type)}" + " = ..." * (f.default is not missing) for f in dataclasses.fields(cls)]
    return [f"@dataclass(frozen={options.frozen}, eq={options.eq})", head, *fields]


def type_name(declared_type):
    text = declared_type.__name__ if isinstance(declared_type, type) else str(declared_type)
    return re.sub(r"(numpy\.)?ndarray", "_Array", text).replace("list", "list[Any]")


def class_lines(cls, module):
    """What overrides a method of NumPy's has its overloads, and what a dataclass makes is known."""
    known = [name for name in vars(cls) if inspect.isroutine(getattr(cls.__base__, name, None)) and name not in SHOWN]
    if dataclasses.is_dataclass(cls):
        known += [*SHOWN, *(f.name for f in dataclasses.fields(cls))]
    lines = [line for name, value in vars(cls).items() if name not in known for line in member(name, value, cls.__name__)]
    head = class_head(cls, module)
    return [*head, *("    " + line for line in lines or ["..."] * (head[-1][-1] == ":"))]


def public_names(module):
    """What the module says is public; else what is made in it and has no underscore."""
    own = (name for name, item in vars(module).items() if getattr(item, "__module__", "") == module.__name__)
    return getattr(module, "__all__", None) or [name for name in own if not name.startswith("_")]


def stub_of(module):
    """Bases before what is derived from them."""
    public = {name: getattr(module, name) for name in public_names(module)}
    here = [item for item in public.values() if item.__module__ == module.__name__]
    imports = [f"from {f.__module__} import {name} as {name}" for name, f in public.items() if f not in here]
    classes = {base: None for c in here if isinstance(c, type) for base in c.__mro__[::-1] if base.__module__ == module.__name__}
    bases = {c.__base__.__module__ for c in classes} - {module.__name__}
    imports += [f"import {name}" for name in sorted(bases) if name.startswith("tmk.")]
    lines = [*imports, f"\n__all__ = {module.__all__!r}"] if hasattr(module, "__all__") else imports
    for cls in classes:
        lines += ["", *class_lines(cls, module)]
    lines += [line for f in here if inspect.isfunction(f) for line in ("", definition(f.__name__, f))]
    return HEAD + "\n" + "\n".join(lines) + "\n"


def main(folder):
    sys.path.insert(0, folder)
    for module in pkgutil.iter_modules([str(Path(folder, "tmk"))]):
        if module.name in ELSEWHERE + UNTOUCHED:
            continue
        imported = importlib.import_module(f"tmk.{module.name}")
        if not hasattr(imported, "annotations"):  # of __future__: a module with it has types of its own
            Path(folder, "tmk", f"{module.name}.pyi").write_text(stub_of(imported), encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
