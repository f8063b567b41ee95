#include "detection/grid_orientation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace fisheye_calibration::program {
namespace {

struct Axes {
  cv::Point2d x;  // direction of world +X in the image
  cv::Point2d y;
};

// Least squares of image = A world + b; the columns of A are the axes.
Axes imageAxes(const std::vector<GridPoint>& grid) {
  const int n = static_cast<int>(grid.size());
  cv::Mat design(n, 3, CV_64F);
  cv::Mat image(n, 2, CV_64F);
  for (int i = 0; i < n; ++i) {
    const GridPoint& point = grid[static_cast<std::size_t>(i)];
    design.at<double>(i, 0) = point.world.x;
    design.at<double>(i, 1) = point.world.y;
    design.at<double>(i, 2) = 1;
    image.at<double>(i, 0) = static_cast<double>(point.image.x);
    image.at<double>(i, 1) = static_cast<double>(point.image.y);
  }
  cv::Mat fit;
  cv::solve(design, image, fit, cv::DECOMP_SVD);
  return {{fit.at<double>(0, 0), fit.at<double>(0, 1)},
          {fit.at<double>(1, 0), fit.at<double>(1, 1)}};
}

// cos of the angle between +X and right, plus cos of the angle between +Y and down.
double alignment(const cv::Point2d& x, const cv::Point2d& y) {
  const double xLength = std::hypot(x.x, x.y);
  const double yLength = std::hypot(y.x, y.y);
  return (xLength > 0 ? x.x / xLength : 0) + (yLength > 0 ? y.y / yLength : 0);
}

}  // namespace

std::vector<GridPoint> orientGrid(std::vector<GridPoint> grid) {
  if (grid.empty()) {
    return grid;
  }
  const Axes axes = imageAxes(grid);
  struct Symmetry {
    double a, b, c, d;  // new = [a b; c d] old
  };
  static constexpr std::array<Symmetry, 8> kSymmetries = {{{1, 0, 0, 1},
                                                           {0, -1, 1, 0},
                                                           {-1, 0, 0, -1},
                                                           {0, 1, -1, 0},
                                                           {1, 0, 0, -1},
                                                           {-1, 0, 0, 1},
                                                           {0, 1, 1, 0},
                                                           {0, -1, -1, 0}}};
  // The rows of a symmetry are the new axes in terms of the old ones: new X runs along a X + b Y.
  const auto score = [&](const Symmetry& s) {
    return alignment(s.a * axes.x + s.b * axes.y, s.c * axes.x + s.d * axes.y);
  };
  const Symmetry best = *std::max_element(
      kSymmetries.begin(), kSymmetries.end(),
      [&](const Symmetry& left, const Symmetry& right) { return score(left) < score(right); });

  cv::Point2d smallest(HUGE_VAL, HUGE_VAL);
  for (GridPoint& point : grid) {
    const cv::Point2d old = point.world;
    point.world = {best.a * old.x + best.b * old.y, best.c * old.x + best.d * old.y};
    smallest.x = std::min(smallest.x, point.world.x);
    smallest.y = std::min(smallest.y, point.world.y);
  }
  for (GridPoint& point : grid) {
    point.world -= smallest;
  }
  std::stable_sort(grid.begin(), grid.end(), [](const GridPoint& left, const GridPoint& right) {
    return left.world.y != right.world.y ? left.world.y < right.world.y
                                         : left.world.x < right.world.x;
  });
  for (std::size_t i = 0; i < grid.size(); ++i) {
    grid[i].index = static_cast<int>(i);
  }
  return grid;
}

}  // namespace fisheye_calibration::program
