// The second correction: the homography and shift that turn the corrected image into an
// axis-aligned metric grid of the work plane.
#pragma once

#include <vector>

#include "fisheye_calibration.h"

namespace fisheye_calibration::single {

// Fits p1...p9, Pixel, the datum point and the shift to the points, for a corrected image of the
// given size. The intrinsics and the pose must already be in `param`. Returns false, with `param`
// unchanged, if no homography is found. The first and the last point alone fix the scale, and the
// first one anchors the grid (compatibility 16). In the formulas, C is a point of the corrected
// image, I the same point on the ideal grid and (cx, cy) the image centre:
//   Pixel     = |world distance first to last point| / |C_first - C_last|
//   I         = (W - W_first)/Pixel + C_first, W = (Xw, Yw)
//   H         : C -> I, robustly (RANSAC, 3 pixels)
//   ImageD    = (cx, cy) - H(cx, cy)                 keeps the image centre in place
//   DatumPt   = ((cx, cy) - H(I_first) - ImageD) Pixel + W_first
bool fitSecondCorrection(const std::vector<CalibrationPoint>& points, ImageLong correctedWidth,
                         ImageLong correctedHeight, FishEyeCalibrationParam& param);

}  // namespace fisheye_calibration::single
