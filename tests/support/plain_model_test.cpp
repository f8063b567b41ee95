#include "support/plain_model.h"

#include <gtest/gtest.h>

#include "support/derivatives.h"
#include "support/synthetic_rig.h"

namespace {

const cv::Mat kCamera = (cv::Mat_<double>(3, 3) << 400, 0, 640, 0, 300, 480, 0, 0, 1);
const cv::Mat kNoTurn = cv::Mat::zeros(3, 1, CV_64F);

cv::Mat distortion(double k0, double k1) { return (cv::Mat_<double>(2, 1) << k0, k1); }

TEST(PlainProjection, PointAtFortyFiveDegrees) {
  // (1, 0, 1): theta = pi/4, theta_d = theta + 0.1 theta^2 - 0.2 theta^3.
  const cv::Mat X(1, 1, CV_64FC3, cv::Scalar(1, 0, 1));
  const cv::Mat pixel =
      plain::projectPoints(X, kNoTurn, kNoTurn, kCamera, distortion(0.1, -0.2), 0);
  const double theta = CV_PI / 4;
  const double thetaD = theta + 0.1 * theta * theta - 0.2 * theta * theta * theta;
  EXPECT_NEAR(pixel.at<cv::Vec2d>(0)[0], 640 + 400 * thetaD, 1e-12);
  EXPECT_EQ(pixel.at<cv::Vec2d>(0)[1], 480);
}

TEST(PlainProjection, QuarterTurnAboutZ) {
  const cv::Mat X(1, 1, CV_64FC3, cv::Scalar(1, 0, 1));
  const cv::Mat turn = (cv::Mat_<double>(3, 1) << 0, 0, CV_PI / 2);
  const cv::Mat pixel = plain::projectPoints(X, turn, kNoTurn, kCamera, distortion(0, 0), 0.5);
  EXPECT_NEAR(pixel.at<cv::Vec2d>(0)[0], 640 + 400 * 0.5 * CV_PI / 4, 1e-12);
  EXPECT_NEAR(pixel.at<cv::Vec2d>(0)[1], 480 + 300 * CV_PI / 4, 1e-12);
}

TEST(PlainProjection, JacobianAgreesWithDualNumbers) {
  for (std::uint64_t seed = 1; seed <= 50; ++seed) {
    const support::Rig rig = support::randomRig(seed, 1);
    const support::RigView& view = rig.views[0];
    plain::Intrinsics camera = support::plainIntrinsics(rig.camera);
    camera.skew = 0.01;
    const plain::Pose pose = support::plainPose(view.pose);
    cv::Mat jacobian;
    plain::projectPoints(cv::Mat(view.objectPoints), pose.rvec, pose.tvec, camera, &jacobian);
    cv::Mat column = (cv::Mat_<double>(6, 1) << camera.focalX, camera.focalY, camera.principalX,
                      camera.principalY, camera.k0, camera.k1);
    column.push_back(pose.rvec);
    column.push_back(pose.tvec);
    column.push_back(cv::Mat(1, 1, CV_64F, cv::Scalar(camera.skew)));
    const cv::Mat expected = support::differentiatedProjection(view.objectPoints, column);
    EXPECT_LT(support::largestRelativeDifference(jacobian, expected), 1e-11) << "seed " << seed;
  }
}

TEST(PlainUndistortion, UndoesTheProjection) {
  support::Random random(3);
  const cv::TermCriteria criteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 20, 1e-13);
  for (int i = 0; i < 200; ++i) {
    const double x = random.uniform(-2, 2);
    const double y = random.uniform(-2, 2);
    const cv::Mat X(1, 1, CV_64FC3, cv::Scalar(x, y, 1));
    const cv::Mat D = distortion(0.02, -0.03);
    const cv::Mat pixel = plain::projectPoints(X, kNoTurn, kNoTurn, kCamera, D, 0);
    const cv::Mat back = plain::undistortPoints(pixel, kCamera, D, cv::Mat(), cv::Mat(), criteria);
    EXPECT_NEAR(back.at<cv::Vec2d>(0)[0], x, 1e-11);
    EXPECT_NEAR(back.at<cv::Vec2d>(0)[1], y, 1e-11);
  }
}

TEST(PlainUndistortion, NormalisedPixelsHaveTheSkewUndone) {
  plain::Intrinsics camera;
  camera.focalX = 400;
  camera.focalY = 300;
  camera.skew = 0.01;
  // yd = 0.3, x' = 0.4 + 0.01 * 0.3; theta = theta_d = 0.5.
  const cv::Mat pixel(1, 1, CV_64FC2, cv::Scalar(400 * 0.403, 300 * 0.3));
  const cv::Vec2d ideal = plain::normalizePixels(pixel, camera).at<cv::Vec2d>(0);
  EXPECT_NEAR(ideal[0], std::tan(0.5) * 0.8, 1e-14);
  EXPECT_NEAR(ideal[1], std::tan(0.5) * 0.6, 1e-14);
}

}  // namespace
