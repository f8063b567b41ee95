#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

// The vector instruction sets that the machine has and the library is compiled for, best first;
// without the emulated ones.
std::vector<std::int64_t> instructionSets();

// The best of them, and AVX2 if the machine has it.
std::vector<std::int64_t> bestInstructionSetAndAvx2();

std::string nameOf(std::int64_t instructionSet);

std::string nameOfBestInstructionSet();

}  // namespace bench
