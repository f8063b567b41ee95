"""Parameter files."""

from __future__ import annotations

import errno
import os
from typing import Callable, Union

from ._arrays import Record
from ._errors import NoResultError

PathLike = Union[str, "os.PathLike[str]"]


def _bytes_of(path: PathLike) -> bytes:
    encoded = os.fsencode(path)
    if b"\0" in encoded:
        raise ValueError("path: contains a null character")
    return encoded


def load(path: PathLike, function: Callable[[bytes], Record], what: str) -> Record:
    """Read a record; FileNotFoundError or ValueError if there is none."""
    name = _bytes_of(path)
    if not os.path.exists(path):
        raise FileNotFoundError(errno.ENOENT, os.strerror(errno.ENOENT), os.fspath(path))
    try:
        return function(name)
    except NoResultError:
        raise ValueError(f"path: {os.fspath(path)} holds no {what}") from None


def save(path: PathLike, function: Callable[[bytes, Record], None], record: Record) -> None:
    """Write a record; OSError if that fails."""
    name = _bytes_of(path)
    try:
        function(name, record)
    except NoResultError:
        raise OSError(errno.EIO, "cannot be written", os.fspath(path)) from None
