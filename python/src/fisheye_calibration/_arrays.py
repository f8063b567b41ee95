"""From what callers pass to the arrays that the extension module takes."""

from __future__ import annotations

import math
import operator
from typing import Any, Optional, Tuple

import numpy as np
import numpy.typing as npt

from . import _core

Float32Array = npt.NDArray[np.float32]
Float64Array = npt.NDArray[np.float64]
Frame = npt.NDArray[np.uint8]
Size = Tuple[int, int]
Record = npt.NDArray[np.void]

_LARGEST = 2**31 - 1
_LARGEST_FLOAT32 = float(np.finfo(np.float32).max)


def whole(value: Any, name: str, least: int = -_LARGEST - 1) -> int:
    """Return a whole number of 32 bits."""
    try:
        number = operator.index(value)
    except TypeError:
        raise TypeError(f"{name}: not a whole number but {type(value).__name__}") from None
    if not least <= number <= _LARGEST:
        raise ValueError(f"{name}: {number} is not within {least} ... {_LARGEST}")
    return number


def real(value: Any, name: str) -> float:
    """Return a number that is finite in 32 bits, too."""
    if isinstance(value, (str, bytes)):
        raise TypeError(f"{name}: not a number but {type(value).__name__}")
    try:
        number = float(value)
    except TypeError:
        raise TypeError(f"{name}: not a number but {type(value).__name__}") from None
    if not abs(number) <= _LARGEST_FLOAT32:
        raise ValueError(f"{name}: {number} is not a finite number of 32 bits")
    return number


def size_of(value: Any, name: str) -> Size:
    """Return (width, height) in pixels, both at least 1."""
    try:
        width, height = value
    except TypeError:
        raise TypeError(f"{name}: not (width, height) but {type(value).__name__}") from None
    except ValueError:
        raise ValueError(f"{name}: not the two numbers (width, height)") from None
    return whole(width, f"{name}[0]", 1), whole(height, f"{name}[1]", 1)


def numbers(value: npt.ArrayLike, name: str) -> npt.NDArray[Any]:
    """Return an array of whole or real numbers."""
    if isinstance(value, np.ma.MaskedArray) and np.any(value.mask):
        raise ValueError(f"{name}: has masked elements")
    try:
        array: npt.NDArray[Any] = np.asarray(value)
    except ValueError:
        raise ValueError(f"{name}: not an array, for example rows of different lengths") from None
    if array.dtype.kind not in "fiu":
        raise TypeError(f"{name}: not real numbers but {array.dtype}")
    return array


def _converted(array: npt.NDArray[Any], dtype: npt.DTypeLike) -> npt.NDArray[Any]:
    """Return the array itself if the extension module can take it, otherwise a copy.

    What exceeds 32 bits becomes infinite.
    """
    with np.errstate(over="ignore", invalid="ignore"):
        return np.require(array, dtype, ["C_CONTIGUOUS", "ALIGNED"])


def _finite(array: npt.NDArray[Any], name: str) -> Float64Array:
    if not np.all(np.abs(array) <= _LARGEST_FLOAT32):
        raise ValueError(f"{name}: not finite numbers of 32 bits")
    return _converted(array, np.float64)


def vector(value: npt.ArrayLike, name: str, length: int) -> Float64Array:
    """Return so many finite numbers."""
    array = numbers(value, name)
    if array.shape != (length,):
        raise ValueError(f"{name}: shape {array.shape}, not ({length},)")
    return _finite(array, name)


def matrix(value: npt.ArrayLike, name: str, rows: int, columns: int) -> Float64Array:
    """Return rows x columns finite numbers."""
    array = numbers(value, name)
    if array.shape != (rows, columns):
        raise ValueError(f"{name}: shape {array.shape}, not ({rows}, {columns})")
    return _finite(array, name)


def _rows(value: npt.ArrayLike, name: str, widths: tuple[int, ...]) -> npt.NDArray[Any]:
    array = numbers(value, name)
    if array.shape == (0,):  # [] is no points
        array = array.reshape(0, widths[0])
    if array.ndim != 2 or array.shape[1] not in widths:
        wanted = " or ".join(f"(n, {width})" for width in widths)
        raise ValueError(f"{name}: shape {array.shape}, not {wanted}")
    if len(array) > _LARGEST:
        raise ValueError(f"{name}: {len(array)} points, more than 2^31 - 1")
    return array


def _on_bed(value: npt.ArrayLike, name: str) -> npt.NDArray[Any]:
    array = _rows(value, name, (2, 3))
    if array.shape[1] == 3 and np.any(array[:, 2] != 0):
        raise ValueError(f"{name}: not on the work plane Z = 0")
    return array[:, :2]


