#include "reports/progress_bar.h"

#include <ostream>

#include "base/text.h"

namespace fisheye_calibration::program {

std::string progressText(std::size_t done, std::size_t total, double seconds) {
  constexpr std::size_t kLength = 20;
  const std::size_t filled = total > 0 ? kLength * done / total : kLength;
  std::string text(1, '[');
  text.append(filled, '#').append(kLength - filled, '-').append("] ");
  text.append(std::to_string(done)).append("/").append(std::to_string(total));
  if (seconds > 0) {
    text += "  " + general(static_cast<double>(done) / seconds, 3) + " frames/s";
  }
  return text;
}

ProgressBar::~ProgressBar() {
  if (width_ > 0) {
    stream_ << std::endl;
  }
}

void ProgressBar::show(const std::string& text) {
  if (!shown_) {
    return;
  }
  stream_ << '\r' << padRight(text, width_) << std::flush;
  width_ = text.size();
}

void ProgressBar::clear() {
  if (width_ > 0) {
    stream_ << '\r' << std::string(width_, ' ') << '\r';
  }
  width_ = 0;
}

}  // namespace fisheye_calibration::program
