// The camera's parameter file. The library reads a missing file, section or key as 0 and reports
// nothing; here the difference is told.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "files/output_files.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct CameraFile {
  FishEyeCalibrationParam param{};
  std::vector<std::string>
      complaints;  // "camera.ini: key fx is missing", "camera.ini:7:6: not a …"
};

// What is wrong with the text of a parameter file. Fails as bad input where the section is missing.
std::vector<std::string> inspectCameraText(const std::string& name, std::string_view text);

// Fails as bad input if there is no such file or it has no camera section.
CameraFile loadCamera(const std::string& path);

// Stages the record over the file at `path`; other sections and comments in it stay.
void stageCamera(OutputFiles& files, const std::string& path, const FishEyeCalibrationParam& param);

}  // namespace fisheye_calibration::program
