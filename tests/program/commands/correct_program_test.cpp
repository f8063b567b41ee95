// correct and crop from the outside, with pictures through a known camera.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/frame_buffer.h"
#include "drawing/grid_overlay.h"
#include "geometry/metric_picture.h"
#include "geometry/second_view.h"
#include "program/support/run_program.h"
#include "program/support/sample_record.h"
#include "program/support/synthetic_target.h"
#include "reports/progress_bar.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// The camera of sampleRecord(): 170 above the bed, straight over (120, 90).
SyntheticCamera overheadCamera() {
  SyntheticCamera camera;
  camera.R = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  camera.T = {-120, -90, 170};
  return camera;
}

class CorrectProgram : public testing::Test {
 protected:
  void SetUp() override {
    SaveCalibrationParam(camera.c_str(), sampleRecord());
    ASSERT_TRUE(cv::imwrite(frame, drawTarget(overheadCamera(), SyntheticTarget{})));
  }

  Outcome correct(const std::vector<std::string>& further) const {
    std::vector<std::string> arguments = {"correct", "--camera", camera};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  TemporaryFolder folder;
  std::string camera = folder.path("camera.ini");
  std::string frame = folder.path("frame.png");
  std::string top = folder.path("top.png");
};

TEST(FrameBuffer, RowsAreStoredFromTheBottomWithoutPadding) {
  cv::Mat picture(2, 3, CV_8UC3);
  for (int i = 0; i < 18; ++i) {
    picture.data[i] = static_cast<unsigned char>(i);
  }
  const FrameBuffer buffer = toBuffer(picture);
  EXPECT_EQ(buffer.bitCount, 24);
  EXPECT_THAT(buffer.bytes,
              ElementsAre(9, 10, 11, 12, 13, 14, 15, 16, 17, 0, 1, 2, 3, 4, 5, 6, 7, 8));
  EXPECT_EQ(cv::norm(toPicture(buffer), picture), 0);
}

TEST(GridOverlay, LinesLieAtMultiplesOfTheSpacing) {
  FishEyeCalibrationParam param{};
  param.Pixel = 0.5f;
  param.DatumPtXw = 10;  // in the centre (20, 10) of 40 x 20 px, so the view spans 0...20, -5...5
  const Grid grid = gridOver(metricPicture(param, {40, 20}), 6);
  ASSERT_EQ(grid.columns.size(), 4u);
  EXPECT_EQ(grid.columns[0].world, 0);
  EXPECT_FLOAT_EQ(static_cast<float>(grid.columns[0].pixel), 0);
  EXPECT_EQ(grid.columns[3].world, 18);
  EXPECT_FLOAT_EQ(static_cast<float>(grid.columns[3].pixel), 36);
  ASSERT_EQ(grid.rows.size(), 1u);
  EXPECT_EQ(grid.rows[0].pixel, 10);
}

TEST(GridOverlay, LinesTooCloseAreRefused) {
  EXPECT_THROW(gridOver(metricPicture(sampleRecord(), {40, 20}), 1), Failure);
  FishEyeCalibrationParam empty{};
  EXPECT_THROW(gridOver(metricPicture(empty, {40, 20}), 100), Failure);
}

TEST(ProgressBar, TellsShareAndRate) {
  EXPECT_EQ(progressText(5, 10, 2), "[##########----------] 5/10  2.5 frames/s");
  EXPECT_EQ(progressText(0, 3, 0), "[--------------------] 0/3");
}

TEST(SecondView, BedPointComesBackFromItsPixel) {
  const SyntheticCamera truth = overheadCamera();
  const auto bed = bedPointAt(sampleRecord(), truth.project(210, 30), {190, 60});
  ASSERT_TRUE(bed);
  EXPECT_NEAR(bed->x, 210, 2e-3);
  EXPECT_NEAR(bed->y, 30, 2e-3);
}

TEST(SecondView, OnlyTheSizeOfTheCalibrationKeepsItsCentre) {
  FishEyeCalibrationParam param = sampleRecord();
  EXPECT_EQ(centreShift(param, {960, 720}), 0);
  param.p1 = 1.1;  // keeps x = 480 with a shift of -48 and so moves x = 580 by 10
  param.ImageDx = -48;
  EXPECT_NEAR(centreShift(param, {960, 720}), 0, 1e-9);
  EXPECT_NEAR(centreShift(param, {1160, 720}), 10, 1e-9);
  EXPECT_EQ(sizeComplaint(param, {960, 720}), "");
  EXPECT_THAT(sizeComplaint(param, {1160, 720}), HasSubstr("1160x720"));
}

TEST_F(CorrectProgram, TheViewShowsTheTargetInItsPlace) {
  const Outcome run = correct({frame, "-o", top, "--mask", folder.path("mask.png")});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  const cv::Mat view = cv::imread(top, cv::IMREAD_UNCHANGED);
  ASSERT_EQ(view.type(), CV_8UC1);
  ASSERT_EQ(view.size(), cv::Size(960, 720));
  // 300/170 px a unit around (480, 360) = bed (120, 90): middles of squares, dark where column +
  // row is even.
  for (const auto& [column, row] : {std::pair(0, 0), {1, 0}, {3, 3}, {4, 3}, {7, 5}, {6, 5}}) {
    const int x = static_cast<int>(480 + (30 * column + 15 - 120) * 300 / 170.0);
    const int y = static_cast<int>(360 + (30 * row + 15 - 90) * 300 / 170.0);
    const bool dark = (column + row) % 2 == 0;
    EXPECT_EQ(view.at<unsigned char>(y, x) < 128, dark) << column << " " << row;
  }
  const cv::Mat mask = cv::imread(folder.path("mask.png"), cv::IMREAD_UNCHANGED);
  ASSERT_EQ(mask.size(), view.size());
  EXPECT_EQ(mask.at<unsigned char>(360, 480), 0);
}

TEST_F(CorrectProgram, TheMaskTellsWhatTheFrameDoesNotShow) {
  // The view's corner lies at tan theta = 1250/800, theta = 1.0, so some 770 px from the frame's
  // centre, and the frame ends at 600.
  FishEyeCalibrationParam narrow = sampleRecord();
  narrow.fx = narrow.fy = 800;
  SaveCalibrationParam(camera.c_str(), narrow);
  const Outcome run =
      correct({frame, "-o", top, "--size", "2000x1500", "--mask", folder.path("mask.png")});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  const cv::Mat mask = cv::imread(folder.path("mask.png"), cv::IMREAD_UNCHANGED);
  ASSERT_EQ(mask.size(), cv::Size(2000, 1500));
  EXPECT_EQ(mask.at<unsigned char>(0, 0), 255);
  EXPECT_EQ(mask.at<unsigned char>(750, 1000), 0);
}

TEST_F(CorrectProgram, TheGridIsDrawnInTheBedsPlaces) {
  cv::Mat colour;
  colour = cv::Mat(720, 960, CV_8UC3, cv::Scalar(100, 100, 100));
  ASSERT_TRUE(cv::imwrite(folder.path("grey.bmp"), colour));
  ASSERT_EQ(correct({folder.path("grey.bmp"), "-o", top, "--grid", "40"}).exitCode, 0);
  const cv::Mat view = cv::imread(top, cv::IMREAD_UNCHANGED);
  ASSERT_EQ(view.type(), CV_8UC3);
  // Xw = 120 at column 480, Xw = 160 at 480 + 40 * 300/170 = 550.6; half-way there is no line.
  const auto red = [&](int x) { return view.at<cv::Vec3b>(400, x)[2]; };
  EXPECT_GT(red(480), 200);
  EXPECT_GT(std::max(red(550), red(551)), 150);
  EXPECT_EQ(red(515), 100);
}

TEST_F(CorrectProgram, AFolderOfFramesGivesAFolderOfViews) {
  const TemporaryFolder frames;
  std::filesystem::copy_file(frame, frames.path("a.png"));
  ASSERT_TRUE(cv::imwrite(frames.path("b.jpg"), cv::imread(frame)));
  frames.write("notes.txt", "no picture");
  const std::string views = folder.path("views");
  const Outcome run = correct({std::filesystem::path(frames.path("a.png")).parent_path().string(),
                               "-o", views, "--mask", folder.path("mask.png")});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(cv::imread(views + "/a.png", cv::IMREAD_UNCHANGED).channels(), 1);
  EXPECT_EQ(cv::imread(views + "/b.jpg", cv::IMREAD_UNCHANGED).channels(), 3);
  EXPECT_TRUE(exists(folder.path("mask.png")));
  EXPECT_THAT(run.out, HasSubstr("2 of 2 frames corrected"));
  EXPECT_THAT(run.out, HasSubstr("frames per second"));
  EXPECT_THAT(run.err, HasSubstr("[####################] 2/2"));
}

TEST_F(CorrectProgram, ABadFrameAmongManyIsToldAndTheRestIsDone) {
  const std::string bad = folder.write("bad.png", "not a picture");
  const Outcome run = correct({bad, frame, "-o", folder.path("views")});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("bad.png: not a picture"));
  EXPECT_TRUE(exists(folder.path("views") + "/frame.png"));
  EXPECT_FALSE(exists(folder.path("views") + "/bad.png"));
}

