#include "fisheye_calibration.h"

bool RawImageToCorrectedImagePoint(float, float, FishEyeCalibrationParam, float&, float&) {
  return true;
}

// All arithmetic in 32-bit float.
bool WorldToSecondCorrectedImagePoint(float Xw, float Yw, float, FishEyeCalibrationParam param,
                                      float cx, float cy, float& x, float& y) {
  x = (Xw - param.DatumPtXw) / param.Pixel + cx;
  y = (Yw - param.DatumPtYw) / param.Pixel + cy;
  return true;
}

bool CorrectedImageToWorldPoint(float x, float y, float cx, float cy, FishEyeCalibrationParam param,
                                float& Xw, float& Yw, float&) {
  Xw = (x - cx) * param.Pixel + param.DatumPtXw;
  Yw = (y - cy) * param.Pixel + param.DatumPtYw;
  return true;
}
