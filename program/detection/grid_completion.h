// Positions in a grid of corners that are not known yet: missing ones and those beyond the rim.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

namespace fisheye_calibration::program {

constexpr int kNeighbourReach = 2;  // steps; at the rim, inwards

struct ExpectedCorner {
  cv::Point2d position;
  // Standard deviation of the difference from the true position, if that of each neighbour's
  // position is 1: little more than 1 amid a grid, several at its corners and beyond its rim.
  double uncertainty = 1;
};

// Where the corner at (column, row) of a grid, ordered row by row, should be by its neighbours: at
// most two steps away, itself not counted. A polynomial of second degree is fitted to them, which
// follows the lens's bending. Works beyond the rim, too. Nothing if fewer than six are known.
std::optional<ExpectedCorner> expectedByNeighbours(
    const std::vector<std::optional<cv::Point2d>>& positions, int columns, int rows, int column,
    int row);

// The positions with the missing ones filled in; empty if that is not possible.
std::vector<cv::Point2f> completedGrid(std::vector<std::optional<cv::Point2d>> positions,
                                       int columns, int rows);

}  // namespace fisheye_calibration::program
