// Which part of the bed a camera sees, and how sharply.
#pragma once

#include <opencv2/core/types.hpp>
#include <vector>

#include "base/size.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// Where the bed is seen with less than this share of the camera's best sharpness, the corrected
// picture is visibly blurred.
constexpr double kUsefulSharpness = 1.0 / 3;

// Raw pixels per world unit at a point of the bed, in the direction in which there are fewest: the
// smaller singular value of the derivatives of the projection. 0 where the raw picture does not
// show the point.
double sharpnessAt(const FishEyeCalibrationParam& record, const Size& image, cv::Point2d bed);

// The largest sharpness in the raw picture; 0 if it does not show the bed.
double bestSharpness(const FishEyeCalibrationParam& record, const Size& image);

// The library renders through an intermediate picture without distortion, of the corrected
// picture's own size around the optical axis. Of what lies before the camera, it leaves out what
// that one does. This is how far the points reach in it from the axis along x and y, pixels;
// infinite for points that are not before the camera.
cv::Point2d reachFromAxis(const FishEyeCalibrationParam& record,
                          const std::vector<cv::Point2d>& bed);

// Whether a corrected picture of this size, wherever it is placed, can show the point.
bool canShow(const FishEyeCalibrationParam& record, const Size& corrected, cv::Point2d bed);

// The same for each of many points.
std::vector<bool> shownAmong(const FishEyeCalibrationParam& record, const Size& corrected,
                             const std::vector<cv::Point2d>& bed);

// Shares of an area of the bed, 0 ... 1.
struct SeenShares {
  double unseen = 0;   // not in the raw picture
  double behind = 0;   // of that, behind the camera, where the corrected picture shows nonsense
  double leftOut = 0;  // seen, but beyond what a corrected picture of this size can show
  double blurred = 0;  // shown with less than kUsefulSharpness of the best in the raw picture
  bool nothingShown() const { return unseen + leftOut >= 1; }
};
SeenShares seenShares(const FishEyeCalibrationParam& record, const Size& image,
                      const Size& corrected, const cv::Rect2d& area);

// Points all over the part of the area that the raw picture shows.
std::vector<cv::Point2d> seenPoints(const FishEyeCalibrationParam& record, const Size& image,
                                    const cv::Rect2d& area);

// Points all over the part of the bed that is seen with kUsefulSharpness of the best in the raw
// picture, up to that part's edges.
std::vector<cv::Point2d> usefulPoints(const FishEyeCalibrationParam& record, const Size& image);

}  // namespace fisheye_calibration::program
