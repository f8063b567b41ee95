#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "fisheye/fisheye.h"
#include "fisheye/internal.h"
#include "fisheye/solver_records.h"
#include "support/raises.h"

using namespace fisheye_calibration;

namespace {

using cv::TermCriteria;

const cv::Matx33d kK(400, 0, 640, 0, 300, 480, 0, 0, 1);
const cv::Vec2d kD(0.1, -0.05);
const TermCriteria kBoth(TermCriteria::COUNT + TermCriteria::EPS, 10, 1e-8);
constexpr double kMarker = -1000000;

// Undistorts one pixel whose normalised position is (x, y) under kK.
cv::Point2d undistorted(double x, double y, const TermCriteria& criteria = kBoth,
                        cv::InputArray D = kD, cv::InputArray R = cv::noArray(),
                        cv::InputArray P = cv::noArray()) {
  std::vector<cv::Point2d> out;
  fisheye::undistortPoints(std::vector<cv::Point2d>{{640 + 400 * x, 480 + 300 * y}}, out, kK, D, R,
                           P, criteria);
  return out.at(0);
}

TEST(Undistortion, WithoutDistortionTheAngleIsTheRadius) {
  const cv::Point2d point = undistorted(0.3, 0.4, kBoth, cv::Vec2d(0, 0));
  EXPECT_NEAR(point.x, std::tan(0.5) * 0.6, 1e-14);
  EXPECT_NEAR(point.y, std::tan(0.5) * 0.8, 1e-14);
}

TEST(Undistortion, InvertsTheDistortedAngle) {
  const double theta = 1.0;
  const double thetaD = theta + 0.1 * theta * theta - 0.05 * theta * theta * theta;
  const cv::Point2d point = undistorted(-thetaD, 0);
  EXPECT_NEAR(point.x, -std::tan(1.0), 1e-12);
  EXPECT_EQ(point.y, 0);
}

TEST(Undistortion, PrincipalPointIsTheOriginWithABound) {
  EXPECT_EQ(undistorted(0, 0), cv::Point2d(0, 0));
}

TEST(Undistortion, PrincipalPointGoesWhereTheRectificationTakesTheAxis) {
  const cv::Matx33d R(1, 0, 2, 0, 1, 4, 0, 0, 2);
  const cv::Matx34d P(10, 0, 5, 99, 0, 20, 6, 99, 0, 0, 1, 99);
  // P3 R (0, 0, 1) = P3 (2, 4, 2) = (30, 92, 2).
  EXPECT_EQ(undistorted(0, 0, kBoth, kD, R, P), cv::Point2d(15, 46));
}

TEST(Undistortion, PrincipalPointIsNanWithACountOnly) {
  const cv::Point2d point = undistorted(0, 0, TermCriteria(TermCriteria::COUNT, 5, 0));
  EXPECT_TRUE(std::isnan(point.x));
  EXPECT_TRUE(std::isnan(point.y));
}

TEST(Undistortion, RadiusAboveAQuarterTurnCountsAsAQuarterTurn) {
  const double quarter = 1.5707963267948966;
  const double scale = std::tan(quarter) / quarter;
  const cv::Point2d point = undistorted(3, 0, kBoth, cv::Vec2d(0, 0));
  EXPECT_NEAR(point.x / (3 * scale), 1, 1e-12);
  EXPECT_EQ(point.y, 0);
}

TEST(Undistortion, CountOfOneMakesOneNewtonStep) {
  const double t = 0.5;
  const double fix = (0.1 * t * t - 0.05 * t * t * t) / (1 + 0.2 * t - 0.15 * t * t);
  const cv::Point2d point = undistorted(0.3, 0.4, TermCriteria(TermCriteria::COUNT, 1, 0));
  EXPECT_NEAR(point.x, 0.3 * std::tan(t - fix) / t, 1e-14);
  EXPECT_NEAR(point.y, 0.4 * std::tan(t - fix) / t, 1e-14);
}

TEST(Undistortion, PointThatDoesNotConvergeInTimeGetsTheMarker) {
  const TermCriteria hasty(TermCriteria::COUNT + TermCriteria::EPS, 1, 1e-8);
  EXPECT_EQ(undistorted(0.3, 0.4, hasty), cv::Point2d(kMarker, kMarker));
}

TEST(Undistortion, NegativeAngleGetsTheMarkerEvenWithACountOnly) {
  // theta - theta^3/2 never reaches 1.5 for a positive angle; Newton ends at the negative root.
  const cv::Vec2d folded(0, -0.5);
  EXPECT_EQ(undistorted(1.5, 0, TermCriteria(TermCriteria::COUNT, 100, 0), folded),
            cv::Point2d(kMarker, kMarker));
  EXPECT_EQ(undistorted(1.5, 0, TermCriteria(3, 100, 1e-8), folded), cv::Point2d(kMarker, kMarker));
}

TEST(Undistortion, MarkerIsNotRectified) {
  const TermCriteria hasty(TermCriteria::COUNT + TermCriteria::EPS, 1, 1e-8);
  EXPECT_EQ(undistorted(0.3, 0.4, hasty, kD, cv::Matx33d::eye() * 2, kK),
            cv::Point2d(kMarker, kMarker));
}

TEST(Undistortion, MarkerIsWrittenToThirtyTwoBitOutputToo) {
  std::vector<cv::Point2f> out;
  fisheye::undistortPoints(std::vector<cv::Point2f>{{760, 600}}, out, kK, kD, cv::noArray(),
                           cv::noArray(), TermCriteria(3, 1, 1e-8));
  EXPECT_EQ(out.at(0), cv::Point2f(-1000000, -1000000));
}

TEST(Undistortion, BoundOnlyRunsUntilConvergence) {
  const double theta = 1.4;
  const double thetaD = theta + 0.1 * theta * theta - 0.05 * theta * theta * theta;
  const cv::Point2d point = undistorted(0, thetaD, TermCriteria(TermCriteria::EPS, 0, 1e-13));
  EXPECT_NEAR(point.y, std::tan(1.4), 1e-11);
}

TEST(Undistortion, InfiniteBoundIsValidAndMovesNothing) {
  // No angle is greater than the bound, so the scale stays 0.
  EXPECT_EQ(undistorted(0.3, 0.4, TermCriteria(TermCriteria::EPS, 0, HUGE_VAL)), cv::Point2d(0, 0));
}

TEST(Undistortion, NanBoundIsValidWithACountAndMovesNothing) {
  EXPECT_EQ(undistorted(0.3, 0.4, TermCriteria(3, 5, std::nan(""))), cv::Point2d(0, 0));
}

TEST(Undistortion, CountBelowOneIsValidWithABoundAndConvergesNowhere) {
  for (const int count : {0, -5}) {
    EXPECT_EQ(undistorted(0.3, 0.4, TermCriteria(3, count, 1e-8)), cv::Point2d(kMarker, kMarker));
    EXPECT_EQ(undistorted(0, 0, TermCriteria(3, count, 1e-8)), cv::Point2d(0, 0));
  }
}

TEST(Undistortion, RotationVectorAndMatrixRectifyAlike) {
  // A quarter turn about z: (x, y) becomes (-y, x).
  const double t = std::tan(0.5);
  const cv::Matx33d turn(0, -1, 0, 1, 0, 0, 0, 0, 1);
  const cv::Vec2d none(0, 0);
  const std::vector<cv::Mat> forms = {cv::Mat(turn), cv::Mat(cv::Vec3d(0, 0, CV_PI / 2)),
                                      cv::Mat(cv::Vec3d(0, 0, CV_PI / 2)).t(),
                                      cv::Mat(1, 1, CV_64FC3, cv::Scalar(0, 0, CV_PI / 2))};
  for (const cv::Mat& R : forms) {
    const cv::Point2d point = undistorted(0.3, 0.4, kBoth, none, R);
    EXPECT_NEAR(point.x, -t * 0.8, 1e-14);
    EXPECT_NEAR(point.y, t * 0.6, 1e-14);
  }
}

TEST(Undistortion, ZeroRotationVectorRectifiesNothing) {
  EXPECT_EQ(undistorted(0.3, 0.4, kBoth, kD, cv::Vec3d(0, 0, 0)), undistorted(0.3, 0.4));
}

TEST(Undistortion, ProjectionMatrixMayHaveThreeOrFourColumns) {
  const cv::Matx33d three(100, 5, 50, 0, 200, 60, 0, 0, 1);
  const cv::Matx34f four(100, 5, 50, 7, 0, 200, 60, 8, 0, 0, 1, 9);
  const cv::Point2d plain = undistorted(0.3, 0.4);
  const cv::Point2d expected(100 * plain.x + 5 * plain.y + 50, 200 * plain.y + 60);
  for (const cv::Mat& P : std::vector<cv::Mat>{cv::Mat(three), cv::Mat(four)}) {
    const cv::Point2d point = undistorted(0.3, 0.4, kBoth, kD, cv::noArray(), P);
    EXPECT_NEAR(point.x, expected.x, 1e-11);
    EXPECT_NEAR(point.y, expected.y, 1e-11);
  }
}

TEST(Undistortion, SkewEntryOfTheCameraMatrixIsNotUndone) {
  cv::Matx33d skewed = kK;
  skewed(0, 1) = 50;
  std::vector<cv::Point2d> out;
  fisheye::undistortPoints(std::vector<cv::Point2d>{{760, 600}}, out, skewed, kD);
  EXPECT_EQ(out.at(0), undistorted(0.3, 0.4));
}

TEST(Undistortion, DepthsOfCameraAndDistortionMayDiffer) {
  std::vector<cv::Point2d> out;
  fisheye::undistortPoints(std::vector<cv::Point2d>{{760, 600}}, out, cv::Matx33f(kK), kD);
  EXPECT_EQ(out.at(0), undistorted(0.3, 0.4));
  fisheye::undistortPoints(std::vector<cv::Point2d>{{760, 600}}, out, kK, cv::Vec2f(kD));
  EXPECT_NEAR(out.at(0).x, undistorted(0.3, 0.4).x, 1e-8);
}

TEST(Undistortion, UndoesTheProjectionOfRandomRigs) {
  for (std::uint64_t seed = 1; seed <= 50; ++seed) {
    const support::Rig rig = support::randomRig(seed, 1);
    const plain::Intrinsics camera = support::plainIntrinsics(rig.camera);
    const support::RigPose& pose = rig.views[0].pose;
    std::vector<cv::Point2d> out;
    fisheye::undistortPoints(rig.views[0].imagePoints, out, camera.cameraMatrix(),
                             camera.distortionVector());
    const cv::Mat R = plain::rotationMatrix(cv::Mat(pose.rotation));
    for (size_t i = 0; i < out.size(); ++i) {
      const cv::Mat Y = R * cv::Mat(rig.views[0].objectPoints[i]) + cv::Mat(pose.translation);
      const double x = Y.at<double>(0) / Y.at<double>(2);
      const double y = Y.at<double>(1) / Y.at<double>(2);
      ASSERT_NEAR(out[i].x, x, 1e-10 * (1 + x * x + y * y)) << "seed " << seed;
      ASSERT_NEAR(out[i].y, y, 1e-10 * (1 + x * x + y * y)) << "seed " << seed;
    }
  }
}

TEST(Undistortion, AgreesWithThePlainDerivationAlsoWhereNothingConverges) {
  support::Random random(7);
  for (int i = 0; i < 2000; ++i) {
    // One statement each: compilers evaluate arguments in different orders.
    const double v = random.uniform(-300, 1300);
    const double u = random.uniform(-400, 1700);
    const double k1 = random.uniform(-0.3, 0.3);
    const double k0 = random.uniform(-0.3, 0.3);
    const double omY = random.uniform(-1, 1);
    const double omX = random.uniform(-1, 1);
    const cv::Mat pixel(1, 1, CV_64FC2, cv::Scalar(u, v));
    const cv::Mat D(cv::Vec2d(k0, k1));
    const cv::Mat R(cv::Vec3d(omX, omY, 0.3));
    const cv::Mat P = (cv::Mat_<double>(3, 3) << 300, 1, 200, 0, 310, 150, 0, 0, 1);
    const TermCriteria criteria(i % 2 == 0 ? 1 : 3, 1 + i % 15, 1e-8);
    const cv::Mat expected = plain::undistortPoints(pixel, cv::Mat(kK), D, R, P, criteria);
    cv::Mat out;
    fisheye::undistortPoints(pixel, out, kK, D, R, P, criteria);
    ASSERT_LT(support::relativeDistance(out, expected), 1e-9) << i;
  }
}

// --- Forms of arrays

TEST(UndistortionForms, OutputHasTheShapeAndTypeOfThePixels) {
  for (const int type : {CV_32FC2, CV_64FC2}) {
    for (const cv::Size size : {cv::Size(6, 1), cv::Size(1, 6), cv::Size(3, 2)}) {
      cv::Mat out;
      fisheye::undistortPoints(cv::Mat(size, type, cv::Scalar(760, 600)), out, kK, kD);
      ASSERT_EQ(out.size(), size);
      ASSERT_EQ(out.type(), type);
      cv::Mat wide;
      out.convertTo(wide, CV_64F);
      EXPECT_NEAR(wide.ptr<cv::Vec2d>(size.height - 1)[size.width - 1][0], undistorted(0.3, 0.4).x,
                  1e-7);
    }
  }
}

TEST(UndistortionForms, PixelsInANonContiguousMatrixAreReadInOrder) {
  cv::Mat wide(3, 2, CV_64FC2, cv::Scalar(0, 0));
  for (int i = 0; i < 3; ++i) wide.at<cv::Vec2d>(i, 1) = {640 + 40.0 * i, 480};
  cv::Mat out;
  fisheye::undistortPoints(wide.col(1), out, kK, kD);
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(out.at<cv::Vec2d>(i)[0], undistorted(0.1 * i, 0).x, 1e-15);
  }
}

