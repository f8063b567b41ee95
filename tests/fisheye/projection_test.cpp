#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "fisheye/fisheye.h"
#include "fisheye/internal.h"
#include "fisheye/solver_records.h"
#include "support/derivatives.h"
#include "support/raises.h"

using namespace fisheye_calibration;

namespace {

const cv::Matx33d kK(400, 0, 640, 0, 300, 480, 0, 0, 1);
const cv::Vec2d kD(0.1, -0.2);
const cv::Vec3d kZero(0, 0, 0);

// theta_d of an incidence angle with kD.
double distorted(double theta) { return theta + 0.1 * theta * theta - 0.2 * theta * theta * theta; }

cv::Point2d projected(const cv::Point3d& X, const cv::Vec3d& om = kZero, const cv::Vec3d& T = kZero,
                      double alpha = 0) {
  std::vector<cv::Point2d> pixels;
  fisheye::projectPoints(std::vector<cv::Point3d>{X}, pixels, om, T, kK, kD, alpha);
  return pixels.at(0);
}

cv::Mat jacobianOf(const cv::Point3d& X, const cv::Vec3d& om, const cv::Vec3d& T,
                   double alpha = 0) {
  cv::Mat pixels;
  cv::Mat jacobian;
  fisheye::projectPoints(std::vector<cv::Point3d>{X}, pixels, om, T, kK, kD, alpha, jacobian);
  return jacobian;
}

TEST(Projection, PointAtFortyFiveDegreesLandsAtItsDistortedAngle) {
  const cv::Point2d pixel = projected({2, 0, 2});
  EXPECT_NEAR(pixel.x, 640 + 400 * distorted(CV_PI / 4), 1e-11);
  EXPECT_EQ(pixel.y, 480);
}

TEST(Projection, PoseTurnsThenShifts) {
  // A quarter turn about z carries (1, 0, 0) to (0, 1, 0); the shift puts it at (0, 1, 2).
  const cv::Point2d pixel = projected({1, 0, 0}, {0, 0, CV_PI / 2}, {0, 0, 2});
  EXPECT_NEAR(pixel.x, 640, 1e-12);
  EXPECT_NEAR(pixel.y, 480 + 300 * distorted(std::atan(0.5)), 1e-12);
}

TEST(Projection, PointOnTheOpticalAxisLandsOnThePrincipalPoint) {
  EXPECT_EQ(projected({0, 0, 5}), cv::Point2d(640, 480));
}

TEST(Projection, PointWithinTheAxisGuardIsProjectedWithUnitScale) {
  // r = 5e-9 is not above 1e-8: xd = x, not x theta_d/r.
  EXPECT_EQ(projected({3e-9, 4e-9, 1}).y, 480 + 300 * 4e-9);
}

TEST(Projection, DepthOfZeroCountsAsOne) {
  const double scale = distorted(std::atan(0.5)) / 0.5;
  const cv::Point2d pixel = projected({0.3, 0.4, 0});
  EXPECT_NEAR(pixel.x, 640 + 400 * scale * 0.3, 1e-12);
  EXPECT_NEAR(pixel.y, 480 + 300 * scale * 0.4, 1e-12);
}

TEST(Projection, SubnormalDepthCountsAsOneAndTheSmallestNormalDoesNot) {
  const double smallest = std::numeric_limits<double>::min();
  EXPECT_NEAR(projected({0.5, 0, smallest / 2}).x, 640 + 400 * distorted(std::atan(0.5)), 1e-12);
  EXPECT_NEAR(projected({0.5, 0, -smallest / 2}).x, 640 + 400 * distorted(std::atan(0.5)), 1e-12);
  EXPECT_NEAR(projected({3 * smallest, 0, smallest}).x, 640 + 400 * distorted(std::atan(3.0)),
              1e-11);
}

TEST(Projection, PointBehindTheCameraIsProjectedByTheSameFormulas) {
  const cv::Point2d pixel = projected({1, 0, -1});
  EXPECT_NEAR(pixel.x, 640 - 400 * distorted(CV_PI / 4), 1e-11);
  EXPECT_EQ(pixel.y, 480);
}

TEST(Projection, AlphaAddsAShareOfYToX) {
  const double yd = distorted(std::atan(0.5));
  const cv::Point2d pixel = projected({0, 1, 2}, kZero, kZero, 0.25);
  EXPECT_NEAR(pixel.x, 640 + 400 * 0.25 * yd, 1e-12);
  EXPECT_NEAR(pixel.y, 480 + 300 * yd, 1e-12);
}

TEST(Projection, SkewEntryOfTheCameraMatrixIsNotRead) {
  cv::Matx33d skewed = kK;
  skewed(0, 1) = 123;
  std::vector<cv::Point2d> pixels;
  fisheye::projectPoints(std::vector<cv::Point3d>{{1, 2, 3}}, pixels, kZero, kZero, skewed, kD);
  EXPECT_EQ(pixels.at(0), projected({1, 2, 3}));
}

TEST(Projection, TinyRotationVectorIsTheIdentity) {
  EXPECT_EQ(projected({1, 2, 3}, {1e-16, 0, 0}), projected({1, 2, 3}));
}

TEST(Projection, AgreesWithThePlainDerivationOnRandomRigs) {
  for (std::uint64_t seed = 1; seed <= 300; ++seed) {
    const support::Rig rig = support::randomRig(seed, 1);
    plain::Intrinsics camera = support::plainIntrinsics(rig.camera);
    camera.skew = 0.002;
    const plain::Pose pose = support::plainPose(rig.views[0].pose);
    const cv::Mat X = rig.views[0].plainView().objectPoints;
    cv::Mat expectedJacobian;
    const cv::Mat expected =
        plain::projectPoints(X, pose.rvec, pose.tvec, camera, &expectedJacobian);
    cv::Mat pixels;
    cv::Mat jacobian;
    fisheye::projectPoints(X, pixels, pose.rvec, pose.tvec, camera.cameraMatrix(),
                           camera.distortionVector(), camera.skew, jacobian);
    ASSERT_LT(support::relativeDistance(pixels, expected), 1e-13) << "seed " << seed;
    ASSERT_LT(support::largestRelativeDifference(jacobian, expectedJacobian), 1e-11)
        << "seed " << seed;
  }
}

// --- Jacobian

TEST(ProjectionJacobian, HasTwoRowsAPointAndThirteenColumnsOfDoubles) {
  cv::Mat pixels;
  cv::Mat jacobian = cv::Mat::ones(3, 3, CV_8U);
  const std::vector<cv::Point3f> points(5, {1, 2, 3});
  fisheye::projectPoints(points, pixels, kZero, kZero, kK, kD, 0, jacobian);
  EXPECT_EQ(jacobian.size(), cv::Size(13, 10));
  EXPECT_EQ(jacobian.type(), CV_64FC1);
  EXPECT_EQ(pixels.type(), CV_32FC2);
}

TEST(ProjectionJacobian, OnTheAxisTheDistortionColumnsAreZero) {
  const cv::Mat J = jacobianOf({0, 0, 0}, kZero, {0, 0, 2});
  EXPECT_EQ(cv::countNonZero(J.colRange(4, 6)), 0);
  // u = fx Y1/Y3 + cx to first order: du/dT = (fx/2, 0, 0), dv/dT = (0, fy/2, 0).
  EXPECT_EQ(J.at<double>(0, 9), 200);
  EXPECT_EQ(J.at<double>(1, 10), 150);
  EXPECT_EQ(J.at<double>(0, 10), 0);
  EXPECT_EQ(J.at<double>(0, 11), 0);
  EXPECT_EQ(J.at<double>(1, 11), 0);
}

TEST(ProjectionJacobian, FocalAndPrincipalColumnsAreTheirFormulas) {
  const cv::Mat J = jacobianOf({0, 1, 2}, kZero, kZero, 0.25);
  const double yd = distorted(std::atan(0.5));
  EXPECT_NEAR(J.at<double>(0, 0), 0.25 * yd, 1e-15);
  EXPECT_EQ(J.at<double>(0, 1), 0);
  EXPECT_EQ(J.at<double>(1, 0), 0);
  EXPECT_NEAR(J.at<double>(1, 1), yd, 1e-15);
  EXPECT_EQ(J.at<double>(0, 2), 1);
  EXPECT_EQ(J.at<double>(0, 3), 0);
  EXPECT_EQ(J.at<double>(1, 2), 0);
  EXPECT_EQ(J.at<double>(1, 3), 1);
}

TEST(ProjectionJacobian, DistortionColumnsArePowersOfTheAngle) {
  const cv::Mat J = jacobianOf({2, 0, 2}, kZero, kZero);
  const double theta = CV_PI / 4;
  EXPECT_NEAR(J.at<double>(0, 4), 400 * theta * theta, 1e-11);
  EXPECT_NEAR(J.at<double>(0, 5), 400 * theta * theta * theta, 1e-11);
  EXPECT_EQ(J.at<double>(1, 4), 0);
}

TEST(ProjectionJacobian, AlphaColumnIsThereWithoutSkew) {
  const cv::Mat J = jacobianOf({0, 1, 2}, kZero, kZero, 0);
  EXPECT_NEAR(J.at<double>(0, 12), 400 * distorted(std::atan(0.5)), 1e-12);
  EXPECT_EQ(J.at<double>(1, 12), 0);
}

TEST(ProjectionJacobian, WithoutRotationAPointTurnsByTheCrossProduct) {
  // dY/dom = -[X]x, so the column of om_y is the derivative along (X3, 0, -X1).
  const cv::Mat J = jacobianOf({0.3, -0.2, 0.1}, kZero, {0.1, 0.2, 2});
  const cv::Mat dT = J.colRange(9, 12);
  const cv::Mat minusCross = (cv::Mat_<double>(3, 3) << 0, 0.1, 0.2, -0.1, 0, 0.3, -0.2, -0.3, 0);
  EXPECT_LT(cv::norm(J.colRange(6, 9), dT * minusCross, cv::NORM_INF), 1e-11);
}

// The 13 parameters as a column, in the order of the Jacobian's columns.
cv::Mat parametersOf(const plain::Intrinsics& camera, const plain::Pose& pose) {
  cv::Mat column = (cv::Mat_<double>(6, 1) << camera.focalX, camera.focalY, camera.principalX,
                    camera.principalY, camera.k0, camera.k1);
  column.push_back(pose.rvec);
  column.push_back(pose.tvec);
  column.push_back(cv::Mat(1, 1, CV_64F, cv::Scalar(camera.skew)));
  return column;
}

cv::Mat projectedWith(const cv::Mat& X, const cv::Mat& p, cv::Mat* jacobian = nullptr) {
  const cv::Matx33d K(p.at<double>(0), 0, p.at<double>(2), 0, p.at<double>(1), p.at<double>(3), 0,
                      0, 1);
  const cv::Vec2d D(p.at<double>(4), p.at<double>(5));
  cv::Mat pixels;
  cv::Mat unused;
  fisheye::projectPoints(X, pixels, p.rowRange(6, 9), p.rowRange(9, 12), K, D, p.at<double>(12),
                         jacobian != nullptr ? *jacobian : unused);
  return pixels.reshape(1, 2 * pixels.rows);
}

TEST(ProjectionJacobian, AgreesWithAutomaticDifferentiation) {
  for (std::uint64_t seed = 1; seed <= 100; ++seed) {
    const support::Rig rig = support::randomRig(seed, 1);
    plain::Intrinsics camera = support::plainIntrinsics(rig.camera);
    camera.skew = 0.01;
    const cv::Mat p = parametersOf(camera, support::plainPose(rig.views[0].pose));
    cv::Mat jacobian;
    projectedWith(cv::Mat(rig.views[0].objectPoints), p, &jacobian);
    const cv::Mat expected = support::differentiatedProjection(rig.views[0].objectPoints, p);
    EXPECT_LT(support::largestRelativeDifference(jacobian, expected), 1e-10) << "seed " << seed;
  }
}

TEST(ProjectionJacobian, AgreesWithCentralDifferencesOfTheProjection) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const support::Rig rig = support::randomRig(seed, 1);
    const cv::Mat X(rig.views[0].objectPoints);
    const cv::Mat p =
        parametersOf(support::plainIntrinsics(rig.camera), support::plainPose(rig.views[0].pose));
    cv::Mat jacobian;
    projectedWith(X, p, &jacobian);
    const cv::Mat expected = support::centralDifferences(
        [&](const cv::Mat& at) { return projectedWith(X, at); }, p, 1e-3);
    EXPECT_LT(support::largestRelativeDifference(jacobian, expected), 1e-9) << "seed " << seed;
  }
}

