#include "files/decoder_messages.h"

#include <array>
#include <random>
#include <system_error>

#include "base/file_path.h"
#include "base/text.h"

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

constexpr int kStandardError = 2;

#if defined(_WIN32)
int duplicate(int file) { return _dup(file); }
void replace(int file, int by) { _dup2(by, file); }
void close(int file) { _close(file); }
int numberOf(std::FILE* file) { return _fileno(file); }
#else
int duplicate(int file) { return ::dup(file); }
void replace(int file, int by) { ::dup2(by, file); }
void close(int file) { ::close(file); }
int numberOf(std::FILE* file) { return ::fileno(file); }
#endif

}  // namespace

DecoderMessages::DecoderMessages() {
  std::error_code error;
  const fs::path folder = fs::temp_directory_path(error);
  if (error) {
    return;
  }
  std::random_device random;
  path_ = folder / ("fisheye-calibration-" + std::to_string(random()) + std::to_string(random()));
  file_ = std::fopen(nameOf(path_).c_str(), "w+b");
  if (file_ == nullptr) {
    return;
  }
  std::fflush(stderr);
  standardError_ = duplicate(kStandardError);
  if (standardError_ >= 0) {
    replace(kStandardError, numberOf(file_));
  }
}

DecoderMessages::~DecoderMessages() {
  restore();
  if (file_ != nullptr) {
    std::fclose(file_);
    std::error_code ignored;
    fs::remove(path_, ignored);
  }
}

void DecoderMessages::restore() {
  if (standardError_ < 0) {
    return;
  }
  std::fflush(stderr);
  replace(kStandardError, standardError_);
  close(standardError_);
  standardError_ = -1;
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
