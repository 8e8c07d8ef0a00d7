# SPDX-License-Identifier: Apache-2.0
"""Speed by size

Time of a call as a ratio to NumPy's or SciPy's, by the number of elements, on one core of the machine that made this
picture. Below 1 tmk is faster. Few elements cost what a call costs; NumPy has kernels of its own for some functions.
"""

import sys
import time

import matplotlib.pyplot as plt
import numpy as np
import scipy.special

import tmk

SIZES = [10, 100, 1000, 10_000, 100_000]
ROUNDS = 15
ROWS = [("exp", np), ("log", np), ("tanh", np), ("erf", scipy.special), ("gammaln", scipy.special)]


def ratio(ours, theirs, x):
    """Of the least times, both sides in turn."""
    out, least = np.empty_like(x), [np.inf, np.inf]
    repeats = max(1, 20_000 // x.size)
    for _ in range(ROUNDS):
        for k, f in enumerate((ours, theirs)):
            start = time.perf_counter()
            for _ in range(repeats):
                f(x, out=out)
            least[k] = min(least[k], time.perf_counter() - start)
    return least[0] / least[1]


def main():
    figure, axis = plt.subplots(figsize=(7, 4), layout="constrained")
    rng = np.random.default_rng(1)
    for name, peer in ROWS:
        found = [ratio(getattr(tmk, name), getattr(peer, name), rng.uniform(0.1, 5, n)) for n in SIZES]
        axis.loglog(SIZES, found, "o-", label=f"{name} of {peer.__name__}")
    axis.axhline(1, color="black", linewidth=0.8)
    axis.set(xlabel="elements, float64", ylabel="time, tmk / peer", title=f"Tier {tmk.tier()}, NumPy {np.__version__}")
    axis.legend()
    return figure


if __name__ == "__main__":
    main()
    plt.savefig(sys.argv[1]) if len(sys.argv) > 1 else plt.show()
