// Runs code on every instruction set that the machine has.
#pragma once

#include <gtest/gtest.h>

#include <hwy/highway.h>

namespace support {

// Calls `test` once for every instruction set, then returns to the machine's best.
template <class Test>
void onEveryInstructionSet(const Test& test) {
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    SCOPED_TRACE(hwy::TargetName(target));
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    test();
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

}  // namespace support
