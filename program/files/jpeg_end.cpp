#include "files/jpeg_end.h"

#include <cstddef>

namespace fisheye_calibration::program {
namespace {

constexpr unsigned kTemporary = 0x01;
constexpr unsigned kFirstRestart = 0xD0;  // to 0xD7
constexpr unsigned kStartOfImage = 0xD8;
constexpr unsigned kEndOfImage = 0xD9;
constexpr unsigned kMarker = 0xFF;

bool standsAlone(unsigned code) {
  return code == kTemporary || (code >= kFirstRestart && code <= kStartOfImage);
}

}  // namespace

bool isJpeg(std::string_view bytes) { return bytes.starts_with("\xFF\xD8\xFF"); }

// A file is a sequence of segments: FF, a code and, unless the code stands alone, a length of two
// bytes that counts itself. After a scan's segment, coded data follows, in which FF is followed by
// 00 or by a restart marker. Skipping all bytes up to the next marker passes over coded data.
bool isTruncatedJpeg(std::string_view bytes) {
  if (!isJpeg(bytes)) {
    return false;
  }
  const auto at = [&](std::size_t i) {
    return static_cast<unsigned>(static_cast<unsigned char>(bytes[i]));
  };
  std::size_t i = 2;
  while (i + 1 < bytes.size()) {
    const unsigned code = at(i + 1);
    if (at(i) != kMarker || code == 0 || code == kMarker) {
      ++i;
    } else if (code == kEndOfImage) {
      return false;
    } else if (standsAlone(code)) {
      i += 2;
    } else if (i + 3 < bytes.size()) {
      i += 2 + (at(i + 2) << 8U | at(i + 3));
    } else {
      return true;
    }
  }
  return true;
}

}  // namespace fisheye_calibration::program
