"""Numbered points of a target, as several cameras see them."""

from __future__ import annotations

from typing import Optional, Tuple

import numpy as np
import numpy.typing as npt

from . import _arrays, _core
from ._arrays import Float32Array, Record
from ._record_value import RecordValue


class TargetPoints(RecordValue):
    """Numbered points of a target as one camera sees them.

    They never change; they can be compared, hashed, copied and pickled. There may be none.

    Parameters
    ----------
    ids : (n,) array_like of int
        Numbers from 1, which identify a point in both cameras.
    world : (n, 2) or (n, 3) array_like
        Points of the bed, world units.
    image : (n, 2) array_like
        The same points in the raw image, pixels.
    """

    __slots__ = ()

    def __init__(self, ids: npt.ArrayLike, world: npt.ArrayLike, image: npt.ArrayLike) -> None:
        points = _arrays.target(world, image)
        numbers = _arrays.numbers(ids, "ids")
        if numbers.dtype.kind not in "iu" and numbers.size > 0:  # [] has no type of its own
            raise TypeError(f"ids: not whole numbers but {numbers.dtype}")
        if numbers.shape != points.shape:
            raise ValueError(f"ids: shape {numbers.shape}, but world has {len(points)} points")
        bounds = np.iinfo(np.int32)
        if np.any(numbers < bounds.min) or np.any(numbers > bounds.max):
            raise ValueError("ids: more than 32 bits")
        points["id"] = numbers
        points.setflags(write=False)
        self._record = points

    def __len__(self) -> int:
        return len(self._record)

    def __repr__(self) -> str:
        return f"<TargetPoints: {len(self)} points>"

    @property
    def record(self) -> Record:
        """The fields of the C interface's ``fcal_point``: a read-only structured array, (n,)."""
        return self._record

    @property
    def ids(self) -> npt.NDArray[np.int32]:
        """Numbers of the points, shape (n,)."""
        return np.array(self._record["id"], np.int32)

    @property
    def world(self) -> Float32Array:
        """Points of the bed, world units, shape (n, 2)."""
        return np.stack([self._record["xw"], self._record["yw"]], axis=1)

    @property
    def image(self) -> Float32Array:
        """Points of the raw image, pixels, shape (n, 2)."""
        return np.stack([self._record["x"], self._record["y"]], axis=1)


def common_points(
    first: TargetPoints, second: TargetPoints, id_count: Optional[int] = None
) -> Tuple[TargetPoints, TargetPoints]:
    """Return the points that both cameras see, by ascending id.

    Parameters
    ----------
    first, second : TargetPoints
        What the two cameras see. An id that occurs twice in one list counts as common, too.
    id_count : int, optional
        Ids outside 1 ... id_count are skipped; the default is the largest id.

    Returns
    -------
    (TargetPoints, TargetPoints)
        The common points of the first and of the second camera.
    """
    points1, points2 = points_of(first, "first"), points_of(second, "second")
    if id_count is None:
        id_count = max([0, *points1["id"].tolist(), *points2["id"].tolist()])
    common = _core.common_points(points1, points2, _arrays.whole(id_count, "id_count"))
    return TargetPoints._of(common[0]), TargetPoints._of(common[1])


def points_of(points: object, name: str) -> Record:
    """Return the records of target points."""
    if not isinstance(points, TargetPoints):
        raise TypeError(f"{name}: not TargetPoints but {type(points).__name__}")
    return points.record
