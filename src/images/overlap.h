// Whether two buffers share memory.
#pragma once

#include <functional>
#include <span>

namespace fisheye_calibration::images {

// Empty buffers overlap nothing.
inline bool overlap(std::span<const unsigned char> a, std::span<const unsigned char> b) {
  const std::less<const unsigned char*> before;
  return !a.empty() && !b.empty() && before(a.data(), b.data() + b.size()) &&
         before(b.data(), a.data() + a.size());
}

}  // namespace fisheye_calibration::images
