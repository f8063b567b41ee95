// What the blocks of one output row share.
#pragma once

#include "rendering/view_geometry.h"

namespace fisheye_calibration::rendering {

// The source pixel of output pixel x is, with px = x - dx and w = Hinv(2,0) px + numerators[2],
//   sx = (Hinv(0,0) px + numerators[0])/w,  d(sx)/dx = slopeX/w^2,
// and sy likewise. How far a block reaches depends on 1/w^2 at its middle alone, so that a block's
// kind follows from comparing that with the row's limits.
struct RowGeometry {
  RowGeometry(const ViewGeometry& view, int y);

  double numerators[3];
  double slopeX;
  double slopeY;

  // Blocks with a smaller 1/w^2
  double certain;  // are far from the horizon, so that float can bound where they reach,
  double gentle;   // change the denominator by less than ViewGeometry::kGentle per pixel,
  double small;    // are certain and reach no farther than reachX and reachY,
  double fine;     // or no farther than fineReachX and fineReachY.
};

}  // namespace fisheye_calibration::rendering
