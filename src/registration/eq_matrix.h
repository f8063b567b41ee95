// A small dense matrix of doubles (the equation matrix of the least-squares fits). Its arithmetic
// runs in one fixed order without fused operations, so results are the same to the bit on every
// compiler and machine.
#pragma once

namespace fisheye_calibration {

// Row-major: element (r, c) is Data[r * Cols + c]. A matrix may be without storage (Data null):
// when it is empty, when its size is refused or when there is no memory. Reads outside the matrix,
// or without storage, give 0; such writes are dropped. No operation raises an exception. A
// moved-from matrix is an empty 0 x 0 one.
class CEQMatrix {
 public:
  // A rows x cols matrix of zeros, as SetSize makes it.
  explicit CEQMatrix(int rows = 0, int cols = 0);
  CEQMatrix(const CEQMatrix& other);
  CEQMatrix(CEQMatrix&& other) noexcept;
  CEQMatrix& operator=(const CEQMatrix& other);
  CEQMatrix& operator=(CEQMatrix&& other) noexcept;
  virtual ~CEQMatrix();

  // Drops the old elements and makes a rows x cols matrix of zeros. Returns 1, or 0 when rows *
  // cols is negative or above 2^31 - 1, or allocation fails; Rows and Cols are still set and Data
  // is null.
  int SetSize(int rows, int cols);

  void SetElement(int row, int col, double value);
  double GetElement(int row, int col) const;

  // C(i, j) = sum over k = 0 ... Cols - 1 of (*this)(i, k) B(k, j), summed in that order; Rows x
  // B.Cols. Rows that B lacks count as rows of 0, rows too many are not read.
  CEQMatrix Multiply(const CEQMatrix& B) const;

  // Replaces a square matrix by its inverse (Gauss-Jordan elimination with complete pivoting, in
  // place). Returns 1, or 0 when the matrix is singular, and then partly transformed: only a
  // largest remaining element of exactly 0 counts as singular. Returns 0 with the matrix untouched
  // when it is not square, is without storage or there is no memory for the pivot lists. An empty 0
  // x 0 matrix is its own inverse.
  int Invert();

  CEQMatrix Transpose() const;

  int Cols = 0;
  int Rows = 0;
  double* Data = nullptr;  // owned, allocated as an array
};

}  // namespace fisheye_calibration
