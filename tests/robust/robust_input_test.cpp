// Input that a calibration refuses, and numbers at the limits of what it can compute with.
#include "robust/robust_input.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "robust/robust_calibration.h"
#include "robust/views.h"

using namespace fisheye_calibration;
using robust::RobustStatus;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class HostileInput : public testing::Test {
 protected:
  RobustStatus statusOf(const std::vector<solver::ViewPoints>& views,
                        const robust::RobustOptions& options = {}) const {
    return robust::calibrateRobustly(views, scene_.camera.imageSize, options).status;
  }

  robust_tests::Scene scene_;
  solver::ViewPoints good_ = scene_.seen(0.2, 1);
};

TEST_F(HostileInput, MissingOrUnpairedListsAreBadInput) {
  EXPECT_EQ(statusOf({}), RobustStatus::kBadInput);
  EXPECT_EQ(robust::calibrateRobustly({good_}, {0, 960}).status, RobustStatus::kBadInput);
  EXPECT_EQ(robust::calibrateRobustly({good_}, {1280, -1}).status, RobustStatus::kBadInput);
  solver::ViewPoints view = good_;
  view.image.y.pop_back();
  const auto result = robust::calibrateRobustly({good_, view}, scene_.camera.imageSize);
  EXPECT_EQ(result.status, RobustStatus::kBadInput);
  EXPECT_EQ(result.refusedView, 1U);
}

TEST_F(HostileInput, NumbersThatAreNotFiniteAreBadInput) {
  for (const double bad : {kNaN, std::numeric_limits<double>::infinity()}) {
    solver::ViewPoints target = good_;
    target.X[3] = bad;
    EXPECT_EQ(statusOf({target}), RobustStatus::kBadInput);
    solver::ViewPoints pixel = good_;
    pixel.image.y[3] = bad;
    EXPECT_EQ(statusOf({pixel}), RobustStatus::kBadInput);
    robust::RobustOptions options;
    options.startFocalFactor = bad;
    EXPECT_EQ(statusOf({good_}, options), RobustStatus::kBadInput);
    options = {};
    options.heldLens = robust::HeldLens{{.fx = bad, .fy = 400}, {}};
    EXPECT_EQ(statusOf({good_}, options), RobustStatus::kBadInput);
  }
}

TEST_F(HostileInput, TargetsOffTheBedAreBadInput) {
  solver::ViewPoints view = good_;
  view.Z[0] = 5;
  EXPECT_EQ(statusOf({view}), RobustStatus::kBadInput);
}

TEST_F(HostileInput, FewerThanFourPointsAreTooFew) {
  solver::ViewPoints view = good_;
  for (auto* list : {&view.X, &view.Y, &view.Z, &view.image.x, &view.image.y}) {
    list->resize(3);
  }
  EXPECT_EQ(statusOf({view}), RobustStatus::kTooFewPoints);
  const solver::ViewPoints none;
  EXPECT_EQ(statusOf({none}), RobustStatus::kTooFewPoints);
}

TEST_F(HostileInput, PointsOnALineOrInOnePlaceAreDegenerate) {
  solver::ViewPoints line = good_;
  solver::ViewPoints same = good_;
  solver::ViewPoints onePixel = good_;
  for (std::size_t i = 0; i < good_.size(); ++i) {
    line.Y[i] = 2 * line.X[i] + 1;
    same.X[i] = same.Y[i] = 7;
    onePixel.image.x[i] = onePixel.image.y[i] = 300;
  }
  for (const solver::ViewPoints& view : {line, same, onePixel}) {
    const auto result = robust::calibrateRobustly({good_, view}, scene_.camera.imageSize);
    EXPECT_EQ(result.status, RobustStatus::kDegenerate);
    EXPECT_EQ(result.refusedView, 1U);
  }
}

// Whatever the points are, the call returns, and what it calls solved is finite.
TEST_F(HostileInput, RandomPointsReturn) {
  support::Random random(8);
  for (int round = 0; round < 40; ++round) {
    solver::ViewPoints view = good_;
    const double size = std::pow(10.0, random.uniform(-150, 150));
    for (std::size_t i = 0; i < view.size(); ++i) {
      view.X[i] = random.uniform(-size, size);
      view.image.x[i] = random.uniform(-1e4, 1e4);
      view.image.y[i] = round % 2 == 0 ? random.uniform(0, 960) : view.image.y[i];
    }
    const auto result = robust::calibrateRobustly({view}, scene_.camera.imageSize);
    if (result.status == RobustStatus::kSolved) {
      EXPECT_TRUE(std::isfinite(result.rms) && std::isfinite(result.camera.fx));
      EXPECT_TRUE(cv::checkRange(result.covariance[0]));
    }
  }
}

}  // namespace
