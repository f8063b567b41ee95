// Blocks of output pixels on their way through the renderer.
#pragma once

#include <cstdint>

#include "rendering/view_geometry.h"

namespace fisheye_calibration::rendering {

constexpr int kBatch = 8;  // blocks whose middles are computed together

// The middles of consecutive blocks of a row, one element per block. Index m stands for the middle;
// its source pixel (sx_m, sy_m) lies in the whole pixel (column, row), whose ray is (x_m, y_m).
struct BlockBatch {
  // Source pixel of the output pixel k columns from the middle, relative to (column, row):
  //   sx = ax + bx T, sy = ay + by T, T = k/(1 + c k) = k + t1 k^2 + t2 k^3 + t3 k^4 - ...
  // with w the denominator, c = Hinv(2,0)/w, bx = (Hinv(0,0) - sx_m Hinv(2,0))/w, t1 = -c ...
  alignas(64) float ax[kBatch], bx[kBatch], ay[kBatch], by[kBatch];
  alignas(64) float t1[kBatch], t2[kBatch], t3[kBatch];
  alignas(64) float clear[kBatch];  // see ViewGeometry::clear
  alignas(64) std::int32_t column[kBatch], row[kBatch];

  // p = p0 + X (alpha X + beta) + Y (gamma Y + delta), where (X, Y) are offsets from (column, row)
  // with the skew added to X; alpha = xx^2 and gamma = yy^2 belong to the view.
  alignas(64) float p0[kBatch], beta[kBatch], delta[kBatch];
  // u = (X + a0) D + X S0 + restU, v = (Y + b0) D + Y S0 + restV, with D = S - S0, in 1/32 pixel,
  // relative to the raw pixel (baseU, baseV).
  alignas(64) float a0[kBatch], b0[kBatch], S0[kBatch], restU[kBatch], restV[kBatch];
  alignas(64) std::int32_t baseU[kBatch], baseV[kBatch];
  alignas(64) std::int32_t node[kBatch];    // see ViewGeometry::node
  alignas(64) std::int32_t extent[kBatch];  // see LensNode::extent

  // One bit per block.
  unsigned inside;   // shows only pixels of the undistorted image, away from its border
  unsigned outside;  // shows none
  unsigned small;    // can be computed in float
  unsigned gentle;   // t1 ... t3 suffice for T
  unsigned usual;    // inside, small, gentle and about a usual node
};

// Where the blocks of a batch lie in the frame, one bit per block.
struct FramePlaces {
  unsigned deep;    // nothing outside the frame is read for any position
  unsigned beyond;  // nothing inside the frame is shown
};

// Raw positions of a block, in 1/32 pixel, relative to (baseU, baseV).
struct BlockPositions {
  alignas(64) std::int16_t u[kBlock];
  alignas(64) std::int16_t v[kBlock];
  alignas(64) std::int16_t shown[kBlock];  // 0 where the pixel shows nothing, else -1
};

// What blocks compute before rounding, pixel by pixel, in the order of BlockBatch's formulas.
struct BlockDetail {
  alignas(64) float sx[kBlock];
  alignas(64) float sy[kBlock];
  alignas(64) float u[kBlock];
  alignas(64) float v[kBlock];
};

}  // namespace fisheye_calibration::rendering
