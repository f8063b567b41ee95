"""The package as its users see it."""

from __future__ import annotations

import inspect
import pickle
import pydoc
import re
import subprocess
import sys
from pathlib import Path
from typing import Any

import pytest
from conftest import frame, grid

import fisheye_calibration as fc


def test_everything_public_is_documented() -> None:
    missing = []
    for name in fc.__all__:
        item = getattr(fc, name)
        if not (inspect.isclass(item) or inspect.isfunction(item)):
            continue
        members = vars(item).items() if inspect.isclass(item) else ()
        named = [(name, item)] + [
            (f"{name}.{member}", value)
            for member, value in members
            if not member.startswith("_") and (callable(value) or isinstance(value, property))
        ]
        missing += [title for title, value in named if not inspect.getdoc(value)]
    assert missing == []


def test_every_parameter_is_documented() -> None:
    functions: list[Any] = [fc.calibrate, fc.fit_affine, fc.crop, fc.stitch, fc.common_points]
    for function in functions:
        text = inspect.getdoc(function) or ""
        for name in inspect.signature(function).parameters:
            assert re.search(rf"^[\w, ]*\b{name}\b[\w, ]* : ", text, re.MULTILINE), name


def test_pydoc_shows_the_guide() -> None:
    text = pydoc.plain(pydoc.render_doc(fc))
    assert "Fisheye cameras over a work bed as measuring instruments" in text
    assert "world_to_raw(self, world" in text


def test_types_are_announced() -> None:
    folder = Path(fc.__file__).parent
    assert (folder / "py.typed").exists()
    assert (folder / "_core.pyi").exists()


def test_example_runs(tmp_path: Path) -> None:
    pytest.importorskip("matplotlib")
    example = Path(__file__).parents[2] / "examples" / "python" / "calibrate.py"
    command = [sys.executable, str(example), "--output", str(tmp_path)]
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stderr
    assert "bed error (95 %)" in done.stdout
    for name in ("residuals.png", "bed_error.png", "view.png", "camera.ini"):
        assert (tmp_path / name).stat().st_size > 500


def test_errors_have_their_public_names_and_can_be_pickled() -> None:
    error = fc.NoSolutionError("views[2]: too few points", fc.Outcome.TOO_FEW_POINTS, 2)
    assert type(error).__module__ == "fisheye_calibration"
    again = pickle.loads(pickle.dumps(error))
    assert (str(again), again.outcome, again.view) == (str(error), error.outcome, 2)
    assert fc.NoSolutionError("views: none", 1, -1).view is None


def test_example_of_the_page_runs(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    page = Path(__file__).parents[2] / "docs" / "python.md"
    (example,) = re.findall(r"```python\n(.*?)```", page.read_text(encoding="utf-8"), re.DOTALL)
    names: dict[str, Any] = {"world": grid(), "frame": frame(3, size=(1920, 1080))}
    for name, tilt in (("image", 0.15), ("tilted1", 0.35), ("tilted2", 0.5)):
        camera = fc.Camera(
            focal_length=(600, 600),
            principal_point=(960, 540),
            distortion=(0.02, -0.03),
            rotation_vector=(tilt, -0.2, 0),
            translation=(-150, -120, 300),
        )
        names[name] = camera.world_to_raw(grid())
    monkeypatch.chdir(tmp_path)
    exec(compile(example, str(page), "exec"), names)
    assert names["view"].shape == (1200, 1600, 3)
    assert (names["mask"] == 0).mean() > 0.5
    assert (tmp_path / "camera.ini").exists()
