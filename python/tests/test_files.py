"""Parameter files: names of any kind, and why they cannot be read or written."""

from __future__ import annotations

import os
import subprocess
import sys
from pathlib import Path
from typing import Any

import pytest
from conftest import camera
from test_stitching import rig

import fisheye_calibration as fc


@pytest.mark.parametrize("name", ["camera.ini", "käse 相机.ini", "a;b#c=d.ini"])
@pytest.mark.parametrize("kind", [Path, str, os.fsencode])
def test_any_name_will_do(name: str, kind: Any, tmp_path: Path) -> None:
    path = kind(tmp_path / name)
    record = fc.stitch(*rig()).record
    values: list[Any] = [camera(), record]
    for value in values:
        value.save(path)
        assert type(value).load(path).record.dtype == value.record.dtype
    assert fc.Camera.load(path).focal_length == camera().focal_length
    assert fc.StitchedRecord.load(path).size == record.size
    assert os.listdir(os.fsencode(tmp_path)) == [os.fsencode(name)]


def test_names_that_are_no_text(tmp_path: Path) -> None:
    path = os.fsdecode(os.fsencode(tmp_path) + b"/\xff.ini")
    camera().save(path)
    assert fc.Camera.load(path).pixel == camera().pixel


def test_wrong_types_of_paths_are_named() -> None:
    wrong: Any
    for wrong in (3, None, 1.5):
        with pytest.raises(TypeError, match="^path: neither str nor PathLike but "):
            fc.Camera.load(wrong)
        with pytest.raises(TypeError, match="^path: neither str nor PathLike but "):
            camera().save(wrong)


def test_error_of_the_system_says_why(tmp_path: Path) -> None:
    missing = tmp_path / "no folder" / "camera.ini"
    with pytest.raises(FileNotFoundError) as caught:
        fc.Camera.load(missing)
    assert caught.value.filename == str(missing)
    with pytest.raises(FileNotFoundError) as caught:
        camera().save(missing)
    assert caught.value.filename == str(missing)
    with pytest.raises(IsADirectoryError):
        fc.Camera.load(tmp_path)
    with pytest.raises(IsADirectoryError):
        camera().save(tmp_path)
    (tmp_path / "file").write_text("")
    with pytest.raises(NotADirectoryError):
        camera().save(tmp_path / "file" / "camera.ini")
    assert os.listdir(tmp_path) == ["file"]


def test_missing_permission_is_reported(tmp_path: Path) -> None:
    # Root may write anywhere, so the calls are made by a process of the user nobody.
    code = (
        "import os, sys\n"
        "import fisheye_calibration as fc\n"
        "loaded = fc.Camera.load(sys.argv[1])\n"
        "os.chmod(sys.argv[1], 0)\n"
        "os.chmod(os.path.dirname(sys.argv[1]), 0o500)\n"
        "if os.getuid() == 0:\n"
        "    os.setgroups([])\n"
        "    os.setgid(65534)\n"
        "    os.setuid(65534)\n"
        "for call in (fc.Camera.load, loaded.save):\n"
        "    try:\n"
        "        call(sys.argv[1])\n"
        "    except PermissionError as error:\n"
        "        assert error.filename == sys.argv[1]\n"
        "        print('refused')\n"
    )
    path = tmp_path / "camera.ini"
    camera().save(path)
    done = subprocess.run(
        [sys.executable, "-c", code, str(path)], capture_output=True, text=True, check=False
    )
    os.chmod(tmp_path, 0o700)
    assert done.stdout.split() == ["refused", "refused"], done.stderr
