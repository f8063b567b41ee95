"""Synthetic cameras, targets and frames."""

from __future__ import annotations

import os
from pathlib import Path

import numpy as np
import numpy.typing as npt
import pytest
from hypothesis import settings

import fisheye_calibration as fc

settings.register_profile("repeatable", derandomize=True, deadline=None, database=None)
settings.load_profile("repeatable")

SIZE = (320, 240)
Numbers = npt.NDArray[np.float64]


def camera(tilt: float = 0.15, pixel: float = 1.0) -> fc.Camera:
    """Return a camera of SIZE about 150 mm above a bed of 300 mm x 240 mm."""
    return fc.Camera(
        focal_length=(103.0, 103.5),
        principal_point=(161.0, 118.5),
        distortion=(0.02, -0.03),
        rotation_vector=(tilt, -0.2, 0.02),
        translation=(-150.0, -120.0, 200.0),
        pixel=pixel,
        datum=(150.0, 120.0),
    )


def grid(columns: int = 11, rows: int = 9, step: float = 30.0) -> Numbers:
    """Return points of the bed, row by row, shape (columns*rows, 2)."""
    x, y = np.meshgrid(np.arange(columns) * step, np.arange(rows) * step)
    points: Numbers = np.stack([x, y], axis=-1).reshape(-1, 2)
    return points


def measured(tilt: float = 0.15, noise: float = 0.05, seed: int = 1) -> tuple[Numbers, Numbers]:
    """Return a target's points and where the camera sees them, with noise in pixels."""
    world = grid()
    image = camera(tilt).world_to_raw(world).astype(np.float64)
    return world, image + noise * np.random.default_rng(seed).standard_normal(image.shape)


def frame(channels: int = 0, seed: int = 2, size: tuple[int, int] = SIZE) -> fc.Frame:
    """Return a random frame; 0 channels are a grey picture of two dimensions."""
    shape = (size[1], size[0]) + ((channels,) if channels else ())
    return np.random.default_rng(seed).integers(0, 256, shape, dtype=np.uint8)


@pytest.fixture(scope="session")
def calibration() -> fc.Calibration:
    """Return a camera calibrated from three views."""
    views = [measured(tilt, seed=seed) for tilt, seed in ((0.15, 1), (0.35, 2), (0.5, 3))]
    return fc.calibrate(*views[0], SIZE, more_views=views[1:])


def built(variable: str) -> Path:
    """Return a file of the build tree that an environment variable names, or skip the test."""
    path = os.environ.get(variable)
    if not path:
        pytest.skip(f"{variable} is not set")
    assert Path(path).exists(), path
    return Path(path)
