#include "detection/charuco_finder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <opencv2/imgproc.hpp>

#include "detection/charuco_board.h"
#include "detection/markers.h"
#include "drawing/target_sheet.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

const Progress kSilent = [](const std::string&) {};
constexpr double kPixelsPerMm = 8;

TEST(CharucoBoard, MarkersAreNumberedRowByRowInTheBrightSquares) {
  const CharucoBoard board(3, 2, 0.7);  // 4 x 3 squares
  EXPECT_EQ(board.markerCount(), 6);
  EXPECT_EQ(board.markerIn(-1, -1), -1);
  EXPECT_EQ(board.markerIn(0, -1), 0);
  EXPECT_EQ(board.markerIn(2, -1), 1);
  EXPECT_EQ(board.markerIn(-1, 0), 2);
  EXPECT_EQ(board.markerIn(1, 0), 3);
  EXPECT_EQ(board.markerIn(0, 1), 4);
  EXPECT_EQ(board.markerIn(3, 0), -1);
}

TEST(CharucoBoard, SquaresAndMarkersAreInverse) {
  for (const cv::Size size : {cv::Size(4, 3), cv::Size(5, 3), cv::Size(5, 4), cv::Size(4, 4)}) {
    const CharucoBoard board(size.width, size.height, 0.7);
    for (int id = 0; id < board.markerCount(); ++id) {
      const cv::Point square = board.squareOf(id);
      EXPECT_EQ(board.markerIn(square.x, square.y), id) << size;
    }
  }
}

class CharucoFinder : public testing::Test {
 protected:
  void SetUp() override {
    if (!markersAvailable()) {
      GTEST_SKIP() << "the image library has no markers";
    }
    const World world = {.spacing = 30, .origin = {}, .firstId = 1};
    const TargetSheet laidOut = layOutTarget(target, world);
    // The first point lies at the world's origin.
    corner = -cv::Point2d(laidOut.points[0].ImagePtX, laidOut.points[0].ImagePtY);
    flat = sheetAsPicture(laidOut.sheet, kPixelsPerMm);
  }

  cv::Mat picture(const SyntheticCamera& camera = {}) const {
    return photograph(camera, flat, kPixelsPerMm, corner);
  }

  // Expects that every point found has the index of the corner that is there.
  void expectTrue(const Detection& detection, const SyntheticCamera& camera = {}) const {
    for (const GridPoint& found : detection.grid) {
      EXPECT_EQ(found.index, found.world.y * target.columns + found.world.x);
      const cv::Point2d exact = camera.project(30 * found.world.x, 30 * found.world.y);
      EXPECT_LT(cv::norm(cv::Point2d(found.image) - exact), 0.4) << found.index;
    }
  }

  const Target target = {.kind = TargetKind::kCharuco, .columns = 9, .rows = 7};
  cv::Point2d corner;
  cv::Mat flat;
};

TEST_F(CharucoFinder, TheWholeBoardIsFound) {
  const Search found = findCharuco(picture(), target, kSilent);
  ASSERT_TRUE(found.detection.has_value());
  EXPECT_GE(found.detection->grid.size(), 60u);  // of 63: the farthest markers are small
  expectTrue(*found.detection);
}

TEST_F(CharucoFinder, APartOfTheBoardKeepsItsNumbers) {
  cv::Mat part = picture();
  part.colRange(0, 420) = 90;
  const Search found = findCharuco(part, target, kSilent);
  ASSERT_TRUE(found.detection.has_value());
  EXPECT_GE(found.detection->grid.size(), 20u);
  EXPECT_LT(found.detection->grid.size(), 50u);
  expectTrue(*found.detection);
}

TEST_F(CharucoFinder, CornersAtTheEdgeOfACoverAreLeftOutOrExact) {
  cv::Mat covered = picture();
  for (const cv::Point2d& place : {cv::Point2d(2.2, 2.1), {5.1, 3.3}, {6.7, 1.2}}) {
    cv::circle(covered, cv::Point(SyntheticCamera().project(30 * place.x, 30 * place.y)), 34,
               cv::Scalar(60), cv::FILLED);
  }
  const Search found = findCharuco(covered, target, kSilent);
  ASSERT_TRUE(found.detection.has_value());
  EXPECT_GE(found.detection->grid.size(), 25u);
  expectTrue(*found.detection);
}

TEST_F(CharucoFinder, ATurnedCameraSeesTheSameNumbers) {
  SyntheticCamera turned;  // by half a turn about its axis
  for (std::size_t i = 0; i < 6; ++i) {
    turned.R[i] = -turned.R[i];
  }
  turned.T[0] = -turned.T[0];
  turned.T[1] = -turned.T[1];
  const Search found = findCharuco(picture(turned), target, kSilent);
  ASSERT_TRUE(found.detection.has_value());
  EXPECT_GE(found.detection->grid.size(), 60u);
  expectTrue(*found.detection, turned);
}

TEST_F(CharucoFinder, ABoardOfADifferentSizeIsRefused) {
  const cv::Mat seen = picture();
  for (const cv::Size size : {cv::Size(8, 7), cv::Size(10, 7), cv::Size(9, 6), cv::Size(7, 9)}) {
    const Target wrong = {.kind = TargetKind::kCharuco, .columns = size.width, .rows = size.height};
    const Search found = findCharuco(seen, wrong, kSilent);
    EXPECT_FALSE(found.detection.has_value()) << size;
    EXPECT_NE(found.seen, "") << size;
  }
}

TEST_F(CharucoFinder, APlainBoardHasNoMarkers) {
  const Search found = findCharuco(drawTarget({}, {}), target, kSilent);
  EXPECT_FALSE(found.detection.has_value());
}

}  // namespace
}  // namespace fisheye_calibration::program
