// What the decoders of pictures print themselves: it goes to standard error without the file's
// name.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>

namespace fisheye_calibration::program {

// While it exists, standard error of the process goes to a temporary file. Where there is none,
// nothing is caught.
class DecoderMessages {
 public:
  DecoderMessages();
  DecoderMessages(const DecoderMessages&) = delete;
  DecoderMessages& operator=(const DecoderMessages&) = delete;
  ~DecoderMessages();

  // Ends the redirection and returns what was printed, on one line.
  std::string take();

 private:
  void restore();

  std::filesystem::path path_;
  std::FILE* file_ = nullptr;
  int standardError_ = -1;  // a duplicate of the original
};

}  // namespace fisheye_calibration::program
