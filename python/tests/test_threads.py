"""The interpreter's lock is released, and threads do not disturb each other."""

from __future__ import annotations

import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor
from typing import Callable

import numpy as np
import pytest
from conftest import SIZE, camera, frame, measured

import fisheye_calibration as fc
from fisheye_calibration import _core


WORLD, IMAGE = measured()
TARGET = fc.TargetPoints(np.arange(99) + 1, WORLD, IMAGE).record
POINTS = TARGET.copy()  # is written
MANY = np.random.default_rng(8).uniform(0, 200, (200_000, 3)).astype(np.float32)
RAW, RECORD = frame(4, size=(2000, 1500)), camera().record
VIEW, MASK = np.zeros_like(RAW), np.zeros((1500, 2000), np.uint8)
SOLUTION = fc.calibrate(WORLD, IMAGE, SIZE).solution
PLANE = MANY[:, :2].copy()
EXACT = PLANE.astype(np.float64)
OTHER = camera(0.3)
RIG = RAW, RECORD, TARGET, RAW, OTHER.record, TARGET
CANVAS = np.zeros(_core.stitched_size(*RIG)[::-1] + (4,), np.uint8)
VIEWS = [TARGET] * 4
DUAL = _core.stitch(*RIG, CANVAS)

CALLS: dict[str, Callable[[], object]] = {
    "correct": lambda: _core.correct(RAW, RECORD, VIEW, MASK),
    "crop": lambda: _core.crop(RAW, VIEW[:-3, :-5]),
    "stitch": lambda: _core.stitch(*RIG, CANVAS),
    "crop_stitched": lambda: _core.crop_stitched(RAW, 0, 0, VIEW, DUAL),
    "calibrate": lambda: _core.calibrate(*SIZE, POINTS, *SIZE),
    "calibrate_views": lambda: _core.calibrate_views(
        *SIZE, VIEWS, False, True, False, 1.0, None
    ),
    "world_to_raw": lambda: _core.world_to_raw(RECORD, MANY),
    "raw_to_world": lambda: _core.raw_to_world(RECORD, PLANE),
    "world_to_view": lambda: _core.world_to_view(RECORD, 99, 99, PLANE),
    "raw_to_bed": lambda: _core.raw_to_bed(SOLUTION, EXACT),
    "bed_errors": lambda: _core.bed_errors(SOLUTION, None, EXACT[:5000]),
}


@pytest.mark.parametrize("name", CALLS)
def test_interpreter_runs_on_during_a_call(name: str) -> None:
    # With a long switch interval a running thread keeps the lock until it gives it away. The other
    # thread does so after each step; it can count only while the call has released the lock. NumPy
    # gives it away, too, when it copies, so the calls of the extension module are made with arrays
    # that are at hand.
    count = counted = 0
    started, stop = threading.Event(), threading.Event()
    lock_kept = sys.getswitchinterval()

    def work() -> None:
        nonlocal count
        started.wait()
        while not stop.is_set():
            count += 1
            time.sleep(0)

    other = threading.Thread(target=work)
    other.start()
    sys.setswitchinterval(1000)
    try:
        started.set()
        for _ in range(1000):  # a busy machine may not run the other thread at once
            before = count
            CALLS[name]()
            counted += count - before
            if counted > 0:
                break
    finally:
        sys.setswitchinterval(lock_kept)
        stop.set()
        other.join()
    assert counted > 0


def test_threads_get_their_own_results_and_errors() -> None:
    frames = [frame(3, seed) for seed in range(4)]
    views = [camera().correct(raw)[0].tobytes() for raw in frames]
    world, image = measured()
    solved = fc.calibrate(world, image, SIZE).camera

    def work(number: int) -> bool:
        kind = number % 3
        if kind == 0:
            return camera().correct(frames[number % 4])[0].tobytes() == views[number % 4]
        if kind == 1:
            return fc.calibrate(world, image, SIZE).camera == solved
        try:
            fc.calibrate(world[: 3 + number % 2], np.full((3 + number % 2, 2), np.nan), SIZE)
        except fc.NoSolutionError as error:
            few = fc.Outcome.BAD_INPUT, fc.Outcome.TOO_FEW_POINTS
            return error.outcome in few and str(error).startswith("view")
        return False

    with ThreadPoolExecutor(4) as pool:
        assert all(pool.map(work, range(60)))
