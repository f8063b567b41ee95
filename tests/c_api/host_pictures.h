// Pictures in a host's memory: every layout of the rows, with guard bytes in between and around.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fisheye_calibration_c.h"

namespace c_api_tests {

using Bytes = std::vector<unsigned char>;

struct RowLayout {
  bool topDown = true;
  int padding = 0;             // bytes after each row
  bool impliesStride = false;  // stride 0
};

constexpr std::array<RowLayout, 6> kRowLayouts{{
    {true, 0, true},
    {true, 0},
    {true, 1},
    {false, 0},
    {false, 3},
    {false, 37},
}};

// A picture whose content is given and read as the C++ functions take it: bottom-up, no padding.
class HostPicture {
 public:
  HostPicture(int width, int height, int bits, const RowLayout& layout, unsigned char guard = 0xA5)
      : height_(static_cast<std::size_t>(height)),
        row_(static_cast<std::size_t>(width * (bits / 8))),
        stride_(row_ + static_cast<std::size_t>(layout.padding)),
        topDown_(layout.topDown),
        guard_(guard),
        memory_(stride_ * height_ + 2 * kGuard, guard),
        image_{row(0), width, height, strideOf(layout), bits} {}

  HostPicture(const HostPicture&) = delete;
  HostPicture& operator=(const HostPicture&) = delete;

  void fill(const Bytes& bottomUp) {
    for (std::size_t y = 0; y < height_; ++y) {
      std::memcpy(row(y), bottomUp.data() + (height_ - 1 - y) * row_, row_);
    }
  }

  const fcal_image* image() const { return &image_; }
  fcal_image* image() { return &image_; }

  Bytes content() const {
    Bytes bottomUp(row_ * height_);
    for (std::size_t y = 0; y < height_; ++y) {
      std::memcpy(bottomUp.data() + (height_ - 1 - y) * row_, row(y), row_);
    }
    return bottomUp;
  }

  // Whether all bytes but those of the pixels still have their value.
  bool isGuardIntact() const {
    std::vector<bool> isPixel(memory_.size());
    for (std::size_t y = 0; y < height_; ++y) {
      const std::size_t begin = offset(y);
      std::fill_n(isPixel.begin() + static_cast<std::ptrdiff_t>(begin), row_, true);
    }
    for (std::size_t i = 0; i < memory_.size(); ++i) {
      if (!isPixel[i] && memory_[i] != guard_) {
        return false;
      }
    }
    return true;
  }

 private:
  static constexpr std::size_t kGuard = 64;

  std::int32_t strideOf(const RowLayout& layout) const {
    const auto stride = static_cast<std::int32_t>(stride_);
    return layout.impliesStride ? 0 : layout.topDown ? stride : -stride;
  }
  std::size_t offset(std::size_t y) const {
    return kGuard + (topDown_ ? y : height_ - 1 - y) * stride_;
  }
  unsigned char* row(std::size_t y) { return memory_.data() + offset(y); }
  const unsigned char* row(std::size_t y) const { return memory_.data() + offset(y); }

  std::size_t height_;
  std::size_t row_;
  std::size_t stride_;
  bool topDown_;
  unsigned char guard_;
  Bytes memory_;
  fcal_image image_;
};

}  // namespace c_api_tests
