"""Results and records as values: compared, copied, pickled, shown."""

from __future__ import annotations

import copy
import pickle
from typing import Any, Callable

import numpy as np
import pytest
from conftest import camera, measured
from test_stitching import rig

import fisheye_calibration as fc

WORLD, IMAGE = measured()
MAKE: list[Callable[[], Any]] = [
    camera,
    lambda: rig()[0].points,
    lambda: fc.stitch(*rig()).record,
]
COPY: list[Callable[[Any], Any]] = [
    copy.copy,
    copy.deepcopy,
    lambda value: pickle.loads(pickle.dumps(value)),
]


@pytest.mark.parametrize("make", MAKE)
@pytest.mark.parametrize("duplicate", COPY)
def test_copies_are_equal_and_do_not_change_either(
    make: Callable[[], Any], duplicate: Callable[[Any], Any]
) -> None:
    value = make()
    again = duplicate(value)
    assert again == value
    assert hash(again) == hash(value)
    assert again != "value"
    assert not again.record.flags.writeable


def test_points_with_other_numbers_differ() -> None:
    ids = np.arange(99) + 1
    assert fc.TargetPoints(ids, WORLD, IMAGE) != fc.TargetPoints(ids + 1, WORLD, IMAGE)
    assert fc.TargetPoints(ids, WORLD, IMAGE) != fc.TargetPoints(ids, WORLD, IMAGE + 1)


def test_bytes_between_the_fields_do_not_count() -> None:
    one = camera()
    data = np.frombuffer(one.record.tobytes(), np.uint8).copy()
    named = np.zeros(len(data), bool)
    for field in (one.record.dtype.fields or {}).values():
        named[field[1] : field[1] + field[0].itemsize] = True
    assert not named.all()
    data[~named] = 99
    other = fc.Camera._of(data.view(one.record.dtype).reshape(()))
    assert other.record.tobytes() != one.record.tobytes()
    assert other == one
    assert hash(other) == hash(one)
    assert pickle.dumps(other) == pickle.dumps(one)


def test_pickled_calibrations_keep_their_solution_unchanged(calibration: fc.Calibration) -> None:
    again = pickle.loads(pickle.dumps(calibration))
    assert again.solution.tobytes() == calibration.solution.tobytes()
    assert not again.solution.flags.writeable


def test_large_results_are_shown_in_one_line(calibration: fc.Calibration) -> None:
    stitched = fc.stitch(*rig(3))
    chart = calibration.bed_error_map((0, 0, 300, 240), columns=6, rows=5)
    assert repr(stitched).startswith("<Stitched: image of shape (480, 640, 3), <StitchedRecord: ")
    assert repr(rig()[0]).startswith("<RigView: frame of shape (240, 320), <Camera: ")
    assert repr(rig()[0].points) == "<TargetPoints: 12 points>"
    assert repr(chart) == "<BedErrorMap: 6 x 5 points, X 0 ... 300, Y 0 ... 240>"
    assert repr(calibration.views[1]) == "<SolvedView: 99 points, 0 wrong>"
    for value in (calibration, stitched, chart):
        assert "\n" not in repr(value)


@pytest.mark.parametrize("make", MAKE)
def test_other_types_of_values_differ(make: Callable[[], Any]) -> None:
    others = [other() for other in MAKE if other is not make]
    assert len(others) == 2
    assert all(make() != other for other in others)


def test_no_points_are_a_value() -> None:
    none = fc.TargetPoints([], [], [])
    assert len(none) == 0
    assert none.ids.shape == (0,) and none.world.shape == (0, 2) and none.image.shape == (0, 2)
    assert none == fc.TargetPoints(np.zeros(0, int), np.zeros((0, 3)), np.zeros((0, 2)))
    assert pickle.loads(pickle.dumps(none)) == none
    assert fc.common_points(none, rig()[0].points) == (none, none)
    with pytest.raises(fc.NoResultError):
        first, second = rig()
        fc.stitch(first, fc.RigView(second.frame, second.camera, none))
