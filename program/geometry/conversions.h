// The library's conversions of points, with positions as values: world units on the bed (and Zw
// for points off it), pixels in pictures with rows counted from the top.
#pragma once

#include <opencv2/core/types.hpp>

#include "base/size.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// The centre of a corrected view as the conversions expect it: half of its width and height.
cv::Point2f centreOf(const Size& view);

// Whether a position lies within the picture, up to the outer edges of its pixels.
bool isInPicture(cv::Point2d position, const Size& picture);

cv::Point2f rawPosition(const FishEyeCalibrationParam& param, cv::Point2f bed, float Zw = 0);

cv::Point2f correctedPosition(const FishEyeCalibrationParam& param, cv::Point2f bed,
                              cv::Point2f centre, float Zw = 0);

cv::Point2f secondCorrectedPosition(const FishEyeCalibrationParam& param, cv::Point2f bed,
                                    cv::Point2f centre, float Zw = 0);

// The point of the bed at a position in the second-corrected picture.
cv::Point2f bedPositionAt(const FishEyeCalibrationParam& param, cv::Point2f secondCorrected,
                          cv::Point2f centre);

// In a stitched picture, whose rows the library counts differently: see pictureRowOffset().
cv::Point2f stitchedPosition(const DualFishEyeCalibrationParam& dual, cv::Point2f bed,
                             float Zw = 0);
cv::Point2f bedPositionAt(const DualFishEyeCalibrationParam& dual, cv::Point2f stitched);

// What to add to the v of a stitched position to get the picture's row, counted from the top:
// StdImageHeight - 2 DatumImagePtY, which is 0 for a canvas that is not cropped.
int pictureRowOffset(const DualFishEyeCalibrationParam& dual);

}  // namespace fisheye_calibration::program
