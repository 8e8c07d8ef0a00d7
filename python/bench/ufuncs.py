# SPDX-License-Identifier: Apache-2.0
"""Times of the ufuncs as ratios to NumPy's and SciPy's in one process: below 1 tmk is faster.

Both sides in turn, the least of many rounds each. TMK_TIER=V3 caps ours, NPY_DISABLE_CPU_FEATURES="X86_V4 AVX512_ICL AVX512_SPR" NumPy's.
"""

import sys
import time

import numpy as np
import scipy.special

import tmk

ROUNDS = 40


def least(*calls):
    """The least time of each call, the calls in turn."""
    times = [float("inf")] * len(calls)
    for _ in range(ROUNDS):
        for k, call in enumerate(calls):
            start = time.perf_counter()
            call()
            times[k] = min(times[k], time.perf_counter() - start)
    return times


def ratio(ours, theirs, *args):
    out = np.empty_like(args[0], dtype=args[0].dtype)
    repeat = range(max(1, 20000 // out.size))

    def of(f):
        def call():
            for _ in repeat:
                f(*args, out=out)

        return call

    a, b = least(of(ours), of(theirs))
    return a / b


def arguments(name, n, dtype):
    rng = np.random.default_rng(1)
    low, high = {"erfinv": (-0.9, 0.9), "ndtri": (0.05, 0.95), "tanh": (-3, 3)}.get(name, (0.1, 20))
    first = rng.uniform(low, high, n).astype(dtype)
    if name == "arctan2":
        return first, rng.uniform(-20, 20, n).astype(dtype)
    if name == "power":
        return first, rng.uniform(-9, 9, n).astype(dtype)
    return (first,)


PEERS = [
    (np, "exp log sqrt sin cos tan cbrt tanh arctan2 power".split()),
    (scipy.special, "erf erfinv ndtri gamma gammaln".split()),
]


def main():
    print(f"tier {tmk.tier()}, numpy {np.__version__}, scipy {scipy.__version__}; ratios of time, tmk / peer\n")
    print("| function | dtype | 10 | 1000 | 1e6 | stride 2, 1e6 | stride 8, 1e6 |\n|---|---|---|---|---|---|---|")
    for module, names in PEERS:
        for name in names:
            for dtype in (np.float32, np.float64):
                ours, theirs = getattr(tmk, name), getattr(module, name)
                cells = [ratio(ours, theirs, *arguments(name, n, dtype)) for n in (10, 1000, 10**6)]
                for stride in (2, 8):
                    args = [a[::stride] for a in arguments(name, stride * 10**6, dtype)]
                    cells.append(ratio(ours, theirs, *args))
                print(f"| {name} | {np.dtype(dtype)} | {' | '.join(f'{c:.2f}' for c in cells)} |", flush=True)
    x = np.random.default_rng(2).uniform(0.1, 20, 10**6)
    holes, bad = x.copy(), -x
    holes[::10] = np.nan
    with np.errstate(all="ignore"):
        print(f"\nlog, one element in ten NaN, compared with none: {ratio(lambda a, out: tmk.log(holes, out=out), tmk.log, x):.2f}")
        print(f"log, every element bad, compared with NumPy: {ratio(tmk.log, np.log, bad):.2f}")


if __name__ == "__main__":
    sys.exit(main())
