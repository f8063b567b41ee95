// The table's polynomials and bounds against the lens's formula in extended precision.
#include "rendering/lens_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "support/dice.h"

using namespace fisheye_calibration;

namespace {

using rendering::BlockSpread;
using rendering::LensNode;
using rendering::LensTable;
using support::Dice;

constexpr double kPi = 3.14159265358979323846;
constexpr double kHalfSpacing = 0.5 / LensTable::kNodesPerUnit;

// theta_d/r with theta_d = theta + k0 theta^2 + k1 theta^3, theta = atan r.
long double radialFactor(const lens::Camera& camera, long double r) {
  if (r == 0) return 1;
  const long double theta = std::atan(r);
  return theta * (1 + theta * (camera.k0 + theta * camera.k1)) / r;
}

double horner(const std::array<double, LensNode::kDegree>& c, double p) {
  double sum = 0;
  for (std::size_t k = c.size(); k-- > 0;) sum = sum * p + c[k];
  return sum;
}

LensTable tableOf(const lens::Camera& camera, double radius, const BlockSpread& spread) {
  LensTable table;
  table.append(camera, radius, spread);
  return table;
}

double radiusOf(std::size_t n) { return static_cast<double>(n) / LensTable::kNodesPerUnit; }

// The node's S at q, by the formula in lens_table.h.
double factorByNode(const LensTable& table, std::size_t n, double q) {
  const LensNode& node = table[n];
  const double p = q - radiusOf(n) * radiusOf(n);
  const double even = node.value + horner(node.c, p) * p;
  return node.odd ? even + (std::sqrt(q) - radiusOf(n)) * horner(node.o, p) : even;
}

struct View {
  lens::Camera camera;
  BlockSpread spread;
};

View viewOf(const lens::Camera& camera, double across, double down) {
  View view{camera, {}};
  view.spread.across = across;
  view.spread.down = down;
  view.spread.reach = std::hypot(across / camera.fx, down / camera.fy);
  return view;
}

View ordinaryView() { return viewOf({410, 408, 645, 474, 0.02, -0.03, 0}, 18, 3); }

View randomView(Dice& dice) {
  const double distortion = dice.oneIn(2) ? 0.2 : dice.magnitude(0.1, 3);
  const double fx = dice.magnitude(150, 8000) * (dice.oneIn(4) ? -1 : 1);
  const double fy = fx * dice.uniform(0.8, 1.2) * (dice.oneIn(4) ? -1 : 1);
  View view = viewOf({fx, fy, dice.uniform(-100, 5000), dice.uniform(-100, 4000),
                      dice.number(distortion), dice.number(distortion), 0},
                     dice.uniform(1, 60), dice.uniform(1, 60));
  view.spread.skewed = dice.oneIn(3);
  view.spread.rayError = dice.oneIn(2) ? 0 : dice.magnitude(1e-13, 1e-11);
  return view;
}

// A pixel of a block whose middle is nearest to node n.
struct Pixel {
  double middleX, middleY;
  double x, y;
};

Pixel randomPixel(Dice& dice, const View& view, std::size_t n) {
  const double off = dice.oneIn(3) ? (dice.oneIn(2) ? -1 : 1) : dice.number(1);
  const double r = std::max(radiusOf(n) + off * kHalfSpacing, 0.0);
  const double phi = dice.oneIn(4) ? kPi / 2 * dice.whole(0, 3) : dice.number(kPi);
  const auto share = [&] { return dice.oneIn(3) ? (dice.oneIn(2) ? -1 : 1) : dice.number(1); };
  Pixel pixel{r * std::cos(phi), r * std::sin(phi), 0, 0};
  pixel.x = pixel.middleX + share() * view.spread.across / view.camera.fx;
  pixel.y = pixel.middleY + share() * view.spread.down / view.camera.fy;
  return pixel;
}

struct Position {
  long double u, v;
};

// In 1/32 pixels.
Position positionOf(const lens::Camera& camera, long double x, long double y) {
  const long double S = 32 * radialFactor(camera, std::sqrt(x * x + y * y));
  return {camera.fx * x * S + 32.0L * camera.cx, camera.fy * y * S + 32.0L * camera.cy};
}

Position positionByNode(const View& view, const LensTable& table, std::size_t n, double x,
                        double y) {
  const lens::Camera& camera = view.camera;
  const double S = factorByNode(table, n, x * x + y * y);
  return {camera.fx * x * S + 32 * camera.cx, camera.fy * y * S + 32 * camera.cy};
}

long double distance(const Position& a, const Position& b) {
  return std::max(std::abs(a.u - b.u), std::abs(a.v - b.v));
}

// Calls test(node number, pixel) for pixels about the safe nodes of random views.
template <class Test>
void forPixelsOfRandomViews(std::uint64_t seed, const Test& test) {
  Dice dice(seed);
  int safe = 0;
  int near = 0;
  for (int i = 0; i < 150; ++i) {
    const View view = randomView(dice);
    const LensTable table = tableOf(view.camera, 3, view.spread);
    for (std::size_t n = 0; n < table.size(); ++n) {
      if (table[n].safe == 0) continue;
      ++safe;
      near += table[n].odd ? 1 : 0;
      for (int k = 0; k < 30; ++k) test(dice, view, table, n, randomPixel(dice, view, n));
      if (testing::Test::HasFatalFailure()) return;
    }
  }
  EXPECT_GT(safe, 5000);
  EXPECT_GT(near, 200);
  EXPECT_GT(safe - near, 200);
}

TEST(LensTable, PositionsStayWithinThePromisedError) {
  forPixelsOfRandomViews(
      1, [](Dice&, const View& view, const LensTable& table, std::size_t n, const Pixel& pixel) {
        const Position wanted = positionOf(view.camera, pixel.x, pixel.y);
        const Position got = positionByNode(view, table, n, pixel.x, pixel.y);
        ASSERT_LE(distance(got, wanted), 0.5 - table[n].sure) << "node " << n;
      });
}

// The maps' rays are off by so much.
TEST(LensTable, PromisedErrorIncludesThatOfTheRays) {
  forPixelsOfRandomViews(2, [](Dice& dice, const View& view, const LensTable& table, std::size_t n,
                               const Pixel& pixel) {
    const double phi = dice.number(kPi);
    const double error = view.spread.rayError;
    const Position wanted =
        positionOf(view.camera, static_cast<long double>(pixel.x) + error * std::cos(phi),
                   static_cast<long double>(pixel.y) + error * std::sin(phi));
    const Position got = positionByNode(view, table, n, pixel.x, pixel.y);
    ASSERT_LE(distance(got, wanted), 0.5 - table[n].sure) << "node " << n;
  });
}

// Positions of a block are relative to the whole pixel that the node's value gives for its middle.
TEST(LensTable, ExtentBoundsTheOffsetsOfBlocks) {
  forPixelsOfRandomViews(
      3, [](Dice&, const View& view, const LensTable& table, std::size_t n, const Pixel& pixel) {
        const lens::Camera& c = view.camera;
        const double S0 = table[n].value;
        const Position p = positionOf(c, pixel.x, pixel.y);
        const double baseU = std::floor((c.fx * pixel.middleX * S0 + 32 * c.cx) / 32);
        const double baseV = std::floor((c.fy * pixel.middleY * S0 + 32 * c.cy) / 32);
        const Position offset{std::round(p.u) - 32 * baseU, std::round(p.v) - 32 * baseV};
        ASSERT_LT(distance(offset, {0, 0}), 32 * table[n].extent) << "node " << n;
        ASSERT_LT(distance(offset, {0, 0}), 32767) << "node " << n;
      });
}

TEST(LensTable, FloatIsNeverTrustedMoreThanDouble) {
  forPixelsOfRandomViews(
      4, [](Dice&, const View&, const LensTable& table, std::size_t n, const Pixel&) {
        ASSERT_GT(table[n].safe, 0.4);
        ASSERT_LT(static_cast<double>(table[n].safe), table[n].sure);
        ASSERT_LT(table[n].sure, 0.5);
      });
}

TEST(LensTable, FloatCoefficientsAreTheRoundedOnes) {
  forPixelsOfRandomViews(
      5, [](Dice&, const View&, const LensTable& table, std::size_t n, const Pixel&) {
        for (std::size_t k = 0; k < LensNode::kDegree; ++k) {
          ASSERT_EQ(table[n].cFloat[k], static_cast<float>(table[n].c[k]));
          ASSERT_EQ(table[n].oFloat[k], static_cast<float>(table[n].o[k]));
        }
      });
}

// Loose bounds would be correct, but would have most positions computed twice.
TEST(LensTable, BoundsOfAnOrdinaryLensAreClose) {
  const View view = ordinaryView();
  const LensTable table = tableOf(view.camera, 3, view.spread);
  for (std::size_t n = 0; n + 1 < table.size(); ++n) {
    EXPECT_GT(table[n].safe, 0.495) << n;
    EXPECT_GT(table[n].sure, 0.499) << n;
    EXPECT_LE(table[n].extent, 25) << n;
  }
}

// About r = 0, p = r^2: G = atan r/r = 1 - p/3 + p^2/5 - p^3/7,
//   G^2 = 1 - 2/3 p + 23/45 p^2, G^3 = 1 - p + 14/15 p^2,
//   S/32 = G + k1 p G^3 + r k0 G^2
//        = 1 + (k1 - 1/3) p + (1/5 - k1) p^2 + (14/15 k1 - 1/7) p^3 + r k0 (1 - 2/3 p + 23/45 p^2).
// Economisation moves terms by little in a short reach, most of all the last ones.
TEST(LensTable, NodeOnTheAxisHoldsTheSeriesWorkedOutByHand) {
  const double k0 = 0.25;
  const double k1 = -0.5;
  const View view = viewOf({410, 408, 645, 474, k0, k1, 0}, 0.01, 0.01);
  const LensTable table = tableOf(view.camera, 1, view.spread);
  const LensNode& node = table[0];
  ASSERT_TRUE(node.odd);
  EXPECT_NEAR(node.value, 32, 1e-12);
  EXPECT_NEAR(node.c[0], 32 * (-5.0 / 6), 1e-9);
  EXPECT_NEAR(node.c[1], 32 * 0.7, 1e-6);
  EXPECT_NEAR(node.c[2], 32 * (-7.0 / 15 - 1.0 / 7), 1e-3);
  EXPECT_NEAR(node.o[0], 32 * 0.25, 1e-9);
  EXPECT_NEAR(node.o[1], 32 * (-1.0 / 6), 1e-6);
  EXPECT_NEAR(node.o[2], 32 * (23.0 / 180), 1e-3);
}

// --- nodes that cannot be used ---

testing::AssertionResult hasNoSafeNode(const View& view) {
  const LensTable table = tableOf(view.camera, 3, view.spread);
  for (std::size_t n = 0; n < table.size(); ++n) {
    if (!(table[n].safe == 0 && table[n].sure == 0)) {
      return testing::AssertionFailure() << "node " << n << " is safe";
    }
  }
  return testing::AssertionSuccess();
}

// Other numbers that are not finite have no table (ViewGeometry::hasBlocks).
TEST(LensTable, OfDistortionsThatAreNotFiniteHasNoSafeNode) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (double lens::Camera::*const field : {&lens::Camera::k0, &lens::Camera::k1}) {
    for (const double value : {kInfinity, -kInfinity, std::nan("")}) {
      View view = ordinaryView();
      view.camera.*field = value;
      EXPECT_TRUE(hasNoSafeNode(view)) << value;
    }
  }
}

