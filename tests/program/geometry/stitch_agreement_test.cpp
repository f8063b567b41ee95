#include "geometry/stitch_agreement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "program/support/overhead_pair.h"

namespace fisheye_calibration::program {
namespace {

// The record of a canvas as high as the left view: its datum in the middle of 480 x 360.
constexpr DualFishEyeCalibrationParam kDual = {.Pixel = 2,
                                               .StdImageWidth = 532,
                                               .StdImageHeight = 360,
                                               .DatumImagePtX = 240,
                                               .DatumImagePtY = 180,
                                               .DatumPtXw = 160,
                                               .DatumPtYw = 130};

TEST(StitchAgreement, ExactCamerasAgree) {
  const StitchPair pair = overheadPair();
  const auto agreement = agreementAt(pair, sharedPoints(pair), kDual);
  ASSERT_EQ(agreement.size(), 84u);
  for (const Agreement& at : agreement) {
    EXPECT_LT(at.apart, 0.05);
    EXPECT_LT(at.leftError, 0.05);
    EXPECT_LT(at.rightRaw, 0.01);
  }
  // Point 1 at the bed's origin: (0 - 160) / 2 + 240, (0 - 130) / 2 + 180.
  EXPECT_NEAR(agreement[0].left.x, 160, 0.01);
  EXPECT_NEAR(agreement[0].left.y, 115, 0.01);
}

TEST(StitchAgreement, AShiftedViewIsMeasuredInPixelsAndUnits) {
  StitchPair pair = overheadPair();
  pair.right.param.ImageDx = 3;  // renders everything 3 px too far right
  const auto agreement = agreementAt(pair, sharedPoints(pair), kDual);
  ASSERT_EQ(agreement.size(), 84u);
  for (const Agreement& at : agreement) {
    EXPECT_NEAR(at.apart, 3, 0.05);
    EXPECT_NEAR(at.right.x - at.left.x, 3, 0.05);
    EXPECT_NEAR(at.rightError, 3, 0.05);
    EXPECT_LT(at.leftError, 0.05);
  }
}

TEST(StitchAgreement, ADistanceThatIsNoNumberIsNoAgreement) {
  std::vector<Agreement> agreement(3);
  agreement[0].apart = 1;
  agreement[1].apart = std::numeric_limits<double>::quiet_NaN();
  agreement[2].apart = 2;
  EXPECT_TRUE(std::isnan(worstApart(agreement)));
  EXPECT_TRUE(std::isnan(rootMeanSquare(agreement, &Agreement::apart)));
}

TEST(StitchAgreement, AWrongMeasurementShowsInItsOwnCamera) {
  StitchPair pair = overheadPair();
  pair.left.points[20].ImagePtX += 2;
  const auto agreement = agreementAt(pair, sharedPoints(pair), kDual);
  EXPECT_NEAR(agreement.at(20).leftRaw, 2, 0.01);
  EXPECT_LT(agreement.at(20).rightRaw, 0.01);
  EXPECT_GT(agreement.at(20).apart, 1);
}

}  // namespace
}  // namespace fisheye_calibration::program
