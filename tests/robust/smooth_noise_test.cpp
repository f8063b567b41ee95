// Noise and covariance against dense matrices.
#include "robust/smooth_noise.h"

#include <gtest/gtest.h>

#include <utility>

#include "robust/fit.h"
#include "robust/planned_views.h"
#include "robust/views.h"
#include "support/derivatives.h"

using namespace fisheye_calibration;
using robust_tests::largestDifference;
using robust_tests::ofView;

namespace {

struct Case {
  std::vector<solver::ViewPoints> views;
  cv::Size imageSize;
  robust::FitSettings settings;
  robust::Fit fit;
  plain::Uncertainty expected;
};

Case solvedCase(int viewCount, bool priors, robust::NoiseKind noise, bool holdLens = false,
                const cv::Matx66d& heldLensCovariance = cv::Matx66d::zeros()) {
  const support::Rig rig = support::randomRig(7, viewCount, 0.3);
  Case c{robust_tests::viewPoints(rig),
         rig.camera.imageSize,
         {robust::LensPrior(rig.camera.imageSize, priors), noise, holdLens, heldLensCovariance},
         {},
         {}};
  robust::Bundle start{robust_tests::cameraOf(rig.camera), {}};
  for (const support::RigView& view : rig.views) {
    start.poses.push_back(robust_tests::poseOf(view.pose));
  }
  c.fit = robust::fitWithNoise(c.views, c.settings, start);
  plain::UncertainProblem problem =
      robust_tests::plainProblem(c.views, c.imageSize, c.fit.bundle.camera, c.fit.bundle.poses);
  problem.priors = priors;
  problem.whiteNoise = noise == robust::NoiseKind::kWhite;
  problem.holdLens = holdLens;
  problem.heldLensCovariance = heldLensCovariance;
  c.expected = plain::uncertainty(problem);
  return c;
}

// No direction lowers the objective: each component of the gradient, in units of the noise that it
// has by chance.
void expectStationary(const Case& c) {
  for (int i = 0; i < c.expected.gradient.rows; ++i) {
    const double usual = std::sqrt(c.expected.variance * c.expected.M.at<double>(i, i));
    EXPECT_LT(std::abs(c.expected.gradient.at<double>(i)), 1e-6 * usual) << i;
  }
}

void expectDenseResults(const Case& c) {
  EXPECT_TRUE(c.fit.converged);
  expectStationary(c);
  EXPECT_LT(largestDifference(robust_tests::dense(c.fit.equations.M), c.expected.M), 1e-11);
  EXPECT_LT(largestDifference(robust_tests::dense(c.fit.noise.B), c.expected.B), 1e-11);
  EXPECT_NEAR(c.fit.equations.rss, c.expected.rss, 1e-11 * c.expected.rss);
  EXPECT_NEAR(c.fit.noise.t, c.expected.t, 1e-9 * c.expected.t);
  EXPECT_NEAR(c.fit.noise.variance, c.expected.variance, 1e-9 * c.expected.variance);
  EXPECT_NEAR(c.fit.noise.kappa, c.expected.kappa, 1e-9 * c.expected.kappa);
  const auto Sigma = robust::covarianceOf(c.views, c.settings, c.fit);
  ASSERT_TRUE(Sigma);
  for (std::size_t j = 0; j < c.views.size(); ++j) {
    EXPECT_LT(
        largestDifference(cv::Mat((*Sigma)[j]), ofView(c.expected.Sigma, static_cast<int>(j))),
        1e-9);
  }
}

TEST(SmoothNoise, CovarianceIsThatOfDenseMatrices) {
  for (const int views : {1, 3}) {
    for (const bool priors : {false, true}) {
      SCOPED_TRACE(testing::Message() << views << " views, priors " << priors);
      expectDenseResults(solvedCase(views, priors, robust::NoiseKind::kSmooth));
      expectDenseResults(solvedCase(views, priors, robust::NoiseKind::kWhite));
    }
  }
}

TEST(SmoothNoise, CovarianceOfPosesAloneIsThatOfDenseMatrices) {
  expectDenseResults(solvedCase(2, false, robust::NoiseKind::kSmooth, true));
  expectDenseResults(solvedCase(2, false, robust::NoiseKind::kWhite, true));
}

TEST(SmoothNoise, CovarianceOfAHeldLensIsThatOfDenseMatrices) {
  cv::Matx66d L = cv::Matx66d::diag({4, 4, 1, 1, 1e-5, 1e-5});
  L(0, 1) = L(1, 0) = 3.6;
  L(0, 5) = L(5, 0) = -4e-3;
  for (const int views : {1, 3}) {
    for (const auto noise : {robust::NoiseKind::kSmooth, robust::NoiseKind::kWhite}) {
      const Case c = solvedCase(views, false, noise, true, L);
      expectDenseResults(c);
      EXPECT_EQ(c.expected.Sigma.at<double>(0, 1), 3.6);
    }
  }
}

// Without priors and with white noise: s^2 (J^T J)^-1, s^2 = rss/(rows - unknowns).
TEST(SmoothNoise, WhiteNoiseGivesThePlainCovariance) {
  const Case c = solvedCase(1, false, robust::NoiseKind::kWhite);
  const double rows = 2.0 * static_cast<double>(c.views[0].size());
  EXPECT_NEAR(c.fit.noise.variance, c.fit.equations.rss / (rows - 12), 1e-12);
  const cv::Mat plain = c.fit.noise.variance * c.expected.M.inv(cv::DECOMP_SVD);
  const auto Sigma = robust::covarianceOf(c.views, c.settings, c.fit);
  ASSERT_TRUE(Sigma);
  EXPECT_LT(largestDifference(cv::Mat((*Sigma)[0]), plain), 1e-6);
}

// sum_ij Omega_ij J_i^T J_j of the points of one view, all pairs.
cv::Mat fullProduct(const std::vector<cv::Point3d>& points, const lens::Camera& camera,
                    const lens::Pose& pose) {
  cv::Mat column(13, 1, CV_64F, cv::Scalar(0));
  cv::Mat(robust_tests::columnOf(camera)).copyTo(column.rowRange(0, 6));
  cv::Mat(robust_tests::columnOf(pose)).copyTo(column.rowRange(6, 12));
  const cv::Mat J = support::differentiatedProjection(points, column).colRange(0, 12);
  const double length = 0.25 * cv::norm(points.back() - points.front());
  cv::Mat product = cv::Mat::zeros(12, 12, CV_64F);
  for (int i = 0; i < static_cast<int>(points.size()); ++i) {
    cv::Mat sum = 0.1 * J.rowRange(2 * i, 2 * i + 2);  // sum over j of Omega_ij J_j
    for (int j = 0; j < static_cast<int>(points.size()); ++j) {
      const double distance =
          cv::norm(points[static_cast<std::size_t>(i)] - points[static_cast<std::size_t>(j)]);
      const double correlation = 0.9 * std::exp(-distance * distance / (2 * length * length));
      for (int k = 0; k < 12; ++k) {
        sum.at<double>(0, k) += correlation * J.at<double>(2 * j, k);
        sum.at<double>(1, k) += correlation * J.at<double>(2 * j + 1, k);
      }
    }
    product += J.rowRange(2 * i, 2 * i + 2).t() * sum;
  }
  return product;
}

// The sum over a part of the points, scaled, is about the sum over all, however long the rows of
// the target are.
TEST(SmoothNoise, ThinnedSumIsCloseToTheFullOne) {
  const lens::Camera camera = robust_tests::cameraOf(support::RigCamera());
  for (const auto& [columns, rows] : {std::pair(57, 43), std::pair(3, 1990), std::pair(1999, 2)}) {
    const double spacingX = 330.0 / (columns - 1);
    const double spacingY = 250.0 / (rows - 1);
    std::vector<cv::Point3d> points;
    for (int i = 0; i < columns * rows; ++i) {
      points.emplace_back(spacingX * (i % columns), spacingY * (i / columns), 0);
    }
    const lens::Pose pose{{0.3, -0.2, 0.1}, {-165, -125, 230}};
    const robust::ViewMatrix B = robust::smoothProduct(
        robust_tests::viewPoints(points, std::vector<cv::Point2d>(points.size())), camera, pose);
    EXPECT_LT(largestDifference(cv::Mat(B), fullProduct(points, camera, pose)), 0.005)
        << columns << 'x' << rows;
  }
}

// The covariance of planned views is that of a fit at the same poses with the same noise.
TEST(PlannedViews, CovarianceIsThatOfDenseMatrices) {
  const support::Rig rig = support::randomRig(9, 2);
  const cv::Size imageSize(1280, 1280);
  lens::Camera camera = robust_tests::cameraOf(rig.camera);
  camera.cy += 160;  // the points fill the picture's inscribed circle
  const std::vector<solver::ViewPoints> views = robust_tests::viewPoints(rig);
  std::vector<robust::PlannedView> planned;
  std::vector<lens::Pose> poses;
  for (std::size_t j = 0; j < views.size(); ++j) {
    poses.push_back(robust_tests::poseOf(rig.views[j].pose));
    planned.push_back({poses[j], solver::PlanarPoints(views[j].size())});
    planned[j].target.x = views[j].X;
    planned[j].target.y = views[j].Y;
  }
  plain::UncertainProblem problem = robust_tests::plainProblem(views, imageSize, camera, poses);
  problem.variance = 0.4 * 0.4;
  const plain::Uncertainty expected = plain::uncertainty(problem);
  const auto Sigma = robust::plannedCovariance(camera, planned, imageSize, 0.4);
  ASSERT_TRUE(Sigma);
  for (int j = 0; j < 2; ++j) {
    EXPECT_LT(largestDifference(cv::Mat((*Sigma)[static_cast<std::size_t>(j)]),
                                ofView(expected.Sigma, j)),
              1e-9);
  }
}

}  // namespace
