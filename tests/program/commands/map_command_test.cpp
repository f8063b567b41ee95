// map from the outside, with a known record.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>

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

TEST_F(MapCommand, ConversionsThatTheLibraryLacksAreRefused) {
  const Outcome run =
      runProgram({"map", "--camera", camera, "--from", "raw", "--to", "world", "1", "2"});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err, HasSubstr("the library provides no conversion from raw to world"));
}

TEST_F(MapCommand, BadInputIsReportedWithItsLine) {
  const Outcome run =
      runProgram({"map", "--camera", camera, "--from", "world", "--to", "raw"}, "Xw,Yw\n1,inf\n");
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(run.err, "standard input:2:3: not a number: \"inf\"\n");
  EXPECT_EQ(run.out, "");
}

TEST_F(MapCommand, AResultThatIsNotANumberIsReported) {
  const std::string text = support::bytesOf(camera);
  const std::size_t pixel = text.find("Pixel=") + 6;
  const std::size_t lineEnd = text.find_first_of("\r\n", pixel);
  writeFile(folder, "camera.ini", text.substr(0, pixel).append("0").append(text.substr(lineEnd)));
  const Outcome run = runProgram({"map", "--camera", camera, "--from", "world", "--to", "second",
                                  "--corrected-size", "960x720", "1", "2"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("not a finite number"));
}

}  // namespace
}  // namespace fisheye_calibration::program
