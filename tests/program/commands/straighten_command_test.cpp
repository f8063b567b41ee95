// straighten from the outside, up to the window, which the tests of the library's function open.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "program/support/run_program.h"
#include "registration/debug_drive.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

class StraightenCommand : public DebugDriveTest {
 protected:
  // With a picture that does not exist.
  static Outcome run(const std::string& rows) {
    support::writeBytes("points.csv", "PointId,Xw,Yw,ImagePtX,ImagePtY\n" + rows);
    return runProgram({"straighten", "points.csv", "none.png"});
  }
};

TEST_F(StraightenCommand, AnyOtherNumberOfPointsThanFourIsBadInput) {
  const Outcome outcome = run("1,0,0,0,0\n2,1,0,1,0\n3,0,1,0,1\n");
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_THAT(outcome.err, HasSubstr("exactly four"));
}

TEST_F(StraightenCommand, ADiagonalWithoutLengthIsBadInput) {
  const Outcome outcome = run("1,0,0,0,0\n2,1,0,1,0\n3,0,1,0,1\n4,1,1,0,0\n");
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_THAT(outcome.err, HasSubstr("diagonal"));
}

TEST_F(StraightenCommand, AnOutputThatCannotBeWrittenIsBadInput) {
  support::writeBytes("points.csv", "PointId,Xw,Yw,ImagePtX,ImagePtY\n");
  for (const char* output : {"none/a.png", "a.doc", "points.csv"}) {
    const Outcome outcome = runProgram({"straighten", "points.csv", "none.png", "-o", output});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("-o: "));
  }
}

TEST_F(StraightenCommand, AMissingPictureIsBadInputAndPreparesNothing) {
  const Outcome outcome = run("1,0,0,0,0\n2,1,0,1,0\n3,0,1,0,1\n4,1,1,1,1\n");
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_THAT(outcome.err, HasSubstr("none.png"));
#if !defined(_WIN32)
  EXPECT_FALSE(std::filesystem::exists("D:"));
#endif
}

}  // namespace
}  // namespace fisheye_calibration::program