// --- Forms of arrays

TEST(ProjectionForms, ThirtyTwoBitPointsGiveTheNarrowedDoubles) {
  const std::vector<cv::Point3f> points = {{0.1f, 0.2f, 1}, {-3, 2, 5}};
  std::vector<cv::Point2f> pixels;
  fisheye::projectPoints(points, pixels, kZero, kZero, kK, kD);
  for (size_t i = 0; i < points.size(); ++i) {
    const cv::Point2d wide = projected(points[i]);
    EXPECT_FLOAT_EQ(pixels.at(i).x, static_cast<float>(wide.x));
    EXPECT_FLOAT_EQ(pixels.at(i).y, static_cast<float>(wide.y));
  }
}

TEST(ProjectionForms, OutputHasTheShapeOfThePoints) {
  for (const cv::Size size : {cv::Size(6, 1), cv::Size(1, 6), cv::Size(3, 2)}) {
    cv::Mat X(size, CV_64FC3);
    for (int i = 0; i < 6; ++i) X.ptr<cv::Vec3d>(i / X.cols)[i % X.cols] = {0.1 * i, 0.2, 1};
    cv::Mat pixels;
    fisheye::projectPoints(X, pixels, kZero, kZero, kK, kD);
    ASSERT_EQ(pixels.size(), size);
    ASSERT_EQ(pixels.type(), CV_64FC2);
    for (int i = 0; i < 6; ++i) {
      const cv::Point2d expected = projected({0.1 * i, 0.2, 1});
      EXPECT_EQ(pixels.ptr<cv::Vec2d>(i / X.cols)[i % X.cols], cv::Vec2d(expected.x, expected.y));
    }
  }
}

