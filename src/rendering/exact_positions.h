// Raw-image positions one at a time, as the undistortion maps compute them.
#pragma once

#include <array>
#include <cstddef>
#include <limits>

#include "rendering/raw_position.h"

namespace fisheye_calibration::rendering {

// A ray is the sum of the steps from the start of its row, whose rounding is part of the result
// (compatibility 37). Some sums for the latest row start are cached (without skew all rows start
// alike), few for any width. Computing them allocates no memory, which could fail when a part of a
// picture is written. Not thread-safe.
class ExactPositions {
 public:
  ExactPositions(const RectifyingRays& rays, int width);

  RawPosition at(int column, int row);

  // The rays (X, Y, W) of `count` pixels, fastest if they are neighbours.
  void rays(const int* columns, const int* rows, int count, double* X, double* Y, double* W);

 private:
  // start, start + step, start + step + step ...
  class Sums {
   public:
    Sums(double step, int width);

    double at(double start, int count);

    // The same for every element, which holds its start before.
    void replaceStarts(const int* counts, int number, double* sums);

   private:
    static constexpr std::size_t kMostKept = 512;

    double keptAt(double start, int count);

    double step_;
    int spacingBits_;  // one sum in 2^spacingBits is kept
    double start_ = std::numeric_limits<double>::quiet_NaN();
    std::array<double, kMostKept> kept_;  // as many as keptCount_
    std::size_t keptCount_ = 0;
    // The latest sum, from which the next ones along a row are a few steps away.
    double lastStart_ = std::numeric_limits<double>::quiet_NaN();
    int lastCount_ = 0;
    double lastSum_ = 0;
  };

  RectifyingRays rays_;
  std::array<Sums, 3> sums_;
};

}  // namespace fisheye_calibration::rendering
