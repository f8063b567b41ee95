// Random numbers that are the same with every standard library: the language fixes the sequences of
// its engines, but not those of its distributions.
#pragma once

#include <cstdint>
#include <random>

namespace fisheye_calibration::program {

class RandomNumbers {
 public:
  // Numbers of different streams are independent of each other.
  explicit RandomNumbers(std::uint64_t seed, std::uint64_t stream = 0);

  double uniform();  // 0 <= number < 1
  double normal();   // of mean 0 and standard deviation 1, within 6
  unsigned bits() { return static_cast<unsigned>(engine_()); }

 private:
  std::mt19937 engine_;
};

}  // namespace fisheye_calibration::program
