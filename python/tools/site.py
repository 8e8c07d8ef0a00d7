#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""site.py ROOT PAGES adds what is made to PAGES, a copy of ROOT/docs: the table of the ufuncs, and the gallery with its
pictures, which the programs draw. tmk is the one that Python finds."""

import ast
import re
import subprocess
import sys
from pathlib import Path

import tmk

LETTERS = {"f": "f4", "d": "f8", "F": "c8", "D": "c16"}


def ufunc_rows(names):
    """A row for each function: what it gives and its measured errors are the second and the last line of its docstring."""
    for name, others in re.findall(r'^TMK_NAME\(\w+, (\w+), "([^"]*)"\)', names, re.M):
        f = getattr(tmk, name)
        meaning = f.__doc__.split("\n\n")[1].replace("|", "\\|").replace("<", "\\<")
        types = " ".join(LETTERS[t[0]] for t in f.types)
        errors = f.__doc__.splitlines()[-1].replace("float32: ", "").replace("float64: ", "").replace("complex64: ", "")
        errors = errors.replace("complex128: ", "").replace(" ulp", "").replace("none: it moves or compares", "none")
        also = ", ".join(f"`{other}`" for other in others.split())
        yield f"| `{name}` | {also} | {meaning} | {types} | {errors} |"


def ufunc_table(names):
    head = "| name | also | gives; statuses | types | largest error in ulp, by type |\n|---|---|---|---|---|\n"
    return head + "\n".join(ufunc_rows(names)) + "\n"


def gallery_entry(program, pictures):
    """Title, text, picture and code of a program, whose docstring has the first two."""
    source = program.read_text(encoding="utf-8")
    title, text = ast.get_docstring(ast.parse(source)).split("\n", 1)
    picture = pictures / f"{program.stem}.png"
    subprocess.run([sys.executable, program, picture], check=True, timeout=300)
    code = source.split('"""', 2)[2].strip()
    return f"## {title}\n\n{text.strip()}\n\n![{title}]({pictures.name}/{picture.name})\n\n```python\n{code}\n```\n"


def main(root, pages):
    folder = Path(pages, "python")
    pictures = folder / "pictures"
    pictures.mkdir(exist_ok=True)
    names = Path(root, "python/src/names.def").read_text(encoding="utf-8")
    (folder / "ufunc_table.md").write_text(ufunc_table(names), encoding="utf-8")
    programs = sorted(p for p in Path(root, "python/examples").glob("*.py") if p.name != "tour.py")
    entries = [gallery_entry(program, pictures) for program in programs]
    (folder / "gallery_programs.md").write_text("\n".join(entries), encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
