// What in a camera record cannot be, or makes it of little use.
#ifndef HOST_RECORD_CHECKS_H
#define HOST_RECORD_CHECKS_H

#include <vector>

#include "checks/finding.h"
#include "fisheye_calibration.h"

namespace host {

std::vector<Finding> checkRecord(const FishEyeCalibrationParam& param);

}  // namespace host

#endif  // HOST_RECORD_CHECKS_H
