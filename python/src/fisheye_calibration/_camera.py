"""A calibrated camera over its work bed."""

from __future__ import annotations

from typing import Optional, Tuple

import numpy as np
import numpy.typing as npt

from . import _arrays, _core, _files
from ._arrays import Float32Array, Float64Array, Frame, Record, Size
from ._files import PathLike
from ._record_value import RecordValue

_PAIRS = {
    "focal_length": ("fx", "fy"),
    "principal_point": ("u0", "v0"),
    "datum": ("datum_xw", "datum_yw"),
    "shift": ("image_dx", "image_dy"),
}


def _rotation_matrix(vector: Float64Array) -> Float64Array:
    # R = I + sin(angle) K + (1 - cos(angle)) K^2, K the cross product with the axis
    angle = float(np.linalg.norm(vector))
    if angle == 0:
        return np.eye(3)
    x, y, z = vector / angle
    cross = np.array([[0, -z, y], [z, 0, -x], [-y, x, 0]])
    rotation: Float64Array = np.eye(3) + np.sin(angle) * cross
    rotation += (1 - np.cos(angle)) * (cross @ cross)
    return rotation


class Camera(RecordValue):
    """A calibrated fisheye camera and the work bed that it looks at.

    Usually the result of `calibrate` or `Camera.load`. Cameras never change; they can be compared,
    hashed, copied and pickled. All numbers but the distortion and the homography have 32 bits, as
    in the parameter files.

    The frames are the world (the bed is its plane Z = 0; lengths are in the world's unit, usually
    mm), the raw image, the corrected image without distortion, and the view, which is metric: X of
    the world runs along x, Y along y, `pixel` world units per pixel. Pixel coordinates are (x, y)
    with the origin at the centre of the top-left pixel. Corrected images and views may have any
    size; positions in them depend on it.

    Parameters
    ----------
    focal_length : (2,) array_like
        (fx, fy), pixels.
    principal_point : (2,) array_like
        (u0, v0) in the raw image, pixels.
    distortion : (2,) array_like
        (k0, k1) of theta_d = theta + k0 theta^2 + k1 theta^3, theta in radians.
    rotation_vector : (3,) array_like
        Axis times angle of the rotation from the world to the camera, radians.
    translation : (3,) array_like
        From the world to the camera, world units.
    homography : (3, 3) array_like, optional
        From the corrected image to the view; the default is the identity.
    pixel : float, optional
        World units per pixel of the view.
    datum : (2,) array_like, optional
        World point at the view's centre.
    shift : (2,) array_like, optional
        Added after the homography, pixels.
    skewness : float, optional
        Share of y that is added to x before fx.
    """

    __slots__ = ("_view_size",)
    _view_size: Optional[Size]

    def __init__(
        self,
        *,
        focal_length: npt.ArrayLike,
        principal_point: npt.ArrayLike,
        distortion: npt.ArrayLike,
        rotation_vector: npt.ArrayLike,
        translation: npt.ArrayLike,
        homography: Optional[npt.ArrayLike] = None,
        pixel: float = 1.0,
        datum: npt.ArrayLike = (0.0, 0.0),
        shift: npt.ArrayLike = (0.0, 0.0),
        skewness: float = 0.0,
    ) -> None:
        record: Record = np.zeros((), _core.camera_dtype)
        pairs = {
            "focal_length": focal_length,
            "principal_point": principal_point,
            "datum": datum,
            "shift": shift,
        }
        for name, pair in pairs.items():
            first, second = _PAIRS[name]
            record[first], record[second] = _arrays.vector(pair, name, 2)
        record["k"][:2] = _arrays.vector(distortion, "distortion", 2)
        rotation = _arrays.vector(rotation_vector, "rotation_vector", 3)
        record["rx"], record["ry"], record["rz"] = rotation
        record["r"] = _rotation_matrix(rotation).ravel()
        offset = _arrays.vector(translation, "translation", 3)
        record["tx"], record["ty"], record["tz"] = offset
        plane = np.eye(3) if homography is None else homography
        record["p"] = _arrays.matrix(plane, "homography", 3, 3).ravel()
        record["pixel"] = _arrays.real(pixel, "pixel")
        record["skewness"] = _arrays.real(skewness, "skewness")
        record.setflags(write=False)
        self._record = record
        self._view_size = None

    @classmethod
    def _of(cls, record: Record, view_size: Optional[Size] = None) -> Camera:
        camera = super()._of(record)
        camera._view_size = view_size
        return camera

    @classmethod
    def load(cls, path: PathLike, view_size: Optional[Size] = None) -> Camera:
        """Read a parameter file (INI).

        Missing parameters are 0.

        Parameters
        ----------
        path : str or path-like
            The file.
        view_size : (int, int), optional
            Width and height of the view that the file was made for, pixels, which files do not
            hold. If None, `correct` needs its `size` unless it is the frame's.

        Raises
        ------
        OSError
            If there is no such file or it cannot be read: FileNotFoundError, PermissionError ...
        ValueError
            If the file holds no parameter of a camera.
        """
        size = None if view_size is None else _arrays.size_of(view_size, "view_size")
        return cls._of(_files.load(path, _core.load_camera, "camera"), size)

    def save(self, path: PathLike) -> None:
        """Write a parameter file (INI), or change its camera; other sections stay as they are.

        The file is replaced as a whole or not at all.

        Raises
        ------
        OSError
            If the file cannot be written: FileNotFoundError, PermissionError ...
        """
        _files.save(path, _core.save_camera, self._record)

    @property
    def record(self) -> Record:
        """The fields of the C interface's ``fcal_camera``: a read-only structured array, ()."""
        return self._record

    def _pair(self, name: str) -> Tuple[float, float]:
        first, second = _PAIRS[name]
        return float(self._record[first]), float(self._record[second])

    @property
    def focal_length(self) -> Tuple[float, float]:
        """(fx, fy), pixels."""
        return self._pair("focal_length")

    @property
    def principal_point(self) -> Tuple[float, float]:
        """(u0, v0) in the raw image, pixels."""
        return self._pair("principal_point")

    @property
    def distortion(self) -> Tuple[float, float]:
        """(k0, k1) of theta_d = theta + k0 theta^2 + k1 theta^3, theta in radians."""
        return float(self._record["k"][0]), float(self._record["k"][1])

    @property
    def skewness(self) -> float:
        """Share of y that is added to x before fx."""
        return float(self._record["skewness"])

    @property
    def rotation_vector(self) -> Float64Array:
        """Axis times angle of the rotation from the world to the camera, radians, shape (3,)."""
        return np.array([self._record[name] for name in ("rx", "ry", "rz")], np.float64)

    @property
    def rotation(self) -> Float64Array:
        """The rotation from the world to the camera as a matrix, shape (3, 3)."""
        return _rotation_matrix(self.rotation_vector)

    @property
    def translation(self) -> Float64Array:
        """From the world to the camera, world units, shape (3,)."""
        return np.array([self._record[name] for name in ("tx", "ty", "tz")], np.float64)

    @property
    def position(self) -> Float64Array:
        """Where the camera is in the world, world units, shape (3,)."""
        where: Float64Array = -self.rotation.T @ self.translation
        return where

    @property
    def homography(self) -> Float64Array:
        """From the corrected image to the view, shape (3, 3)."""
        return np.array(self._record["p"], np.float64).reshape(3, 3)

    @property
    def pixel(self) -> float:
        """World units per pixel of the view."""
        return float(self._record["pixel"])

    @property
    def datum(self) -> Tuple[float, float]:
        """World point at the view's centre."""
        return self._pair("datum")

    @property
    def view_size(self) -> Optional[Size]:
        """(width, height) of the view, pixels, given to `calibrate`, `place_view` or `load`, or None.

        Files do not hold it, and it does not count when cameras are compared.
        """
        return self._view_size

    @property
    def shift(self) -> Tuple[float, float]:
        """Added after the homography, pixels."""
        return self._pair("shift")

    def world_to_raw(self, world: npt.ArrayLike) -> Float32Array:
        """Map world points to the raw image.

        Parameters
        ----------
        world : (n, 2) or (n, 3) array_like
            World units; Z of (n, 2) is 0, the bed.

        Returns
        -------
        (n, 2) float32 array
            Pixels. Points behind the camera are not recognised.
        """
        return _core.world_to_raw(self._record, _arrays.space(world, "world"))

    def raw_to_world(self, raw: npt.ArrayLike) -> Float32Array:
        """Map raw pixels to the points of the bed that they show.

        Parameters
        ----------
        raw : (n, 2) array_like
            Pixels.

        Returns
        -------
        (n, 2) float32 array
            World units; NaN for pixels that do not show the plane of the bed.
        """
        return _core.raw_to_world(self._record, _arrays.plane(raw, "raw"))

    def world_to_corrected(self, world: npt.ArrayLike, size: Size) -> Float32Array:
        """Map world points, (n, 2) or (n, 3), to a corrected image of `size` (width, height)."""
        cx, cy = _centre(size)
        points = _arrays.space(world, "world")
        return _core.world_to_corrected(self._record, cx, cy, points)

    def raw_to_corrected(self, raw: npt.ArrayLike, size: Size) -> Float32Array:
        """Map raw pixels, (n, 2), to a corrected image of `size`; NaN beyond the lens's range."""
        cx, cy = _centre(size)
        return _core.raw_to_corrected(self._record, cx, cy, _arrays.plane(raw, "raw"))

    def world_to_view(self, world: npt.ArrayLike, size: Size) -> Float32Array:
        """Map points of the bed to the view.

        Parameters
        ----------
        world : (n, 2) array_like
            World units; (n, 3) with Z = 0 is accepted, too.
        size : (int, int)
            Width and height of the view, pixels.

        Returns
        -------
        (n, 2) float32 array
            Pixels of the view.
        """
        cx, cy = _centre(size)
        return _core.world_to_view(self._record, cx, cy, _arrays.bed(world, "world"))

    def view_to_world(self, view: npt.ArrayLike, size: Size) -> Float32Array:
        """Map pixels of the view, (n, 2), to the bed: the inverse of `world_to_view`."""
        cx, cy = _centre(size)
        return _core.view_to_world(self._record, cx, cy, _arrays.plane(view, "view"))

    def correct(
        self,
        frame: Frame,
        size: Optional[Size] = None,
        *,
        out: Optional[Frame] = None,
        mask: Optional[Frame] = None,
    ) -> Tuple[Frame, Frame]:
        """Render the view of a raw frame: the bed as seen from straight above.

        Parameters
        ----------
        frame : (h, w), (h, w, 3) or (h, w, 4) uint8 array
            The raw frame, row 0 at the top, bytes of a pixel in any order. Rows may have any
            stride, also a negative one; it is copied only if the bytes of a row are not adjacent.
        size : (int, int), optional
            Width and height of the view, pixels. The default is `view_size`, the size that
            `calibrate`, `place_view` or `load` was given, or the frame's if that is None.
            At any other size than that of `calibrate` or `place_view` the picture is distorted and
            the mapping of points does not hold.
        out, mask : uint8 arrays, optional
            Where to write the results, such as parts of larger pictures. By default they are new
            and contiguous. They may overlap the frame, but not each other.

        Returns
        -------
        view : uint8 array
            The picture, with as many bytes per pixel as the frame.
        mask : (height, width) uint8 array
            0 where the view shows the frame, 255 elsewhere: ``numpy.ma.array(view, mask=mask)``.

        Raises
        ------
        NoResultError
            If the frame is entirely black once the distortion is removed.
        """
        source = _arrays.picture(frame, "frame")
        if size is None:
            size = self._view_size or (source.shape[1], source.shape[0])
        size = _arrays.size_of(size, "size")
        view = _arrays.output(out, "out", _arrays.shape_of(size, source))
        marks = _arrays.output(mask, "mask", (size[1], size[0]))
        if out is not None and mask is not None:
            _arrays.require_apart(marks, view, "mask", "out")
        _core.correct(source, self._record, view, marks)
        return view, marks

    def place_view(self, corner: npt.ArrayLike, pixel: float, size: Size) -> Camera:
        """Return this camera with a view that shows a chosen rectangle of the bed.

        Parameters
        ----------
        corner : (2,) array_like
            World point at the outer corner of the view's first pixel.
        pixel : float
            World units per pixel.
        size : (int, int)
            Width and height of the view, pixels; from then on the default of `correct`.

        Raises
        ------
        NoResultError
            If the camera sees the bed edge-on.
        """
        x, y = _arrays.vector(corner, "corner", 2)
        width, height = _arrays.size_of(size, "size")
        record = self._record.copy()
        _core.place_view(float(x), float(y), _arrays.real(pixel, "pixel"), width, height, record)
        return Camera._of(record, (width, height))

    def __reduce__(self) -> Tuple[object, Tuple[object, ...]]:
        function, content = super().__reduce__()
        return function, (*content, self._view_size)

    def __repr__(self) -> str:
        fx, fy = self.focal_length
        x, y, z = self.position
        return (
            f"<Camera: focal length ({fx:.1f}, {fy:.1f}) px, position ({x:.1f}, {y:.1f}, {z:.1f}),"
            f" view {self.pixel:.6g} per pixel>"
        )


def _centre(size: Size) -> Tuple[float, float]:
    width, height = _arrays.size_of(size, "size")
    return width / 2, height / 2
