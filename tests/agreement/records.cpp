#include <cstddef>
#include <cstring>
#include <string>

#include "agreement/computations.h"
#include "support/synthetic_rig.h"

namespace agreement {

FishEyeCalibrationParam sampleCamera() {
  support::Random random(5);
  FishEyeCalibrationParam p{};
  const auto number = [&random](double size) { return random.uniform(-size, size); };
  const auto number32 = [&number](double size) { return static_cast<float>(number(size)); };
  for (float* field : {&p.u0, &p.v0, &p.fx, &p.fy, &p.skewness}) *field = number32(3000);
  for (double* field : {&p.k0, &p.k1, &p.k2, &p.k3, &p.k4, &p.k5}) *field = number(0.05);
  for (float* field : {&p.R1, &p.R2, &p.R3, &p.R4, &p.R5, &p.R6, &p.R7, &p.R8, &p.R9}) {
    *field = number32(1);
  }
  for (float* field : {&p.Rx, &p.Ry, &p.Rz}) *field = number32(3);
  for (float* field : {&p.Tx, &p.Ty, &p.Tz}) *field = number32(1e4);
  for (double* field : {&p.p1, &p.p2, &p.p3, &p.p4, &p.p5, &p.p6}) *field = number(5e3);
  for (double* field : {&p.p7, &p.p8}) *field = number(1e-4);
  p.p9 = 1;
  for (float* field : {&p.Pixel, &p.DatumPtXw, &p.DatumPtYw, &p.ImageDx, &p.ImageDy}) {
    *field = number32(100);
  }
  return p;
}

DualFishEyeCalibrationParam sampleDual() {
  DualFishEyeCalibrationParam dual{};
  dual.Pixel = 0.123456789F;
  dual.StdImageWidth = 2147483644;
  dual.StdImageHeight = 3000;
  dual.DatumImagePtX = -2147483647;
  dual.DatumImagePtY = 17;
  dual.DatumPtXw = -1234.5678F;
  dual.DatumPtYw = 9.99999F;
  return dual;
}

void addRecord(Results& results, const std::string& name, const FishEyeCalibrationParam& param) {
  const auto* bytes = reinterpret_cast<const char*>(&param);
  const std::size_t pose = offsetof(FishEyeCalibrationParam, k0);
  const std::size_t homography = offsetof(FishEyeCalibrationParam, p1);
  const std::size_t poseEnd = offsetof(FishEyeCalibrationParam, Tz) + sizeof(float);
  const std::size_t end = offsetof(FishEyeCalibrationParam, ImageDy) + sizeof(float);
  std::string fields(bytes, offsetof(FishEyeCalibrationParam, skewness) + sizeof(float));
  fields.append(bytes + pose, poseEnd - pose).append(bytes + homography, end - homography);
  results.addExact(name, fields.data(), fields.size());
}

void addRecord(Results& results, const std::string& name, const DualFishEyeCalibrationParam& dual) {
  results.addExact(name, &dual, sizeof(dual));
}

}  // namespace agreement
