// map from the outside, with a known record.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "files/points_csv.h"
#include "program/support/run_program.h"
#include "program/support/sample_record.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class MapCommand : public testing::Test {
 protected:
  void SetUp() override { SaveCalibrationParam(camera.c_str(), sampleRecord()); }

  // Replaces a value in the camera's file.
  void setKey(const std::string& key, const std::string& value) const {
    const std::string text = support::bytesOf(camera);
    const std::size_t start = text.find("\n" + key + "=") + key.size() + 2;
    const std::size_t end = text.find_first_of("\r\n", start);
    writeFile(folder, "camera.ini", text.substr(0, start).append(value).append(text.substr(end)));
  }

  Outcome toRaw(const std::vector<std::string>& further = {}) const {
    std::vector<std::string> arguments = {"map",  "--camera", camera, "--from", "world",
                                          "--to", "raw",      "120",  "90"};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  support::TemporaryFolder folder;
  std::string camera = folder.file("camera.ini");
  std::string points = formatPoints(exactPoints({}, {}));  // 63 of them
};

TEST_F(MapCommand, ReadsWhatDetectWritesAndComesBack) {
  const Outcome there = runProgram({"map", "--camera", camera, "--from", "world", "--to", "second",
                                    "--corrected-size", "960x720"},
                                   points);
  ASSERT_EQ(there.exitCode, 0) << there.err;
  EXPECT_THAT(there.out, StartsWith("PointId,x,y\n1,"));
  const Outcome back = runProgram({"map", "--camera", camera, "--from", "second", "--to", "world",
                                   "--corrected-size", "960x720"},
                                  there.out);
  ASSERT_EQ(back.exitCode, 0) << back.err;
  EXPECT_EQ(std::count(back.out.begin(), back.out.end(), '\n'), 64);
  const std::string lastLine = back.out.substr(back.out.rfind('\n', back.out.size() - 2) + 1);
  int id = 0;
  double Xw = 0;
  double Yw = 0;
  char comma = 0;
  std::istringstream(lastLine) >> id >> comma >> Xw >> comma >> Yw;
  EXPECT_EQ(id, 63);
  EXPECT_NEAR(Xw, 240, 1e-3);
  EXPECT_NEAR(Yw, 180, 1e-3);
}

TEST_F(MapCommand, ConversionsThatThereAreNotAreRefused) {
  const Outcome run =
      runProgram({"map", "--camera", camera, "--from", "corrected", "--to", "world", "1", "2"});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err, HasSubstr("there is no conversion from corrected to world"));
}

TEST_F(MapCommand, RawPixelsGoBackToTheBedAndToBothCorrectedViews) {
  const Outcome raw = toRaw();
  ASSERT_EQ(raw.exitCode, 0) << raw.err;
  // Straight under the camera: the principal point.
  EXPECT_EQ(raw.out, "482,355\n");
  const auto map = [&](const std::string& to, const std::string& input) {
    return runProgram(
        {"map", "--camera", camera, "--from", "raw", "--to", to, "--corrected-size", "960x720"},
        input);
  };
  const Outcome world = map("world", "PointId,x,y\n3,482,355\n");
  EXPECT_EQ(world.exitCode, 0) << world.err;
  EXPECT_EQ(world.out, "PointId,Xw,Yw\n3,120,90\n");
  EXPECT_EQ(map("corrected", "x,y\n482,355\n").out, "x,y\n480,360\n");
  EXPECT_EQ(map("second", "x,y\n482,355\n").out, "x,y\n480,360\n");
}

TEST_F(MapCommand, ARawPixelThatNoRayBelongsToIsRefused) {
  const auto map = [&](const std::vector<std::string>& point, const std::string& input) {
    std::vector<std::string> arguments = {"map", "--camera", camera, "--from",
                                          "raw", "--to",     "world"};
    arguments.insert(arguments.end(), point.begin(), point.end());
    return runProgram(arguments, input);
  };
  const Outcome one = map({"950", "355"}, "");
  EXPECT_EQ(one.exitCode, 1);
  EXPECT_EQ(one.out, "");
  EXPECT_THAT(one.err, HasSubstr("farther from the principal point than the lens curve reaches"));
  const Outcome table = map({}, "x,y\n950,355\n482,355\n");
  EXPECT_EQ(table.exitCode, 1);
  EXPECT_EQ(table.out, "Xw,Yw\nnan,nan\n120,90\n");
  EXPECT_THAT(table.err, StartsWith("standard input:2: "));
}

