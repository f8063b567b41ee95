// Positions that the fast computation cannot handle are computed as the maps compute them.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "rendering/fast_positions.h"
#include "rendering/pixel_runs.h"

using namespace fisheye_calibration;

namespace {

using runs::View;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

View smallView() {
  View view = runs::ordinaryView();
  view.size = {300, 40};
  return view;
}

void expectExactPath(const View& view) {
  EXPECT_EQ(rendering::FastPositions(view.rays(), view.size).safeDistance(), 0);
  EXPECT_TRUE(runs::areThoseOfTheMaps(view, 9, 5));
}

void expectExactPathWithout(double lens::Camera::*field) {
  View view = smallView();
  ASSERT_GT(rendering::FastPositions(view.rays(), view.size).safeDistance(), 0);
  for (const double value : {kNaN, kInfinity, -kInfinity}) {
    SCOPED_TRACE(value);
    view.camera.*field = value;
    expectExactPath(view);
  }
}

TEST(RawPositionsExactPath, ServesFocalLengthXThatIsNotFinite) {
  expectExactPathWithout(&lens::Camera::fx);
}

TEST(RawPositionsExactPath, ServesFocalLengthYThatIsNotFinite) {
  expectExactPathWithout(&lens::Camera::fy);
}

TEST(RawPositionsExactPath, ServesPrincipalPointXThatIsNotFinite) {
  expectExactPathWithout(&lens::Camera::cx);
}

TEST(RawPositionsExactPath, ServesPrincipalPointYThatIsNotFinite) {
  expectExactPathWithout(&lens::Camera::cy);
}

TEST(RawPositionsExactPath, ServesFirstDistortionThatIsNotFinite) {
  expectExactPathWithout(&lens::Camera::k0);
}

TEST(RawPositionsExactPath, ServesSecondDistortionThatIsNotFinite) {
  expectExactPathWithout(&lens::Camera::k1);
}

TEST(RawPositionsExactPath, ServesFocalLengthBeyondFloat) {
  View view = smallView();
  view.camera.fx = 1e12;
  expectExactPath(view);
}

TEST(RawPositionsExactPath, ServesTurnedView) {
  View view = smallView();
  const double c = std::cos(0.2);
  const double s = std::sin(0.2);
  view.RR = {c, 0, s, 0, 1, 0, -s, 0, c};
  expectExactPath(view);
}

TEST(RawPositionsExactPath, ServesStrongSkew) {
  View view = smallView();
  view.P(0, 1) = 1.1 * view.P(0, 0);
  expectExactPath(view);
}

TEST(RawPositionsExactPath, ServesSingularView) {
  View view = smallView();
  view.P(1, 1) = 0;
  expectExactPath(view);
}

}  // namespace
