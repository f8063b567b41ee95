// verify from the outside.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>
#include <vector>

#include "files/points_csv.h"
#include "program/support/run_program.h"
#include "program/support/synthetic_views.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

class VerifyCommand : public testing::Test {
 protected:
  void SetUp() override {
    const Outcome run = runProgram({"calibrate", write("points.csv", noisyPoints({}, 0.1, 1)),
                                    "--image-size", "960x720", "-o", camera});
    ASSERT_EQ(run.exitCode, 0) << run.err;
  }

  std::string write(const std::string& name, const std::vector<CalibrationPoint>& points) const {
    return writeFile(folder, name, formatPoints(points));
  }

  Outcome verify(const std::vector<CalibrationPoint>& points,
                 const std::vector<std::string>& further = {}) const {
    std::vector<std::string> arguments = {"verify", write("now.csv", points), "--camera",
                                          camera,   "--image-size",           "960x720"};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  support::TemporaryFolder folder;
  std::string camera = folder.file("camera.ini");
};

TEST_F(VerifyCommand, NothingHasMoved) {
  const Outcome run = verify(noisyPoints({}, 0.1, 2), {"--tolerance", "0.5"});
  EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
  EXPECT_THAT(run.out, HasSubstr("; still within 0.5 mm\n"));
}

// The bed was shifted by (1.2, -0.9) mm, 1.5 mm in all: its point X now lies at X + (1.2, -0.9).
TEST_F(VerifyCommand, AShiftOfTheBedIsMeasured) {
  SyntheticCamera shifted;
  for (std::size_t i = 0; i < 3; ++i) {
    shifted.T[i] += shifted.R[3 * i] * 1.2 - shifted.R[3 * i + 1] * 0.9;
  }
  const Outcome run = verify(exactPoints(shifted, {}), {"--tolerance", "0.5"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.out, HasSubstr("moved by 1.5 mm, turned by "));
  EXPECT_THAT(run.out, HasSubstr("; re-calibrate\n"));
}

// The bed was turned by 1 degree about the world's origin, from +X to +Y.
TEST_F(VerifyCommand, ATurnOfTheBedIsMeasured) {
  SyntheticCamera turned;
  const double c = std::cos(std::numbers::pi / 180);
  const double s = std::sin(std::numbers::pi / 180);
  const auto R = turned.R;
  for (std::size_t i = 0; i < 3; ++i) {
    turned.R[3 * i] = c * R[3 * i] + s * R[3 * i + 1];
    turned.R[3 * i + 1] = -s * R[3 * i] + c * R[3 * i + 1];
  }
  const Outcome run = verify(exactPoints(turned, {}), {"--tolerance", "0.5"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.out, HasSubstr("turned by 1\u00b0"));
}

TEST_F(VerifyCommand, TheFileSaysItselfHowAccurateItIs) {
  const Outcome run = verify(noisyPoints({}, 0.1, 2));
  EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
  EXPECT_THAT(run.out, HasSubstr("still within"));
  std::string text = support::bytesOf(camera);
  writeFile(folder, "camera.ini", text.substr(0, text.find("[FisheyeCalibrationProgram]")));
  const Outcome unknown = verify(noisyPoints({}, 0.1, 2));
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_THAT(unknown.err, HasSubstr("--tolerance is missing"));
}

TEST_F(VerifyCommand, AWrongPointDoesNotCount) {
  std::vector<CalibrationPoint> points = noisyPoints({}, 0.1, 2);
  points[5].ImagePtY -= 12;
  const Outcome run = verify(points, {"--tolerance", "0.5"});
  EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
  EXPECT_THAT(run.err, HasSubstr("point 6 contradicts the other points (left out)"));
}

}  // namespace
}  // namespace fisheye_calibration::program
