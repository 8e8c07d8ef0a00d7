# SPDX-License-Identifier: Apache-2.0
"""Robust tolerance ellipses

The data of Hawkins, Bradu and Kass (1984) have 75 rows, 14 of which are wrong. The mean and covariance of all rows make
an ellipse that has room for the wrong ones; those of `robust_covariance` are of the others.
"""

import sys
from pathlib import Path

import matplotlib.pyplot as plt
import numpy as np

import tmk

DATA = Path(__file__).parents[2] / "data" / "hbk.csv"
RADIUS = np.sqrt(-2 * np.log(0.025))  # of the ellipse that holds 0.975 of a normal law in two dimensions


def ellipse(location, covariance):
    """The points at Mahalanobis distance RADIUS."""
    angle = np.linspace(0, 2 * np.pi, 200)
    circle = np.stack([tmk.cos(angle), tmk.sin(angle)])
    return location[:, None] + RADIUS * np.linalg.cholesky(covariance) @ circle


def main():
    x = np.loadtxt(DATA, delimiter=",", skiprows=1)[:, :2]
    robust = tmk.stats.robust_covariance(x)
    wrong = robust.outliers()
    figure, axis = plt.subplots(figsize=(6, 4), layout="constrained")
    axis.plot(*x.T, "o", markersize=4, label="rows")
    axis.plot(*x[wrong].T, "rx", label=f"{len(wrong)} outliers")
    axis.plot(*ellipse(x.mean(0), tmk.stats.cov(x)), "--", label="mean, covariance")
    axis.plot(*ellipse(robust.location, robust.covariance), label="robust_covariance")
    axis.set(xlabel="X1", ylabel="X2")
    axis.legend()
    return figure


if __name__ == "__main__":
    main()
    plt.savefig(sys.argv[1]) if len(sys.argv) > 1 else plt.show()
