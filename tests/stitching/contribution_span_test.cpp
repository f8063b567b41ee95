#include "stitching/contribution_span.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "stitching/rigs.h"

using namespace fisheye_calibration;

namespace {

using support::Random;

bool isTaken(const cv::Matx33d& M, double row, int c, const cv::Size& size) {
  const double w = M(2, 0) * c + M(2, 1) * row + M(2, 2);
  const double x = (M(0, 0) * c + M(0, 1) * row + M(0, 2)) / w + 0.5;
  const double y = (M(1, 0) * c + M(1, 1) * row + M(1, 2)) / w + 0.5;
  return x > -1 && x < size.width && y > -1 && y < size.height;
}

cv::Matx33d shift(double dx, double dy) { return {1, 0, dx, 0, 1, dy, 0, 0, 1}; }

TEST(ContributionSpan, IsTightUpToAFewColumns) {
  const stitching::Span span =
      stitching::contributionSpan(shift(-1000, 0), 3, 4000, cv::Size(2000, 10));
  EXPECT_LE(span.begin, 999);  // column 999 is taken to -1, which is cut to 0
  EXPECT_GE(span.begin, 994);
  EXPECT_GE(span.end, 3000);
  EXPECT_LE(span.end, 3005);
}

TEST(ContributionSpan, RowsThatMissTheViewAreEmpty) {
  const stitching::Span span =
      stitching::contributionSpan(shift(0, -100), 3, 4000, cv::Size(2000, 10));
  EXPECT_GE(span.begin, span.end);
}

TEST(ContributionSpan, TheWholeRowCountsWhereNothingIsKnown) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const cv::Matx33d& M :
       {cv::Matx33d::all(nan), cv::Matx33d::zeros(), cv::Matx33d(1, 0, 0, 0, nan, 0, 0, 0, 1),
        cv::Matx33d(1, 0, 0, 0, 1, 0, 1, 0, -50), cv::Matx33d::all(1e308)}) {
    const stitching::Span span = stitching::contributionSpan(M, 3, 100, cv::Size(20, 10));
    EXPECT_EQ(span.begin, 0);
    EXPECT_EQ(span.end, 100);
  }
}

TEST(ContributionSpan, ExtremeWidthsAndSlopesStayInRange) {
  constexpr int widest = std::numeric_limits<int>::max();
  for (const double slope : {1.0, -1.0, 1e-300, -1e-300, 1e-18, 5e-324}) {
    const cv::Matx33d M(slope, 0, 5, 0, 1, 0, 0, 0, 1);
    const stitching::Span span = stitching::contributionSpan(M, 3, widest, cv::Size(20, 10));
    EXPECT_EQ(span.begin, 0);  // column 0 is taken to 5
    EXPECT_GE(span.end, 1);
  }
  EXPECT_EQ(stitching::contributionSpan(shift(0, 0), 3, -5, cv::Size(20, 10)).end, 0);
}

TEST(ContributionSpan, HoldsEveryColumnThatIsTaken) {
  Random random(3);
  int taken = 0;
  int left = 0;
  for (int i = 0; i < 20000; ++i) {
    const cv::Size size(rigs::whole(random, 1, 50), rigs::whole(random, 1, 50));
    const int width = rigs::whole(random, 1, 150);
    const double row = rigs::whole(random, -20, 60);
    const double strength = std::pow(10.0, random.uniform(-18, 0));
    cv::Matx33d M = shift(rigs::whole(random, -60, 60) * 0.5, rigs::whole(random, -60, 60) * 0.5);
    for (double& m : M.val) m += random.uniform(-1, 1) * strength;
    if (i % 4 == 0) M = M * -std::pow(2.0, rigs::whole(random, -900, 900));
    const stitching::Span span = stitching::contributionSpan(M, row, width, size);
    ASSERT_GE(span.begin, 0);
    ASSERT_LE(span.end, width);
    for (int c = 0; c < width; ++c) {
      if (isTaken(M, row, c, size)) {
        ++taken;
        ASSERT_TRUE(span.begin <= c && c < span.end) << "case " << i << ", column " << c;
      } else if (c < span.begin || c >= span.end) {
        ++left;
      }
    }
  }
  EXPECT_GT(taken, 10000);  // the cases are no empty ones
  EXPECT_GT(left, 100000);
}

}  // namespace
