// The functions keep nothing between calls: neither from each other, nor memory, nor handles.
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "every_function/operations.h"
#include "support/limited_memory.h"
#include "support/scene_factor.h"

namespace every_function {
namespace {

struct Result {
  std::string bytes;
  bool result;
  fcal_status status;

  bool operator==(const Result&) const = default;
};

Result resultOf(const Operation& operation, const Inputs& inputs) {
  Outputs outputs = freshOutputs(inputs);
  operation.call(inputs, outputs);
  return {bytesOf(outputs), outputs.result, outputs.status};
}

std::vector<Result> allResults(const Inputs& inputs) {
  std::vector<Result> results;
  for (const Operation& operation : operations()) results.push_back(resultOf(operation, inputs));
  return results;
}

TEST(EveryFunction, GivesSomethingInThisScene) {
  const Inputs inputs;
  const std::string untouched = bytesOf(freshOutputs(inputs));
  for (const Operation& operation : operations()) {
    const Result result = resultOf(operation, inputs);
    // These three compute nothing.
    const bool isEmpty = operation.name == "RawImageToCorrectedImagePoint" ||
                         operation.name == "RawImageToWorldPoint" ||
                         operation.name == "GetPerspectiveTransformationParam";
    EXPECT_EQ(result.bytes == untouched, isEmpty) << operation.name;
    if (operation.isC) {
      EXPECT_EQ(result.status, FCAL_OK) << operation.name << ": " << fcal_last_error();
    } else {
      EXPECT_EQ(result.result, operation.name != "GetPerspectiveTransformationParam")
          << operation.name;
    }
  }
}

// Every thread begins with another function, so that each runs beside every other one.
TEST(EveryFunction, GivesTheSameInSixteenThreadsAsAlone) {
  const Inputs inputs;
  const std::vector<Result> alone = allResults(inputs);
  constexpr std::size_t kThreads = 16;
  const std::size_t rounds = 4 * support::kSceneFactor;
  std::atomic<int> differences{0};
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (std::size_t i = 0; i < rounds * alone.size(); ++i) {
        const std::size_t at = (i + thread * 5) % alone.size();
        if (resultOf(operations()[at], inputs) != alone[at]) ++differences;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(differences, 0);
  EXPECT_TRUE(allResults(inputs) == alone);
}

#if defined(__linux__)
std::ptrdiff_t openFiles() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                       std::filesystem::directory_iterator());
}

TEST(EveryFunction, KeepsNoMemoryAndNoHandles) {
  const Inputs inputs;
  for (int i = 0; i < 3; ++i) allResults(inputs);
  const long blocks = support::blocksInUse();
  const std::ptrdiff_t files = openFiles();
  const int rounds = 25 * support::kSceneFactor;
  for (int i = 0; i < rounds; ++i) allResults(inputs);
  constexpr int kOfThreads = 20;  // the image library's threads keep some from their first work on
  static_assert(kOfThreads < 25, "a block lost by a call would show");
  EXPECT_LE(support::blocksInUse(), blocks + kOfThreads);
  EXPECT_EQ(openFiles(), files);
}
#endif

}  // namespace
}  // namespace every_function
