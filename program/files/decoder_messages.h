// What the decoders of pictures print themselves: it goes to standard error without the file's
// name.
#pragma once

#include <cstdio>
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

  bool caught() const { return file_ != nullptr; }

  // Ends the redirection and returns what was printed, on one line.
  std::string take();

 private:
  void restore();

  std::FILE* file_;
  int saved_ = -1;  // the original standard error while it is redirected
};

}  // namespace fisheye_calibration::program
