// The built program from the outside: exit codes, messages and files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/imgcodecs.hpp>
#include <sstream>

#include "files/points_csv.h"
#include "program/support/run_program.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// The number behind the first word `name` of a line.
double valueOf(const std::string& table, const std::string& name) {
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string word;
    double value = 0;
    if (words >> word && word == name && words >> value) {
      return value;
    }
  }
  return NAN;
}

std::ptrdiff_t lineCount(const std::string& text) {
  return std::count(text.begin(), text.end(), '\n');
}

std::string goodCsv() { return formatPoints(exactPoints({}, {})); }

// Exact points of a target that reaches beyond half the longer side: the solver diverges.
std::string divergingCsv() {
  SyntheticCamera longer;
  longer.focalLength = 700;
  return formatPoints(exactPoints(longer, {}));
}

class Program : public testing::Test {
 protected:
  Outcome calibrate(const std::string& csv, const std::vector<std::string>& further = {}) const {
    std::vector<std::string> arguments = {
        "calibrate", folder.write("points.csv", csv), "--image-size", "960x720", "-o", camera};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  TemporaryFolder folder;
  std::string camera = folder.path("camera.ini");
};

TEST_F(Program, DetectCalibrateInfoAndMapWorkTogether) {
  const SyntheticCamera truth;
  const std::string picture = folder.path("target.png");
  ASSERT_TRUE(cv::imwrite(picture, drawTarget(truth, {})));

  const std::string points = folder.path("points.csv");
  const Outcome detected = runProgram({"detect", picture, "--chessboard", "9x7", "--spacing", "30",
                                       "-o", points, "--overlay", folder.path("found.png")});
  ASSERT_EQ(detected.exitCode, 0) << detected.err;
  const auto found = parsePoints(points, contents(points));
  ASSERT_EQ(found.size(), 63u);
  EXPECT_EQ(found.front().PointId, 1);
  EXPECT_EQ(found.back().Xw, 240.0f);
  EXPECT_FALSE(cv::imread(folder.path("found.png")).empty());

  const Outcome calibrated =
      runProgram({"calibrate", points, "--image-size", "960x720", "-o", camera});
  ASSERT_EQ(calibrated.exitCode, 0) << calibrated.err;
  EXPECT_NEAR(valueOf(calibrated.out, "fx"), truth.focalLength, 3);
  EXPECT_NEAR(valueOf(calibrated.out, "u0"), truth.principalPoint.x, 3);
  EXPECT_NEAR(valueOf(calibrated.out, "v0"), truth.principalPoint.y, 3);
  EXPECT_FALSE(cv::imread(folder.path("residuals.png")).empty());
  EXPECT_EQ(lineCount(contents(folder.path("residuals.csv"))), 64);

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

TEST_F(Program, CalibrateTakesThePictureItself) {
  const std::string picture = folder.path("target.png");
  ASSERT_TRUE(cv::imwrite(picture, drawTarget({}, {})));
  const Outcome run =
      runProgram({"calibrate", picture, "--chessboard", "9x7", "--spacing", "30", "-o", camera});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NEAR(valueOf(run.out, "fx"), 300, 3);
  EXPECT_TRUE(exists(camera));
}

TEST_F(Program, DetectNumbersFromTheGivenIdAndOrigin) {
  const std::string picture = folder.path("target.png");
  ASSERT_TRUE(cv::imwrite(picture, drawTarget({}, {})));
  const std::string points = folder.path("points.csv");
  const Outcome run = runProgram({"detect", picture, "--chessboard", "9x7", "--spacing", "30",
                                  "--origin", "-5,7.5", "--first-id", "100", "-o", points});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  const auto found = parsePoints(points, contents(points));
  EXPECT_EQ(found[0].PointId, 100);
  EXPECT_EQ(found[0].Xw, -5.0f);
  EXPECT_EQ(found[0].Yw, 7.5f);
  EXPECT_EQ(found[10].PointId, 110);
  EXPECT_EQ(found[10].Xw, 25.0f);
  EXPECT_EQ(found[10].Yw, 37.5f);
}

TEST_F(Program, DetectSaysWhenThereIsNoTargetAndWritesNothing) {
  const std::string picture = folder.path("grey.png");
  ASSERT_TRUE(cv::imwrite(picture, cv::Mat(240, 320, CV_8UC1, cv::Scalar(120))));
  const Outcome run = runProgram({"detect", picture, "--chessboard", "8x6", "--spacing", "30", "-o",
                                  folder.path("points.csv")});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("no target with 8 x 6 inner corners was found"));
  EXPECT_THAT(folder.names(), ElementsAre("grey.png"));
}

TEST_F(Program, ExactPointsGiveTheExactCamera) {
  const Outcome run = calibrate(goodCsv());
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NEAR(valueOf(run.out, "fx"), 300, 0.05);
  EXPECT_NEAR(valueOf(run.out, "fy"), 300, 0.05);
  EXPECT_NEAR(valueOf(run.out, "k1"), -0.05, 1e-3);
  EXPECT_THAT(run.err, Not(HasSubstr("warning")));
}

TEST_F(Program, ADivergedResultLeavesTheOldCameraUntouched) {
  folder.write("camera.ini", "the old one");
  const Outcome run = calibrate(divergingCsv());
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("half the longer side) from the centre"));
  EXPECT_THAT(run.err, HasSubstr("was not written"));
  EXPECT_EQ(contents(camera), "the old one");
}

