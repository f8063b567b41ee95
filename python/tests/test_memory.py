"""Arrays wherever they lie in memory, and sizes that exceed it."""

from __future__ import annotations

from typing import Any, Callable

import numpy as np
import pytest
from conftest import SIZE, camera, frame, grid, measured

import fisheye_calibration as fc
from fisheye_calibration import _arrays

HUGE = 2**31 - 1


def unaligned(array: Any) -> Any:
    """Return a copy that begins at an odd address."""
    memory = np.empty(array.nbytes + 1, np.uint8)
    start = 1 - memory.ctypes.data % 2
    copied = memory[start : start + array.nbytes].view(array.dtype).reshape(array.shape)
    copied[...] = array
    assert copied.ctypes.data % 2 == 1
    return copied


LAYOUTS: list[Callable[[Any], Any]] = [
    np.asfortranarray,
    unaligned,
    lambda array: np.repeat(array, 3, axis=0)[::3],
    lambda array: np.repeat(array, 2, axis=1)[:, ::2],
    lambda array: array[::-1].copy()[::-1],
    lambda array: array[:, ::-1].copy()[:, ::-1],
    lambda array: array.astype(array.dtype.newbyteorder()),
    lambda array: array.astype(np.float64),
    lambda array: array.astype(">f8"),
    lambda array: array.astype(np.longdouble),
    lambda array: array.tolist(),
]


@pytest.mark.parametrize("layout", LAYOUTS)
def test_layout_of_points_does_not_matter(
    layout: Callable[[Any], Any], calibration: fc.Calibration
) -> None:
    points = measured()[1].astype(np.float32)
    points.setflags(write=False)
    other = layout(points)
    one = camera()
    assert one.raw_to_world(other).tobytes() == one.raw_to_world(points).tobytes()
    assert one.world_to_raw(other).tobytes() == one.world_to_raw(points).tobytes()
    assert calibration.raw_to_bed(other).tobytes() == calibration.raw_to_bed(points).tobytes()
    assert fc.calibrate(grid(), other, SIZE).camera == fc.calibrate(grid(), points, SIZE).camera


def test_extension_gets_aligned_numbers() -> None:
    pairs: list[tuple[Any, Any]] = [
        (np.float32, _arrays.plane),
        (np.float64, _arrays.exact_plane),
    ]
    for dtype, convert in pairs:
        points = np.zeros((5, 2), dtype)
        assert convert(points, "raw") is points
        assert convert(unaligned(points), "raw").flags.aligned


def test_numbers_that_are_not_finite_stay_so() -> None:
    points = np.array([[np.nan, 1], [np.inf, 2], [-np.inf, 3], [1e300, 4], [5, 6]])
    one = camera()
    for mapped in (
        one.world_to_raw(points),
        one.raw_to_world(points),
        one.world_to_view(points, SIZE),
        one.view_to_world(points, SIZE),
        one.raw_to_corrected(points, SIZE),
        one.world_to_corrected(points, SIZE),
    ):
        assert not np.isfinite(mapped[:4]).all(axis=1).any()
    assert np.isfinite(one.world_to_raw(points)[4]).all()


def test_no_points_are_no_error(calibration: fc.Calibration) -> None:
    none = np.empty((0, 2))
    assert camera().world_to_raw(none).shape == (0, 2)
    assert camera().raw_to_world(none).shape == (0, 2)
    assert calibration.raw_to_bed(none).shape == (0, 2)
    assert calibration.bed_error(none).shape == (0,)


def test_rows_far_apart_are_copied() -> None:
    # 2.5 GB of addresses; only the pages of the frame are memory.
    far = np.zeros((2400, 1 << 20), np.uint8)[::10, : SIZE[0]]
    far[...] = frame()
    view, mask = camera().correct(far, (64, 48))
    expected = camera().correct(far.copy(), (64, 48))
    assert (view == expected[0]).all() and (mask == expected[1]).all()
    assert fc.crop(far, (8, 8)).tolist() == fc.crop(far.copy(), (8, 8)).tolist()
    with pytest.raises(ValueError, match="^out: strides"):
        camera().correct(frame(), out=far)


def zeros(*shape: int) -> Any:
    """Return an array of any shape that takes no memory."""
    return np.broadcast_to(np.uint8(0), shape)


@pytest.mark.parametrize(
    ("name", "call"),
    [
        ("size", lambda: camera().correct(frame(4), (HUGE, HUGE))),
        ("size", lambda: camera().correct(frame(), (HUGE, 2))),
        ("size", lambda: fc.crop(frame(3), (HUGE, 1))),
        ("frame", lambda: camera().correct(zeros(HUGE, HUGE))),
        ("frame", lambda: camera().correct(zeros(2**16, 2**16))),
        ("picture", lambda: fc.crop(zeros(2, 2**30), (4, 4))),
        ("raw", lambda: camera().raw_to_world(zeros(2**31, 2))),
        ("world", lambda: camera().world_to_raw(zeros(2**31, 3))),
        ("world", lambda: fc.calibrate(zeros(2**31, 2), zeros(2**31, 2), SIZE)),
    ],
)
def test_what_is_too_large_is_named(name: str, call: Callable[[], object]) -> None:
    with pytest.raises(ValueError, match=f"^{name}: .* more than 2"):
        call()


def test_results_outlive_what_they_were_made_of() -> None:
    world, image = measured()
    result = fc.calibrate(world, image, SIZE)
    expected = result.world.tobytes(), result.image.tobytes()
    world[...] = image[...] = 0
    assert (result.world.tobytes(), result.image.tobytes()) == expected
