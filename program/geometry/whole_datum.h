// Records of stitched pictures that survive the parameter file, whose reader drops the fraction of
// the datum's world coordinates.
#pragma once

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct WholeDatum {
  DualFishEyeCalibrationParam record{};
  int addedRows = 0;  // rows to add below the picture, a multiple of 4
  double rest = 0;    // world units: how far the record as read from the file is off in the picture
};

// A record that maps like `dual`, that of a whole canvas, but with a datum of whole world
// coordinates. Datum pixel and datum point move together:
//   - along x to the column within the picture at which the least is left to round;
//   - along y downwards by up to 64 rows. The record of a whole canvas puts the datum halfway up
//     the picture, and by that hosts find the rows of the content, so that the picture needs two
//     more rows below for every row of the move.
// Whole coordinates stay as they are. `rest` includes the file's rounding of Pixel to six decimals.
WholeDatum withWholeDatum(const DualFishEyeCalibrationParam& dual);

}  // namespace fisheye_calibration::program
