"""Results are those of the C interface, byte for byte."""

from __future__ import annotations

import ctypes as ct
import subprocess
from pathlib import Path
from typing import Any

import c_interface as c
import numpy as np
import pytest
from conftest import SIZE, built, camera, frame, grid, measured

import fisheye_calibration as fc


def c_camera(source: fc.Camera) -> c.Camera:
    return c.Camera.from_buffer_copy(source.record.tobytes())


def test_version_is_the_librarys() -> None:
    assert fc.__version__ == c.library().fcal_version().decode()


@pytest.mark.parametrize(
    ("method", "function", "columns", "sized"),
    [
        ("world_to_raw", "fcal_world_to_raw", 3, False),
        ("raw_to_world", "fcal_raw_to_world", 2, False),
        ("world_to_corrected", "fcal_world_to_corrected", 3, True),
        ("raw_to_corrected", "fcal_raw_to_corrected", 2, True),
        ("world_to_view", "fcal_world_to_view", 2, True),
        ("view_to_world", "fcal_view_to_world", 2, True),
    ],
)
def test_points_are_mapped_alike(method: str, function: str, columns: int, sized: bool) -> None:
    points = np.random.default_rng(5).uniform(-50, 350, (500, columns)).astype(np.float32)
    expected = np.empty((500, 2), np.float32)
    record = c_camera(camera())
    centre = [ct.c_float(501 / 2), ct.c_float(400 / 2)] if sized else []
    call = getattr(c.library(), function)
    status = call(ct.byref(record), *centre, c.numbers_of(points), 500, c.numbers_of(expected))
    assert status == 0
    size = [(501, 400)] if sized else []
    result = getattr(camera(), method)(points, *size)
    assert result.dtype == np.float32
    assert result.tobytes() == expected.tobytes()


def test_single_view_calibration_is_alike() -> None:
    world, image = measured()
    points = c.points_of(world, image)
    record, rms = c.Camera(), ct.c_double()
    call = c.library().fcal_calibrate
    assert call(*SIZE, points, len(points), 400, 300, ct.byref(record), ct.byref(rms)) == 0
    result = fc.calibrate(world, image, SIZE, view_size=(400, 300), solver="library")
    assert result.camera.record.tobytes() == bytes(record)
    assert result.rms == rms.value
    assert [tuple(p) for p in result.reprojected] == [(p.reproj_x, p.reproj_y) for p in points]
    assert [tuple(p) for p in result.residuals] == [(p.error_x, p.error_y) for p in points]


def test_calibration_of_several_views_is_alike() -> None:
    views = [measured(tilt, seed=seed) for tilt, seed in ((0.15, 1), (0.35, 2), (0.5, 3))]
    views[0][1][4] += 15  # a wrong point
    lists = [c.points_of(*view) for view in views]
    targets = (c.TargetView * 3)(*(c.TargetView(points, len(points)) for points in lists))
    result, solutions = c.ViewsResult(size=ct.sizeof(c.ViewsResult)), (c.Solution * 3)()
    wrong_points, wrong_views = (ct.c_uint8 * 297)(), (ct.c_uint8 * 3)()
    library = c.library()
    status = library.fcal_calibrate_views(
        *SIZE, targets, 3, None, ct.byref(result), solutions, wrong_points, wrong_views
    )
    assert status == 0
    record, rms = c.Camera(), ct.c_double()
    status = library.fcal_camera_of_solution(
        ct.byref(solutions[0]), lists[0], 99, *SIZE, ct.byref(record), ct.byref(rms)
    )
    assert status == 0

    calibration = fc.calibrate(*views[0], SIZE, more_views=views[1:])
    assert calibration.camera.record.tobytes() == bytes(record)
    assert calibration.solution.tobytes() == bytes(solutions[0])
    assert calibration.noise_sigma == result.noise_sigma
    assert calibration.noise_assumed == bool(result.noise_assumed)
    for view, solution in zip(calibration.views, solutions):
        assert view.rotation_vector.tobytes() == bytes(solution.rotation)
        assert view.translation.tobytes() == bytes(solution.translation)
        assert view.covariance.tobytes() == bytes(solution.covariance)
    listed = np.concatenate([view.wrong_points for view in calibration.views])
    assert listed.tobytes() == bytes(wrong_points)
    assert listed[4]

    bed = grid(5, 4, 60.0)
    expected, judged = np.empty(20), c.Solution()
    assert library.fcal_solution_of_camera(ct.byref(record), ct.byref(judged)) == 0
    status = library.fcal_bed_errors(
        ct.byref(solutions[0]), ct.byref(judged), c.numbers_of(bed), 20, c.numbers_of(expected)
    )
    assert status == 0
    assert calibration.bed_error(bed).tobytes() == expected.tobytes()


@pytest.mark.parametrize("channels", [0, 3, 4])
def test_views_are_alike(channels: int) -> None:
    raw = frame(channels)
    shape = (900, 1200) + raw.shape[2:]
    expected, expected_mask = np.empty(shape, np.uint8), np.empty((900, 1200), np.uint8)
    pictures = [c.image_of(picture) for picture in (raw, expected, expected_mask)]
    record = c_camera(camera())
    status = c.library().fcal_correct(
        ct.byref(pictures[0]), ct.byref(record), ct.byref(pictures[1]), ct.byref(pictures[2])
    )
    assert status == 0
    view, mask = camera().correct(raw, (1200, 900))
    assert view.tobytes() == expected.tobytes()
    assert mask.tobytes() == expected_mask.tobytes()
    assert set(np.unique(mask)) == {0, 255}


