#include "checks/record_checks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>

#include "base/angles.h"
#include "base/record_fields.h"
#include "base/text.h"
#include "geometry/lens_curve.h"
#include "geometry/record_matrices.h"

namespace fisheye_calibration::program {
namespace {

// The parameter file keeps six decimals of R and of the rotation vector.
constexpr double kRotationTolerance = 2e-5;
constexpr double kVectorTolerance = 1e-3;
constexpr double kUsefulAngleDegrees = 30;

using Param = FishEyeCalibrationParam;

bool allZero(const Matrix3& values) {
  return std::all_of(values.begin(), values.end(), [](double value) { return value == 0; });
}

bool checkNumbers(const Param& param, Findings& findings) {
  std::vector<std::string> notFinite;
  bool empty = true;
  for (const RecordField& field : recordFields()) {
    const double value = field.value(param);
    if (!std::isfinite(value)) {
      notFinite.emplace_back(field.name);
    }
    empty = empty && value == 0;
  }
  if (empty) {
    addImpossible(findings, FindingKind::kEmpty, "every field is 0");
  }
  if (!notFinite.empty()) {
    addImpossible(findings, FindingKind::kNotFinite,
                  joined(notFinite, ", ") + (notFinite.size() == 1 ? " is" : " are") +
                      " not a finite number");
  }
  return notFinite.empty() && !empty;
}

void checkLens(const Param& param, Findings& findings) {
  if (!(param.fx > 0) || !(param.fy > 0)) {
    addImpossible(findings, FindingKind::kFocalLength,
                  "focal lengths must be greater than 0 (fx " + shortest(param.fx) + ", fy " +
                      shortest(param.fy) + ")");
  } else {
    const double ratio = static_cast<double>(param.fx) / static_cast<double>(param.fy);
    if (ratio > 1.1 || ratio < 1 / 1.1) {
      const bool impossible = ratio > 2 || ratio < 0.5;
      addFinding(findings, impossible ? Severity::kImpossible : Severity::kDoubtful,
                 FindingKind::kFocalLength,
                 "fx and fy differ by a factor of " + general(std::max(ratio, 1 / ratio), 3) +
                     "; pixels are hardly ever that far from square");
    }
  }
  if (param.u0 == 0 && param.v0 == 0) {
    addImpossible(findings, FindingKind::kPrincipalPoint, "the principal point is (0, 0)");
  } else if (param.u0 < 0 || param.v0 < 0) {
    addImpossible(findings, FindingKind::kPrincipalPoint,
                  "the principal point (" + shortest(param.u0) + ", " + shortest(param.v0) +
                      ") lies outside any picture");
  }
  const std::optional<double> turn = turningAngle(param.k0, param.k1);
  if (turn && degrees(*turn) < kUsefulAngleDegrees) {
    addDoubtful(findings, FindingKind::kLensCurve,
                "the lens curve turns back at " + fixed(degrees(*turn), 1) +
                    " degrees off the axis: pixels are ambiguous beyond");
  }
}

// The largest entry of R R^T - I.
double distanceFromRotation(const Matrix3& R) {
  double worst = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      const double product =
          R[3 * i] * R[3 * j] + R[3 * i + 1] * R[3 * j + 1] + R[3 * i + 2] * R[3 * j + 2];
      worst = std::max(worst, std::abs(product - (i == j ? 1 : 0)));
    }
  }
  return worst;
}

double largestDifference(const Matrix3& a, const Matrix3& b) {
  double largest = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    largest = std::max(largest, std::abs(a[i] - b[i]));
  }
  return largest;
}

void checkRotation(const Param& param, Findings& findings) {
  const Matrix3 R = rotationOf(param);
  if (allZero(R)) {
    addImpossible(findings, FindingKind::kRotation, "R is all zeros");
    return;
  }
  const double distance = distanceFromRotation(R);
  if (distance > kRotationTolerance || determinant(R) < 0) {
    addImpossible(findings, FindingKind::kRotation,
                  "R is not a rotation (R R^T differs from the identity by " +
                      general(distance, 2) + ", determinant " + fixed(determinant(R), 4) + ")");
    return;
  }
  const double difference = largestDifference(R, rotationOfVector(param));
  if (difference > kVectorTolerance) {
    addImpossible(findings, FindingKind::kRotation,
                  "R and the rotation vector (Rx, Ry, Rz) disagree by " + general(difference, 2));
  }
}

void checkPosition(const Param& param, Findings& findings) {
  const Vector3 T = translationOf(param);
  if (T[0] == 0 && T[1] == 0 && T[2] == 0) {
    addImpossible(findings, FindingKind::kPose,
                  "T is (0, 0, 0): the camera would sit on the bed's world origin");
  } else if (T[2] <= 0) {
    addDoubtful(findings, FindingKind::kPose,
                "the world origin lies behind the camera (Tz " + shortest(param.Tz) + ")");
  }
}

void checkSecondCorrection(const Param& param, Findings& findings) {
  const Matrix3 H = homographyOf(param);
  double largest = 0;
  for (const double entry : H) {
    largest = std::max(largest, std::abs(entry));
  }
  if (allZero(H)) {
    addImpossible(findings, FindingKind::kHomography, "the homography p1...p9 is all zeros");
  } else if (std::abs(determinant(H)) < 1e-12 * largest) {
    addImpossible(findings, FindingKind::kHomography, "the homography p1...p9 is singular");
  }
  if (!(param.Pixel > 0)) {
    addImpossible(findings, FindingKind::kPixelSize,
                  "Pixel must be greater than 0 (it is " + shortest(param.Pixel) + ")");
  }
}

}  // namespace

Findings checkRecord(const FishEyeCalibrationParam& param) {
  Findings findings;
  if (!checkNumbers(param, findings)) {
    return findings;
  }
  checkLens(param, findings);
  checkRotation(param, findings);
  checkPosition(param, findings);
  checkSecondCorrection(param, findings);
  return findings;
}

}  // namespace fisheye_calibration::program
