#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes each ```c and ```cpp block of the pages to a program of its own: readme_programs.py folder page.md..."""
import pathlib
import re
import sys

folder, *pages = map(pathlib.Path, sys.argv[1:])
folder.mkdir(parents=True, exist_ok=True)
for page in pages:
    blocks = re.findall(r"^```(c|cpp)\n(.*?)^```$", page.read_text(), re.MULTILINE | re.DOTALL)
    if {language for language, _ in blocks} != {"c", "cpp"}:
        sys.exit(f"{page}: expected C and C++ blocks")
    for number, (language, text) in enumerate(blocks, 1):
        (folder / f"{page.stem.lower()}_{number}.{language}").write_text(text)
