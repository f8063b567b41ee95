#include "reports/agreement_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

TEST(AgreementReport, TheRootMeanSquareComesFirstThenTheWorstPoint) {
  // sqrt((3^2 + 4^2) / 2) = 3.54 px, of 2 mm each.
  const std::string text =
      describeAgreement({{.pointId = 20, .apart = 3}, {.pointId = 21, .apart = 4}}, 2);
  EXPECT_THAT(text, HasSubstr("\nRMS              7.071     3.54"));
  EXPECT_THAT(text, HasSubstr("\npoint 21         8.000     4.00"));
  EXPECT_LT(text.find("RMS"), text.find("point 21"));
  EXPECT_LT(text.find("point 21"), text.find("point 20"));
}

TEST(AgreementReport, NothingCarriedToTheBedIsReported) {
  EXPECT_THAT(describeAgreement({}, 2), HasSubstr("No shared point can be carried to the bed"));
}

}  // namespace
}  // namespace fisheye_calibration::program
