#include "base/record_fields.h"

#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

TEST(RecordFields, FollowTheParameterFileAndTheRecord) {
  const auto fields = recordFields();
  ASSERT_EQ(fields.size(), 40u);
  const FishEyeCalibrationParam param = {.u0 = 1, .R9 = 2, .p9 = 3, .ImageDy = 4};
  EXPECT_STREQ(fields[0].name, "u0");
  EXPECT_EQ(fields[0].value(param), 1);
  EXPECT_STREQ(fields[19].name, "R9");
  EXPECT_EQ(fields[19].value(param), 2);
  EXPECT_STREQ(fields[34].name, "p9");
  EXPECT_EQ(fields[34].value(param), 3);
  EXPECT_STREQ(fields[39].name, "ImageDy");
  EXPECT_EQ(fields[39].value(param), 4);
}

}  // namespace
}  // namespace fisheye_calibration::program
