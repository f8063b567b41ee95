// The C++17 wrapper, as a program that knows neither fisheye_calibration.h nor the library's code.
#include "fisheye_calibration.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <string>
#include <type_traits>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

fcal::Camera trueCamera(float tilt) {
  fcal::Camera camera{};
  camera.fx = camera.fy = 205;
  camera.u0 = 322;
  camera.v0 = 238;
  camera.k[0] = 0.02;
  camera.k[1] = -0.03;
  camera.rx = tilt;
  camera.ry = -0.25F;
  camera.tx = -160;
  camera.ty = -160;
  camera.tz = 260;
  return camera;
}

std::vector<fcal::Point> pointsSeenBy(const fcal::Camera& camera) {
  std::vector<fcal::XYZ> world;
  for (int i = 0; i < 63; ++i) {
    world.push_back({40.0F * static_cast<float>(i % 9), 40.0F * static_cast<float>(i / 9), 0});
  }
  const std::vector<fcal::XY> raw = fcal::worldToRaw(camera, world);
  std::vector<fcal::Point> points(world.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    points[i].id = static_cast<std::int32_t>(i + 1);
    points[i].xw = world[i].x;
    points[i].yw = world[i].y;
    points[i].x = raw[i].x;
    points[i].y = raw[i].y;
  }
  return points;
}

constexpr fcal::Size kSize{640, 480};

TEST(Wrapper, CalibratesACamera) {
  std::vector<fcal::Point> points = pointsSeenBy(trueCamera(0.4F));
  const fcal::Calibration found = fcal::calibrate(kSize, points, kSize);
  EXPECT_LT(found.rms, 0.01);
  EXPECT_NEAR(found.camera.fx, 205, 0.05);
  EXPECT_NEAR(points[5].reproj_x, points[5].x, 0.05);
}

TEST(Wrapper, ThrowsTheTextOfTheLibrary) {
  std::vector<fcal::Point> points(8);
  try {
    fcal::calibrate(kSize, points, kSize);
    FAIL() << "no exception";
  } catch (const fcal::NoResult& error) {
    EXPECT_STREQ(error.what(), "points: fewer than 9");
    EXPECT_EQ(error.status(), FCAL_FALSE);
  }
  try {
    fcal::calibrate({0, 480}, points, kSize);
    FAIL() << "no exception";
  } catch (const fcal::NoResult&) {
    FAIL() << "the wrong exception";
  } catch (const fcal::Error& error) {
    EXPECT_STREQ(error.what(), "width: not positive");
    EXPECT_EQ(error.status(), FCAL_BAD_ARGUMENT);
  }
}

TEST(Wrapper, TakesAnythingContiguous) {
  const fcal::Camera camera = trueCamera(0.4F);
  const std::vector<fcal::XYZ> list{{1, 2, 0}, {3, 4, 0}};
  const std::array<fcal::XYZ, 2> array{{{1, 2, 0}, {3, 4, 0}}};
  const fcal::XYZ plain[] = {{1, 2, 0}, {3, 4, 0}};
  const auto expected = fcal::worldToRaw(camera, list);
  for (const auto& found : {fcal::worldToRaw(camera, array), fcal::worldToRaw(camera, plain),
                            fcal::worldToRaw(camera, {list.data(), 2})}) {
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[1].x, expected[1].x);
    EXPECT_EQ(found[1].y, expected[1].y);
  }
  EXPECT_TRUE(fcal::worldToRaw(camera, {}).empty());
}

TEST(Wrapper, MapsPointsThereAndBack) {
  fcal::Camera camera = trueCamera(0.4F);
  camera.pixel = 0.5F;
  camera.datum_xw = 100;
  const std::vector<fcal::XYZ> world{{150, 120, 0}};
  const auto raw = fcal::worldToRaw(camera, world);
  const auto back = fcal::rawToWorld(camera, raw);
  EXPECT_NEAR(back[0].x, 150, 1e-3);
  EXPECT_NEAR(back[0].y, 120, 1e-3);
  const auto corrected = fcal::worldToCorrected(camera, {320, 240}, world);
  const auto fromRaw = fcal::rawToCorrected(camera, {320, 240}, raw);
  EXPECT_NEAR(fromRaw[0].x, corrected[0].x, 1e-2);
  const std::vector<fcal::XY> bed{{110, 7}};
  const auto view = fcal::worldToView(camera, {320, 240}, bed);
  EXPECT_EQ(view[0].x, 340);
  EXPECT_EQ(fcal::viewToWorld(camera, {320, 240}, view)[0].x, 110);
  const fcal::Dual dual{0.5F, 400, 300, 20, 30, 100, 0};
  const auto stitched = fcal::worldToStitched(dual, bed);
  EXPECT_EQ(stitched[0].x, 40);
  EXPECT_EQ(fcal::stitchedToWorld(dual, stitched)[0].y, 7);
}