TEST_F(CorrectProgram, ABlackFrameFailsPlainly) {
  const std::string black = folder.path("black.png");
  ASSERT_TRUE(cv::imwrite(black, cv::Mat(720, 960, CV_8UC1, cv::Scalar(0))));
  const Outcome run = correct({black, "-o", top});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("black.png: the library could not correct the frame"));
  EXPECT_FALSE(exists(top));
}

TEST_F(CorrectProgram, BadInputExitsWithTwoAndWritesNothing) {
  const std::vector<std::vector<std::string>> wrong = {
      {frame, "-o", frame},
      {frame, "-o", top, "--size", "0x4"},
      {frame, "-o", top, "--grid", "-1"},
      {frame, "-o", top, "--grid", "0.1"},
      {frame, "-o", top, "--mask", top},
      {frame, "-o", folder.path("top.doc")},
      {folder.path("none.png"), "-o", top},
      {frame, frame, "-o", folder.path("views")},
  };
  for (const auto& arguments : wrong) {
    EXPECT_EQ(correct(arguments).exitCode, 2) << testing::PrintToString(arguments);
  }
  EXPECT_EQ(runProgram({"correct", "--camera", folder.path("none.ini"), frame, "-o", top}).exitCode,
            2);
  EXPECT_THAT(folder.names(), ElementsAre("camera.ini", "frame.png"));
}

