#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "fisheye_calibration.h"
#include "support/measured_views_test_base.h"
#include "support/plain_single.h"
#include "support/raises.h"
#include "support/shown_message.h"
#include "support/synthetic_rig.h"

namespace {

// A host's call: the true camera's picture of the bed, and what comes back.
struct Call {
  support::RigCamera camera;
  support::Bed bed;
  std::vector<CalibrationPoint> points;
  cv::Size rawSize = camera.imageSize;
  cv::Size correctedSize{1280, 960};
  FishEyeCalibrationParam param{};
  double reprojectionError = -1;

  explicit Call(double sigma = 0, std::uint64_t seed = 1) {
    const support::RigPose pose = support::poseOver(bed, 180, 0.4, -0.3, 0.2);
    points = support::calibrationPoints(support::seen(camera, bed, pose, sigma, seed));
  }

  bool run() {
    return SingleCamCalibration(nullptr, rawSize.width, rawSize.height, 24, points,
                                correctedSize.width, correctedSize.height, param,
                                reprojectionError);
  }

  cv::Point2d secondCorrected(const cv::Point2d& c) const {
    const double w = param.p7 * c.x + param.p8 * c.y + param.p9;
    return {(param.p1 * c.x + param.p2 * c.y + param.p3) / w + param.ImageDx,
            (param.p4 * c.x + param.p5 * c.y + param.p6) / w + param.ImageDy};
  }

