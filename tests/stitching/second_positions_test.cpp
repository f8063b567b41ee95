#include "stitching/second_positions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "support/dice.h"
#include "support/instruction_sets.h"

using namespace fisheye_calibration;

namespace {

using stitching::kPositionBlock;
using stitching::kPositionsAtOnce;
using stitching::SecondPositions;
using support::Dice;

// Columns of one row.
struct Columns {
  cv::Matx33d M;
  double row;
  int begin;
  int count;
  cv::Size size;
};

int plainPosition(const Columns& columns, int c) {
  const cv::Matx33d& M = columns.M;
  const double row = columns.row;
  const double w = M(2, 0) * c + M(2, 1) * row + M(2, 2);
  const double x = (M(0, 0) * c + M(0, 1) * row + M(0, 2)) / w + 0.5;
  const double y = (M(1, 0) * c + M(1, 1) * row + M(1, 2)) / w + 0.5;
  if (!(x > -1 && x < columns.size.width && y > -1 && y < columns.size.height)) return -1;
  return static_cast<int>(y) * columns.size.width + static_cast<int>(x);
}

// Compares all columns; returns the share of blocks that were found to be neighbours.
double compare(const Columns& columns) {
  SecondPositions found;
  stitching::secondPositions(columns.M, columns.row, columns.begin, columns.count, columns.size,
                             found);
  int wrong = 0;
  int blocks = 0;
  for (int i = 0; i < columns.count; ++i) {
    const int block = i / kPositionBlock;
    const bool inRow = found.areNeighbours(block);
    const int position =
        inRow ? found.at[block * kPositionBlock] + i % kPositionBlock : found.at[i];
    wrong += position != plainPosition(columns, columns.begin + i);
    blocks += inRow && i % kPositionBlock == 0;
  }
  EXPECT_EQ(wrong, 0) << columns.M << ", row " << columns.row << ", columns from " << columns.begin
                      << ", view of " << columns.size;
  return blocks / std::ceil(columns.count / static_cast<double>(kPositionBlock));
}

Columns randomColumns(Dice& dice, const cv::Matx33d& M) {
  return {M,
          static_cast<double>(dice.whole(-2000, 2000)),
          dice.whole(0, 3000),
          dice.oneIn(3) ? dice.whole(1, kPositionsAtOnce) : kPositionsAtOnce,
          {dice.whole(1, 4000), dice.whole(1, 3000)}};
}

// Like those of two cameras side by side.
cv::Matx33d ordinary(Dice& dice) {
  const double turn = dice.number(0.02);
  return {1 + dice.number(0.02),
          turn,
          dice.number(900),
          -turn,
          1 + dice.number(0.02),
          dice.number(900),
          dice.number(1e-5),
          dice.number(1e-5),
          1};
}

TEST(SecondPositions, AreThoseOfTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(1);
    double shares = 0;
    constexpr int kRows = 3000;
    for (int k = 0; k < kRows && !testing::Test::HasFailure(); ++k) {
      Columns columns = randomColumns(dice, ordinary(dice));
      columns.row = dice.whole(0, 1000);
      columns.begin = dice.whole(0, 1000);
      shares += compare(columns);
    }
    EXPECT_GT(shares / kRows, 0.2);  // many rows lie partly outside the view
  });
}

TEST(SecondPositions, OfWholeShiftsAreNeighbours) {
  const Columns columns{{1, 0, 7, 0, 1, -3, 0, 0, 1}, 40, 100, kPositionsAtOnce, {2000, 90}};
  support::onEveryInstructionSet([&] { EXPECT_EQ(compare(columns), 1); });
}

// x + 1/2 is whole but for the rounding of the formula's steps.
TEST(SecondPositions, OnTiesAreThoseOfTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(2);
    for (int k = 0; k < 2000 && !testing::Test::HasFailure(); ++k) {
      const cv::Matx33d M(1, 0, dice.whole(0, 900) + 0.5, 0, 1, dice.whole(0, 900) + 0.25, 0, 0, 1);
      compare({dice.uniform(0.1, 10) * M, 20, dice.whole(0, 900), kPositionsAtOnce, {3000, 2000}});
    }
  });
}

// x - c rises and falls again within a block, by less than a pixel: its ends lie in the same pixel,
// its middle in the next one.
TEST(SecondPositions, ThatReachTheNextPixelWithinABlockAreThoseOfTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(5);
    for (int k = 0; k < 2000 && !testing::Test::HasFailure(); ++k) {
      const double bend = dice.magnitude(1e-7, 9e-4) * (dice.oneIn(2) ? 1 : -1);
      const int middle = kPositionBlock * dice.whole(2, 20) + kPositionBlock / 2;
      const double x = dice.whole(500, 900) - 0.5 + bend * dice.uniform(0, 64);
      const double slope = 1 + x * bend;
      compare({{slope, 0, x - slope * middle, 0, 1, 0.2, bend, 0, 1 - bend * middle},
               0,
               0,
               kPositionsAtOnce,
               {3000, 2000}});
    }
  });
}

// The largest positions inside the view, columns -1 and the like.
TEST(SecondPositions, AtTheViewsSidesAreThoseOfTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(3);
    for (int k = 0; k < 2000 && !testing::Test::HasFailure(); ++k) {
      Columns columns = randomColumns(dice, cv::Matx33d::eye());
      columns.M(0, 2) = (dice.oneIn(2) ? columns.size.width : 0) - columns.begin -
                        dice.whole(-1, columns.count) + dice.number(1);
      columns.M(1, 2) = (dice.oneIn(2) ? columns.size.height : 0) - columns.row + dice.number(1.6);
      compare(columns);
    }
  });
}

// Views from the side, upside down and mirrored, horizons within the row, terms that cancel.
TEST(SecondPositions, OfAnyTransformAreThoseOfTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(4);
    for (int k = 0; k < 4000 && !testing::Test::HasFailure(); ++k) {
      cv::Matx33d M = ordinary(dice);
      switch (dice.whole(0, 4)) {
        case 0:
          for (double& m : M.val) m *= dice.number(2);
          break;
        case 1:
          M(2, 0) = dice.number(1) * dice.magnitude(1e-6, 1);
          M(2, 2) = -M(2, 0) * dice.whole(0, 3000) + dice.number(1);
          break;
        case 2:
          M = -M;
          break;
        case 3:
          M = dice.magnitude(1e-300, 1e300) * M;
          break;
        default:
          M(0, 0) = -1;
          break;
      }
      compare(randomColumns(dice, M));
    }
  });
}

TEST(SecondPositions, OfNumbersThatAreNotFiniteAreOutside) {
  support::onEveryInstructionSet([] {
    for (const double value :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
      for (int k = 0; k < 9; ++k) {
        cv::Matx33d M = cv::Matx33d::eye();
        M.val[k] = value;
        compare({M, 1, 0, 100, {300, 200}});
      }
    }
  });
}

}  // namespace
