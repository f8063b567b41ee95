// Fits and rotations against the version of the image library that defines this library's results.
// These are not promised in every bit: they use the C library's sine and cosine, or eigenvectors
// from whichever library the image library was built with.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <optional>

#include "reference/generator.h"
#include "reference/records.h"

namespace {

using reference::Record;
using Numbers = std::vector<double>;

// The largest difference of two numbers at the same place.
double difference(const Numbers& found, const Numbers& expected) {
  if (found.size() != expected.size()) return HUGE_VAL;
  double worst = 0;
  for (std::size_t i = 0; i < found.size(); ++i) {
    const double d = std::abs(found[i] - expected[i]);
    worst = std::isnan(d) ? HUGE_VAL : std::max(worst, d);
  }
  return worst;
}

// ---- rotations
// ------------------------------------------------------------------------------------

// Three numbers are a vector, nine a matrix.
Numbers rotated(const Numbers& rotation) {
  cv::Mat result;
  cv::Rodrigues(cv::Mat(rotation).reshape(1, 3), result);
  return result.reshape(1, 1);
}

TEST(Fits, RotationsAreTheRecordedOnes) {
  std::size_t count = 0;
  for (const Record& record : reference::readRecords("fits")) {
    if (record.words.at(0) != "rotation") continue;
    const Numbers result = rotated(reference::numbersOf(record.parts.at(0)));
    EXPECT_LE(difference(result, reference::numbersOf(record.parts.at(1))), 1e-15) << record.line;
    ++count;
  }
  EXPECT_EQ(count, 17U * 3U);
}

// ---- homographies
// ---------------------------------------------------------------------------------

// In pixels: a sixth of the spacing of 32-bit floats where the points lie. The refinement ends
// where the sum of squares changes by rounding errors only, which leaves the result uncertain by
// about their square root.
constexpr double kTolerance = 1e-5;

reference::TiltedGrid gridOf(const Record& record) {
  return reference::tiltedGrid(record.number(1), record.number(2),
                               reference::numbersOf(record.words.at(3)).at(0), record.number(4),
                               static_cast<std::uint32_t>(record.number(5)));
}

// Nothing when the image library raises an exception.
std::optional<Numbers> homography(const reference::TiltedGrid& grid) {
  try {
    const cv::Mat H =
        cv::findHomography(grid.tilted, grid.level, cv::RANSAC, 3.0, cv::noArray(), 2000, 0.995);
    return H.empty() ? Numbers() : Numbers(H.reshape(1, 1));
  } catch (const cv::Exception&) {
    return std::nullopt;
  }
}

cv::Point2d apply(const Numbers& H, const cv::Point2f& point) {
  const cv::Vec3d p = cv::Matx33d(H.data()) * cv::Vec3d(point.x, point.y, 1);
  return {p[0] / p[2], p[1] / p[2]};
}

// How far apart two homographies carry a point of the grid, in pixels.
double distance(const Numbers& found, const Numbers& expected, const reference::TiltedGrid& grid) {
  if (found.size() != 9 || expected.size() != 9) return HUGE_VAL;
  double worst = 0;
  for (const cv::Point2f& point : grid.tilted) {
    const double d = cv::norm(apply(found, point) - apply(expected, point));
    worst = std::isnan(d) ? HUGE_VAL : std::max(worst, d);
  }
  return worst;
}

void compareHomography(const Record& record) {
  const reference::TiltedGrid grid = gridOf(record);
  const std::optional<Numbers> result = homography(grid);
  ASSERT_EQ(result.has_value(), record.parts.at(0) != " raises");
  if (!result) return;
  const Numbers expected = reference::numbersOf(record.parts.at(0));
  ASSERT_EQ(result->size(), expected.size());
  if (expected.empty()) return;  // points on a line
  EXPECT_LE(distance(*result, expected, grid), kTolerance);
}

TEST(Fits, HomographiesMapPointsLikeTheRecordedOnes) {
  std::size_t count = 0;
  for (const Record& record : reference::readRecords("fits")) {
    if (record.words.at(0) != "homography") continue;
    SCOPED_TRACE(record.line);
    compareHomography(record);
    ++count;
  }
  EXPECT_EQ(count, 13U * 4U);
}

// Points astray pull a homography by far more than the tolerance unless they are left out.
TEST(FitRecords, NoticeAFitToAllPoints) {
  for (const Record& record : reference::readRecords("fits")) {
    if (record.words.at(0) != "homography" || record.number(4) == 0) continue;
    const reference::TiltedGrid grid = gridOf(record);
    const Numbers all = cv::findHomography(grid.tilted, grid.level, 0).reshape(1, 1);
    EXPECT_GT(distance(all, reference::numbersOf(record.parts.at(0)), grid), 1) << record.line;
  }
}

// ---- least squares
// --------------------------------------------------------------------------------

TEST(Fits, LeastSquaresAreTheRecordedOnes) {
  std::size_t count = 0;
  for (const Record& record : reference::readRecords("fits")) {
    if (record.words.at(0) != "leastSquares") continue;
    const int rows = record.number(1);
    reference::Generator generator(static_cast<std::uint32_t>(record.number(2)));
    const Numbers A = reference::numbers(generator, static_cast<std::size_t>(rows) * 6, 1);
    const Numbers b = reference::numbers(generator, static_cast<std::size_t>(rows), 1);
    cv::Vec6d step;
    cv::solve(cv::Mat(A).reshape(1, rows), cv::Mat(b), step, cv::DECOMP_SVD | cv::DECOMP_NORMAL);
    const Numbers expected = reference::numbersOf(record.parts.at(0));
    EXPECT_LE(difference({step.val, step.val + 6}, expected), 1e-12) << record.line;
    ++count;
  }
  EXPECT_EQ(count, 5U * 3U);
}

}  // namespace