TEST(Wrapper, KeepsParameterFiles) {
  const std::string path = testing::TempDir() + "fisheye_calibration_wrapper_test.ini";
  fcal::Camera camera = trueCamera(0.5F);
  fcal::saveCamera(path, camera);
  fcal::saveDual(path, {0.5F, 400, 300, 1, 2, 3, 4});
  EXPECT_EQ(fcal::loadCamera(path).rx, 0.5F);
  EXPECT_EQ(fcal::loadDual(path).height, 300);
  std::remove(path.c_str());
  EXPECT_THROW(fcal::loadCamera(path), fcal::NoResult);
}

TEST(Wrapper, RendersPicturesOfEitherDirection) {
  std::vector<fcal::Point> points = pointsSeenBy(trueCamera(0.4F));
  const fcal::Camera camera = fcal::calibrate(kSize, points, kSize).camera;
  fcal::Picture frame(kSize, 8);
  for (std::size_t i = 0; i < frame.bytes().size(); ++i) {
    frame.bytes()[i] = static_cast<std::uint8_t>(i * 7 + i / 640);
  }
  const fcal::Picture view = fcal::corrected(frame.image(), camera, {300, 200});
  std::vector<std::uint8_t> buffer(300 * 200);
  std::vector<std::uint8_t> mask(300 * 200);
  fcal::correct(frame.image(), camera, fcal::Image::bottomUp(buffer.data(), {300, 200}, 8),
                fcal::Image::topDown(mask.data(), {300, 200}, 8));
  for (std::size_t y = 0; y < 200; ++y) {
    ASSERT_TRUE(std::equal(buffer.begin() + static_cast<std::ptrdiff_t>(300 * (199 - y)),
                           buffer.begin() + static_cast<std::ptrdiff_t>(300 * (200 - y)),
                           view.bytes().begin() + static_cast<std::ptrdiff_t>(300 * y)));
  }
  fcal::Picture middle({100, 100}, 8);
  fcal::crop(view.image(), middle.image());
  EXPECT_EQ(middle.bytes()[0], view.bytes()[300 * 50 + 100]);
  EXPECT_THROW(fcal::Picture({0, 5}, 8), fcal::Error);
  EXPECT_THROW(fcal::Image::bottomUp(buffer.data(), {1 << 30, 1 << 30}, 32), fcal::Error);
}

TEST(Wrapper, FitsAnAffineMap) {
  std::vector<fcal::Point> points(4);
  const float corners[][2] = {{0, 0}, {10, 0}, {0, 10}, {10, 10}};
  for (std::size_t i = 0; i < 4; ++i) {
    points[i].x = corners[i][0];
    points[i].y = corners[i][1];
    points[i].xw = 2 * points[i].x + 5;
    points[i].yw = 3 * points[i].y - 1;
  }
  const fcal::Affine fit = fcal::fitAffine(points);
  EXPECT_NEAR(fit.a, 2, 1e-5);
  EXPECT_NEAR(fit.d, 3, 1e-5);
  EXPECT_NEAR(fit.e, 5, 1e-5);
  EXPECT_NEAR(fit.errorX, 0, 1e-5);
  EXPECT_THROW(fcal::straighten({}), fcal::NoResult);
}

TEST(Wrapper, StitchesTwoCameras) {
  fcal::Camera camera{};
  camera.fx = camera.fy = 1e6F;
  camera.u0 = 20;
  camera.v0 = 15;
  camera.p[0] = camera.p[4] = camera.p[8] = 1;
  camera.pixel = 1;
  std::vector<fcal::Point> points(4);
  for (std::size_t i = 0; i < 4; ++i) {
    points[i].id = static_cast<std::int32_t>(i + 1);
    points[i].xw = i % 2 == 0 ? 0.0F : 20.0F;
    points[i].yw = i < 2 ? 0.0F : 20.0F;
  }
  const fcal::PointLists common = fcal::commonPoints(points, points, 3);
  EXPECT_EQ(common[0].size(), 3U);
  EXPECT_EQ(common[1].size(), 3U);
  fcal::Picture frame({40, 30}, 8);
  frame.bytes().assign(frame.bytes().size(), 90);
  const fcal::RigView view(frame.image(), camera, points);
  const fcal::Size size = fcal::stitchedSize(view, view);
  EXPECT_EQ(size.width, 80);
  EXPECT_EQ(size.height, 60);
  fcal::Picture canvas(size, 8);
  const fcal::Dual dual = fcal::stitch(view, view, canvas.image());
  EXPECT_EQ(dual.width, 80);
  EXPECT_NEAR(canvas.bytes()[30 * 80 + 40], 90, 1);  // blending rounds down
  fcal::Picture part({40, 20}, 8);
  const fcal::Dual cropped = fcal::cropStitched(canvas.image(), 10, 5, part.image(), dual);
  EXPECT_EQ(cropped.width, 40);
  EXPECT_EQ(cropped.datum_x, dual.datum_x - 10);
  EXPECT_EQ(part.bytes()[0], canvas.bytes()[5 * 80 + 10]);
  const fcal::RigView empty(frame.image(), camera, {});
  EXPECT_THROW(fcal::stitchedSize(view, empty), fcal::NoResult);
}

