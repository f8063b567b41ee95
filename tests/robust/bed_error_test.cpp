#include "robust/bed_error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "robust/planned_views.h"
#include "robust/viewing_ray.h"
#include "robust/views.h"
#include "support/derivatives.h"

using namespace fisheye_calibration;

namespace {

// Straight above the bed at height 200, equidistant lens of 400 px: 1 px at the centre is 0.5
// units.
const lens::Camera kFrontal{.fx = 400, .fy = 400, .cx = 640, .cy = 480};
const lens::Pose kAbove{{0, 0, 0}, {0, 0, 200}};

robust::ViewMatrix varianceOf(int parameter, double variance) {
  robust::ViewMatrix Sigma;
  Sigma(parameter, parameter) = variance;
  return Sigma;
}

TEST(BedError, CentreErrorIsPixelsTimesHeightOverFocalLength) {
  const robust::BedView view{kFrontal, kAbove, varianceOf(2, 0.3 * 0.3)};  // cx
  EXPECT_NEAR(robust::bedSigma(view, {0, 0}), 0.3 * 200 / 400, 1e-12);
  EXPECT_NEAR(robust::bedBounds(view, {{0, 0}})[0], 2.5 * 0.3 * 200 / 400, 1e-12);
}

// At theta from the axis the bed point is 200 tan theta away and the pixel 400 theta: fx off by d
// moves the angle by -theta d/400 and the bed point by 200/cos^2 theta times that.
TEST(BedError, FocalLengthErrorGrowsTowardsTheEdge) {
  const robust::BedView view{kFrontal, kAbove, varianceOf(0, 2 * 2)};
  for (const double theta : {0.2, 0.7, 1.3}) {
    const double expected = 200 / std::pow(std::cos(theta), 2) * theta * 2 / 400;
    EXPECT_NEAR(robust::bedSigma(view, {200 * std::tan(theta), 0}), expected, 1e-9 * expected);
  }
}

// G is the derivative of the bed point at a fixed pixel with respect to the parameters.
TEST(BedError, SigmaIsThatOfTheDifferentiatedBedPoint) {
  const support::Bed bed;
  const support::RigCamera rig;
  const support::RigPose pose = support::poseOver(bed, 260, 0.5, -0.3, 0.8);
  const lens::Camera camera = robust_tests::cameraOf(rig);
  support::Random random(4);
  cv::Matx<double, 12, 12> R;
  for (double& element : R.val) {
    element = random.uniform(-1e-3, 1e-3);
  }
  const robust::BedView view{camera, robust_tests::poseOf(pose), R.t() * R};
  const support::RigView seen = support::seen(rig, bed, pose);
  for (std::size_t i = 0; i < seen.imagePoints.size(); i += 7) {
    const auto bedPoint = [&](const cv::Mat& p) {
      const auto at = [&](int k) { return p.at<double>(k); };
      const auto g = robust::bedPointOf(
          {.fx = at(0), .fy = at(1), .cx = at(2), .cy = at(3), .k0 = at(4), .k1 = at(5)},
          {{at(6), at(7), at(8)}, {at(9), at(10), at(11)}}, seen.imagePoints[i]);
      return cv::Mat((cv::Mat_<double>(2, 1) << g->x, g->y));
    };
    cv::Mat p;
    cv::vconcat(cv::Mat(robust_tests::columnOf(camera)), cv::Mat(robust_tests::columnOf(view.pose)),
                p);
    const cv::Mat G = support::centralDifferences(bedPoint, p);
    const double expected = std::sqrt(cv::trace(cv::Mat(G * cv::Mat(view.covariance) * G.t()))[0]);
    EXPECT_NEAR(robust::bedSigma(view, {seen.objectPoints[i].x, seen.objectPoints[i].y}), expected,
                1e-7 * expected);
  }
}

TEST(BedError, PointsThatAreNotSeenAreNaN) {
  // 100 above the bed, looking along it; the bed at Y = 0 is below the camera, Z = 0 the bed's
  // plane.
  const robust::BedView level{kFrontal, {{-CV_PI / 2, 0, 0}, {0, 100, 0}}, varianceOf(2, 1)};
  EXPECT_TRUE(std::isfinite(robust::bedSigma(level, {0, -300})));
  EXPECT_TRUE(std::isnan(robust::bedSigma(level, {0, 300})));  // behind
  // theta - theta^3/3 turns at 1 rad, 200 tan 1 = 311 from the centre.
  lens::Camera folding = kFrontal;
  folding.k1 = -1.0 / 3;
  const robust::BedView folded{folding, kAbove, varianceOf(2, 1)};
  EXPECT_TRUE(std::isfinite(robust::bedSigma(folded, {300, 0})));
  EXPECT_TRUE(std::isnan(robust::bedSigma(folded, {320, 0})));
  // A bed that is seen edge-on has no area.
  const robust::BedView edgeOn{kFrontal, {{-CV_PI / 2, 0, 0}, {0, 0, 0}}, varianceOf(2, 1)};
  EXPECT_TRUE(std::isnan(robust::bedSigma(edgeOn, {0, -300})));
}

// NaN, also of a parameter that the point does not depend on, and infinities of either sign.
TEST(BedError, NothingIsKnownWithoutAFiniteCovariance) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double element : {kNaN, kInfinity, -kInfinity}) {
    robust::ViewMatrix Sigma = varianceOf(2, 1);
    Sigma(5, 5) = element;
    const robust::BedView view{kFrontal, kAbove, Sigma};
    EXPECT_TRUE(std::isnan(robust::bedSigma(view, {0, 0})));
    EXPECT_TRUE(std::isnan(robust::bedSigma(view, {50, 0})));
    EXPECT_TRUE(std::isnan(robust::bedBounds(view, {{50, 0}})[0]));
    EXPECT_TRUE(std::isnan(robust::judgedBedErrors(view, kFrontal, kAbove, {{50, 0}})[0]));
  }
}

