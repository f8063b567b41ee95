#include "simulation/random_numbers.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kNumbers = 4294967296.0;  // that 32 bits tell apart

}  // namespace

RandomNumbers::RandomNumbers(std::uint64_t seed, std::uint64_t stream) {
  std::seed_seq words = {seed, seed >> 32, stream, stream >> 32};
  engine_.seed(words);
}

double RandomNumbers::uniform() { return static_cast<double>(engine_()) / kNumbers; }

double RandomNumbers::normal() {
  // The sum of twelve uniform numbers has the variance 12/12.
  double sum = -6;
  for (int i = 0; i < 12; ++i) {
    sum += uniform();
  }
  return sum;
}

}  // namespace fisheye_calibration::program
