// Small positive definite systems such as normal equations.
#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <opencv2/core.hpp>

namespace fisheye_calibration::solver {

// The lower triangle of a symmetric N x N matrix, row by row.
template <std::size_t N>
using LowerTriangle = std::array<double, N*(N + 1) / 2>;

constexpr std::size_t triangleIndex(std::size_t row, std::size_t col) {
  return row * (row + 1) / 2 + col;
}

template <int N>
cv::Matx<double, N, N> fullMatrix(const std::array<double, N*(N + 1) / 2>& triangle) {
  cv::Matx<double, N, N> A;
  for (int i = 0; i < N; ++i) {
    for (int j = 0; j <= i; ++j) {
      A(i, j) = A(j, i) =
          triangle[triangleIndex(static_cast<std::size_t>(i), static_cast<std::size_t>(j))];
    }
  }
  return A;
}

// A = L D L^T (square-root-free Cholesky), with bounds on its condition.
template <std::size_t N>
class SymmetricSolver {
 public:
  explicit SymmetricSolver(const LowerTriangle<N>& A) : L_(A) {
    for (std::size_t j = 0; j < N; ++j) {
      trace_ += A[triangleIndex(j, j)];
      for (std::size_t k = 0; k < j; ++k) {
        scaled_[k] = at(j, k) * pivot_[k];
        at(j, j) -= at(j, k) * scaled_[k];
      }
      pivot_[j] = at(j, j);
      positive_ = positive_ && pivot_[j] > 0;
      for (std::size_t i = j + 1; i < N; ++i) {
        for (std::size_t k = 0; k < j; ++k) {
          at(i, j) -= at(i, k) * scaled_[k];
        }
        at(i, j) /= pivot_[j];
      }
    }
  }

  // trace(A) trace(A^-1), an upper bound on the condition number, at most N^2 times too large;
  // infinite unless A is numerically positive definite.
  double conditionBound() const {
    return positive_ ? trace_ * inverseTrace() : std::numeric_limits<double>::infinity();
  }

  // trace(A^-1), an upper bound on 1/(smallest eigenvalue): sum over the columns of L^-1 of squares
  // divided by the pivots.
  double inverseTrace() const {
    double sum = 0;
    for (std::size_t j = 0; j < N; ++j) {
      std::array<double, N> column{};  // L^-1 e_j
      column[j] = 1;
      sum += 1 / pivot_[j];
      for (std::size_t i = j + 1; i < N; ++i) {
        for (std::size_t k = j; k < i; ++k) {
          column[i] -= L_[triangleIndex(i, k)] * column[k];
        }
        sum += column[i] * column[i] / pivot_[i];
      }
    }
    return sum;
  }

  // A^-1 b
  std::array<double, N> solve(std::array<double, N> b) const {
    for (std::size_t i = 0; i < N; ++i) {
      for (std::size_t k = 0; k < i; ++k) {
        b[i] -= L_[triangleIndex(i, k)] * b[k];
      }
    }
    for (std::size_t i = N; i-- > 0;) {
      b[i] /= pivot_[i];
      for (std::size_t k = i + 1; k < N; ++k) {
        b[i] -= L_[triangleIndex(k, i)] * b[k];
      }
    }
    return b;
  }

 private:
  double& at(std::size_t row, std::size_t col) { return L_[triangleIndex(row, col)]; }

  LowerTriangle<N> L_;  // the diagonal is not read once the pivots are known
  std::array<double, N> pivot_{};
  std::array<double, N> scaled_{};
  double trace_ = 0;
  bool positive_ = true;
};

}  // namespace fisheye_calibration::solver
