#include "checks/input_checks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr Size kImage{960, 720};

std::vector<CalibrationPoint> goodPoints() { return exactPoints({}, {}); }

const Finding* find(const std::vector<Finding>& findings, FindingKind kind) {
  const auto found = std::find_if(findings.begin(), findings.end(),
                                  [&](const Finding& finding) { return finding.kind == kind; });
  return found == findings.end() ? nullptr : &*found;
}

std::vector<int> idsOf(const std::vector<CalibrationPoint>& points, FindingKind kind) {
  std::vector<Finding> findings = checkInput(points, kImage);
  const std::vector<Finding> ofReach = checkReach(points, kImage);
  findings.insert(findings.end(), ofReach.begin(), ofReach.end());
  const Finding* finding = find(findings, kind);
  return finding ? finding->pointIds : std::vector<int>{};
}

TEST(InputChecks, AGoodTargetRaisesNothing) {
  for (const Finding& finding : checkInput(goodPoints(), kImage)) {
    ADD_FAILURE() << finding.text;
  }
  EXPECT_TRUE(checkReach(goodPoints(), kImage).empty());
}

TEST(InputChecks, EightPointsAreTooFewAndNineAreNot) {
  std::vector<CalibrationPoint> points = goodPoints();
  points.resize(9);
  EXPECT_EQ(find(checkInput(points, kImage), FindingKind::kTooFewPoints), nullptr);
  points.resize(8);
  const std::vector<Finding> findings = checkInput(points, kImage);
  const Finding* finding = find(findings, FindingKind::kTooFewPoints);
  ASSERT_NE(finding, nullptr);
  EXPECT_EQ(finding->severity, Severity::kImpossible);
  EXPECT_EQ(finding->text, "only 8 points, at least 9 are needed");
}

TEST(InputChecks, DuplicateIdsAreNamed) {
  std::vector<CalibrationPoint> points = goodPoints();
  points[5].PointId = 3;
  points[8].PointId = 20;
  EXPECT_THAT(idsOf(points, FindingKind::kDuplicateIds), ElementsAre(3, 20));
}

TEST(InputChecks, PointsOutsideThePictureAreNamed) {
  std::vector<CalibrationPoint> points = goodPoints();
  points[0].ImagePtX = -0.6f;
  points[1].ImagePtX = -0.4f;
  points[2].ImagePtY = 719.6f;
  points[3].ImagePtX = 959.4f;
  EXPECT_THAT(idsOf(points, FindingKind::kOutsideImage), ElementsAre(1, 3));
}

TEST(InputChecks, PointsBeyondHalfTheLongerSideAreNamed) {
  // The centre is (479.5, 359.5) and the reach 480 px.
  std::vector<CalibrationPoint> points = goodPoints();
  points[0].ImagePtX = 479.5f - 480.1f;
  points[0].ImagePtY = 359.5f;
  points[1].ImagePtX = 479.5f;
  points[1].ImagePtY = 359.5f + 479.9f;
  EXPECT_THAT(idsOf(points, FindingKind::kBeyondReach), ElementsAre(1));
  EXPECT_THAT(idsOf(points, FindingKind::kNearReach), ElementsAre(2));
}

TEST(InputChecks, PointsWithin95PercentOfTheReachRaiseNothing) {
  std::vector<CalibrationPoint> points = goodPoints();
  points[0].ImagePtX = 479.5f - 455.0f;
  points[0].ImagePtY = 359.5f;
  EXPECT_THAT(idsOf(points, FindingKind::kNearReach), IsEmpty());
}

TEST(InputChecks, PointsOnOneLineAreReported) {
  std::vector<CalibrationPoint> points = goodPoints();
  for (CalibrationPoint& point : points) {
    point.Yw = 2 * point.Xw + 10;
  }
  EXPECT_NE(find(checkInput(points, kImage), FindingKind::kCollinearPoints), nullptr);
}

TEST(InputChecks, TheOnlyPointOffALineIsNamed) {
  std::vector<CalibrationPoint> points = goodPoints();
  for (std::size_t i = 0; i < points.size(); ++i) {
    points[i].Xw = static_cast<float>(10 * i);
  }
  for (CalibrationPoint& point : points) {
    point.Yw = 50;
  }
  points[11].Yw = 300;
  EXPECT_THAT(idsOf(points, FindingKind::kCollinearPoints), ElementsAre(12));
}

TEST(InputChecks, PointsAtTheSamePositionAreNamed) {
  std::vector<CalibrationPoint> points = goodPoints();
  points[6].ImagePtX = points[2].ImagePtX;
  points[6].ImagePtY = points[2].ImagePtY;
  EXPECT_THAT(idsOf(points, FindingKind::kCoincidentPoints), ElementsAre(3, 7));
}

TEST(InputChecks, ACloseFirstAndLastPointAreNamed) {
  std::vector<CalibrationPoint> points = goodPoints();
  std::swap(points[1], points.back());
  EXPECT_THAT(idsOf(points, FindingKind::kScalePair), ElementsAre(1, 2));
}

}  // namespace
}  // namespace fisheye_calibration::program
