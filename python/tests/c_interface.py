"""The dynamic library's C interface through ctypes, declared independently of the package."""

from __future__ import annotations

import ctypes as ct
from typing import Any

import numpy as np
import numpy.typing as npt
from conftest import built

I32, F32, F64 = ct.c_int32, ct.c_float, ct.c_double


class Point(ct.Structure):
    """fcal_point."""

    _fields_ = [
        ("id", I32),
        ("reserved1", I32),
        ("reserved2", I32),
        ("xw", F32),
        ("yw", F32),
        ("reserved3", I32),
        ("x", F32),
        ("y", F32),
        ("reproj_x", F64),
        ("reproj_y", F64),
        ("error_x", F64),
        ("error_y", F64),
    ]


class Camera(ct.Structure):
    """fcal_camera."""

    _fields_ = [
        *((name, F32) for name in ("u0", "v0", "fx", "fy", "skewness")),
        ("k", F64 * 6),
        ("r", F32 * 9),
        *((name, F32) for name in ("rx", "ry", "rz", "tx", "ty", "tz")),
        ("p", F64 * 9),
        *((name, F32) for name in ("pixel", "datum_xw", "datum_yw", "image_dx", "image_dy")),
    ]


class Dual(ct.Structure):
    """fcal_dual."""

    _fields_ = [
        ("pixel", F32),
        *((name, I32) for name in ("width", "height", "datum_x", "datum_y")),
        ("datum_xw", F32),
        ("datum_yw", F32),
    ]


class Image(ct.Structure):
    """fcal_image."""

    _fields_ = [
        ("data", ct.c_void_p),
        *((name, I32) for name in ("width", "height", "stride", "bits")),
    ]


class RigView(ct.Structure):
    """fcal_rig_view."""

    _fields_ = [
        ("frame", Image),
        ("camera", ct.POINTER(Camera)),
        ("points", ct.POINTER(Point)),
        ("count", I32),
    ]


class Solution(ct.Structure):
    """fcal_solution."""

    _fields_ = [
        *((name, F64) for name in ("fx", "fy", "cx", "cy", "k0", "k1", "alpha")),
        ("rotation", F64 * 3),
        ("translation", F64 * 3),
        ("covariance", F64 * 144),
    ]


class TargetView(ct.Structure):
    """fcal_target_view."""

    _fields_ = [("points", ct.POINTER(Point)), ("count", I32)]


class ViewsResult(ct.Structure):
    """fcal_views_result."""

    _fields_ = [
        *((name, I32) for name in ("size", "outcome", "refused_view", "steps")),
        ("rms", F64),
        ("noise_sigma", F64),
        ("noise_assumed", I32),
        ("reserved", I32),
    ]


def library() -> ct.CDLL:
    """Return the library, or skip the test."""
    loaded = ct.CDLL(str(built("FISHEYE_CALIBRATION_LIBRARY")))
    loaded.fcal_version.restype = ct.c_char_p
    loaded.fcal_last_error.restype = ct.c_char_p
    return loaded


def points_of(world: npt.ArrayLike, image: npt.ArrayLike, ids: Any = None) -> Any:
    """Return an array of Point."""
    on_bed, in_image = np.asarray(world, np.float32), np.asarray(image, np.float32)
    points = (Point * len(on_bed))()
    for i, point in enumerate(points):
        point.id = i + 1 if ids is None else int(ids[i])
        point.xw, point.yw = on_bed[i, :2]
        point.x, point.y = in_image[i]
    return points


def image_of(array: npt.NDArray[np.uint8]) -> Image:
    """Return the description of a picture; the array must outlive it."""
    bits = 8 * (array.shape[2] if array.ndim == 3 else 1)
    return Image(array.ctypes.data, array.shape[1], array.shape[0], array.strides[0], bits)


def numbers_of(array: npt.NDArray[Any]) -> ct.c_void_p:
    """Return the address of a contiguous array."""
    assert array.flags.c_contiguous
    return ct.c_void_p(array.ctypes.data)
