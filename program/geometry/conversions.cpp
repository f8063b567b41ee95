#include "geometry/conversions.h"

namespace fisheye_calibration::program {

using Param = FishEyeCalibrationParam;
using DualParam = DualFishEyeCalibrationParam;

cv::Point2f centreOf(const Size& view) {
  return {static_cast<float>(view.width * 0.5), static_cast<float>(view.height * 0.5)};
}

cv::Point2f rawPlace(const Param& param, cv::Point2f bed, float Zw) {
  cv::Point2f place;
  WorldToRawImagePoint(bed.x, bed.y, Zw, param, place.x, place.y);
  return place;
}

cv::Point2f correctedPlace(const Param& param, cv::Point2f bed, cv::Point2f centre, float Zw) {
  cv::Point2f place;
  WorldToCorrectedImagePoint(bed.x, bed.y, Zw, param, centre.x, centre.y, place.x, place.y);
  return place;
}

cv::Point2f secondCorrectedPlace(const Param& param, cv::Point2f bed, cv::Point2f centre,
                                 float Zw) {
  cv::Point2f place;
  WorldToSecondCorrectedImagePoint(bed.x, bed.y, Zw, param, centre.x, centre.y, place.x, place.y);
  return place;
}

cv::Point2f bedPlaceAt(const Param& param, cv::Point2f secondCorrected, cv::Point2f centre) {
  cv::Point2f bed;
  float Zw = 0;
  CorrectedImageToWorldPoint(secondCorrected.x, secondCorrected.y, centre.x, centre.y, param, bed.x,
                             bed.y, Zw);
  return bed;
}

cv::Point2f stitchedPlace(const DualParam& dual, cv::Point2f bed, float Zw) {
  cv::Point2f place;
  DualCam_WorldToSecondCorrectedImagePoint(bed.x, bed.y, Zw, dual, place.x, place.y);
  return place;
}

cv::Point2f bedPlaceAt(const DualParam& dual, cv::Point2f stitched) {
  cv::Point2f bed;
  float Zw = 0;
  // Its result is false although x and y are valid.
  static_cast<void>(
      DualCam_CorrectedImageToWorldPoint(stitched.x, stitched.y, dual, bed.x, bed.y, Zw));
  return bed;
}

int pictureRowOffset(const DualParam& dual) { return dual.StdImageHeight - 2 * dual.DatumImagePtY; }

}  // namespace fisheye_calibration::program
