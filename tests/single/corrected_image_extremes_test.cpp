// Records at the limits of the fast computation, byte for byte against the plain pipeline on every
// instruction set.
#include <gtest/gtest.h>

#include <vector>

#include "fisheye_calibration.h"
#include "support/instruction_sets.h"
#include "support/plain_correction.h"
#include "support/synthetic_rig.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kWidth = 320;
constexpr int kHeight = 24;

FishEyeCalibrationParam camera() {
  FishEyeCalibrationParam param{};
  param.fx = param.fy = 100;
  param.u0 = kWidth / 2;
  param.v0 = kHeight / 2;
  param.p1 = param.p5 = param.p9 = 1;
  return param;
}

Bytes noise() {
  support::Random random(7);
  Bytes bytes(kWidth * kHeight);
  for (unsigned char& byte : bytes) {
    byte = static_cast<unsigned char>(random.uniform(1, 255));
  }
  return bytes;
}

void expectPlainBytes(const FishEyeCalibrationParam& param) {
  Bytes frame = noise();
  Bytes wantedView(frame.size());
  Bytes wantedMask(frame.size());
  ASSERT_TRUE(plain::singleCamCorrected(frame.data(), kWidth, kHeight, 8, param, wantedView.data(),
                                        kWidth, kHeight, wantedMask.data()));
  support::onEveryInstructionSet([&] {
    Bytes view(frame.size());
    Bytes mask(frame.size());
    ASSERT_TRUE(SingleCamCorrected(frame.data(), kWidth, kHeight, 8, param, view.data(), kWidth,
                                   kHeight, mask.data()));
    EXPECT_EQ(view, wantedView);
    EXPECT_EQ(mask, wantedMask);
  });
}

TEST(CorrectedImageExtremes, ShiftsThatCancelLeaveNoiseInTheSums) {
  for (const float shift : {1e10F, 1e12F, 1e13F, 1e14F, 1e15F}) {
    SCOPED_TRACE(shift);
    FishEyeCalibrationParam param = camera();
    param.p1 = param.p5 = 0.7123;
    param.p3 = -static_cast<double>(shift);
    param.ImageDx = shift;
    expectPlainBytes(param);
  }
}

TEST(CorrectedImageExtremes, DenominatorsBeyondDoubles) {
  for (const double p7 : {-1e306, 1e306, -1e300, 1e-300}) {
    SCOPED_TRACE(p7);
    FishEyeCalibrationParam param = camera();
    param.p7 = p7;
    expectPlainBytes(param);
  }
}

TEST(CorrectedImageExtremes, DenominatorPassesZeroWithinTheView) {
  for (const double p7 : {-1.0 / 100, -1.0 / 160.5, 1.0 / 7}) {
    SCOPED_TRACE(p7);
    FishEyeCalibrationParam param = camera();
    param.p7 = p7;
    expectPlainBytes(param);
  }
}

}  // namespace
