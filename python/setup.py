"""Builds the extension module with the library's own CMake project.

The version is that of CMakeLists.txt. FISHEYE_CALIBRATION_BUILD names a configured build tree of
the library to be used instead of a new one in python/build.

The extension module contains code of pybind11, whose licence wants its notice to go with it: where
Debian has installed pybind11, the wheel gets Debian's copy, as LICENSE.pybind11 beside LICENSE.
"""

from __future__ import annotations

import os
import re
import shutil
import subprocess
import sys
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = Path(__file__).resolve().parent
SOURCES = HERE.parent
TARGET = "fisheye_calibration_python"
NOTICE = Path("/usr/share/doc/pybind11-dev/copyright")


def version() -> str:
    """Return the version of the CMake project."""
    text = (SOURCES / "CMakeLists.txt").read_text(encoding="utf-8")
    found = re.search(r"^project\([^)]*?\sVERSION\s+([\d.]+)", text, re.MULTILINE)
    if found is None:
        raise RuntimeError("CMakeLists.txt: no version")
    return found.group(1)


@contextmanager
def notice() -> Iterator[None]:
    """Put pybind11's notice where setuptools finds it by its name, for as long as it runs."""
    place = HERE / "LICENSE.pybind11"
    if NOTICE.exists():
        shutil.copyfile(NOTICE, place)
    try:
        yield
    finally:
        place.unlink(missing_ok=True)


class CMakeBuild(build_ext):
    """Builds the one extension module with CMake."""

    def build_extension(self, ext: Extension) -> None:
        """Configure, build and copy the module to where setuptools expects it."""
        given = os.environ.get("FISHEYE_CALIBRATION_BUILD")
        tree = Path(given) if given else Path(self.build_temp).resolve() / "cmake"
        if not given:
            self.configure(tree)
        jobs = str(self.parallel or os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL") or os.cpu_count())
        subprocess.run(
            ["cmake", "--build", str(tree), "--target", TARGET, "--parallel", jobs], check=True
        )
        place = Path(self.get_ext_fullpath(ext.name)).resolve()
        built = tree / "python" / "package" / "fisheye_calibration" / place.name
        if not built.exists():
            raise RuntimeError(
                f"{tree} holds no {place.name}: it was configured for another interpreter than "
                f"{sys.executable}"
            )
        place.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(built, place)

    def configure(self, tree: Path) -> None:
        """Configure the library without tests, program, windows and debug files."""
        tree.mkdir(parents=True, exist_ok=True)
        generator = ["-GNinja"] if shutil.which("ninja") else []
        options = {
            "CMAKE_BUILD_TYPE": "Release",
            "Python_EXECUTABLE": sys.executable,
            "FISHEYE_CALIBRATION_BUILD_PYTHON": "ON",
            "FISHEYE_CALIBRATION_BUILD_TESTS": "OFF",
            "FISHEYE_CALIBRATION_BUILD_PROGRAM": "OFF",
            "FISHEYE_CALIBRATION_INTERACTIVE": "OFF",
            "FISHEYE_CALIBRATION_DEBUG_FILES": "OFF",
        }
        definitions = [f"-D{name}={value}" for name, value in options.items()]
        subprocess.run(
            ["cmake", "-S", str(SOURCES), "-B", str(tree), *generator, *definitions], check=True
        )


with notice():
    setup(
        version=version(),
        ext_modules=[Extension("fisheye_calibration._core", sources=[])],
        cmdclass={"build_ext": CMakeBuild},
    )
