#include "agreement/results.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace {

using agreement::differences;
using agreement::Results;
using testing::ElementsAre;
using testing::IsEmpty;

std::string exact(const std::string& bytes) {
  Results results;
  results.addExact("bytes", bytes.data(), bytes.size());
  return results.text();
}

std::string nearTo(const std::vector<double>& numbers, double tolerance = 1e-9) {
  Results results;
  results.addNear("numbers", tolerance, numbers);
  return results.text();
}

TEST(Agreement, DigestIsThePublishedOneOfItsTestVector) {
  EXPECT_EQ(exact("foobar"), "bytes exact 6 85944171f73967e8\n");
}

TEST(Agreement, OneBitOfTheBytesIsADifference) {
  EXPECT_THAT(differences(exact("abc"), exact("abc")), IsEmpty());
  EXPECT_THAT(differences(exact("abc"), exact("abb")), ElementsAre("bytes is not the same"));
}

TEST(Agreement, NumbersMayDifferByTheirToleranceOnly) {
  EXPECT_THAT(differences(nearTo({1, 0}), nearTo({1, 0.9e-9})), IsEmpty());
  EXPECT_THAT(differences(nearTo({0, 1}), nearTo({1.1e-9, 1})).size(), 1U);
}

TEST(Agreement, AboveOneTheToleranceIsRelative) {
  EXPECT_THAT(differences(nearTo({1e6}), nearTo({1e6 + 0.9e-3})), IsEmpty());
  EXPECT_THAT(differences(nearTo({1e6}), nearTo({1e6 + 1.1e-3})).size(), 1U);
}

TEST(Agreement, NanAgreesWithNothing) {
  EXPECT_THAT(differences(nearTo({NAN}), nearTo({NAN})).size(), 1U);
  EXPECT_THAT(differences(nearTo({NAN, 1}), nearTo({1, 1})).size(), 1U);
}

TEST(Agreement, OtherCountsAndTolerancesAreDifferences) {
  EXPECT_THAT(differences(nearTo({1}), nearTo({1, 1})), ElementsAre("numbers is not the same"));
  EXPECT_THAT(differences(nearTo({1}), nearTo({1}, 1e-6)), ElementsAre("numbers is not the same"));
}

TEST(Agreement, ResultsOfOneTextOnlyAreDifferences) {
  EXPECT_THAT(differences(exact("a") + nearTo({1}), exact("a")),
              ElementsAre("numbers is missing in the second text"));
  EXPECT_THAT(differences(exact("a"), exact("a") + nearTo({1})),
              ElementsAre("numbers is missing in the first text"));
}

TEST(Agreement, TextsWithoutResultsDoNotAgree) {
  EXPECT_THAT(differences("", ""), ElementsAre("the first text holds no result"));
}

TEST(Agreement, LineEndsOfEitherSystemAreTheSame) {
  std::string windows = nearTo({1, 2});
  windows.back() = '\r';
  windows += '\n';
  EXPECT_THAT(differences(nearTo({1, 2}), windows), IsEmpty());
}

TEST(Agreement, NumbersKeepAllTheirDigits) {
  const double third = 1.0 / 3;
  EXPECT_THAT(differences(nearTo({third}, 0), nearTo({third}, 0)), IsEmpty());
  EXPECT_THAT(differences(nearTo({third}, 0), nearTo({std::nextafter(third, 1)}, 0)).size(), 1U);
}

}  // namespace
