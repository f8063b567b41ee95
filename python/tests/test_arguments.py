"""Wrong arguments are refused with their names."""

from __future__ import annotations

from pathlib import Path
from typing import Any, Callable

import numpy as np
import pytest
from conftest import SIZE, camera, frame, grid, measured

import fisheye_calibration as fc

WORLD, IMAGE = measured()
RAW = frame(3)
TARGET = fc.TargetPoints(np.arange(99) + 1, WORLD, IMAGE)
LIST = np.zeros((4, 2))
MASKED: Any = vars(np.ma)["masked_less"](LIST, 1)


def untyped(value: object) -> Any:
    """Return the argument, hidden from the type checker."""
    return value


def calibrate(**changes: Any) -> fc.Calibration:
    arguments: dict[str, Any] = {"world": WORLD, "image": IMAGE, "size": SIZE}
    return fc.calibrate(**{**arguments, **changes})


def lens(**changes: Any) -> fc.Camera:
    arguments: dict[str, Any] = {
        "focal_length": (100, 100),
        "principal_point": (50, 50),
        "distortion": (0, 0),
        "rotation_vector": (0, 0, 0),
        "translation": (0, 0, 100),
    }
    return fc.Camera(**{**arguments, **changes})


def read_only() -> fc.Frame:
    picture = frame(3)
    picture.setflags(write=False)
    return picture


CASES: list[tuple[str, type[Exception], Callable[[], object]]] = [
    ("world", ValueError, lambda: calibrate(world=WORLD[:, 0])),
    ("world", ValueError, lambda: calibrate(world=np.zeros((99, 4)))),
    ("world", ValueError, lambda: calibrate(world=np.ones((99, 3)))),
    ("world", TypeError, lambda: calibrate(world=[["a", "b"]] * 99)),
    ("world", TypeError, lambda: calibrate(world=WORLD + 1j)),
    ("image", ValueError, lambda: calibrate(image=IMAGE[1:])),
    ("image", ValueError, lambda: calibrate(image=np.zeros((99, 3)))),
    ("image", TypeError, lambda: calibrate(image=None)),
    ("size", TypeError, lambda: calibrate(size=320)),
    ("size", ValueError, lambda: calibrate(size=(320, 240, 3))),
    ("size[1]", ValueError, lambda: calibrate(size=(320, 0))),
    ("size[0]", TypeError, lambda: calibrate(size=(320.5, 240))),
    ("size[0]", ValueError, lambda: calibrate(size=(2**31, 240))),
    ("view_size", TypeError, lambda: calibrate(view_size=7)),
    ("more_views[0]", TypeError, lambda: calibrate(more_views=[WORLD])),
    ("more_views[1][1]", ValueError, lambda: calibrate(more_views=[(WORLD, IMAGE), (LIST, [])])),
    ("lens", TypeError, lambda: calibrate(lens="lens")),
    ("solver", ValueError, lambda: calibrate(solver="best")),
    ("solver", ValueError, lambda: calibrate(solver="library", more_views=[(WORLD, IMAGE)])),
    ("noise", ValueError, lambda: calibrate(noise="pink")),
    ("start_focal_factor", ValueError, lambda: calibrate(start_focal_factor=-1)),
    ("start_focal_factor", TypeError, lambda: calibrate(start_focal_factor="1")),
    ("world", ValueError, lambda: camera().world_to_raw([1, 2])),
    ("raw", ValueError, lambda: camera().raw_to_world(np.zeros((2, 3)))),
    ("view", TypeError, lambda: camera().view_to_world([[True, False]], SIZE)),
    ("size[0]", ValueError, lambda: camera().world_to_view(LIST, (0, 4))),
    ("frame", TypeError, lambda: camera().correct(untyped([[1, 2], [3, 4]]))),
    ("frame", TypeError, lambda: camera().correct(untyped(RAW.astype(np.uint16)))),
    ("frame", ValueError, lambda: camera().correct(RAW[..., :2])),
    ("frame", ValueError, lambda: camera().correct(RAW[0, 0])),
    ("frame", ValueError, lambda: camera().correct(RAW[:0])),
    ("out", ValueError, lambda: camera().correct(RAW, out=frame(4))),
    ("out", ValueError, lambda: camera().correct(RAW, (8, 8), out=frame(3))),
    ("out", ValueError, lambda: camera().correct(RAW, out=read_only())),
    ("out", ValueError, lambda: camera().correct(RAW, out=frame(3)[:, ::-1])),
    ("out", TypeError, lambda: camera().correct(RAW, out=untyped(RAW.astype(float)))),
    ("mask", ValueError, lambda: camera().correct(RAW, mask=frame(3))),
    ("corner", ValueError, lambda: camera().place_view((1, 2, 3), 1, SIZE)),
    ("pixel", TypeError, lambda: camera().place_view((1, 2), untyped("1"), SIZE)),
    ("pixel", ValueError, lambda: camera().place_view((1, 2), float("nan"), SIZE)),
    ("pixel", ValueError, lambda: camera(pixel=float("inf"))),
    ("path", ValueError, lambda: fc.Camera.load("a\0b")),
    ("size", ValueError, lambda: fc.crop(RAW, untyped((1, 2, 3)))),
    ("ids", TypeError, lambda: fc.TargetPoints(np.ones(99), WORLD, IMAGE)),
    ("ids", ValueError, lambda: fc.TargetPoints([1], WORLD, IMAGE)),
    ("ids", ValueError, lambda: fc.TargetPoints([2**31] * 99, WORLD, IMAGE)),
    ("second", TypeError, lambda: fc.common_points(TARGET, untyped(WORLD))),
    ("id_count", TypeError, lambda: fc.common_points(TARGET, TARGET, untyped(1.5))),
    ("first", TypeError, lambda: fc.stitch(untyped(RAW), untyped(RAW))),
    ("image", ValueError, lambda: fc.fit_affine(WORLD, IMAGE[1:])),
    ("world", ValueError, lambda: camera().world_to_raw([[1, 2], [3]])),
    ("raw", ValueError, lambda: camera().raw_to_world(MASKED)),
    ("image", TypeError, lambda: fc.fit_affine(WORLD, np.full((99, 2), None))),
    ("more_views", TypeError, lambda: calibrate(more_views=5)),
    ("more_views", TypeError, lambda: calibrate(more_views=None)),
    ("pixel", ValueError, lambda: camera(pixel=1e300)),
    ("pixel", ValueError, lambda: camera().place_view((0, 0), 1e300, SIZE)),
    ("pixel", ValueError, lambda: camera().place_view((0, 0), 0, SIZE)),
    ("corner", ValueError, lambda: camera().place_view((np.nan, 0), 1, SIZE)),
    ("focal_length", ValueError, lambda: lens(focal_length=(np.nan, 1))),
    ("translation", ValueError, lambda: lens(translation=(0, 0, 1e39))),
    ("homography", ValueError, lambda: lens(homography=np.full((3, 3), np.inf))),
    ("area", ValueError, lambda: calibrate().bed_error_map((0, 0, np.inf, 1))),
    ("world", ValueError, lambda: calibrate().bed_error([[1, 2, 3]])),
]