@pytest.mark.parametrize("channels", [0, 3])
def test_stitched_images_are_alike(channels: int) -> None:
    cameras = [camera(0.15), camera(0.3)]
    frames = [frame(channels, seed) for seed in (7, 8)]
    world, ids = grid(4, 3, 60.0), np.arange(12) + 3
    targets = [fc.TargetPoints(ids, world, one.world_to_raw(world)) for one in cameras]
    views, records = [], []
    for one, raw, target in zip(cameras, frames, targets):
        records.append(c_camera(one))
        points = c.points_of(target.world, target.image, target.ids)
        views.append(c.RigView(c.image_of(raw), ct.pointer(records[-1]), points, 12))
    library = c.library()
    width, height = ct.c_int32(), ct.c_int32()
    both = ct.byref(views[0]), ct.byref(views[1])
    assert library.fcal_stitched_size(*both, ct.byref(width), ct.byref(height)) == 0
    expected = np.zeros((height.value, width.value) + frames[0].shape[2:], np.uint8)
    canvas, dual = c.image_of(expected), c.Dual()
    assert library.fcal_stitch(*both, ct.byref(canvas), ct.byref(dual)) == 0

    first, second = (fc.RigView(*parts) for parts in zip(frames, cameras, targets))
    assert fc.stitched_size(first, second) == (width.value, height.value)
    stitched = fc.stitch(first, second)
    assert stitched.image.tobytes() == expected.tobytes()
    assert stitched.record.record.tobytes() == bytes(dual)

    points = np.array([[10, 20], [100, 90]], np.float32)
    mapped = np.empty_like(points)
    status = library.fcal_world_to_stitched(
        ct.byref(dual), c.numbers_of(points), 2, c.numbers_of(mapped)
    )
    assert status == 0
    assert stitched.record.world_to_stitched(points).tobytes() == mapped.tobytes()

    part = np.zeros((40, 60) + expected.shape[2:], np.uint8)
    target_image = c.image_of(part)
    status = library.fcal_crop_stitched(
        ct.byref(canvas), 8, 12, ct.byref(target_image), ct.byref(dual)
    )
    assert status == 0
    cropped = stitched.crop(8, 12, (60, 40))
    assert cropped.image.tobytes() == part.tobytes()
    assert cropped.record.record.tobytes() == bytes(dual)


def test_affine_fit_is_alike() -> None:
    world, image = measured()
    points = c.points_of(world, image)
    coefficients, x, y = (ct.c_double * 6)(), ct.c_double(), ct.c_double()
    call = c.library().fcal_fit_affine
    assert call(points, len(points), coefficients, ct.byref(x), ct.byref(y)) == 0
    fit = fc.fit_affine(world, image)
    a, b, k, d, e, f = coefficients
    assert fit.matrix.tolist() == [[a, b, e], [k, d, f]]
    assert fit.error == (x.value, y.value)


def run_program(*arguments: object) -> None:
    program = built("FISHEYE_CALIBRATION_PROGRAM")
    command = [str(program), *map(str, arguments)]
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stderr


def parameters(path: Path) -> list[str]:
    """The lines of the library's section, without those of the program's own."""
    text = path.read_text(encoding="ascii")
    return [line for line in text.split("[FisheyeCalibrationProgram]")[0].splitlines() if line]


@pytest.mark.parametrize("solver", ["robust", "library"])
def test_camera_file_is_the_programs(solver: Any, tmp_path: Path) -> None:
    world, image = measured()
    lines = ["PointId,Xw,Yw,ImagePtX,ImagePtY"]
    for i in range(len(world)):
        x, y, u, v = map(float, (*world[i], *image[i]))
        lines.append(f"{i + 1},{x:.9g},{y:.9g},{u:.17g},{v:.17g}")
    (tmp_path / "points.csv").write_text("\n".join(lines) + "\n")
    run_program(
        "calibrate",
        tmp_path / "points.csv",
        "--image-size",
        f"{SIZE[0]}x{SIZE[1]}",
        "--corrected-size",
        "400x300",
        "--solver",
        solver,
        "-o",
        tmp_path / "program.ini",
    )
    result = fc.calibrate(world, image, SIZE, view_size=(400, 300), solver=solver)
    result.camera.save(tmp_path / "package.ini")

    def without_filler(path: Path) -> list[str]:  # k2 ... k5 of SingleCamCalibration are random
        return [line for line in parameters(path) if line[:2] not in ("k2", "k3", "k4", "k5")]

    expected = without_filler(tmp_path / "program.ini")
    assert len(expected) > 20
    assert without_filler(tmp_path / "package.ini") == expected
    cameras = [fc.Camera.load(tmp_path / f"{name}.ini") for name in ("program", "package")]
    mapped = [one.world_to_raw(world).tobytes() for one in cameras]
    assert mapped[0] == mapped[1]
