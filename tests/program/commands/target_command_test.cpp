// target from the outside.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <regex>
#include <string>
#include <tuple>
#include <vector>

#include "detection/markers.h"
#include "files/points_csv.h"
#include "program/support/run_program.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class TargetCommand : public testing::Test {
 protected:
  support::TemporaryFolder folder;

  std::vector<std::string> outputs() const {
    return {"-o",       folder.file("target.svg"), "--picture",       folder.file("target.png"),
            "--points", folder.file("target.csv"), "--pixels-per-mm", "3"};
  }

  // Draws the target and finds it in its own picture: the points of both lists must agree.
  void expectDetectable(const std::vector<std::string>& kind) {
    std::vector<std::string> draw = {"target"};
    draw.insert(draw.end(), kind.begin(), kind.end());
    for (const std::string& argument : outputs()) {
      draw.push_back(argument);
    }
    const Outcome drawn = runProgram(draw);
    ASSERT_EQ(drawn.exitCode, 0) << drawn.err;
    std::vector<std::string> detect = {"detect", folder.file("target.png"), "-o",
                                       folder.file("found.csv")};
    detect.insert(detect.end(), kind.begin(), kind.end());
    const Outcome detected = runProgram(detect);
    ASSERT_EQ(detected.exitCode, 0) << detected.err;
    const auto listed = readPoints(folder.file("target.csv"));
    const auto found = readPoints(folder.file("found.csv"));
    ASSERT_EQ(found.size(), listed.size());
    for (std::size_t i = 0; i < listed.size(); ++i) {
      EXPECT_EQ(found[i].PointId, listed[i].PointId);
      EXPECT_EQ(found[i].Xw, listed[i].Xw);
      EXPECT_EQ(found[i].Yw, listed[i].Yw);
      EXPECT_NEAR(found[i].ImagePtX, listed[i].ImagePtX, 0.1);
      EXPECT_NEAR(found[i].ImagePtY, listed[i].ImagePtY, 0.1);
    }
  }
};

// The numbers of every `element` with these attributes, in order.
std::vector<std::vector<double>> numbersOf(const std::string& svg, const std::string& element,
                                           const std::vector<std::string>& attributes) {
  std::string pattern = "<" + element;
  for (const std::string& attribute : attributes) {
    pattern += " " + attribute + "=\"([0-9.-]+)\"";
  }
  const std::regex regex(pattern);
  std::vector<std::vector<double>> result;
  for (std::sregex_iterator match(svg.begin(), svg.end(), regex), end; match != end; ++match) {
    result.emplace_back();
    for (std::size_t i = 1; i < match->size(); ++i) {
      result.back().push_back(std::stod((*match)[i]));
    }
  }
  return result;
}

TEST_F(TargetCommand, TheDrawingHasItsSizeInMillimetres) {
  const std::string svgName = folder.file("board.svg");
  const Outcome run =
      runProgram({"target", "--chessboard", "8x6", "--spacing", "39", "-o", svgName});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  const std::string svg = support::bytesOf(svgName);
  // 9 x 7 squares, half a square of margin on every side and 24 mm for the text.
  EXPECT_THAT(svg, HasSubstr("width=\"390mm\" height=\"336mm\" viewBox=\"0 0 390 336\""));
  int squares = 0;
  for (const auto& area : numbersOf(svg, "rect", {"x", "y", "width", "height"})) {
    if (area[2] != 39) {
      continue;  // of the ruler
    }
    ++squares;
    EXPECT_EQ(area[3], 39);
    EXPECT_EQ(std::fmod(area[0] - 19.5, 39), 0);
    EXPECT_EQ(std::fmod(area[1] - 19.5, 39), 0);
  }
  EXPECT_EQ(squares, 32);  // the dark ones of 63
}

TEST_F(TargetCommand, TheRulerIsAHundredMillimetresLong) {
  const std::string svgName = folder.file("board.svg");
  ASSERT_EQ(runProgram({"target", "--circles", "4x3", "--spacing", "30", "-o", svgName}).exitCode,
            0);
  const std::string svg = support::bytesOf(svgName);
  // Marks every 5 mm; the longest are those at 0, 50 and 100 mm.
  std::vector<double> longest;
  for (const auto& area : numbersOf(svg, "rect", {"x", "y", "width", "height"})) {
    if (area[3] > 4) {
      longest.push_back(area[0]);
    }
  }
  ASSERT_EQ(longest.size(), 3u);
  EXPECT_NEAR(longest[1] - longest[0], 50, 1e-9);
  EXPECT_NEAR(longest[2] - longest[0], 100, 1e-9);
  const auto discs = numbersOf(svg, "circle", {"cx", "cy", "r"});
  ASSERT_EQ(discs.size(), 12u);
  EXPECT_NEAR(discs[3][0] - discs[0][0], 90, 1e-9);
  EXPECT_NEAR(discs[11][1] - discs[0][1], 60, 1e-9);
}

TEST_F(TargetCommand, ChessboardsAreFoundInTheirOwnPicture) {
  expectDetectable(
      {"--chessboard", "8x6", "--spacing", "20", "--origin", "5,7", "--first-id", "9"});
}

TEST_F(TargetCommand, CirclesAreFoundInTheirOwnPicture) {
  expectDetectable({"--circles", "4x7", "--asymmetric", "--spacing", "15"});
}

TEST_F(TargetCommand, BoardsWithMarkersAreFoundInTheirOwnPicture) {
  if (!markersAvailable()) {
    GTEST_SKIP() << "the image library has no markers";
  }
  expectDetectable({"--charuco", "7x5", "--spacing", "20", "--first-id", "100"});
  expectDetectable({"--charuco", "6x4", "--spacing", "30", "--marker-bits", "4", "--marker", "18"});
}

