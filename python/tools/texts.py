#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""texts.py docs/functions.md docs/accuracy.tsv OUT writes what the docstrings of the ufuncs are made of: for each
function what it gives, and for each level the largest error measured in each of its types."""

import csv
import re
import sys
from collections import defaultdict

LEVELS = ("LA", "HA", "EP")
TYPES = {"s": "float32", "d": "float64", "c": "complex64", "z": "complex128"}


def meanings(page):
    """Stem to text, from the table's rows."""
    for line in open(page, encoding="utf-8"):
        cells = [cell.strip().replace("\\|", "|") for cell in re.split(r"(?<!\\)\|", line)]
        if len(cells) > 4 and cells[2].startswith("`"):
            yield cells[2].strip("`"), cells[3]


def errors(record):
    """(letter, stem, level) to the largest error in ulp and the fewest bits of any tier."""
    worst = defaultdict(lambda: [0.0, float("inf")])
    for row in csv.DictReader(open(record, encoding="utf-8"), delimiter="\t"):
        name = row["function"]
        for use in row["kernel's slots"].split(","):
            entry = worst[name[0], name[1:], use.split()[1]]
            entry[0] = max(entry[0], float(row["max ulp"]))
            entry[1] = min(entry[1], float(row["bits"]))
    return worst


def main(page, record, out):
    worst = errors(record)
    with open(out, "w", encoding="utf-8") as file:
        for stem, meaning in meanings(page):
            texts = []
            for level in LEVELS:
                lines = []
                for letter, name in TYPES.items():
                    if (letter, stem, level) in worst:
                        ulp, bits = worst[letter, stem, level]
                        figure = f"{bits:.1f} correct bits" if level == "EP" and ulp > 4 else f"{ulp:.3g} ulp"
                        lines.append(f"{name}: {figure}")
                texts.append("; ".join(lines) or "none: it moves or compares")
            quoted = ", ".join('"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"' for text in [meaning, *texts])
            first, rest = quoted.split('", "', 1)
            file.write(f'{{"{stem}", {first}", {{"{rest}}}}},\n')


if __name__ == "__main__":
    main(*sys.argv[1:])