TEST(UndistortionForms, OutputMayBeTheInput) {
  cv::Mat pixels(5, 1, CV_64FC2, cv::Scalar(760, 600));
  fisheye::undistortPoints(pixels, pixels, kK, kD);
  EXPECT_EQ(pixels.at<cv::Vec2d>(4)[0], undistorted(0.3, 0.4).x);
}

TEST(UndistortionForms, NoPixelsGiveNoPoints) {
  std::vector<cv::Point2d> out(3);
  fisheye::undistortPoints(std::vector<cv::Point2d>(), out, kK, kD);
  EXPECT_TRUE(out.empty());
}

TEST(UndistortionForms, HostileNumbersEndTheSameWayEachTime) {
  const double inf = HUGE_VAL;
  const double nan = std::nan("");
  const std::vector<cv::Point2d> pixels = {{inf, 0}, {nan, 0}, {0, -inf}, {1e308, -1e308}};
  const auto outcome = [&](const cv::Matx33d& K, const cv::Vec2d& D) {
    return support::outcomeOf([&] {
      cv::Mat out;
      fisheye::undistortPoints(pixels, out, K, D);
      return support::bytesOf(out);
    });
  };
  for (const double bad : {inf, -inf, nan, 0.0}) {
    EXPECT_EQ(outcome(kK * bad, kD), outcome(kK * bad, kD));
    EXPECT_EQ(outcome(kK, cv::Vec2d(bad, 1)), outcome(kK, cv::Vec2d(bad, 1)));
  }
}

