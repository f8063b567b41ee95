// What the solutions of several views are for: records, the bed and its errors.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "c_api/views.h"
#include "robust/viewing_ray.h"
#include "single/completed_record.h"
#include "single/placed_view.h"

using namespace c_api_tests;

namespace {

TEST(CSolutions, GiveTheRecordOfTheStepsAfterTheSolver) {
  const Views views(support::randomRig(58, 3, 0.3));
  const Solved solved = solve(views);
  ASSERT_TRUE(succeeds(solved.status));
  const auto robustly = robust::calibrateRobustly(views.solverViews(), views.imageSize);
  auto expectedPoints = views.records[1];
  FishEyeCalibrationParam expected{};
  double expectedRms = -1;
  ASSERT_TRUE(single::completeRecord(robustly.camera, robustly.poses[1], expectedPoints, 900, 700,
                                     expected, expectedRms, single::kZeroFiller));
  auto points = views.points[1];
  fcal_camera camera{};
  double rms = -1;
  ASSERT_TRUE(succeeds(fcal_camera_of_solution(&solved.solutions[1], points.data(), countOf(points),
                                               900, 700, &camera, &rms)));
  EXPECT_TRUE(equalBytes(camera, expected));
  EXPECT_TRUE(equalBytes(points, expectedPoints));
  EXPECT_EQ(rms, expectedRms);

  ASSERT_TRUE(single::placeSecondCorrection({-20, 30.5}, 0.5F, 800, 600, expected));
  ASSERT_TRUE(succeeds(fcal_place_view(-20, 30.5, 0.5F, 800, 600, &camera)));
  EXPECT_TRUE(equalBytes(camera, expected));

  fcal_solution back{};
  ASSERT_TRUE(succeeds(fcal_solution_of_camera(&camera, &back)));
  EXPECT_EQ(back.fx, camera.fx);
  EXPECT_EQ(back.k1, camera.k[1]);
  EXPECT_EQ(back.rotation[2], camera.rz);
  EXPECT_EQ(back.translation[0], camera.tx);
  EXPECT_EQ(back.covariance[143], 0);
}

// A record holds K(0,1), but projections read it as the skew argument.
TEST(CSolutions, WithASkewGiveNoRecord) {
  fcal_solution solution{};
  solution.alpha = 0.002;
  fcal_point points[9] = {};
  fcal_camera camera{};
  double rms = 0;
  EXPECT_EQ(fcal_camera_of_solution(&solution, points, 9, 900, 700, &camera, &rms),
            FCAL_BAD_ARGUMENT);
  EXPECT_STREQ(fcal_last_error(), "solution: alpha is not 0");
}

TEST(CSolutions, ThreePointsGiveNoRecord) {
  const fcal_solution solution{};
  fcal_point points[3] = {};
  fcal_camera camera{};
  double rms = -1;
  EXPECT_TRUE(fails(fcal_camera_of_solution(&solution, points, 3, 9, 9, &camera, &rms), FCAL_FALSE,
                    "points: fewer than 4"));
  EXPECT_EQ(rms, -1);
}

TEST(CSolutions, WhatLeavesARecordWithoutAViewIsNamed) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  fcal_camera good{};
  good.fx = good.fy = 400;
  good.tz = 300;
  const auto refusal = [](fcal_camera camera, double x, double y, float pixel) {
    const fcal_camera before = camera;
    EXPECT_EQ(fcal_place_view(x, y, pixel, 9, 9, &camera), FCAL_FALSE);
    EXPECT_TRUE(equalBytes(camera, before));
    return std::string(fcal_last_error());
  };
  EXPECT_EQ(refusal(good, nan, 0, 1), "corner_xw: not a number");
  EXPECT_EQ(refusal(good, 0, -HUGE_VAL, 1), "corner_yw: infinite");
  EXPECT_EQ(refusal(good, 0, 1e300, 1), "corner_yw: too large for 32 bits");
  EXPECT_EQ(refusal(good, 0, 0, HUGE_VALF), "pixel: infinite");
  EXPECT_EQ(refusal(good, 0, 0, 3e38F), "pixel: the view is too large for 32 bits");
  fcal_camera camera = good;
  camera.ry = HUGE_VALF;
  EXPECT_EQ(refusal(camera, 0, 0, 1), "camera: ry is infinite");
  camera = good;
  camera.fy = 0;
  EXPECT_EQ(refusal(camera, 0, 0, 1), "camera: fy is 0");
  camera = good;
  camera.tz = 0;
  camera.tx = 5;
  EXPECT_EQ(refusal(camera, 0, 0, 1), "camera: sees the bed edge-on");
  // Large, but not what is wrong here: the centre of the view fits into 32 bits.
  EXPECT_EQ(refusal(camera, 2e38, 0, 1), "camera: sees the bed edge-on");
  EXPECT_EQ(refusal(camera, 0, 0, 1e29F), "camera: sees the bed edge-on");
  EXPECT_TRUE(succeeds(fcal_place_view(0, 0, 1, 9, 9, &good)));
}

TEST(CSolutions, GiveTheBedAndItsErrorsAsTheRobustCalibrationDoes) {
  const Views views(support::randomRig(59, 3, 0.3));
  const Solved solved = solve(views);
  ASSERT_TRUE(succeeds(solved.status));
  const auto robustly = robust::calibrateRobustly(views.solverViews(), views.imageSize);
  const robust::BedView view = bedViewOf(robustly, 0);
  const robust::BedView judged = bedViewOf(robustly, 2);
  std::vector<cv::Point2d> grid;
  std::vector<double> xy;
  for (int i = 0; i < 30; ++i) {
    grid.emplace_back(40.0 * (i % 6), 35.0 * (i / 6));
    xy.insert(xy.end(), {grid.back().x, grid.back().y});
  }
  std::vector<double> out(30, -1);
  ASSERT_TRUE(succeeds(fcal_bed_bounds(&solved.solutions[0], xy.data(), 30, out.data())));
  EXPECT_EQ(out, robust::bedBounds(view, grid));
  EXPECT_GT(out[0], 0);
  // The pose of view 2 as if the target had not moved: large errors, or unseen.
  const auto errors = robust::judgedBedErrors(view, judged.camera, judged.pose, grid);
  ASSERT_TRUE(succeeds(
      fcal_bed_errors(&solved.solutions[0], &solved.solutions[2], xy.data(), 30, out.data())));
  EXPECT_EQ(std::memcmp(out.data(), errors.data(), 30 * sizeof(double)), 0);
  std::vector<double> pixels;
  std::vector<double> expected;
  for (int i = 0; i < 30; ++i) {
    const cv::Point2d pixel(400 + 20 * (i % 6), 300 + 20 * (i / 6));
    pixels.insert(pixels.end(), {pixel.x, pixel.y});
    const auto point = robust::bedPointOf(view.camera, view.pose, pixel);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    expected.insert(expected.end(), {point ? point->x : nan, point ? point->y : nan});
  }
  out.resize(60);
  ASSERT_TRUE(succeeds(fcal_raw_to_bed(&solved.solutions[0], pixels.data(), 30, out.data())));
  EXPECT_EQ(std::memcmp(out.data(), expected.data(), 60 * sizeof(double)), 0);
}

}  // namespace
