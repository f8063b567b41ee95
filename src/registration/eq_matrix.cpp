#include "registration/eq_matrix.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace fisheye_calibration {
namespace {

// A square matrix of order n that is being inverted in place.
class Elimination {
 public:
  Elimination(double* elements, int order) : a_(elements), n_(static_cast<std::size_t>(order)) {}

  // Finds the element of largest absolute value in rows and columns k ... n - 1, the first one row
  // by row if several are equal, and returns that value.
  double findPivot(std::size_t k, std::size_t& pivotRow, std::size_t& pivotCol) const {
    double largest = 0.0;
    for (std::size_t i = k; i < n_; ++i) {
      for (std::size_t j = k; j < n_; ++j) {
        const double size = std::abs(at(i, j));
        if (size > largest) {
          largest = size;
          pivotRow = i;
          pivotCol = j;
        }
      }
    }
    return largest;
  }

  // Exchanges unknown k with equation k, whose pivot is a(k, k):
  //   a(k,k) <- 1/a(k,k)
  //   a(k,j) <- a(k,j) a(k,k)              j != k
  //   a(i,j) <- a(i,j) - a(i,k) a(k,j)     i, j != k
  //   a(i,k) <- -a(i,k) a(k,k)             i != k
  void exchange(std::size_t k) {
    at(k, k) = 1.0 / at(k, k);
    for (std::size_t j = 0; j < n_; ++j) {
      if (j != k) {
        at(k, j) *= at(k, k);
      }
    }
    for (std::size_t i = 0; i < n_; ++i) {
      if (i == k) {
        continue;
      }
      for (std::size_t j = 0; j < n_; ++j) {
        if (j != k) {
          at(i, j) -= at(i, k) * at(k, j);
        }
      }
    }
    for (std::size_t i = 0; i < n_; ++i) {
      if (i != k) {
        at(i, k) = -at(i, k) * at(k, k);
      }
    }
  }

  void swapRows(std::size_t first, std::size_t second) {
    if (first == second) {
      return;
    }
    for (std::size_t j = 0; j < n_; ++j) {
      std::swap(at(first, j), at(second, j));
    }
  }

  void swapColumns(std::size_t first, std::size_t second) {
    if (first == second) {
      return;
    }
    for (std::size_t i = 0; i < n_; ++i) {
      std::swap(at(i, first), at(i, second));
    }
  }

 private:
  double& at(std::size_t row, std::size_t col) { return a_[row * n_ + col]; }
  double at(std::size_t row, std::size_t col) const { return a_[row * n_ + col]; }

  double* a_;
  std::size_t n_;
};

}  // namespace

CEQMatrix::CEQMatrix(int rows, int cols) { SetSize(rows, cols); }

CEQMatrix::CEQMatrix(const CEQMatrix& other) { *this = other; }

CEQMatrix::CEQMatrix(CEQMatrix&& other) noexcept { *this = std::move(other); }

CEQMatrix& CEQMatrix::operator=(const CEQMatrix& other) {
  if (this == &other) {
    return *this;
  }
  SetSize(other.Rows, other.Cols);
  if (Data != nullptr && other.Data != nullptr) {
    const std::int64_t count = std::int64_t{Rows} * Cols;
    std::copy_n(other.Data, static_cast<std::size_t>(count), Data);
  }
  return *this;
}

CEQMatrix& CEQMatrix::operator=(CEQMatrix&& other) noexcept {
  if (this == &other) {
    return *this;
  }
  delete[] Data;
  Cols = std::exchange(other.Cols, 0);
  Rows = std::exchange(other.Rows, 0);
  Data = std::exchange(other.Data, nullptr);
  return *this;
}

CEQMatrix::~CEQMatrix() { delete[] Data; }

int CEQMatrix::SetSize(int rows, int cols) {
  delete[] Data;
  Data = nullptr;
  Rows = rows;
  Cols = cols;
  const std::int64_t count = std::int64_t{rows} * cols;
  if (count < 0 || count > std::numeric_limits<std::int32_t>::max()) {
    return 0;
  }
  if (count == 0) {
    return 1;
  }
  const auto elements = static_cast<std::size_t>(count);
  std::unique_ptr<double[]> storage(new (std::nothrow) double[elements]());
  if (storage == nullptr) {
    return 0;
  }
  Data = storage.release();
  return 1;
}

void CEQMatrix::SetElement(int row, int col, double value) {
  if (Data == nullptr || row < 0 || row >= Rows || col < 0 || col >= Cols) {
    return;
  }
  Data[static_cast<std::size_t>(row) * static_cast<std::size_t>(Cols) +
       static_cast<std::size_t>(col)] = value;
}

double CEQMatrix::GetElement(int row, int col) const {
  if (Data == nullptr || row < 0 || row >= Rows || col < 0 || col >= Cols) {
    return 0.0;
  }
  return Data[static_cast<std::size_t>(row) * static_cast<std::size_t>(Cols) +
              static_cast<std::size_t>(col)];
}

CEQMatrix CEQMatrix::Multiply(const CEQMatrix& B) const {
  CEQMatrix C(Rows, B.Cols);
  // A factor without storage is all zeros; its sizes may be huge, so do not loop over them.
  if (C.Data == nullptr || Data == nullptr) {
    return C;
  }
  for (int i = 0; i < Rows; ++i) {
    for (int j = 0; j < B.Cols; ++j) {
      double sum = 0.0;
      for (int k = 0; k < Cols; ++k) {
        sum += GetElement(i, k) * B.GetElement(k, j);
      }
      C.SetElement(i, j, sum);
    }
  }
  return C;
}

int CEQMatrix::Invert() { return invert(*this) == Inversion::kInverted ? 1 : 0; }

Inversion invert(CEQMatrix& matrix) {
  if (matrix.Rows != matrix.Cols || matrix.Cols < 0 ||
      (matrix.Cols > 0 && matrix.Data == nullptr)) {
    return Inversion::kNotInvertible;
  }
  const auto n = static_cast<std::size_t>(matrix.Cols);
  const std::unique_ptr<std::size_t[]> pivotRows(new (std::nothrow) std::size_t[n]());
  const std::unique_ptr<std::size_t[]> pivotCols(new (std::nothrow) std::size_t[n]());
  if (pivotRows == nullptr || pivotCols == nullptr) {
    return Inversion::kNoMemory;
  }

  Elimination elimination(matrix.Data, matrix.Cols);
  for (std::size_t k = 0; k < n; ++k) {
    if (elimination.findPivot(k, pivotRows[k], pivotCols[k]) == 0.0) {
      return Inversion::kNotInvertible;
    }
    elimination.swapRows(k, pivotRows[k]);
    elimination.swapColumns(k, pivotCols[k]);
    elimination.exchange(k);
  }
  // The elimination inverted B = P A Q, and inv(A) = Q inv(B) P: undo the swaps in reverse order,
  // column swaps on rows and row swaps on columns.
  for (std::size_t k = n; k-- > 0;) {
    elimination.swapRows(k, pivotCols[k]);
    elimination.swapColumns(k, pivotRows[k]);
  }
  return Inversion::kInverted;
}

CEQMatrix CEQMatrix::Transpose() const {
  CEQMatrix T(Cols, Rows);
  if (T.Data == nullptr || Data == nullptr) {
    return T;
  }
  for (int i = 0; i < Rows; ++i) {
    for (int j = 0; j < Cols; ++j) {
      T.SetElement(j, i, GetElement(i, j));
    }
  }
  return T;
}

}  // namespace fisheye_calibration
