#include "commands/straighten_command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <string>

#include "base/failure.h"
#include "registration/debug_drive.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

// What opens the window is tested with the library's function.
class StraightenCommand : public DebugDriveTest {
 protected:
  int run(const std::string& rows, const std::string& image) {
    std::ofstream("points.csv") << "PointId,Xw,Yw,ImagePtX,ImagePtY\n" << rows;
    std::ostringstream out;
    std::ostringstream messages;
    try {
      return runStraighten({"points.csv", image}, out, messages);
    } catch (const Failure& failure) {
      failure_ = failure.what();
      return failure.code();
    }
  }

  std::string failure_;
};

TEST_F(StraightenCommand, AnyOtherNumberOfPointsButFourIsBadInput) {
  EXPECT_EQ(run("1,0,0,0,0\n2,1,0,1,0\n3,0,1,0,1\n", "none.png"), kExitBadInput);
  EXPECT_THAT(failure_, HasSubstr("exactly four"));
}

TEST_F(StraightenCommand, DiagonalWithoutLengthIsBadInput) {
  EXPECT_EQ(run("1,0,0,0,0\n2,1,0,1,0\n3,0,1,0,1\n4,1,1,0,0\n", "none.png"), kExitBadInput);
  EXPECT_THAT(failure_, HasSubstr("diagonal"));
}

TEST_F(StraightenCommand, MissingPictureIsBadInputAndPreparesNothing) {
  EXPECT_EQ(run("1,0,0,0,0\n2,1,0,1,0\n3,0,1,0,1\n4,1,1,1,1\n", "none.png"), kExitBadInput);
  EXPECT_THAT(failure_, HasSubstr("none.png"));
#if !defined(_WIN32)
  EXPECT_FALSE(std::filesystem::exists("D:"));
#endif
}

}  // namespace
}  // namespace fisheye_calibration::program
