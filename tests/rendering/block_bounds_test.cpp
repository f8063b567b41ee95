// How much of each error bound of docs/rendering.md is used: never all of it, over millions of
// blocks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "rendering/block_access.h"
#include "support/dice.h"
#include "support/instruction_sets.h"

using namespace fisheye_calibration;

namespace {

using rendering::InverseWarp;
using rendering::RowPart;
using rendering::ViewGeometry;
using support::Dice;
using Real = long double;

#ifdef __OPTIMIZE__
constexpr int kViews = 250;
constexpr int kBatches = 1000;  // per view
#else
constexpr int kViews = 60;
constexpr int kBatches = 100;
#endif

// Shares of the bounds on what a block computes in float.
struct Shares {
  long blocks = 0;
  Real source = 0;  // without the plain steps' own rounding to float
  Real plain = 0;   // with it
  Real position = 0;
};

cv::Matx33d shift(double x, double y) { return {1, 0, x, 0, 1, y, 0, 0, 1}; }

// Cameras and views of every kind that is computed in float: turned, tilted, zoomed, skewed, heavy
// lenses.
ViewGeometry randomView(Dice& dice) {
  const cv::Size size(dice.whole(100, 3000), dice.whole(80, 2200));
  lens::Camera camera;
  camera.fx = size.width * dice.uniform(0.15, 1.2);
  camera.fy = camera.fx * dice.uniform(0.9, 1.1);
  camera.cx = size.width * dice.uniform(0.3, 0.7);
  camera.cy = size.height * dice.uniform(0.3, 0.7);
  camera.k0 = dice.number(dice.oneIn(3) ? 0.4 : 0.05);
  camera.k1 = dice.number(dice.oneIn(3) ? 0.4 : 0.05);
  const double skew = dice.oneIn(3) ? dice.number(0.2) * camera.fx : 0;
  const cv::Matx33d K(camera.fx, skew, 0, 0, camera.fy, 0, 0, 0, 1);
  const double turn = dice.number(4);
  const double scale = dice.magnitude(0.3, 3);
  const double tilt = dice.oneIn(3) ? 1.0 : 0.2;
  const cv::Matx33d turned(scale * std::cos(turn), -scale * std::sin(turn), 0,
                           scale * std::sin(turn), scale * std::cos(turn), 0,
                           dice.number(tilt) / size.width, dice.number(tilt) / size.height, 1);
  const double cx = size.width * 0.5;
  const double cy = size.height * 0.5;
  const cv::Matx33d H = shift(cx, cy) * turned * shift(-cx, -cy);
  return {rendering::rectifyingRays(camera, cv::Matx33d::eye(), K, size),
          {H.inv(), dice.number(5), dice.number(5), size}};
}

// 32 times the raw position of an undistorted pixel, by the lens's formula.
struct Position {
  Real u, v;
};

Position truePosition(const ViewGeometry& view, Real column, Real row) {
  const cv::Matx33d& iR = view.rays().iR;
  const lens::Camera& c = view.rays().camera;
  const Real W = iR(2, 2);
  const Real x = (iR(0, 0) * column + iR(0, 1) * row + iR(0, 2)) / W;
  const Real y = (iR(1, 1) * row + iR(1, 2)) / W;
  const Real r = std::sqrt(x * x + y * y);
  const Real theta = std::atan(r);
  const Real s = r == 0 ? 1 : theta * (1 + theta * (c.k0 + theta * c.k1)) / r;
  return {32 * (c.fx * x * s + c.cx), 32 * (c.fy * y * s + c.cy)};
}

struct Source {
  Real x, y;             // exact
  float plainX, plainY;  // as the plain steps have it
};

Source trueSource(const InverseWarp& warp, int x, int y) {
  const cv::Matx33d& H = warp.Hinv;
  const double px = x - warp.dx;
  const double py = y - warp.dy;
  const auto sum = [&](int i) { return H(i, 0) * px + H(i, 1) * py + H(i, 2); };
  const auto exact = [&](int i) { return Real{H(i, 0)} * px + Real{H(i, 1)} * py + H(i, 2); };
  return {exact(0) / exact(2), exact(1) / exact(2), static_cast<float>(sum(0) / sum(2)),
          static_cast<float>(sum(1) / sum(2))};
}

Real farther(Real a, Real b) { return std::max(std::abs(a), std::abs(b)); }

// Element k of block i, which starts at output pixel (x, y).
void measure(const ViewGeometry& view, const rendering::BlockBatch& b, int i,
             const blocks::Trace& trace, std::size_t k, int x, int y, Shares& shares) {
  const Real sx = b.column[i] + Real{trace.detail.sx[k]};
  const Real sy = b.row[i] + Real{trace.detail.sy[k]};
  const Source source = trueSource(view.warp(), x + trace.order[k], y);
  const Real bound = Real{0.5} - b.clear[i];
  const Real plain = Real{ViewGeometry::kPlainRounding} * farther(b.column[i], b.row[i]);
  shares.source = std::max(shares.source, farther(sx - source.x, sy - source.y) / (bound - plain));
  shares.plain = std::max(shares.plain, farther(sx - source.plainX, sy - source.plainY) / bound);
  const Real column = b.column[i] + Real{std::nearbyint(trace.detail.sx[k])};
  const Real row = b.row[i] + Real{std::nearbyint(trace.detail.sy[k])};
  const Position position = truePosition(view, column, row);
  const Real safe = view.node(b.node[i]).safe;
  shares.position =
      std::max(shares.position, farther(trace.detail.u[k] + Real{32} * b.baseU[i] - position.u,
                                        trace.detail.v[k] + Real{32} * b.baseV[i] - position.v) /
                                    (Real{0.5} - safe));
}

// Blocks at random places of a view, a few pixels of each.
void measureView(const ViewGeometry& view, Dice& dice, Shares& shares) {
  constexpr int kPixels = 4;
  const int width = view.warp().size.width;
  for (int n = 0; n < kBatches; ++n) {
    const RowPart part{dice.whole(0, view.warp().size.height - 1), 0, width};
    const int first = dice.whole(0, (width - 1) / rendering::kBlock);
    rendering::BlockBatch batch;
    blocks::prepare(view, part, first, batch);
    for (int i = 0; i < rendering::kBatch; ++i) {
      const int x = std::min((first + i) * rendering::kBlock, width - rendering::kBlock);
      const bool inside = (batch.inside >> i & 1) != 0 && (batch.small >> i & 1) != 0;
      if (!inside || view.node(batch.node[i]).safe == 0) continue;
      const blocks::Trace trace = blocks::trace(view, batch, i);
      for (int k = 0; k < kPixels; ++k) {
        measure(view, batch, i, trace, static_cast<std::size_t>(dice.whole(0, 31)), x, part.y,
                shares);
      }
      ++shares.blocks;
    }
  }
}

void report(const char* name, Real share) {
  std::printf("largest share of the bound on %s: %.1f %%\n", name,
              100 * static_cast<double>(share));
  testing::Test::RecordProperty(name, std::to_string(static_cast<double>(share)));
  EXPECT_LT(share, 1) << name;
  EXPECT_GT(share, 0.05) << name << ": a bound so loose is not worth its name";
}

TEST(BlockBounds, AreNeverExhausted) {
  support::onEveryInstructionSet([] {
    if (!blocks::areComputed()) return;
    Dice dice(1);
    Shares shares;
    for (int i = 0; i < kViews; ++i) measureView(randomView(dice), dice, shares);
    EXPECT_GT(shares.blocks, kViews * kBatches);
    std::printf("%ld blocks\n", shares.blocks);
    report("source_pixels", shares.source);
    report("source_pixels_with_plain_rounding", shares.plain);
    report("positions", shares.position);
  });
}

}  // namespace
