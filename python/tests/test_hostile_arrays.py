"""Arrays of any kind are used or refused; nothing else happens."""

from __future__ import annotations

from typing import Any

import numpy as np
import pytest
from conftest import SIZE, camera
from hypothesis import given
from hypothesis import strategies as st
from hypothesis.extra import numpy as arrays

import fisheye_calibration as fc
from fisheye_calibration import _core

ANY_ARRAY = arrays.arrays(
    dtype=st.one_of(arrays.scalar_dtypes(), st.just(np.dtype(np.uint8))),
    shape=arrays.array_shapes(min_dims=0, max_dims=4, min_side=0, max_side=6),
)


@given(ANY_ARRAY, st.integers(-2, 9), st.integers(-2, 9))
def test_any_array_as_a_frame(array: Any, width: int, height: int) -> None:
    try:
        view, mask = camera().correct(array, (width, height))
    except (TypeError, ValueError) as error:
        assert str(error).startswith(("frame: ", "size[0]: ", "size[1]: "))
    except fc.NoResultError:
        pass
    else:
        assert view.shape == (height, width) + array.shape[2:]
        assert mask.shape == (height, width)


@given(ANY_ARRAY)
def test_any_array_as_points(array: Any) -> None:
    with np.errstate(all="ignore"):
        for call in (camera().world_to_raw, camera().raw_to_world):
            try:
                result = call(array)
            except (TypeError, ValueError) as error:
                assert str(error).startswith(("world: ", "raw: "))
            else:
                assert result.shape == (len(array), 2)


@given(ANY_ARRAY, ANY_ARRAY)
def test_any_arrays_as_a_target(world: Any, image: Any) -> None:
    with np.errstate(all="ignore"):
        try:
            fc.calibrate(world, image, SIZE)
        except (TypeError, ValueError) as error:
            assert str(error).startswith(("world: ", "image: "))
        except fc.Error:
            pass


@given(ANY_ARRAY)
def test_extension_refuses_what_does_not_fit(array: Any) -> None:
    # Without the checks of the modules above it.
    record, view = camera().record, np.zeros((4, 4), np.uint8)
    calls: list[Any] = [
        lambda: _core.world_to_raw(record, array),
        lambda: _core.world_to_raw(array, np.zeros((1, 3), np.float32)),
        lambda: _core.fit_affine(array),
        lambda: _core.bed_errors(array, None, np.zeros((1, 2))),
        lambda: _core.correct(view, array, view, view),
    ]
    for call in calls:
        if array.dtype == np.float32 and array.ndim == 2 and array.shape[1] == 3:
            continue
        with pytest.raises((TypeError, ValueError)):
            call()
