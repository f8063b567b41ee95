"""Calibrate a camera from three views of a target and show how good it is.

The cells (# %%) run one by one in editors that know them, or all at once:

    python3 calibrate.py [FOLDER]

writes residuals.png, bed_error.png and camera.ini to FOLDER, by default the current one.
"""

# %% The points. Here a known camera sees a target of 11 x 9 points that are 30 mm apart, to about a
# twentieth of a pixel; on site they come from a detector, one list per photo.
import sys
from pathlib import Path

import matplotlib

if not hasattr(sys, "ps1"):
    matplotlib.use("Agg")  # no window is needed
import matplotlib.pyplot as plt
import numpy as np
from matplotlib.colors import LogNorm

import fisheye_calibration as fc

size = (1280, 960)  # width, height
folder = Path(sys.argv[1] if len(sys.argv) > 1 else ".")
folder.mkdir(parents=True, exist_ok=True)
world = np.stack(np.meshgrid(np.arange(11) * 30.0, np.arange(9) * 30.0), axis=-1).reshape(-1, 2)
random = np.random.default_rng(1)


def find_target(tilt: float) -> "np.typing.NDArray[np.float64]":
    """Return where the camera sees the target, pixels, shape (99, 2)."""
    camera = fc.Camera(
        focal_length=(410, 410),
        principal_point=(645, 474),
        distortion=(0.02, -0.03),
        rotation_vector=(tilt, -0.2, 0),
        translation=(-150, -120, 200),
    )
    return camera.world_to_raw(world) + 0.05 * random.standard_normal((len(world), 2))


# %% The calibration. The first view's target lies on the bed, the others are held tilted.
image = find_target(0.15)
more_views = [(world, find_target(tilt)) for tilt in (0.35, 0.5)]
calibration = fc.calibrate(world, image, size, more_views=more_views)
print(calibration.camera)
print(f"reprojection error (RMS): {calibration.rms:.3f} px")
print(f"wrong points: {np.flatnonzero(calibration.wrong_points).tolist()}")
print(f"bed error (95 %): {calibration.bed_error().max():.2f} mm at the target's points")
calibration.camera.save(folder / "camera.ini")

# %% The residuals: measured minus reprojected, magnified. They should look random.
figure, axes = plt.subplots(figsize=(8, 6))
x, y = calibration.image.T
dx, dy = calibration.residuals.T
arrows = axes.quiver(x, y, dx, dy, angles="xy", scale_units="xy", scale=1 / 500, width=0.002)
axes.quiverkey(arrows, 0.85, 1.03, 0.1, "0.1 px", labelpos="E")
axes.set(xlim=(0, size[0]), ylim=(size[1], 0), aspect="equal", xlabel="x, px", ylabel="y, px")
axes.set_title(f"residuals, RMS {calibration.rms:.3f} px", loc="left")
figure.savefig(folder / "residuals.png", dpi=100)

# %% How far off the camera may be on the bed that the corrected view shows.
chart = calibration.bed_error_map()
figure, axes = plt.subplots(figsize=(8, 6))
levels = [0.05, 0.1, 0.2, 0.5, 1, 2, 5]
colours = axes.contourf(chart.x, chart.y, chart.error, levels, norm=LogNorm(), extend="both")
figure.colorbar(colours, label="bound on the error (95 %), mm")
axes.plot(*world.T, "w.", markersize=2)
axes.set(aspect="equal", xlabel="X, mm", ylabel="Y, mm", title="error on the bed")
axes.invert_yaxis()
figure.savefig(folder / "bed_error.png", dpi=100)
