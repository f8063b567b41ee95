"""Pictures without a camera."""

from __future__ import annotations

from typing import Optional

from . import _arrays, _core
from ._arrays import Frame, Size


def crop(picture: Frame, size: Size, *, out: Optional[Frame] = None) -> Frame:
    """Copy the centred rectangle of a picture.

    Parameters
    ----------
    picture : (h, w), (h, w, 3) or (h, w, 4) uint8 array
        Row 0 at the top, any strides.
    size : (int, int)
        Width and height of the rectangle, pixels. It may be larger than the picture. Where the
        heights differ by an odd number, the spare row is left out as if rows were counted from the
        bottom.
    out : uint8 array, optional
        Where to write it; pixels outside the picture keep their value. By default it is new and
        black. Must not overlap `picture`.
    """
    source = _arrays.picture(picture, "picture")
    shape = _arrays.shape_of(_arrays.size_of(size, "size"), source)
    target = _arrays.output(out, "out", shape)
    if out is not None:
        _arrays.require_apart(target, source, "out", "picture")
    _core.crop(source, target)
    return target
