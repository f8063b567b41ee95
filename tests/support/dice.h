// Random numbers of the kinds that tests throw.
#pragma once

#include <cmath>

#include "support/synthetic_rig.h"

namespace support {

class Dice : public Random {
 public:
  using Random::Random;

  double number(double reach) { return uniform(-reach, reach); }
  float numberF(double reach) { return static_cast<float>(number(reach)); }
  double magnitude(double low, double high) {  // every order of magnitude alike
    return std::exp(uniform(std::log(low), std::log(high)));
  }
  int whole(int low, int high) {
    return static_cast<int>(std::floor(uniform(low, static_cast<double>(high) + 1)));
  }
  bool oneIn(int n) { return whole(1, n) == 1; }
};

}  // namespace support