TEST(ProjectionForms, PointsInANonContiguousMatrixAreReadInOrder) {
  cv::Mat wide(4, 3, CV_64FC3, cv::Scalar(9, 9, 9));
  for (int i = 0; i < 4; ++i) wide.at<cv::Vec3d>(i, 1) = {0.1 * i, 0.2, 1};
  cv::Mat pixels;
  fisheye::projectPoints(wide.col(1), pixels, kZero, kZero, kK, kD);
  for (int i = 0; i < 4; ++i) {
    const cv::Point2d expected = projected({0.1 * i, 0.2, 1});
    EXPECT_EQ(pixels.at<cv::Vec2d>(i), cv::Vec2d(expected.x, expected.y));
  }
}

TEST(ProjectionForms, PoseAndCameraMayHaveAnyOfTheirShapesAndDepths) {
  const std::vector<cv::Point3d> points = {{1, 2, 3}};
  const cv::Vec3d om(0.125, -0.25, 0.5);
  const cv::Vec3d T(0.5, 1, 2);
  const cv::Point2d expected = projected(points[0], om, T);
  const auto check = [&](cv::InputArray r, cv::InputArray t, cv::InputArray K, cv::InputArray D) {
    std::vector<cv::Point2d> pixels;
    fisheye::projectPoints(points, pixels, r, t, K, D);
    EXPECT_NEAR(pixels.at(0).x, expected.x, 1e-5);
    EXPECT_NEAR(pixels.at(0).y, expected.y, 1e-5);
  };
  check(cv::Mat(om).t(), cv::Mat(T).t(), cv::Mat(kK), cv::Mat(kD));
  check(cv::Mat(1, 1, CV_64FC3, cv::Scalar(om[0], om[1], om[2])), std::vector<double>{0.5, 1, 2},
        kK, cv::Mat(kD).t());
  check(cv::Vec3f(om), T, kK, kD);
  check(om, cv::Vec3f(T), kK, kD);
  check(om, T, cv::Matx33f(kK), cv::Vec2f(kD));
}

