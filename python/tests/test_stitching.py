"""Two cameras."""

from __future__ import annotations

from pathlib import Path

import numpy as np
import pytest
from conftest import SIZE, camera, frame, grid

import fisheye_calibration as fc


def rig(channels: int = 0) -> tuple[fc.RigView, fc.RigView]:
    """Return two cameras that see the same twelve points."""
    world, ids = grid(4, 3, 60.0), np.arange(12) + 1
    views = []
    for number, tilt in enumerate((0.15, 0.3)):
        one = camera(tilt)
        points = fc.TargetPoints(ids, world, one.world_to_raw(world))
        views.append(fc.RigView(frame(channels, number), one, points))
    return views[0], views[1]


def test_common_points_come_by_ascending_id() -> None:
    first = fc.TargetPoints([5, 3, 9, 2], grid(4, 1), grid(4, 1) + 100)
    second = fc.TargetPoints([2, 7, 5], grid(3, 1), grid(3, 1) + 200)
    common = fc.common_points(first, second)
    assert [points.ids.tolist() for points in common] == [[2, 5], [2, 5]]
    assert common[0].world.tolist() == [[90, 0], [0, 0]]
    assert common[1].image.tolist() == [[200, 200], [260, 200]]
    assert len(fc.common_points(first, second, 4)[0]) == 1
    assert len(fc.common_points(first, second, 1)[0]) == 0
    empty = fc.TargetPoints(np.zeros(0, int), np.zeros((0, 2)), np.zeros((0, 2)))
    assert len(fc.common_points(empty, empty)[0]) == 0


def test_cameras_that_share_no_point_have_no_result() -> None:
    first, second = rig()
    other = fc.TargetPoints(np.arange(12) + 50, second.points.world, second.points.image)
    with pytest.raises(fc.NoResultError):
        fc.stitch(first, fc.RigView(second.frame, second.camera, other))


def test_cameras_are_made_for_views_of_twice_the_frames_size() -> None:
    first, second = rig()
    doubled = 2 * SIZE[0], 2 * SIZE[1]
    placed = [camera().place_view((0, 0), 0.5, size) for size in (doubled, SIZE)]
    good, wrong = (fc.RigView(first.frame, one, first.points) for one in placed)
    assert fc.stitched_size(good, second)[0] >= doubled[0]
    with pytest.raises(ValueError, match=r"^second\.camera: .*\(320, 240\), not \(640, 480\)"):
        fc.stitch(good, wrong)
    with pytest.raises(ValueError, match=r"^first\.camera: "):
        fc.stitched_size(wrong, good)


def test_canvas_keeps_what_no_camera_covers() -> None:
    first, second = rig(3)
    plain = fc.stitch(first, second)
    width, height = fc.stitched_size(first, second)
    canvas = np.full((height, width, 3), 77, np.uint8)
    given = fc.stitch(first, second, out=canvas)
    assert given.image is canvas
    covered = given.image != 77
    assert covered.any() and not covered.all()
    assert (plain.image[covered] == given.image[covered]).all()
    assert given.record == plain.record


def test_rows_count_from_the_top_also_after_a_crop() -> None:
    stitched = fc.stitch(*rig())
    part = stitched.crop(20, 40, (80, 100))
    assert part.image.tolist() == stitched.image[40:140, 20:100].tolist()
    assert part.record.size == (80, 100)
    world = [[30.0, 60.0], [90.0, 30.0]]
    whole = stitched.record.world_to_stitched(world)
    assert part.record.world_to_stitched(world) == pytest.approx(whole - [20, 40], abs=1e-4)
    assert part.record.stitched_to_world(whole - [20, 40]) == pytest.approx(
        np.array(world), abs=1e-3
    )
    x, y = stitched.record.datum_pixel
    assert part.record.datum_pixel == (x - 20, y - 40)
    with pytest.raises(ValueError, match="^size"):
        stitched.crop(0, 0, (81, 100))


def test_datum_is_at_its_pixel() -> None:
    record = fc.stitch(*rig()).record
    assert record.world_to_stitched([record.datum]) == pytest.approx(
        np.array([record.datum_pixel], float)
    )


def test_records_keep_their_files(tmp_path: Path) -> None:
    record = fc.stitch(*rig()).record
    record.save(tmp_path / "dual.ini")
    loaded = fc.StitchedRecord.load(tmp_path / "dual.ini")
    assert loaded.size == record.size
    assert loaded.datum_pixel == record.datum_pixel
    assert loaded.pixel == pytest.approx(record.pixel, rel=1e-5)
    assert repr(loaded).startswith(f"<StitchedRecord: {record.size[0]} x ")
    assert hash(loaded) == hash(fc.StitchedRecord.load(tmp_path / "dual.ini"))
    with pytest.raises(TypeError):
        fc.StitchedRecord()


def test_affine_map_follows_its_points() -> None:
    image = grid(5, 4, 50.0)
    world = image @ np.array([[0.5, 0.1], [-0.2, 0.4]]) + [7, 9]
    fit = fc.fit_affine(world, image)
    assert fit.matrix == pytest.approx(np.array([[0.5, -0.2, 7], [0.1, 0.4, 9]]), abs=1e-5)
    assert fit.error == pytest.approx((0, 0), abs=1e-4)
    assert fit(image) == pytest.approx(world, abs=1e-4)