  cv::Point2f centre() const {
    return cv::Point2d(correctedSize.width, correctedSize.height) * 0.5;
  }
};

std::vector<double> intrinsicsAndPose(const FishEyeCalibrationParam& p) {
  return {p.u0, p.v0, p.fx, p.fy, p.skewness, p.k0, p.k1, p.R1, p.R2, p.R3, p.R4,
          p.R5, p.R6, p.R7, p.R8, p.R9,       p.Rx, p.Ry, p.Rz, p.Tx, p.Ty, p.Tz};
}

std::vector<double> secondCorrection(const FishEyeCalibrationParam& p) {
  return {p.p1, p.p2, p.p3,    p.p4,        p.p5,        p.p6,      p.p7,
          p.p8, p.p9, p.Pixel, p.DatumPtXw, p.DatumPtYw, p.ImageDx, p.ImageDy};
}

std::string bytesOf(const Call& call) {
  std::string bytes(reinterpret_cast<const char*>(call.points.data()),
                    call.points.size() * sizeof(CalibrationPoint));
  for (const std::vector<double>& numbers :
       {intrinsicsAndPose(call.param), secondCorrection(call.param), {call.reprojectionError}}) {
    bytes.append(reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(double));
  }
  return bytes;
}

TEST(SingleCameraCalibration, RecoversTheTrueCameraAndPose) {
  Call call;
  ASSERT_TRUE(call.run());
  // The points are rounded to 32-bit float: about 3e-5 px.
  EXPECT_NEAR(call.param.fx, call.camera.fx, 0.02);
  EXPECT_NEAR(call.param.fy, call.camera.fy, 0.02);
  EXPECT_NEAR(call.param.u0, call.camera.cx, 0.02);
  EXPECT_NEAR(call.param.v0, call.camera.cy, 0.02);
  EXPECT_NEAR(call.param.k0, call.camera.k0, 1e-4);
  EXPECT_NEAR(call.param.k1, call.camera.k1, 1e-4);
  EXPECT_EQ(call.param.skewness, 0);
  const support::RigPose pose = support::poseOver(call.bed, 180, 0.4, -0.3, 0.2);
  EXPECT_NEAR(call.param.Ry, pose.rotation[1], 1e-4);
  EXPECT_NEAR(call.param.Tz, pose.translation[2], 0.02);
  EXPECT_LT(call.reprojectionError, 1e-4);
}

TEST(SingleCameraCalibration, AgreesWithThePlainDerivation) {
  for (std::uint64_t seed = 1; seed <= 30; ++seed) {
    Call call(0.2, seed);
    std::vector<CalibrationPoint> points = call.points;
    FishEyeCalibrationParam expected{};
    double error = -1;
    ASSERT_TRUE(
        plain::singleCamCalibration(call.rawSize, points, call.correctedSize, expected, error));
    ASSERT_TRUE(call.run());
    const std::vector<double> found = intrinsicsAndPose(call.param);
    for (size_t i = 0; i < found.size(); ++i) {
      const double value = intrinsicsAndPose(expected)[i];
      EXPECT_NEAR(found[i], value, 1e-6 * (1 + std::abs(value))) << "seed " << seed << ", " << i;
    }
    for (size_t i = 0; i < 14; ++i) {
      const double value = secondCorrection(expected)[i];
      EXPECT_NEAR(secondCorrection(call.param)[i], value, 1e-4 * (1 + std::abs(value)))
          << "seed " << seed << ", " << i;
    }
    EXPECT_NEAR(call.reprojectionError, error, 1e-5);
    for (size_t i = 0; i < points.size(); ++i) {
      EXPECT_NEAR(call.points[i].ReprojPtX, points[i].ReprojPtX, 2e-4);
      EXPECT_NEAR(call.points[i].ReprojErrY, points[i].ReprojErrY, 2e-4);
    }
  }
}

TEST(SingleCameraCalibration, EightPointsAreTooFewAndTouchNothing) {
  Call call;
  call.points.resize(8);
  std::memset(&call.param, 0x5a, sizeof call.param);
  FishEyeCalibrationParam param;
  std::memcpy(&param, &call.param, sizeof param);
  const std::string before(reinterpret_cast<const char*>(call.points.data()),
                           8 * sizeof(CalibrationPoint));
  std::srand(5);
  const int next = std::rand();
  std::srand(5);
  EXPECT_EQ(support::messageShownBy([&] { EXPECT_FALSE(call.run()); }),
            "特征点少于9个点，无法完成标定！\n");
  EXPECT_EQ(std::memcmp(&param, &call.param, sizeof param), 0);
  EXPECT_EQ(before, std::string(reinterpret_cast<const char*>(call.points.data()),
                                8 * sizeof(CalibrationPoint)));
  EXPECT_EQ(call.reprojectionError, -1);
  EXPECT_EQ(std::rand(), next);
}

TEST(SingleCameraCalibration, NoPointsAreTooFew) {
  Call call;
  call.points.clear();
  EXPECT_NE(support::messageShownBy([&] { EXPECT_FALSE(call.run()); }), "");
}

TEST(SingleCameraCalibration, NinePointsAreEnough) {
  Call call;
  std::vector<CalibrationPoint> nine;
  for (const size_t i : {0U, 4U, 8U, 27U, 31U, 35U, 54U, 58U, 62U}) nine.push_back(call.points[i]);
  call.points = nine;
  testing::internal::CaptureStderr();
  EXPECT_TRUE(call.run());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_LT(call.reprojectionError, 1e-3);
}

TEST(SingleCameraCalibration, FillerIsDrawnFromTheRuntimesGeneratorInOrder) {
  std::srand(7);
  const int r[] = {std::rand(), std::rand(), std::rand(), std::rand()};
  const int afterwards = std::rand();
  Call call;
  std::srand(7);
  ASSERT_TRUE(call.run());
  EXPECT_EQ(call.param.k2, (r[0] % 10001) * 0.0001);
  EXPECT_EQ(call.param.k3, (r[1] % 10001) * 0.00001);
  EXPECT_EQ(call.param.k4, (r[2] % 10001) * 0.0001);
  EXPECT_EQ(call.param.k5, (r[3] % 10001) * 0.00001);
  EXPECT_EQ(std::rand(), afterwards);
}

TEST(SingleCameraCalibration, RepeatedCallDiffersOnlyInTheFiller) {
  Call first(0.2);
  Call second(0.2);
  std::srand(7);
  ASSERT_TRUE(first.run());
  ASSERT_TRUE(second.run());
  EXPECT_EQ(bytesOf(first), bytesOf(second));
  EXPECT_NE(first.param.k2, second.param.k2);
}

TEST(SingleCameraCalibration, PointsKeepAllButTheirReprojection) {
  Call call(0.2);
  for (size_t i = 0; i < call.points.size(); ++i) {
    CalibrationPoint& point = call.points[i];
    point.PointId = -static_cast<std::int32_t>(i);
    point.Reserved1 = static_cast<std::int32_t>(0x7fc00001 + i);
    point.Reserved2 = static_cast<std::int32_t>(i * i);
    point.Reserved3 = -1;
  }
  const std::vector<CalibrationPoint> before = call.points;
  ASSERT_TRUE(call.run());
  ASSERT_EQ(call.points.size(), before.size());
  for (size_t i = 0; i < before.size(); ++i) {
    EXPECT_EQ(std::memcmp(&call.points[i], &before[i], 32), 0);
  }
}

TEST(SingleCameraCalibration, ReprojectionErrorsAreMeasuredMinusReprojected) {
  Call call(0.5);
  ASSERT_TRUE(call.run());
  double sum = 0;
  for (const CalibrationPoint& point : call.points) {
    EXPECT_EQ(point.ReprojErrX, point.ImagePtX - static_cast<float>(point.ReprojPtX));
    EXPECT_EQ(point.ReprojErrY, point.ImagePtY - static_cast<float>(point.ReprojPtY));
    EXPECT_EQ(point.ReprojPtX, static_cast<float>(point.ReprojPtX));
    sum += point.ReprojErrX * point.ReprojErrX + point.ReprojErrY * point.ReprojErrY;
  }
  const double rms = std::sqrt(sum / static_cast<double>(call.points.size()));
  EXPECT_NEAR(call.reprojectionError, rms, 1e-6 * rms);
  EXPECT_NEAR(rms, 0.5 * std::sqrt(2.0), 0.1);
}

TEST(SingleCameraCalibration, ReprojectionUsesTheStoredRecord) {
  Call call(0.5);
  ASSERT_TRUE(call.run());
  for (const CalibrationPoint& point : call.points) {
    float x = 0;
    float y = 0;
    WorldToRawImagePoint(point.Xw, point.Yw, 0, call.param, x, y);
    EXPECT_FLOAT_EQ(static_cast<float>(point.ReprojPtX), x);
    EXPECT_FLOAT_EQ(static_cast<float>(point.ReprojPtY), y);
  }
}

TEST(SingleCameraCalibration, StoredRotationMatrixIsThatOfTheStoredVector) {
  Call call(0.2);
  ASSERT_TRUE(call.run());
  const FishEyeCalibrationParam& p = call.param;
  const cv::Mat R = plain::rotationMatrix((cv::Mat_<double>(3, 1) << p.Rx, p.Ry, p.Rz));
  const float stored[] = {p.R1, p.R2, p.R3, p.R4, p.R5, p.R6, p.R7, p.R8, p.R9};
  for (int i = 0; i < 9; ++i) EXPECT_NEAR(stored[i], R.at<double>(i / 3, i % 3), 1e-7);
}

TEST(SingleCameraCalibration, PixelIsTheScaleBetweenTheFirstAndTheLastPoint) {
  Call call;
  ASSERT_TRUE(call.run());
  const CalibrationPoint& first = call.points.front();
  const CalibrationPoint& last = call.points.back();
  const cv::Point2f c = call.centre();
  const cv::Point2d a = plain::worldToCorrected({first.Xw, first.Yw, 0}, call.param, c.x, c.y);
  const cv::Point2d b = plain::worldToCorrected({last.Xw, last.Yw, 0}, call.param, c.x, c.y);
  const double world = std::hypot(first.Xw - last.Xw, first.Yw - last.Yw);
  EXPECT_NEAR(call.param.Pixel, world / cv::norm(a - b), 1e-6 * call.param.Pixel);
}

TEST(SingleCameraCalibration, ReversedListGivesTheSamePixelForAPerfectTarget) {
  Call forward;
  Call backward;
  std::reverse(backward.points.begin(), backward.points.end());
  ASSERT_TRUE(forward.run());
  ASSERT_TRUE(backward.run());
  EXPECT_NEAR(backward.param.Pixel, forward.param.Pixel, 1e-5 * forward.param.Pixel);
  EXPECT_NEAR(backward.param.DatumPtXw, forward.param.DatumPtXw, 0.02);
}

TEST(SingleCameraCalibration, SecondCorrectionIsTheMetricGrid) {
  for (const cv::Size size : {cv::Size(1280, 960), cv::Size(1001, 777)}) {
    Call call(0.2);
    call.correctedSize = size;
    ASSERT_TRUE(call.run());
    const cv::Point2f c = call.centre();
    for (const CalibrationPoint& point : call.points) {
      const cv::Point2d corrected =
          plain::worldToCorrected({point.Xw, point.Yw, 0}, call.param, c.x, c.y);
      const cv::Point2d second = call.secondCorrected(corrected);
      float x = 0;
      float y = 0;
      WorldToSecondCorrectedImagePoint(point.Xw, point.Yw, 0, call.param, c.x, c.y, x, y);
      EXPECT_NEAR(x, second.x, 0.05);
      EXPECT_NEAR(y, second.y, 0.05);
    }
  }
}

TEST(SingleCameraCalibration, SecondCorrectionKeepsTheImageCentreInPlace) {
  Call call(0.2);
  call.correctedSize = {1001, 777};
  ASSERT_TRUE(call.run());
  const cv::Point2d centre = call.secondCorrected(call.centre());
  EXPECT_NEAR(centre.x, 500.5, 1e-3);
  EXPECT_NEAR(centre.y, 388.5, 1e-3);
}

// The list's ends in the same place: no scale, so no second correction.
TEST(SingleCameraCalibration, WithoutAHomographyTheFirstResultsStandAndTheOthersAreUntouched) {
  Call call(0.2);
  call.points.push_back(call.points.front());
  std::vector<CalibrationPoint> points = call.points;
  FishEyeCalibrationParam expected{};
  double error = -1;
  ASSERT_FALSE(
      plain::singleCamCalibration(call.rawSize, points, call.correctedSize, expected, error));
  std::srand(7);
  const int r = std::rand();
  std::srand(7);
  call.param.p1 = call.param.p9 = 11;
  call.param.Pixel = 12;
  call.param.DatumPtXw = call.param.DatumPtYw = 13;
  call.param.ImageDx = call.param.ImageDy = 14;
  const std::vector<double> before = secondCorrection(call.param);
  EXPECT_FALSE(call.run());
  EXPECT_EQ(secondCorrection(call.param), before);
  for (size_t i = 0; i < 22; ++i) {
    const double value = intrinsicsAndPose(expected)[i];
    EXPECT_NEAR(intrinsicsAndPose(call.param)[i], value, 1e-6 * (1 + std::abs(value)));
  }
  EXPECT_EQ(call.param.k2, (r % 10001) * 0.0001);
  EXPECT_NEAR(call.reprojectionError, error, 1e-5);
  EXPECT_NEAR(call.points[5].ReprojPtX, points[5].ReprojPtX, 2e-4);
}

TEST(SingleCameraCalibration, PictureAndBitCountAreNotUsed) {
  Call expected(0.2);
  ASSERT_TRUE(expected.run());
  unsigned char byte = 17;
  for (const int bitCount : {0, 8, -1, 4711}) {
    Call call(0.2);
    ASSERT_TRUE(SingleCamCalibration(&byte, 1280, 960, bitCount, call.points, 1280, 960, call.param,
                                     call.reprojectionError));
    EXPECT_EQ(bytesOf(call), bytesOf(expected));
  }
  EXPECT_EQ(byte, 17);
}

TEST(SingleCameraCalibration, HostileArgumentsEndTheSameWayEachTime) {
  const auto outcome = [](const auto& spoil) {
    return support::outcomeOf([&] {
      Call call(0.2);
      spoil(call);
      const bool found = call.run();
      return std::to_string(found) + bytesOf(call);
    });
  };
  const auto expectSame = [&](const auto& spoil) { EXPECT_EQ(outcome(spoil), outcome(spoil)); };
  const float inf = std::numeric_limits<float>::infinity();
  for (const float bad : {inf, -inf, std::nanf(""), 3e38f, -1e30f}) {
    expectSame([&](Call& call) { call.points[3].ImagePtX = bad; });
    expectSame([&](Call& call) { call.points[3].Yw = bad; });
    expectSame([&](Call& call) { call.points.front().Xw = bad; });
    expectSame([&](Call& call) {
      for (CalibrationPoint& point : call.points) point.ImagePtY = bad;
    });
  }
  expectSame([](Call& call) { call.points.assign(20, call.points[0]); });
  expectSame([](Call& call) { call.points.resize(9); });  // one row of the bed
  expectSame([](Call& call) {
    for (CalibrationPoint& point : call.points) point.Xw = 5;
  });
  const int most = std::numeric_limits<int>::max();
  for (const cv::Size size : {cv::Size(0, 0), cv::Size(-1280, -960), cv::Size(most, most),
                              cv::Size(-most - 1, -most - 1)}) {
    expectSame([&](Call& call) { call.rawSize = size; });
    expectSame([&](Call& call) { call.correctedSize = size; });
  }
}

class SingleCameraCalibrationOfMeasuredViews : public support::MeasuredViewsTest {};

TEST_F(SingleCameraCalibrationOfMeasuredViews, GoodViewsAreReprojectedWithinHalfAPixel) {
  const auto cameras = support::readMeasuredSet("garage");
  int good = 0;
  for (const support::MeasuredView& view : cameras[0].views) {
    std::vector<CalibrationPoint> points;
    for (size_t i = 0; i < view.objectPoints.size(); ++i) {
      CalibrationPoint point{};
      point.PointId = view.pointIds[i];
      point.Xw = view.objectPoints[i].x;
      point.Yw = view.objectPoints[i].y;
      point.ImagePtX = view.imagePoints[i].x;
      point.ImagePtY = view.imagePoints[i].y;
      points.push_back(point);
    }
    FishEyeCalibrationParam param{};
    double error = -1;
    ASSERT_TRUE(SingleCamCalibration(nullptr, view.imageSize.width, view.imageSize.height, 8,
                                     points, view.imageSize.width, view.imageSize.height, param,
                                     error));
    good += error < 0.5 ? 1 : 0;
  }
  EXPECT_GT(good, 50);  // of 63
}

}  // namespace
