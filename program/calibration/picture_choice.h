// What the corrected picture shows, and in what size.
#pragma once

#include <functional>
#include <opencv2/core/types.hpp>
#include <optional>

#include "base/size.h"
#include "calibration/seen_bed.h"
#include "geometry/calibration_result.h"

namespace fisheye_calibration::program {

// At most one of `size` and `bed`; neither leaves the choice to withChosenPicture().
struct PictureWish {
  std::optional<Size> size;       // around the optical axis
  std::optional<cv::Rect2d> bed;  // the rectangle of the bed to show, world units
  double resolution = 0;          // of `bed`, world units per pixel; 0: chosen
};

// The result of `solve`, which calibrates for a corrected picture of the given size around the
// optical axis, with the picture that is wished for. Without a wish, the size is chosen such that
// the picture shows the whole target and, up to twice the raw picture's columns and rows, what is
// seen with useful sharpness. If the axis points too far elsewhere for that, the picture is laid
// over that part of the bed instead.
//
// Fails as bad input if the wished rectangle would need too large a picture. Where the camera sees
// the bed edge-on, the result has no homography.
CalibrationResult withChosenPicture(const PictureWish& wish, const Size& image,
                                    const std::function<CalibrationResult(const Size&)>& solve);

// Whether the corrected picture shows the whole target.
bool showsTarget(const CalibrationResult& result);

// World units per pixel for a picture of the rectangle: the largest value not above `pixel`, of six
// decimals as parameter files keep them, with which width and height are whole numbers of pixels.
// If that is too fine, the same for the width alone, if there is one.
double chosenResolution(const cv::Rect2d& bed, double pixel);

// The size of a picture of the rectangle. A fraction of a pixel counts as a whole one.
Size sizeOfArea(const cv::Rect2d& bed, double resolution);

}  // namespace fisheye_calibration::program
