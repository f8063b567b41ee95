#include "reports/calibration_report.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "base/angles.h"
#include "base/record_fields.h"
#include "base/text.h"
#include "geometry/lens_curve.h"
#include "geometry/record_matrices.h"

namespace fisheye_calibration::program {
namespace {

std::string row(const std::string& name, const std::string& value, const std::string& unit,
                const std::string& meaning) {
  return "  " + padRight(name, 10) + padLeft(value, 15) + " " + padRight(unit, 7) + meaning + "\n";
}

// Lengths and pixels with four decimals, ratios and coefficients with eight.
std::string valueText(const RecordField& field, double value) {
  const std::string_view unit = field.unit;
  return readable(value, unit == "px" || unit == "mm" ? 4 : 8);
}

std::string matrixRows(const std::string& name, const Matrix3& matrix) {
  std::string text;
  for (std::size_t i = 0; i < 3; ++i) {
    text += "  " + padRight(i == 0 ? name : "", 10);
    for (std::size_t j = 0; j < 3; ++j) {
      text += padLeft(readable(matrix[3 * i + j], 8), 18);
    }
    text += "\n";
  }
  return text;
}

std::string derivedRows(const FishEyeCalibrationParam& param) {
  const std::optional<double> turn = turningAngle(param.k0, param.k1);
  const std::string curve = turn ? fixed(degrees(*turn), 2) : "over 90";
  return row("tilt", fixed(tiltDegrees(param), 3), "deg",
             "between the optical axis and the bed's normal") +
         row("limit", curve, "deg", "off the axis, where the lens curve turns back");
}

double residual(const CalibrationPoint& point) {
  return std::hypot(point.ReprojErrX, point.ReprojErrY);
}

std::string worstPoints(std::vector<CalibrationPoint> points) {
  // A residual that is not a number is worse than any other.
  const auto worse = [](const CalibrationPoint& a, const CalibrationPoint& b) {
    const double ra = residual(a);
    const double rb = residual(b);
    return std::isnan(ra) || std::isnan(rb) ? std::isnan(ra) && !std::isnan(rb) : ra > rb;
  };
  std::stable_sort(points.begin(), points.end(), worse);
  const std::span worst = std::span(points).first(std::min<std::size_t>(points.size(), 5));
  std::string text =
      "Largest residuals (measured - reprojected, px)\n"
      "     PointId   ImagePtX   ImagePtY         dx         dy     length\n";
  for (const CalibrationPoint& point : worst) {
    text += "  " + padLeft(std::to_string(point.PointId), 10);
    for (const double value :
         {static_cast<double>(point.ImagePtX), static_cast<double>(point.ImagePtY)}) {
      text += padLeft(readable(value, 2), 11);
    }
    for (const double value : {point.ReprojErrX, point.ReprojErrY, residual(point)}) {
      text += padLeft(readable(value, 3), 11);
    }
    text += "\n";
  }
  return text;
}

bool isFiller(std::string_view name) {
  return name.size() == 2 && name[0] == 'k' && name[1] >= '2' && name[1] <= '5';
}

}  // namespace

std::string describeRecord(const FishEyeCalibrationParam& param, bool verbose) {
  std::string text;
  for (const RecordField& field : recordFields()) {
    const std::string_view name = field.name;
    if (!verbose && isFiller(name)) {
      continue;
    }
    const bool inMatrix =
        name.size() == 2 && (name[0] == 'R' || name[0] == 'p') && name[1] >= '1' && name[1] <= '9';
    if (!inMatrix) {
      text += row(field.name, valueText(field, field.value(param)), field.unit, field.meaning);
    } else if (name == "R1") {
      text += matrixRows("R1...R9", rotationOf(param));
    } else if (name == "p1") {
      text += matrixRows("p1...p9", homographyOf(param));
    }
  }
  return text + derivedRows(param) +
         "  mm stands for the unit of the world coordinates; R turns world into camera "
         "coordinates,\n"
         "  p1...p9 carries the corrected to the second-corrected picture.\n";
}

std::string describeResult(const CalibrationResult& result, bool verbose) {
  std::string text = "Camera\n" + describeRecord(result.param, verbose) +
                     "\nReprojection error: RMS " + readable(result.rms, 4) + " px over " +
                     std::to_string(result.points.size()) + " points\n";
  if (result.homographyFound) {
    const SecondCorrectionError error = secondCorrectionError(result);
    text += "Second correction: fits these points to " + general(error.worstPixels, 3) +
            " px (worst: point " + std::to_string(error.pointId) +
            "); that is no measure of the accuracy on the bed\n";
  }
  return text + worstPoints(result.points);
}

}  // namespace fisheye_calibration::program
