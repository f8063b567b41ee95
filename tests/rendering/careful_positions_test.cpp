// Positions of single pixels are those of the maps, whatever the camera and the pixels' order.
#include "rendering/careful_positions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "rendering/corrected_views.h"
#include "support/dice.h"

using namespace fisheye_calibration;

namespace {

using rendering::CarefulPositions;
using rendering::LensNode;
using rendering::LensTable;
using rendering::RawPosition;
using rendering::SourcePixel;
using rendering::ViewGeometry;
using support::Dice;
using views::Maps;
using views::ordinaryView;
using views::View;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

ViewGeometry geometryOf(const View& view) {
  return {view.rays(), {cv::Matx33d::eye(), 0, 0, view.size}};
}

// How the pixels of a test were computed.
struct Shares {
  int byTable = 0;
  int exactly = 0;
};

// Whether the table decides the rounding of a pixel, up to the last bits.
bool isCertain(const ViewGeometry& geometry, const SourcePixel& pixel) {
  if (!geometry.hasBlocks()) return false;
  const lens::Camera& c = geometry.rays().camera;
  const double x = pixel.column * geometry.xx() + pixel.row * geometry.xy() + geometry.x0();
  const double y = pixel.row * geometry.yy() + geometry.y0();
  const double r = std::hypot(x, y);
  const double n = std::floor(r * LensTable::kNodesPerUnit + 0.5);
  if (!(n < static_cast<double>(geometry.finestNodes().size()))) return false;
  const double theta = std::atan(r);
  const double S = r == 0 ? 32 : 32 * theta * (1 + theta * (c.k0 + theta * c.k1)) / r;
  const auto distance = [](double u) { return std::abs(u - std::nearbyint(u)); };
  return std::max(distance(c.fx * x * S + 32 * c.cx), distance(c.fy * y * S + 32 * c.cy)) <
         geometry.finestNodes()[static_cast<std::size_t>(n)].sure;
}

// Compares pixels here and there and some that follow each other with the maps.
testing::AssertionResult areThoseOfTheMaps(const View& view, std::uint64_t seed, int count,
                                           Shares& shares) {
  const Maps maps(view);
  const ViewGeometry geometry = geometryOf(view);
  CarefulPositions positions(geometry);
  Dice dice(seed);
  SourcePixel pixel{0, 0};
  for (int i = 0; i < count; ++i) {
    ++pixel.column;
    if (dice.oneIn(2) || pixel.column >= view.size.width) {
      pixel = {dice.whole(0, view.size.width - 1), dice.whole(0, view.size.height - 1)};
    }
    const RawPosition raw = positions.at(pixel);
    if (!maps.hold(pixel.column, pixel.row, raw)) {
      return testing::AssertionFailure()
             << "pixel " << pixel.column << ", " << pixel.row << " lies at " << raw.u << ", "
             << raw.v << ", certain " << isCertain(geometry, pixel);
    }
    ++(isCertain(geometry, pixel) ? shares.byTable : shares.exactly);
  }
  return testing::AssertionSuccess();
}

testing::AssertionResult areThoseOfTheMaps(const View& view, std::uint64_t seed, int count) {
  Shares shares;
  return areThoseOfTheMaps(view, seed, count, shares);
}

TEST(CarefulPositions, OfRandomViewsAreThoseOfTheMaps) {
  Shares shares;
  for (std::uint64_t seed = 0; seed < 500; ++seed) {
    Dice dice(seed);
    const View view = views::randomView(dice);
    ASSERT_TRUE(areThoseOfTheMaps(view, 1000 + seed, 3000, shares)) << "view " << seed;
  }
  EXPECT_GT(shares.byTable, 500000);
  EXPECT_GT(shares.exactly, 50000);
}

TEST(CarefulPositions, OfAnOrdinaryViewAreThoseOfTheMapsAndRarelyComputedExactly) {
  Shares shares;
  EXPECT_TRUE(areThoseOfTheMaps(ordinaryView(), 3, 300000, shares));
  EXPECT_GT(shares.byTable, 1000 * shares.exactly);
}

// A pixel on the optical axis, of which the steps of the rays are exact, of a principal point at
// whole and half 1/32 pixels.
TEST(CarefulPositions, OnTheAxisAreThePrincipalPoint) {
  for (const int point : {0, 7, -33, 64 * 700 + 1}) {
    View view = ordinaryView();
    view.camera.fx = view.camera.fy = view.P(0, 0) = view.P(1, 1) = 512;
    view.camera.cx = point / 64.0;
    view.camera.cy = (point + 64) / 64.0;
    const ViewGeometry geometry = geometryOf(view);
    ASSERT_TRUE(geometry.hasBlocks());
    const RawPosition raw = CarefulPositions(geometry).at({640, 480});
    // Halves are rounded to the even one.
    EXPECT_EQ(raw.u, cvRound(point / 2.0)) << point;
    EXPECT_EQ(raw.v, cvRound(point / 2.0 + 32)) << point;
    EXPECT_TRUE(areThoseOfTheMaps(view, 4, 2000)) << point;
  }
}

// Focal lengths so long that the table has just enough room.
TEST(CarefulPositions, OfLongFocalLengthsAreThoseOfTheMaps) {
  Shares shares;
  for (const double focal : {5e3, 1e4, 1e5, 1e6}) {
    SCOPED_TRACE(focal);
    View view = ordinaryView();
    view.size = {400, 300};
    view.camera.fx = focal;
    view.camera.fy = -0.9 * focal;
    view.P = {focal, 40, 0, 0, -0.9 * focal, 0, 0, 0, 1};
    EXPECT_TRUE(areThoseOfTheMaps(view, 5, 50000, shares));
  }
  EXPECT_GT(shares.byTable, 10000);
}

// --- views that the table does not serve ---

View smallView() {
  View view = ordinaryView();
  view.size = {300, 40};
  return view;
}

void expectAllExact(const View& view) {
  Shares shares;
  EXPECT_TRUE(areThoseOfTheMaps(view, 9, 3000, shares));
  EXPECT_EQ(shares.byTable, 0);
}

TEST(CarefulPositions, OfCamerasThatAreNotFiniteAreThoseOfTheMaps) {
  ASSERT_TRUE(geometryOf(smallView()).hasBlocks());
  for (double lens::Camera::*const field :
       {&lens::Camera::fx, &lens::Camera::fy, &lens::Camera::cx, &lens::Camera::cy,
        &lens::Camera::k0, &lens::Camera::k1}) {
    for (const double value : {kNaN, kInfinity, -kInfinity}) {
      SCOPED_TRACE(value);
      View view = smallView();
      view.camera.*field = value;
      EXPECT_FALSE(geometryOf(view).hasBlocks());
      expectAllExact(view);
    }
  }
}

TEST(CarefulPositions, OfHugeNumbersAreThoseOfTheMaps) {
  for (double lens::Camera::*const field :
       {&lens::Camera::fx, &lens::Camera::fy, &lens::Camera::cx, &lens::Camera::cy,
        &lens::Camera::k0, &lens::Camera::k1}) {
    for (const double value : {1e16, -1e200, 1e308}) {
      SCOPED_TRACE(value);
      View view = smallView();
      view.camera.*field = value;
      expectAllExact(view);
    }
  }
}

// The camera of the view may have other focal lengths than the view's.
TEST(CarefulPositions, OfOtherFocalLengthsAreThoseOfTheMaps) {
  View view = smallView();
  view.P(0, 0) = 300;
  EXPECT_FALSE(geometryOf(view).hasBlocks());
  expectAllExact(view);
}

TEST(CarefulPositions, OfTurnedViewsAreThoseOfTheMaps) {
  const double c = std::cos(0.2);
  const double s = std::sin(0.2);
  for (const cv::Matx33d& RR :
       {cv::Matx33d(c, 0, s, 0, 1, 0, -s, 0, c), cv::Matx33d(1, 0, 0, 0, c, -s, 0, s, c),
        cv::Matx33d(c, -s, 0, s, c, 0, 0, 0, 1)}) {
    View view = smallView();
    view.RR = RR;
    EXPECT_FALSE(geometryOf(view).hasBlocks());
    expectAllExact(view);
  }
}

TEST(CarefulPositions, OfViewsBehindTheCameraAreThoseOfTheMaps) {
  View view = smallView();
  view.RR = cv::Matx33d::diag({-1, -1, -1});
  EXPECT_FALSE(geometryOf(view).hasBlocks());
  expectAllExact(view);
}

TEST(CarefulPositions, OfSingularViewsAreThoseOfTheMaps) {
  View view = smallView();
  view.P(1, 1) = 0;
  EXPECT_FALSE(geometryOf(view).hasBlocks());
  expectAllExact(view);
}

TEST(CarefulPositions, OfStrongSkewAreThoseOfTheMaps) {
  View view = smallView();
  view.P(0, 1) = 1.1 * view.P(0, 0);
  EXPECT_TRUE(areThoseOfTheMaps(view, 10, 5000));
}

}  // namespace
