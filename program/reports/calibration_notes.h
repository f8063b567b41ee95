// What a calibration notes in the camera's file.
#pragma once

#include "files/camera_notes.h"
#include "reports/calibration_json.h"

namespace fisheye_calibration::program {

CameraNotes notesOf(const CalibrationReport& report);

}  // namespace fisheye_calibration::program
