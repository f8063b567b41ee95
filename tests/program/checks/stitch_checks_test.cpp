#include "checks/stitch_checks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "program/support/overhead_pair.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;

std::vector<FindingKind> kindsOf(const StitchPair& pair) {
  std::vector<FindingKind> kinds;
  for (const Finding& finding : checkStitch(pair, sharedPoints(pair))) {
    kinds.push_back(finding.kind);
  }
  return kinds;
}

TEST(StitchChecks, AGoodPairRaisesNothing) { EXPECT_THAT(kindsOf(overheadPair()), ElementsAre()); }

TEST(StitchChecks, ThreeSharedPointsAreTooFew) {
  StitchPair pair = overheadPair();
  pair.right.points.resize(3);
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::kFewSharedPoints));
}

TEST(StitchChecks, SharedPointsInOneRowAreCollinear) {
  StitchPair pair = overheadPair();
  pair.right.points.resize(14);  // the first row
  const auto findings = checkStitch(pair, sharedPoints(pair));
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].kind, FindingKind::kCollinearPoints);
  EXPECT_EQ(findings[0].severity, Severity::kImpossible);
}

TEST(StitchChecks, PointsInOneSpotCoverLittleOfTheOverlap) {
  StitchPair pair = overheadPair();
  const auto keep = [](const CalibrationPoint& p) {
    return (p.Xw == 200 || p.Xw == 250) && (p.Yw == 100 || p.Yw == 150);
  };
  std::erase_if(pair.right.points, [&](const CalibrationPoint& p) { return !keep(p); });
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::kSharedCoverage));
}

TEST(StitchChecks, WorldCoordinatesBelowZeroAreReported) {
  StitchPair pair = overheadPair();
  pair.left.points[0].Xw = pair.right.points[0].Xw = -1;
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::kWorldRange, FindingKind::kWorldRange));
}

TEST(StitchChecks, DifferentBitCountsCannotBeStitched) {
  StitchPair pair = overheadPair();
  pair.right.frame = blankBuffer({240, 180}, 24);
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::kBitCounts));
}

TEST(StitchChecks, SwappedCamerasAreReported) {
  EXPECT_THAT(kindsOf({stitchCamera(260), stitchCamera(160)}),
              ElementsAre(FindingKind::kCameraOrder));
}

TEST(StitchChecks, TheSameCameraTwiceIsNotToBeTrusted) {
  const StitchPair pair = {stitchCamera(160), stitchCamera(160)};
  const auto findings = checkStitch(pair, sharedPoints(pair));
  ASSERT_FALSE(findings.empty());
  EXPECT_EQ(findings[0].kind, FindingKind::kSameCamera);
  EXPECT_EQ(findings[0].severity, Severity::kUntrusted);
}

TEST(StitchChecks, IdsThatTheLibrarySkipsAreReported) {
  StitchPair pair = overheadPair();
  pair.left.points[83].PointId = pair.right.points[83].PointId = 169;  // the lists have 168 points
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::kUnusedIds));
}

}  // namespace
}  // namespace fisheye_calibration::program
