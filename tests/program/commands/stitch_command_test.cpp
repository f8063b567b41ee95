// stitch and map --dual from the outside, with two known cameras over one bed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "files/points_csv.h"
#include "program/support/overhead_pair.h"
#include "program/support/run_program.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;
using testing::Not;

class StitchCommand : public testing::Test {
 protected:
  void SetUp() override {
    writeCamera("l", 160);
    writeCamera("r", 260);
  }

  void writeCamera(const std::string& name, double Xw) const {
    const SyntheticCamera camera = cameraOver(Xw);
    ASSERT_TRUE(cv::imwrite(folder.file(name + ".png"), drawTarget(camera, kBoard)));
    SaveCalibrationParam(folder.file(name + ".ini").c_str(), recordOver(Xw));
    writeFile(folder, name + ".csv", formatPoints(exactPoints(camera, kBoard)));
  }

  std::string files(const std::string& name) const {
    return folder.file(name + ".png") + "," + folder.file(name + ".ini") + "," +
           folder.file(name + ".csv");
  }

  Outcome stitch(const std::vector<std::string>& further = {}) const {
    std::vector<std::string> arguments = {"stitch", "--left", files("l"), "--right", files("r"),
                                          "-o",     canvas,   "--dual",   dual};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  // The mapped position of a bed point in the stitched picture.
  cv::Point2d positionOf(double Xw, double Yw) const {
    const Outcome run = runProgram({"map", "--dual", dual, "--from", "world", "--to", "stitched",
                                    std::to_string(Xw), std::to_string(Yw)});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    cv::Point2d position;
    char comma = 0;
    std::istringstream(run.out) >> position.x >> comma >> position.y;
    return position;
  }

  // Compares the middles of the squares. The left view ends at Xw = 640, so only the right camera
  // sees column 13.
  void expectBoard(const cv::Mat& picture, double rowOffset, int lastColumn) const {
    for (const int row : {0, 1, 2}) {
      for (int column = 0; column <= lastColumn; ++column) {
        const cv::Point2d position = positionOf(50 * column + 25, 50 * row + 25);
        const int x = static_cast<int>(position.x + 0.5);
        const int y = static_cast<int>(position.y + rowOffset + 0.5);
        ASSERT_TRUE(cv::Rect({}, picture.size()).contains({x, y})) << x << " " << y;
        const bool dark = (column + row) % 2 == 0;
        EXPECT_EQ(picture.at<unsigned char>(y, x) < 128, dark) << column << " " << row;
      }
    }
  }

  support::TemporaryFolder folder;
  std::string canvas = folder.file("bed.png");
  std::string dual = folder.file("dual.ini");
};

TEST_F(StitchCommand, ContentOfBothCamerasLiesWhereTheRecordSays) {
  const Outcome run = stitch({"--seam", folder.file("seam.png")});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  const cv::Mat picture = cv::imread(canvas, cv::IMREAD_UNCHANGED);
  ASSERT_EQ(picture.type(), CV_8UC1);
  expectBoard(picture, 0, 13);
  EXPECT_THAT(run.out, HasSubstr("Agreement at 84 shared points"));
  EXPECT_THAT(run.err, Not(HasSubstr("warning")));
  const cv::Mat seam = cv::imread(folder.file("seam.png"), cv::IMREAD_UNCHANGED);
  EXPECT_EQ(seam.size(), picture.size());
  EXPECT_EQ(seam.type(), CV_8UC3);
}

TEST_F(StitchCommand, TheRecordOfACropIsCorrect) {
  const Outcome run = stitch({"--crop", "120,100,300x152"});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  const cv::Mat picture = cv::imread(canvas, cv::IMREAD_UNCHANGED);
  ASSERT_EQ(picture.size(), cv::Size(300, 152));
  const Outcome map =
      runProgram({"map", "--dual", dual, "--from", "world", "--to", "stitched", "160", "130"});
  // 360 rows less 100 at the top and 108 at the bottom: the datum's buffer row is 180 - 108 = 72
  // and the picture's row is v + 152 - 144.
  EXPECT_EQ(map.out, "120,72\n");
  EXPECT_THAT(map.err, HasSubstr("its row from the top is y + 8"));
  expectBoard(picture, 8, 9);
}

TEST_F(StitchCommand, MapComesBackFromTheStitchedPicture) {
  ASSERT_EQ(stitch().exitCode, 0);
  const Outcome run = runProgram({"map", "--dual", dual, "--from", "stitched", "--to", "world"},
                                 "PointId,x,y\n7,240,180\n8,250,170\n");
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.out, "PointId,Xw,Yw\n7,160,130\n8,180,110\n");
}

