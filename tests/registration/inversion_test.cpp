#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>
#include <random>
#include <vector>

#include "registration/eq_matrix.h"
#include "registration/plain_elimination.h"

#if __has_include(<rapidcheck.h>)  // not for Windows
#include <rapidcheck/gtest.h>
#endif

using namespace fisheye_calibration;

namespace {

using plain::Matrix;

CEQMatrix equationMatrix(const Matrix& rows) {
  const int n = static_cast<int>(rows.size());
  CEQMatrix matrix(n, n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      matrix.SetElement(i, j, rows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]);
    }
  }
  return matrix;
}

std::optional<Matrix> inverted(const Matrix& rows) {
  CEQMatrix matrix = equationMatrix(rows);
  if (matrix.Invert() == 0) return std::nullopt;
  Matrix result(rows.size(), std::vector<double>(rows.size()));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t j = 0; j < rows.size(); ++j) result[i][j] = matrix.Data[i * rows.size() + j];
  }
  return result;
}

// Bit patterns, so that 0 and -0 differ and a NaN equals itself.
std::vector<std::uint64_t> bitsOf(const std::optional<Matrix>& matrix) {
  std::vector<std::uint64_t> bits;
  if (!matrix) return bits;
  for (const auto& row : *matrix) {
    for (const double element : row) bits.push_back(std::bit_cast<std::uint64_t>(element));
  }
  return bits;
}

// Draws a square matrix of order n, each element from `element(generator)`.
template <typename Element>
Matrix drawMatrix(std::mt19937_64& generator, std::size_t n, Element element) {
  Matrix matrix(n, std::vector<double>(n));
  for (auto& row : matrix) {
    for (double& value : row) value = element(generator);
  }
  return matrix;
}

double uniform(std::mt19937_64& generator) {
  return std::ldexp(static_cast<double>(static_cast<std::int64_t>(generator())), -63);
}

TEST(Inversion, TwoByTwoByHand) {
  const std::optional<Matrix> result = inverted({{4, 7}, {2, 6}});
  ASSERT_TRUE(result);
  EXPECT_NEAR((*result)[0][0], 0.6, 1e-15);
  EXPECT_NEAR((*result)[0][1], -0.7, 1e-15);
  EXPECT_NEAR((*result)[1][0], -0.2, 1e-15);
  EXPECT_NEAR((*result)[1][1], 0.4, 1e-15);
}

TEST(Inversion, PivotsAwayFromTheDiagonal) {
  EXPECT_EQ(inverted({{0, 1}, {1, 0}}), (Matrix{{0, 1}, {1, 0}}));
}

TEST(Inversion, CyclicPermutationBecomesItsTranspose) {
  EXPECT_EQ(inverted({{0, 2, 0}, {0, 0, 4}, {8, 0, 0}}),
            (Matrix{{0, 0, 0.125}, {0.5, 0, 0}, {0, 0.25, 0}}));
}

TEST(Inversion, ZeroRowIsSingular) { EXPECT_FALSE(inverted({{1, 2}, {0, 0}})); }

TEST(Inversion, SingularMatrixIsLeftPartlyTransformed) {
  // Pivot 4 in the lower right corner: swapped to the front, eliminated, then nothing but 0
  // remains.
  CEQMatrix matrix = equationMatrix({{1, 2}, {2, 4}});
  EXPECT_EQ(matrix.Invert(), 0);
  EXPECT_EQ(std::vector<double>(matrix.Data, matrix.Data + 4),
            (std::vector<double>{0.25, 0.5, -0.5, 0}));
}

TEST(Inversion, OnlyAnExactZeroIsSingular) {
  EXPECT_EQ(inverted({{std::numeric_limits<double>::min()}}),
            (Matrix{{1 / std::numeric_limits<double>::min()}}));
}

TEST(Inversion, NonSquareMatrixIsRefusedAndUnchanged) {
  CEQMatrix wide(1, 2);
  wide.SetElement(0, 0, 5);
  wide.SetElement(0, 1, 7);
  EXPECT_EQ(wide.Invert(), 0);
  EXPECT_EQ(wide.GetElement(0, 0), 5);
  EXPECT_EQ(wide.GetElement(0, 1), 7);
  CEQMatrix tall(2, 1);
  tall.SetElement(1, 0, 7);
  EXPECT_EQ(tall.Invert(), 0);
  EXPECT_EQ(tall.GetElement(1, 0), 7);
}

