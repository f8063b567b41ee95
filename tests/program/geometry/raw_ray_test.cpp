#include "geometry/raw_ray.h"

#include <gtest/gtest.h>

#include "geometry/conversions.h"
#include "program/support/sample_record.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

// The camera of sampleRecord(): 170 above the bed, straight over (120, 90).
SyntheticCamera overheadCamera() {
  return {.R = {1, 0, 0, 0, 1, 0, 0, 0, 1}, .T = {-120, -90, 170}};
}

// The same camera, turned by an angle about its x axis: by 90 degrees it looks along the bed.
FishEyeCalibrationParam turnedRecord(float radians) {
  FishEyeCalibrationParam param = sampleRecord();
  param.Rx = radians;
  return param;
}

TEST(RawRay, BedPointComesBackFromItsPixel) {
  const SyntheticCamera truth = overheadCamera();
  for (const cv::Point2d& bed : {cv::Point2d(120, 90), {210, 30}, {-300, 500}}) {
    const SeenPoint seen = bedPointAt(sampleRecord(), truth.project(bed.x, bed.y));
    ASSERT_EQ(seen.sight, Sight::kBed);
    EXPECT_NEAR(seen.bed.x, bed.x, 1e-6);
    EXPECT_NEAR(seen.bed.y, bed.y, 1e-6);
  }
}

TEST(RawRay, InvertsTheLibrarysProjectionWithTiltAndSkew) {
  FishEyeCalibrationParam param = sampleRecord();
  param.skewness = 0.02f;
  param.Rx = 0.3f;
  param.Ry = -0.2f;
  param.Rz = 1.1f;
  for (const cv::Point2f& bed : {cv::Point2f(120, 90), {0, 0}, {200, -50}}) {
    const SeenPoint seen = bedPointAt(param, rawPosition(param, bed));
    ASSERT_EQ(seen.sight, Sight::kBed);
    EXPECT_NEAR(seen.bed.x, static_cast<double>(bed.x), 2e-3);
    EXPECT_NEAR(seen.bed.y, static_cast<double>(bed.y), 2e-3);
    const auto corrected = correctedPositionOf(param, rawPosition(param, bed), {480, 360});
    ASSERT_TRUE(corrected);
    const cv::Point2d expected = correctedPosition(param, bed, {480, 360});
    EXPECT_NEAR(corrected->x, expected.x, 2e-3);
    EXPECT_NEAR(corrected->y, expected.y, 2e-3);
  }
}

TEST(RawRay, RaysThatMissTheBedAreToldApart) {
  // Turned by 90 degrees, R^T (0, 0, 1) = (0, 1, 0): the axis runs along the bed. The camera's
  // height is that of T on the turned normal n = R (0, 0, 1) = (0, -1, 0), so T = (0, -170, 0).
  FishEyeCalibrationParam along = turnedRecord(1.57079633f);
  along.Tx = 0;
  along.Ty = -170;
  along.Tz = 0;
  const cv::Point2d axis(along.u0, along.v0);
  EXPECT_EQ(bedPointAt(along, axis).sight, Sight::kParallel);
  EXPECT_EQ(bedPointAt(along, axis + cv::Point2d(0, -100)).sight, Sight::kBed);
  EXPECT_EQ(bedPointAt(along, axis + cv::Point2d(0, 100)).sight, Sight::kAwayFromBed);
  EXPECT_TRUE(correctedPositionOf(along, axis + cv::Point2d(0, 100), {480, 360}));
}

TEST(RawRay, PixelsBeyondTheLensCurveHaveNoRay) {
  // theta_d(pi/2) = 1.5708 + 0.01 * 2.4674 - 0.05 * 3.8758 = 1.4017, 420.5 px at 300 px.
  const FishEyeCalibrationParam param = sampleRecord();
  EXPECT_TRUE(rayThrough(param, {482 + 420, 355}));
  EXPECT_FALSE(rayThrough(param, {482 + 421, 355}));
  EXPECT_EQ(bedPointAt(param, {482 + 421, 355}).sight, Sight::kBeyondLens);
}

}  // namespace
}  // namespace fisheye_calibration::program
