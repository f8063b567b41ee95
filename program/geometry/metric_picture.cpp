#include "geometry/metric_picture.h"

#include <cmath>

#include "geometry/conversions.h"

namespace fisheye_calibration::program {

MetricPicture metricPicture(const FishEyeCalibrationParam& param, const Size& size) {
  const cv::Point2f centre = centreOf(size);
  return {
      .size = size,
      .pixel = std::abs(static_cast<double>(param.Pixel)),
      .bedAt = [=](cv::Point2d position) { return bedPositionAt(param, position, centre); },
      .positionOf = [=](cv::Point2d bed) { return secondCorrectedPosition(param, bed, centre); }};
}

MetricPicture metricPicture(const DualFishEyeCalibrationParam& dual) {
  const cv::Point2d offset(0, pictureRowOffset(dual));
  return {.size = {dual.StdImageWidth, dual.StdImageHeight},
          .pixel = std::abs(static_cast<double>(dual.Pixel)),
          .bedAt = [=](cv::Point2d position) { return bedPositionAt(dual, position - offset); },
          .positionOf =
              [=](cv::Point2d bed) { return cv::Point2d(stitchedPosition(dual, bed)) + offset; }};
}

}  // namespace fisheye_calibration::program
