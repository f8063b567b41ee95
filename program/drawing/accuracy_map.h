// The picture of the error on the bed: colours and contours in millimetres over what the corrected
// picture shows.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "geometry/bed_grid.h"

namespace fisheye_calibration::program {

struct AccuracyMap {
  BedGrid grid;
  std::vector<double> errors;       // at the grid's points, NaN where the bed is not seen
  std::vector<cv::Point2d> target;  // positions of the target's points on the bed
  double insideTarget = 0;
  double onBed = 0;
};

// The bed's X runs right and Y down, as in the corrected picture. The colours differ in brightness,
// so that they can be told apart whatever colours a person sees. Blank where the bed is not seen.
cv::Mat drawAccuracyMap(const AccuracyMap& map);

// The levels of the contours: 1, 2 and 5 times powers of ten between the smallest and the largest
// value, at most seven, the largest ones.
std::vector<double> contourLevels(const std::vector<double>& errors);

// The colours alone, in any size, with four channels: transparent where the bed is not seen, and
// everywhere if there is no level.
cv::Mat accuracyColours(const AccuracyMap& map, const cv::Size& size);

// Where an error stands on the scale of colours: from 0 for the smallest to 1 for the largest
// level, in equal steps of the logarithm. There is at least one level.
double levelShare(double error, const std::vector<double>& levels);

// The scale of colours, from the largest error at the top to the smallest.
cv::Mat accuracyScale(const cv::Size& size);

}  // namespace fisheye_calibration::program
