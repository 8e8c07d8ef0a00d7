# SPDX-License-Identifier: Apache-2.0
"""The programs of the pages run, those of the gallery draw what they say, and what is made for the pages is there."""

import importlib.util
import re
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

import tmk

ROOT = Path(__file__).parents[2]
PAGES = ["README.md", *(f"docs/python/{page}.md" for page in "start ufuncs random stats interpolate sklearn".split())]
NEEDED = {"docs/python/sklearn.md": "tmk.sklearn"}
PROGRAMS = [
    pytest.param(page, program, id=f"{page}-{k}")
    for page in PAGES
    for k, program in enumerate(re.findall(r"```python\n(.*?)```", (ROOT / page).read_text(), re.S))
]
EXAMPLES = sorted((ROOT / "python/examples").glob("*.py"))


def module_at(path):
    spec = importlib.util.spec_from_file_location(path.stem, path)
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


@pytest.mark.parametrize("page, program", PROGRAMS)
def test_program(page, program):
    if page in NEEDED:
        pytest.importorskip(NEEDED[page], exc_type=ImportError)
    exec(compile(program, page, "exec"), {})


def test_each_page_has_a_program():
    assert {program.values[0] for program in PROGRAMS} == set(PAGES)


SMALL = {"COUNT": 4096, "SIZES": [10, 100], "ROUNDS": 2, "SHOWN": 64}


@pytest.fixture
def draw(monkeypatch, tmp_path):
    """Runs a program of the gallery on little data, and gives its figure."""
    matplotlib = pytest.importorskip("matplotlib")
    matplotlib.use("Agg")
    pyplot = pytest.importorskip("matplotlib.pyplot")

    def run(name):
        module = module_at(ROOT / f"python/examples/{name}.py")
        for constant, value in SMALL.items():
            if hasattr(module, constant):
                monkeypatch.setattr(module, constant, value)
        figure = module.main()
        figure.savefig(tmp_path / "picture.png")
        return module, figure

    yield run
    pyplot.close("all")


def curve(axis, k):
    return np.array(axis.lines[k].get_data(), dtype=float)


def within_errors_stated(module, figure):
    highest = [np.abs(curve(axis, 0)[1]).max() for axis in figure.axes]
    return highest[0] < 1 and highest[1] < 4


def outside_the_ellipse_of_the_others(module, figure):
    """14 rows are wrong; the robust ellipse is the smaller one."""
    plain, robust = (np.ptp(curve(figure.axes[0], k), axis=1).prod() for k in (2, 3))
    return curve(figure.axes[0], 1).shape == (2, 14) and robust < 0.2 * plain


def monotone_between_neighbours(module, figure):
    """Hyman's curve never leaves the range of two neighbours; all go through the points."""
    day, ozone = curve(figure.axes[0], 4)
    site, value = curve(figure.axes[0], 2)
    cell = np.clip(np.searchsorted(day, site, side="right") - 1, 0, len(day) - 2)
    low, high = np.minimum(ozone[:-1], ozone[1:])[cell], np.maximum(ozone[:-1], ozone[1:])[cell]
    return len(day) == 18 and (value >= low - 1e-9).all() and (value <= high + 1e-9).all()


def sobol_is_better(module, figure):
    sobol, random = (np.exp(np.log(curve(figure.axes[2], k)[1][-6:]).mean()) for k in (0, 1))
    return sobol < 0.3 * random


def every_hole_is_drawn(module, figure):
    imputed = [curve(figure.axes[0], k) for k in range(1, 6)]
    return all(points.shape == (2, 37) and (points[1] > 0).all() for points in imputed)


def ratios_are_positive(module, figure):
    return all((curve(figure.axes[0], k)[1] > 0).all() for k in range(len(module.ROWS)))


GALLERY = {
    "ellipses": outside_the_ellipse_of_the_others,
    "errors": within_errors_stated,
    "families": monotone_between_neighbours,
    "imputation": every_hole_is_drawn,
    "points": sobol_is_better,
    "speed": ratios_are_positive,
}


@pytest.mark.parametrize("name", GALLERY)
def test_gallery(name, draw):
    assert GALLERY[name](*draw(name))


def test_every_example_is_tested():
    assert {path.stem for path in EXAMPLES} == {*GALLERY, "tour"}


def test_tour(capsys):
    module_at(ROOT / "python/examples/tour.py").main()
    page = capsys.readouterr().out
    assert "[1] 0: singularity, result -inf" in page and "gives the same numbers" in page and "357.0 ppm" in page


def test_table_of_names():
    table = module_at(ROOT / "python/tools/site.py").ufunc_table((ROOT / "python/src/names.def").read_text())
    rows = [re.split(r"(?<!\\)\|", line)[1:-1] for line in table.splitlines()[2:]]
    assert all(len(row) == 5 for row in rows)
    names = {name for row in rows for name in re.findall(r"`(\w+)`", row[0] + row[1])}
    assert names == set(tmk._ufuncs)


def test_stubs_are_made_of_the_names(tmp_path):
    program, names, package = (ROOT / "python" / name for name in ("tools/stubs.py", "src/names.def", "tmk"))
    subprocess.run([sys.executable, program, names, package, tmp_path], check=True)
    for stub in ("__init__", "low", "fast"):
        assert (tmp_path / f"{stub}.pyi").read_text() == (ROOT / f"python/tmk/{stub}.pyi").read_text()
    declared = set(re.findall(r"^(\w+): np.ufunc", (tmp_path / "low.pyi").read_text(), re.M))
    assert declared == set(tmk.low._ufuncs)
