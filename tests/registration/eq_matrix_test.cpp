#include "registration/eq_matrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

using namespace fisheye_calibration;

namespace {

CEQMatrix matrixOf(const std::vector<std::vector<double>>& rows) {
  CEQMatrix matrix(static_cast<int>(rows.size()), static_cast<int>(rows.at(0).size()));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t j = 0; j < rows[i].size(); ++j) {
      matrix.SetElement(static_cast<int>(i), static_cast<int>(j), rows[i][j]);
    }
  }
  return matrix;
}

std::vector<std::vector<double>> rowsOf(const CEQMatrix& matrix) {
  std::vector<std::vector<double>> rows;
  for (int i = 0; i < matrix.Rows; ++i) {
    rows.emplace_back();
    for (int j = 0; j < matrix.Cols; ++j) rows.back().push_back(matrix.GetElement(i, j));
  }
  return rows;
}

using Rows = std::vector<std::vector<double>>;

TEST(EqMatrix, FieldsFollowTheVirtualTableInDeclaredOrder) {
  static_assert(std::has_virtual_destructor_v<CEQMatrix>);
  const CEQMatrix matrix;
  const char* start = reinterpret_cast<const char*>(&matrix);
  const std::ptrdiff_t table = sizeof(void*);
  EXPECT_EQ(reinterpret_cast<const char*>(&matrix.Cols) - start, table);
  EXPECT_EQ(reinterpret_cast<const char*>(&matrix.Rows) - start, table + 4);
  EXPECT_EQ(reinterpret_cast<const char*>(&matrix.Data) - start, table + 8);
  EXPECT_EQ(sizeof(CEQMatrix), 2 * sizeof(void*) + 8);
}

TEST(EqMatrix, NewMatrixIsZero) {
  EXPECT_EQ(rowsOf(CEQMatrix(2, 3)), (Rows{{0, 0, 0}, {0, 0, 0}}));
}

TEST(EqMatrix, ElementsLieRowByRow) {
  const CEQMatrix matrix = matrixOf({{1, 2, 3}, {4, 5, 6}});
  EXPECT_EQ(std::vector<double>(matrix.Data, matrix.Data + 6),
            (std::vector<double>{1, 2, 3, 4, 5, 6}));
}

TEST(EqMatrix, WritesOutsideAreIgnored) {
  CEQMatrix matrix = matrixOf({{1, 2}, {3, 4}});
  for (const auto& [row, col] : std::vector<std::pair<int, int>>{
           {-1, 0}, {0, -1}, {2, 0}, {0, 2}, {-1, 2}, {1, 2}, {2147483647, 2147483647}}) {
    matrix.SetElement(row, col, 9);
    EXPECT_EQ(matrix.GetElement(row, col), 0);
  }
  EXPECT_EQ(rowsOf(matrix), (Rows{{1, 2}, {3, 4}}));
}

TEST(EqMatrix, WritesWithoutStorageAreIgnored) {
  CEQMatrix matrix(-2, 3);
  EXPECT_EQ(matrix.Data, nullptr);
  matrix.SetElement(0, 0, 1);
  EXPECT_EQ(matrix.GetElement(0, 0), 0);
}

TEST(EqMatrix, SetSizeClearsOldElements) {
  CEQMatrix matrix = matrixOf({{1, 2}, {3, 4}});
  EXPECT_EQ(matrix.SetSize(1, 3), 1);
  EXPECT_EQ(rowsOf(matrix), (Rows{{0, 0, 0}}));
}

TEST(EqMatrix, SetSizeRefusesANegativeProduct) {
  CEQMatrix matrix = matrixOf({{1}});
  EXPECT_EQ(matrix.SetSize(-1, 3), 0);
  EXPECT_EQ(matrix.Data, nullptr);
  EXPECT_EQ(matrix.Rows, -1);
  EXPECT_EQ(matrix.Cols, 3);
}

TEST(EqMatrix, SetSizeRefusesAProductBeyond31Bits) {
  CEQMatrix matrix;
  EXPECT_EQ(matrix.SetSize(46341, 46341), 0);  // 2147488281: negative in 32 bits
  EXPECT_EQ(matrix.Data, nullptr);
  EXPECT_EQ(matrix.SetSize(65536, 65536), 0);  // 2^32: zero in 32 bits
  EXPECT_EQ(matrix.SetSize(65537, 65537), 0);  // small and positive in 32 bits
  EXPECT_EQ(matrix.SetSize(std::numeric_limits<int>::min(), std::numeric_limits<int>::min()), 0);
  EXPECT_EQ(matrix.SetSize(std::numeric_limits<int>::max(), std::numeric_limits<int>::max()), 0);
}

TEST(EqMatrix, SetSizeZeroSucceedsWithoutStorage) {
  CEQMatrix matrix = matrixOf({{1}});
  EXPECT_EQ(matrix.SetSize(0, 5), 1);
  EXPECT_EQ(matrix.Data, nullptr);
}