TEST(LensTable, OfHugeNumbersHasNoSafeNode) {
  for (double lens::Camera::*const field :
       {&lens::Camera::fx, &lens::Camera::fy, &lens::Camera::cx, &lens::Camera::cy,
        &lens::Camera::k0, &lens::Camera::k1}) {
    for (const double value : {1e15, -1e200, 1e308}) {
      View view = ordinaryView();
      view.camera.*field = value;
      EXPECT_TRUE(hasNoSafeNode(view)) << value;
    }
  }
}

TEST(LensTable, OfBlocksThatSpreadTooFarHasNoSafeNode) {
  View view = ordinaryView();
  view.spread.reach = 1;
  EXPECT_TRUE(hasNoSafeNode(view));
  view.spread.reach = std::nan("");
  EXPECT_TRUE(hasNoSafeNode(view));
}

TEST(LensTable, OfRaysThatAreTooFarOffHasNoSafeNode) {
  View view = ordinaryView();
  view.spread.rayError = 1e-5;  // 410 px * 32 * 1e-5 = 0.13
  EXPECT_TRUE(hasNoSafeNode(view));
}

TEST(LensTable, CoversTheRequestedRadiusAndEndsWithANodeThatIsNotSafe) {
  const View view = ordinaryView();
  const auto sizeFor = [&](double radius) {
    const LensTable table = tableOf(view.camera, radius, view.spread);
    EXPECT_EQ(table[table.size() - 1].safe, 0) << radius;
    EXPECT_EQ(table[table.size() - 1].sure, 0) << radius;
    return table.size();
  };
  EXPECT_EQ(sizeFor(0), 2U);
  EXPECT_EQ(sizeFor(1), 34U);
  EXPECT_EQ(sizeFor(1.001), 35U);
  EXPECT_EQ(sizeFor(8), 258U);
  EXPECT_EQ(sizeFor(1e300), 258U);
  EXPECT_EQ(sizeFor(std::nan("")), 258U);
}

}  // namespace
