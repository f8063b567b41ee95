#include "checks/result_checks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "program/support/sample_record.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;

constexpr Size kImage{960, 720};

// The sample camera looks straight down, so the corrected picture already is the world grid and
// the second correction is the identity.
CalibrationResult goodResult() {
  return {.homographyFound = true,
          .param = sampleRecord(),
          .points = exactPoints({}, {}),
          .rms = 0.3,
          .corrected = kImage};
}

std::vector<Finding> check(const CalibrationResult& result) { return checkResult(result, kImage); }

const Finding* impossible(const std::vector<Finding>& findings, FindingKind kind) {
  const auto found = std::find_if(findings.begin(), findings.end(), [&](const Finding& finding) {
    return finding.kind == kind && finding.severity == Severity::kImpossible;
  });
  return found == findings.end() ? nullptr : &*found;
}

TEST(ResultChecks, AGoodResultIsTrusted) {
  for (const Finding& finding : check(goodResult())) {
    ADD_FAILURE() << finding.text;
  }
}

TEST(ResultChecks, AnErrorOverTwoPixelsIsNotTrusted) {
  CalibrationResult result = goodResult();
  result.rms = 2.01;
  EXPECT_NE(impossible(check(result), FindingKind::kReprojectionError), nullptr);
  result.rms = 1.99;
  EXPECT_EQ(impossible(check(result), FindingKind::kReprojectionError), nullptr);
}

TEST(ResultChecks, AnErrorThatIsNotANumberIsNotTrusted) {
  CalibrationResult result = goodResult();
  result.rms = std::numeric_limits<double>::quiet_NaN();
  EXPECT_NE(impossible(check(result), FindingKind::kReprojectionError), nullptr);
}

TEST(ResultChecks, APrincipalPointOutsideThePictureIsNotTrusted) {
  CalibrationResult result = goodResult();
  result.param.u0 = 961;
  EXPECT_NE(impossible(check(result), FindingKind::kPrincipalPoint), nullptr);
}

TEST(ResultChecks, AFocalLengthOffByMoreThanAFactorOfThreeIsNotTrusted) {
  // max(W, H)/pi = 305.6 px
  CalibrationResult result = goodResult();
  result.param.fx = 920;
  EXPECT_NE(impossible(check(result), FindingKind::kFocalLength), nullptr);
  result.param.fx = result.param.fy = 910;
  EXPECT_EQ(impossible(check(result), FindingKind::kFocalLength), nullptr);
  result.param.fx = result.param.fy = 100;
  EXPECT_NE(impossible(check(result), FindingKind::kFocalLength), nullptr);
}

TEST(ResultChecks, PointsBehindTheCameraAreNamed) {
  CalibrationResult result = goodResult();
  // Half a turn about x puts everything at depth Tz - Z; with Tz < 0 the bed lies behind.
  result.param.Tz = -170;
  const std::vector<Finding> findings = check(result);
  const Finding* finding = impossible(findings, FindingKind::kDepth);
  ASSERT_NE(finding, nullptr);
  EXPECT_EQ(finding->pointIds.size(), result.points.size());
}

TEST(ResultChecks, PointsBeyondTheLensCurvesTurnAreNamed) {
  CalibrationResult result = goodResult();
  result.points.resize(2);
  result.points[0].Xw = 120;  // on the axis
  result.points[0].Yw = 90;
  result.points[1].Xw = 120 + 170 * 1.2f;  // atan 1.2 = 50.2 degrees off it
  result.points[1].Yw = 90;
  result.param.k0 = 0;
  result.param.k1 = -0.5;  // turns at sqrt(2/3) rad = 46.8 degrees
  const std::vector<Finding> findings = check(result);
  const Finding* finding = impossible(findings, FindingKind::kLensCurve);
  ASSERT_NE(finding, nullptr);
  EXPECT_THAT(finding->pointIds, ElementsAre(2));
}

TEST(ResultChecks, AMissingHomographyIsNotTrusted) {
  CalibrationResult result = goodResult();
  result.homographyFound = false;
  EXPECT_NE(impossible(check(result), FindingKind::kHomographyNotFound), nullptr);
}

TEST(ResultChecks, ASecondCorrectionThatMissesTheGridIsNotTrusted) {
  CalibrationResult result = goodResult();
  EXPECT_LT(secondCorrectionError(result).worstPixels, 1e-3);
  result.param.ImageDx = 4;
  EXPECT_NEAR(secondCorrectionError(result).worstPixels, 4, 1e-3);
  EXPECT_NE(impossible(check(result), FindingKind::kSecondCorrection), nullptr);
}

}  // namespace
}  // namespace fisheye_calibration::program
