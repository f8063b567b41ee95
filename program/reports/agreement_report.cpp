#include "reports/agreement_report.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

std::string heading(const std::string& apart, const std::string& apartPixels,
                    const std::array<std::string, 4>& errors) {
  std::string line = padRight("", 12) + padLeft(apart, 10) + padLeft(apartPixels, 9);
  for (const std::string& error : errors) {
    line += padLeft(error, 12);
  }
  return line + "\n";
}

std::string row(const std::string& name, const Agreement& at, double unitsPerPixel) {
  std::string line = padRight(name, 12) + padLeft(fixed(at.apart * unitsPerPixel, 3), 10);
  line += padLeft(fixed(at.apart, 2), 9);
  line += padLeft(fixed(at.leftError * unitsPerPixel, 3), 12);
  line += padLeft(fixed(at.rightError * unitsPerPixel, 3), 12);
  line += padLeft(fixed(at.leftRaw, 2), 12);
  line += padLeft(fixed(at.rightRaw, 2), 12);
  return line + "\n";
}

constexpr const char* kLegend =
    "apart: between the two places of the canvas at which the left and the right view show the\n"
    "point, each found from the pixel measured in that camera's frame; px of the canvas, and mm\n"
    "(world units) by the canvas's Pixel. left-bed, right-bed: between such a place and where\n"
    "the canvas's record puts the point's world coordinates. raw: between the measured pixel and\n"
    "the record's projection of the world coordinates, px of the frame. The rows after RMS are\n"
    "the points farthest apart. Rounding to whole pixels in the pictures adds up to about 1 px.\n";

}  // namespace

std::string describeAgreement(const std::vector<Agreement>& agreement, double unitsPerPixel) {
  if (agreement.empty()) {
    return "No shared point can be carried to the bed by both records.\n";
  }
  const auto rms = [&](double Agreement::*error) { return rootMeanSquare(agreement, error); };
  const Agreement overall = {.apart = rms(&Agreement::apart),
                             .leftError = rms(&Agreement::leftError),
                             .rightError = rms(&Agreement::rightError),
                             .leftRaw = rms(&Agreement::leftRaw),
                             .rightRaw = rms(&Agreement::rightRaw)};
  std::vector<Agreement> worst = agreement;
  std::stable_sort(worst.begin(), worst.end(),
                   [](const Agreement& a, const Agreement& b) { return a.apart > b.apart; });
  worst.resize(std::min<std::size_t>(worst.size(), 5));

  std::string text = "Agreement at " + std::to_string(agreement.size()) + " shared points\n";
  text += heading("", "apart", {"left-bed", "right-bed", "left raw", "right raw"});
  text += heading("mm", "px", {"mm", "mm", "px", "px"});
  text += row("RMS", overall, unitsPerPixel);
  for (const Agreement& at : worst) {
    text += row("point " + std::to_string(at.pointId), at, unitsPerPixel);
  }
  return text + kLegend;
}

}  // namespace fisheye_calibration::program
