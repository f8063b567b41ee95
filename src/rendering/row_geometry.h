// What the blocks of one output row share.
#pragma once

#include "rendering/view_geometry.h"

namespace fisheye_calibration::rendering {

// The source pixel of output pixel x is, with px = x - dx and w = Hinv(2,0) px + numerators[2],
//   sx = (Hinv(0,0) px + numerators[0])/w,  d(sx)/dx = stepX/w^2,
// and sy likewise. How far a block reaches depends on 1/w^2 at its middle alone, so that its kind
// follows from comparing that with the row's limits.
struct RowGeometry {
  RowGeometry(const ViewGeometry& view, int y);

  double numerators[3];
  double stepX;
  double stepY;

  // Limits of 1/w^2; see ViewGeometry for the constants.
  double certain;  // below: the denominator changes by less than kSteep per pixel
  double gentle;   // below: by less than kGentle
  double small;    // below: certain, and the block reaches no farther than reachX and reachY
  double fine;     // below: the block reaches no farther than fineReachX and fineReachY
};

}  // namespace fisheye_calibration::rendering