// Views refer to cameras and points: temporaries of these do not compile, views of arrays do.
template <class CameraArgument, class PointsArgument>
constexpr bool kMakesRigView =
    std::is_constructible_v<fcal::RigView, fcal::Image, CameraArgument, PointsArgument>;
using Points = std::vector<fcal::Point>;
using PointArray = std::array<fcal::Point, 4>;
static_assert(kMakesRigView<fcal::Camera&, Points&>);
static_assert(kMakesRigView<const fcal::Camera&, const Points&>);
static_assert(kMakesRigView<fcal::Camera&, fcal::Span<const fcal::Point>>);
static_assert(kMakesRigView<fcal::Camera&, const PointArray&>);
static_assert(!kMakesRigView<fcal::Camera, Points&>);
static_assert(!kMakesRigView<const fcal::Camera, Points&>);
static_assert(!kMakesRigView<fcal::Camera&, Points>);
static_assert(!kMakesRigView<fcal::Camera&, const Points>);
static_assert(!kMakesRigView<fcal::Camera&, PointArray>);
static_assert(!kMakesRigView<fcal::Camera, Points>);

// A constant picture can be read, but not written.
template <class Target>
constexpr bool kCanBeCroppedInto =
    std::is_invocable_v<decltype(&fcal::crop), fcal::ConstImage, Target>;
static_assert(kCanBeCroppedInto<decltype(std::declval<fcal::Picture&>().image())>);
static_assert(!kCanBeCroppedInto<decltype(std::declval<const fcal::Picture&>().image())>);

TEST(Wrapper, ConstantPicturesCanBeRead) {
  fcal::Picture original({8, 6}, 8);
  original.bytes()[8 * 2 + 2] = 77;
  const fcal::Picture picture = original;
  fcal::Picture middle({4, 2}, 8);
  fcal::crop(picture.image(), middle.image());
  EXPECT_EQ(middle.bytes()[0], 77);
}

TEST(Wrapper, CalibratesSeveralViews) {
  std::vector<std::vector<fcal::Point>> lists;
  for (const float tilt : {0.2F, 0.35F, 0.5F}) {
    lists.push_back(pointsSeenBy(trueCamera(tilt)));
  }
  lists[1][6].x += 50;
  const std::vector<fcal::Span<const fcal::Point>> views(lists.begin(), lists.end());
  const fcal::ViewsCalibration solved = fcal::calibrateViews(kSize, views);
  EXPECT_NEAR(solved.solutions[0].fx, 205, 0.05);
  EXPECT_TRUE(solved.wrongViews.empty());
  ASSERT_EQ(solved.wrongPoints.size(), 3U);
  EXPECT_THAT(solved.wrongPoints[1], ElementsAre(6));
  EXPECT_TRUE(solved.wrongPoints[0].empty());

  const fcal::Calibration record = fcal::cameraOf(solved.solutions[0], lists[0], kSize);
  EXPECT_LT(record.rms, 0.01);
  const fcal::Camera placed = fcal::placedView({-10, -20}, 0.5F, kSize, record.camera);
  EXPECT_EQ(placed.pixel, 0.5F);
  EXPECT_EQ(fcal::solutionOf(placed).cx, record.camera.u0);

  const std::vector<fcal::BedPoint> grid{{0, 0}, {160, 120}};
  EXPECT_LT(fcal::bedBounds(solved.solutions[0], grid)[1], 1);
  EXPECT_LT(fcal::bedErrors(solved.solutions[0], fcal::solutionOf(placed), grid)[1], 1);
  const std::vector<fcal::BedPoint> pixel{{lists[0][10].x, lists[0][10].y}};
  EXPECT_NEAR(fcal::rawToBed(solved.solutions[0], pixel)[0].x, lists[0][10].xw, 0.01);

  fcal::ViewsOptions options;
  options.heldLens = &solved.solutions[0];
  const fcal::Span<const fcal::Point> one[] = {lists[2]};
  EXPECT_EQ(fcal::calibrateViews(kSize, one, options).solutions[0].fx, solved.solutions[0].fx);
}

TEST(Wrapper, ViewsWithoutASolutionSayWhich) {
  const std::vector<fcal::Point> good = pointsSeenBy(trueCamera(0.4F));
  const fcal::Span<const fcal::Point> views[] = {good, {good.data(), 3}};
  try {
    fcal::calibrateViews(kSize, views);
    FAIL() << "no exception";
  } catch (const fcal::NoSolution& error) {
    EXPECT_EQ(error.outcome, FCAL_TOO_FEW_POINTS);
    EXPECT_EQ(error.view, 1);
    EXPECT_THAT(error.what(), HasSubstr("too few points"));
  }
}

TEST(Wrapper, KnowsTheVersion) { EXPECT_EQ(fcal::version(), fcal_version()); }

}  // namespace
