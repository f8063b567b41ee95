#include "fisheye_calibration.h"
#include "single/record.h"

namespace fisheye_calibration::single {
namespace {

// What the host gets: 32-bit floats.
void store(const cv::Point2d& point, float& x, float& y) {
  x = static_cast<float>(point.x);
  y = static_cast<float>(point.y);
}

}  // namespace
}  // namespace fisheye_calibration::single

using namespace fisheye_calibration;
using namespace fisheye_calibration::single;

bool RawImageToCorrectedImagePoint(float, float, FishEyeCalibrationParam, float&, float&) {
  return true;
}

bool WorldToRawImagePoint(float Xw, float Yw, float Zw, FishEyeCalibrationParam param, float& x,
                          float& y) {
  store(lens::projectPoint(rawCamera(param), lens::rotationFromVector(rotationVector(param)),
                           translation(param), {Xw, Yw, Zw}),
        x, y);
  return true;
}

bool WorldToCorrectedImagePoint(float Xw, float Yw, float Zw, FishEyeCalibrationParam param,
                                float cx, float cy, float& x, float& y) {
  store(lens::projectPinhole(correctedCamera(param, cx, cy),
                             lens::rotationFromVector(rotationVector(param)), translation(param),
                             {Xw, Yw, Zw}),
        x, y);
  return true;
}

// The second-corrected image is an axis-aligned grid of the work plane, so neither the homography
// nor the shift is needed here, and 32-bit floats carry the whole computation.
bool WorldToSecondCorrectedImagePoint(float Xw, float Yw, float, FishEyeCalibrationParam param,
                                      float cx, float cy, float& x, float& y) {
  x = (Xw - param.DatumPtXw) / param.Pixel + cx;
  y = (Yw - param.DatumPtYw) / param.Pixel + cy;
  return true;
}

bool RawImageToWorldPoint(float, float, FishEyeCalibrationParam, float&, float&, float&) {
  return true;
}

bool CorrectedImageToWorldPoint(float x, float y, float cx, float cy, FishEyeCalibrationParam param,
                                float& Xw, float& Yw, float&) {
  Xw = (x - cx) * param.Pixel + param.DatumPtXw;
  Yw = (y - cy) * param.Pixel + param.DatumPtYw;
  return true;
}
