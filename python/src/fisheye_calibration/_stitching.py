"""Two cameras over one bed."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Optional, Tuple

import numpy as np
import numpy.typing as npt

from . import _arrays, _core, _files
from ._arrays import Float32Array, Frame, Record, Size
from ._camera import Camera
from ._files import PathLike
from ._record_value import RecordValue
from ._target_points import TargetPoints, points_of


@dataclass(frozen=True, eq=False)
class RigView:
    """One camera of a pair.

    Attributes
    ----------
    frame : (h, w), (h, w, 3) or (h, w, 4) uint8 array
        Its raw frame, row 0 at the top, of any strides.
    camera : Camera
        Its calibration, for views of twice the frame's size: the `view_size` of `calibrate` or the
        `size` of `Camera.place_view`.
    points : TargetPoints
        What it saw of the target on the bed, within 0 ... 10000 world units.
    """

    frame: Frame
    camera: Camera
    points: TargetPoints

    def __repr__(self) -> str:
        shape = getattr(self.frame, "shape", None)
        return f"<RigView: frame of shape {shape}, {self.camera!r}, {self.points!r}>"


class StitchedRecord(RecordValue):
    """Scale, size and datum of a stitched image.

    The world point `datum` is at the pixel `datum_pixel` of an image of `size`, `pixel` world
    units per pixel. Unlike the parameter file, which counts the datum's row from the bottom, all
    rows are counted from the top here.
    """

    __slots__ = ()

    def __init__(self) -> None:
        raise TypeError("StitchedRecord: the result of stitch() or StitchedRecord.load()")

    @classmethod
    def load(cls, path: PathLike) -> StitchedRecord:
        """Read a parameter file. The datum's world coordinates are read as whole numbers.

        Raises
        ------
        OSError
            If there is no such file or it cannot be read: FileNotFoundError, PermissionError ...
        ValueError
            If the file holds no record of a stitched image.
        """
        return cls._of(_files.load(path, _core.load_dual, "stitched image"))

    def save(self, path: PathLike) -> None:
        """Write a parameter file as a whole or not at all (then OSError)."""
        _files.save(path, _core.save_dual, self._record)

    @property
    def record(self) -> Record:
        """The fields of the C interface's ``fcal_dual``: a read-only structured array, shape ()."""
        return self._record

    @property
    def pixel(self) -> float:
        """World units per pixel."""
        return float(self._record["pixel"])

    @property
    def size(self) -> Size:
        """(width, height), pixels."""
        return int(self._record["width"]), int(self._record["height"])

    @property
    def datum(self) -> Tuple[float, float]:
        """World coordinates of the datum point."""
        return float(self._record["datum_xw"]), float(self._record["datum_yw"])

    @property
    def datum_pixel(self) -> Tuple[int, int]:
        """(column, row from the top) of the datum point."""
        height = int(self._record["height"])
        return int(self._record["datum_x"]), height - int(self._record["datum_y"])

    def _rows_above(self) -> np.float32:
        # v of the C interface counts rows from the top of the whole canvas. After a crop the
        # picture's rows are off by this many (docs/conventions.md).
        return np.float32(int(self._record["height"]) - 2 * int(self._record["datum_y"]))

    def world_to_stitched(self, world: npt.ArrayLike) -> Float32Array:
        """Map points of the bed, (n, 2), to (column, row from the top) of the image, float32."""
        points = _core.world_to_stitched(self._record, _arrays.bed(world, "world"))
        points[:, 1] += self._rows_above()
        return points

    def stitched_to_world(self, stitched: npt.ArrayLike) -> Float32Array:
        """Map (column, row from the top), (n, 2), to the bed: the inverse."""
        points = _arrays.plane(stitched, "stitched").copy()
        points[:, 1] -= self._rows_above()
        return _core.stitched_to_world(self._record, points)

    def __repr__(self) -> str:
        width, height = self.size
        return f"<StitchedRecord: {width} x {height} pixels, {self.pixel:.6g} per pixel>"


@dataclass(frozen=True, eq=False)
class Stitched:
    """Two cameras' views in one picture.

    Attributes
    ----------
    image : uint8 array
        The picture, with as many bytes per pixel as the frames.
    record : StitchedRecord
        What it shows.
    """

    image: Frame
    record: StitchedRecord

    def __repr__(self) -> str:
        return f"<Stitched: image of shape {self.image.shape}, {self.record!r}>"

    def crop(self, left: int, top: int, size: Size) -> Stitched:
        """Copy a rectangle.

        Parameters
        ----------
        left, top : int
            Its top-left pixel.
        size : (int, int)
            Width and height, multiples of 4. What lies outside the picture is black.
        """
        source = _arrays.picture(self.image, "image")
        shape = _arrays.shape_of(_arrays.size_of(size, "size"), source)
        target = _arrays.output(None, "out", shape)
        if target.shape[0] % 4 != 0 or target.shape[1] % 4 != 0:
            raise ValueError(f"size: {size} are not multiples of 4")
        record = self.record.record.copy()
        corner = _arrays.whole(left, "left"), _arrays.whole(top, "top")
        _core.crop_stitched(source, *corner, target, record)
        return Stitched(target, StitchedRecord._of(record))


def stitch(first: RigView, second: RigView, *, out: Optional[Frame] = None) -> Stitched:
    """Correct the frames of two cameras, align the second to the first and blend them.

    Parameters
    ----------
    first, second : RigView
        Two cameras that share at least one point of the target.
    out : uint8 array, optional
        The canvas, of the size `stitched_size`; what no camera covers keeps its value. By default
        it is new and black.

    Raises
    ------
    NoResultError
        If the cameras share no point, or their points do not pair.
    ValueError
        If a camera is known to be made for a view of another size than twice its frame's.
    """
    views = _checked(first, "first") + _checked(second, "second")
    if views[0].shape[2:] != views[3].shape[2:]:
        raise ValueError("second: frame has not as many bytes per pixel as the first one")
    shape = _arrays.shape_of(_core.stitched_size(*views), views[0])
    canvas = _arrays.output(out, "out", shape, "first and second")
    record = _core.stitch(*views, canvas)
    return Stitched(canvas, StitchedRecord._of(record))


def stitched_size(first: RigView, second: RigView) -> Size:
    """Return (width, height) of the canvas that `stitch` needs, multiples of 4.

    Raises
    ------
    NoResultError, ValueError
        As `stitch`.
    """
    return _core.stitched_size(*_checked(first, "first"), *_checked(second, "second"))


def _checked(view: object, name: str) -> Tuple[Frame, Record, Record]:
    if not isinstance(view, RigView):
        raise TypeError(f"{name}: not a RigView but {type(view).__name__}")
    if not isinstance(view.camera, Camera):
        raise TypeError(f"{name}.camera: not a Camera but {type(view.camera).__name__}")
    frame = _arrays.picture(view.frame, f"{name}.frame")
    doubled = 2 * frame.shape[1], 2 * frame.shape[0]
    if view.camera.view_size not in (None, doubled):
        raise ValueError(
            f"{name}.camera: made for a view of {view.camera.view_size}, not {doubled}, which is "
            "twice the frame's size"
        )
    return frame, view.camera.record, points_of(view.points, f"{name}.points")
