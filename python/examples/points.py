# SPDX-License-Identifier: Apache-2.0
"""Sobol's points and pseudo-random ones

512 points each in the unit square, and the error of the mean of a smooth function over the first n of them: about 1 / n
for Sobol's points, 1 / sqrt(n) for the others.
"""

import sys

import matplotlib.pyplot as plt
import numpy as np

import tmk

SHOWN, COUNT = 512, 2**16


def running_error(points):
    """The error of the mean of exp(u + v) over the first 2, 4, 8, ... points."""
    n = 2 ** np.arange(1, np.log2(len(points)) + 1).astype(int)
    sums = np.cumsum(tmk.exp(points.sum(axis=1)))
    return n, np.abs(sums[n - 1] / n - (np.e - 1) ** 2)


def main():
    kinds = {"sobol": tmk.random.Stream("sobol", 2), "mt19937": tmk.random.Stream("mt19937", 1)}
    figure, axes = plt.subplots(1, 3, figsize=(11, 3.6), layout="constrained")
    for axis, (kind, stream) in zip(axes, kinds.items()):
        points = stream.uniform(size=(COUNT, 2))
        axis.plot(*points[:SHOWN].T, ".", markersize=3)
        axis.set(title=kind, aspect="equal", xlim=(0, 1), ylim=(0, 1))
        axes[2].loglog(*running_error(points), "o-", label=kind)
    axes[2].set(xlabel="points", title="error of a mean")
    axes[2].legend()
    return figure


if __name__ == "__main__":
    main()
    plt.savefig(sys.argv[1]) if len(sys.argv) > 1 else plt.show()
