#include "checks/record_checks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/record_fields.h"
#include "geometry/lens_curve.h"
#include "geometry/record_matrices.h"
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

TEST(RecordChecks, AnEmptyRecordIsToldOnce) {
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

TEST(RecordChecks, APrincipalPointOfZeroOrBelowIsTold) {
  FishEyeCalibrationParam param = sampleRecord();
  param.v0 = -3;
  EXPECT_TRUE(impossible(param, FindingKind::kPrincipalPoint));
  param.u0 = param.v0 = 0;
  EXPECT_TRUE(impossible(param, FindingKind::kPrincipalPoint));
}

TEST(RecordChecks, AMatrixThatIsNoRotationIsTold) {
  FishEyeCalibrationParam param = sampleRecord();
  param.R2 = 0.01f;
  EXPECT_TRUE(impossible(param, FindingKind::kRotation));
}

TEST(RecordChecks, AMirrorIsNoRotation) {
  FishEyeCalibrationParam param = sampleRecord();
  param.R9 = -1;
  EXPECT_TRUE(impossible(param, FindingKind::kRotation));
}

TEST(RecordChecks, ARotationThatDisagreesWithItsVectorIsTold) {
  FishEyeCalibrationParam param = sampleRecord();
  param.Rz = 0.01f;
  EXPECT_TRUE(impossible(param, FindingKind::kRotation));
}

TEST(RecordChecks, ACameraInTheWorldOriginIsTold) {
  FishEyeCalibrationParam param = sampleRecord();
  param.Tx = param.Ty = param.Tz = 0;
  EXPECT_TRUE(impossible(param, FindingKind::kPose));
}

TEST(RecordChecks, ASingularHomographyIsTold) {
  FishEyeCalibrationParam param = sampleRecord();
  param.p4 = param.p1;
  param.p5 = param.p2;
  EXPECT_TRUE(impossible(param, FindingKind::kHomography));
}

TEST(RecordChecks, APixelSizeOfZeroIsTold) {
  FishEyeCalibrationParam param = sampleRecord();
  param.Pixel = 0;
  EXPECT_TRUE(impossible(param, FindingKind::kPixelSize));
}

TEST(LensCurve, TurnsWhereItsSlopeVanishes) {
  // 1 - theta^2 = 0 with k0 = 0, k1 = -1/3; 1 - 2 theta = 0 with k0 = -1, k1 = 0.
  EXPECT_NEAR(turningAngle(0, -1.0 / 3).value(), 1, 1e-12);
  EXPECT_NEAR(turningAngle(-1, 0).value(), 0.5, 1e-12);
}

TEST(LensCurve, RisingCurvesDoNotTurn) {
  EXPECT_FALSE(turningAngle(0, 0).has_value());
  EXPECT_FALSE(turningAngle(0.1, 0.2).has_value());
  EXPECT_FALSE(turningAngle(0.5, 0).has_value());
  EXPECT_FALSE(turningAngle(0, -0.01).has_value());  // turns at 5.8 rad, out of view
}

TEST(RecordFields, FollowTheParameterFileAndTheRecord) {
  const auto fields = recordFields();
  ASSERT_EQ(fields.size(), 40u);
  FishEyeCalibrationParam param{};
  param.u0 = 1;
  param.R9 = 2;
  param.p9 = 3;
  param.ImageDy = 4;
  EXPECT_STREQ(fields[0].name, "u0");
  EXPECT_EQ(fields[0].value(param), 1);
  EXPECT_STREQ(fields[19].name, "R9");
  EXPECT_EQ(fields[19].value(param), 2);
  EXPECT_STREQ(fields[34].name, "p9");
  EXPECT_EQ(fields[34].value(param), 3);
  EXPECT_STREQ(fields[39].name, "ImageDy");
  EXPECT_EQ(fields[39].value(param), 4);
}

TEST(RecordFields, ARotationVectorOfAQuarterTurnAboutZ) {
  FishEyeCalibrationParam param{};
  param.Rz = 1.57079633f;
  const Matrix3 R = rotationOfVector(param);
  const Matrix3 expected = {0, -1, 0, 1, 0, 0, 0, 0, 1};
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_NEAR(R[i], expected[i], 1e-7) << i;
  }
}

}  // namespace
}  // namespace fisheye_calibration::program
