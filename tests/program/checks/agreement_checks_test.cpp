#include "checks/agreement_checks.h"

#include <gtest/gtest.h>

#include <vector>

namespace fisheye_calibration::program {
namespace {

// Twenty points at which the cameras agree to a pixel.
std::vector<Agreement> goodPoints() { return std::vector<Agreement>(20, Agreement{.apart = 1}); }

TEST(AgreementChecks, GoodPointsRaiseNothing) {
  EXPECT_TRUE(checkAgreement(goodPoints(), 20).empty());
}

TEST(AgreementChecks, OnePointAFewPixelsOffIsDoubtfulAndOneFarOffIsNotToBeTrusted) {
  std::vector<Agreement> points = goodPoints();
  points[3].apart = 8;
  EXPECT_EQ(checkAgreement(points, 20).at(0).severity, Severity::kDoubtful);
  points[3].apart = 201;
  EXPECT_EQ(checkAgreement(points, 20).at(0).severity, Severity::kUntrusted);
}

TEST(AgreementChecks, AllPointsAFewPixelsOffAreNotToBeTrusted) {
  EXPECT_EQ(checkAgreement(std::vector<Agreement>(20, Agreement{.apart = 8}), 20).at(0).severity,
            Severity::kUntrusted);
}

TEST(AgreementChecks, PointsOfAnotherCameraAreNotToBeTrusted) {
  std::vector<Agreement> points = goodPoints();
  for (Agreement& point : points) {
    point.rightRaw = 40;
  }
  const Findings findings = checkAgreement(points, 20);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].severity, Severity::kUntrusted);
}

TEST(AgreementChecks, LostPointsAreDoubtfulUntilTheyAreMost) {
  EXPECT_EQ(checkAgreement(goodPoints(), 40).at(0).severity, Severity::kDoubtful);
  EXPECT_EQ(checkAgreement(goodPoints(), 41).at(0).severity, Severity::kUntrusted);
  EXPECT_EQ(checkAgreement({}, 4).at(0).severity, Severity::kUntrusted);
}

}  // namespace
}  // namespace fisheye_calibration::program
