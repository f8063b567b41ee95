// Arguments of the calibration of several views, and its records of other versions.
#include <gtest/gtest.h>

#include <cmath>

#include "c_api/views.h"

using namespace c_api_tests;

namespace {

TEST(CViewsArguments, AreChecked) {
  const Views views(support::randomRig(57, 1, 0.3));
  auto targets = views.targets();
  fcal_views_result result{};
  result.size = sizeof result;
  const auto call = [&](int32_t width, int32_t height, const fcal_target_view* list, int32_t count,
                        fcal_views_result* out) {
    return fcal_calibrate_views(width, height, list, count, nullptr, out, nullptr, nullptr,
                                nullptr);
  };
  EXPECT_TRUE(refuses(call(0, 480, targets.data(), 1, &result), "width: not positive"));
  EXPECT_TRUE(refuses(call(640, -1, targets.data(), 1, &result), "height: not positive"));
  EXPECT_TRUE(refuses(call(640, 480, nullptr, 1, &result), "views: null"));
  EXPECT_TRUE(refuses(call(640, 480, targets.data(), -1, &result), "views: count is negative"));
  EXPECT_TRUE(refuses(call(640, 480, targets.data(), 1, nullptr), "result: null"));
  targets[0].count = -1;
  EXPECT_TRUE(refuses(call(640, 480, targets.data(), 1, &result), "views[0]: count is negative"));
  targets[0] = {nullptr, 4};
  EXPECT_TRUE(refuses(call(640, 480, targets.data(), 1, &result), "views[0]: null"));
  EXPECT_EQ(result.outcome, 0);
}

TEST(CViewsArguments, OptionsAreChecked) {
  const Views views(support::randomRig(57, 1, 0.3));
  const auto refusal = [&](const auto& spoil) {
    fcal_views_options options = defaultOptions();
    spoil(options);
    const Solved solved = solve(views, &options);
    EXPECT_EQ(solved.status, FCAL_BAD_ARGUMENT);
    EXPECT_EQ(solved.wrongPoints[0], 9);  // nothing is written
    return std::string(fcal_last_error());
  };
  EXPECT_EQ(refusal([](auto& options) { options.size = 0; }),
            "options: size is not that of the record");
  EXPECT_EQ(refusal([](auto& options) { options.size = -1; }),
            "options: size is not that of the record");
  EXPECT_EQ(refusal([](auto& options) { options.size = 31; }),
            "options: size is not that of the record");
  EXPECT_EQ(refusal([](auto& options) { options.size = 1 << 30; }),
            "options: size is not that of the record");
  EXPECT_EQ(refusal([](auto& options) { options.noise = 2; }),
            "options: noise is none of FCAL_NOISE_...");
  EXPECT_EQ(refusal([](auto& options) { options.start_focal_factor = -1; }),
            "options: start_focal_factor is negative or not finite");
  EXPECT_EQ(refusal([](auto& options) { options.start_focal_factor = HUGE_VAL; }),
            "options: start_focal_factor is negative or not finite");
}

struct NewerOptions {
  fcal_views_options known;
  int32_t unknown[4];
};

TEST(CViewsArguments, NewerOptionsAreAcceptedUnlessTheyAskForSomethingUnknown) {
  const Views views(support::randomRig(57, 1, 0.3));
  NewerOptions options{};
  options.known.size = sizeof options;
  EXPECT_TRUE(succeeds(solve(views, &options.known).status));
  options.unknown[3] = 1;
  EXPECT_TRUE(refuses(solve(views, &options.known).status,
                      "options: an option that this version does not know is set"));
}

TEST(CViewsArguments, ResultsOfAnySizeAreFilled) {
  const Views views(support::randomRig(57, 1, 0.3));
  const auto targets = views.targets();
  struct {
    fcal_views_result known;
    int32_t unknown[4];
    int32_t guard;
  } result{{}, {9, 9, 9, 9}, 9};
  const auto call = [&](std::size_t size) {
    result.known.size = static_cast<int32_t>(size);
    return fcal_calibrate_views(views.imageSize.width, views.imageSize.height, targets.data(), 1,
                                nullptr, &result.known, nullptr, nullptr, nullptr);
  };
  for (const std::size_t size : {std::size_t{0}, std::size_t{39}, std::size_t{1} << 20}) {
    EXPECT_TRUE(refuses(call(size), "result: size is not that of the record"));
  }
  EXPECT_EQ(result.known.rms, 0);
  const std::size_t newer = sizeof(fcal_views_result) + sizeof result.unknown;
  EXPECT_TRUE(succeeds(call(newer)));
  EXPECT_EQ(result.known.size, static_cast<int32_t>(newer));
  EXPECT_GT(result.known.rms, 0);
  EXPECT_EQ(result.unknown[0], 0);
  EXPECT_EQ(result.unknown[3], 0);
  EXPECT_EQ(result.guard, 9);
}

}  // namespace
