// Memory may run out at any allocation of any function: nothing crashes, nothing is lost, inputs
// stay, and outputs are those of the call with enough memory. Those of a call that reports failure
// by its result are as they were; an exception may leave some of them written.
#include <gtest/gtest.h>

#include <new>
#include <opencv2/core.hpp>
#include <ostream>
#include <string>

#include "every_function/operations.h"
#include "support/limited_memory.h"

namespace every_function {

void PrintTo(const Operation& operation, std::ostream* to) { *to << operation.name; }

namespace {

const Inputs& inputs() {
  static const Inputs all;
  return all;
}

class EveryAllocation : public testing::TestWithParam<Operation> {
 protected:
  // Everything that is made at the first call only.
  void SetUp() override {
    for (int i = 0; i < 3; ++i) {
      Outputs outputs = freshOutputs(inputs());
      GetParam().call(inputs(), outputs);
    }
  }
};

enum class End { kReturned, kNoMemory, kOther };

End endOf(const Operation& operation, Outputs& outputs) {
  try {
    operation.call(inputs(), outputs);
  } catch (const std::bad_alloc&) {
    return End::kNoMemory;
  } catch (const cv::Exception& error) {
    return error.code == cv::Error::StsNoMem ? End::kNoMemory : End::kOther;
  } catch (...) {
    return End::kOther;
  }
  return End::kReturned;
}

TEST_P(EveryAllocation, MayFail) {
  const Operation& operation = GetParam();
  Outputs good = freshOutputs(inputs());
  operation.call(inputs(), good);
  const std::string before = bytesOf(freshOutputs(inputs()));
  const std::string expected = bytesOf(good);
  const std::string read = bytesOf(inputs());
  int failures = 0;
  bool ranOut = true;
  for (int count = 0; ranOut; ++count) {
    ASSERT_LT(count, 200000) << "it always wants more";
    const long blocks = support::blocksInUse();
    Outputs outputs = freshOutputs(inputs());
    End end = End::kOther;
    ranOut = support::runsOutOfMemory(count, [&] { end = endOf(operation, outputs); });
    // Some functions of C++ report with their result what others throw.
    const bool failed = operation.isC
                            ? outputs.status == FCAL_NO_MEMORY
                            : end == End::kNoMemory || (end == End::kReturned && !outputs.result);
    if (failed && ranOut) {
      ++failures;
      ASSERT_TRUE(end == End::kReturned || !operation.isC) << "no exception passes";
      if (end == End::kReturned) {
        ASSERT_TRUE(bytesOf(outputs) == before) << "written after " << count << " allocations";
      }
    } else {
      ASSERT_EQ(end, End::kReturned) << "after " << count << " allocations";
      ASSERT_TRUE(bytesOf(outputs) == expected) << "after " << count << " allocations";
      ASSERT_EQ(outputs.status, good.status);
      ASSERT_EQ(outputs.result, good.result);
    }
    ASSERT_TRUE(bytesOf(inputs()) == read);
    outputs = Outputs();
    // The image library loses the elements of a matrix if it cannot allocate what describes them.
    ASSERT_LE(support::blocksInUse(), blocks + 1) << "lost after " << count << " allocations";
  }
  RecordProperty("failures", failures);
}

INSTANTIATE_TEST_SUITE_P(All, EveryAllocation, testing::ValuesIn(operations()),
                         [](const auto& operation) { return operation.param.name; });

}  // namespace
}  // namespace every_function
