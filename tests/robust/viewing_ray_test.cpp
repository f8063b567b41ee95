#include "robust/viewing_ray.h"

#include <gtest/gtest.h>

#include <cmath>

#include "robust/linear_pose.h"
#include "robust/views.h"
#include "support/plain_model.h"

using namespace fisheye_calibration;

namespace {

const support::RigCamera kRig;

TEST(ViewingRay, IsTheDirectionOfTheProjectedPoint) {
  const lens::Camera camera = robust_tests::cameraOf(kRig);
  support::Random random(3);
  for (int i = 0; i < 200; ++i) {
    const double theta = random.uniform(0, 1.5);
    const double azimuth = random.uniform(-CV_PI, CV_PI);
    // theta_d = theta + k0 theta^2 + k1 theta^3
    const double r = theta + camera.k0 * theta * theta + camera.k1 * theta * theta * theta;
    const cv::Vec3d ray =
        robust::viewingRay(camera, {camera.fx * r * std::cos(azimuth) + camera.cx,
                                    camera.fy * r * std::sin(azimuth) + camera.cy});
    const cv::Vec3d expected(std::sin(theta) * std::cos(azimuth),
                             std::sin(theta) * std::sin(azimuth), std::cos(theta));
    EXPECT_LT(cv::norm(ray - expected), 1e-14) << theta;
  }
}

TEST(ViewingRay, PixelsBeyondTheRangeEndAtItsEdge) {
  const lens::Camera equidistant{.fx = 100, .fy = 100};
  EXPECT_DOUBLE_EQ(robust::incidenceAngle(equidistant, 3), robust::kLargestAngle);
  EXPECT_EQ(robust::incidenceAngle(equidistant, 0), 0);
  EXPECT_EQ(robust::incidenceAngle(equidistant, std::nan("")), 0);
  // theta - theta^3/3 rises up to theta = 1, where it is 2/3.
  const lens::Camera folding{.fx = 100, .fy = 100, .k1 = -1.0 / 3};
  EXPECT_DOUBLE_EQ(robust::turningAngle(folding), 1);
  EXPECT_DOUBLE_EQ(robust::incidenceAngle(folding, 0.7), 1);
  EXPECT_NEAR(robust::incidenceAngle(folding, 0.6), 0.7293, 1e-4);  // 0.7293 - 0.1293 = 0.6
  // 1 - 2 theta * 0.5 has its zero at 1.
  EXPECT_DOUBLE_EQ(robust::turningAngle({.fx = 1, .fy = 1, .k0 = -0.5}), 1);
  EXPECT_DOUBLE_EQ(robust::turningAngle({.fx = 1, .fy = 1, .k0 = 0.2, .k1 = 0.1}),
                   robust::kLargestAngle);
}

TEST(ViewingRay, BedPointOfAProjectedPointIsThatPoint) {
  const support::Bed bed;
  const support::RigView view = support::seen(kRig, bed, support::poseOver(bed, 250, 0.4, -0.3, 1));
  for (std::size_t i = 0; i < view.imagePoints.size(); ++i) {
    const auto g = robust::bedPointOf(robust_tests::cameraOf(kRig), robust_tests::poseOf(view.pose),
                                      view.imagePoints[i]);
    ASSERT_TRUE(g);
    EXPECT_LT(std::hypot(g->x - view.objectPoints[i].x, g->y - view.objectPoints[i].y), 1e-9);
  }
}

TEST(ViewingRay, SkyHasNoBedPoint) {
  // Looking along the bed, 100 above it: y points down to the bed.
  const lens::Camera camera{.fx = 400, .fy = 400, .cx = 640, .cy = 480};
  const lens::Pose pose{{-CV_PI / 2, 0, 0}, {0, 100, 0}};
  EXPECT_TRUE(robust::bedPointOf(camera, pose, {640, 600}));
  EXPECT_FALSE(robust::bedPointOf(camera, pose, {640, 360}));
  EXPECT_FALSE(robust::bedPointOf(camera, pose, {640, 480 + 400 * 1.6}));  // beyond 90 degrees
}

TEST(LinearPose, ExactPointsGiveTheirPose) {
  const support::Bed bed;
  support::RigCamera rig;
  for (const auto& pose :
       {support::poseOver(bed, 320, 0, 0, 0), support::poseOver(bed, 150, 0.6, 0.2, 2),
        support::poseOver(bed, 400, -0.5, 0.7, -3)}) {
    const auto found = robust::linearPose(robust_tests::viewPoints(support::seen(rig, bed, pose)),
                                          robust_tests::cameraOf(rig), {});
    ASSERT_TRUE(found);
    EXPECT_LT(cv::norm(found->om - pose.rotation), 1e-8);
    EXPECT_LT(cv::norm(found->T - pose.translation), 1e-6);
  }
}

TEST(LinearPose, AThirdOfWrongPointsDoesNotMatterToTheRobustOne) {
  const support::Bed bed;
  const support::RigPose pose = support::poseOver(bed, 250, 0.3, -0.2, 0.4);
  solver::ViewPoints view = robust_tests::viewPoints(support::seen(kRig, bed, pose));
  for (std::size_t i = 0; i < view.size(); i += 3) {
    view.image.x[i] = 1280 - view.image.x[i];
    view.image.y[i] = 100;
  }
  const auto found = robust::robustLinearPose(view, robust_tests::cameraOf(kRig));
  ASSERT_TRUE(found);
  EXPECT_LT(cv::norm(found->om - pose.rotation), 1e-3);
}

TEST(LinearPose, PointsThatLeaveThePoseOpenGiveNone) {
  const support::Bed bed;
  const solver::ViewPoints good = robust_tests::viewPoints(
      support::seen(kRig, bed, support::poseOver(bed, 250, 0.3, -0.2, 0.4)));
  const lens::Camera camera = robust_tests::cameraOf(kRig);
  solver::ViewPoints line = good;
  solver::ViewPoints same = good;
  solver::ViewPoints onePixel = good;
  for (std::size_t i = 0; i < good.size(); ++i) {
    line.Y[i] = 2 * line.X[i];
    same.X[i] = same.Y[i] = 7;
    onePixel.image.x[i] = onePixel.image.y[i] = 300;
  }
  EXPECT_FALSE(robust::linearPose(line, camera, {}));
  EXPECT_FALSE(robust::linearPose(same, camera, {}));
  EXPECT_FALSE(robust::linearPose(onePixel, camera, {}));
  EXPECT_FALSE(robust::robustLinearPose(same, camera));
}

}  // namespace
