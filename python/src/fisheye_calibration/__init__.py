"""Fisheye cameras over a work bed as measuring instruments.

    import fisheye_calibration as fc

    calibration = fc.calibrate(world, image, (1920, 1080))
    print(calibration.rms, "px,", calibration.bed_error().max(), "mm")
    calibration.camera.save("camera.ini")
    view, mask = calibration.camera.correct(frame)

Points are arrays of shape (n, 2): world points (X, Y) on the bed in the world's unit, usually mm,
and image points (x, y) in pixels with the origin at the centre of the top-left pixel, x to the
right, y down. Sizes are (width, height). Frames are uint8 arrays of shape (height, width),
(height, width, 3) or (height, width, 4) with row 0 at the top, of any strides; results are new
contiguous arrays unless `out` is given.

Wrong types raise TypeError; wrong shapes, sizes and values raise ValueError; both name the
argument. Data without a result raise `NoResultError`. All functions may be called from several
threads; the interpreter runs on while they compute.

calibrate
    From points of a flat target, in one or several views, to a `Calibration`: the `Camera`, its
    residuals and how many millimetres it may be off on the bed.
Camera
    Maps points between bed, raw image and metric view; renders the view of a frame; parameter
    files.
fit_affine
    The affine map from pixels to the bed.
common_points, stitched_size, stitch
    Two cameras over one bed.
crop
    The centre of a picture.
"""

from . import _interpreter  # noqa: F401  isort: skip
from ._arrays import Frame, Size
from ._calibration import calibrate
from ._camera import Camera
from ._core import version as _version
from ._errors import Error, NoResultError, NoSolutionError, Outcome
from ._pictures import crop
from ._registration import Affine, fit_affine
from ._results import BedErrorMap, Calibration, SolvedView
from ._stitching import RigView, Stitched, StitchedRecord, stitch, stitched_size
from ._target_points import TargetPoints, common_points

__version__ = _version()

__all__ = [
    "Affine",
    "BedErrorMap",
    "Calibration",
    "Camera",
    "Error",
    "Frame",
    "NoResultError",
    "NoSolutionError",
    "Outcome",
    "RigView",
    "Size",
    "SolvedView",
    "Stitched",
    "StitchedRecord",
    "TargetPoints",
    "calibrate",
    "common_points",
    "crop",
    "fit_affine",
    "stitch",
    "stitched_size",
]