TEST_F(StitchCommand, MapRefusesWhatADualRecordDoesNotGive) {
  ASSERT_EQ(stitch().exitCode, 0);
  const auto map = [&](const std::vector<std::string>& arguments) {
    std::vector<std::string> all = {"map"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return runProgram(all);
  };
  const Outcome raw = map({"--dual", dual, "--from", "world", "--to", "raw", "1", "2"});
  EXPECT_EQ(raw.exitCode, 2);
  EXPECT_THAT(raw.err, HasSubstr("world to stitched and stitched to world only"));
  EXPECT_EQ(map({"--dual", dual, "--from", "stitched", "--to", "raw", "1", "2"}).exitCode, 2);
  EXPECT_EQ(map({"--camera", folder.file("l.ini"), "--from", "world", "--to", "stitched", "1", "2"})
                .exitCode,
            2);
  EXPECT_EQ(map({"--from", "world", "--to", "raw", "1", "2"}).exitCode, 2);
  EXPECT_EQ(map({"--dual", folder.file("l.ini"), "--from", "world", "--to", "stitched", "1", "2"})
                .exitCode,
            2);
}

// The board moves with the datum, at 2 world units a pixel; the rest of 0.5 cannot be avoided.
TEST_F(StitchCommand, TheRecordReadBackHasTheWholeDatumThatWasWritten) {
  FishEyeCalibrationParam param = recordOver(160);
  param.DatumPtXw = 160.5f;
  SaveCalibrationParam(folder.file("l.ini").c_str(), param);
  const Outcome run = stitch();
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("off by at most 0.5000 mm"));
  DualFishEyeCalibrationParam read{};
  LoadDualCamerasCalibrationParam(dual.c_str(), read);
  EXPECT_THAT(support::bytesOf(dual), HasSubstr("DatumPtXw=161.000000"));
  EXPECT_EQ(read.DatumPtXw, 161);
  EXPECT_EQ(read.DatumPtYw, 130);
}

TEST_F(StitchCommand, AFractionInTheDatumOfAnOlderFileIsReportedByMap) {
  ASSERT_EQ(stitch().exitCode, 0);
  std::string text = support::bytesOf(dual);
  text.replace(text.find("DatumPtXw=160.0"), 15, "DatumPtXw=160.5");
  writeFile(folder, "dual.ini", text);
  EXPECT_THAT(
      runProgram({"map", "--dual", dual, "--from", "world", "--to", "stitched", "1", "2"}).err,
      HasSubstr("DatumPtXw is 160.5, but the library reads it back as 160"));
}

TEST_F(StitchCommand, TooFewSharedPointsAreBadInputAndNothingIsWritten) {
  auto points = exactPoints(cameraOver(260), kBoard);
  points.resize(3);
  writeFile(folder, "r.csv", formatPoints(points));
  const Outcome run = stitch();
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err, HasSubstr("3 points are shared"));
  EXPECT_FALSE(std::filesystem::exists(canvas));
  EXPECT_FALSE(std::filesystem::exists(dual));
}

// Each of them with exit code 1 and nothing written, unless forced.
TEST_F(StitchCommand, WhatIsNotToBeTrustedIsWrittenOnlyIfForced) {
  const auto expectRefusal = [&](const std::string& left, const std::string& right,
                                 const std::string& reason) {
    const std::vector<std::string> arguments = {"stitch", "--left", left,     "--right", right,
                                                "-o",     canvas,   "--dual", dual};
    const Outcome run = runProgram(arguments);
    EXPECT_EQ(run.exitCode, 1) << reason;
    EXPECT_THAT(run.err, HasSubstr("not to be trusted: "));
    EXPECT_THAT(run.err, HasSubstr(reason));
    EXPECT_THAT(run.err, HasSubstr("--force"));
    EXPECT_FALSE(std::filesystem::exists(canvas));
    EXPECT_FALSE(std::filesystem::exists(dual));
  };
  expectRefusal(files("r"), files("l"), "swap --left and --right");
  expectRefusal(files("l"), files("l"), "are the same camera");
  SaveCalibrationParam(folder.file("m.ini").c_str(), recordOver(200));
  expectRefusal(folder.file("l.png,") + folder.file("m.ini,") + folder.file("l.csv"), files("r"),
                "it is not that of these points");

  auto points = exactPoints(cameraOver(260), kBoard);
  for (CalibrationPoint& point : points) {
    point.Xw += 500;
  }
  writeFile(folder, "far.csv", formatPoints(points));
  const std::string far = folder.file("r.png,") + folder.file("r.ini,") + folder.file("far.csv");
  expectRefusal(files("l"), far, "by 500 world units");
  const Outcome forced = runProgram(
      {"stitch", "--left", files("l"), "--right", far, "-o", canvas, "--dual", dual, "--force"});
  EXPECT_EQ(forced.exitCode, 1);
  EXPECT_TRUE(std::filesystem::exists(canvas));
  EXPECT_TRUE(std::filesystem::exists(dual));
}

TEST_F(StitchCommand, BadUsageIsRefused) {
  const std::vector<std::vector<std::string>> wrong = {
      {"--crop", "0,0,301x152"},
      {"--crop", "0,0"},
      {"--crop", "-4,0,300x152"},
      {"--crop", "400,0,300x152"},
      {"--seam", canvas},
      {"--seam", folder.file("s.ini")},
      {"--grid", "0"},
      {"--grid", "7"},
  };
  for (const auto& arguments : wrong) {
    EXPECT_EQ(stitch(arguments).exitCode, 2) << testing::PrintToString(arguments);
  }
  EXPECT_EQ(
      runProgram({"stitch", "--left", "a,b", "--right", files("r"), "-o", canvas, "--dual", dual})
          .exitCode,
      2);
  EXPECT_FALSE(std::filesystem::exists(canvas));
}

}  // namespace
}  // namespace fisheye_calibration::program
