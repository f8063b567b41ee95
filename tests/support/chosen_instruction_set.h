#pragma once

#include <hwy/highway.h>

namespace support {

// Confines vectorised code to one of the machine's instruction sets (HWY_AVX2 ...) while it lives.
class ChosenInstructionSet {
 public:
  explicit ChosenInstructionSet(std::int64_t target) { choose(target); }
  ~ChosenInstructionSet() { choose(0); }
  ChosenInstructionSet(const ChosenInstructionSet&) = delete;
  ChosenInstructionSet& operator=(const ChosenInstructionSet&) = delete;

 private:
  static void choose(std::int64_t target) {
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
  }
};

}  // namespace support