// --- Refusals

struct Arguments {
  cv::Mat distorted = cv::Mat::ones(4, 1, CV_64FC2);
  cv::Mat K = cv::Mat(kK);
  cv::Mat D = cv::Mat(kD);
  cv::Mat R;
  cv::Mat P;
  TermCriteria criteria = kBoth;
  cv::Mat out = cv::Mat::ones(1, 1, CV_8U);

  ::testing::AssertionResult refused(const std::string& text) {
    return support::refuses(text, "undistortPoints", [&] {
      fisheye::undistortPoints(distorted, out, K, D, R, P, criteria);
    });
  }
};

const char kPixelText[] = "distorted.type() == CV_32FC2 || distorted.type() == CV_64FC2";
const char kPText[] = "P.empty() || P.size() == Size(3, 3) || P.size() == Size(4, 3)";
const char kRText[] = "R.empty() || R.size() == Size(3, 3) || R.total() * R.channels() == 3";
const char kCameraText[] =
    "D.total() == 2 && K.size() == Size(3, 3) && (K.depth() == CV_32F || K.depth() == CV_64F)";
const char kCriteriaText[] = "criteria.isValid()";

TEST(UndistortionRefusals, PixelsOfAnotherTypeLeaveTheOutputUnchanged) {
  for (const cv::Mat& pixels : std::vector<cv::Mat>{
           cv::Mat(), cv::Mat(4, 1, CV_64FC3), cv::Mat(4, 2, CV_64FC1), cv::Mat(4, 1, CV_32SC2)}) {
    Arguments arguments;
    arguments.distorted = pixels;
    EXPECT_TRUE(arguments.refused(kPixelText));
    EXPECT_EQ(arguments.out.type(), CV_8U);
  }
}

