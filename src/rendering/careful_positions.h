// Raw positions of undistorted pixels, one at a time.
#pragma once

#include "rendering/exact_positions.h"
#include "rendering/view_geometry.h"

namespace fisheye_calibration::rendering {

// Computes positions in double by the lens table and, where the rounding of that is in doubt, as
// the undistortion maps do. Not thread-safe.
class CarefulPositions {
 public:
  explicit CarefulPositions(const ViewGeometry& view);

  RawPosition at(const SourcePixel& pixel);

  // For pixels that the table is unlikely to decide, one or many.
  RawPosition exactlyAt(const SourcePixel& pixel) { return exact_.at(pixel.column, pixel.row); }
  ExactPositions& exact() { return exact_; }

 private:
  const ViewGeometry& view_;
  ExactPositions exact_;
};

}  // namespace fisheye_calibration::rendering
