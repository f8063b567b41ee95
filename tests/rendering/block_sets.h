// Runs tests of blocks on every instruction set that computes them.
#pragma once

#include <gtest/gtest.h>

#include "rendering/block_access.h"
#include "support/instruction_sets.h"

namespace blocks {

// Skips the test on machines that compute every pixel by the plain steps.
template <class Test>
void onEverySet(const Test& test) {
  int sets = 0;
  support::onEveryInstructionSet([&] {
    if (areComputed()) {
      ++sets;
      test();
    }
  });
  if (sets == 0) {
    GTEST_SKIP() << "no instruction set of this machine computes blocks";
  }
}

}  // namespace blocks
