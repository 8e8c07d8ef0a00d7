# SPDX-License-Identifier: Apache-2.0
"""How Sphinx makes one site of the pages of docs/, which lie in build/docs/source with what python/tools/site.py adds."""

import importlib.util
import re

import tmk

project = "tmk"
author = "the developers of tmk"
release = version = tmk.__version__
extensions = ["myst_parser", "sphinx.ext.autodoc", "sphinx.ext.autosummary", "sphinx.ext.napoleon"]
root_doc = "python/index"
html_theme = "furo"
html_title = f"tmk {release}"
html_copy_source = False
myst_heading_anchors = 3
default_role = "code"
smartquotes = False  # docstrings quote the values of arguments
autodoc_member_order = "groupwise"
autodoc_typehints = "none"
exclude_patterns = ["python/ufunc_table.md", "python/gallery_programs.md"]
suppress_warnings = ["toc.empty_glob"]

if importlib.util.find_spec("tmk.sklearn") is None:
    exclude_patterns.append("python/sklearn.md")
    suppress_warnings.append("toc.not_readable")


def without_sources(app, name, content):
    """Links to files of the repository that are no pages become their texts."""
    content[0] = re.sub(r"\[([^\]]+)\]\((?:\.\./)+(?:bench|examples|include|src|tests|tools)/[^)]*\)", r"\1", content[0])


def as_meant(app, what, name, item, options, lines):
    """Bars in docstrings are magnitudes and stars are arguments, neither of them markup."""
    lines[:] = [line if line.startswith(">>>") else re.sub(r"\||(?<![\w`])\*+(?=\w)", r"\\\g<0>", line) for line in lines]


def setup(app):
    app.connect("source-read", without_sources)
    app.connect("autodoc-process-docstring", as_meant)
