# SPDX-License-Identifier: Apache-2.0
"""Error of the exponential

The error of `exp` in units in the last place, at three levels and by NumPy, over arguments at random. The reference is
`exp` in the x87 format, whose 11 further bits show an error to 0.0005 ulp.
"""

import sys

import matplotlib.pyplot as plt
import numpy as np

import tmk

COUNT = 200_000


def errors(f, x):
    """The error of each f(x) in units of the last place of the exact result."""
    exact = np.exp(x.astype(np.longdouble))
    return ((f(x) - exact) / np.spacing(exact.astype(np.float64))).astype(np.float64)


def main():
    x = np.random.default_rng(1).uniform(-20, 20, COUNT)
    rows = {"tmk.exp": tmk.exp, "tmk.low.exp": tmk.low.exp, "numpy.exp": np.exp}
    figure, axes = plt.subplots(1, len(rows), figsize=(10, 3.2), sharey=True, layout="constrained")
    for axis, (name, f) in zip(axes, rows.items()):
        found = errors(f, x)
        axis.plot(x[:20_000], found[:20_000], ",")
        axis.set(title=f"{name}: at most {np.abs(found).max():.3f}", xlabel="x", ylim=(-1.6, 1.6))
        axis.axhspan(-0.5, 0.5, alpha=0.15)
    axes[0].set_ylabel("ulp")
    return figure


if __name__ == "__main__":
    main()
    plt.savefig(sys.argv[1]) if len(sys.argv) > 1 else plt.show()