def plane(value: npt.ArrayLike, name: str) -> Float32Array:
    """Return points of a plane, (n, 2)."""
    return _converted(_rows(value, name, (2,)), np.float32)


def exact_plane(value: npt.ArrayLike, name: str) -> Float64Array:
    """Return points of a plane in double precision, (n, 2)."""
    return _converted(_rows(value, name, (2,)), np.float64)


def bed(value: npt.ArrayLike, name: str) -> Float32Array:
    """Return world points with Z = 0 as (n, 2)."""
    return _converted(_on_bed(value, name), np.float32)


def exact_bed(value: npt.ArrayLike, name: str) -> Float64Array:
    """Return world points with Z = 0 as (n, 2) in double precision."""
    return _converted(_on_bed(value, name), np.float64)


def space(value: npt.ArrayLike, name: str) -> Float32Array:
    """Return world points as (n, 3); Z of (n, 2) is 0."""
    array = _rows(value, name, (2, 3))
    if array.shape[1] == 3:
        return _converted(array, np.float32)
    points = np.zeros((len(array), 3), np.float32)
    points[:, :2] = _converted(array, np.float32)
    return points


def target(
    world: npt.ArrayLike,
    image: npt.ArrayLike,
    world_name: str = "world",
    image_name: str = "image",
) -> Record:
    """Return records of target points with ids from 1."""
    on_bed = bed(world, world_name)
    in_image = plane(image, image_name)
    if len(on_bed) != len(in_image):
        raise ValueError(f"{image_name}: {len(in_image)} points, {world_name} has {len(on_bed)}")
    points: Record = np.zeros(len(on_bed), _core.point_dtype)
    points["id"] = np.arange(1, len(points) + 1)
    points["xw"], points["yw"] = on_bed.T
    points["x"], points["y"] = in_image.T
    return points


def _checked(array: object, name: str) -> Frame:
    if not isinstance(array, np.ndarray):
        raise TypeError(f"{name}: not a NumPy array but {type(array).__name__}")
    if array.dtype != np.uint8:
        raise TypeError(f"{name}: dtype {array.dtype}, not uint8")
    grey = array.ndim == 2
    if not (grey or (array.ndim == 3 and array.shape[2] in (3, 4))):
        raise ValueError(f"{name}: shape {array.shape}, not (h, w), (h, w, 3) or (h, w, 4)")
    if array.shape[0] == 0 or array.shape[1] == 0:
        raise ValueError(f"{name}: shape {array.shape} has no pixels")
    if array.nbytes > _LARGEST:
        raise ValueError(f"{name}: shape {array.shape} has more than 2^31 - 1 bytes")
    return array


def picture(array: object, name: str) -> Frame:
    """Return a picture to be read; a copy only if no stride from row to row describes it."""
    frame = _checked(array, name)
    return frame if _core.has_plain_rows(frame) else np.ascontiguousarray(frame)


def shape_of(size: Size, like: Frame) -> tuple[int, ...]:
    """Return the shape of a picture of that size with as many bytes per pixel as another one."""
    return (size[1], size[0]) + like.shape[2:]


def output(
    array: Optional[Frame], name: str, shape: tuple[int, ...], size_name: str = "size"
) -> Frame:
    """Return the caller's picture to be written, checked, or a new black one."""
    if math.prod(shape) > _LARGEST:
        raise ValueError(f"{size_name}: a picture of shape {shape} has more than 2^31 - 1 bytes")
    if array is None:
        return np.zeros(shape, np.uint8)
    frame = _checked(array, name)
    if frame.shape != shape:
        raise ValueError(f"{name}: shape {frame.shape}, not {shape}")
    if not frame.flags.writeable:
        raise ValueError(f"{name}: read-only")
    if not _core.has_plain_rows(frame):
        raise ValueError(
            f"{name}: strides {frame.strides}; the pixels of a row must be adjacent, rows must not "
            "overlap, and the last byte must be less than 2^31 bytes from the first"
        )
    return frame


def require_apart(first: Frame, second: Frame, name: str, other: str) -> None:
    """Refuse outputs that overlap what they must not."""
    if np.shares_memory(first, second):
        raise ValueError(f"{name}: overlaps {other}")


def content_of(record: Record) -> bytes:
    """Return the bytes of the fields, without those between them, which have no meaning."""
    return b"".join(record[name].tobytes() for name in record.dtype.names or ())


def cleared(record: Record) -> Record:
    """Return a copy of the record with zeros between its fields."""
    copy = np.zeros(record.shape, record.dtype)
    for name in record.dtype.names or ():
        copy[name] = record[name]
    return copy
