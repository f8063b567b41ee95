// simulate from the outside.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "files/points_csv.h"
#include "program/support/run_program.h"
#include "program/support/sample_record.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// One camera of 480 x 360 px, 200 above a bed of 200 x 150.
const char* const kMachine = R"({
  "bed": [0, 0, 200, 150],
  "cameras": [{"size": [480, 360], "focal": [400, 400], "centre": [240, 180], "k": [0.01, -0.05],
               "over": [100, 75], "height": 200}],
  "variation": {"focal": 0.01, "centre": 3, "place": 3, "tilt": 1},
  "scenes": {
    "empty": {"effects": {"noise": 1}},
    "board": {"like": "empty", "target": {"chessboard": "8x5", "spacing": 20, "origin": [30, 35]}}
  }
})";

class SimulateCommand : public testing::Test {
 protected:
  static Outcome simulate(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "simulate");
    return runProgram(arguments);
  }

  support::TemporaryFolder folder;
  std::string machine = writeFile(folder, "machine.json", kMachine);
};

TEST_F(SimulateCommand, TheTargetOfAMachineIsDetectedWhereItsTruthSays) {
  const std::string frames = folder.file("frames");
  const Outcome run = simulate({"--machine", machine, "--frames", frames, "--seed", "5"});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("2 frames of 1 camera written to "));
  const std::string found = folder.file("found.csv");
  const Outcome detected = runProgram({"detect", frames + "/camera1-board.png", "--chessboard",
                                       "8x5", "--spacing", "20", "--origin", "30,35", "-o", found});
  ASSERT_EQ(detected.exitCode, 0) << detected.err;
  const auto truth = readPoints(frames + "/camera1-board.csv");
  const auto points = readPoints(found);
  ASSERT_EQ(truth.size(), 40u);
  ASSERT_EQ(points.size(), 40u);
  for (std::size_t i = 0; i < truth.size(); ++i) {
    EXPECT_EQ(points[i].Xw, truth[i].Xw);
    EXPECT_NEAR(points[i].ImagePtX, truth[i].ImagePtX, 0.1);
    EXPECT_NEAR(points[i].ImagePtY, truth[i].ImagePtY, 0.1);
  }
  EXPECT_EQ(
      simulate({"--compare", frames + "/camera1.ini", "--truth-camera", frames + "/camera1.ini"})
          .exitCode,
      0);
}

TEST_F(SimulateCommand, TheSameSeedGivesTheSameMachineAndAnotherOneDoesNot) {
  for (const auto& [name, seed] : {std::pair("a", "5"), {"b", "5"}, {"c", "6"}}) {
    ASSERT_EQ(simulate({"--machine", machine, "--frames", folder.file(name), "--seed", seed,
                        "--scene", "empty"})
                  .exitCode,
              0);
  }
  const auto bytes = [&](const std::string& name) { return support::bytesOf(folder.file(name)); };
  EXPECT_EQ(bytes("a/camera1.ini"), bytes("b/camera1.ini"));
  EXPECT_EQ(bytes("a/camera1-empty.png"), bytes("b/camera1-empty.png"));
  EXPECT_NE(bytes("a/camera1.ini"), bytes("c/camera1.ini"));
  const Outcome differ = simulate({"--compare", folder.file("c/camera1.ini"), "--truth-camera",
                                   folder.file("a/camera1.ini"), "--tolerance", "0.001"});
  EXPECT_EQ(differ.exitCode, 1);
  EXPECT_THAT(differ.err, HasSubstr("more than 0.001 mm off the true camera"));
}

