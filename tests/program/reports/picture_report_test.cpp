#include "reports/picture_report.h"

#include <gtest/gtest.h>

#include "program/support/sample_record.h"

namespace fisheye_calibration::program {
namespace {

TEST(PictureReport, SaysWhatThePictureShows) {
  FishEyeCalibrationParam param = sampleRecord();
  param.Pixel = 0.25f;
  EXPECT_EQ(describePicture(param, {1200, 800}, {-10.5, 0, 300, 200}),
            "Corrected picture: 1200x800, X -10.5 ... 289.5, Y 0 ... 200 mm, 0.25 mm a pixel");
}

TEST(PictureReport, SaysWhatIsMissingOfTheBed) {
  EXPECT_EQ(describeMissing({}), "");
  SeenShares shares;
  shares.unseen = 0.034;
  shares.blurred = 0.004;
  EXPECT_EQ(describeMissing(shares),
            "3 % is not seen, less than 1 % is seen with less than a third of the best sharpness");
  shares = {};
  shares.leftOut = 0.5;
  EXPECT_EQ(describeMissing(shares), "50 % is beyond the corrected picture's reach");
  EXPECT_EQ(describeMissing(shares, " (a finer --resolution shows more)"),
            "50 % is beyond the corrected picture's reach (a finer --resolution shows more)");
}

}  // namespace
}  // namespace fisheye_calibration::program
