// The points of one view in the layout of the solver's loops: one array per coordinate.
#pragma once

#include <cstddef>
#include <vector>

namespace fisheye_calibration::solver {

// Points of a plane or an image.
struct PlanarPoints {
  std::vector<double> x, y;

  explicit PlanarPoints(std::size_t count = 0) : x(count), y(count) {}
  std::size_t size() const { return x.size(); }
};

// Target points (X, Y, Z) in world units and their measured image points in pixels.
struct ViewPoints {
  std::vector<double> X, Y, Z;
  PlanarPoints image;

  std::size_t size() const { return X.size(); }
};

// Whether all coordinates are finite.
bool isFinite(const ViewPoints& view);

std::size_t countPoints(const std::vector<ViewPoints>& views);

// Throws the image library's error unless the view has as many image points as target points.
void requirePairs(const ViewPoints& view, const char* function);

}  // namespace fisheye_calibration::solver
