"""From points of a flat target to a camera and its accuracy."""

from __future__ import annotations

import collections.abc
from dataclasses import dataclass
from typing import Optional, Tuple, Union

import numpy as np
import numpy.typing as npt

from . import _arrays, _core
from ._arrays import Float32Array, Float64Array, Record, Size
from ._camera import Camera
from ._errors import NoResultError, NoSolutionError

TargetView = Tuple[npt.ArrayLike, npt.ArrayLike]


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
        world : (n, 2) array_like, optional
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
        grid = _arrays.exact_plane(points, "world")
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

    def __repr__(self) -> str:
        return f"<Calibration: rms {self.rms:.4f} px, {len(self.world)} points, {self.camera!r}>"


@dataclass(frozen=True)
class _Robust:
    views: Tuple[SolvedView, ...]
    solution: Record
    noise_sigma: float
    noise_assumed: bool


def calibrate(
    world: npt.ArrayLike,
    image: npt.ArrayLike,
    size: Size,
    *,
    view_size: Optional[Size] = None,
    more_views: collections.abc.Iterable[TargetView] = (),
    lens: Optional[Union[Calibration, Camera]] = None,
    solver: str = "robust",
    noise: str = "smooth",
    prior: bool = True,
    keep_all: bool = False,
    start_focal_factor: float = 1.0,
) -> Calibration:
    """Calibrate a camera from one or several views of a flat target.

    Parameters
    ----------
    world : (n, 2) or (n, 3) array_like
        Points of the target that lies on the bed, world units; Z is 0.
    image : (n, 2) array_like
        The same points as measured in the raw image, pixels from the centre of the top-left pixel.
    size : (int, int)
        Width and height of the raw image, pixels.
    view_size : (int, int), optional
        Width and height of the view that the camera is to render; the default is `size`.
    more_views : iterable of (world, image), optional
        Views of targets that are held anywhere, for example tilted. They make the lens, and with
        it the bed, more accurate.
    lens : Calibration or Camera, optional
        The lens is known, only the pose is wanted. A calibration's uncertainty counts; a camera's
        lens is taken as exact.
    solver : {"robust", "library"}, optional
        "robust" finds points and views that contradict the others and leaves them out.
        "library" is `SingleCamCalibration`, for one view of nine points or more; its first and
        last point fix the scale of the view. Its accuracy is judged by the robust solver.
    noise : {"smooth", "white"}, optional
        Whether errors of neighbouring points are alike (lens, flatness, printing) or independent.
    prior : bool, optional
        Whether the lens is assumed to be roughly a fisheye lens. Without, one view may leave it
        far off.
    keep_all : bool, optional
        Use wrong points and views, too; they are listed all the same.
    start_focal_factor : float, optional
        The solver starts from this multiple of the focal length max(width, height)/pi.

    Returns
    -------
    Calibration

    Raises
    ------
    NoSolutionError
        If there is no solution; its `outcome` and `view` say why.
    NoResultError
        If a camera is found, but no view of the bed, or if the first view contradicts the others.
    Error
        With "library", for points that determine no camera, such as points on a line.
    """
    width, height = _arrays.size_of(size, "size")
    view = (width, height) if view_size is None else _arrays.size_of(view_size, "view_size")
    targets = [_arrays.target(world, image)] + _more_targets(more_views)
    factor = _arrays.real(start_focal_factor, "start_focal_factor")
    if factor <= 0:
        raise ValueError(f"start_focal_factor: {factor} is not positive")
    if solver not in ("robust", "library"):
        raise ValueError(f"solver: {solver!r} is neither 'robust' nor 'library'")
    if noise not in ("smooth", "white"):
        raise ValueError(f"noise: {noise!r} is neither 'smooth' nor 'white'")
    if solver == "library" and (len(targets) > 1 or lens is not None):
        raise ValueError("solver: 'library' takes one view and no lens")

    def solve_robustly() -> _Robust:
        held = None if lens is None else _held_lens(lens)
        options = noise == "white", bool(prior), bool(keep_all), factor
        solved = _core.calibrate_views(width, height, targets, *options, held)
        return _robust_result(solved, [len(target) for target in targets])

    points = targets[0].copy()
    robust: Optional[_Robust]
    if solver == "library":
        record, rms = _core.calibrate(width, height, points, *view)
        try:
            robust = solve_robustly()
        except NoSolutionError:
            robust = None
    else:
        robust = solve_robustly()
        if robust.views[0].wrong and not keep_all:
            raise NoResultError("world: the view of the bed contradicts the other views")
        record, rms = _core.camera_of_solution(robust.solution, points, *view)
        if not keep_all:
            rms = _rms_of(points, ~robust.views[0].wrong_points)
    return Calibration(
        camera=Camera._of(record),
        rms=rms,
        world=np.stack([points["xw"], points["yw"]], axis=1),
        image=np.stack([points["x"], points["y"]], axis=1),
        reprojected=np.stack([points["reproj_x"], points["reproj_y"]], axis=1),
        residuals=np.stack([points["error_x"], points["error_y"]], axis=1),
        size=(width, height),
        view_size=view,
        views=() if robust is None else robust.views,
        noise_sigma=float("nan") if robust is None else robust.noise_sigma,
        noise_assumed=False if robust is None else robust.noise_assumed,
        _solution=None if robust is None else robust.solution,
    )


def _more_targets(views: collections.abc.Iterable[TargetView]) -> list[Record]:
    targets = []
    for number, pair in enumerate(views):
        name = f"more_views[{number}]"
        try:
            world, image = pair
        except (TypeError, ValueError):
            raise TypeError(f"{name}: not a pair (world, image)") from None
        targets.append(_arrays.target(world, image, f"{name}[0]", f"{name}[1]"))
    return targets


def _held_lens(lens: object) -> Record:
    if isinstance(lens, Calibration):
        return lens.solution
    if isinstance(lens, Camera):
        return _core.solution_of_camera(lens.record)
    raise TypeError(f"lens: neither a Calibration nor a Camera but {type(lens).__name__}")


def _robust_result(
    solved: tuple[float, float, bool, int, Record, npt.NDArray[np.bool_], npt.NDArray[np.bool_]],
    counts: list[int],
) -> _Robust:
    _, noise_sigma, noise_assumed, _, solutions, wrong_points, wrong_views = solved
    views = []
    first = 0
    for solution, wrong, count in zip(solutions, wrong_views, counts):
        views.append(
            SolvedView(
                rotation_vector=solution["rotation"].copy(),
                translation=solution["translation"].copy(),
                covariance=solution["covariance"].reshape(12, 12).copy(),
                wrong=bool(wrong),
                wrong_points=wrong_points[first : first + count].copy(),
            )
        )
        first += count
    bed: Record = solutions[:1].reshape(()).copy()
    bed.setflags(write=False)
    return _Robust(tuple(views), bed, noise_sigma, noise_assumed)


def _rms_of(points: Record, used: npt.NDArray[np.bool_]) -> float:
    # Summed in the order of the points, as the library and its program do.
    squares = 0.0
    for point in points[used]:
        squares += float(point["error_x"] * point["error_x"] + point["error_y"] * point["error_y"])
    return float(np.sqrt(squares / np.count_nonzero(used)))
