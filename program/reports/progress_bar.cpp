#include "reports/progress_bar.h"

#include <ostream>

#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

// Nothing before any time has passed.
std::string rateText(std::size_t done, double seconds) {
  return seconds > 0 ? "  " + general(static_cast<double>(done) / seconds, 3) + " frames/s" : "";
}

}  // namespace

std::string progressText(std::size_t done, std::size_t total, double seconds) {
  constexpr std::size_t kLength = 20;
  const std::size_t filled = total > 0 ? kLength * done / total : kLength;
  std::string text(1, '[');
  text.append(filled, '#').append(kLength - filled, '-').append("] ");
  text.append(std::to_string(done)).append("/").append(std::to_string(total));
  return text + rateText(done, seconds);
}

std::string progressText(std::size_t done, double seconds) {
  return std::to_string(done) + " frames" + rateText(done, seconds);
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
