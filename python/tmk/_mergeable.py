# SPDX-License-Identifier: Apache-2.0
"""What the accumulators of tmk.stats share."""

import threading as _threading
from typing import Any as _Any

import numpy as _np

from ._batches import batches, in_parts, refusal

_POLICIES = {"propagate": 0, "omit": 1, "raise": 2}


def policy_number(nan):
    if nan not in _POLICIES:
        raise ValueError(f"nan is {nan!r}, want one of {', '.join(map(repr, _POLICIES))}")
    return _POLICIES[nan]


class Mergeable:
    """What `Moments` and `QuantileSketch` share: batches, merging, copies, pickles, and one thread at a time."""

    _core: _Any  # the extension's object
    _type: _Any  # its class
    names: list[str] | None  #: of the variables

    def merge(self, other):
        """Add what the other has seen, as if it had been added here. Of two that have names these are the same."""
        if not isinstance(other, type(self)):
            raise TypeError(f"other is a {type(other).__name__}, want a {type(self).__name__}")
        self._join(other._core if other is not self else self._core.copy(), "other.names", other.names)
        return self

    def _join(self, core, argument, names):
        if self.names and names and list(names) != self.names:
            raise refusal(argument, list(names), f"{self.names}")
        with self._lock:
            self._core.merge(core)
        self.names = self.names or names

    def _add(self, x, weights, add):
        """Add x by add(core, rows). Of several parts, all are added or none: the last one may be bad."""
        parts = batches(x, weights)
        if not in_parts(x, weights):
            (rows,) = parts
            if self.names and rows.names and rows.names != self.names:
                raise refusal("x.names", rows.names, f"{self.names}")
            with self._lock:
                add(self._core, rows)
            self.names = self.names or rows.names
            return self
        together, names = self._core.copy(), None
        together.reset()
        for rows in parts:
            add(together, rows)
            names = names or rows.names
        self._join(together, "x.names", names)
        return self

    def __ior__(self, other):
        return self.merge(other)

    __iadd__ = __ior__

    def __add__(self, other):
        return self.copy().merge(other)

    __or__ = __add__

    def copy(self):
        return self._of(self._core.copy(), self.names)

    __copy__ = copy

    def __deepcopy__(self, memo):
        return self.copy()

    @classmethod
    def _of(cls, core, names=None):
        self = cls.__new__(cls)
        self._core, self._lock, self.names = core, _threading.Lock(), names
        return self

    def to_bytes(self):
        """An image that is the same on every machine, and that the C++ API reads."""
        return self._core.to_bytes()

    @classmethod
    def from_bytes(cls, image):
        """Raises `tmk.error` for one that is truncated, damaged, of another version or impossible."""
        return cls._of(cls._type.from_bytes(bytes(image)))

    def __reduce__(self):
        return type(self)._restored, (self.to_bytes(), self.names)

    @classmethod
    def _restored(cls, image, names):
        self = cls.from_bytes(image)
        self.names = names
        return self

    def reset(self):
        """Forget all data."""
        with self._lock:
            self._core.reset()

    @property
    def cols(self) -> int:
        """The number of variables."""
        return self._core.cols()


def made(cols, core):
    """The core of that many variables, or of so many as are named, and the names."""
    names = None if isinstance(cols, (int, _np.integer)) else [str(name) for name in cols]
    return core(int(cols) if names is None else len(names)), names
