#include "files/decoder_messages.h"

#include <array>

#include "base/standard_error.h"
#include "base/text.h"

namespace fisheye_calibration::program {

DecoderMessages::DecoderMessages() : file_(openTemporaryFile()) {
  if (file_ != nullptr) {
    std::fflush(stderr);
    saved_ = redirectStandardError(file_);
  }
}

DecoderMessages::~DecoderMessages() {
  restore();
  if (file_ != nullptr) {
    std::fclose(file_);
  }
}

void DecoderMessages::restore() {
  if (saved_ >= 0) {
    std::fflush(stderr);
    restoreStandardError(saved_);
    saved_ = -1;
  }
}

std::string DecoderMessages::take() {
  restore();
  std::string text;
  if (file_ == nullptr) {
    return text;
  }
  std::rewind(file_);
  std::array<char, 4096> part{};
  while (const std::size_t count = std::fread(part.data(), 1, part.size(), file_)) {
    text.append(part.data(), count);
  }
  return onOneLine(text);
}

}  // namespace fisheye_calibration::program
