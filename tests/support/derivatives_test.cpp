#include "support/derivatives.h"

#include <gtest/gtest.h>

#include "support/synthetic_rig.h"

namespace {

TEST(CentralDifferences, FindTheSlopesOfAKnownFunction) {
  // f(x, y) = (x^2 y, sin x) at (2, 3): slopes (2xy, x^2) = (12, 4) and (cos 2, 0).
  const auto f = [](const cv::Mat& p) {
    const double x = p.at<double>(0);
    const double y = p.at<double>(1);
    cv::Mat value = (cv::Mat_<double>(2, 1) << x * x * y, std::sin(x));
    return value;
  };
  const cv::Mat at = (cv::Mat_<double>(2, 1) << 2, 3);
  const cv::Mat expected = (cv::Mat_<double>(2, 2) << 12, 4, std::cos(2.0), 0);
  EXPECT_LT(support::largestRelativeDifference(support::centralDifferences(f, at), expected),
            1e-11);
}

TEST(LargestRelativeDifference, CountsNanAsTheWorst) {
  const cv::Mat a = (cv::Mat_<double>(1, 1) << std::nan(""));
  const cv::Mat b = (cv::Mat_<double>(1, 1) << 1);
  EXPECT_FALSE(support::largestRelativeDifference(a, b) < 1e300);
}

TEST(DualNumbers, FollowTheRulesOfDifferentiation) {
  using Number = support::Dual<1>;
  const Number x = Number::parameter(0.5, 0);
  const Number f = sqrt(x) * atan(x) / (Number(1) + sin(x) - cos(x));
  // By the product and quotient rule, term by term.
  const double g = std::sqrt(0.5);
  const double h = std::atan(0.5);
  const double d = 1 + std::sin(0.5) - std::cos(0.5);
  const double slope =
      ((0.5 / g) * h + g * (1 / 1.25)) / d - g * h * (std::cos(0.5) + std::sin(0.5)) / (d * d);
  EXPECT_NEAR(f.value, g * h / d, 1e-15);
  EXPECT_NEAR(f.slope[0], slope, 1e-14);
}

TEST(Random, IsTheSameEverywhere) {
  support::Random random(42);
  // The first number of the 64-bit Mersenne twister seeded with 42.
  EXPECT_EQ(random.uniform(0, 1), static_cast<double>(13930160852258120406ull >> 11) * 0x1p-53);
}

}  // namespace
