#!/usr/bin/env python3
"""Writes each ```c and ```cpp block of README.md to a program of its own: readme_programs.py README.md folder."""
import pathlib
import re
import sys

readme, folder = map(pathlib.Path, sys.argv[1:])
folder.mkdir(parents=True, exist_ok=True)
blocks = re.findall(r"^```(c|cpp)\n(.*?)^```$", readme.read_text(), re.MULTILINE | re.DOTALL)
if {language for language, _ in blocks} != {"c", "cpp"}:
    sys.exit(f"{readme}: expected C and C++ blocks")
for number, (language, text) in enumerate(blocks, 1):
    (folder / f"readme_{number}.{language}").write_text(text)
