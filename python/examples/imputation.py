# SPDX-License-Identifier: Apache-2.0
"""Imputed values

Ozone and temperature in New York, 1973, on the 153 days of which 37 lack the ozone. Each hole is drawn five times given
what was observed on that day, on the logarithm of the ozone, whose law is closer to the normal one.
"""

import sys
from pathlib import Path

import matplotlib.pyplot as plt
import numpy as np

import tmk

DATA = Path(__file__).parents[2] / "data" / "airquality.csv"


def main():
    x = np.genfromtxt(DATA, delimiter=",", skip_header=1, usecols=(0, 1, 2, 3), missing_values="NA")
    x[:, 0] = tmk.log(x[:, 0])
    holes = np.isnan(x[:, 0])
    completed = tmk.stats.impute(x, 5, seed=7)
    figure, axes = plt.subplots(1, 2, figsize=(10, 3.8), layout="constrained")
    axes[0].plot(x[:, 3], tmk.exp(x[:, 0]), "o", markersize=4, label="observed")
    for k, full in enumerate(completed):
        axes[0].plot(full[holes, 3], tmk.exp(full[holes, 0]), "r.", markersize=3, label=None if k else "imputed")
    axes[0].set(xlabel="temperature, Fahrenheit", ylabel="ozone, ppb", yscale="log")
    axes[0].legend()
    slopes = [np.polyfit(full[:, 3], full[:, 0], 1, cov=True) for full in completed]
    pooled = completed.pool([s[0] for s, _ in slopes], [v[0, 0] for _, v in slopes])
    axes[1].errorbar(range(1, 6), [s[0] for s, _ in slopes], [np.sqrt(v[0, 0]) for _, v in slopes], fmt="o")
    axes[1].errorbar(0, pooled.estimate, pooled.se, fmt="rs")
    axes[1].set(xlabel="0: pooled; 1 to 5: imputations", title="growth of log(ozone) by degree")
    return figure


if __name__ == "__main__":
    main()
    plt.savefig(sys.argv[1]) if len(sys.argv) > 1 else plt.show()
