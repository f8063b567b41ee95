"""More results that are those of the C interface, byte for byte."""

from __future__ import annotations

import ctypes as ct
from pathlib import Path
from typing import Any

import c_interface as c
import numpy as np
import pytest
from conftest import SIZE, camera, frame, grid, measured

import fisheye_calibration as fc


class Options(ct.Structure):
    """fcal_views_options."""

    _fields_ = [
        *((name, c.I32) for name in ("size", "noise", "no_prior", "keep_all")),
        ("start_focal_factor", c.F64),
        ("held_lens", ct.POINTER(c.Solution)),
    ]


def test_records_have_the_layout_of_c() -> None:
    target = fc.TargetPoints([1], [[2, 3]], [[4, 5]])
    pairs: list[tuple[Any, Any]] = [
        (camera().record.dtype, c.Camera),
        (target.record.dtype, c.Point),
        (fc.calibrate(*measured(), SIZE).solution.dtype, c.Solution),
    ]
    for dtype, structure in pairs:
        assert dtype.itemsize == ct.sizeof(structure)
        offsets = {name: getattr(structure, name).offset for name, _ in structure._fields_}
        assert {name: field[1] for name, field in dtype.fields.items()} == offsets


@pytest.mark.parametrize(
    ("given", "fields"),
    [
        ({"noise": "white"}, {"noise": 1}),
        ({"prior": False}, {"no_prior": 1}),
        ({"keep_all": True}, {"keep_all": 1}),
        ({"start_focal_factor": 1.25}, {"start_focal_factor": 1.25}),
        ({"lens": camera()}, {"held_lens": camera()}),
    ],
)
def test_options_reach_the_solver(given: dict[str, Any], fields: dict[str, Any]) -> None:
    views = [measured(tilt, seed=seed) for tilt, seed in ((0.15, 1), (0.35, 2))]
    views[0][1][4] += 15
    library, options = c.library(), Options(size=ct.sizeof(Options))
    for name, value in fields.items():
        if name == "held_lens":
            lens, record = c.Solution(), c.Camera.from_buffer_copy(value.record.tobytes())
            assert library.fcal_solution_of_camera(ct.byref(record), ct.byref(lens)) == 0
            value = ct.pointer(lens)
        setattr(options, name, value)
    lists = [c.points_of(*view) for view in views]
    targets = (c.TargetView * 2)(*(c.TargetView(points, len(points)) for points in lists))

    def solution(chosen: Any) -> bytes:
        result, solutions = c.ViewsResult(size=ct.sizeof(c.ViewsResult)), (c.Solution * 2)()
        status = library.fcal_calibrate_views(
            *SIZE, targets, 2, chosen, ct.byref(result), solutions, None, None
        )
        assert status == 0
        return bytes(solutions[0])

    calibration = fc.calibrate(*views[0], SIZE, more_views=views[1:], **given)
    assert calibration.solution.tobytes() == solution(ct.byref(options))
    if "start_focal_factor" not in given:  # which should change next to nothing
        assert calibration.solution.tobytes() != solution(None)


def test_double_precision_and_placed_views_are_alike(calibration: fc.Calibration) -> None:
    library, solution = c.library(), c.Solution.from_buffer_copy(calibration.solution.tobytes())
    raw, expected = grid(5, 4, 60.0), np.empty((20, 2))
    status = library.fcal_raw_to_bed(
        ct.byref(solution), c.numbers_of(raw), 20, c.numbers_of(expected)
    )
    assert status == 0
    assert calibration.raw_to_bed(raw).tobytes() == expected.tobytes()

    record = c.Camera.from_buffer_copy(calibration.camera.record.tobytes())
    corner = ct.c_double(10.5), ct.c_double(-3)
    status = library.fcal_place_view(*corner, ct.c_float(0.3), 400, 300, ct.byref(record))
    assert status == 0
    placed = calibration.camera.place_view((10.5, -3), 0.3, (400, 300))
    assert placed.record.tobytes() == bytes(record)


def test_files_are_alike(tmp_path: Path) -> None:
    one = camera(pixel=0.123456789)
    record = c.Camera.from_buffer_copy(one.record.tobytes())
    library = c.library()
    assert library.fcal_save_camera(bytes(tmp_path / "c.ini"), ct.byref(record)) == 0
    one.save(tmp_path / "python.ini")
    assert (tmp_path / "python.ini").read_bytes() == (tmp_path / "c.ini").read_bytes()
    assert library.fcal_load_camera(bytes(tmp_path / "c.ini"), ct.byref(record)) == 0
    assert fc.Camera.load(tmp_path / "python.ini").record.tobytes() == bytes(record)


@pytest.mark.parametrize("size", [(100, 81), (321, 77), (500, 500)])
def test_crops_are_alike(size: fc.Size) -> None:
    picture = frame(3)[::-1, 7:]
    expected = np.zeros((size[1], size[0], 3), np.uint8)
    source, target = c.image_of(picture), c.image_of(expected)
    assert c.library().fcal_crop(ct.byref(source), ct.byref(target)) == 0
    assert fc.crop(picture, size).tobytes() == expected.tobytes()


def test_common_points_are_alike() -> None:
    random = np.random.default_rng(6)
    ids = [random.integers(-2, 30, 25), random.integers(-2, 30, 20)]
    xy = random.uniform(0, 100, (25, 2))
    lists = [c.points_of(xy[: len(some)], xy[: len(some)] + 1, some) for some in ids]
    outputs, needed = [(c.Point * 25)(), (c.Point * 20)()], [ct.c_int32(), ct.c_int32()]
    status = c.library().fcal_common_points(
        lists[0], 25, lists[1], 20, 28, outputs[0], 25, ct.byref(needed[0]), outputs[1], 20,
        ct.byref(needed[1]),
    )  # fmt: skip
    assert status == 0
    targets = [fc.TargetPoints(some, xy[: len(some)], xy[: len(some)] + 1) for some in ids]
    common = fc.common_points(targets[0], targets[1], 28)
    for found, output, count in zip(common, outputs, needed):
        assert len(found) > 0
        assert found.record.tobytes() == bytes(output)[: count.value * ct.sizeof(c.Point)]
