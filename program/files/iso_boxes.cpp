#include "files/iso_boxes.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <system_error>

namespace fisheye_calibration::program {
namespace {

constexpr std::uint64_t kShortHeader = 8;  // bytes: a size of 32 bits and a type of four letters
constexpr std::uint64_t kLongHeader = 16;  // bytes: a size of 64 bits follows

std::uint64_t bigEndian(const std::array<char, kLongHeader>& bytes, std::size_t first,
                        std::size_t count) {
  std::uint64_t value = 0;
  for (std::size_t i = first; i < first + count; ++i) {
    value = value << 8u | static_cast<unsigned char>(bytes[i]);
  }
  return value;
}

}  // namespace

bool holdsWholeBoxes(const std::filesystem::path& path) {
  std::error_code error;
  const std::uint64_t end = std::filesystem::file_size(path, error);
  std::ifstream file(path, std::ios::binary);
  if (error || !file || end == 0) {
    return false;
  }
  for (std::uint64_t start = 0; start < end;) {
    const std::uint64_t left = end - start;
    std::array<char, kLongHeader> header = {};
    file.seekg(static_cast<std::streamoff>(start));
    file.read(header.data(), kShortHeader);
    if (!file) {
      return false;
    }
    std::uint64_t size = bigEndian(header, 0, 4);
    std::uint64_t smallest = kShortHeader;
    if (size == 0) {  // to the end of the file
      return true;
    }
    if (size == 1) {
      file.read(header.data() + kShortHeader, kLongHeader - kShortHeader);
      size = bigEndian(header, kShortHeader, kLongHeader - kShortHeader);
      smallest = kLongHeader;
    }
    if (!file || size < smallest || size > left) {
      return false;
    }
    start += size;
  }
  return true;
}

}  // namespace fisheye_calibration::program
