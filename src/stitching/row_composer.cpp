#include "stitching/row_composer.h"

#include <cstdint>
#include <limits>

namespace fisheye_calibration::stitching {

// Words of bytes without content are skipped as a whole.
std::int32_t alike(const unsigned char* mask, std::int32_t count) {
  if (hasContent(*mask)) {
    const void* const end = std::memchr(mask, images::kNoContent, static_cast<std::size_t>(count));
    return end == nullptr
               ? count
               : static_cast<std::int32_t>(static_cast<const unsigned char*>(end) - mask);
  }
  constexpr std::int32_t kWord = sizeof(std::uint64_t);
  static_assert(images::kNoContent == 255, "all bits are set");
  std::int32_t k = 1;
  for (; kWord <= count - k; k += kWord) {
    std::uint64_t word = 0;
    std::memcpy(&word, mask + k, sizeof word);
    if (word != std::numeric_limits<std::uint64_t>::max()) {
      break;
    }
  }
  while (k < count && !hasContent(mask[k])) {
    ++k;
  }
  return k;
}

}  // namespace fisheye_calibration::stitching