TEST_F(MapCommand, WorldGoesToTheRawFramesOfSeveralCameras) {
  FishEyeCalibrationParam other = sampleRecord();
  other.u0 = 500;
  other.v0 = 300;
  const std::string second = folder.file("second.ini");
  SaveCalibrationParam(second.c_str(), other);
  const Outcome run = toRaw({"--camera", second});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.out, "482,355,500,300\n");
  const Outcome table =
      runProgram({"map", "--camera", camera, "--camera", second, "--from", "world", "--to", "raw"},
                 "PointId,Xw,Yw\n4,120,90\n");
  EXPECT_EQ(table.out, "PointId,x1,y1,x2,y2\n4,482,355,500,300\n");
  EXPECT_EQ(runProgram({"map", "--camera", camera, "--camera", second, "--from", "raw", "--to",
                        "world", "1", "2"})
                .exitCode,
            2);
}

TEST_F(MapCommand, AWrongCorrectedSizeIsRefusedUnlessForced) {
  FishEyeCalibrationParam param = sampleRecord();
  param.p1 = 1.1;  // leaves the centre of 960 x 720 in place
  param.ImageDx = -48;
  SaveCalibrationParam(camera.c_str(), param);
  const auto map = [&](const std::string& size, const std::string& option) {
    std::vector<std::string> arguments = {"map",   "--camera", camera,   "--from",
                                          "world", "--to",     "second", "--corrected-size",
                                          size,    "120",      "90"};
    if (!option.empty()) {
      arguments.push_back(option);
    }
    return runProgram(arguments);
  };
  EXPECT_EQ(map("960x720", "").exitCode, 0);
  const Outcome refused = map("1160x720", "");
  EXPECT_EQ(refused.exitCode, 2);
  EXPECT_THAT(refused.err, HasSubstr("not made for a view of 1160x720"));
  EXPECT_EQ(map("1160x720", "--force").exitCode, 0);
}

TEST_F(MapCommand, BadInputIsReportedWithItsLine) {
  const Outcome run =
      runProgram({"map", "--camera", camera, "--from", "world", "--to", "raw"}, "Xw,Yw\n1,inf\n");
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(run.err, "standard input:2:3: not a number: \"inf\"\n");
  EXPECT_EQ(run.out, "");
}

TEST_F(MapCommand, ImpossibleCameraFilesAreRefusedUnlessForced) {
  struct Case {
    const char* key;
    const char* value;
    const char* message;
  };
  const std::string good = support::bytesOf(camera);
  for (const Case& wrong : {Case{"fx", "wide", "fx is not a number: \"wide\""},
                            {"fy", "300,5", "decimals follow a point, not a comma"},
                            {"Pixel", "0", "Pixel must be greater than 0"},
                            {"fx", "-300", "focal lengths must be greater than 0"},
                            {"fx", "nan", "fx is not a number"}}) {
    writeFile(folder, "camera.ini", good);
    setKey(wrong.key, wrong.value);
    const Outcome refused = toRaw();
    EXPECT_EQ(refused.exitCode, 2) << wrong.value;
    EXPECT_EQ(refused.out, "");
    EXPECT_THAT(refused.err, HasSubstr(wrong.message));
    EXPECT_THAT(refused.err, HasSubstr("--force"));
    EXPECT_THAT(toRaw({"--force"}).err, StartsWith("warning: "));
  }
  writeFile(folder, "camera.ini", good.substr(0, good.size() / 2));
  const Outcome half = toRaw();
  EXPECT_EQ(half.exitCode, 2);
  EXPECT_THAT(half.err, HasSubstr("missing and read as 0"));
  const Outcome forced = toRaw({"--force"});
  EXPECT_NE(forced.exitCode, 2);
  EXPECT_NE(forced.out, "");
}

TEST_F(MapCommand, AResultThatIsNotANumberIsReported) {
  setKey("Pixel", "0");
  const Outcome run = runProgram({"map", "--camera", camera, "--from", "world", "--to", "second",
                                  "--corrected-size", "960x720", "--force", "1", "2"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("not a finite number"));
}

}  // namespace
}  // namespace fisheye_calibration::program
