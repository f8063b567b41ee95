#include "images/debug_bitmap.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>
#include <vector>

namespace fisheye_calibration {
namespace {

constexpr std::int64_t kFileHeaderSize = 14;
constexpr std::int64_t kInfoHeaderSize = 40;
constexpr std::int64_t kLargestFile = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kPixelsPerMetre = 2925;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

struct Layout {
  std::int64_t palette = 0;  // entries
  std::int64_t packed = 0;   // bytes taken from the buffer
  std::int64_t image = 0;    // bytes in the file

  std::int64_t pixelOffset() const { return kFileHeaderSize + kInfoHeaderSize + 4 * palette; }
  std::int64_t fileSize() const { return pixelOffset() + image; }
};

bool exceeds(std::int64_t a, std::int64_t b, std::int64_t limit) { return b != 0 && a > limit / b; }

// Returns false if the file would be too long.
bool layOut(int width, int height, int bits, Layout& layout) {
  layout.palette = bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
  if (width <= 0 || height <= 0 || bits <= 0) {
    return true;
  }
  const std::int64_t rowBits = std::int64_t{width} * bits;
  const std::int64_t row = (rowBits + 31) / 32 * 4;
  if (exceeds(row, height, kLargestFile - layout.pixelOffset())) {
    return false;
  }
  layout.image = row * height;
  layout.packed = rowBits * height / 8;
  return true;
}

// Little-endian on every machine.
class Bytes {
 public:
  void append16(std::int64_t value) { append(value, 2); }
  void append32(std::int64_t value) { append(value, 4); }
  const std::vector<unsigned char>& all() const { return bytes_; }

 private:
  void append(std::int64_t value, int count) {
    for (int i = 0; i < count; ++i) {
      bytes_.push_back(static_cast<unsigned char>((value >> (8 * i)) & 0xFF));
    }
  }

  std::vector<unsigned char> bytes_;
};

Bytes headersAndPalette(int width, int height, int bits, const Layout& layout) {
  Bytes bytes;
  bytes.append16(0x4D42);  // "BM"
  bytes.append32(layout.fileSize());
  bytes.append32(0);  // reserved
  bytes.append32(layout.pixelOffset());

  bytes.append32(kInfoHeaderSize);
  bytes.append32(width);
  bytes.append32(height);  // positive: rows run bottom-up
  bytes.append16(1);       // planes
  bytes.append16(bits);
  bytes.append32(0);  // not compressed
  bytes.append32(layout.image);
  bytes.append32(kPixelsPerMetre);
  bytes.append32(kPixelsPerMetre);
  bytes.append32(0);  // colours used: all
  bytes.append32(0);  // important colours: all

  for (std::int64_t i = 0; i < layout.palette; ++i) {
    bytes.append32(i * 0x010101);
  }
  return bytes;
}

bool write(std::FILE* file, const unsigned char* bytes, std::int64_t count) {
  const auto size = static_cast<std::size_t>(count);
  return size == 0 || std::fwrite(bytes, 1, size, file) == size;
}

bool writeZeros(std::FILE* file, std::int64_t count) {
  static constexpr std::array<unsigned char, 4096> kZeros{};
  for (; count > 0; count -= static_cast<std::int64_t>(kZeros.size())) {
    if (!write(file, kZeros.data(), std::min<std::int64_t>(count, kZeros.size()))) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool WriteDebugBitmap(const unsigned char* pixels, int width, int height, int bits,
                      const char* path) {
  Layout layout;
  if (path == nullptr || !layOut(width, height, bits, layout)) {
    return false;
  }
  if (pixels == nullptr && layout.packed > 0) {
    return false;
  }
  File file(std::fopen(path, "wb"));
  if (!file) {
    return false;
  }
  const Bytes start = headersAndPalette(width, height, bits, layout);
  const bool written =
      write(file.get(), start.all().data(), static_cast<std::int64_t>(start.all().size())) &&
      write(file.get(), pixels, layout.packed) &&
      writeZeros(file.get(), layout.image - layout.packed);
  const bool closed = std::fclose(file.release()) == 0;  // flushes the rest
  return written && closed;
}

bool CanWriteDebugBitmap(const char* path) {
  std::error_code ignored;
  const bool isNew = std::filesystem::symlink_status(path, ignored).type() ==
                     std::filesystem::file_type::not_found;
  // Append mode needs the same permissions as writing but never truncates, not even a file created
  // in the meantime.
  if (!File(std::fopen(path, "ab"))) {
    return false;
  }
  if (isNew && std::filesystem::is_empty(path, ignored)) {
    std::filesystem::remove(path, ignored);
  }
  return true;
}

}  // namespace fisheye_calibration
