// The built program from the outside: its commands together, help and bad usage.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "files/points_csv.h"
#include "program/support/printed_table.h"
#include "program/support/run_program.h"
#include "program/support/sample_record.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

class Program : public testing::Test {
 protected:
  support::TemporaryFolder folder;
  std::string camera = folder.file("camera.ini");
};

TEST_F(Program, DetectCalibrateInfoAndMapWorkTogether) {
  const SyntheticCamera truth;
  const std::string picture = folder.file("target.png");
  ASSERT_TRUE(cv::imwrite(picture, drawTarget(truth, {})));

  const std::string points = folder.file("points.csv");
  const Outcome detected = runProgram({"detect", picture, "--chessboard", "9x7", "--spacing", "30",
                                       "-o", points, "--overlay", folder.file("found.png")});
  ASSERT_EQ(detected.exitCode, 0) << detected.err;
  const auto found = readPoints(points);
  ASSERT_EQ(found.size(), 63u);
  EXPECT_EQ(found.front().PointId, 1);
  EXPECT_EQ(found.back().Xw, 240.0f);
  EXPECT_FALSE(cv::imread(folder.file("found.png")).empty());

  const Outcome calibrated =
      runProgram({"calibrate", points, "--image-size", "960x720", "-o", camera});
  ASSERT_EQ(calibrated.exitCode, 0) << calibrated.err;
  EXPECT_NEAR(valueOf(calibrated.out, "fx"), truth.focalLength, 3);
  EXPECT_NEAR(valueOf(calibrated.out, "u0"), truth.principalPoint.x, 3);
  EXPECT_NEAR(valueOf(calibrated.out, "v0"), truth.principalPoint.y, 3);
  EXPECT_FALSE(cv::imread(folder.file("residuals.png")).empty());
  EXPECT_EQ(lineCount(support::bytesOf(folder.file("residuals.csv"))), 64);

  const Outcome info = runProgram({"info", camera});
  EXPECT_EQ(info.exitCode, 0) << info.err;
  EXPECT_NEAR(valueOf(info.out, "fx"), valueOf(calibrated.out, "fx"), 1e-3);

  const Outcome mapped =
      runProgram({"map", "--camera", camera, "--from", "world", "--to", "raw", "95", "-12.5"});
  ASSERT_EQ(mapped.exitCode, 0) << mapped.err;
  const cv::Point2d expected = truth.project(95, -12.5);
  double x = 0;
  double y = 0;
  char comma = 0;
  std::istringstream(mapped.out) >> x >> comma >> y;
  EXPECT_NEAR(x, expected.x, 0.5);
  EXPECT_NEAR(y, expected.y, 0.5);
}

TEST_F(Program, EveryCommandHasHelpWithAnExample) {
  for (const char* command : {"target", "detect", "calibrate", "correct", "crop", "stitch", "map",
                              "info", "simulate", "live"}) {
    const Outcome run = runProgram({command, "--help"});
    EXPECT_EQ(run.exitCode, 0);
    std::string example = "\n  fisheye-calibration ";
    example += command;
    EXPECT_THAT(run.out, HasSubstr(example));
    EXPECT_THAT(runProgram({"--help"}).out, HasSubstr(example));
  }
}

TEST_F(Program, AnUnknownCommandIsNamedWithTheNearestOne) {
  EXPECT_THAT(runProgram({"calibrat", "p.csv"}).err,
              HasSubstr("unknown command \"calibrat\"; did you mean calibrate?"));
  EXPECT_THAT(runProgram({"mpa"}).err, HasSubstr("did you mean map?"));
  EXPECT_THAT(runProgram({"nonsense"}).err, HasSubstr("unknown command \"nonsense\", there are "));
}

TEST_F(Program, LongValuesAreQuotedInPart) {
  const std::string endless(5000, 'x');
  for (const auto& arguments : std::vector<std::vector<std::string>>{
           {endless},
           {"info", "a", endless},
           {"crop", "a.png", "--size", endless, "-o", "b.png"},
           {"map", "--camera", camera, "--from", endless, "--to", "raw"}}) {
    const Outcome run = runProgram(arguments);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_LT(run.err.size(), 250u) << run.err;
  }
}

TEST_F(Program, QuietLeavesErrorsAndRequestedValues) {
  const std::string picture = folder.file("target.png");
  ASSERT_TRUE(cv::imwrite(picture, drawTarget({}, {})));
  const Outcome calibrated = runProgram(
      {"calibrate", picture, "--chessboard", "9x7", "--spacing", "30", "-o", camera, "--quiet"});
  EXPECT_EQ(calibrated.exitCode, 0);
  EXPECT_EQ(calibrated.out, "");
  EXPECT_EQ(calibrated.err, "");
  const Outcome mapped = runProgram(
      {"map", "--camera", camera, "--from", "world", "--to", "raw", "95", "-12.5", "--quiet"});
  EXPECT_EQ(lineCount(mapped.out), 1);
  EXPECT_THAT(runProgram({"info", folder.file("none.ini"), "--quiet"}).err, HasSubstr("none.ini"));
}

TEST_F(Program, FillerIsShownOnlyIfAskedFor) {
  SaveCalibrationParam(camera.c_str(), sampleRecord());
  EXPECT_THAT(runProgram({"info", camera}).out, testing::Not(HasSubstr("k2")));
  EXPECT_THAT(runProgram({"info", camera, "--verbose"}).out, HasSubstr("k2"));
}

TEST_F(Program, BadUsageIsReportedInOneLine) {
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"nonsense"},
      {"info"},
      {"info", "a", "b"},
      {"detect", "x.png", "--chessboard", "8x6", "--spacing", "3"},
      {"detect", "x.png", "--chessboard", "8", "--spacing", "3", "-o", camera},
      {"detect", "x.png", "--chessboard", "8x6", "--spacing", "-3", "-o", camera},
      {"detect", "x.png", "--chessboard", "8x6", "--circles", "4x4", "--spacing", "3", "-o",
       camera},
      {"detect", "x.png", "--chessboard", "8x6", "--asymmetric", "--spacing", "3", "-o", camera},
      {"detect", "x.png", "--chessboard", "8x6", "-o", camera},
      {"map", "--camera", camera, "--from", "world", "--to", "world", "1", "2"},
      {"calibrate", "none.csv", "--image-size", "960x720", "-o", folder.file("none/c.ini")},
  };
  for (const auto& arguments : wrong) {
    const Outcome run = runProgram(arguments);
    EXPECT_EQ(run.exitCode, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(lineCount(run.err), 1) << run.err;
    EXPECT_EQ(run.out, "");
  }
}

}  // namespace
}  // namespace fisheye_calibration::program
