// calibrate --bed and what the other commands do with the camera files that it writes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "files/camera_file.h"
#include "files/points_csv.h"
#include "geometry/target_points.h"
#include "program/support/run_program.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;
using testing::Not;

class CalibrateBed : public testing::Test {
 protected:
  void SetUp() override { writeFile(folder, "points.csv", formatPoints(exactPoints({}, {}))); }

  Outcome calibrate(const std::vector<std::string>& further) const {
    std::vector<std::string> arguments = {
        "calibrate", folder.file("points.csv"), "--image-size", "960x720", "-o", camera,
        "--json",    folder.file("report.json")};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  Outcome correct(const std::vector<std::string>& further = {}) const {
    if (!std::filesystem::exists(frame)) {
      EXPECT_TRUE(cv::imwrite(frame, drawTarget({}, {})));
    }
    std::vector<std::string> arguments = {"correct", "--camera", camera, frame, "-o", top};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  Outcome toSecond(const std::vector<std::string>& further = {}) const {
    std::vector<std::string> arguments = {"map",  "--camera", camera, "--from", "world",
                                          "--to", "second",   "30",   "60"};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  nlohmann::json report() const {
    return nlohmann::json::parse(support::bytesOf(folder.file("report.json")));
  }

  support::TemporaryFolder folder;
  std::string camera = folder.file("camera.ini");
  std::string frame = folder.file("frame.png");
  std::string top = folder.file("top.png");
};

// The corners of the board, detected in the corrected picture, lie where the rectangle puts them.
TEST_F(CalibrateBed, TheCorrectedPictureIsTheRectangle) {
  for (const char* const bed : {"-30,-30,300x240", "-30,-30,300.5x240.5"}) {
    const Outcome run = calibrate({"--bed", bed, "--resolution", "0.5"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("X -30 ... 270"));
    ASSERT_EQ(correct().exitCode, 0);
    const bool odd = std::string(bed).find('.') != std::string::npos;
    EXPECT_EQ(cv::imread(top).size(), odd ? cv::Size(601, 481) : cv::Size(600, 480));
    const std::string found = folder.file("found.csv");
    const Outcome detect =
        runProgram({"detect", top, "--chessboard", "9x7", "--spacing", "30", "-o", found});
    ASSERT_EQ(detect.exitCode, 0) << detect.err;
    // Pixels are rendered to the nearest one: corners are off by up to about half a pixel, but not
    // all in one direction.
    cv::Point2d sum;
    const std::vector<CalibrationPoint> points = readPoints(found);
    for (const CalibrationPoint& point : points) {
      const cv::Point2d expected((static_cast<double>(point.Xw) + 30) / 0.5 - 0.5,
                                 (static_cast<double>(point.Yw) + 30) / 0.5 - 0.5);
      const cv::Point2d off = cv::Point2d(imagePosition(point)) - expected;
      EXPECT_LT(std::hypot(off.x, off.y), 0.75) << point.PointId;
      sum += off;
    }
    EXPECT_LT(std::hypot(sum.x, sum.y) / static_cast<double>(points.size()), 0.1);
  }
}

TEST_F(CalibrateBed, OtherCommandsTakeTheSizeFromTheFile) {
  ASSERT_EQ(calibrate({"--bed", "-30,-30,300x240", "--resolution", "0.5"}).exitCode, 0);
  const Outcome map = toSecond();
  EXPECT_EQ(map.exitCode, 0) << map.err;
  EXPECT_EQ(map.out, "119.5,179.5\n");
  EXPECT_EQ(toSecond({"--corrected-size", "600x480"}).out, map.out);
}

TEST_F(CalibrateBed, OtherSizesThanTheFilesAreRefusedUnlessForced) {
  ASSERT_EQ(calibrate({"--bed", "-30,-30,300x240", "--resolution", "0.5"}).exitCode, 0);
  for (const Outcome& run :
       {toSecond({"--corrected-size", "602x480"}), correct({"--size", "602x480"})}) {
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.err, HasSubstr("made for a view of 600x480, not of 602x480"));
  }
  EXPECT_FALSE(std::filesystem::exists(top));
  EXPECT_EQ(toSecond({"--corrected-size", "602x480", "--force"}).exitCode, 0);
  EXPECT_EQ(correct({"--size", "602x480", "--force"}).exitCode, 0);
  const std::string points = folder.file("points.csv");
  const std::string side = frame + "," + camera + "," + points;
  const Outcome stitch = runProgram(
      {"stitch", "--left", side, "--right", side, "-o", top, "--dual", folder.file("dual.ini")});
  EXPECT_NE(stitch.exitCode, 0);
  EXPECT_THAT(stitch.err, HasSubstr("made for a view of 600x480, not of 1920x1440"));
}

// A host has replaced the record through the library, which does not know the program's section.
TEST_F(CalibrateBed, ANoteThatDoesNotBelongToTheRecordIsIgnored) {
  ASSERT_EQ(calibrate({"--corrected-size", "960x720"}).exitCode, 0);
  const FishEyeCalibrationParam other = loadCamera(camera).param;
  ASSERT_EQ(calibrate({"--bed", "-30,-30,300x240", "--resolution", "0.5"}).exitCode, 0);
  SaveCalibrationParam(camera.c_str(), other);
  ASSERT_THAT(support::bytesOf(camera), HasSubstr("CorrectedWidth=600"));
  const Outcome run = correct();
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.err, HasSubstr("camera.ini: its record has been replaced since"));
  EXPECT_THAT(runProgram({"info", camera}).out, HasSubstr("are about another record"));
  EXPECT_EQ(cv::imread(top).size(), cv::Size(960, 720));
}

TEST_F(CalibrateBed, WhatIsMissingOfTheBedIsReported) {
  ASSERT_EQ(calibrate({"--bed", "0,0,200x150", "--resolution", "0.25"}).exitCode, 0);
  EXPECT_EQ(report()["bed"]["unseen"], 0);
  const Outcome run = calibrate({"--bed", "-2000,-2000,4000x4000", "--resolution", "2"});
  EXPECT_THAT(run.err, HasSubstr("warning: of --bed, "));
  EXPECT_THAT(run.err, HasSubstr("% is not seen, "));
  EXPECT_GT(report()["bed"]["unseen"].get<double>(), 0.1);
  EXPECT_GT(report()["bed"]["blurred"].get<double>(), 0.1);
  const Outcome coarse = calibrate({"--bed", "-30,-30,300x240", "--resolution", "4"});
  EXPECT_THAT(coarse.err, HasSubstr("a finer --resolution shows more"));
  ASSERT_EQ(calibrate({}).exitCode, 0);
  EXPECT_TRUE(report()["bed"].is_null());
}

TEST_F(CalibrateBed, ABedThatIsNotShownAtAllIsNoResult) {
  const Outcome run =
      calibrate({"--bed", "5000,5000,400x300", "--resolution", "1", "--tolerance", "0.5"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("would show nothing of --bed"));
  EXPECT_FALSE(std::filesystem::exists(camera));
}

TEST_F(CalibrateBed, FramesOfAnotherSizeAreRefusedUnlessForced) {
  ASSERT_EQ(calibrate({}).exitCode, 0);
  const std::string half = folder.file("half.png");
  ASSERT_TRUE(cv::imwrite(half, cv::Mat(360, 480, CV_8UC1, cv::Scalar(90))));
  const Outcome run = runProgram({"correct", "--camera", camera, half, "-o", top});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err, HasSubstr("half.png: 480x360 pixels, but "));
  EXPECT_THAT(run.err, HasSubstr("was calibrated with 960x720"));
  EXPECT_FALSE(std::filesystem::exists(top));
  EXPECT_EQ(runProgram({"correct", "--camera", camera, half, "-o", top, "--force"}).exitCode, 0);
  const std::string side = half + "," + camera + "," + folder.file("points.csv");
  EXPECT_THAT(runProgram({"stitch", "--left", side, "--right", side, "-o", top, "--dual",
                          folder.file("dual.ini")})
                  .err,
              HasSubstr("was calibrated with 960x720"));
}

TEST_F(CalibrateBed, WithoutABedThePictureShowsTheWholeTarget) {
  const Outcome run = calibrate({});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.err, Not(HasSubstr("does not show the whole target")));
  const double width = report()["corrected"]["width"];
  const double height = report()["corrected"]["height"];
  const nlohmann::json record = report()["camera"];
  for (const CalibrationPoint& point : exactPoints({}, {})) {
    const double pixel = record["Pixel"];
    const double x =
        (static_cast<double>(point.Xw) - record["DatumPtXw"].get<double>()) / pixel + width / 2;
    const double y =
        (static_cast<double>(point.Yw) - record["DatumPtYw"].get<double>()) / pixel + height / 2;
    EXPECT_TRUE(x >= 0 && x <= width - 1 && y >= 0 && y <= height - 1) << point.PointId;
  }
}

TEST_F(CalibrateBed, UnusableOptionsAreRefused) {
  for (const std::vector<std::string>& options :
       std::vector<std::vector<std::string>>{{"--bed", "0,0,300"},
                                             {"--bed", "0,0,300x-1"},
                                             {"--bed", "0,0,300x0"},
                                             {"--bed", "0,0,300x200x1"},
                                             {"--bed", "0,0,nanx200"},
                                             {"--bed", "0,0,1e9x200"},
                                             {"--bed", "0,0,300x200", "--resolution", "0"},
                                             {"--bed", "0,0,300x200", "--resolution", "1e-5"},
                                             {"--resolution", "0.5"},
                                             {"--bed", "0,0,300x200", "--corrected-size", "9x9"}}) {
    const Outcome run = calibrate(options);
    EXPECT_EQ(run.exitCode, 2) << options.back();
    EXPECT_FALSE(std::filesystem::exists(camera)) << options.back();
  }
}

}  // namespace
}  // namespace fisheye_calibration::program
