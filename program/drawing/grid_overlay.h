// The bed's coordinate lines over a corrected or stitched picture.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "geometry/metric_picture.h"

namespace fisheye_calibration::program {

struct GridLine {
  double world;  // a multiple of the spacing
  double pixel;  // column or row of the picture, from the left or the top
};

struct Grid {
  std::vector<GridLine> columns;  // of constant Xw
  std::vector<GridLine> rows;     // of constant Yw
};

// The lines that cross the picture. Fails as bad input if they would be less than a few pixels
// apart, or if the record's Pixel gives no scale.
Grid gridOver(const MetricPicture& picture, double spacing);

// Draws the lines and their labels in world units; a grey picture stays grey.
void drawGrid(cv::Mat& picture, const Grid& grid);

}  // namespace fisheye_calibration::program