TEST_F(SimulateCommand, ATargetAboveTheBedIsSeenLarger) {
  const std::string camera = folder.file("camera.ini");
  SaveCalibrationParam(camera.c_str(), sampleRecord());  // 170 above the bed
  const std::vector<std::string> common = {
      "--camera",  camera, "--size",   "960x720", "--circles", "5x4",
      "--spacing", "20",   "--origin", "60,60",   "-o",        folder.file("raw.png"),
      "--truth"};
  const auto widthWith = [&](const std::vector<std::string>& further) {
    std::vector<std::string> arguments = common;
    arguments.push_back(folder.file("truth.csv"));
    arguments.insert(arguments.end(), further.begin(), further.end());
    EXPECT_EQ(simulate(arguments).exitCode, 0);
    const auto points = readPoints(folder.file("truth.csv"));
    EXPECT_EQ(points.size(), 20u);
    return points[4].ImagePtX - points[0].ImagePtX;
  };
  // theta_d = theta + 0.01 theta^2 - 0.05 theta^3; the row reaches from -60 to 20 in X at Y = -30.
  const auto expected = [](double height) {
    const auto column = [&](double X) {
      const double r = std::hypot(X, -30);
      const double theta = std::atan(r / height);
      return 300 * (theta + 0.01 * theta * theta - 0.05 * theta * theta * theta) * X / r;
    };
    return column(20) - column(-60);
  };
  EXPECT_NEAR(widthWith({}), expected(170), 0.01);
  EXPECT_NEAR(widthWith({"--height", "20"}), expected(150), 0.01);
}

TEST_F(SimulateCommand, BadInputIsRefusedAndNothingIsWritten) {
  const std::string bad = writeFile(folder, "bad.json", "{\"bed\": [0, 0, 1]}");
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
      {{}, "simulate: give --camera and -o for a frame"},
      {{"--machine", machine}, "--machine: give either --frames or --serve"},
      {{"--machine", bad, "--frames", folder.file("f")}, "bad.json: bed: give a list of 4 numbers"},
      {{"--machine", machine, "--frames", folder.file("f"), "--scene", "none"},
       "--scene: there is no \"none\", there are empty, board"},
      {{"--machine", machine, "--serve", "8738"}, "--serve: give an address and a port"},
      {{"--machine", machine, "--frames", folder.file("f"), "--seed", "x"}, "--seed: give a whole"},
      {{"-o", folder.file("raw.png")}, "--camera is missing"},
  };
  for (const auto& [arguments, message] : wrong) {
    const Outcome run = simulate(arguments);
    EXPECT_EQ(run.exitCode, 2) << testing::PrintToString(arguments);
    EXPECT_THAT(run.err, HasSubstr(message));
  }
  EXPECT_THAT(namesIn(folder), ElementsAre("bad.json", "machine.json"));
}

TEST_F(SimulateCommand, OptionsOfOtherWorkAreRefused) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
      {{"--machine", machine, "--frames", folder.file("f"), "--noise", "3"},
       "--noise: does not go with --machine\n"},
      {{"--machine", machine, "--frames", folder.file("f"), "--chessboard", "8x5"},
       "--chessboard: does not go with --machine\n"},
      {{"--camera", "camera.ini", "-o", folder.file("raw.png"), "--rate", "3"},
       "--rate: does not go with -o\n"},
      {{"--camera", "camera.ini", "-o", folder.file("raw.png"), "--tolerance", "3"},
       "--tolerance: does not go with -o\n"},
      {{"--compare", "a.ini", "--truth-camera", "b.ini", "--seed", "3"},
       "--seed: does not go with --compare\n"}};
  for (const auto& [arguments, message] : wrong) {
    const Outcome run = simulate(arguments);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.err, message);
  }
  for (const char* general : {"--quiet", "--verbose"}) {
    EXPECT_EQ(simulate({"--machine", machine, "--frames", folder.file("f"), general}).exitCode, 0);
  }
}

TEST_F(SimulateCommand, ImpossibleMachinesAreRefused) {
  const std::string cameras =
      R"("cameras": [{"size": [480, 360], "focal": [400, 400], "centre": [240, 180],)"
      R"( "k": [0.01, -0.05], "over": [100, 75], "height": 200}], )";
  const std::string scene = R"("scenes": {"empty": {}})";
  const std::string aside =
      R"("cameras": [{"size": [480, 360], "focal": [400, 400], "centre": [240, 180],)"
      R"( "k": [0.01, -0.05], "over": [5000, 75], "height": 200}], )";
  const std::vector<std::pair<std::string, std::string>> wrong = {
      {cameras + R"("variation": {"place": -1}, )" + scene,
       ": variation.place: give a number from 0\n"},
      {cameras + R"("variation": {"place": 200}, )" + scene,
       ": variation.place: a camera could be below the bed\n"},
      {cameras + R"("scenes": {"high": {"height": 200}})",
       ": scenes.high.height: give less than 200, where a camera may be\n"},
      {cameras + R"("scenes": {"board": {}, "BOARD": {}})",
       ": scenes.BOARD: there is a scene \"board\", whose files would have the same names on "
       "Windows\n"},
      {cameras + R"("scenes": {"a": {"target": {"chessboard": "1x5", "spacing": 20}}})",
       ": scenes.a.target: --chessboard: "},
      {cameras + R"("scenes": {"a": {"marks": {"spacing": 0.01}}})",
       ": scenes.a.marks: marks: the spacing is too small for this bed\n"},
      {aside + scene, ": cameras[0] sees nothing of the bed\n"}};
  for (const auto& [text, message] : wrong) {
    const std::string file =
        writeFile(folder, "wrong.json", "{\"bed\": [0, 0, 200, 150], " + text + "}");
    const Outcome run = simulate({"--machine", file, "--frames", folder.file("f")});
    EXPECT_EQ(run.exitCode, 2) << text;
    EXPECT_THAT(run.err, HasSubstr("wrong.json" + message));
    EXPECT_FALSE(std::filesystem::exists(folder.file("f")));
  }
}

