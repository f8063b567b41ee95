#include "checks/result_checks.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <string>
#include <utility>

#include "base/text.h"
#include "checks/record_checks.h"
#include "geometry/lens_curve.h"
#include "geometry/record_matrices.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kLargestRms = 2;              // pixels
constexpr double kFocalFactor = 3;             // against max(W, H)/pi
constexpr double kCentralShare = 0.1;          // of the longer side, for the principal point
constexpr double kLargestCorrectionError = 3;  // pixels: the outlier bound of the homography's fit

void checkReprojection(const CalibrationResult& result, Findings& findings) {
  if (!std::isfinite(result.rms)) {
    addImpossible(findings, FindingKind::kReprojectionError,
                  "the reprojection error is not a number");
  } else if (result.rms > kLargestRms) {
    addImpossible(findings, FindingKind::kReprojectionError,
                  "the RMS reprojection error is " + general(result.rms, 4) + " px, more than " +
                      general(kLargestRms, 3) + " px");
  }
}

void checkFocalLength(const FishEyeCalibrationParam& param, const Size& image, Findings& findings) {
  const double expected = std::max(image.width, image.height) / std::numbers::pi;
  for (const auto& [name, value] : {std::pair("fx", param.fx), std::pair("fy", param.fy)}) {
    const double ratio = static_cast<double>(value) / expected;
    if (ratio > 0 && (ratio > kFocalFactor || ratio < 1 / kFocalFactor)) {
      addImpossible(
          findings, FindingKind::kFocalLength,
          std::string(name) + " is " + general(static_cast<double>(value), 5) +
              " px, off by more than a factor of 3 from what a fisheye lens on such a picture has "
              "(about " +
              general(expected, 4) + " px)");
    }
  }
}

void checkPrincipalPoint(const FishEyeCalibrationParam& param, const Size& image,
                         Findings& findings) {
  const double u0 = static_cast<double>(param.u0);
  const double v0 = static_cast<double>(param.v0);
  const std::string position =
      "the principal point (" + readable(u0, 1) + ", " + readable(v0, 1) + ")";
  const auto alreadyReported = [](const Finding& f) {
    return f.kind == FindingKind::kPrincipalPoint;
  };
  if (std::any_of(findings.begin(), findings.end(), alreadyReported)) {
    return;
  }
  if (!(u0 >= -0.5 && u0 <= image.width - 0.5 && v0 >= -0.5 && v0 <= image.height - 0.5)) {
    addImpossible(findings, FindingKind::kPrincipalPoint, position + " lies outside the picture");
    return;
  }
  const double offset = std::hypot(u0 - (image.width - 1) / 2.0, v0 - (image.height - 1) / 2.0);
  if (offset > kCentralShare * std::max(image.width, image.height)) {
    addDoubtful(findings, FindingKind::kPrincipalPoint,
                position + " lies " + fixed(offset, 0) +
                    " px from the picture's centre; lenses are seldom mounted that far off");
  }
}

void checkPoints(const CalibrationResult& result, Findings& findings) {
  std::vector<int> behind;
  std::vector<int> beyondTurn;
  const std::optional<double> turn = turningAngle(result.param.k0, result.param.k1);
  const Matrix3 R = rotationOfVector(result.param);
  const Vector3 T = translationOf(result.param);
  for (const CalibrationPoint& point : result.points) {
    const double X = static_cast<double>(point.Xw);
    const double Y = static_cast<double>(point.Yw);
    const double depth = R[6] * X + R[7] * Y + T[2];
    const double side = std::hypot(R[0] * X + R[1] * Y + T[0], R[3] * X + R[4] * Y + T[1]);
    if (!(depth > 0)) {
      behind.push_back(point.PointId);
    } else if (turn && std::atan2(side, depth) > *turn) {
      beyondTurn.push_back(point.PointId);
    }
  }
  if (!behind.empty()) {
    addImpossible(findings, FindingKind::kDepth,
                  namedPoints(behind) + " would be behind the camera", behind);
  }
  if (!beyondTurn.empty()) {
    addImpossible(findings, FindingKind::kLensCurve,
                  "the lens curve turns back before it reaches " + namedPoints(beyondTurn),
                  beyondTurn);
  }
}

void checkSecondCorrection(const CalibrationResult& result, Findings& findings) {
  const SecondCorrectionError error = secondCorrectionError(result);
  if (error.worstPixels <= kLargestCorrectionError) {
    return;
  }
  addImpossible(findings, FindingKind::kSecondCorrection,
                "the corrected picture misses the world grid by " + general(error.worstPixels, 3) +
                    " px at " + namedPoints({error.pointId}),
                {error.pointId});
}

}  // namespace

Findings checkResult(const CalibrationResult& result, const Size& image) {
  Findings findings;
  if (!result.homographyFound) {
    addImpossible(findings, FindingKind::kHomographyNotFound,
                  "no homography was found from the corrected picture to the world grid");
  }
  const Findings ofRecord = checkRecord(result.param);
  findings.insert(findings.end(), ofRecord.begin(), ofRecord.end());
  checkReprojection(result, findings);
  const bool numbers = std::none_of(ofRecord.begin(), ofRecord.end(), [](const Finding& finding) {
    return finding.kind == FindingKind::kNotFinite || finding.kind == FindingKind::kEmpty;
  });
  if (!numbers) {
    return findings;
  }
  checkFocalLength(result.param, image, findings);
  checkPrincipalPoint(result.param, image, findings);
  checkPoints(result, findings);
  if (result.homographyFound) {
    checkSecondCorrection(result, findings);
  }
  return findings;
}

}  // namespace fisheye_calibration::program
