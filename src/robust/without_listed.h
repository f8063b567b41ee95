// Leaving out elements by their indices.
#pragma once

#include <cstddef>
#include <vector>

namespace fisheye_calibration::robust {

// The elements whose indices are not among `listed`, which ascends.
template <class T>
std::vector<T> withoutListed(const std::vector<T>& all, const std::vector<std::size_t>& listed) {
  std::vector<T> kept;
  auto next = listed.begin();
  for (std::size_t j = 0; j < all.size(); ++j) {
    if (next != listed.end() && *next == j) {
      ++next;
    } else {
      kept.push_back(all[j]);
    }
  }
  return kept;
}

}  // namespace fisheye_calibration::robust