TEST(ProjectionForms, NoPointsGiveNoPixels) {
  std::vector<cv::Point2d> pixels(3);
  fisheye::projectPoints(std::vector<cv::Point3d>(), pixels, kZero, kZero, kK, kD);
  EXPECT_TRUE(pixels.empty());
}

TEST(ProjectionForms, HostileNumbersEndTheSameWayEachTime) {
  const double inf = HUGE_VAL;
  const double nan = std::nan("");
  const std::vector<cv::Point3d> points = {
      {inf, 0, 1},      {nan, 1, 1}, {0, 0, inf}, {1, 1, nan}, {1e308, 1e308, 1e-308},
      {-inf, inf, -inf}};
  const auto outcome = [&](const cv::Vec3d& om, const cv::Matx33d& K) {
    return support::outcomeOf([&] {
      cv::Mat pixels;
      cv::Mat jacobian;
      fisheye::projectPoints(points, pixels, om, kZero, K, kD, 0, jacobian);
      return support::bytesOf(pixels) + support::bytesOf(jacobian);
    });
  };
  for (const cv::Vec3d& om : {kZero, cv::Vec3d(nan, 0, 0), cv::Vec3d(1e300, 0, 0)}) {
    EXPECT_EQ(outcome(om, kK), outcome(om, kK));
    EXPECT_EQ(outcome(om, kK * inf), outcome(om, kK * inf));
  }
}

