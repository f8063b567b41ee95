// The whole calibration on synthetic cameras.
#include "robust/robust_calibration.h"

#include <gtest/gtest.h>

#include <cmath>

#include "robust/bed_error.h"
#include "robust/views.h"

using namespace fisheye_calibration;
using robust::RobustStatus;

namespace {

using robust_tests::Scene;

void expectTruth(const robust::RobustCalibration& result, const support::Rig& rig) {
  ASSERT_EQ(result.status, RobustStatus::kSolved);
  const cv::Vec6d truth = robust_tests::columnOf(robust_tests::cameraOf(rig.camera));
  const cv::Vec6d found = robust_tests::columnOf(result.camera);
  for (int i = 0; i < 6; ++i) {
    EXPECT_NEAR(found[i], truth[i], 1e-8 * std::abs(truth[i])) << i;
  }
  for (std::size_t j = 0; j < rig.views.size(); ++j) {
    EXPECT_LT(cv::norm(result.poses[j].T - rig.views[j].pose.translation),
              1e-8 * cv::norm(rig.views[j].pose.translation));
    EXPECT_LT(cv::norm(result.poses[j].om - rig.views[j].pose.rotation), 1e-8);
  }
}

TEST(RobustCalibration, NoiseFreePointsGiveTheTruthToEightDigits) {
  robust::RobustOptions options;
  options.priors = false;
  for (std::uint64_t seed = 1; seed <= 10; ++seed) {
    for (const int views : {1, 3}) {
      SCOPED_TRACE(testing::Message() << "seed " << seed << ", views " << views);
      const support::Rig rig = support::randomRig(seed, views);
      expectTruth(
          robust::calibrateRobustly(robust_tests::viewPoints(rig), rig.camera.imageSize, options),
          rig);
    }
  }
}

TEST(RobustCalibration, AnyStartGivesTheSameResult) {
  const support::Rig rig = support::randomRig(3, 2, 0.4);
  const auto views = robust_tests::viewPoints(rig);
  const auto usual = robust::calibrateRobustly(views, rig.camera.imageSize);
  for (const double factor : {0.75, 1.33}) {
    robust::RobustOptions options;
    options.startFocalFactor = factor;
    const auto other = robust::calibrateRobustly(views, rig.camera.imageSize, options);
    ASSERT_EQ(other.status, RobustStatus::kSolved);
    EXPECT_NEAR(other.camera.fx, usual.camera.fx, 1e-6 * usual.camera.fx);
    EXPECT_NEAR(other.camera.k1, usual.camera.k1, 1e-6);
    EXPECT_NEAR(other.rms, usual.rms, 1e-9);
  }
}

TEST(RobustCalibration, TwoRunsAgreeToTheBit) {
  const support::Rig rig = support::randomRig(4, 2, 0.4);
  auto views = robust_tests::viewPoints(rig);
  views[0].image.x[5] += 30;  // so that the search for wrong points runs, too
  const auto a = robust::calibrateRobustly(views, rig.camera.imageSize);
  const auto b = robust::calibrateRobustly(views, rig.camera.imageSize);
  EXPECT_EQ(a.camera.fx, b.camera.fx);
  EXPECT_EQ(a.poses[1].T, b.poses[1].T);
  EXPECT_EQ(cv::norm(a.covariance[1] - b.covariance[1]), 0);
}

// Spread of the estimates over their predicted standard deviation, from 300 noisy copies: 1 within
// 4/sqrt(600) = 16 %.
TEST(RobustCalibration, WhiteNoiseOptionPredictsTheSpreadOfTheEstimates) {
  const Scene scene;
  robust::RobustOptions options;
  options.priors = false;
  options.noiseKind = robust::NoiseKind::kWhite;
  const cv::Vec6d truth = robust_tests::columnOf(robust_tests::cameraOf(scene.camera));
  cv::Vec6d squares;
  double variance = 0;
  constexpr int kCopies = 300;
  for (int k = 0; k < kCopies; ++k) {
    const auto result = robust::calibrateRobustly(
        {scene.seen(0.2, static_cast<std::uint64_t>(k) + 1)}, scene.camera.imageSize, options);
    ASSERT_EQ(result.status, RobustStatus::kSolved);
    const cv::Vec6d error = robust_tests::columnOf(result.camera) - truth;
    for (int i = 0; i < 6; ++i) {
      squares[i] += error[i] * error[i] / result.covariance[0](i, i);
    }
    variance += result.noiseSigma * result.noiseSigma;
  }
  for (int i = 0; i < 6; ++i) {
    EXPECT_NEAR(std::sqrt(squares[i] / kCopies), 1, 0.16) << i;
  }
  EXPECT_NEAR(std::sqrt(variance / kCopies), 0.2, 0.2 * 0.02);
}

// Loose for white noise, never short: the worst error on the bed stays below the worst bound.
TEST(RobustCalibration, BoundCoversTheErrorsOfWhiteNoise) {
  const Scene scene;
  const robust::BedView truth{
      robust_tests::cameraOf(scene.camera), robust_tests::poseOf(scene.pose), {}};
  std::vector<cv::Point2d> grid;
  for (double x = -40; x <= 440; x += 40) {
    for (double y = -40; y <= 360; y += 40) {
      grid.emplace_back(x, y);
    }
  }
  double closest = 0;
  for (std::uint64_t seed = 1; seed <= 100; ++seed) {
    const auto result = robust::calibrateRobustly({scene.seen(0.3, seed)}, scene.camera.imageSize);
    ASSERT_EQ(result.status, RobustStatus::kSolved);
    const robust::BedView found{result.camera, result.poses[0], result.covariance[0]};
    const std::vector<double> errors =
        robust::judgedBedErrors(truth, found.camera, found.pose, grid);
    const std::vector<double> bounds = robust::bedBounds(found, grid);
    for (std::size_t i = 0; i < grid.size(); ++i) {
      closest = std::max(closest, errors[i] / bounds[i]);
    }
  }
  EXPECT_LT(closest, 1);
  EXPECT_GT(closest, 0.1);
}

TEST(RobustCalibration, HeldLensLeavesOnlyThePose) {
  const Scene scene;
  robust::RobustOptions options;
  options.heldLens = robust::HeldLens{robust_tests::cameraOf(scene.camera), {}};
  const auto exact = robust::calibrateRobustly({scene.seen(0, 1)}, scene.camera.imageSize, options);
  ASSERT_EQ(exact.status, RobustStatus::kSolved);
  EXPECT_LT(cv::norm(exact.poses[0].T - scene.pose.translation), 1e-9);
  EXPECT_EQ(exact.camera.fx, scene.camera.fx);
  EXPECT_EQ(exact.camera.k1, scene.camera.k1);

  const std::vector<solver::ViewPoints> noisy{scene.seen(0.3, 1)};
  const auto certain = robust::calibrateRobustly(noisy, scene.camera.imageSize, options);
  EXPECT_EQ(certain.covariance[0](0, 0), 0);
  EXPECT_GT(certain.covariance[0](6, 6), 0);
  options.heldLens->covariance = cv::Matx66d::diag({25, 25, 4, 4, 1e-4, 1e-4});
  const auto uncertain = robust::calibrateRobustly(noisy, scene.camera.imageSize, options);
  EXPECT_EQ(uncertain.poses[0].T, certain.poses[0].T);
  EXPECT_EQ(uncertain.covariance[0](0, 0), 25);
  EXPECT_GT(uncertain.covariance[0](11, 11), 2 * certain.covariance[0](11, 11));
}

// theta - 0.33 theta^3 turns at 1.005 rad. A point beyond falls on the picture of one within.
TEST(RobustCalibration, PointsBeyondTheTurningAngleAreRefused) {
  Scene scene;
  scene.camera.k0 = 0;
  scene.camera.k1 = -0.33;
  robust::RobustOptions options;
  options.heldLens = robust::HeldLens{robust_tests::cameraOf(scene.camera), {}};
  for (const double distance : {110.0, 120.0, 135.0, 260.0}) {
    scene.pose = support::poseOver(scene.bed, distance, 0, 0, 0);
    const bool folds = std::atan(200 / distance) > 1 / std::sqrt(3 * 0.33);  // at the corners
    const auto result =
        robust::calibrateRobustly({scene.seen(0, 1)}, scene.camera.imageSize, options);
    EXPECT_EQ(result.status, folds ? RobustStatus::kFoldedLens : RobustStatus::kSolved) << distance;
  }
}

solver::ViewPoints chosen(const solver::ViewPoints& all, const std::vector<std::size_t>& indices) {
  solver::ViewPoints view;
  for (const std::size_t i : indices) {
    view.X.push_back(all.X[i]);
    view.Y.push_back(all.Y[i]);
    view.Z.push_back(0);
    view.image.x.push_back(all.image.x[i]);
    view.image.y.push_back(all.image.y[i]);
  }
  return view;
}

void expectAssumedNoise(const robust::RobustCalibration& result) {
  ASSERT_EQ(result.status, RobustStatus::kSolved);
  EXPECT_TRUE(result.noiseAssumed);
  EXPECT_GE(result.noiseSigma, 0.5);
  const double bound =
      robust::bedBounds({result.camera, result.poses[0], result.covariance[0]}, {{200, 160}})[0];
  EXPECT_TRUE(bound > 0 && std::isfinite(bound));
}

TEST(RobustCalibration, FewPointsAssumeTheNoise) {
  const Scene scene;
  const solver::ViewPoints all = scene.seen(0.2, 1);
  expectAssumedNoise(robust::calibrateRobustly({chosen(all, {0, 4, 8, 27, 35, 54, 58, 62})},
                                               scene.camera.imageSize));
  robust::RobustOptions options;
  options.heldLens = robust::HeldLens{robust_tests::cameraOf(scene.camera), {}};
  expectAssumedNoise(
      robust::calibrateRobustly({chosen(all, {0, 8, 54, 62})}, scene.camera.imageSize, options));
}

// Six points give twelve equations for twelve unknowns: nothing is left to estimate the noise from.
TEST(RobustCalibration, SixPointsDoNotDetermineALensAndSevenDo) {
  const Scene scene;
  const solver::ViewPoints all = scene.seen(0.2, 1);
  for (const bool priors : {false, true}) {
    robust::RobustOptions options;
    options.priors = priors;
    EXPECT_EQ(robust::calibrateRobustly({chosen(all, {0, 8, 27, 35, 54, 62})},
                                        scene.camera.imageSize, options)
                  .status,
              RobustStatus::kTooFewPoints);
  }
  EXPECT_EQ(
      robust::calibrateRobustly({chosen(all, {0, 8, 27, 31, 35, 54, 62})}, scene.camera.imageSize)
          .status,
      RobustStatus::kSolved);
}

}  // namespace
