"""Calibrate a camera from photos of a target and show how good it is.

The cells (# %%) run one by one in editors that know them, or all at once:

    python3 calibrate.py [--output FOLDER] [PHOTO POINTS]...

writes residuals.png, bed_error.png, view.png and camera.ini to FOLDER, by default the current one.
POINTS lists where the target's points are in PHOTO, as the program finds them:

    fisheye-calibration detect bed.png --chessboard 8x6 --spacing 39 -o bed.csv
    fisheye-calibration detect tilted.png --chessboard 8x6 --spacing 39 -o tilted.csv
    python3 calibrate.py bed.png bed.csv tilted.png tilted.csv

In the first photo the target lies on the bed. Without photos, a known camera takes some here.
"""

# %% The photos.
import argparse
import sys
from pathlib import Path
from typing import Any

import matplotlib

if not hasattr(sys, "ps1"):
    matplotlib.use("Agg")  # no window is needed
import matplotlib.pyplot as plt
import numpy as np
from matplotlib.colors import LogNorm

import fisheye_calibration as fc

arguments = argparse.ArgumentParser()
arguments.add_argument("--output", type=Path, default=Path("."), metavar="FOLDER")
arguments.add_argument("files", nargs="*", metavar="PHOTO POINTS")
given, _ = arguments.parse_known_args()
random = np.random.default_rng(1)


def read_photo(name: str) -> Any:
    """Return a picture as a uint8 array (h, w), (h, w, 3) or (h, w, 4)."""
    photo = plt.imread(name)
    return photo if photo.dtype == np.uint8 else np.round(255 * photo).astype(np.uint8)


def read_points(name: str) -> Any:
    """Return the target's points on the bed, mm, and in the photo, pixels."""
    table = np.loadtxt(name, delimiter=",", skiprows=1, ndmin=2)
    return table[:, 1:3], table[:, 3:5]


def take_photo(tilt: float) -> Any:
    """Return a photo of 11 x 9 dots, 30 mm apart, and their points."""
    camera = fc.Camera(
        focal_length=(410, 410),
        principal_point=(645, 474),
        distortion=(0.02, -0.03),
        rotation_vector=(tilt, -0.2, 0),
        translation=(-150, -120, 200),
    )
    y, x = np.mgrid[:960, :1280]
    bed = camera.raw_to_world(np.stack([x, y], axis=-1).reshape(-1, 2))  # of every pixel
    dot = np.clip(np.round(bed / 30), 0, (10, 8)) * 30
    distance = np.linalg.norm(bed - dot, axis=1).reshape(x.shape)
    bright = np.where(np.isfinite(distance), np.clip(40 + 80 * (distance - 3), 40, 220), 90)
    bright += 3 * random.standard_normal(bright.shape)
    photo = np.clip(bright, 0, 255).astype(np.uint8)
    # A detector's part, made easy by the known camera: the centres of the dark pixels.
    world = np.stack(np.meshgrid(np.arange(11) * 30, np.arange(9) * 30), axis=-1).reshape(-1, 2)
    image = np.empty(world.shape)
    near = np.round(camera.world_to_raw(world)).astype(int)
    for i in range(len(near)):
        column, row = map(int, near[i])
        window = np.s_[row - 9 : row + 10, column - 9 : column + 10]
        weight = np.clip(200.0 - photo[window], 0, None)
        image[i] = np.array([x[window], y[window]]).reshape(2, -1) @ weight.ravel() / weight.sum()
    return photo, (world, image)


if given.files:
    photos = [read_photo(name) for name in given.files[::2]]
    views = [read_points(name) for name in given.files[1::2]]
else:
    taken = [take_photo(tilt) for tilt in (0.15, 0.35, 0.5)]
    photos, views = [list(both) for both in zip(*taken)]

# %% The calibration. The first view's target lies on the bed, the others are held tilted.
photo = photos[0]
world, image = views[0]
size = photo.shape[1], photo.shape[0]  # width, height
calibration = fc.calibrate(world, image, size, more_views=views[1:])
print(calibration.camera)
print(f"reprojection error (RMS): {calibration.rms:.3f} px")
print(f"wrong points: {np.flatnonzero(calibration.wrong_points).tolist()}")
print(f"bed error (95 %): {calibration.bed_error().max():.2f} mm at the target's points")
calibration.camera.save(given.output / "camera.ini")

# %% The residuals on the photo: measured minus reprojected, magnified. They should look random.
figure, axes = plt.subplots(figsize=(8, 6))
axes.imshow(photo, cmap="gray")
x, y = calibration.image.T
dx, dy = calibration.residuals.T
style: Any = {"angles": "xy", "scale_units": "xy", "width": 0.002, "color": "red"}
arrows = axes.quiver(x, y, dx, dy, scale=calibration.rms / 30, **style)
axes.quiverkey(arrows, 0.8, 1.03, calibration.rms, f"{calibration.rms:.3f} px", labelpos="E")
axes.set(xlabel="x, px", ylabel="y, px")
axes.set_title("residuals", loc="left")
figure.savefig(given.output / "residuals.png", dpi=100)

# %% The bed as seen from straight above.
view, mask = calibration.camera.correct(photo)
plt.imsave(given.output / "view.png", view, cmap="gray", vmin=0, vmax=255)

# %% How far off the camera may be on the bed that the view shows.
chart = calibration.bed_error_map()
figure, axes = plt.subplots(figsize=(8, 6))
levels = [0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5]
colours = axes.contourf(chart.x, chart.y, chart.error, levels, norm=LogNorm(), extend="both")
figure.colorbar(colours, label="bound on the error (95 %), mm", ticks=levels, format="%g")
axes.plot(*world.T, "w.", markersize=2)
axes.set(aspect="equal", xlabel="X, mm", ylabel="Y, mm", title="error on the bed")
axes.invert_yaxis()
figure.savefig(given.output / "bed_error.png", dpi=100)
