"""Plane registration: a picture's pixels to the bed without a model of the lens."""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np
import numpy.typing as npt

from . import _arrays, _core
from ._arrays import Float64Array


@dataclass(frozen=True, eq=False)
class Affine:
    """An affine map from image points to the world.

    Attributes
    ----------
    matrix : (2, 3) float64 array
        ((a, b, e), (c, d, f)) of xw = a x + b y + e, yw = c x + d y + f.
    error : (float, float)
        Root mean square residuals in X and Y, world units. They sum over the first nine points
        only but divide by the number of all of them.
    """

    matrix: Float64Array
    error: tuple[float, float]

    def __call__(self, image: npt.ArrayLike) -> Float64Array:
        """Map image points, (n, 2), to the world."""
        points = _arrays.exact_plane(image, "image")
        mapped: Float64Array = points @ self.matrix[:, :2].T + self.matrix[:, 2]
        return mapped


def fit_affine(world: npt.ArrayLike, image: npt.ArrayLike) -> Affine:
    """Fit the affine map from image points to the world by least squares.

    Parameters
    ----------
    world : (n, 2) or (n, 3) array_like
        Points of the bed, world units; n is at least 3. Collinear points are not recognised.
    image : (n, 2) array_like
        The same points in the image, pixels.

    Raises
    ------
    NoResultError
        For fewer than three points.
    """
    coefficients, error_x, error_y = _core.fit_affine(_arrays.target(world, image))
    a, b, c, d, e, f = coefficients
    return Affine(np.array([[a, b, e], [c, d, f]]), (error_x, error_y))
