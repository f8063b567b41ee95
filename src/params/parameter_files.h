// The parameter files, with reports of what the exported functions do not report (compatibility 7).
#pragma once

#include "fisheye_calibration.h"
#include "platform/profile_file.h"

namespace fisheye_calibration::params {

// As SaveCalibrationParam and SaveDualCamerasCalibrationParam. Return false if the file cannot be
// written.
bool saveCameraFile(const platform::ProfilePath& path, const FishEyeCalibrationParam& param);
bool saveDualCameraFile(const platform::ProfilePath& path,
                        const DualFishEyeCalibrationParam& param);

// As LoadCalibrationParam and LoadDualCamerasCalibrationParam. Return false if there is no value at
// all: no file, no section or none of its keys.
bool loadCameraFile(const platform::ProfilePath& path, FishEyeCalibrationParam& param);
bool loadDualCameraFile(const platform::ProfilePath& path, DualFishEyeCalibrationParam& param);

}  // namespace fisheye_calibration::params
