#include "registration/affine_fit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <vector>

#include "registration/debug_drive.h"
#include "support/comma_locale.h"

#if __has_include(<rapidcheck.h>)  // not for Windows
#include <rapidcheck/gtest.h>
#endif

using namespace fisheye_calibration;

namespace {

using AffineFitTest = DebugDriveTest;
using Points = std::vector<cv::Point2f>;
using Params = std::array<float, 6>;

const Points corners{{0, 0}, {10, 0}, {0, 10}, {10, 10}};

// u = 2x + 1, v = 3y - 4
Points stretched(const Points& points) {
  Points result;
  for (const cv::Point2f& p : points) result.emplace_back(2 * p.x + 1, 3 * p.y - 4);
  return result;
}

// Text of the debug file with this system's line ends.
std::string lines(std::string text) {
#if defined(_WIN32)
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) {
    text.insert(at, 1, '\r');
  }
#endif
  return text;
}

TEST_F(AffineFitTest, FindsAnExactMap) {
  Params params{};
  ASSERT_TRUE(AffineFit(corners, stretched(corners), params.data()));
  const Params expected{2, 0, 0, 3, 1, -4};
  for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(params[i], expected[i], 1e-6) << i;
}

TEST_F(AffineFitTest, ParametersComeInTheOrderABCDEF) {
  // u = 2x + 3y + 5, v = 7x + 11y + 13
  const Points dst{{5, 13}, {25, 83}, {35, 123}, {55, 193}};
  Params params{};
  ASSERT_TRUE(AffineFit(corners, dst, params.data()));
  const Params expected{2, 3, 7, 11, 5, 13};
  for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(params[i], expected[i], 1e-5) << i;
}

TEST_F(AffineFitTest, OneErrorIsSharedByLeastSquares) {
  // Square of side 2 about the origin, u off by +1 at (1, 1) only: a = b = e = 1/4.
  const Points src{{-1, -1}, {1, -1}, {-1, 1}, {1, 1}};
  const Points dst{{0, 0}, {0, 0}, {0, 0}, {1, 0}};
  Params params{};
  ASSERT_TRUE(AffineFit(src, dst, params.data()));
  EXPECT_EQ(params, (Params{0.25f, 0.25f, 0, 0, 0.25f, 0}));
}

TEST_F(AffineFitTest, DebugFileHasOneLinePerPair) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  Params params{};
  ASSERT_TRUE(AffineFit({{0, 0.5f}, {10.25f, -3}, {0.1f, 1e4f}}, {{1, 2}, {3, 4}, {-0.0f, 1e10f}},
                        params.data()));
  EXPECT_EQ(contentOf("D:/Affine.txt"),
            lines("0.000000\t0.500000\t1.000000\t2.000000\n"
                  "10.250000\t-3.000000\t3.000000\t4.000000\n"
                  "0.100000\t10000.000000\t-0.000000\t10000000000.000000\n"));
}

TEST_F(AffineFitTest, DebugFileIsReplacedByTheNextFit) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  Params params{};
  ASSERT_TRUE(AffineFit(corners, corners, params.data()));
  ASSERT_TRUE(AffineFit({{1, 2}}, {{3, 4}}, params.data()));
  EXPECT_EQ(contentOf("D:/Affine.txt"), lines("1.000000\t2.000000\t3.000000\t4.000000\n"));
}

TEST_F(AffineFitTest, DebugFileHoldsTheLargestAndSpecialFloats) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  const float largest = std::numeric_limits<float>::max();
  const float infinity = std::numeric_limits<float>::infinity();
  const float tiny = std::numeric_limits<float>::denorm_min();
  Params params{};
  ASSERT_TRUE(AffineFit({{largest, -largest}}, {{infinity, tiny}}, params.data()));
  EXPECT_EQ(contentOf("D:/Affine.txt"),
            lines("340282346638528859811704183484516925440.000000\t"
                  "-340282346638528859811704183484516925440.000000\tinf\t0.000000\n"));
}

TEST_F(AffineFitTest, DebugFileDoesNotDependOnTheProcessLocale) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  const support::CommaLocale locale;
  SKIP_WITHOUT_COMMA_LOCALE(locale);
  Params params{};
  ASSERT_TRUE(AffineFit({{1.5f, 2}}, {{3, 4}}, params.data()));
  EXPECT_EQ(contentOf("D:/Affine.txt"), lines("1.500000\t2.000000\t3.000000\t4.000000\n"));
}

TEST_F(AffineFitTest, DebugFileDoesNotDependOnTheStreamsLocale) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale(), new Comma));
  Params params{};
  const bool fitted = AffineFit({{1234.5f, 2}}, {{3, 4}}, params.data());
  std::locale::global(before);
  ASSERT_TRUE(fitted);
  EXPECT_EQ(contentOf("D:/Affine.txt"), lines("1234.500000\t2.000000\t3.000000\t4.000000\n"));
}