// --- Refusals

struct Arguments {
  cv::Mat objectPoints = cv::Mat::ones(4, 1, CV_64FC3);
  cv::Mat rvec = cv::Mat::zeros(3, 1, CV_64F);
  cv::Mat tvec = cv::Mat::zeros(3, 1, CV_64F);
  cv::Mat K = cv::Mat(kK);
  cv::Mat D = cv::Mat(kD);
  cv::Mat imagePoints = cv::Mat::ones(1, 1, CV_8U);
  cv::Mat jacobian = cv::Mat::ones(1, 1, CV_8U);

  ::testing::AssertionResult refused(const std::string& text) {
    return support::refuses(text, "projectPoints", [&] {
      fisheye::projectPoints(objectPoints, imagePoints, rvec, tvec, K, D, 0, jacobian);
    });
  }
};

const char kObjectText[] = "objectPoints.type() == CV_32FC3 || objectPoints.type() == CV_64FC3";
const char kRvecText[] =
    "_rvec.total() * _rvec.channels() == 3 && (_rvec.depth() == CV_32F || _rvec.depth() == "
    "CV_64F)";
const char kTvecText[] =
    "_tvec.total() * _tvec.channels() == 3 && (_tvec.depth() == CV_32F || _tvec.depth() == "
    "CV_64F)";
const char kContinuousText[] = "_tvec.getMat().isContinuous() && _rvec.getMat().isContinuous()";
const char kCameraText[] =
    "_K.size() == Size(3, 3) && (_K.type() == CV_32F || _K.type() == CV_64F) && _D.type() == "
    "_K.type() && _D.total() == 2";

