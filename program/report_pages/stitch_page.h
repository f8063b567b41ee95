// The report of a stitch as a page.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "base/size.h"
#include "drawing/seam_overlay.h"
#include "fisheye_calibration.h"
#include "geometry/stitch_agreement.h"

namespace fisheye_calibration::program {

struct StitchPage {
  std::string leftName;  // of the frames
  std::string rightName;
  std::string pictureName;                   // of the stitched picture's file
  Size pictureSize;                          // of that file, which may be cut out of the canvas
  cv::Mat canvas;                            // the whole stitched picture
  DualFishEyeCalibrationParam record{};      // of that canvas
  std::vector<Agreement> agreement;          // in its pixels
  std::vector<std::optional<SeamRow>> seam;  // of the rows of the left view
  int seamOffset = 0;                        // canvas row of the first of these
  std::vector<std::string> warnings;
  bool trusted = true;
};

std::string stitchPage(const StitchPage& page);

}  // namespace fisheye_calibration::program
