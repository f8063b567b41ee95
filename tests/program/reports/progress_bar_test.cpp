#include "reports/progress_bar.h"

#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

TEST(ProgressBar, ShowsShareAndRate) {
  EXPECT_EQ(progressText(5, 10, 2), "[##########----------] 5/10  2.5 frames/s");
  EXPECT_EQ(progressText(0, 3, 0), "[--------------------] 0/3");
}

}  // namespace
}  // namespace fisheye_calibration::program
