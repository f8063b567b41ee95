#include "reports/progress_bar.h"

#include <gtest/gtest.h>

#include <sstream>

namespace fisheye_calibration::program {
namespace {

TEST(ProgressBar, ShowsShareAndRate) {
  EXPECT_EQ(progressText(5, 10, 2), "[##########----------] 5/10  2.5 frames/s");
  EXPECT_EQ(progressText(0, 3, 0), "[--------------------] 0/3");
}

TEST(ProgressBar, ShowsTheNumberWhereTheTotalIsNotKnown) {
  EXPECT_EQ(progressText(12, 6), "12 frames  2 frames/s");
  EXPECT_EQ(progressText(0, 0), "0 frames");
}

TEST(ProgressBar, IsDrawnOnlyIfSomebodyWatches) {
  std::ostringstream watched;
  std::ostringstream file;
  {
    ProgressBar seen(watched, true);
    ProgressBar unseen(file, false);
    seen.show("1/2");
    unseen.show("1/2");
  }
  EXPECT_EQ(watched.str(), "\r1/2\n");
  EXPECT_EQ(file.str(), "");
}

}  // namespace
}  // namespace fisheye_calibration::program
