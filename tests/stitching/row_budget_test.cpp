#include "stitching/row_budget.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <set>

#include "stitching/rigs.h"

using namespace fisheye_calibration;

namespace {

using stitching::RowBudget;
using stitching::Span;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

cv::Matx33d shift(double dx, double dy) { return {1, 0, dx, 0, 1, dy, 0, 0, 1}; }

cv::Matx33d turn(double degrees) {
  const double c = std::cos(degrees * CV_PI / 180);
  const double s = std::sin(degrees * CV_PI / 180);
  return {c, -s, 0, s, c, 0, 0, 0, 1};
}

// The rows of the view that the columns show, one by one.
std::set<int> shownRows(const cv::Matx33d& M, double row, const Span& columns, int height) {
  std::set<int> rows;
  for (int c = columns.begin; c < columns.end; ++c) {
    const double w = M(2, 0) * c + M(2, 1) * row + M(2, 2);
    const double y = (M(1, 0) * c + M(1, 1) * row + M(1, 2)) / w + 0.5;
    if (y > -1 && y < height) rows.insert(static_cast<int>(y));
  }
  return rows;
}

TEST(RowsShown, AreAFewMoreThanThoseOfAStraightLine) {
  EXPECT_LE(stitching::rowsShown(shift(-7, 2), 5, {0, 4000}, 3000), 4);
  // sin 1 degree x 3000 columns = 52.4 rows
  const int shown = stitching::rowsShown(turn(1), 5, {0, 3001}, 3000);
  EXPECT_GE(shown, 53);
  EXPECT_LE(shown, 56);
  EXPECT_EQ(stitching::rowsShown(turn(1), 5, {7, 7}, 3000), 0);
}

TEST(RowsShown, AreAllOfThemWhereNothingIsKnown) {
  for (const cv::Matx33d& M :
       {cv::Matx33d::all(kNaN), cv::Matx33d::zeros(), cv::Matx33d(1, 0, 0, 0, kNaN, 0, 0, 0, 1),
        cv::Matx33d(1, 0, 0, 0, 1, 0, 1, 0, -50), turn(90)}) {
    EXPECT_EQ(stitching::rowsShown(M, 3, {0, 100}, 80), 80) << M;
  }
}

TEST(RowsShown, AreNeverFewerThanTheColumnsShow) {
  support::Random random(3);
  int several = 0;
  int less = 0;
  for (int i = 0; i < 20000; ++i) {
    const int height = rigs::whole(random, 1, 60);
    const int begin = rigs::whole(random, 0, 50);
    const Span columns{begin, begin + rigs::whole(random, 0, 100)};
    const double row = rigs::whole(random, -20, 60);
    const double strength = std::pow(10.0, random.uniform(-6, 0));
    cv::Matx33d M = shift(rigs::whole(random, -60, 60) * 0.5, rigs::whole(random, -60, 60) * 0.5);
    for (double& m : M.val) m += random.uniform(-1, 1) * strength;
    if (i % 4 == 0) M = M * -std::pow(2.0, rigs::whole(random, -400, 400));
    const auto shown = static_cast<int>(shownRows(M, row, columns, height).size());
    const int bound = stitching::rowsShown(M, row, columns, height);
    ASSERT_GE(bound, shown) << "case " << i;
    ASSERT_LE(bound, height);
    several += shown > 3;
    less += bound < height;
  }
  EXPECT_GT(several, 500);  // the cases are no empty ones
  EXPECT_GT(less, 1000);
}

TEST(RowBudget, KeepsAsManyRowsAsOneRowOfTheCanvasShows) {
  const cv::Size view(2560, 1920);
  const cv::Size canvas(3456, 1920);
  // sin 1 degree x 2560 columns = 45 rows; sin 5 degrees: 223
  const std::optional<RowBudget> straight = stitching::rowBudget(turn(0), view, canvas, 0, 1);
  const std::optional<RowBudget> oblique = stitching::rowBudget(turn(1), view, canvas, 0, 1);
  const std::optional<RowBudget> most = stitching::rowBudget(turn(5), view, canvas, 0, 1);
  ASSERT_TRUE(straight && oblique && most);
  EXPECT_EQ(straight->ring, 4);
  EXPECT_EQ(oblique->ring, 64);
  EXPECT_EQ(most->ring, 256);
  EXPECT_FALSE(stitching::rowBudget(turn(8), view, canvas, 0, 1));
  EXPECT_FALSE(stitching::rowBudget(turn(90), view, canvas, 0, 1));
  EXPECT_FALSE(stitching::rowBudget(cv::Matx33d::all(kNaN), view, canvas, 0, 1));
}

TEST(RowBudget, KeepsAllRowsOfALowView) {
  for (const cv::Matx33d& M : {turn(90), cv::Matx33d::all(kNaN)}) {
    const std::optional<RowBudget> budget = stitching::rowBudget(M, {500, 200}, {400, 300}, 0, 1);
    ASSERT_TRUE(budget);
    EXPECT_EQ(budget->ring, 256);
  }
}

TEST(RowBudget, RangesRenderAtMostHalfAViewAgain) {
  const cv::Size view(2560, 1920);
  const cv::Size canvas(3456, 1920);
  for (const int threads : {1, 2, 5, 16}) {
    for (const double degrees : {0.0, 1.0, -2.0, 4.0}) {
      const auto budget = stitching::rowBudget(turn(degrees), view, canvas, 0, threads);
      const double shown = std::abs(std::sin(degrees * CV_PI / 180)) * view.width;
      if (budget) {
        EXPECT_GE(budget->rangeRows, 2 * shown * 0.99);
        EXPECT_TRUE(threads == 1 || canvas.height / budget->rangeRows >= threads);
      } else {
        EXPECT_GT(threads * 2 * (shown + 3), canvas.height);
      }
    }
  }
}

TEST(RowBudget, CanvasesWithoutPixelsNeedNone) {
  constexpr int highest = std::numeric_limits<int>::max();
  for (const cv::Size& canvas : {cv::Size(0, highest), cv::Size(-4, highest), cv::Size(4, -4)}) {
    EXPECT_EQ(stitching::rowBudget(turn(3), {2560, 1920}, canvas, 0, 1)->ring, 1);
  }
  EXPECT_EQ(stitching::rowBudget(turn(3), {0, 0}, {10, 10}, 0, 1)->ring, 1);
}

}  // namespace