TEST_F(AffineFitTest, MissingDebugDirectoryIsIgnored) {
  Params params{};
  EXPECT_TRUE(AffineFit(corners, stretched(corners), params.data()));
}

TEST_F(AffineFitTest, ListsOfDifferentLengthAreRefusedWithoutAFile) {
  if (makeDebugDrive()) std::filesystem::remove("D:/Affine.txt");
  Params params{9, 9, 9, 9, 9, 9};
  EXPECT_FALSE(AffineFit(corners, {{1, 2}}, params.data()));
  EXPECT_FALSE(AffineFit({}, {}, params.data()));
  EXPECT_FALSE(AffineFit(corners, corners, nullptr));
  EXPECT_EQ(params, (Params{9, 9, 9, 9, 9, 9}));
  EXPECT_EQ(contentOf("D:/Affine.txt"), std::nullopt);
}

TEST_F(AffineFitTest, CoincidentPointsStillReturnTrue) {
  Params params{};
  EXPECT_TRUE(AffineFit({{1, 1}, {1, 1}, {1, 1}}, {{2, 2}, {2, 2}, {2, 2}}, params.data()));
}

TEST_F(AffineFitTest, HostileCoordinatesDoNotCrash) {
  const float values[] = {std::numeric_limits<float>::quiet_NaN(),
                          std::numeric_limits<float>::infinity(),
                          -std::numeric_limits<float>::max(), 0.0f};
  for (const float x : values) {
    for (const float u : values) {
      Params params{};
      EXPECT_TRUE(AffineFit({{x, 1}, {2, x}, {3, 3}}, {{u, u}, {1, u}, {u, 0}}, params.data()));
    }
  }
}

#if __has_include(<rapidcheck.h>)
// The least-squares map of one coordinate in extended precision: coordinates taken from their mean
// (so that the offset separates), then Cramer's rule on the remaining 2 x 2 system.
//   u = a (x - mx) + b (y - my) + mu,  e = mu - a mx - b my
std::array<long double, 3> leastSquares(const Points& src, const std::vector<float>& values) {
  const long double n = static_cast<long double>(src.size());
  long double mx = 0, my = 0, mu = 0;
  for (std::size_t i = 0; i < src.size(); ++i) {
    mx += src[i].x / n;
    my += src[i].y / n;
    mu += values[i] / n;
  }
  long double xx = 0, xy = 0, yy = 0, xu = 0, yu = 0;
  for (std::size_t i = 0; i < src.size(); ++i) {
    const long double x = src[i].x - mx, y = src[i].y - my, u = values[i] - mu;
    xx += x * x;
    xy += x * y;
    yy += y * y;
    xu += x * u;
    yu += y * u;
  }
  const long double determinant = xx * yy - xy * xy;
  const long double a = (xu * yy - yu * xy) / determinant;
  const long double b = (yu * xx - xu * xy) / determinant;
  return {a, b, mu - a * mx - b * my};
}

// Well-spread: the four corners of the frame are always among the points.
RC_GTEST_PROP(AffineFitProperty, AgreesWithExtendedPrecisionToFloatRounding, ()) {
  std::mt19937 generator(*rc::gen::arbitrary<std::uint32_t>());
  const std::size_t extra = *rc::gen::inRange<std::size_t>(0, 400);
  const auto size = static_cast<float>(*rc::gen::inRange(100, 10001));
  std::uniform_real_distribution<float> pixel(0, size);
  std::uniform_real_distribution<float> world(-1000, 1000);
  Points src{{0, 0}, {size, 0}, {0, size}, {size, size}};
  for (std::size_t i = 0; i < extra; ++i) src.emplace_back(pixel(generator), pixel(generator));
  Points dst;
  std::vector<float> us;
  std::vector<float> vs;
  for (std::size_t i = 0; i < src.size(); ++i) {
    us.push_back(world(generator));
    vs.push_back(world(generator));
    dst.emplace_back(us.back(), vs.back());
  }

  Params params{};
  RC_ASSERT(AffineFit(src, dst, params.data()));
  const auto [a, b, e] = leastSquares(src, us);
  const auto [c, d, f] = leastSquares(src, vs);
  const std::array<long double, 6> expected{a, b, c, d, e, f};
  for (std::size_t i = 0; i < 6; ++i) {
    // Half a unit in the last place of a float, and the double arithmetic's own error.
    const long double scale = i < 4 ? 1000.0L / size : 1000.0L;
    const long double tolerance =
        0.5L * std::numeric_limits<float>::epsilon() * std::fabs(expected[i]) + 1e-12L * scale;
    RC_ASSERT(std::fabs(params[i] - expected[i]) <= tolerance);
  }
}
#endif

}  // namespace
