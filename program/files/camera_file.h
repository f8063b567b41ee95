// The camera's parameter file. The library reads a missing file, section or key as 0 and does not
// say so; the program reports the difference.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "files/camera_notes.h"
#include "files/output_files.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct CameraFile {
  FishEyeCalibrationParam param{};
  // "camera.ini:7:6: fx is not a number: ...", "camera.ini: missing and read as 0: fy, u0"
  std::vector<std::string> complaints;
};

// What is wrong with the text of a parameter file. Fails as bad input if the section is missing.
std::vector<std::string> inspectCameraText(const std::string& name, std::string_view text);

// Fails as bad input if there is no such file or it has no camera section.
CameraFile loadCamera(const std::filesystem::path& path);

// Stages the record and the notes over the file at `path`, which keeps its other sections and
// comments.
void stageCamera(OutputFiles& files, const std::filesystem::path& path,
                 const FishEyeCalibrationParam& param, const CameraNotes& notes);

}  // namespace fisheye_calibration::program
