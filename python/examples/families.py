# SPDX-License-Identifier: Apache-2.0
"""Families of splines

Ozone in New York on 18 days of 1973, through which four families go: the cubic spline overshoots, Akima's less, Hyman's
never leaves the range of neighbours.
"""

import sys
from pathlib import Path

import matplotlib.pyplot as plt
import numpy as np

import tmk

DATA = Path(__file__).parents[2] / "data" / "airquality.csv"
FAMILIES = ["CubicSpline", "Akima1DInterpolator", "HymanInterpolator", "LinearInterpolator"]


def main():
    ozone = np.genfromtxt(DATA, delimiter=",", skip_header=1, usecols=0, missing_values="NA")[61:82]
    day = np.flatnonzero(~np.isnan(ozone)).astype(float)
    ozone = ozone[~np.isnan(ozone)]
    sites = np.linspace(day[0], day[-1], 1000)
    figure, axis = plt.subplots(figsize=(8, 4), layout="constrained")
    for name in FAMILIES:
        axis.plot(sites, getattr(tmk.interpolate, name)(day, ozone)(sites), label=name, linewidth=1.2)
    axis.plot(day, ozone, "ko", markersize=4)
    axis.set(xlabel="days from the first of July", ylabel="ozone, ppb")
    axis.legend()
    return figure


if __name__ == "__main__":
    main()
    plt.savefig(sys.argv[1]) if len(sys.argv) > 1 else plt.show()
