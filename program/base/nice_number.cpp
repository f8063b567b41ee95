#include "base/nice_number.h"

#include <cmath>

namespace fisheye_calibration::program {

double niceBelow(double value) {
  if (!(value > 0) || !std::isfinite(value)) {
    return 1;
  }
  const double decade = std::pow(10, std::floor(std::log10(value)));
  const double digit = value / decade * (1 + 1e-9);
  return (digit >= 5 ? 5 : digit >= 2 ? 2 : 1) * decade;
}

double niceAbove(double value) {
  if (!(value > 0) || !std::isfinite(value)) {
    return 1;
  }
  const double decade = std::pow(10, std::floor(std::log10(value)));
  const double digit = value / decade * (1 - 1e-9);
  return (digit <= 1 ? 1 : digit <= 2 ? 2 : digit <= 5 ? 5 : 10) * decade;
}

}  // namespace fisheye_calibration::program
