"""Parameter files."""

from __future__ import annotations

import errno
import os
import stat
import tempfile
from typing import Callable, Union

from ._arrays import Record
from ._errors import NoResultError

PathLike = Union[str, "os.PathLike[str]"]


def _bytes_of(path: PathLike) -> bytes:
    try:
        encoded = os.fsencode(path)
    except TypeError:
        raise TypeError(f"path: neither str nor PathLike but {type(path).__name__}") from None
    if b"\0" in encoded:
        raise ValueError("path: contains a null character")
    return encoded


def load(path: PathLike, function: Callable[[bytes], Record], what: str) -> Record:
    """Read a record; OSError if the file cannot be read, ValueError if it holds none."""
    name = _bytes_of(path)
    if not stat.S_ISFIFO(os.stat(path).st_mode):
        with open(path, "rb"):
            pass  # says why it cannot be read
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
        raise _failure(path) from None


def _failure(path: PathLike) -> OSError:
    """Return why a file cannot be written, found by writing another one to its folder."""
    where = os.path.realpath(path)
    reason, text = errno.EIO, "cannot be written"
    if os.path.isdir(where):
        reason, text = errno.EISDIR, os.strerror(errno.EISDIR)
    else:
        try:
            with tempfile.TemporaryFile(dir=os.path.dirname(where)) as file:
                file.write(b"[]")
        except OSError as error:
            reason, text = error.errno or reason, error.strerror or text
    return OSError(reason, text, os.fspath(path))
