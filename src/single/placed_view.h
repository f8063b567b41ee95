// A second correction made to measure: the corrected picture shows a rectangle of the bed that the
// caller chooses, rather than whatever lies around the optical axis.
#pragma once

#include <opencv2/core/types.hpp>

#include "fisheye_calibration.h"

namespace fisheye_calibration::single {

// The datum point below, before it is rounded to 32 bits.
cv::Point2d viewCentre(const cv::Point2d& corner, float pixel, ImageLong width, ImageLong height);

// Whether a value is finite in 32 bits, too.
bool isFloat(double value);

// Stores p1...p9, Pixel, the datum point and the shift such that the second-corrected image of
// width x height pixels shows the bed from `corner`, the outer corner of its first pixel (world
// units), with `pixel` world units per pixel. The intrinsics and the pose must already be in
// `param`. With (cx, cy) the image's centre:
//
//   DatumPt = corner + (width/2 + 1/2, height/2 + 1/2) pixel
//   G = K [r1 r2 T]                     the bed's homography (Zhang), K around the centre that the
//                                       rendered image has (compatibility 33)
//   A = [1/pixel 0 cx - DatumPtXw/pixel;  0 1/pixel cy - DatumPtYw/pixel;  0 0 1]
//   H = A G^-1, scaled to p9 = 1,  ImageD = 0
//
// Returns false, with `param` unchanged, if the camera sees the bed edge-on, if p9 would be 0, if
// an entry would not be a finite number or if the datum point is too large for 32 bits.
bool placeSecondCorrection(const cv::Point2d& corner, float pixel, ImageLong width,
                           ImageLong height, FishEyeCalibrationParam& param);

}  // namespace fisheye_calibration::single
