#include "rendering/row_geometry.h"

#include <algorithm>
#include <cmath>

namespace fisheye_calibration::rendering {
namespace {

double square(double x) { return x * x; }

// The largest 1/w^2 of blocks that reach no farther than so many source pixels.
double largestReaching(const RowGeometry& row, double reachX, double reachY) {
  if (!std::isfinite(row.slopeX + row.slopeY)) {
    return 0;
  }
  const double reach = std::min(reachX / std::abs(row.slopeX), reachY / std::abs(row.slopeY));
  // Gentle blocks and others have limits of their own, the first being the larger one.
  return std::max(std::min(reach / ViewGeometry::kGentleOffsets, row.gentle),
                  reach / ViewGeometry::kSteepOffsets);
}

}  // namespace

RowGeometry::RowGeometry(const ViewGeometry& view, int y) {
  const InverseWarp& warp = view.warp();
  const cv::Matx33d& H = warp.Hinv;
  const double py = y - warp.dy;
  for (int i = 0; i < 3; ++i) {
    numerators[i] = H(i, 1) * py + H(i, 2);
  }
  slopeX = H(0, 0) * numerators[2] - numerators[0] * H(2, 0);
  slopeY = H(1, 0) * numerators[2] - numerators[1] * H(2, 0);
  const double lean = std::abs(H(2, 0));
  certain = square(std::min(view.largestPerW(), ViewGeometry::kSteep / lean));
  gentle = square(ViewGeometry::kGentle / lean);
  // Whole pixels take one pixel of the reach.
  small = std::min(certain, largestReaching(*this, view.reachX() - 1, view.reachY() - 1));
  fine = largestReaching(*this, view.fineReachX() - 1, view.fineReachY() - 1);
}

}  // namespace fisheye_calibration::rendering
