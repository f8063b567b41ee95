#include "reports/picture_report.h"

#include <vector>

#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

std::string coordinate(double value) { return general(value + 0.0, 6); }

// Whole percents, "less than 1 %" for anything smaller.
std::string percent(double share) {
  return share > 0 && share < 0.01 ? "less than 1 %" : fixed(100 * share, 0) + " %";
}

}  // namespace

std::string describePicture(const FishEyeCalibrationParam& record, const Size& corrected,
                            const cv::Rect2d& shown) {
  return "Corrected picture: " + sizeText(corrected) + ", X " + coordinate(shown.x) + " ... " +
         coordinate(shown.br().x) + ", Y " + coordinate(shown.y) + " ... " +
         coordinate(shown.br().y) + " mm, " + general(static_cast<double>(record.Pixel), 6) +
         " mm a pixel";
}

std::string describeMissing(const SeenShares& shares, const std::string& remedy) {
  std::vector<std::string> parts;
  const auto add = [&](double share, const std::string& text) {
    if (share > 0) {
      parts.push_back(percent(share) + text);
    }
  };
  add(shares.unseen, " is not seen");
  add(shares.behind, " lies behind the camera, where the corrected picture shows something else");
  add(shares.leftOut, " is beyond the corrected picture's reach" + remedy);
  add(shares.blurred, " is seen with less than a third of the best sharpness");
  return joined(parts, ", ");
}

}  // namespace fisheye_calibration::program
