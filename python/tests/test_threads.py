"""The interpreter's lock is released, and threads do not disturb each other."""

from __future__ import annotations

import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import numpy as np
from conftest import SIZE, camera, frame, measured

import fisheye_calibration as fc
from fisheye_calibration import _core


def test_interpreter_runs_on_during_a_call() -> None:
    # With a long switch interval a running thread keeps the lock until it gives it away. The other
    # thread does so after each step; it can count only while the call has released the lock.
    raw, record = frame(4, size=(2000, 1500)), camera().record
    view, mask = np.zeros_like(raw), np.zeros((1500, 2000), np.uint8)
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
        for _ in range(20):
            before = count
            _core.correct(raw, record, view, mask)  # NumPy, too, gives the lock away at times
            counted += count - before
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
