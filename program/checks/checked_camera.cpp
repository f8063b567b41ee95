#include "checks/checked_camera.h"

#include <ostream>

#include "base/file_path.h"
#include "checks/record_checks.h"
#include "files/camera_file.h"

namespace fisheye_calibration::program {

FishEyeCalibrationParam loadCheckedCamera(const std::filesystem::path& path,
                                          std::ostream& messages) {
  const CameraFile camera = loadCamera(path);
  for (const std::string& complaint : camera.complaints) {
    messages << "warning: " << complaint << "\n";
  }
  for (const Finding& finding : checkRecord(camera.param)) {
    messages << "warning: " << nameOf(path) << ": " << finding.text << "\n";
  }
  return camera.param;
}

}  // namespace fisheye_calibration::program
