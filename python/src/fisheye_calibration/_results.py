"""What a calibration found, and how accurate it is."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Dict, Optional, Tuple

import numpy as np
import numpy.typing as npt

from . import _arrays, _core
from ._arrays import Float32Array, Float64Array, Record, Size
from ._camera import Camera
from ._errors import NoResultError


@dataclass(frozen=True, eq=False)
class SolvedView:
    """The pose of one view's target, as the robust solver found it.

    Attributes
    ----------
    rotation_vector : (3,) float64 array
        From the target's frame to the camera, radians.
    translation : (3,) float64 array
        Likewise, world units.
    covariance : (12, 12) float64 array
        Of fx, fy, cx, cy, k0, k1, rotation vector and translation; NaN for a view that was left
        out.
    wrong : bool
        Whether the view contradicts the others.
    wrong_points : (n,) bool array
        Points that contradict the others.
    """

    rotation_vector: Float64Array
    translation: Float64Array
    covariance: Float64Array
    wrong: bool
    wrong_points: npt.NDArray[np.bool_]

    def __repr__(self) -> str:
        wrong = "wrong, " if self.wrong else ""
        count = np.count_nonzero(self.wrong_points)
        return f"<SolvedView: {wrong}{len(self.wrong_points)} points, {count} wrong>"


@dataclass(frozen=True, eq=False)
class BedErrorMap:
    """Bounds on the error on the bed at a grid of points.

    Attributes
    ----------
    x, y : (columns,) and (rows,) float64 arrays
        World coordinates of the grid, world units.
    error : (rows, columns) float64 array
        The bound at each point, world units; NaN where the raw image does not show it.
    """

    x: Float64Array
    y: Float64Array
    error: Float64Array

    def __repr__(self) -> str:
        rows, columns = self.error.shape
        return (
            f"<BedErrorMap: {columns} x {rows} points, X {self.x[0]:.6g} ... {self.x[-1]:.6g}, "
            f"Y {self.y[0]:.6g} ... {self.y[-1]:.6g}>"
        )


@dataclass(frozen=True, eq=False)
class Calibration:
    """A calibrated camera with what is known about its accuracy.

    Attributes
    ----------
    camera : Camera
        The camera, and the bed on which the first view's target lies.
    rms : float
        Root mean square distance of the points in use from their reprojection, pixels.
    world : (n, 2) float32 array
        The first view's points on the bed, world units.
    image : (n, 2) float32 array
        The same points as measured in the raw image, pixels.
    reprojected : (n, 2) float64 array
        The same points as the camera projects them, pixels.
    residuals : (n, 2) float64 array
        `image` minus `reprojected`, pixels.
    size : (int, int)
        Width and height of the raw image, pixels.
    view_size : (int, int)
        Width and height of the view that the camera renders, pixels.
    views : tuple of SolvedView
        What the robust solver found, view by view; empty if it found no solution.
    noise_sigma : float
        Standard deviation of a measured coordinate, pixels; NaN without a robust solution.
    noise_assumed : bool
        Whether there were too few points to estimate the noise; it is then at least 0.5.
    """

    camera: Camera
    rms: float
    world: Float32Array
    image: Float32Array
    reprojected: Float64Array
    residuals: Float64Array
    size: Size
    view_size: Size
    views: Tuple[SolvedView, ...]
    noise_sigma: float
    noise_assumed: bool
    _solution: Optional[Record]

    @property
    def wrong_points(self) -> npt.NDArray[np.bool_]:
        """Points of the first view that contradict the others, shape (n,)."""
        if not self.views:
            return np.zeros(len(self.world), np.bool_)
        return self.views[0].wrong_points

    @property
    def solution(self) -> Record:
        """The robust solution in double precision: the C interface's ``fcal_solution``, shape ().

        Raises
        ------
        NoResultError
            If the robust solver found none.
        """
        if self._solution is None:
            raise NoResultError("solution: the robust solver found none, so no accuracy is known")
        return self._solution

    def raw_to_bed(self, raw: npt.ArrayLike) -> Float64Array:
        """Map raw pixels, (n, 2), to the bed in double precision, by the robust solution."""
        return _core.raw_to_bed(self.solution, _arrays.exact_plane(raw, "raw"))

    def bed_error(self, world: Optional[npt.ArrayLike] = None) -> Float64Array:
        """Return how far off the camera may be on the bed.

        In at least 95 of 100 calibrations the actual error at a point is below the bound.

        Parameters
        ----------
        world : (n, 2) or (n, 3) array_like, optional
            Points of the bed, world units; the default are the target's.

        Returns
        -------
        (n,) float64 array
            World units; NaN where the raw image does not show the point.

        Raises
        ------
        NoResultError
            If the robust solver found no solution to judge by.
        """
        points = self.world if world is None else world
        grid = _arrays.exact_bed(points, "world")
        judged = _core.solution_of_camera(self.camera.record)
        errors = _core.bed_errors(self.solution, judged, grid)
        raw = self.camera.world_to_raw(grid)
        shown = np.all((raw >= -0.5) & (raw <= np.array(self.size) - 0.5), axis=1)
        errors[~shown] = np.nan
        return errors

    def bed_error_map(
        self,
        area: Optional[Tuple[float, float, float, float]] = None,
        *,
        columns: int = 97,
        rows: Optional[int] = None,
    ) -> BedErrorMap:
        """Return `bed_error` at a grid of points.

        Parameters
        ----------
        area : (float, float, float, float), optional
            Least X and Y, largest X and Y, world units; the default is what the view shows.
        columns, rows : int, optional
            Points in X and Y, at least 2; by default the rows are as far apart as the columns.
        """
        if area is None:
            area = self._shown_area()
        x0, y0, x1, y1 = _arrays.vector(area, "area", 4)
        if not (x0 < x1 and y0 < y1):
            raise ValueError(f"area: {area} is empty")
        columns = _arrays.whole(columns, "columns", 2)
        if rows is None:
            rows = max(2, round(float((columns - 1) * (y1 - y0) / (x1 - x0))) + 1)
        x: Float64Array = np.linspace(x0, x1, columns)
        y: Float64Array = np.linspace(y0, y1, _arrays.whole(rows, "rows", 2))
        grid = np.stack(np.meshgrid(x, y), axis=-1).reshape(-1, 2)
        return BedErrorMap(x, y, self.bed_error(grid).reshape(len(y), len(x)))

    def _shown_area(self) -> Tuple[float, float, float, float]:
        width, height = self.view_size
        edges = [(-0.5, -0.5), (width - 0.5, height - 0.5)]
        corners = self.camera.view_to_world(edges, self.view_size)
        (x0, y0), (x1, y1) = corners.min(axis=0), corners.max(axis=0)
        return float(x0), float(y0), float(x1), float(y1)

    def __setstate__(self, state: Dict[str, Any]) -> None:
        self.__dict__.update(state)
        if self._solution is not None:
            self._solution.setflags(write=False)  # pickle has forgotten it

    def __repr__(self) -> str:
        return f"<Calibration: rms {self.rms:.4f} px, {len(self.world)} points, {self.camera!r}>"
