// The calibration of several views is the robust one.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "c_api/views.h"

using namespace c_api_tests;

namespace {

testing::AssertionResult isSolution(const fcal_solution& found, const robust::BedView& view) {
  const double expected[] = {view.camera.fx, view.camera.fy, view.camera.cx,   view.camera.cy,
                             view.camera.k0, view.camera.k1, view.camera.alpha};
  if (std::memcmp(&found.fx, expected, sizeof expected) != 0 ||
      std::memcmp(found.rotation, view.pose.om.val, sizeof found.rotation) != 0 ||
      std::memcmp(found.translation, view.pose.T.val, sizeof found.translation) != 0 ||
      std::memcmp(found.covariance, view.covariance.val, sizeof found.covariance) != 0) {
    return testing::AssertionFailure() << "the solutions differ";
  }
  return testing::AssertionSuccess();
}

void expectSame(const Views& views, const fcal_views_options* options,
                const robust::RobustOptions& robustOptions) {
  const auto expected =
      robust::calibrateRobustly(views.solverViews(), views.imageSize, robustOptions);
  ASSERT_EQ(expected.status, robust::RobustStatus::kSolved);
  const Solved solved = solve(views, options);
  ASSERT_TRUE(succeeds(solved.status));
  EXPECT_EQ(solved.result.outcome, FCAL_SOLVED);
  EXPECT_EQ(solved.result.refused_view, -1);
  EXPECT_EQ(solved.result.steps, expected.steps);
  EXPECT_EQ(solved.result.rms, expected.rms);
  EXPECT_EQ(solved.result.noise_sigma, expected.noiseSigma);
  EXPECT_EQ(solved.result.noise_assumed, expected.noiseAssumed ? 1 : 0);
  std::vector<uint8_t> wrongViews(views.points.size(), 0);
  for (const std::size_t j : expected.wrongViews) {
    wrongViews[j] = 1;
  }
  EXPECT_EQ(solved.wrongViews, wrongViews);
  std::vector<uint8_t> wrongPoints;
  for (std::size_t j = 0; j < views.points.size(); ++j) {
    EXPECT_TRUE(isSolution(solved.solutions[j], bedViewOf(expected, j))) << j;
    const std::size_t begin = wrongPoints.size();
    wrongPoints.resize(begin + views.points[j].size(), 0);
    for (const std::size_t i : expected.wrongPoints[j]) {
      wrongPoints[begin + i] = 1;
    }
  }
  EXPECT_EQ(solved.wrongPoints, wrongPoints);
}

TEST(CViews, AreCalibratedAsTheRobustCalibrationDoes) {
  for (const int count : {1, 2, 5}) {
    SCOPED_TRACE(count);
    expectSame(Views(support::randomRig(51, count, 0.3)), nullptr, {});
  }
}

TEST(CViews, WrongPointsAreMarked) {
  Views views(support::randomRig(52, 3, 0.2));
  views.displace(1, 4, 60);
  expectSame(views, nullptr, {});
  const Solved solved = solve(views);
  EXPECT_EQ(solved.wrongPoints[views.points[0].size() + 4], 1);
}

TEST(CViews, AWrongViewIsMarkedAndHasNoErrors) {
  Views views(support::randomRig(52, 5, 0.2));
  for (std::size_t i = 0; i < views.points[2].size(); ++i) {
    views.displace(2, i, static_cast<float>(20 * std::sin(0.7 * static_cast<double>(i))));
  }
  const Solved solved = solve(views);
  ASSERT_TRUE(succeeds(solved.status));
  EXPECT_EQ(solved.wrongViews, (std::vector<uint8_t>{0, 0, 1, 0, 0}));
  const double point[] = {100, 100};
  double bound = 0;
  EXPECT_TRUE(std::isnan(solved.solutions[2].covariance[0]));
  ASSERT_TRUE(succeeds(fcal_bed_bounds(&solved.solutions[2], point, 1, &bound)));
  EXPECT_TRUE(std::isnan(bound));
  ASSERT_TRUE(
      succeeds(fcal_bed_errors(&solved.solutions[2], &solved.solutions[0], point, 1, &bound)));
  EXPECT_TRUE(std::isnan(bound));
}

TEST(CViews, OptionsAreThoseOfTheRobustCalibration) {
  Views views(support::randomRig(53, 2, 0.3));
  views.displace(0, 7, 60);
  fcal_views_options options = defaultOptions();
  options.noise = FCAL_NOISE_WHITE;
  expectSame(views, &options, {.noiseKind = robust::NoiseKind::kWhite});
  options = defaultOptions();
  options.keep_all = 1;
  expectSame(views, &options, {.keepAll = true});
  options = defaultOptions();
  options.no_prior = 1;
  options.start_focal_factor = 1.2;
  expectSame(views, &options, {.priors = false, .startFocalFactor = 1.2});
}

TEST(CViews, AHeldLensIsKeptAndItsCovarianceCounts) {
  const support::Rig rig = support::randomRig(54, 6, 0.3);
  const Solved several = solve(Views(rig));
  ASSERT_TRUE(succeeds(several.status));
  support::Rig later = rig;
  later.views.resize(1);
  const Views views(later);
  fcal_views_options options = defaultOptions();
  options.held_lens = &several.solutions[3];
  const fcal_solution& held = several.solutions[3];
  robust::RobustOptions robustOptions;
  cv::Matx66d covariance;
  for (int r = 0; r < 6; ++r) {
    for (int c = 0; c < 6; ++c) {
      covariance(r, c) = held.covariance[12 * r + c];
    }
  }
  robustOptions.heldLens = {{held.fx, held.fy, held.cx, held.cy, held.k0, held.k1, held.alpha},
                            covariance};
  expectSame(views, &options, robustOptions);
  const Solved kept = solve(views, &options);
  EXPECT_EQ(std::memcmp(&kept.solutions[0].fx, &held.fx, 7 * sizeof(double)), 0);
}

TEST(CViews, OnlyTheResultIsMandatory) {
  const Views views(support::randomRig(55, 2, 0.3));
  const auto targets = views.targets();
  fcal_views_result result{};
  result.size = sizeof result;
  EXPECT_TRUE(
      succeeds(fcal_calibrate_views(views.imageSize.width, views.imageSize.height, targets.data(),
                                    2, nullptr, &result, nullptr, nullptr, nullptr)));
  EXPECT_GT(result.rms, 0);
}

TEST(CViews, WithoutASolutionTheOutcomeSaysWhy) {
  Views views(support::randomRig(56, 2, 0.3));
  views.points[1].resize(3);
  const Solved solved = solve(views);
  EXPECT_TRUE(fails(solved.status, FCAL_FALSE, "views[1]: too few points"));
  EXPECT_EQ(solved.result.outcome, FCAL_TOO_FEW_POINTS);
  EXPECT_EQ(solved.result.refused_view, 1);
  EXPECT_EQ(solved.result.size, static_cast<int32_t>(sizeof solved.result));
  EXPECT_EQ(solved.result.rms, 0);
  EXPECT_EQ(solved.wrongViews, std::vector<uint8_t>(2, 0));
  EXPECT_EQ(solved.solutions[0].fx, 0);
}

TEST(CViews, WithoutViewsTheInputIsBad) {
  fcal_views_result result{};
  result.size = sizeof result;
  EXPECT_TRUE(
      fails(fcal_calibrate_views(640, 480, nullptr, 0, nullptr, &result, nullptr, nullptr, nullptr),
            FCAL_FALSE, "views: none"));
  EXPECT_EQ(result.outcome, FCAL_BAD_INPUT);
  EXPECT_EQ(result.refused_view, -1);
}

TEST(CViews, ANumberThatIsNotFiniteIsNamed) {
  const Views good(support::randomRig(56, 2, 0.3));
  const auto refusal = [&](float fcal_point::*field, float value) {
    Views views = good;
    views.points[1][5].*field = value;
    const Solved solved = solve(views);
    EXPECT_EQ(solved.status, FCAL_FALSE);
    EXPECT_EQ(solved.result.outcome, FCAL_BAD_INPUT);
    EXPECT_EQ(solved.result.refused_view, 1);
    return std::string(fcal_last_error());
  };
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(refusal(&fcal_point::xw, nan), "views[1]: points[5].xw is not a number");
  EXPECT_EQ(refusal(&fcal_point::yw, -HUGE_VALF), "views[1]: points[5].yw is infinite");
  EXPECT_EQ(refusal(&fcal_point::x, HUGE_VALF), "views[1]: points[5].x is infinite");
  EXPECT_EQ(refusal(&fcal_point::y, nan), "views[1]: points[5].y is not a number");
}

TEST(CViews, TheCauseOfAnInvalidHeldLensIsNamed) {
  const Views views(support::randomRig(56, 2, 0.3));
  fcal_solution good{};
  good.fx = good.fy = 400;
  const auto refusal = [&](const auto& spoil) {
    fcal_solution lens = good;
    spoil(lens);
    fcal_views_options options = defaultOptions();
    options.held_lens = &lens;
    const Solved solved = solve(views, &options);
    EXPECT_EQ(solved.status, FCAL_FALSE);
    EXPECT_EQ(solved.result.outcome, FCAL_BAD_INPUT);
    EXPECT_EQ(solved.result.refused_view, -1);
    return std::string(fcal_last_error());
  };
  EXPECT_EQ(refusal([](fcal_solution& lens) { lens.fx = 0; }),
            "options: held_lens->fx is not positive");
  EXPECT_EQ(refusal([](fcal_solution& lens) { lens.fy = -400; }),
            "options: held_lens->fy is not positive");
  EXPECT_EQ(refusal([](fcal_solution& lens) { lens.k1 = std::nan(""); }),
            "options: held_lens->k1 is not a number");
  EXPECT_EQ(refusal([](fcal_solution& lens) { lens.covariance[14] = HUGE_VAL; }),
            "options: held_lens->covariance[14] is infinite");
  const auto noCovariance =
      "options: held_lens->covariance: its part for the lens is not symmetric or has a negative "
      "eigenvalue";
  EXPECT_EQ(refusal([](fcal_solution& lens) { lens.covariance[13] = -1; }), noCovariance);
  EXPECT_EQ(refusal([](fcal_solution& lens) {
              lens.covariance[0] = lens.covariance[13] = 4;
              lens.covariance[1] = 1;  // and covariance[12] stays 0
            }),
            noCovariance);
}

}  // namespace
