"""Cameras as values, their files and their frames."""

from __future__ import annotations

import copy
import pickle
from pathlib import Path

import numpy as np
import numpy.typing as npt
import pytest
from conftest import SIZE, camera, frame, grid, measured

import fisheye_calibration as fc


def test_cameras_are_values() -> None:
    first, second = camera(), camera()
    assert first == second
    assert hash(first) == hash(second)
    assert first != camera(0.2)
    assert first != "camera"
    assert pickle.loads(pickle.dumps(first)) == first
    assert copy.deepcopy(first) == first
    with pytest.raises(ValueError):
        first.record["fx"] = 1
    with pytest.raises(AttributeError):
        setattr(first, "pixel", 2.0)


def test_properties_are_the_arguments() -> None:
    one = camera(pixel=0.5)
    assert one.focal_length == (103.0, 103.5)
    assert one.principal_point == (161.0, 118.5)
    assert one.distortion == (0.02, -0.03)
    assert one.pixel == 0.5
    assert one.datum == (150.0, 120.0)
    assert one.shift == (0.0, 0.0)
    assert one.skewness == 0.0
    assert one.translation.tolist() == [-150.0, -120.0, 200.0]
    assert one.rotation_vector.tolist() == np.array([0.15, -0.2, 0.02], np.float32).tolist()
    assert one.homography.tolist() == np.eye(3).tolist()


def test_rotation_turns_world_into_camera() -> None:
    turned = fc.Camera(
        focal_length=(100, 100),
        principal_point=(0, 0),
        distortion=(0, 0),
        rotation_vector=(0, 0, np.pi / 2),
        translation=(0, 0, 10),
    )
    # A quarter turn from X to Y.
    expected = [[0, -1, 0], [1, 0, 0], [0, 0, 1]]
    assert turned.rotation == pytest.approx(np.array(expected, float), abs=1e-7)
    assert turned.position == pytest.approx([0, 0, -10])
    # (1, 0, 0) in the camera is (0, 1, 10): theta = atan 0.1 down.
    assert turned.world_to_raw([[1, 0]]) == pytest.approx(np.array([[0, 9.966865]]), abs=1e-5)


def test_repr_tells_where_the_camera_is() -> None:
    assert repr(camera()).startswith("<Camera: focal length (103.0, 103.5) px, position (107.")


def test_files_keep_the_camera(tmp_path: Path, calibration: fc.Calibration) -> None:
    path = tmp_path / "käse camera.ini"
    path.write_text("[Other]\nkey=1\n")
    calibration.camera.save(path)
    loaded = fc.Camera.load(str(path))
    assert "key=1" in path.read_text(encoding="utf-8")
    world = grid()
    assert loaded.world_to_raw(world) == pytest.approx(
        calibration.camera.world_to_raw(world), abs=2e-3
    )
    again = tmp_path / "again.ini"
    loaded.save(again)
    assert fc.Camera.load(again) == loaded
    sized = fc.Camera.load(again, view_size=(240, 160))
    assert sized.view_size == (240, 160)
    assert (sized, hash(sized)) == (loaded, hash(loaded))
    with pytest.raises(ValueError, match="view_size"):
        fc.Camera.load(again, view_size=(240, 0))


def test_z_of_bed_points_may_be_given() -> None:
    world = grid()
    flat = np.column_stack([world, np.zeros(len(world))])
    one = camera()
    assert one.world_to_raw(flat).tobytes() == one.world_to_raw(world).tobytes()
    assert one.world_to_view(flat, SIZE).tobytes() == one.world_to_view(world, SIZE).tobytes()
    raised = flat + [0, 0, -10]
    assert np.abs(one.world_to_raw(raised) - one.world_to_raw(flat)).max() > 1


def test_pixels_that_do_not_show_the_bed_are_nan() -> None:
    assert np.isnan(camera().raw_to_world([[1e6, 0]])).all()
    assert np.isnan(camera().raw_to_corrected([[1e6, 0]], SIZE)).all()


