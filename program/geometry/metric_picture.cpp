#include "geometry/metric_picture.h"

#include <cmath>

#include "files/dual_file.h"

namespace fisheye_calibration::program {

MetricPicture metricPicture(const FishEyeCalibrationParam& param, const cv::Size& size) {
  const float cx = static_cast<float>(size.width * 0.5);
  const float cy = static_cast<float>(size.height * 0.5);
  MetricPicture picture{size, std::abs(static_cast<double>(param.Pixel)), {}, {}};
  picture.bedAt = [=](cv::Point2d place) {
    float Xw = 0;
    float Yw = 0;
    float unused = 0;
    CorrectedImageToWorldPoint(static_cast<float>(place.x), static_cast<float>(place.y), cx, cy,
                               param, Xw, Yw, unused);
    return cv::Point2d(static_cast<double>(Xw), static_cast<double>(Yw));
  };
  picture.placeOf = [=](cv::Point2d bed) {
    float x = 0;
    float y = 0;
    WorldToSecondCorrectedImagePoint(static_cast<float>(bed.x), static_cast<float>(bed.y), 0, param,
                                     cx, cy, x, y);
    return cv::Point2d(static_cast<double>(x), static_cast<double>(y));
  };
  return picture;
}

MetricPicture metricPicture(const DualFishEyeCalibrationParam& dual) {
  const double offset = pictureRowOffset(dual);  // picture row = v + offset
  MetricPicture picture{
      {dual.StdImageWidth, dual.StdImageHeight}, std::abs(static_cast<double>(dual.Pixel)), {}, {}};
  picture.bedAt = [=](cv::Point2d place) {
    float Xw = 0;
    float Yw = 0;
    float unused = 0;
    // The result says nothing: it is false whatever comes out.
    DualCam_CorrectedImageToWorldPoint(static_cast<float>(place.x),
                                       static_cast<float>(place.y - offset), dual, Xw, Yw, unused);
    return cv::Point2d(static_cast<double>(Xw), static_cast<double>(Yw));
  };
  picture.placeOf = [=](cv::Point2d bed) {
    float u = 0;
    float v = 0;
    DualCam_WorldToSecondCorrectedImagePoint(static_cast<float>(bed.x), static_cast<float>(bed.y),
                                             0, dual, u, v);
    return cv::Point2d(static_cast<double>(u), static_cast<double>(v) + offset);
  };
  return picture;
}

}  // namespace fisheye_calibration::program
