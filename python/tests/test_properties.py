"""Properties that hold for all cameras, frames and strides."""

from __future__ import annotations

import pickle
from typing import Any

import numpy as np
import pytest
from conftest import SIZE, Numbers, camera, frame, grid
from hypothesis import given
from hypothesis import strategies as st

import fisheye_calibration as fc
from fisheye_calibration import _arrays

tilts = st.floats(-0.5, 0.5)


@st.composite
def cameras(draw: Any) -> fc.Camera:
    """Return a camera whose lens is one to one and that looks at the bed."""
    return fc.Camera(
        focal_length=(draw(st.floats(60, 200)), draw(st.floats(60, 200))),
        principal_point=(draw(st.floats(120, 200)), draw(st.floats(90, 150))),
        distortion=(draw(st.floats(-0.05, 0.1)), draw(st.floats(-0.05, 0.05))),
        rotation_vector=(draw(tilts), draw(tilts), draw(st.floats(-3, 3))),
        translation=(draw(st.floats(-99, 99)), draw(st.floats(-99, 99)), draw(st.floats(100, 900))),
        pixel=draw(st.floats(0.1, 2)),
        datum=(draw(st.floats(-99, 99)), draw(st.floats(-99, 99))),
    )


def in_front(one: fc.Camera, world: Numbers) -> Any:
    flat = np.column_stack([world, np.zeros(len(world))])
    beyond = flat @ one.rotation.T + one.translation
    return beyond[:, 2] > 0.5 * np.linalg.norm(beyond, axis=1)


@given(cameras())
def test_raw_to_world_inverts_world_to_raw(one: fc.Camera) -> None:
    world = grid(7, 7, 30.0) - 90
    seen = in_front(one, world)
    back = one.raw_to_world(one.world_to_raw(world))
    assert back[seen] == pytest.approx(world[seen], abs=0.1)


@given(cameras(), st.tuples(st.integers(1, 4000), st.integers(1, 4000)))
def test_view_to_world_inverts_world_to_view(one: fc.Camera, size: fc.Size) -> None:
    placed = one.place_view((-50, -60), 0.5, size)
    world = grid(5, 5, 10.0)
    back = placed.view_to_world(placed.world_to_view(world, size), size)
    assert back == pytest.approx(world, abs=0.05)


@given(cameras())
def test_raw_to_corrected_agrees_with_the_world(one: fc.Camera) -> None:
    world = grid(5, 5, 30.0) - 60
    seen = in_front(one, world)
    through_raw = one.raw_to_corrected(one.world_to_raw(world), SIZE)
    assert through_raw[seen] == pytest.approx(one.world_to_corrected(world, SIZE)[seen], abs=0.05)


@given(cameras())
def test_cameras_survive_bytes(one: fc.Camera) -> None:
    again = pickle.loads(pickle.dumps(one))
    assert again == one and hash(again) == hash(one) and again.record is not one.record


slices = st.sampled_from([slice(None), slice(None, None, -1), slice(None, None, 2), slice(3, -5)])


@given(slices, slices, st.sampled_from([0, 3, 4]), st.booleans())
def test_strides_do_not_change_the_view(
    rows: slice, columns: slice, channels: int, reversed_bytes: bool
) -> None:
    part = frame(channels)[rows, columns]
    if channels and reversed_bytes:
        part = part[..., ::-1]
    expected = camera().correct(np.ascontiguousarray(part), (64, 48))
    result = camera().correct(part, (64, 48))
    assert result[0].tobytes() == expected[0].tobytes()
    assert result[1].tobytes() == expected[1].tobytes()


@given(st.sampled_from([1, -1]), st.integers(0, 9), st.sampled_from([0, 3, 4]))
def test_results_are_written_into_parts_of_larger_pictures(
    direction: int, margin: int, channels: int
) -> None:
    raw = frame(channels)
    expected, expected_mask = camera().correct(raw, (64, 48))
    sheet = np.full((48 + 2 * margin, 64 + 2 * margin) + raw.shape[2:], 9, np.uint8)
    inner = sheet[margin : margin + 48, margin : margin + 64][::direction]
    view, mask = camera().correct(raw, (64, 48), out=inner)
    assert view is inner
    assert (inner == expected).all()
    assert (mask == expected_mask).all()
    inner[...] = 9
    assert (sheet == 9).all()


@given(st.sampled_from([0, 3, 4]), st.integers(1, 60), st.integers(1, 60))
def test_crop_is_a_slice(channels: int, width: int, height: int) -> None:
    picture = frame(channels, size=(60, 60))
    left, above = (60 - width) // 2, (60 - height + 1) // 2
    expected = picture[above : above + height, left : left + width]
    assert fc.crop(picture, (width, height)).tobytes() == expected.tobytes()


@given(st.lists(st.integers(1, 30), unique=True), st.lists(st.integers(1, 30), unique=True))
def test_common_points_are_the_intersection(first: list[int], second: list[int]) -> None:
    targets = []
    for ids in (first, second):
        xy = np.array([[i, -i] for i in ids], float).reshape(-1, 2)
        targets.append(fc.TargetPoints(np.array(ids, int), xy, xy + 1000))
    for common in fc.common_points(targets[0], targets[1]):
        assert common.ids.tolist() == sorted(set(first) & set(second))
        assert (common.image[:, 0] == common.ids + 1000).all()


@pytest.mark.parametrize(
    ("part", "copied"),
    [
        (np.s_[:], False),
        (np.s_[::-1], False),
        (np.s_[::3], False),
        (np.s_[9:-9, 5:99], False),
        (np.s_[::-2, 7:], False),
        (np.s_[:1, :, ::-1], True),
        (np.s_[:, ::-1], True),
        (np.s_[:, ::2], True),
        (np.s_[:, :1], False),
    ],
)
def test_frames_are_copied_only_if_they_must_be(part: Any, copied: bool) -> None:
    picture = frame(3)[part]
    assert np.shares_memory(_arrays.picture(picture, "frame"), picture) is not copied


def test_rows_that_repeat_are_copied() -> None:
    row = frame(3)[0]
    repeated = np.broadcast_to(row, (SIZE[1], *row.shape))
    assert repeated.strides[0] == 0
    expected = camera().correct(repeated.copy())[0]
    assert camera().correct(repeated)[0].tobytes() == expected.tobytes()


def test_rows_may_overlap_in_memory() -> None:
    memory = np.random.default_rng(4).integers(0, 256, 2000, dtype=np.uint8)
    sliding = np.lib.stride_tricks.as_strided(memory, SIZE[::-1], (7, 1))
    expected = camera().correct(sliding.copy(), (64, 48))[0]
    assert camera().correct(sliding, (64, 48))[0].tobytes() == expected.tobytes()
