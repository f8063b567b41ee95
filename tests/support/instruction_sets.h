// Runs code on every instruction set that the machine has.
#pragma once

#include <gtest/gtest.h>

#include "support/chosen_instruction_set.h"

namespace support {

// Calls `test` once for every instruction set, then returns to the machine's best.
template <class Test>
void onEveryInstructionSet(const Test& test) {
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const ChosenInstructionSet chosen(target);
    test();
  }
}

}  // namespace support
