#include "robust/point_rows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>

#include "robust/lens_prior.h"
#include "robust/views.h"
#include "support/derivatives.h"

using namespace fisheye_calibration;

namespace {

lens::Camera cameraAt(const cv::Mat& x) {
  return {.fx = x.at<double>(0),
          .fy = x.at<double>(1),
          .cx = x.at<double>(2),
          .cy = x.at<double>(3),
          .k0 = x.at<double>(4),
          .k1 = x.at<double>(5)};
}

lens::Pose poseAt(const cv::Mat& x) {
  return {{x.at<double>(6), x.at<double>(7), x.at<double>(8)},
          {x.at<double>(9), x.at<double>(10), x.at<double>(11)}};
}

TEST(PointRows, DerivativesAreCentralDifferencesOfThePlainProjection) {
  support::Random random(11);
  for (int round = 0; round < 20; ++round) {
    const double values[] = {
        random.uniform(300, 700), random.uniform(300, 700),  random.uniform(500, 700),
        random.uniform(400, 500), random.uniform(-0.1, 0.1), random.uniform(-0.1, 0.1),
        random.uniform(-1, 1),    random.uniform(-1, 1),     random.uniform(-3, 3),
        random.uniform(-50, 50),  random.uniform(-50, 50),   random.uniform(250, 400)};
    const cv::Mat x = cv::Mat(12, 1, CV_64F, const_cast<double*>(values)).clone();
    const double X = random.uniform(-80, 80);
    const double Y = random.uniform(-80, 80);
    const auto project = [&](const cv::Mat& at) {
      cv::Mat column(13, 1, CV_64F, cv::Scalar(0));
      at.copyTo(column.rowRange(0, 12));
      const auto pixel =
          support::projectPoint<double>({X, Y, 0}, support::projectionParameters(column));
      return cv::Mat((cv::Mat_<double>(2, 1) << pixel[0], pixel[1]));
    };
    const robust::PointRows rows =
        robust::pointRows(robust::PosedCamera(cameraAt(x), poseAt(x)), X, Y, 0);
    cv::Mat J(2, 12, CV_64F);
    cv::Mat(rows.u.t()).copyTo(J.row(0));
    cv::Mat(rows.v.t()).copyTo(J.row(1));
    EXPECT_LT(support::largestRelativeDifference(J, support::centralDifferences(project, x)), 1e-8);
    EXPECT_LT(cv::norm(cv::Mat(rows.pixel), project(x)), 1e-10);
  }
}

// Behind the camera the angle goes on: theta = atan2(|(x, y)|, z).
TEST(PointRows, DerivativesGoOnBehindTheCamera) {
  const cv::Mat x =
      (cv::Mat_<double>(12, 1) << 400, 410, 640, 480, 0.02, -0.03, 0.3, -0.2, 0.5, 20, -30, -60);
  const auto project = [](const cv::Mat& at) {
    cv::Matx33d R;
    cv::Rodrigues(poseAt(at).om, R);
    const cv::Vec3d P = R * cv::Vec3d(50, 70, 0) + poseAt(at).T;
    const double rho = std::hypot(P[0], P[1]);
    const double theta = std::atan2(rho, P[2]);
    const double r =
        theta + at.at<double>(4) * theta * theta + at.at<double>(5) * std::pow(theta, 3);
    return cv::Mat((cv::Mat_<double>(2, 1) << at.at<double>(0) * r * P[0] / rho + at.at<double>(2),
                    at.at<double>(1) * r * P[1] / rho + at.at<double>(3)));
  };
  const robust::PointRows rows =
      robust::pointRows(robust::PosedCamera(cameraAt(x), poseAt(x)), 50, 70, 0);
  EXPECT_LT(rows.depth, 0);
  cv::Mat J(2, 12, CV_64F);
  cv::Mat(rows.u.t()).copyTo(J.row(0));
  cv::Mat(rows.v.t()).copyTo(J.row(1));
  EXPECT_LT(support::largestRelativeDifference(J, support::centralDifferences(project, x)), 1e-8);
  EXPECT_LT(cv::norm(cv::Mat(rows.pixel), project(x)), 1e-10);
}

TEST(PointRows, OnTheAxisThePixelIsThePrincipalPoint) {
  const robust::PointRows rows = robust::pointRows(
      robust::PosedCamera({.fx = 400, .fy = 410, .cx = 640, .cy = 480}, {{0, 0, 0}, {0, 0, 200}}),
      0, 0, 0);
  EXPECT_EQ(rows.pixel, cv::Vec2d(640, 480));
  EXPECT_DOUBLE_EQ(rows.u[9], 2);      // fx/z
  EXPECT_DOUBLE_EQ(rows.v[10], 2.05);  // fy/z
  EXPECT_EQ(rows.u[4], 0);
}

TEST(LensPrior, CountsDeviationsInTheirUsualSizes) {
  const robust::LensPrior prior({1280, 960}, true);
  // 0.03 * 1280 = 38.4 px around (639.5, 479.5)
  const cv::Vec<double, 5> h = prior.deviations({.fx = 400 * std::exp(0.02),
                                                 .fy = 400,
                                                 .cx = 639.5 + 38.4,
                                                 .cy = 479.5 - 76.8,
                                                 .k0 = 0.15,
                                                 .k1 = -0.4});
  const double expected[] = {2, 1, -2, 3, -4};
  for (int i = 0; i < 5; ++i) {
    EXPECT_NEAR(h[i], expected[i], 1e-12);
  }
}

TEST(LensPrior, InformationIsThatOfItsCentralDifferences) {
  const robust::LensPrior prior({1280, 960}, true);
  const cv::Mat x = (cv::Mat_<double>(6, 1) << 411, 405, 630, 490, 0.03, -0.05);
  const auto deviations = [&](const cv::Mat& at) {
    return cv::Mat(prior.deviations(cameraAt(at)));
  };
  const cv::Mat d = support::centralDifferences(deviations, x);
  EXPECT_LT(support::largestRelativeDifference(cv::Mat(prior.information(cameraAt(x))), d.t() * d),
            1e-9);
  EXPECT_EQ(cv::norm(robust::LensPrior({1280, 960}, false).information(cameraAt(x))), 0);
}

}  // namespace
