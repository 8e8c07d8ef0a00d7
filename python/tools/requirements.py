#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""requirements.py pyproject.toml lists what the package is built, run, tested and described with, one to a line."""

import sys
import tomllib


def main(path):
    with open(path, "rb") as file:
        given = tomllib.load(file)
    project = given["project"]
    lists = [given["build-system"]["requires"], project["dependencies"], *project["optional-dependencies"].values()]
    print("\n".join(sorted({requirement for every in lists for requirement in every})))


if __name__ == "__main__":
    main(*sys.argv[1:])
