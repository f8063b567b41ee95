// Input that a calibration refuses, and numbers at the limits of what it can compute with.
#include "robust/robust_input.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "robust/bed_error.h"
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

TEST_F(HostileInput, AHeldLensNeedsACovarianceThatIsOne) {
  const auto statusWith = [&](const cv::Matx66d& covariance) {
    robust::RobustOptions options;
    options.heldLens = robust::HeldLens{robust_tests::cameraOf(scene_.camera), covariance};
    return statusOf({good_}, options);
  };
  const cv::Matx66d good = cv::Matx66d::diag({25, 25, 4, 4, 1e-4, 1e-8});
  EXPECT_EQ(statusWith(cv::Matx66d::zeros()), RobustStatus::kSolved);
  EXPECT_EQ(statusWith(good), RobustStatus::kSolved);
  cv::Matx66d known = good;  // one parameter is exact
  known(4, 4) = 0;
  EXPECT_EQ(statusWith(known), RobustStatus::kSolved);
  cv::Matx66d correlated = good;
  correlated(0, 1) = correlated(1, 0) = 25;  // fx = fy
  correlated(0, 5) = correlated(5, 0) = correlated(1, 5) = correlated(5, 1) = 4e-4;
  EXPECT_EQ(statusWith(correlated), RobustStatus::kSolved);
  cv::Matx66d negative = good;
  negative(5, 5) = -1e-8;
  EXPECT_EQ(statusWith(negative), RobustStatus::kBadInput);
  cv::Matx66d indefinite = good;
  indefinite(4, 5) = indefinite(5, 4) = 1.01e-6;  // a correlation of 1.01
  EXPECT_EQ(statusWith(indefinite), RobustStatus::kBadInput);
  cv::Matx66d unsymmetric = good;
  unsymmetric(4, 5) = 1e-7;
  EXPECT_EQ(statusWith(unsymmetric), RobustStatus::kBadInput);
  cv::Matx66d ofNothing = known;
  ofNothing(4, 5) = ofNothing(5, 4) = 1e-9;
  EXPECT_EQ(statusWith(ofNothing), RobustStatus::kBadInput);
  for (const double bad : {kNaN, HUGE_VAL}) {
    cv::Matx66d unknown = good;
    unknown(2, 2) = bad;
    EXPECT_EQ(statusWith(unknown), RobustStatus::kBadInput);
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

// Refused, or every number of the result is finite.
void expectFinite(const robust::RobustCalibration& result) {
  if (result.status != RobustStatus::kSolved) {
    return;
  }
  EXPECT_TRUE(cv::checkRange(robust_tests::columnOf(result.camera)));
  EXPECT_TRUE(std::isfinite(result.rms) && std::isfinite(result.noiseSigma));
  for (std::size_t j = 0; j < result.poses.size(); ++j) {
    EXPECT_TRUE(cv::checkRange(robust_tests::columnOf(result.poses[j])));
    const bool used = !std::binary_search(result.wrongViews.begin(), result.wrongViews.end(), j);
    EXPECT_EQ(cv::checkRange(result.covariance[j]), used);  // NaN if left out
    const std::vector<double> bounds =
        robust::bedBounds({result.camera, result.poses[j], result.covariance[j]},
                          {{0, 0}, {1e300, -1e300}, {1e-300, 0}, {HUGE_VAL, 0}, {kNaN, 1}});
    EXPECT_EQ(bounds.size(), 5U);
  }
}

void scale(std::vector<double>& values, double factor) {
  for (double& value : values) {
    value *= factor;
  }
}

TEST_F(HostileInput, CoordinatesOfAnySizeGiveFiniteNumbersOrARefusal) {
  for (const double exponent : {20., 100., 110., 153., 160., 200., 300.}) {
    for (const double factor : {std::pow(10, exponent), std::pow(10, -exponent)}) {
      SCOPED_TRACE(factor);
      solver::ViewPoints target = good_;
      scale(target.X, factor);
      scale(target.Y, factor);
      solver::ViewPoints narrow = good_;
      scale(narrow.X, factor);
      solver::ViewPoints pixels = good_;
      scale(pixels.image.x, factor);
      scale(pixels.image.y, factor);
      solver::ViewPoints one = good_;
      one.X[7] *= factor;
      one.image.y[9] *= factor;
      robust::RobustOptions held;
      held.heldLens = robust::HeldLens{robust_tests::cameraOf(scene_.camera), {}};
      for (const solver::ViewPoints& view : {target, narrow, pixels, one}) {
        for (const robust::RobustOptions& options : {robust::RobustOptions{}, held}) {
          for (const auto& views : {std::vector{view}, std::vector{good_, view, good_}}) {
            expectFinite(robust::calibrateRobustly(views, scene_.camera.imageSize, options));
          }
        }
      }
    }
  }
}

// The unit of the target does not matter within these limits.
TEST_F(HostileInput, TargetsInAnyUnitAreSolved) {
  for (const double factor : {1e-60, 1e-20, 1e20, 1e60}) {
    solver::ViewPoints view = good_;
    scale(view.X, factor);
    scale(view.Y, factor);
    const auto result = robust::calibrateRobustly({view}, scene_.camera.imageSize);
    ASSERT_EQ(result.status, RobustStatus::kSolved) << factor;
    expectFinite(result);
    EXPECT_NEAR(result.camera.fx, scene_.camera.fx, 0.02 * scene_.camera.fx);
  }
}

}  // namespace
