"""What calibrations say about themselves."""

from __future__ import annotations

import pickle

import numpy as np
import pytest
from conftest import SIZE, camera, grid, measured

import fisheye_calibration as fc


def test_camera_is_found(calibration: fc.Calibration) -> None:
    truth = camera()
    assert calibration.camera.focal_length == pytest.approx(truth.focal_length, rel=0.01)
    assert calibration.camera.position == pytest.approx(truth.position, abs=2)
    assert calibration.rms < 0.1
    assert 0.03 < calibration.noise_sigma < 0.08
    assert not calibration.noise_assumed


def test_true_error_is_within_the_bound(calibration: fc.Calibration) -> None:
    bed = grid(7, 5, 45.0)
    found = calibration.camera.raw_to_world(camera().world_to_raw(bed))
    actual = np.linalg.norm(found - bed, axis=1)
    bound = calibration.bed_error(bed)
    assert np.isfinite(bound).all()
    assert (actual <= bound).mean() >= 0.95
    assert (bound < 2).all()


def test_residuals_are_measured_minus_reprojected(calibration: fc.Calibration) -> None:
    assert calibration.residuals == pytest.approx(
        calibration.image - calibration.reprojected, abs=2e-5
    )
    squares = (calibration.residuals[~calibration.wrong_points] ** 2).sum(axis=1)
    assert calibration.rms == pytest.approx(np.sqrt(squares.mean()))
    assert calibration.reprojected == pytest.approx(
        calibration.camera.world_to_raw(calibration.world), abs=1e-4
    )


def test_wrong_points_are_found_and_left_out() -> None:
    world, image = measured()
    image[[4, 70]] += 20
    result = fc.calibrate(world, image, SIZE)
    assert result.wrong_points.nonzero()[0].tolist() == [4, 70]
    assert result.rms < 0.1
    kept = fc.calibrate(world, image, SIZE, keep_all=True)
    assert kept.wrong_points[[4, 70]].all()
    assert kept.rms > 1


def test_wrong_view_of_the_bed_is_refused() -> None:
    views = [measured(tilt, seed=seed) for tilt, seed in ((0.2, 1), (0.3, 2), (0.4, 3), (0.5, 4))]
    views += [measured(-0.2, seed=5), measured(-0.4, seed=6)]
    bed = views[0][0], 1.3 * (views[0][1] - 160) + 160  # as if zoomed in
    other = fc.calibrate(*views[0], SIZE, more_views=[bed, *views[1:]])
    assert [view.wrong for view in other.views] == [False, True, *[False] * 5]
    assert np.isnan(other.views[1].covariance).all()
    with pytest.raises(fc.NoResultError, match="^world: the view of the bed"):
        fc.calibrate(*bed, SIZE, more_views=views)


def test_known_lens_is_kept(calibration: fc.Calibration) -> None:
    world, image = measured(0.4, seed=9)
    exact = fc.calibrate(world, image, SIZE, lens=calibration.camera)
    assert exact.camera.focal_length == calibration.camera.focal_length
    assert exact.camera.distortion == pytest.approx(calibration.camera.distortion)
    uncertain = fc.calibrate(world, image, SIZE, lens=calibration)
    assert uncertain.bed_error().max() > exact.bed_error().max()


def test_more_views_are_more_accurate(calibration: fc.Calibration) -> None:
    one = fc.calibrate(*measured(), SIZE)
    assert calibration.bed_error().max() < one.bed_error().max()
    assert len(one.views) == 1
    assert len(calibration.views) == 3


def test_library_solver_is_judged_by_the_robust_one() -> None:
    world, image = measured()
    library = fc.calibrate(world, image, SIZE, solver="library")
    robust = fc.calibrate(world, image, SIZE)
    assert library.camera != robust.camera
    assert (library.bed_error() >= 0.99 * robust.bed_error()).all()


def test_library_camera_without_robust_solution_has_no_error() -> None:
    world, image = measured()
    image[::3] += np.random.default_rng(3).normal(0, 3, image[::3].shape)
    with pytest.raises(fc.NoSolutionError):
        fc.calibrate(world, image, SIZE)
    result = fc.calibrate(world, image, SIZE, solver="library")
    assert result.views == ()
    assert np.isnan(result.noise_sigma)
    assert not result.wrong_points.any()
    with pytest.raises(fc.NoResultError, match="^solution"):
        result.bed_error()


def test_bed_error_is_unknown_outside_the_raw_image(calibration: fc.Calibration) -> None:
    outside, inside = calibration.bed_error([[120, -5000], [120, 90]])
    assert np.isnan(outside)
    assert np.isfinite(inside)


def test_bed_error_map_covers_the_area(calibration: fc.Calibration) -> None:
    chart = calibration.bed_error_map((0, 0, 300, 240), columns=6, rows=5)
    assert chart.x.tolist() == [0, 60, 120, 180, 240, 300]
    assert chart.y.tolist() == [0, 60, 120, 180, 240]
    assert chart.error.shape == (5, 6)
    assert chart.error[2, 1] == calibration.bed_error([[60, 120]])[0]
    shown = calibration.bed_error_map(columns=11)
    assert shown.x[0] < 0 < 300 < shown.x[-1]
    assert len(shown.y) == pytest.approx(11 * SIZE[1] / SIZE[0], abs=1)
    with pytest.raises(ValueError, match="^area"):
        calibration.bed_error_map((1, 0, 1, 5))


def test_double_precision_agrees_with_the_record(calibration: fc.Calibration) -> None:
    raw = camera().world_to_raw(grid(5, 4, 60.0))
    exact = calibration.raw_to_bed(raw)
    assert exact.dtype == np.float64
    assert exact == pytest.approx(calibration.camera.raw_to_world(raw), abs=1e-3)


def test_inputs_may_be_lists_and_views() -> None:
    world, image = measured()
    expected = fc.calibrate(world, image, SIZE).camera
    assert fc.calibrate(world.tolist(), image.tolist(), SIZE).camera == expected
    strided = np.zeros((99, 8))
    strided[:, 6:2:-3] = image
    assert fc.calibrate(np.asfortranarray(world), strided[:, 6:2:-3], SIZE).camera == expected


def test_calibrations_can_be_pickled(calibration: fc.Calibration) -> None:
    again = pickle.loads(pickle.dumps(calibration))
    assert again.camera == calibration.camera
    assert again.bed_error().tobytes() == calibration.bed_error().tobytes()


def test_repr_holds_the_error(calibration: fc.Calibration) -> None:
    assert repr(calibration).startswith(f"<Calibration: rms {calibration.rms:.4f} px, 99 points, ")
