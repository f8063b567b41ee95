#include "reports/accuracy_report.h"

#include <cmath>

#include "base/nice_number.h"
#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kLargestShare = 0.03;  // of the target's diagonal

std::string millimetres(double error) {
  return std::isfinite(error) ? roundedToTwo(error) + " mm" : "unknown";
}

}  // namespace

std::string describeAccuracy(const BedAccuracy& accuracy) {
  return "bed error (95 %): " + millimetres(accuracy.insideTarget) + " inside the target, " +
         millimetres(accuracy.onBed) + " on the bed";
}

Verdict verdictOn(const BedAccuracy& accuracy, double targetDiagonal, double tolerance,
                  const std::vector<Remedy>& remedies) {
  const double limit = tolerance > 0 ? tolerance : kLargestShare * targetDiagonal;
  const auto goodFor = [](double error, const std::string& where) {
    return Verdict{true, "good for " + roundedToTwo(error) + " mm work" + where};
  };
  if (accuracy.onBed <= limit) {
    return goodFor(tolerance > 0 ? tolerance : niceAbove(accuracy.onBed), "");
  }
  if (tolerance == 0 && accuracy.aroundTarget <= limit) {
    return goodFor(niceAbove(accuracy.aroundTarget), " around the target, not beyond it");
  }
  const Remedy* remedy = bestRemedy(remedies, accuracy.onBed, tolerance);
  if (remedy == nullptr) {
    return {false, "redo: tilt the board and fill the view"};
  }
  return {false, "redo: " + remedy->advice + " (then about " + millimetres(remedy->onBed) +
                     " on the bed)"};
}

}  // namespace fisheye_calibration::program
