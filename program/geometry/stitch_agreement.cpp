#include "geometry/stitch_agreement.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>

#include "base/text.h"
#include "geometry/metric_picture.h"
#include "geometry/second_view.h"

namespace fisheye_calibration::program {
namespace {

// Where the view of a camera renders the pixel at which it measured the point.
std::optional<cv::Point2d> viewPlace(const StitchCamera& camera, const CalibrationPoint& point) {
  const cv::Point2d raw(static_cast<double>(point.ImagePtX), static_cast<double>(point.ImagePtY));
  const cv::Point2d nominal(static_cast<double>(point.Xw), static_cast<double>(point.Yw));
  const auto bed = bedPointAt(camera.param, raw, nominal);
  if (!bed) {
    return std::nullopt;
  }
  const cv::Point2d place = renderedPlace(camera.param, *bed, camera.viewSize());
  if (!std::isfinite(place.x) || !std::isfinite(place.y)) {
    return std::nullopt;
  }
  return place;
}

double rawError(const StitchCamera& camera, const CalibrationPoint& point) {
  float x = 0;
  float y = 0;
  WorldToRawImagePoint(point.Xw, point.Yw, 0, camera.param, x, y);
  return static_cast<double>(std::hypot(point.ImagePtX - x, point.ImagePtY - y));
}

template <typename Value>
double rootMeanSquare(const std::vector<Agreement>& agreement, Value value) {
  double sum = 0;
  for (const Agreement& at : agreement) {
    sum += value(at) * value(at);
  }
  return std::sqrt(sum / static_cast<double>(agreement.size()));
}

std::string row(const std::string& name, double apart, double left, double right, double leftRaw,
                double rightRaw, double unit) {
  std::string line = padRight(name, 12) + padLeft(fixed(apart * unit, 3), 10);
  line += padLeft(fixed(apart, 2), 9);
  line += padLeft(fixed(left * unit, 3), 12);
  line += padLeft(fixed(right * unit, 3), 12);
  line += padLeft(fixed(leftRaw, 2), 12);
  line += padLeft(fixed(rightRaw, 2), 12);
  return line + "\n";
}

}  // namespace

std::vector<Agreement> agreementAt(const StitchPair& pair,
                                   const DualFishEyeCalibrationParam& dual) {
  const SharedPoints shared = sharedPoints(pair);
  const cv::Matx33d back = viewTransform(pair, shared).inv();
  const cv::Point2d offset(0, (dual.StdImageHeight - pair.left.viewSize().height) * 0.5);
  const MetricPicture canvas = metricPicture(dual);
  std::vector<Agreement> agreement;
  for (std::size_t i = 0; i < shared.left.size(); ++i) {
    const auto inLeft = viewPlace(pair.left, shared.left[i]);
    const auto inRight = viewPlace(pair.right, shared.right[i]);
    if (!inLeft || !inRight) {
      continue;
    }
    const cv::Point2d left = *inLeft + offset;
    const cv::Point2d right = applied(back, *inRight) + offset;
    const cv::Point2d bed = canvas.placeOf(
        {static_cast<double>(shared.left[i].Xw), static_cast<double>(shared.left[i].Yw)});
    agreement.push_back({shared.left[i].PointId, left, right, cv::norm(left - right),
                         cv::norm(left - bed), cv::norm(right - bed),
                         rawError(pair.left, shared.left[i]),
                         rawError(pair.right, shared.right[i])});
  }
  return agreement;
}

double worstApart(const std::vector<Agreement>& agreement) {
  double worst = 0;
  for (const Agreement& at : agreement) {
    worst = std::max(worst, at.apart);
  }
  return worst;
}

std::string describeAgreement(const std::vector<Agreement>& agreement, double unitsPerPixel) {
  if (agreement.empty()) {
    return "No shared point can be carried to the bed by both records.\n";
  }
  std::vector<Agreement> worst = agreement;
  std::stable_sort(worst.begin(), worst.end(),
                   [](const Agreement& a, const Agreement& b) { return a.apart > b.apart; });
  worst.resize(std::min<std::size_t>(worst.size(), 5));
  std::string text = "Agreement at " + std::to_string(agreement.size()) + " shared points\n";
  text += padRight("", 12) + padLeft("apart", 19) + padLeft("left-bed", 12) +
          padLeft("right-bed", 12) + padLeft("left raw", 12) + padLeft("right raw", 12) + "\n";
  text += padRight("", 12) + padLeft("mm", 10) + padLeft("px", 9) + padLeft("mm", 12) +
          padLeft("mm", 12) + padLeft("px", 12) + padLeft("px", 12) + "\n";
  const auto rms = [&](auto value) { return rootMeanSquare(agreement, value); };
  text += row("RMS", rms([](const Agreement& a) { return a.apart; }),
              rms([](const Agreement& a) { return a.leftError; }),
              rms([](const Agreement& a) { return a.rightError; }),
              rms([](const Agreement& a) { return a.leftRaw; }),
              rms([](const Agreement& a) { return a.rightRaw; }), unitsPerPixel);
  for (const Agreement& at : worst) {
    text += row("point " + std::to_string(at.pointId), at.apart, at.leftError, at.rightError,
                at.leftRaw, at.rightRaw, unitsPerPixel);
  }
  text +=
      "apart: between the two places of the canvas at which the left and the right view show the\n"
      "point, each found from the pixel measured in that camera's frame; px of the canvas, and mm\n"
      "(world units) by the canvas's Pixel. left-bed, right-bed: between such a place and where\n"
      "the canvas's record puts the point's world coordinates. raw: between the measured pixel "
      "and\n"
      "the record's projection of the world coordinates, px of the frame. The rows after RMS are\n"
      "the points farthest apart. Rounding to whole pixels in the pictures adds up to about 1 "
      "px.\n";
  return text;
}

}  // namespace fisheye_calibration::program
