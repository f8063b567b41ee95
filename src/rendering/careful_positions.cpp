#include "rendering/careful_positions.h"

#include <algorithm>
#include <cmath>

namespace fisheye_calibration::rendering {
namespace {

double polynomial(const std::array<double, LensNode::kDegree>& c, double p) {
  double sum = 0;
  for (std::size_t k = c.size(); k-- > 0;) {
    sum = sum * p + c[k];
  }
  return sum;
}

// Only for |x| < 2^51.
double nearestWhole(double x) {
  constexpr double kShift = 0x1.8p52;
  return (x + kShift) - kShift;
}

// Returns false if the rounding is in doubt.
bool positionByTable(const ViewGeometry& view, const SourcePixel& pixel, RawPosition& raw) {
  constexpr double kFarthest = 0x1p30;
  const lens::Camera& camera = view.rays().camera;
  const std::span<const LensNode> nodes = view.finestNodes();
  const double x = pixel.column * view.xx() + (pixel.row * view.xy() + view.x0());
  const double y = pixel.row * view.yy() + view.y0();
  const double q = x * x + y * y;
  const double r = std::sqrt(q);
  const auto n = static_cast<std::size_t>(
      std::min(r * LensTable::kNodesPerUnit + 0.5, static_cast<double>(nodes.size() - 1)));
  const LensNode& node = nodes[n];
  if (node.sure == 0) {
    return false;
  }
  const double p = q - node.radius * node.radius;
  double S = node.value + polynomial(node.c, p) * p;
  if (node.odd) {
    S += (r - node.radius) * polynomial(node.o, p);
  }
  const double U = camera.fx * x * S + kFractions * camera.cx;
  const double V = camera.fy * y * S + kFractions * camera.cy;
  if (!(std::max(std::abs(U), std::abs(V)) < kFarthest)) {
    return false;
  }
  const double wholeU = nearestWhole(U);
  const double wholeV = nearestWhole(V);
  raw = {static_cast<int>(wholeU), static_cast<int>(wholeV)};
  return std::max(std::abs(U - wholeU), std::abs(V - wholeV)) < node.sure;
}

}  // namespace

CarefulPositions::CarefulPositions(const ViewGeometry& view)
    : view_(view), exact_(view.rays(), view.warp().size.width) {}

RawPosition CarefulPositions::at(const SourcePixel& pixel) {
  RawPosition raw;
  if (view_.hasBlocks() && positionByTable(view_, pixel, raw)) {
    return raw;
  }
  return exact_.at(pixel.column, pixel.row);
}

}  // namespace fisheye_calibration::rendering
