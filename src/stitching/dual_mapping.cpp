#include "fisheye_calibration.h"

// The stitched image is a grid of the work plane, so 32-bit floats carry the whole computation.

bool DualCam_WorldToSecondCorrectedImagePoint(float Xw, float Yw, float,
                                              DualFishEyeCalibrationParam dual, float& u,
                                              float& v) {
  u = (Xw - dual.DatumPtXw) / dual.Pixel + static_cast<float>(dual.DatumImagePtX);
  v = (Yw - dual.DatumPtYw) / dual.Pixel + static_cast<float>(dual.DatumImagePtY);
  return true;
}

// Hosts know this one by its false.
bool DualCam_CorrectedImageToWorldPoint(float u, float v, DualFishEyeCalibrationParam dual,
                                        float& Xw, float& Yw, float&) {
  Xw = (u - static_cast<float>(dual.DatumImagePtX)) * dual.Pixel + dual.DatumPtXw;
  Yw = (v - static_cast<float>(dual.DatumImagePtY)) * dual.Pixel + dual.DatumPtYw;
  return false;
}
