"""Exceptions of the package."""

from __future__ import annotations

import enum


class Error(RuntimeError):
    """A failure of the library. Wrong arguments raise `TypeError` or `ValueError` instead."""


class NoResultError(Error):
    """Well-formed arguments that have no result, such as too few points."""


class Outcome(enum.IntEnum):
    """Why views have no solution; the numbers are those of ``fcal_views_result.outcome``."""

    BAD_INPUT = 1
    TOO_FEW_POINTS = 2
    DEGENERATE = 3
    NOT_CONVERGED = 4
    BEHIND_CAMERA = 5
    FOLDED_LENS = 6
    TOO_MANY_WRONG_POINTS = 7
    TOO_MANY_WRONG_VIEWS = 8


class NoSolutionError(NoResultError):
    """Views from which no camera can be determined.

    Attributes
    ----------
    outcome : Outcome
        The reason.
    view : int or None
        The view that it is about, from 0, or None if it is about all of them.
    """

    def __init__(self, message: str, outcome: int, view: int) -> None:
        super().__init__(message)
        self.outcome = Outcome(outcome)
        self.view = view if view >= 0 else None

    def __reduce__(self) -> tuple[type[NoSolutionError], tuple[str, int, int]]:
        view = -1 if self.view is None else self.view
        return type(self), (str(self), int(self.outcome), view)


# Tracebacks name them as callers do.
for _public in (Error, NoResultError, NoSolutionError, Outcome):
    _public.__module__ = "fisheye_calibration"