TEST(Inversion, SquareSizeWithoutStorageIsRefused) {
  EXPECT_EQ(CEQMatrix(65536, 65536).Invert(), 0);
}

TEST(Inversion, AllNanCountsAsSingular) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(inverted({{nan, nan}, {nan, nan}}));
}

// Elements of few values: almost every search meets several equal maxima.
TEST(Inversion, EqualMaximaAreTakenInScanOrder) {
  std::mt19937_64 generator(1);
  const auto fewValues = [](std::mt19937_64& g) { return static_cast<double>(g() % 5) - 2.0; };
  int inverses = 0;
  int casesThatTellTheRulesApart = 0;
  for (int i = 0; i < 400; ++i) {
    const Matrix matrix = drawMatrix(generator, 2 + generator() % 8, fewValues);
    const auto expected = plain::inverse(matrix);
    EXPECT_EQ(bitsOf(inverted(matrix)), bitsOf(expected));
    inverses += expected.has_value();
    casesThatTellTheRulesApart +=
        bitsOf(plain::inverse(matrix, plain::Tie::Last)) != bitsOf(expected);
  }
  EXPECT_GT(inverses, 200);
  EXPECT_GT(casesThatTellTheRulesApart, 100);
}

TEST(Inversion, RandomMatricesUpTo60x60AgreeToTheBit) {
  std::mt19937_64 generator(2);
  for (std::size_t n = 1; n <= 60; ++n) {
    const Matrix matrix = drawMatrix(generator, n, uniform);
    const auto expected = plain::inverse(matrix);
    ASSERT_TRUE(expected);
    EXPECT_EQ(bitsOf(inverted(matrix)), bitsOf(expected)) << "order " << n;
  }
}

TEST(Inversion, PermutedDominantMatricesAgreeToTheBit) {
  std::mt19937_64 generator(3);
  for (std::size_t n = 2; n <= 60; n += 7) {
    Matrix matrix = drawMatrix(generator, n, uniform);
    std::vector<std::size_t> order(n);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::shuffle(order.begin(), order.end(), generator);
    for (std::size_t i = 0; i < n; ++i) matrix[i][order[i]] += 100.0 * (uniform(generator) + 2);
    EXPECT_EQ(bitsOf(inverted(matrix)), bitsOf(plain::inverse(matrix))) << "order " << n;
  }
}

// Hilbert's matrices with rows of very different size, close to singular from order 12 on.
TEST(Inversion, NearlySingularMatricesAgreeToTheBit) {
  for (std::size_t n = 2; n <= 60; n += 4) {
    Matrix matrix(n, std::vector<double>(n));
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < n; ++j) {
        matrix[i][j] = std::ldexp(1.0 / static_cast<double>(i + j + 1),
                                  static_cast<int>((7 * i + 3 * j) % 40) - 20);
      }
    }
    EXPECT_EQ(bitsOf(inverted(matrix)), bitsOf(plain::inverse(matrix))) << "order " << n;
  }
}

TEST(Inversion, ElementsOfEverySizeAgreeToTheBit) {
  std::mt19937_64 generator(4);
  const auto anySize = [](std::mt19937_64& g) {
    return std::ldexp(uniform(g), static_cast<int>(g() % 600) - 300);
  };
  for (int i = 0; i < 100; ++i) {
    const Matrix matrix = drawMatrix(generator, 1 + generator() % 12, anySize);
    EXPECT_EQ(bitsOf(inverted(matrix)), bitsOf(plain::inverse(matrix)));
  }
}

#if __has_include(<rapidcheck.h>)
RC_GTEST_PROP(Inversion, DominantMatrixTimesItsInverseIsTheIdentity, ()) {
  std::mt19937_64 generator(*rc::gen::arbitrary<std::uint64_t>());
  const std::size_t n = *rc::gen::inRange<std::size_t>(1, 20);
  Matrix matrix = drawMatrix(generator, n, uniform);
  for (std::size_t i = 0; i < n; ++i) matrix[i][(i + 1) % n] += 2.0 * static_cast<double>(n);
  const CEQMatrix original = equationMatrix(matrix);
  CEQMatrix inverse = original;
  RC_ASSERT(inverse.Invert() == 1);
  const CEQMatrix product = original.Multiply(inverse);
  for (int i = 0; i < product.Rows; ++i) {
    for (int j = 0; j < product.Cols; ++j) {
      RC_ASSERT(std::fabs(product.GetElement(i, j) - (i == j ? 1.0 : 0.0)) < 1e-13);
    }
  }
}
#endif

}  // namespace
