// The result of a calibration as text.
#ifndef HOST_CALIBRATION_REPORT_H
#define HOST_CALIBRATION_REPORT_H

#include <string>

#include "checks/result_checks.h"
#include "commands/arguments.h"
#include "fisheye_calibration.h"

namespace host {

// The record as a table of readable lines: name, value, unit, meaning.
std::string describeRecord(const FishEyeCalibrationParam& param);

// describeRecord, the reprojection error and the five points with the largest residuals.
std::string describeResult(const CalibrationResult& result, const Size& corrected);

}  // namespace host

#endif  // HOST_CALIBRATION_REPORT_H