TEST_F(Program, ForceWritesADivergedResultAndStillSaysSo) {
  const Outcome run = calibrate(divergingCsv(), {"--force"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("not to be trusted"));
  EXPECT_THAT(contents(camera), HasSubstr("[CalibraionParam]"));
}

TEST_F(Program, PointsOnOneLineEndInOnePlainLine) {
  std::ostringstream csv;
  csv << "PointId,Xw,Yw,ImagePtX,ImagePtY\n";
  for (int i = 1; i <= 12; ++i) {
    csv << i << "," << 10 * i << ",0," << 100 + 50 * i << ",360\n";
  }
  const Outcome run = calibrate(csv.str());
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("warning: all points lie on one line"));
  EXPECT_FALSE(exists(camera));
}

// All points within 1e-30 px of the corner: the solver raises an error on this.
TEST_F(Program, PointsThatTheSolverCannotUseEndInPlainLines) {
  const Outcome run = calibrate(
      "PointId,Xw,Yw,ImagePtX,ImagePtY\n"
      "0,0,7.15835438528932,5.431351257552049e-31,3.5922234579812465e-31\n"
      "1,0,0,4.786989949994668e-31,2.471962920982094e-31\n"
      "2,10,0,0,0\n"
      "3,6.81481809263563,7.789830633248863,0,5.670917661238859e-31\n"
      "4,8.15748177345171,1.28476199447485,1.4647115662338162e-31,0\n"
      "5,0,10,0,8.422971651193236e-31\n"
      "6,10,3.1594749951814407,3.0960500712425936e-31,9.769766742667433e-31\n"
      "7,8.957020257414191,4.840721713764507,0,0\n"
      "8,4.918725428961803,0,0,3.706226358356157e-32\n");
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_FALSE(exists(camera));
  EXPECT_FALSE(exists(folder.path("residuals.csv")));
  EXPECT_THAT(run.err, HasSubstr("points.csv: the solver gave up on these points ("));
  EXPECT_THAT(run.err, Not(HasSubstr("OpenCV")));
  EXPECT_EQ(run.err.back(), '\n');
}

TEST_F(Program, EightPointsAreRefusedBeforeTheSolver) {
  std::string csv = goodCsv();
  std::size_t end = 0;
  for (int line = 0; line < 9; ++line) {
    end = csv.find('\n', end) + 1;
  }
  const Outcome run = calibrate(csv.substr(0, end));
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(run.err, "only 8 points, at least 9 are needed\n");
  EXPECT_FALSE(exists(camera));
}

TEST_F(Program, BadNumbersAreToldWithFileLineAndColumn) {
  const Outcome run = calibrate("PointId,Xw,Yw,ImagePtX,ImagePtY\n1,2,3,4,5\n2,3, abc,5,6\n");
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(run.err, folder.path("points.csv") + ":3:6: not a number: \"abc\"\n");
}

TEST_F(Program, OutputsMayBePlacedElsewhere) {
  const Outcome run = calibrate(goodCsv(), {"--residual-plot", folder.path("plot.png"),
                                            "--residual-table", folder.path("table.csv")});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(folder.names(), ElementsAre("camera.ini", "plot.png", "points.csv", "table.csv"));
}

TEST_F(Program, AListOfPointsNeedsTheImageSize) {
  const Outcome run =
      runProgram({"calibrate", folder.write("points.csv", goodCsv()), "-o", camera});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err, StartsWith("--image-size is missing"));
}

TEST_F(Program, AnInputIsNeverOverwritten) {
  const std::string points = folder.write("points.csv", goodCsv());
  const Outcome run = runProgram({"calibrate", points, "--image-size", "960x720", "-o", points});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(contents(points), goodCsv());
}

TEST_F(Program, EveryCommandHasHelpWithAnExample) {
  for (const char* command : {"detect", "calibrate", "correct", "crop", "stitch", "map", "info"}) {
    const Outcome run = runProgram({command, "--help"});
    EXPECT_EQ(run.exitCode, 0);
    std::string example = "\n  fisheye-calibration ";
    example += command;
    EXPECT_THAT(run.out, HasSubstr(example));
    EXPECT_THAT(runProgram({"--help"}).out, HasSubstr(example));
  }
}

TEST_F(Program, BadUsageIsOneLineAndExitsWithTwo) {
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
      {"calibrate", "none.csv", "--image-size", "960x720", "-o", folder.path("none/c.ini")},
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