TEST_F(CorrectProgram, CropKeepsTheCentre) {
  cv::Mat picture(6, 8, CV_8UC1);
  for (int i = 0; i < 48; ++i) {
    picture.data[i] = static_cast<unsigned char>(i);
  }
  ASSERT_TRUE(cv::imwrite(folder.path("in.png"), picture));
  const Outcome run = runProgram({"crop", folder.path("in.png"), "--size", "4x2", "-o", top});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  const cv::Mat cut = cv::imread(top, cv::IMREAD_UNCHANGED);
  ASSERT_EQ(cut.size(), cv::Size(4, 2));
  EXPECT_EQ(cv::norm(cut, picture(cv::Rect(2, 2, 4, 2))), 0);
}

TEST_F(CorrectProgram, CropToALargerSizeLeavesABlackRimAndSaysSo) {
  ASSERT_TRUE(cv::imwrite(folder.path("in.png"), cv::Mat(2, 2, CV_8UC1, cv::Scalar(9))));
  const Outcome run = runProgram({"crop", folder.path("in.png"), "--size", "4x4", "-o", top});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.err, HasSubstr("has only 2x2 pixels"));
  const cv::Mat cut = cv::imread(top, cv::IMREAD_UNCHANGED);
  EXPECT_EQ(cv::countNonZero(cut), 4);
  EXPECT_EQ(cut.at<unsigned char>(1, 1), 9);
}

TEST_F(CorrectProgram, CropRefusesBadInput) {
  EXPECT_EQ(runProgram({"crop", frame, "--size", "4", "-o", top}).exitCode, 2);
  EXPECT_EQ(runProgram({"crop", frame, "--size", "4x4", "-o", frame}).exitCode, 2);
  EXPECT_EQ(runProgram({"crop", camera, "--size", "4x4", "-o", top}).exitCode, 2);
}

}  // namespace
}  // namespace fisheye_calibration::program