TEST(UndistortionRefusals, ProjectionMatrixOfAnotherSize) {
  for (const cv::Size size : {cv::Size(3, 4), cv::Size(4, 4), cv::Size(2, 3), cv::Size(1, 3)}) {
    Arguments arguments;
    arguments.P = cv::Mat::eye(size, CV_64F);
    EXPECT_TRUE(arguments.refused(kPText));
  }
}

TEST(UndistortionRefusals, RotationOfAnotherSize) {
  for (const cv::Size size : {cv::Size(2, 2), cv::Size(4, 3), cv::Size(1, 4), cv::Size(3, 4)}) {
    Arguments arguments;
    arguments.R = cv::Mat::eye(size, CV_64F);
    EXPECT_TRUE(arguments.refused(kRText));
  }
}

TEST(UndistortionRefusals, DistortionOfAnotherLength) {
  for (const int length : {1, 3, 4}) {
    Arguments arguments;
    arguments.D = cv::Mat::zeros(length, 1, CV_64F);
    EXPECT_TRUE(arguments.refused(kCameraText));
  }
}

TEST(UndistortionRefusals, CameraMatrixOfAnotherSizeOrDepth) {
  for (const cv::Mat& K :
       std::vector<cv::Mat>{cv::Mat::eye(3, 4, CV_64F), cv::Mat::eye(2, 2, CV_64F),
                            cv::Mat::eye(3, 3, CV_32S), cv::Mat()}) {
    Arguments arguments;
    arguments.K = K;
    EXPECT_TRUE(arguments.refused(kCameraText));
  }
}

