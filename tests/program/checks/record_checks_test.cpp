#include "checks/record_checks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "program/support/sample_record.h"

namespace fisheye_calibration::program {
namespace {

bool impossible(const FishEyeCalibrationParam& param, FindingKind kind) {
  const std::vector<Finding> findings = checkRecord(param);
  return std::any_of(findings.begin(), findings.end(), [&](const Finding& finding) {
    return finding.kind == kind && finding.severity == Severity::kImpossible;
  });
}

TEST(RecordChecks, AGoodRecordRaisesNothing) {
  for (const Finding& finding : checkRecord(sampleRecord())) {
    ADD_FAILURE() << finding.text;
  }
}

TEST(RecordChecks, AnEmptyRecordIsReportedOnce) {
  const std::vector<Finding> findings = checkRecord(FishEyeCalibrationParam{});
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].kind, FindingKind::kEmpty);
}

TEST(RecordChecks, FieldsThatAreNotFiniteAreNamed) {
  FishEyeCalibrationParam param = sampleRecord();
  param.Ty = std::numeric_limits<float>::quiet_NaN();
  param.p4 = std::numeric_limits<double>::infinity();
  const std::vector<Finding> findings = checkRecord(param);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].text, "Ty, p4 are not a finite number");
}

TEST(RecordChecks, FocalLengthsMustBePositive) {
  FishEyeCalibrationParam param = sampleRecord();
  param.fy = 0;
  EXPECT_TRUE(impossible(param, FindingKind::kFocalLength));
}

TEST(RecordChecks, APrincipalPointOfZeroOrBelowIsReported) {
  FishEyeCalibrationParam param = sampleRecord();
  param.v0 = -3;
  EXPECT_TRUE(impossible(param, FindingKind::kPrincipalPoint));
  param.u0 = param.v0 = 0;
  EXPECT_TRUE(impossible(param, FindingKind::kPrincipalPoint));
}

TEST(RecordChecks, AMatrixThatIsNotARotationIsReported) {
  FishEyeCalibrationParam param = sampleRecord();
  param.R2 = 0.01f;
  EXPECT_TRUE(impossible(param, FindingKind::kRotation));
}

TEST(RecordChecks, AMirrorIsNotARotation) {
  FishEyeCalibrationParam param = sampleRecord();
  param.R9 = -1;
  EXPECT_TRUE(impossible(param, FindingKind::kRotation));
}

TEST(RecordChecks, ARotationThatDisagreesWithItsVectorIsReported) {
  FishEyeCalibrationParam param = sampleRecord();
  param.Rz = 0.01f;
  EXPECT_TRUE(impossible(param, FindingKind::kRotation));
}

TEST(RecordChecks, ACameraInTheWorldOriginIsReported) {
  FishEyeCalibrationParam param = sampleRecord();
  param.Tx = param.Ty = param.Tz = 0;
  EXPECT_TRUE(impossible(param, FindingKind::kPose));
}

TEST(RecordChecks, ASingularHomographyIsReported) {
  FishEyeCalibrationParam param = sampleRecord();
  param.p4 = param.p1;
  param.p5 = param.p2;
  EXPECT_TRUE(impossible(param, FindingKind::kHomography));
}

TEST(RecordChecks, APixelSizeOfZeroIsReported) {
  FishEyeCalibrationParam param = sampleRecord();
  param.Pixel = 0;
  EXPECT_TRUE(impossible(param, FindingKind::kPixelSize));
}

}  // namespace
}  // namespace fisheye_calibration::program
