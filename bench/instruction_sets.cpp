#include "instruction_sets.h"

#include <hwy/highway.h>

#include <algorithm>

namespace bench {

std::vector<std::int64_t> instructionSets() {
  std::vector<std::int64_t> sets = hwy::SupportedAndGeneratedTargets();
  std::erase_if(sets, [](std::int64_t set) { return (set & (HWY_EMU128 | HWY_SCALAR)) != 0; });
  std::sort(sets.begin(), sets.end());  // lower bits are better
  return sets;
}

std::vector<std::int64_t> bestInstructionSetAndAvx2() {
  const std::vector<std::int64_t> all = instructionSets();
  std::vector<std::int64_t> sets;
  for (const std::int64_t set : all) {
    if (set == all.front() || set == HWY_AVX2) sets.push_back(set);
  }
  return sets;
}

std::string nameOf(std::int64_t instructionSet) { return hwy::TargetName(instructionSet); }

std::string nameOfBestInstructionSet() { return nameOf(instructionSets().front()); }

}  // namespace bench