TEST(BedError, AnotherCameraIsOffByItsOwnErrorAndTheBound) {
  const robust::BedView view{kFrontal, kAbove, varianceOf(3, 0.2 * 0.2)};
  lens::Camera shifted = kFrontal;
  shifted.cx +=
      6;  // it sees the centre at 646, where the bed point of `view` is 200 tan(6/400) away
  const double off = 200 * std::tan(6.0 / 400);
  const double bound = 2.5 * robust::bedSigma(view, {off, 0});
  const std::vector<double> E = robust::judgedBedErrors(view, shifted, kAbove, {{0, 0}});
  EXPECT_NEAR(E[0], std::hypot(off, bound), 1e-9);
  const robust::BedView certain{kFrontal, kAbove, {}};
  EXPECT_NEAR(robust::judgedBedErrors(certain, shifted, kAbove, {{0, 0}})[0], off, 1e-9);
}

TEST(BedError, AnotherCameraIsNotJudgedWhereEitherSeesNothing) {
  const robust::BedView view{kFrontal, kAbove, varianceOf(2, 1)};
  lens::Camera folding = kFrontal;
  folding.k1 = -1.0 / 3;
  const robust::BedView folded{folding, kAbove, varianceOf(2, 1)};
  EXPECT_TRUE(std::isnan(robust::judgedBedErrors(view, folding, kAbove, {{400, 0}})[0]));
  EXPECT_TRUE(std::isnan(robust::judgedBedErrors(folded, kFrontal, kAbove, {{400, 0}})[0]));
}

robust::PlannedView frontalView(double spacing, double turn) {
  robust::PlannedView view{robust::withTurnedTarget(kAbove, {0, 0}, {turn, 0, 0}),
                           solver::PlanarPoints(63)};
  for (std::size_t i = 0; i < 63; ++i) {
    view.target.x[i] = spacing * (static_cast<double>(i % 9) - 4);
    view.target.y[i] = spacing * (static_cast<double>(i / 9) - 3);
  }
  return view;
}

double plannedBound(const std::vector<robust::PlannedView>& views) {
  const auto Sigma = robust::plannedCovariance(kFrontal, views, {1280, 960}, 0.3);
  EXPECT_TRUE(Sigma);
  return robust::bedBounds({kFrontal, kAbove, Sigma->front()}, {{150, 100}})[0];
}