TEST(ProjectionRefusals, PointsOfAnotherTypeLeaveTheOutputsUnchanged) {
  for (const int type : {CV_64FC2, CV_64FC1, CV_32SC3, CV_8UC3}) {
    Arguments arguments;
    arguments.objectPoints = cv::Mat::ones(4, 1, type);
    EXPECT_TRUE(arguments.refused(kObjectText));
    EXPECT_EQ(arguments.imagePoints.type(), CV_8U);
    EXPECT_EQ(arguments.jacobian.type(), CV_8U);
  }
  Arguments arguments;
  arguments.objectPoints = cv::Mat();
  EXPECT_TRUE(arguments.refused(kObjectText));
}

TEST(ProjectionRefusals, RotationVectorOfAnotherSizeOrDepth) {
  for (const cv::Mat& rvec :
       std::vector<cv::Mat>{cv::Mat::zeros(4, 1, CV_64F), cv::Mat::zeros(3, 1, CV_32S),
                            cv::Mat::zeros(3, 3, CV_64F), cv::Mat()}) {
    Arguments arguments;
    arguments.rvec = rvec;
    EXPECT_TRUE(arguments.refused(kRvecText));
  }
}

TEST(ProjectionRefusals, TranslationOfAnotherSizeOrDepth) {
  for (const cv::Mat& tvec : std::vector<cv::Mat>{cv::Mat::zeros(2, 1, CV_64F),
                                                  cv::Mat::zeros(3, 1, CV_16S), cv::Mat()}) {
    Arguments arguments;
    arguments.tvec = tvec;
    EXPECT_TRUE(arguments.refused(kTvecText));
  }
}

TEST(ProjectionRefusals, PoseThatIsNotContiguous) {
  const cv::Mat wide = cv::Mat::zeros(3, 2, CV_64F);
  Arguments rotation;
  rotation.rvec = wide.col(0);
  EXPECT_TRUE(rotation.refused(kContinuousText));
  Arguments translation;
  translation.tvec = wide.col(1);
  EXPECT_TRUE(translation.refused(kContinuousText));
}

TEST(ProjectionRefusals, CameraMatrixOfAnotherSizeOrType) {
  for (const cv::Mat& K :
       std::vector<cv::Mat>{cv::Mat::eye(3, 4, CV_64F), cv::Mat::eye(3, 3, CV_32S), cv::Mat()}) {
    Arguments arguments;
    arguments.K = K;
    EXPECT_TRUE(arguments.refused(kCameraText));
  }
}

TEST(ProjectionRefusals, DistortionOfAnotherLengthOrTypeThanTheCameraMatrix) {
  for (const cv::Mat& D :
       std::vector<cv::Mat>{cv::Mat::zeros(4, 1, CV_64F), cv::Mat::zeros(1, 1, CV_64F),
                            cv::Mat::zeros(2, 1, CV_32F), cv::Mat()}) {
    Arguments arguments;
    arguments.D = D;
    EXPECT_TRUE(arguments.refused(kCameraText));
  }
}

TEST(ProjectionRefusals, FirstFailedConditionIsTheOneNamed) {
  Arguments arguments;
  arguments.D = cv::Mat();
  arguments.rvec = cv::Mat();
  arguments.tvec = cv::Mat();
  EXPECT_TRUE(arguments.refused(kRvecText));
  arguments.rvec = cv::Mat::zeros(3, 2, CV_64F).col(0);
  EXPECT_TRUE(arguments.refused(kTvecText));
  arguments.tvec = cv::Mat::zeros(3, 1, CV_64F);
  EXPECT_TRUE(arguments.refused(kContinuousText));
}

TEST(ProjectionRefusals, AfterTheFirstConditionThePixelsExistAndTheJacobianDoesNot) {
  Arguments arguments;
  arguments.rvec = cv::Mat();
  EXPECT_TRUE(arguments.refused(kRvecText));
  EXPECT_EQ(arguments.imagePoints.size(), cv::Size(1, 4));
  EXPECT_EQ(arguments.imagePoints.type(), CV_64FC2);
  EXPECT_EQ(arguments.jacobian.type(), CV_8U);
}

