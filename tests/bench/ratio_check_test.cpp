#include "bench/ratio_check.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

using bench::Better;
using bench::Ratios;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kTolerance = 0.15;
constexpr const char* kSubject = "1280 x 960, 8 bits, plain/ours";

Ratios oneRatio(Better better, double value) {
  return {{"views", {{kSubject, {better, {{"AVX2", value}}}}}}};
}

std::vector<std::string> lossesOf(Better better, double stored, double measured) {
  return checkRatios(oneRatio(better, stored), oneRatio(better, measured), kTolerance).losses;
}

}  // namespace

TEST(RatioCheck, PassesALossOf14Percent) {
  EXPECT_THAT(lossesOf(Better::kHigher, 10, 8.6), IsEmpty());
  EXPECT_THAT(lossesOf(Better::kLower, 10, 11.4), IsEmpty());
}

TEST(RatioCheck, FailsOnALossOf16PercentAndNamesIt) {
  EXPECT_THAT(lossesOf(Better::kHigher, 10, 8.4),
              ElementsAre("views: 1280 x 960, 8 bits, plain/ours, AVX2: 8.4 instead of 10, "
                          "a loss of 16.0 %"));
  EXPECT_THAT(lossesOf(Better::kLower, 10, 11.6),
              ElementsAre("views: 1280 x 960, 8 bits, plain/ours, AVX2: 11.6 instead of 10, "
                          "a loss of 16.0 %"));
}

TEST(RatioCheck, PassesAGain) {
  EXPECT_THAT(lossesOf(Better::kHigher, 10, 20), IsEmpty());
  EXPECT_THAT(lossesOf(Better::kLower, 10, 5), IsEmpty());
}

TEST(RatioCheck, FailsOnWhatIsNotANumber) {
  EXPECT_EQ(lossesOf(Better::kHigher, 10, std::numeric_limits<double>::quiet_NaN()).size(), 1U);
}

TEST(RatioCheck, CountsWhatItComparesAndNamesEveryLoss) {
  const Ratios stored = {{"views",
                          {{"a", {Better::kHigher, {{"AVX2", 10}, {"SSE4", 5}}}},
                           {"b", {Better::kLower, {{"AVX2", 1}}}}}}};
  const Ratios measured = {{"views",
                            {{"a", {Better::kHigher, {{"AVX2", 5}, {"SSE4", 5}}}},
                             {"b", {Better::kLower, {{"AVX2", 2}}}}}}};
  const auto check = checkRatios(stored, measured, kTolerance);
  EXPECT_EQ(check.compared, 3U);
  EXPECT_THAT(check.losses, ElementsAre("views: a, AVX2: 5 instead of 10, a loss of 50.0 %",
                                        "views: b, AVX2: 2 instead of 1, a loss of 100.0 %"));
  EXPECT_THAT(check.skipped, IsEmpty());
}

TEST(RatioCheck, NamesInstructionSetsAndBenchmarksThatOneSideLacks) {
  const Ratios stored = {{"views",
                          {{"a", {Better::kHigher, {{"AVX2", 10}, {"AVX3", 12}}}},
                           {"b", {Better::kHigher, {{"AVX2", 10}, {"AVX3", 12}}}}}},
                         {"canvas", {{"c", {Better::kHigher, {{"AVX2", 3}}}}}}};
  const Ratios measured = {{"views",
                            {{"a", {Better::kHigher, {{"AVX2", 10}, {"SSE4", 4}}}},
                             {"b", {Better::kHigher, {{"AVX2", 10}, {"SSE4", 4}}}}}}};
  const auto check = checkRatios(stored, measured, kTolerance);
  EXPECT_EQ(check.compared, 2U);
  EXPECT_THAT(check.losses, IsEmpty());
  EXPECT_THAT(check.skipped, ElementsAre("only in the table: benchmark canvas (ratios: 1)",
                                         "only in the table: instruction set AVX3 (ratios: 2)",
                                         "only measured: instruction set SSE4 (ratios: 2)"));
}

TEST(RatioCheck, NamesSingleRatiosThatOneSideLacks) {
  const Ratios stored = {
      {"views",
       {{"a", {Better::kHigher, {{"AVX2", 10}}}}, {"old", {Better::kHigher, {{"AVX2", 10}}}}}}};
  const Ratios measured = {
      {"views",
       {{"a", {Better::kHigher, {{"AVX2", 10}}}}, {"new", {Better::kHigher, {{"AVX2", 10}}}}}}};
  EXPECT_THAT(
      checkRatios(stored, measured, kTolerance).skipped,
      ElementsAre("only in the table: views: old, AVX2", "only measured: views: new, AVX2"));
}

TEST(RatioCheck, ComparesNothingWithAnEmptyTable) {
  EXPECT_EQ(checkRatios({}, oneRatio(Better::kHigher, 10), kTolerance).compared, 0U);
}