TEST(EqMatrix, CopyHasItsOwnElements) {
  CEQMatrix original = matrixOf({{1, 2}});
  const CEQMatrix copy(original);
  original.SetElement(0, 0, 9);
  EXPECT_EQ(rowsOf(copy), (Rows{{1, 2}}));
}

TEST(EqMatrix, CopyOfASizeWithoutStorageKeepsTheSize) {
  const CEQMatrix refused(65536, 65536);
  const CEQMatrix copy(refused);
  EXPECT_EQ(copy.Rows, 65536);
  EXPECT_EQ(copy.Cols, 65536);
  EXPECT_EQ(copy.Data, nullptr);
}

TEST(EqMatrix, SelfAssignmentKeepsTheElements) {
  CEQMatrix matrix = matrixOf({{1, 2}});
  CEQMatrix& same = matrix;
  matrix = same;
  EXPECT_EQ(rowsOf(matrix), (Rows{{1, 2}}));
  matrix = std::move(same);
  EXPECT_EQ(rowsOf(matrix), (Rows{{1, 2}}));
}

TEST(EqMatrix, MovedFromMatrixIsEmptyAndUsable) {
  CEQMatrix source = matrixOf({{1, 2}});
  const CEQMatrix target(std::move(source));
  EXPECT_EQ(rowsOf(target), (Rows{{1, 2}}));
  EXPECT_EQ(source.Rows, 0);  // NOLINT(bugprone-use-after-move): the state is part of the contract
  EXPECT_EQ(source.Cols, 0);
  EXPECT_EQ(source.Data, nullptr);
  EXPECT_EQ(source.GetElement(0, 0), 0);
  EXPECT_EQ(source.Invert(), 1);
  EXPECT_EQ(source.Multiply(target).Data, nullptr);
  EXPECT_EQ(source.Transpose().Data, nullptr);
  EXPECT_EQ(source.SetSize(1, 1), 1);
}

TEST(EqMatrix, MultiplyIsTheMatrixProduct) {
  EXPECT_EQ(rowsOf(matrixOf({{1, 2, 3}, {4, 5, 6}}).Multiply(matrixOf({{1, 0}, {0, 1}, {2, -1}}))),
            (Rows{{7, -1}, {16, -1}}));
}

TEST(EqMatrix, MultiplySumsFromTheFirstColumnOn) {
  // (1e16 + 1) + 1 loses both ones; any other order keeps them.
  EXPECT_EQ(rowsOf(matrixOf({{1e16, 1, 1}}).Multiply(matrixOf({{1}, {1}, {1}}))), (Rows{{1e16}}));
  EXPECT_EQ(rowsOf(matrixOf({{1, 1, 1e16}}).Multiply(matrixOf({{1}, {1}, {1}}))),
            (Rows{{1e16 + 2}}));
}

TEST(EqMatrix, MultiplyRoundsEveryProduct) {
  // (1 + 2^-30)^2 - (1 + 2^-29) is 2^-60 exactly; with the product rounded it is 0.
  const double x = 1 + std::ldexp(1.0, -30);
  const double rounded = 1 + std::ldexp(1.0, -29);
  EXPECT_EQ(rowsOf(matrixOf({{-rounded, x}}).Multiply(matrixOf({{1}, {x}}))), (Rows{{0}}));
}

TEST(EqMatrix, MultiplyTakesMissingRowsOfTheRightFactorAsZero) {
  EXPECT_EQ(rowsOf(matrixOf({{1, 2, 3}}).Multiply(matrixOf({{10, 20}}))), (Rows{{10, 20}}));
}

TEST(EqMatrix, MultiplyIgnoresSurplusRowsOfTheRightFactor) {
  EXPECT_EQ(rowsOf(matrixOf({{2}}).Multiply(matrixOf({{3}, {100}}))), (Rows{{6}}));
}

TEST(EqMatrix, MultiplyWithFactorsWithoutStorageGivesZeros) {
  const CEQMatrix refused(65536, 65536);
  EXPECT_EQ(rowsOf(matrixOf({{1, 2}}).Multiply(CEQMatrix(0, 2))), (Rows{{0, 0}}));
  EXPECT_EQ(refused.Multiply(refused).Data, nullptr);
  EXPECT_EQ(CEQMatrix(-1, 2).Multiply(matrixOf({{1}, {1}})).Data, nullptr);
}

TEST(EqMatrix, TransposeSwapsRowsAndColumns) {
  EXPECT_EQ(rowsOf(matrixOf({{1, 2, 3}, {4, 5, 6}}).Transpose()), (Rows{{1, 4}, {2, 5}, {3, 6}}));
}

TEST(EqMatrix, OperationsOnTwoNegativeSizesStayInsideTheStorage) {
  const CEQMatrix matrix(-2, -3);  // a positive product: storage that no index reaches
  EXPECT_EQ(matrix.GetElement(0, 0), 0);
  const CEQMatrix copy(matrix);
  EXPECT_EQ(copy.Rows, -2);
  EXPECT_EQ(matrix.Multiply(copy).Rows, -2);
  EXPECT_EQ(matrix.Transpose().Rows, -3);
  EXPECT_EQ(CEQMatrix(-2, -2).Invert(), 0);
}

}  // namespace