TEST(UndistortionRefusals, CriteriaThatNeverEnd) {
  for (const TermCriteria& criteria :
       {TermCriteria(TermCriteria::COUNT, 0, 0), TermCriteria(TermCriteria::COUNT, -1, 1e-8),
        TermCriteria(TermCriteria::EPS, 10, std::nan("")), TermCriteria(0, 10, 1e-8),
        TermCriteria(3, 0, std::nan(""))}) {
    Arguments arguments;
    arguments.criteria = criteria;
    EXPECT_TRUE(arguments.refused(kCriteriaText));
  }
}

TEST(UndistortionRefusals, FirstFailedConditionIsTheOneNamed) {
  Arguments arguments;
  arguments.criteria = TermCriteria(0, 0, 0);
  arguments.D = cv::Mat();
  arguments.R = cv::Mat::eye(2, 2, CV_64F);
  arguments.P = cv::Mat::eye(2, 2, CV_64F);
  EXPECT_TRUE(arguments.refused(kPText));
  arguments.P = cv::Mat();
  EXPECT_TRUE(arguments.refused(kRText));
  arguments.R = cv::Mat();
  EXPECT_TRUE(arguments.refused(kCameraText));
  arguments.D = cv::Mat(kD);
  EXPECT_TRUE(arguments.refused(kCriteriaText));
}

TEST(UndistortionRefusals, AfterTheFirstConditionTheOutputExists) {
  Arguments arguments;
  arguments.distorted = cv::Mat::ones(4, 1, CV_32FC2);
  arguments.D = cv::Mat();
  EXPECT_TRUE(arguments.refused(kCameraText));
  EXPECT_EQ(arguments.out.size(), cv::Size(1, 4));
  EXPECT_EQ(arguments.out.type(), CV_32FC2);
}

// --- Normalised pixels

