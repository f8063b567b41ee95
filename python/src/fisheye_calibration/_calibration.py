"""From points of a flat target to a camera."""

from __future__ import annotations

import collections.abc
from dataclasses import dataclass
from typing import Literal, Optional, Tuple, Union

import numpy as np
import numpy.typing as npt

from . import _arrays, _core
from ._arrays import Record, Size
from ._camera import Camera
from ._errors import NoResultError, NoSolutionError
from ._results import Calibration, SolvedView

TargetView = Tuple[npt.ArrayLike, npt.ArrayLike]


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
    solver: Literal["robust", "library"] = "robust",
    noise: Literal["smooth", "white"] = "smooth",
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
        Width and height of the view that the camera is to render, and the default of
        `Camera.correct`; the default is `size`.
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
        camera=Camera._of(record, view),
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
    if not isinstance(views, collections.abc.Iterable):
        raise TypeError(f"more_views: not pairs (world, image) but {type(views).__name__}")
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
    x, y = points["error_x"][used], points["error_y"][used]
    squares = np.cumsum(x * x + y * y)
    return float(np.sqrt(squares[-1] / len(squares)))
