// A one-line progress bar for a run over many pictures.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

namespace fisheye_calibration::program {

// "[##########----------] 5/10  12.5 frames/s"; no rate before any time has passed.
std::string progressText(std::size_t done, std::size_t total, double seconds);

// "12 frames  12.5 frames/s", where nobody knows how many there will be.
std::string progressText(std::size_t done, double seconds);

class ProgressBar {
 public:
  ProgressBar(std::ostream& stream, bool shown) : stream_(stream), shown_(shown) {}
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();  // ends the line

  void show(const std::string& text);
  void clear();  // so that a message can be written in its place

 private:
  std::ostream& stream_;
  bool shown_;
  std::size_t width_ = 0;
};

}  // namespace fisheye_calibration::program
