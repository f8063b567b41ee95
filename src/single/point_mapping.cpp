#include "fisheye_calibration.h"
#include "single/record.h"

namespace fisheye_calibration::single {
namespace {

// Hosts get 32-bit floats.
void store(const cv::Point2d& point, float& x, float& y) {
  x = static_cast<float>(point.x);
  y = static_cast<float>(point.y);
}

}  // namespace
}  // namespace fisheye_calibration::single

using namespace fisheye_calibration;
using namespace fisheye_calibration::single;

// Does nothing and returns true (compatibility 23).
bool RawImageToCorrectedImagePoint(float, float, FishEyeCalibrationParam, float&, float&) {
  return true;
}

// Rx, Ry, Rz give the rotation; R1...R9 are not read (compatibility 25).
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
// nor the shift is needed. Every step is a 32-bit float (compatibility 27).
bool WorldToSecondCorrectedImagePoint(float Xw, float Yw, float, FishEyeCalibrationParam param,
                                      float cx, float cy, float& x, float& y) {
  x = (Xw - param.DatumPtXw) / param.Pixel + cx;
  y = (Yw - param.DatumPtYw) / param.Pixel + cy;
  return true;
}

// Does nothing and returns true (compatibility 23).
bool RawImageToWorldPoint(float, float, FishEyeCalibrationParam, float&, float&, float&) {
  return true;
}

// Takes pixels of the second-corrected image, despite its name (compatibility 24).
bool CorrectedImageToWorldPoint(float x, float y, float cx, float cy, FishEyeCalibrationParam param,
                                float& Xw, float& Yw, float&) {
  Xw = (x - cx) * param.Pixel + param.DatumPtXw;
  Yw = (y - cy) * param.Pixel + param.DatumPtYw;
  return true;
}
