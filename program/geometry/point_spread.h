// How the points of a target spread over the bed and the picture.
#pragma once

#include <opencv2/core/types.hpp>
#include <vector>

#include "base/size.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

std::vector<cv::Point2d> bedPositions(const std::vector<CalibrationPoint>& points);
std::vector<cv::Point2d> imagePositions(const std::vector<CalibrationPoint>& points);

// Breadth to length of a cloud of points: the ratio of its principal standard deviations. 0 for
// collinear or coincident points.
double flatness(const std::vector<cv::Point2d>& positions);

// Area of the convex hull of the points' positions, bedPosition or imagePosition.
double hullArea(const std::vector<CalibrationPoint>& points,
                cv::Point2f (*positionOf)(const CalibrationPoint&));

// The share of the picture that the convex hull of the points covers.
double coverage(const std::vector<CalibrationPoint>& points, const Size& image);

// Largest to smallest picture area per world area over the target, from a quadratic fit of the
// image coordinates over the world's. Near 1 the target is seen without perspective.
double scaleRatio(const std::vector<CalibrationPoint>& points);

}  // namespace fisheye_calibration::program
