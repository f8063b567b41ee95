#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <vector>

#include "fisheye_calibration.h"
#include "registration/affine_fit.h"
#include "registration/eq_matrix.h"

using namespace fisheye_calibration;

namespace {

// How many more array allocations of the kind that reports failure by null may succeed.
int allocationsLeft = std::numeric_limits<int>::max();

class AllowAllocations {
 public:
  explicit AllowAllocations(int count) { allocationsLeft = count; }
  ~AllowAllocations() { allocationsLeft = std::numeric_limits<int>::max(); }
};

}  // namespace

// Replaces the form that the matrix class allocates with.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  if (allocationsLeft == 0) return nullptr;
  --allocationsLeft;
  try {
    return ::operator new[](size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

namespace {

TEST(AllocationFailure, SetSizeReturnsZeroAndKeepsTheSizes) {
  CEQMatrix matrix(1, 1);
  const AllowAllocations none(0);
  EXPECT_EQ(matrix.SetSize(2, 3), 0);
  EXPECT_EQ(matrix.Data, nullptr);
  EXPECT_EQ(matrix.Rows, 2);
  EXPECT_EQ(matrix.Cols, 3);
}

TEST(AllocationFailure, CopyHasNoStorage) {
  const CEQMatrix matrix(2, 2);
  const AllowAllocations none(0);
  const CEQMatrix copy(matrix);
  EXPECT_EQ(copy.Data, nullptr);
  EXPECT_EQ(copy.GetElement(0, 0), 0);
}

TEST(AllocationFailure, ProductAndTransposeHaveNoStorage) {
  const CEQMatrix matrix(2, 2);
  const AllowAllocations none(0);
  EXPECT_EQ(matrix.Multiply(matrix).Data, nullptr);
  EXPECT_EQ(matrix.Transpose().Data, nullptr);
}

TEST(AllocationFailure, InvertWithoutPivotListsLeavesTheMatrixUnchanged) {
  for (const int allowed : {0, 1}) {
    CEQMatrix matrix(1, 1);
    matrix.SetElement(0, 0, 4);
    const AllowAllocations some(allowed);
    EXPECT_EQ(matrix.Invert(), 0);
    EXPECT_EQ(matrix.GetElement(0, 0), 4);
  }
}

TEST(AllocationFailure, FitReturnsFalseAndWritesNothing) {
  const std::vector<cv::Point2f> points{{0, 0}, {1, 0}, {0, 1}};
  // In turn: both sides of the equations, the transpose, the normal equations' two sides; then
  // the inversion's two pivot lists and the solution.
  for (const int allowed : {0, 1, 2, 3, 4, 5, 6, 7}) {
    float params[6] = {9, 9, 9, 9, 9, 9};
    const AllowAllocations some(allowed);
    EXPECT_FALSE(AffineFit(points, points, params)) << "after " << allowed << " allocations";
    for (const float value : params) EXPECT_EQ(value, 9) << "after " << allowed << " allocations";
  }
  float params[6] = {};
  const AllowAllocations enough(8);
  EXPECT_TRUE(AffineFit(points, points, params));
}

TEST(AllocationFailure, HandEyeCalibrationReturnsFalseAndWritesNothing) {
  const AllowAllocations none(0);
  double params[6] = {9, 9, 9, 9, 9, 9};
  double errorX = 9;
  double errorY = 9;
  EXPECT_FALSE(HandEyeCalibration(std::vector<CalibrationPoint>(9), params, errorX, errorY));
  EXPECT_EQ(params[0], 9);
  EXPECT_EQ(errorX, 9);
}

}  // namespace
