// What all blocks of a corrected view share: the geometry and its error bounds.
#pragma once

#include <cstdint>
#include <span>

#include "rendering/inverse_warp.h"
#include "rendering/lens_table.h"
#include "rendering/raw_position.h"

namespace fisheye_calibration::rendering {

// Blocks are rows of so many output pixels. Positions of a block are first computed in 32-bit float
// relative to its middle pixel. Where the error of that could change a rounding, the pixel is
// computed again in double and, if that does not suffice, as the plain steps compute it.
constexpr int kBlock = 32;

class ViewGeometry {
 public:
  ViewGeometry(const RectifyingRays& rays, const InverseWarp& warp);

  const RectifyingRays& rays() const { return rays_; }
  const InverseWarp& warp() const { return warp_; }

  // Nodes of the lens: those of the table for all blocks and, from firstFineNode() on, of the one
  // for blocks that reach no farther than fineReachX and fineReachY. Most blocks do; only views
  // with large steps have two tables.
  const LensNode& node(std::int32_t index) const { return table_[static_cast<std::size_t>(index)]; }
  std::int32_t nodeCount() const { return static_cast<std::int32_t>(table_.size()); }
  std::int32_t firstFineNode() const { return firstFineNode_; }  // nodeCount() if there is none
  // The last nodes of both tables, counted from their first ones.
  std::int32_t lastNode() const { return firstFineNode_ - 1; }
  std::int32_t lastFineNode() const { return nodeCount() - firstFineNode_ - 1; }
  // The more precise table.
  std::span<const LensNode> finestNodes() const;
  double fineReachX() const { return fineReachX_; }
  double fineReachY() const { return fineReachY_; }

  // Whether blocks can be computed in float at all.
  bool hasBlocks() const { return hasBlocks_; }

  // x = xx column + xy row + x0, y = yy row + y0: the normalised coordinates of an undistorted
  // pixel.
  double xx() const { return xx_; }
  double xy() const { return xy_; }
  double x0() const { return x0_; }
  double yy() const { return yy_; }
  double y0() const { return y0_; }
  // What blocks need of these in float: xx^2, yy^2 and the columns by which a row moves the ray.
  float squareXx() const { return squareXx_; }
  float squareYy() const { return squareYy_; }
  float lean() const { return lean_; }

  // Source pixels from the middle of a block to its other pixels, at most; blocks that reach
  // farther are not computed in float.
  double reachX() const { return reachX_; }
  double reachY() const { return reachY_; }

  // Blocks with a larger 1/|w| at their middle are too close to the horizon for float.
  double largestPerW() const { return largestPerW_; }

  // A source pixel computed in float is rounded correctly if it is closer to a whole number than
  // this minus kPlainRounding times the larger of the middle's coordinates.
  double clear() const { return clear_; }
  static constexpr double kPlainRounding = 0x1.01p-24;

  // Coordinates of source pixels that float can hold with fraction bits to spare.
  static constexpr double kFarthestSource = 0x1p22;

  // The numerator of a source pixel advances by at most kSteepOffsets steps within a block if the
  // denominator changes by less than kSteep per pixel, and by kGentleOffsets if by less than
  // kGentle.
  static constexpr double kGentle = 1e-3;
  static constexpr double kGentleOffsets = 16.5;
  static constexpr double kSteep = 0.02;
  static constexpr double kSteepOffsets = 24;

 private:
  ViewGeometry(const RectifyingRays& rays, const InverseWarp& warp, const cv::Vec2d& blockReach);

  BlockSpread spreadOf(double reachX, double reachY) const;
  double coveredRadius(const BlockSpread& spread) const;
  void makeTables(double reach);
  double radiusBound() const;

  RectifyingRays rays_;
  InverseWarp warp_;
  double xx_, xy_, x0_, yy_, y0_;
  float squareXx_;
  float squareYy_;
  float lean_;
  double reachX_;
  double reachY_;
  double largestPerW_ = 0;
  double clear_ = 0;
  double fineReachX_ = 0;
  double fineReachY_ = 0;
  LensTable table_;
  std::int32_t firstFineNode_ = 0;
  bool hasBlocks_;
};

}  // namespace fisheye_calibration::rendering