@pytest.mark.parametrize(("name", "error", "call"), CASES)
def test_error_names_the_argument(
    name: str, error: type[Exception], call: Callable[[], object]
) -> None:
    with pytest.raises(error) as caught:
        call()
    assert str(caught.value).startswith(f"{name}: ")


def test_overlapping_outputs_are_refused() -> None:
    canvas = np.zeros((SIZE[1], 2 * SIZE[0]), np.uint8)
    left, shifted = canvas[:, : SIZE[0]], canvas[:, 5 : SIZE[0] + 5]
    with pytest.raises(ValueError, match="^mask: overlaps out"):
        camera().correct(frame(), out=left, mask=shifted)
    with pytest.raises(ValueError, match="^out: overlaps picture"):
        fc.crop(left, SIZE, out=shifted)
    camera().correct(frame(), out=left, mask=canvas[:, SIZE[0] :])


def test_frames_of_different_depth_are_refused() -> None:
    views = [fc.RigView(frame(channels), camera(), TARGET) for channels in (0, 3)]
    with pytest.raises(ValueError, match="^second"):
        fc.stitch(views[0], views[1])


def test_too_few_points_have_no_solution() -> None:
    with pytest.raises(fc.NoSolutionError, match=r"^views\[0\]") as caught:
        fc.calibrate(WORLD[:3], IMAGE[:3], SIZE)
    assert caught.value.outcome is fc.Outcome.TOO_FEW_POINTS
    assert caught.value.view == 0
    with pytest.raises(fc.NoResultError):
        fc.calibrate(WORLD[:8], IMAGE[:8], SIZE, solver="library")
    with pytest.raises(fc.NoResultError):
        fc.fit_affine(WORLD[:2], IMAGE[:2])


def test_numbers_that_are_not_finite_have_no_solution() -> None:
    image = IMAGE.copy()
    image[3, 0] = np.nan
    with pytest.raises(fc.NoSolutionError) as caught:
        fc.calibrate(WORLD, image, SIZE)
    assert caught.value.outcome is fc.Outcome.BAD_INPUT


def test_points_on_a_line_determine_no_camera() -> None:
    with pytest.raises(fc.NoSolutionError) as caught:
        fc.calibrate(grid(11, 1), camera().world_to_raw(grid(11, 1)), SIZE)
    assert caught.value.outcome is fc.Outcome.DEGENERATE


def test_black_frames_have_no_view() -> None:
    with pytest.raises(fc.NoResultError, match="^frame"):
        camera().correct(np.zeros((240, 320), np.uint8))


def test_files_without_parameters_are_reported(tmp_path: Path) -> None:
    (tmp_path / "other.ini").write_text("[Other]\nkey=1\n")
    with pytest.raises(ValueError, match="^path: .*holds no camera"):
        fc.Camera.load(tmp_path / "other.ini")
    with pytest.raises(ValueError, match="^path: .*holds no stitched image"):
        fc.StitchedRecord.load(tmp_path / "other.ini")