internal::IntrinsicParams record(double skew) {
  internal::IntrinsicParams params;
  params.focalLength = {400, 300};
  params.principalPoint = {640, 480};
  params.skew = skew;
  return params;
}

TEST(NormalizePixels, UndoesSkewBeforeTheDistortion) {
  // yd = 0.4, x' = 0.3 + 0.01 * 0.4; without distortion the angle is 0.5.
  const cv::Mat pixels(1, 1, CV_64FC2, cv::Scalar(640 + 400 * 0.304, 480 + 300 * 0.4));
  const cv::Mat ideal = internal::NormalizePixels(pixels, record(0.01));
  EXPECT_NEAR(ideal.at<cv::Vec2d>(0)[0], std::tan(0.5) * 0.6, 1e-14);
  EXPECT_NEAR(ideal.at<cv::Vec2d>(0)[1], std::tan(0.5) * 0.8, 1e-14);
}

TEST(NormalizePixels, RowsAndColumnsBothGiveAColumn) {
  const cv::Mat row(1, 5, CV_64FC2, cv::Scalar(700, 500));
  for (const cv::Mat& pixels : std::vector<cv::Mat>{row, row.t()}) {
    const cv::Mat ideal = internal::NormalizePixels(pixels, record(0));
    EXPECT_EQ(ideal.size(), cv::Size(1, 5));
    EXPECT_EQ(ideal.type(), CV_64FC2);
  }
}

TEST(NormalizePixels, LeavesThePixelsUnchanged) {
  const cv::Mat pixels(3, 1, CV_64FC2, cv::Scalar(700, 500));
  internal::NormalizePixels(pixels, record(0));
  EXPECT_EQ(pixels.at<cv::Vec2d>(2), cv::Vec2d(700, 500));
}

TEST(NormalizePixels, PixelWithoutASolutionGetsTheMarker) {
  internal::IntrinsicParams folded = record(0);
  folded.distortion = {0, -0.5};
  const cv::Mat pixels(1, 1, CV_64FC2, cv::Scalar(640 + 400 * 1.5, 480));
  EXPECT_EQ(internal::NormalizePixels(pixels, folded).at<cv::Vec2d>(0),
            cv::Vec2d(kMarker, kMarker));
}

TEST(NormalizePixels, AgreesWithThePlainDerivation) {
  for (std::uint64_t seed = 1; seed <= 50; ++seed) {
    const support::Rig rig = support::randomRig(seed, 1, 1.0);
    plain::Intrinsics camera = support::plainIntrinsics(rig.camera);
    camera.skew = 0.01;
    const cv::Mat pixels = rig.views[0].plainView().imagePoints;
    EXPECT_LT(support::relativeDistance(
                  internal::NormalizePixels(pixels, support::intrinsicParams(camera)),
                  plain::normalizePixels(pixels, camera)),
              1e-12);
  }
}

TEST(NormalizePixels, RefusesPixelsThatAreEmptyOrOfAnotherType) {
  for (const cv::Mat& pixels : std::vector<cv::Mat>{
           cv::Mat(), cv::Mat(0, 1, CV_64FC2), cv::Mat(3, 1, CV_32FC2), cv::Mat(3, 2, CV_64F)}) {
    EXPECT_TRUE(support::refuses("!imagePoints.empty() && imagePoints.type() == CV_64FC2",
                                 "NormalizePixels",
                                 [&] { internal::NormalizePixels(pixels, record(0)); }));
  }
}

TEST(UndistortionForms, ColumnOfPixelsFillsAVectorOfPoints) {
  const cv::Mat pixels =
      (cv::Mat_<cv::Vec2f>(2, 1) << cv::Vec2f(0, 0), cv::Vec2f(static_cast<float>(CV_PI / 4), 0));
  std::vector<cv::Point2f> points;
  fisheye::undistortPoints(pixels, points, cv::Matx33d::eye(), cv::Vec2d(0, 0));
  ASSERT_EQ(points.size(), 2U);
  EXPECT_EQ(points[0], cv::Point2f(0, 0));
  EXPECT_NEAR(points[1].x, 1.0F, 1e-6F);  // tan of 45 degrees
}

}  // namespace
