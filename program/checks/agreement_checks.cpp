#include "checks/agreement_checks.h"

#include <string>

#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kPlainlyVisible = 5;  // canvas pixels
constexpr double kFarApart = 20;       // canvas pixels; more is no error of measurement
constexpr double kForeignPoints = 5;   // raw pixels, RMS; calibrations leave a fraction of one

// NaN counts as more than any limit.
bool exceeds(double value, double limit) { return !(value <= limit); }

void checkLost(std::size_t lost, std::size_t sharedCount, Findings& findings) {
  if (lost == 0) {
    return;
  }
  addFinding(findings, 2 * lost > sharedCount ? Severity::kUntrusted : Severity::kDoubtful,
             FindingKind::kDisagreement,
             std::to_string(lost) + " of " + std::to_string(sharedCount) +
                 " shared points lie outside the views that their cameras' records give");
}

void checkRaw(const std::vector<Agreement>& agreement, const char* side,
              double Agreement::*rawError, Findings& findings) {
  const double rms = rootMeanSquare(agreement, rawError);
  if (exceeds(rms, kForeignPoints)) {
    addUntrusted(findings, FindingKind::kDisagreement,
                 std::string("the ") + side + " points lie " + general(rms, 3) +
                     " px (RMS) off where the camera file sees them; it is not that of these "
                     "points");
  }
}

}  // namespace

Findings checkAgreement(const std::vector<Agreement>& agreement, std::size_t sharedCount) {
  Findings findings;
  checkLost(sharedCount - agreement.size(), sharedCount, findings);
  if (agreement.empty()) {
    return findings;
  }
  checkRaw(agreement, "left", &Agreement::leftRaw, findings);
  checkRaw(agreement, "right", &Agreement::rightRaw, findings);
  const double rms = rootMeanSquare(agreement, &Agreement::apart);
  const double worst = worstApart(agreement);
  if (exceeds(worst, kPlainlyVisible)) {
    const bool untrusted = exceeds(rms, kPlainlyVisible) || exceeds(worst, kFarApart);
    addFinding(findings, untrusted ? Severity::kUntrusted : Severity::kDoubtful,
               FindingKind::kDisagreement,
               "the cameras disagree by up to " + general(worst, 3) + " px (RMS " +
                   general(rms, 3) + " px); the stitched picture shows things double there");
  }
  return findings;
}

}  // namespace fisheye_calibration::program
