// info from the outside.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "program/support/run_program.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class InfoCommand : public testing::Test {
 protected:
  support::TemporaryFolder folder;
};

TEST_F(InfoCommand, AMissingFileAndAForeignOneAreToldApart) {
  const std::string none = folder.file("none.ini");
  const Outcome missing = runProgram({"info", none});
  EXPECT_EQ(missing.exitCode, 2);
  EXPECT_THAT(missing.err, StartsWith(none + ": "));
  const Outcome foreign =
      runProgram({"info", writeFile(folder, "other.ini", "[CalibrationParam]\nu0=1\n")});
  EXPECT_EQ(foreign.exitCode, 2);
  EXPECT_THAT(foreign.err, HasSubstr("no section [CalibraionParam]"));
}

TEST_F(InfoCommand, WhatTheProgramNotedIsShown) {
  const Outcome run = runProgram(
      {"info", writeFile(folder, "c.ini",
                         "[CalibraionParam]\nfx=300\n[FisheyeCalibrationProgram]\n"
                         "CorrectedWidth=600\nCorrectedHeight=480\nBedErrorInsideTarget=0.412\n"
                         "BedErrorOnBed=1.13\n")});
  EXPECT_THAT(run.out,
              HasSubstr("Made for a corrected picture of 600x480\n"
                        "Bed error (95 %): 0.41 mm inside the target, 1.1 mm on the bed\n"));
}

TEST_F(InfoCommand, EverythingImpossibleIsReported) {
  const Outcome run =
      runProgram({"info", writeFile(folder, "c.ini", "[CalibraionParam]\nfx=-5\nu0=zero\n")});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("c.ini:3:4: u0 is not a number: \"zero\""));
  EXPECT_THAT(run.err, HasSubstr("missing and read as 0: v0, fy"));
  EXPECT_THAT(run.err, HasSubstr("impossible: focal lengths must be greater than 0"));
  EXPECT_THAT(run.err, HasSubstr("impossible: R is all zeros"));
}

}  // namespace
}  // namespace fisheye_calibration::program
