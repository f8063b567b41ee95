#include "bench/ratios.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "support/temporary_folder.h"

namespace {

using bench::Better;
using bench::RatioFile;
using testing::HasSubstr;
using testing::ThrowsMessage;

RatioFile example() {
  return {{"some processor", "GNU 12.2.0", "2026-01-31", "0.1.0", "4.6.0"},
          {{"views",
            {{"a", {Better::kHigher, {{"AVX2", 10.125}, {"SSE4", 5}}}},
             {"b", {Better::kLower, {{"AVX2", 0.5}}}}}}}};
}

void expectUnreadable(const std::string& path, const std::string& reason) {
  EXPECT_THAT([&] { bench::readRatios(path); },
              ThrowsMessage<std::runtime_error>(HasSubstr(path + reason)));
}

}  // namespace

TEST(RatioFile, ReadsWhatItWrote) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("ratios.json");
  bench::writeRatios(path, example());
  const RatioFile file = bench::readRatios(path);
  EXPECT_EQ(file.machine.cpu, "some processor");
  EXPECT_EQ(file.machine.compiler, "GNU 12.2.0");
  EXPECT_EQ(file.machine.date, "2026-01-31");
  EXPECT_EQ(file.machine.library, "0.1.0");
  EXPECT_EQ(file.machine.imageLibrary, "4.6.0");
  ASSERT_EQ(file.ratios.size(), 1U);
  const auto& views = file.ratios.at("views");
  ASSERT_EQ(views.size(), 2U);
  EXPECT_EQ(views.at("a").better, Better::kHigher);
  EXPECT_EQ(views.at("a").byInstructionSet,
            (std::map<std::string, double>{{"AVX2", 10.125}, {"SSE4", 5}}));
  EXPECT_EQ(views.at("b").better, Better::kLower);
  EXPECT_EQ(views.at("b").byInstructionSet, (std::map<std::string, double>{{"AVX2", 0.5}}));
}

TEST(RatioFile, WithoutRatiosIsReadToo) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("ratios.json");
  bench::writeRatios(path, {example().machine, {}});
  EXPECT_TRUE(bench::readRatios(path).ratios.empty());
}

TEST(RatioFile, IsNamedWithTheReasonIfItCannotBeRead) {
  const support::TemporaryFolder folder;
  expectUnreadable(folder.file("missing.json"), " cannot be read");
  const std::string path = folder.file("other.json");
  support::writeBytes(path, "{\"cpu\": ");
  expectUnreadable(path, " is no table of ratios");
  support::writeBytes(path, "{\"ratios\": {}}");
  expectUnreadable(path, " is no table of ratios");
}

TEST(RatioFile, IsNamedIfItCannotBeWritten) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("missing/ratios.json");
  EXPECT_THAT([&] { bench::writeRatios(path, example()); },
              ThrowsMessage<std::runtime_error>(HasSubstr(path + " cannot be written")));
}

TEST(Ratios, OfSeveralBenchmarksAreJoined) {
  bench::Ratios ratios = example().ratios;
  bench::addRatios(ratios, {{"canvas", {{"c", {Better::kHigher, {{"AVX2", 3}}}}}},
                            {"views", {{"b", {Better::kLower, {{"AVX2", 2}}}}}}});
  EXPECT_EQ(ratios.at("canvas").at("c").byInstructionSet.at("AVX2"), 3);
  EXPECT_EQ(ratios.at("views").at("a").byInstructionSet.at("AVX2"), 10.125);
  EXPECT_EQ(ratios.at("views").at("b").byInstructionSet.at("AVX2"), 2);
}
