#include "geometry/conversions.h"

namespace fisheye_calibration::program {

using Param = FishEyeCalibrationParam;
using DualParam = DualFishEyeCalibrationParam;

cv::Point2f centreOf(const Size& view) {
  return {static_cast<float>(view.width * 0.5), static_cast<float>(view.height * 0.5)};
}

bool isInPicture(cv::Point2d position, const Size& picture) {
  return position.x >= -0.5 && position.y >= -0.5 && position.x <= picture.width - 0.5 &&
         position.y <= picture.height - 0.5;
}

cv::Point2f rawPosition(const Param& param, cv::Point2f bed, float Zw) {
  cv::Point2f position;
  WorldToRawImagePoint(bed.x, bed.y, Zw, param, position.x, position.y);
  return position;
}

cv::Point2f correctedPosition(const Param& param, cv::Point2f bed, cv::Point2f centre, float Zw) {
  cv::Point2f position;
  WorldToCorrectedImagePoint(bed.x, bed.y, Zw, param, centre.x, centre.y, position.x, position.y);
  return position;
}

cv::Point2f secondCorrectedPosition(const Param& param, cv::Point2f bed, cv::Point2f centre,
                                    float Zw) {
  cv::Point2f position;
  WorldToSecondCorrectedImagePoint(bed.x, bed.y, Zw, param, centre.x, centre.y, position.x,
                                   position.y);
  return position;
}

cv::Point2f bedPositionAt(const Param& param, cv::Point2f secondCorrected, cv::Point2f centre) {
  cv::Point2f bed;
  float Zw = 0;
  CorrectedImageToWorldPoint(secondCorrected.x, secondCorrected.y, centre.x, centre.y, param, bed.x,
                             bed.y, Zw);
  return bed;
}

cv::Point2f stitchedPosition(const DualParam& dual, cv::Point2f bed, float Zw) {
  cv::Point2f position;
  DualCam_WorldToSecondCorrectedImagePoint(bed.x, bed.y, Zw, dual, position.x, position.y);
  return position;
}

cv::Point2f bedPositionAt(const DualParam& dual, cv::Point2f stitched) {
  cv::Point2f bed;
  float Zw = 0;
  // Returns false although Xw and Yw are valid.
  static_cast<void>(
      DualCam_CorrectedImageToWorldPoint(stitched.x, stitched.y, dual, bed.x, bed.y, Zw));
  return bed;
}

int pictureRowOffset(const DualParam& dual) { return dual.StdImageHeight - 2 * dual.DatumImagePtY; }

}  // namespace fisheye_calibration::program