// --- With the camera of a record

TEST(RecordProjection, TakesEveryNumberFromTheRecordAndSkewAsAlpha) {
  internal::IntrinsicParams params;
  params.focalLength = {400, 300};
  params.principalPoint = {640, 480};
  params.distortion = kD;
  params.skew = 0.25;
  const cv::Vec3d om(0.1, 0.2, 0.3);
  const cv::Vec3d T(0.1, 0, 2);
  std::vector<cv::Point2d> pixels;
  cv::Mat jacobian;
  internal::projectPoints(std::vector<cv::Point3d>{{1, 2, 3}}, pixels, om, T, params, jacobian);
  const cv::Point2d expected = projected({1, 2, 3}, om, T, 0.25);
  EXPECT_EQ(pixels.at(0), expected);
  EXPECT_EQ(cv::norm(jacobian, jacobianOf({1, 2, 3}, om, T, 0.25), cv::NORM_INF), 0);
}

TEST(RecordProjection, NeedsNoJacobian) {
  internal::IntrinsicParams params;
  params.focalLength = {400, 300};
  cv::Mat pixels;
  internal::projectPoints(std::vector<cv::Point3f>{{1, 2, 3}}, pixels, kZero, kZero, params,
                          cv::noArray());
  EXPECT_EQ(pixels.type(), CV_32FC2);
}

TEST(RecordProjection, RefusesPointsThatAreEmptyOrOfAnotherType) {
  for (const cv::Mat& points :
       std::vector<cv::Mat>{cv::Mat(), cv::Mat(0, 1, CV_64FC3), cv::Mat(4, 1, CV_64FC2)}) {
    cv::Mat pixels = cv::Mat::ones(1, 1, CV_8U);
    EXPECT_TRUE(
        support::refuses("!objectPoints.empty() && (objectPoints.type() == CV_32FC3 || "
                         "objectPoints.type() == CV_64FC3)",
                         "projectPoints", [&] {
                           internal::projectPoints(points, pixels, kZero, kZero,
                                                   internal::IntrinsicParams(), cv::noArray());
                         }));
    EXPECT_EQ(pixels.type(), CV_8U);
  }
}

TEST(ProjectionForms, ColumnOfPointsFillsAVectorOfPixels) {
  const cv::Mat points =
      (cv::Mat_<cv::Vec3d>(3, 1) << cv::Vec3d(0, 0, 2), cv::Vec3d(1, 0, 1), cv::Vec3d(0, 1, 1));
  std::vector<cv::Point2d> pixels;
  fisheye::projectPoints(points, pixels, cv::Vec3d(), cv::Vec3d(), cv::Matx33d::eye(),
                         cv::Vec2d(0, 0));
  ASSERT_EQ(pixels.size(), 3U);  // an equidistant lens of focal length 1 sees 45 degrees at pi/4
  EXPECT_EQ(pixels[0], cv::Point2d(0, 0));
  EXPECT_NEAR(pixels[1].x, CV_PI / 4, 1e-15);
  EXPECT_NEAR(pixels[2].y, CV_PI / 4, 1e-15);
}

TEST(ProjectionForms, OutputMayBeTheInput) {
  cv::Mat points(1, 8, CV_64FC3, cv::Scalar(1, 0, 1));
  fisheye::projectPoints(points, points, cv::Vec3d(), cv::Vec3d(), cv::Matx33d::eye(),
                         cv::Vec2d(0, 0));
  ASSERT_EQ(points.type(), CV_64FC2);
  for (int i = 0; i < 8; ++i) {
    EXPECT_NEAR(points.at<cv::Vec2d>(i)[0], CV_PI / 4, 1e-15);
    EXPECT_EQ(points.at<cv::Vec2d>(i)[1], 0.0);
  }
}

}  // namespace
