# SPDX-License-Identifier: Apache-2.0
"""The tour's page of Python: ufuncs, elements without a result, streams, statistics and splines, timed here."""

import time
from pathlib import Path

import numpy as np

import tmk

DATA = Path(__file__).parents[2] / "data"


def ratio(ours, theirs, rounds=15):
    """The least time of ours over the least time of theirs, both in turn."""
    least = [float("inf")] * 2
    for _ in range(rounds):
        for k, call in enumerate((ours, theirs)):
            start = time.perf_counter()
            call()
            least[k] = min(least[k], time.perf_counter() - start)
    return least[0] / least[1]


def ufuncs():
    x = np.linspace(0.1, 20, 100_000)
    y = np.empty_like(x)
    print(f"1. Ufuncs of NumPy, on {x.size} elements; time over NumPy's {np.__version__}, below 1 is faster:")
    print(f"  {'':6} {'high':>6} {'low':>6} {'fast':>6}")
    for name in ("exp", "log", "cbrt", "tanh"):
        cells = [
            ratio(lambda f=getattr(module, name): f(x, out=y), lambda f=getattr(np, name): f(x, out=y))
            for module in (tmk, tmk.low, tmk.fast)
        ]
        print(f"  {name:6} " + " ".join(f"{cell:6.2f}" for cell in cells))


def bad_elements():
    print("\n2. Which elements have no result, and why: tmk.bad_elements(tmk.log, [2, 0, -1])")
    for e in tmk.bad_elements(tmk.log, [2.0, 0.0, -1.0]):
        print(f"  [{e['index']}] {e['a0']:g}: {e['status']}, result {e['result']:g}")


def streams():
    s, rng, z = tmk.random.Stream("mt19937", seed=7), np.random.default_rng(7), np.empty(100_000)
    found = ratio(lambda: s.normal(out=z), lambda: rng.standard_normal(out=z))
    image = s.save()
    same = np.array_equal(s.normal(size=9), tmk.random.Stream.load(image).normal(size=9))
    print(f"\n3. A stream: {z.size} normal numbers in {found:.2f} of the time of NumPy's default generator;")
    print(f"  saved and loaded it gives {'the same' if same else 'OTHER'} numbers.")


def statistics():
    x = np.genfromtxt(DATA / "airquality.csv", delimiter=",", skip_header=1, usecols=range(4), missing_values="NA")
    s = tmk.stats.describe(x, nan="omit", quantiles=(0.5,))
    print("\n4. tmk.stats.describe: ozone, sun, wind and temperature in New York, 1973, with holes:")
    print("  " + repr(s).replace("\n", "\n  "))
    z = tmk.random.Stream(seed=1).normal(size=(20_000, 8))
    found = ratio(lambda: tmk.stats.Moments(8, cross=False).add(z).kurtosis, lambda: (z.mean(0), z.var(0), z.min(0), z.max(0)))
    print(f"  Moments to order 4 and extrema take {found:.2f} of the time of NumPy's mean, var, min and max.")


def splines():
    t, ppm = np.loadtxt(DATA / "co2.csv", delimiter=",", skiprows=1).T
    s = tmk.interpolate.CubicSpline(t, ppm)
    sites = np.linspace(t[0], t[-1], 100_000)
    tops = s.to_ppoly().derivative().roots()
    tops = tops[(s(tops, nu=2) < 0) & (tops > 1990) & (tops < 1991)]
    print(f"\n5. A spline through {t.size} months of carbon dioxide: the top of 1990 was {s(tops).max():.1f} ppm at {tops[0]:.2f};")
    found = ratio(lambda: s(sites), lambda: np.interp(sites, t, ppm))
    print(f"  {sites.size} values take {found:.2f} of the time that np.interp takes for straight lines.")


def main():
    print(f"The same from Python, by ufuncs of NumPy; tier {tmk.tier()}.\n")
    for part in (ufuncs, bad_elements, streams, statistics, splines):
        part()


if __name__ == "__main__":
    main()