TEST_F(SimulateCommand, BedsThatAreTooSmallAndDeepDescriptionsAreRefused) {
  const std::string rest =
      R"("cameras": [{"size": [480, 360], "focal": [400, 400], "centre": [240, 180],)"
      R"( "k": [0.01, -0.05], "over": [6, 5.5], "height": 200}], "scenes": {"empty": {}}})";
  const std::string levels(100000, '[');
  for (const auto& [text, message] :
       {std::pair(std::string(R"({"bed": [0, 0, 0.001, 0.001], )") + rest,
                  std::string("wrong.json: bed: give sides of at least 1 mm\n")),
        {std::string(R"({"bed": )") + levels, "wrong.json: this is nested too deeply\n"}}) {
    const Outcome run = simulate(
        {"--machine", writeFile(folder, "wrong.json", text), "--frames", folder.file("f")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.err, HasSubstr(message));
  }
}

// Some 8 pixels of the picture, away from its middle.
TEST_F(SimulateCommand, ASmallBedIsSeen) {
  const std::string file =
      writeFile(folder, "small.json",
                R"({"bed": [0, 0, 4, 3], "cameras": [{"size": [480, 360], "focal": [400, 400],)"
                R"( "centre": [240, 180], "k": [0.01, -0.05], "over": [6, 5.5], "height": 200}],)"
                R"( "scenes": {"empty": {}}})");
  const Outcome run = simulate({"--machine", file, "--frames", folder.file("f")});
  EXPECT_EQ(run.exitCode, 0) << run.err;
}

TEST_F(SimulateCommand, FramesThatCannotBeAreRefused) {
  const std::string camera = folder.file("camera.ini");
  SaveCalibrationParam(camera.c_str(), sampleRecord());  // 170 above the bed
  const auto messageOf = [&](const std::vector<std::string>& further) {
    std::vector<std::string> arguments = {
        "--camera", camera, "--chessboard", "9x7", "--spacing", "30", "-o", folder.file("raw.png")};
    arguments.insert(arguments.end(), further.begin(), further.end());
    const Outcome run = simulate(arguments);
    EXPECT_EQ(run.exitCode, 2);
    return run.err;
  };
  EXPECT_EQ(messageOf({"--size", "960x720", "--height", "170"}),
            "--height: give less than 170, where the camera is\n");
  EXPECT_EQ(messageOf({"--size", "32767x32767"}),
            "--size: 32767x32767 is more than 128 million pixels\n");
  EXPECT_FALSE(std::filesystem::exists(folder.file("raw.png")));
}

TEST_F(SimulateCommand, InputsAreNotOverwritten) {
  ASSERT_EQ(simulate({"--machine", machine, "--frames", folder.file("f")}).exitCode, 0);
  const std::string camera = (std::filesystem::path(folder.file("f")) / "camera1.ini").string();
  const std::string before = support::bytesOf(camera);
  const Outcome run = simulate({"--camera", camera, "--chessboard", "9x7", "--spacing", "30", "-o",
                                folder.file("raw.png"), "--truth", camera});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(run.err, "--truth: " + camera + " is the input itself\n");
  EXPECT_EQ(support::bytesOf(camera), before);
  EXPECT_FALSE(std::filesystem::exists(folder.file("raw.png")));
}

}  // namespace
}  // namespace fisheye_calibration::program
