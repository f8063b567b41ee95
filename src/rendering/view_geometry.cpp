#include "rendering/view_geometry.h"

#include <algorithm>
#include <cmath>

#include "rendering/row_renderer.h"

namespace fisheye_calibration::rendering {
namespace {

// The largest step that blocks are laid out for, and the least, in source pixels per output pixel.
constexpr double kLargestStep = 4.5;
constexpr double kLeastStep = 0.1;
// Blocks with smaller steps have a table of their own if others are much larger.
constexpr double kFineStep = 1.75;
constexpr double kMuchLarger = 1.3;

// Rounding a middle pixel and the pixels around it to whole numbers moves them by 1/2 each.
constexpr double kWholePixels = 1;

// ViewGeometry::reachX and reachY, from the largest steps of the source pixel along output rows,
// |d(sx, sy)/dx|, where the view shows something. Samples: blocks with larger steps are possible
// and are computed otherwise.
cv::Vec2d largestReach(const InverseWarp& warp) {
  constexpr int kSamples = 8;
  constexpr double kSlack = 1.05;
  constexpr double kAround = 0.15;  // of the size, beyond the source's sides
  const cv::Matx33d& H = warp.Hinv;
  const double width = warp.size.width;
  const double height = warp.size.height;
  const auto isNear = [](double s, double size) {
    return s > -kAround * size && s < (1 + kAround) * size;
  };
  double stepX = kLeastStep;
  double stepY = kLeastStep;
  for (int i = 0; i <= kSamples; ++i) {
    for (int j = 0; j <= kSamples; ++j) {
      const cv::Vec3d n =
          H * cv::Vec3d(i * width / kSamples - warp.dx, j * height / kSamples - warp.dy, 1);
      const double sx = n[0] / n[2];
      const double sy = n[1] / n[2];
      if (isNear(sx, width) && isNear(sy, height)) {
        stepX = std::max(stepX, kSlack * std::abs((H(0, 0) - sx * H(2, 0)) / n[2]));
        stepY = std::max(stepY, kSlack * std::abs((H(1, 0) - sy * H(2, 0)) / n[2]));
      }
    }
  }
  const auto reach = [](double step) {
    return kWholePixels + ViewGeometry::kGentleOffsets * std::min(step, kLargestStep);
  };
  return {reach(stepX), reach(stepY)};
}

// Sum of the absolute terms of a row of Hinv over the output.
double termsOf(const InverseWarp& warp, int row) {
  const auto farthest = [](double shift, int size) {
    return std::max(std::abs(shift), std::abs(size - shift));
  };
  const cv::Matx33d& H = warp.Hinv;
  return std::abs(H(row, 0)) * farthest(warp.dx, warp.size.width) +
         std::abs(H(row, 1)) * farthest(warp.dy, warp.size.height) + std::abs(H(row, 2));
}

// Keeps the rounding of the quotients in double, ours and the plain steps', below 2^-20 pixels: 24
// operations of 2^-53 each on the terms, over a denominator that falls to 0.68 |w| at most.
double largestReciprocal(const InverseWarp& warp, double largestSource) {
  return 0x1p27 / (std::max(termsOf(warp, 0), termsOf(warp, 1)) + largestSource * termsOf(warp, 2));
}

// 2^-20, and the remainder of k/(1 + c k) after its fourth term, c^4 k^5/(1 - |c k|), |c| <=
// kGentle, |k| <= 16, times kLargestStep.
constexpr double kQuotientError = 0x1p-20 + 4.9e-6;

}  // namespace

ViewGeometry::ViewGeometry(const RectifyingRays& rays, const InverseWarp& warp)
    : ViewGeometry(rays, warp, largestReach(warp)) {}

ViewGeometry::ViewGeometry(const RectifyingRays& rays, const InverseWarp& warp,
                           const cv::Vec2d& blockReach)
    : rays_(rays),
      warp_(warp),
      xx_(rays.iR(0, 0) / rays.iR(2, 2)),
      xy_(rays.iR(0, 1) / rays.iR(2, 2)),
      x0_(rays.iR(0, 2) / rays.iR(2, 2)),
      yy_(rays.iR(1, 1) / rays.iR(2, 2)),
      y0_(rays.iR(1, 2) / rays.iR(2, 2)),
      squareXx_(static_cast<float>(xx_ * xx_)),
      squareYy_(static_cast<float>(yy_ * yy_)),
      lean_(static_cast<float>(xy_ / xx_)),
      reachX_(blockReach[0]),
      reachY_(blockReach[1]) {
  const lens::Camera& camera = rays.camera;
  const cv::Matx33d& iR = rays.iR;
  const bool finite =
      std::isfinite(camera.fx + camera.fy + camera.cx + camera.cy + camera.k0 + camera.k1);
  const bool pinhole = iR(1, 0) == 0 && iR(2, 0) == 0 && iR(2, 1) == 0 && iR(2, 2) > 0;
  const auto isInverse = [](double focal, double perFocal) {
    return std::abs(focal * perFocal - 1) < 1e-12;
  };
  const double reach = std::max(reachX_, reachY_);
  makeTables(reach);
  const double size = std::max(warp.size.width, warp.size.height) + reach;
  largestPerW_ = largestReciprocal(warp, size);
  // Six operations in float on at most `reach`, and the plain steps' own rounding to float of a
  // coordinate that is up to `reach` larger than the middle's.
  clear_ = 0.5 - (6 * 0x1p-24 + kPlainRounding) * reach - kQuotientError;
  hasBlocks_ = finite && pinhole && isInverse(camera.fx, xx_) && isInverse(camera.fy, yy_) &&
               largestPerW_ > 0 && size + kWholePixels < kFarthestSource;
}

BlockSpread ViewGeometry::spreadOf(double reachX, double reachY) const {
  BlockSpread spread;
  const double lean = std::abs(xy_ / xx_);
  // Column and row -1 show the first ones (compatibility 40).
  constexpr double kFirstPixel = 1;
  spread.across = reachX + kFirstPixel + lean * (reachY + kFirstPixel);
  spread.down = reachY + kFirstPixel;
  spread.reach = std::hypot(spread.across * xx_, spread.down * yy_);
  spread.skewed = xy_ != 0;
  spread.fused = addsProductsUnrounded();
  // One rounding for every step along a row, and a few more of terms that may cancel.
  spread.rayError =
      (warp_.size.width + 16.0) * 0x1p-51 * (radiusBound() + std::abs(x0_) + std::abs(y0_));
  return spread;
}

// The middles of blocks may lie outside the undistorted image, as far as blocks reach.
double ViewGeometry::coveredRadius(const BlockSpread& spread) const {
  return radiusBound() + 2 * spread.reach;
}

void ViewGeometry::makeTables(double reach) {
  constexpr double kFineReach = kWholePixels + kGentleOffsets * kFineStep;
  if (reach > kMuchLarger * kFineReach) {
    fineReachX_ = std::min(reachX_, kFineReach);
    fineReachY_ = std::min(reachY_, kFineReach);
  }
  const BlockSpread spread = spreadOf(reachX_, reachY_);
  const BlockSpread fineSpread = spreadOf(fineReachX_, fineReachY_);
  const std::size_t size = LensTable::sizeFor(coveredRadius(spread));
  table_.reserve(size + (fineReachX_ > 0 ? LensTable::sizeFor(coveredRadius(fineSpread)) : 0));
  table_.append(rays_.camera, coveredRadius(spread), spread);
  firstFineNode_ = nodeCount();
  if (fineReachX_ > 0) {
    table_.append(rays_.camera, coveredRadius(fineSpread), fineSpread);
  }
}

std::span<const LensNode> ViewGeometry::finestNodes() const {
  const std::span<const LensNode> nodes = table_.nodes();
  return nodes.subspan(firstFineNode_ < nodeCount() ? static_cast<std::size_t>(firstFineNode_) : 0);
}

// The largest radius in the undistorted image.
double ViewGeometry::radiusBound() const {
  const auto farthest = [](double from, double a, double b) {
    return std::max(std::abs(from + std::min(a, 0.0) + std::min(b, 0.0)),
                    std::abs(from + std::max(a, 0.0) + std::max(b, 0.0)));
  };
  return std::hypot(farthest(x0_, xx_ * warp_.size.width, xy_ * warp_.size.height),
                    farthest(y0_, yy_ * warp_.size.height, 0));
}

}  // namespace fisheye_calibration::rendering