def test_placed_view_shows_the_rectangle(calibration: fc.Calibration) -> None:
    size = (240, 160)
    placed = calibration.camera.place_view((30, 40), 0.5, size)
    # Pixel (0, 0) is centred half a pixel, a quarter of a unit, inside the corner.
    world = [[30.25, 40.25], [149.75, 119.75]]
    assert placed.world_to_view(world, size) == pytest.approx(
        np.array([[0, 0], [239, 159]]), abs=0.02
    )
    assert placed != calibration.camera
    assert placed.world_to_raw(world).tobytes() == calibration.camera.world_to_raw(world).tobytes()


def test_view_is_metric(calibration: fc.Calibration) -> None:
    # A white disc in the raw frame at a bed point appears where world_to_view says.
    point = [[120.0, 90.0]]
    ((u, v),) = calibration.camera.world_to_raw(point)
    y, x = np.mgrid[: SIZE[1], : SIZE[0]]
    raw = np.where((x - u) ** 2 + (y - v) ** 2 < 16, 255, 1).astype(np.uint8)
    view, _ = calibration.camera.correct(raw)
    bright = np.argwhere(view > 128).mean(axis=0)[::-1]
    assert bright == pytest.approx(calibration.camera.world_to_view(point, SIZE)[0], abs=0.5)


def test_crop_takes_the_centre() -> None:
    picture = np.arange(48, dtype=np.uint8).reshape(6, 8)
    assert fc.crop(picture, (4, 2)).tolist() == picture[2:4, 2:6].tolist()
    assert fc.crop(picture[::-1], (4, 2)).tolist() == picture[::-1][2:4, 2:6].tolist()
    larger = fc.crop(picture, (10, 8))
    assert larger[1:7, 1:9].tolist() == picture.tolist()
    assert larger.sum() == picture.sum()


def test_no_points_give_no_points() -> None:
    one = camera()
    empties: list[npt.ArrayLike] = [[], (), np.array([]), np.zeros((0, 2))]
    for empty in empties:
        mapped = [
            one.world_to_raw(empty),
            one.raw_to_world(empty),
            one.world_to_corrected(empty, SIZE),
            one.raw_to_corrected(empty, SIZE),
            one.world_to_view(empty, SIZE),
            one.view_to_world(empty, SIZE),
        ]
        assert all(points.shape == (0, 2) and points.dtype == np.float32 for points in mapped)
    with pytest.raises(ValueError, match=r"^world: shape \(1, 0\)"):
        one.world_to_raw([[]])


def test_default_size_is_that_of_the_view(calibration: fc.Calibration) -> None:
    raw = frame(3)
    placed = calibration.camera.place_view((30, 40), 0.5, (240, 160))
    assert placed.view_size == (240, 160)
    view, mask = placed.correct(raw)
    assert view.shape == (160, 240, 3)
    assert mask.shape == (160, 240)
    assert view.flags.c_contiguous and mask.flags.c_contiguous
    assert view.tobytes() == placed.correct(raw, (240, 160))[0].tobytes()
    assert placed.correct(raw, (64, 48))[0].shape == (48, 64, 3)

    assert calibration.camera.view_size == SIZE
    world, image = measured()
    larger = fc.calibrate(world, image, SIZE, view_size=(400, 300)).camera
    assert larger.view_size == (400, 300)
    assert larger.correct(raw)[0].shape == (300, 400, 3)


def test_default_size_is_the_frames_if_the_views_is_unknown(
    tmp_path: Path, calibration: fc.Calibration
) -> None:
    path = tmp_path / "camera.ini"
    calibration.camera.place_view((30, 40), 0.5, (240, 160)).save(path)
    for one in (camera(), fc.Camera.load(path)):
        assert one.view_size is None
        view, mask = one.correct(frame(3))
        assert view.shape == (240, 320, 3)
        assert mask.shape == (240, 320)


def test_copies_know_the_size_of_the_view(calibration: fc.Calibration) -> None:
    placed = calibration.camera.place_view((30, 40), 0.5, (240, 160))
    for again in (pickle.loads(pickle.dumps(placed)), copy.copy(placed), copy.deepcopy(placed)):
        assert again == placed
        assert hash(again) == hash(placed)
        assert again.view_size == (240, 160)
    unknown = fc.Camera._of(placed.record.copy())
    assert unknown.view_size is None
    assert unknown == placed
