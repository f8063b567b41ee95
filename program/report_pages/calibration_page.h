// The report of a calibration as a page.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "reports/calibration_json.h"

namespace fisheye_calibration::program {

struct CalibrationPage {
  const CalibrationReport& report;
  std::string cameraName;  // of the camera's file
  bool trusted = true;
  bool saved = true;
  cv::Mat bedPicture;  // the raw frame that shows the bed, grey or colour, or empty
};

std::string calibrationPage(const CalibrationPage& page);

}  // namespace fisheye_calibration::program
