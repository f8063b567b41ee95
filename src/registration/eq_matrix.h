// A small dense matrix of doubles for the least-squares fits. Its arithmetic has a fixed order and
// no fused operations, so results are bit-identical on every compiler and machine.
#pragma once

namespace fisheye_calibration {

// Row-major: element (r, c) is Data[r * Cols + c]. A matrix has no storage (Data is null) if it is
// empty, its size was refused or allocation failed. Reads outside the matrix or its storage give 0;
// such writes are ignored. No operation throws. A moved-from matrix is 0 x 0.
class CEQMatrix {
 public:
  // A rows x cols matrix of zeros, as by SetSize.
  explicit CEQMatrix(int rows = 0, int cols = 0);
  CEQMatrix(const CEQMatrix& other);
  CEQMatrix(CEQMatrix&& other) noexcept;
  CEQMatrix& operator=(const CEQMatrix& other);
  CEQMatrix& operator=(CEQMatrix&& other) noexcept;
  virtual ~CEQMatrix();

  // Discards the old elements and makes this a rows x cols matrix of zeros. Returns 1, or 0 if
  // rows * cols is negative or above 2^31 - 1, or allocation fails; Rows and Cols are then set
  // nevertheless and Data is null.
  int SetSize(int rows, int cols);

  void SetElement(int row, int col, double value);
  double GetElement(int row, int col) const;

  // C(i, j) = sum over k = 0 ... Cols - 1 of (*this)(i, k) B(k, j), summed in that order; C is
  // Rows x B.Cols. Missing rows of B count as zeros, excess ones are not read.
  CEQMatrix Multiply(const CEQMatrix& B) const;

  // Inverts a square matrix in place by Gauss-Jordan elimination with complete pivoting. Returns 1,
  // or 0 if the matrix is singular, that is if the largest remaining element is exactly 0; it is
  // then left partly transformed (compatibility 45). Returns 0 with the matrix unchanged if it is
  // not square, has no storage, or the pivot lists cannot be allocated. A 0 x 0 matrix is its own
  // inverse.
  int Invert();

  CEQMatrix Transpose() const;

  int Cols = 0;
  int Rows = 0;
  double* Data = nullptr;  // owned, allocated as an array
};

enum class Inversion { kInverted, kNotInvertible, kNoMemory };

// Invert, with the reason for a result of 0.
Inversion invert(CEQMatrix& matrix);

}  // namespace fisheye_calibration