TEST_F(TargetCommand, ABedGivesTheSpacingAndThePlace) {
  // 0.85 of 600 mm / 9 squares = 56.7 mm; of 300 mm / 7 squares = 36.4 mm.
  const Outcome run = runProgram(
      {"target", "--chessboard", "8x6", "--bed", "600x300", "-o", folder.file("board.svg")});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("spacing 36 mm"));
  // (600 - 7 x 36) / 2 and (300 - 5 x 36) / 2
  EXPECT_THAT(run.out, HasSubstr("--origin 174,60"));
  // The drawing and the list are of that place, too.
  const std::string svg = folder.file("board.svg");
  const std::string list = folder.file("board.csv");
  ASSERT_EQ(
      runProgram({"target", "--chessboard", "8x6", "--bed", "600x300", "-o", svg, "--points", list})
          .exitCode,
      0);
  EXPECT_THAT(support::bytesOf(svg), HasSubstr("point 1 (top left) at (174, 60)"));
  EXPECT_EQ(readPoints(list).front().Xw, 174);
  EXPECT_EQ(readPoints(list).back().Yw, 60 + 5 * 36);
}

TEST_F(TargetCommand, AGivenPlaceIsKeptAndCheckedAgainstTheBed) {
  const auto target = [&](const std::string& origin) {
    return runProgram({"target", "--chessboard", "8x6", "--spacing", "30", "--bed", "400x300",
                       "--origin", origin, "-o", folder.file("board.svg")});
  };
  EXPECT_THAT(target("40,35").out, HasSubstr("detect with --origin 40,35"));
  EXPECT_THAT(target("40,35").err, Not(HasSubstr("reaches beyond")));
  // The first square begins 30 mm before the first point.
  EXPECT_THAT(target("29,35").err, HasSubstr("the target reaches beyond"));
  EXPECT_THAT(target("170,35").err, HasSubstr("the target reaches beyond"));
}

TEST_F(TargetCommand, SmallTargetsAreWarnedOfWithARemedyThatHelps) {
  const auto target = [&](const std::string& size, const std::string& bed,
                          const std::string& spacing) {
    return runProgram({"target", "--chessboard", size, "--spacing", spacing, "--bed", bed, "-o",
                       folder.file("board.svg")})
        .err;
  };
  EXPECT_THAT(target("8x6", "400x300", "10"), HasSubstr("a spacing of 36 mm suits this bed"));
  // 3 x 3 points span half of the bed at most, whatever the spacing: 2 of 4 squares.
  EXPECT_THAT(target("3x3", "400x400", "85"), HasSubstr("take more rows or columns"));
}

TEST_F(TargetCommand, LongIdsFitOnTheSheet) {
  const std::string svg = folder.file("board.svg");
  ASSERT_EQ(runProgram({"target", "--chessboard", "8x6", "--spacing", "20", "--first-id", "1000000",
                        "-o", svg})
                .exitCode,
            0);
  // The left ids end 3 mm before the board and are seven digits of about 2.4 mm wide.
  const auto squares = numbersOf(support::bytesOf(svg), "rect", {"x", "width"});
  double first = 1e9;
  for (const auto& square : squares) {
    first = square[1] == 20 ? std::min(first, square[0]) : first;
  }
  EXPECT_GT(first, 3 + 7 * 2.3);
}

TEST_F(TargetCommand, ATargetLargerThanTheBedIsReported) {
  const Outcome run = runProgram({"target", "--chessboard", "8x6", "--spacing", "50", "--bed",
                                  "400x400", "-o", folder.file("board.svg")});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.err, HasSubstr("450 x 350 mm and does not fit"));
}

TEST_F(TargetCommand, BadUsageWritesNothing) {
  const std::string svg = folder.file("board.svg");
  EXPECT_EQ(runProgram({"target", "--chessboard", "8x6", "-o", svg}).exitCode, 2);
  EXPECT_EQ(runProgram({"target", "--spacing", "10", "-o", svg}).exitCode, 2);
  EXPECT_EQ(runProgram(
                {"target", "--chessboard", "8x6", "--charuco", "8x6", "--spacing", "10", "-o", svg})
                .exitCode,
            2);
  EXPECT_EQ(runProgram({"target", "--chessboard", "8x6", "--spacing", "10", "-o",
                        folder.file("board.png")})
                .exitCode,
            2);
  const std::string other = folder.file(".") + "/board.svg";
  EXPECT_EQ(
      runProgram({"target", "--chessboard", "8x6", "--spacing", "10", "-o", svg, "--points", other})
          .exitCode,
      2);
  for (const char* const density : {"1e-9", "1e38", "2000"}) {
    EXPECT_EQ(runProgram({"target", "--chessboard", "8x6", "--spacing", "10", "-o", svg, "--points",
                          folder.file("p.csv"), "--pixels-per-mm", density})
                  .exitCode,
              2);
  }
  EXPECT_EQ(runProgram({"target", "--chessboard", "200x3", "--spacing", "90", "-o", svg,
                        "--picture", folder.file("p.png"), "--pixels-per-mm", "3"})
                .exitCode,
            2);
  const Outcome marker =
      runProgram({"target", "--charuco", "8x6", "--bed", "600x400", "--marker", "20", "-o", svg});
  EXPECT_EQ(marker.exitCode, 2);
  EXPECT_EQ(runProgram({"target", "--chessboard", "8x6", "--spacing", "10", "--marker-bits", "6",
                        "-o", svg})
                .exitCode,
            2);
  EXPECT_THAT(namesIn(folder), ElementsAre());
}

}  // namespace
}  // namespace fisheye_calibration::program
