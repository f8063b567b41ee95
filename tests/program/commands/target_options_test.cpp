#include "commands/target_options.h"

#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

TEST(TargetOptions, AnyOptionOfTheSearchCountsAsGiven) {
  EXPECT_FALSE(TargetOptions().anyGiven());
  for (std::string TargetOptions::*const option :
       {&TargetOptions::chessboard, &TargetOptions::charuco, &TargetOptions::circles,
        &TargetOptions::marker, &TargetOptions::spacing}) {
    TargetOptions options;
    options.*option = "9x6";
    EXPECT_TRUE(options.anyGiven());
  }
  TargetOptions withOverlay;
  withOverlay.overlay = "found.png";
  EXPECT_TRUE(withOverlay.anyGiven());
  TargetOptions staggered;
  staggered.asymmetric = true;
  EXPECT_TRUE(staggered.anyGiven());
}

TEST(TargetOptions, EveryKindIsDescribed) {
  const auto described = [](TargetKind kind) {
    return describeTarget({.kind = kind, .columns = 9, .rows = 6});
  };
  EXPECT_EQ(described(TargetKind::kChessboard), "9 x 6 inner corners");
  EXPECT_EQ(described(TargetKind::kCharuco), "9 x 6 inner corners and markers");
  EXPECT_EQ(described(TargetKind::kCircles), "9 x 6 circles");
  EXPECT_EQ(described(TargetKind::kAsymmetricCircles), "9 x 6 staggered circles");
}

}  // namespace
}  // namespace fisheye_calibration::program
