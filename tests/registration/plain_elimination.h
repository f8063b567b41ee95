// Gauss-Jordan inversion with complete pivoting, derived a second time: nothing is ever swapped.
// Equation and unknown lists say which row and column stands where, and the inverse is read off
// through them at the end. Every element sees the same operations in the same order as in the
// in-place form with swaps, so both agree to the bit.
#pragma once

#include <cmath>
#include <cstddef>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

namespace plain {

using Matrix = std::vector<std::vector<double>>;

enum class Tie { First, Last };

// The inverse of the square matrix m; std::nullopt if the largest remaining element is 0. `tie`
// selects which of several equally large elements becomes the pivot.
inline std::optional<Matrix> inverse(Matrix m, Tie tie = Tie::First) {
  const std::size_t n = m.size();
  std::vector<std::size_t> rows(n);
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  std::vector<std::size_t> cols = rows;

  for (std::size_t k = 0; k < n; ++k) {
    std::size_t bestRow = k;
    std::size_t bestCol = k;
    double best = 0;
    for (std::size_t i = k; i < n; ++i) {
      for (std::size_t j = k; j < n; ++j) {
        const double size = std::fabs(m[rows[i]][cols[j]]);
        if (size > best || (tie == Tie::Last && size == best)) {
          best = size;
          bestRow = i;
          bestCol = j;
        }
      }
    }
    if (best == 0) return std::nullopt;
    std::swap(rows[k], rows[bestRow]);
    std::swap(cols[k], cols[bestCol]);

    const std::size_t pivotRow = rows[k];
    const std::size_t pivotCol = cols[k];
    const double reciprocal = 1 / m[pivotRow][pivotCol];
    for (std::size_t j = 0; j < n; ++j) {
      if (j != pivotCol) m[pivotRow][j] = m[pivotRow][j] * reciprocal;
    }
    for (std::size_t i = 0; i < n; ++i) {
      if (i == pivotRow) continue;
      const double factor = m[i][pivotCol];
      for (std::size_t j = 0; j < n; ++j) {
        if (j == pivotCol) continue;
        const double product = factor * m[pivotRow][j];
        m[i][j] = m[i][j] - product;
      }
      m[i][pivotCol] = -factor * reciprocal;
    }
    m[pivotRow][pivotCol] = reciprocal;
  }

  // Equation rows[k] was exchanged with unknown cols[k]: column rows[j] of the inverse belongs to
  // the j-th equation, row cols[i] to the i-th unknown.
  Matrix result(n, std::vector<double>(n));
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) result[cols[i]][rows[j]] = m[rows[i]][cols[j]];
  }
  return result;
}

}  // namespace plain
