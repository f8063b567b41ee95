// What is told before and after a stitch, on two known cameras over one bed.
#include "checks/stitch_checks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "drawing/seam_overlay.h"
#include "geometry/stitch_agreement.h"
#include "program/support/overhead_pair.h"
#include "reports/agreement_report.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;

StitchCamera stitchCamera(double Xw) {
  StitchCamera camera;
  camera.cameraName = "c.ini";
  camera.pointsName = "p.csv";
  camera.frame = blankBuffer({240, 180}, 8);
  camera.param = recordOver(Xw);
  camera.points = exactPoints(cameraOver(Xw), kBoard);
  return camera;
}

StitchPair goodPair() { return {stitchCamera(160), stitchCamera(260)}; }

std::vector<FindingKind> kindsOf(const StitchPair& pair) {
  std::vector<FindingKind> kinds;
  for (const Finding& finding : checkStitch(pair, sharedPoints(pair))) {
    kinds.push_back(finding.kind);
  }
  return kinds;
}

TEST(StitchChecks, AGoodPairRaisesNothing) { EXPECT_THAT(kindsOf(goodPair()), ElementsAre()); }

TEST(StitchChecks, ThreeSharedPointsAreTooFew) {
  StitchPair pair = goodPair();
  pair.right.points.resize(3);
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::kFewSharedPoints));
}

TEST(StitchChecks, SharedPointsInOneRowAreCollinear) {
  StitchPair pair = goodPair();
  pair.right.points.resize(14);  // the first row
  const auto findings = checkStitch(pair, sharedPoints(pair));
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].kind, FindingKind::kCollinearPoints);
  EXPECT_EQ(findings[0].severity, Severity::kImpossible);
}

TEST(StitchChecks, PointsInOneSpotCoverLittleOfTheOverlap) {
  StitchPair pair = goodPair();
  const auto keep = [](const CalibrationPoint& p) {
    return (p.Xw == 200 || p.Xw == 250) && (p.Yw == 100 || p.Yw == 150);
  };
  std::erase_if(pair.right.points, [&](const CalibrationPoint& p) { return !keep(p); });
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::kSharedCoverage));
}

TEST(StitchChecks, WorldCoordinatesBelowZeroAreTold) {
  StitchPair pair = goodPair();
  pair.left.points[0].Xw = pair.right.points[0].Xw = -1;
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::kWorldRange, FindingKind::kWorldRange));
}

TEST(StitchChecks, DifferentBitCountsCannotBeStitched) {
  StitchPair pair = goodPair();
  pair.right.frame = blankBuffer({240, 180}, 24);
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::kBitCounts));
}

TEST(StitchChecks, SwappedCamerasAreTold) {
  EXPECT_THAT(kindsOf({stitchCamera(260), stitchCamera(160)}),
              ElementsAre(FindingKind::kCameraOrder));
}

TEST(StitchChecks, IdsThatTheLibrarySkipsAreTold) {
  StitchPair pair = goodPair();
  pair.left.points[83].PointId = pair.right.points[83].PointId = 169;  // the lists have 168
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::kUnusedIds));
}

TEST(StitchAgreement, ExactCamerasAgree) {
  // Canvas as high as the left view: its datum in the middle of 480 x 360.
  const DualFishEyeCalibrationParam dual{2, 532, 360, 240, 180, 160, 130};
  const auto agreement = agreementAt(goodPair(), sharedPoints(goodPair()), dual);
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
  StitchPair pair = goodPair();
  pair.right.param.ImageDx = 3;  // renders everything 3 px too far right
  const DualFishEyeCalibrationParam dual{2, 532, 360, 240, 180, 160, 130};
  const auto agreement = agreementAt(pair, sharedPoints(pair), dual);
  ASSERT_EQ(agreement.size(), 84u);
  for (const Agreement& at : agreement) {
    EXPECT_NEAR(at.apart, 3, 0.05);
    EXPECT_NEAR(at.right.x - at.left.x, 3, 0.05);
    EXPECT_NEAR(at.rightError, 3, 0.05);
    EXPECT_LT(at.leftError, 0.05);
  }
}

TEST(StitchAgreement, AWrongMeasurementIsNamedFirst) {
  StitchPair pair = goodPair();
  pair.left.points[20].ImagePtX += 2;
  const DualFishEyeCalibrationParam dual{2, 532, 360, 240, 180, 160, 130};
  const auto agreement = agreementAt(pair, sharedPoints(pair), dual);
  EXPECT_NEAR(agreement.at(20).leftRaw, 2, 0.01);
  EXPECT_LT(agreement.at(20).rightRaw, 0.01);
  EXPECT_GT(agreement.at(20).apart, 1);
  const std::string text = describeAgreement(agreement, 2);
  EXPECT_LT(text.find("RMS"), text.find("point 21"));
  EXPECT_EQ(text.find("point "), text.find("point 21"));
}

TEST(SeamRows, OverlapReachesFromTheRightViewToTheLeftOnesBorder) {
  cv::Mat left(2, 10, CV_8UC1, cv::Scalar(0));
  left.at<unsigned char>(0, 9) = 255;
  left.row(1).setTo(255);
  const cv::Mat right(2, 10, CV_8UC1, cv::Scalar(0));
  const auto rows = seamRows(left, right, {1, 0, -4, 0, 1, 0, 0, 0, 1});  // starts at x = 4
  ASSERT_TRUE(rows.at(0));
  EXPECT_EQ(rows[0]->begin, 4);
  EXPECT_EQ(rows[0]->end, 8);
  EXPECT_FALSE(rows.at(1));
}

}  // namespace
}  // namespace fisheye_calibration::program