TEST(PlannedViews, RemediesLowerTheBound) {
  const robust::PlannedView present = frontalView(10, 0);
  const double bound = plannedBound({present});
  EXPECT_LT(plannedBound({present, frontalView(10, 0.5)}), 0.9 * bound);
  EXPECT_LT(plannedBound({frontalView(25, 0)}), 0.9 * bound);
  EXPECT_LT(plannedBound({present, frontalView(10, 0.5), frontalView(10, -0.5),
                          frontalView(10, 0.3), frontalView(10, -0.3)}),
            plannedBound({present, frontalView(10, 0.5)}));
}

TEST(PlannedViews, ViewsThatCannotBeAreRefused) {
  const robust::PlannedView good = frontalView(10, 0);
  robust::PlannedView behind = good;
  behind.pose.T[2] = -200;
  robust::PlannedView outside = good;
  outside.pose.T[0] = 400;  // at 63 degrees, 443 px right of the centre; the target reaches further
  EXPECT_TRUE(robust::plannedCovariance(kFrontal, {good, outside}, {1280, 960}, 0.3));
  EXPECT_FALSE(robust::plannedCovariance(kFrontal, {good, outside}, {1080, 960}, 0.3));
  robust::PlannedView unpaired = good;
  unpaired.target.y.pop_back();
  const cv::Size size(1280, 960);
  EXPECT_FALSE(robust::plannedCovariance(kFrontal, {}, size, 0.3));
  EXPECT_FALSE(robust::plannedCovariance(kFrontal, {good}, {0, 960}, 0.3));
  EXPECT_FALSE(robust::plannedCovariance(kFrontal, {good}, {1280, -960}, 0.3));
  for (const double sigma : {-0.3, std::nan(""), HUGE_VAL}) {
    EXPECT_FALSE(robust::plannedCovariance(kFrontal, {good}, size, sigma)) << sigma;
  }
  EXPECT_FALSE(robust::plannedCovariance(kFrontal, {good, behind}, size, 0.3));
  lens::Camera folding = kFrontal;  // turns at 1 rad
  folding.k1 = -1.0 / 3;
  EXPECT_TRUE(robust::plannedCovariance(folding, {frontalView(40, 0)}, size, 0.3));
  EXPECT_FALSE(robust::plannedCovariance(folding, {frontalView(80, 0)}, size, 0.3));
  EXPECT_FALSE(robust::plannedCovariance(kFrontal, {unpaired}, size, 0.3));
  EXPECT_FALSE(robust::plannedCovariance(kFrontal, {{kAbove, solver::PlanarPoints(0)}}, size, 0.3));
}

// From above, all points of a circle are at one angle: whatever the lens does elsewhere is open.
TEST(PlannedViews, ACircleFromAboveDoesNotDetermineTheLens) {
  robust::PlanOptions options;
  options.priors = false;
  for (int count = 8; count < 40; ++count) {
    for (const double radius : {50.0, 100.0, 180.0}) {
      robust::PlannedView circle{kAbove, solver::PlanarPoints(static_cast<std::size_t>(count))};
      for (std::size_t i = 0; i < circle.target.size(); ++i) {
        const double azimuth = 2 * CV_PI * static_cast<double>(i) / count;
        circle.target.x[i] = radius * std::cos(azimuth);
        circle.target.y[i] = radius * std::sin(azimuth);
      }
      EXPECT_FALSE(robust::plannedCovariance(kFrontal, {circle}, {1280, 960}, 0.3, options));
      EXPECT_FALSE(robust::plannedCovariance(kFrontal, {circle}, {1280, 960}, 0.3));
    }
  }
}

// The turned target's centre stays where it was; a point at (d, 0) turned about Y by an angle a
// goes to (d cos a, -d sin a) in (X, Z).
TEST(PlannedViews, TurnedTargetTurnsAboutItsCentre) {
  const double a = 0.4;
  const lens::Pose turned = robust::withTurnedTarget(kAbove, {30, 10}, {0, a, 0});
  const cv::Matx33d R(std::cos(a), 0, std::sin(a), 0, 1, 0, -std::sin(a), 0, std::cos(a));
  EXPECT_LT(cv::norm(turned.om - cv::Vec3d(0, a, 0)), 1e-12);
  EXPECT_LT(cv::norm(R * cv::Vec3d(30, 10, 0) + turned.T - cv::Vec3d(30, 10, 200)), 1e-12);
}

}  // namespace
