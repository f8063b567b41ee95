#include "files/camera_file.h"

#include <cmath>
#include <fstream>
#include <system_error>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/record_fields.h"
#include "files/ini_section.h"
#include "files/read_file.h"

namespace fisheye_calibration::program {
namespace {

// The file format's own spelling.
constexpr const char* kSectionName = "CalibraionParam";

}  // namespace

std::vector<std::string> inspectCameraText(const std::string& name, std::string_view text) {
  const IniSection section = requireIniSection(name, text, kSectionName, "a camera file");
  std::vector<std::string> keys;
  for (const RecordField& field : recordFields()) {
    keys.emplace_back(field.name);
  }
  return inspectEntries(name, section, keys);
}

CameraFile loadCamera(const std::filesystem::path& path) {
  CameraFile camera;
  camera.complaints = inspectCameraText(nameOf(path), readFile(path));
  LoadCalibrationParam(absoluteNameOf(path).c_str(), camera.param);
  return camera;
}

void stageCamera(OutputFiles& files, const std::filesystem::path& path,
                 const FishEyeCalibrationParam& param, const CameraNotes& notes) {
  const std::filesystem::path temporary = files.stageCopy(path);
  SaveCalibrationParam(nameOf(temporary).c_str(), param);
  // The library does not report whether it could write, so the record is read back.
  FishEyeCalibrationParam stored{};
  LoadCalibrationParam(nameOf(temporary).c_str(), stored);
  std::error_code error;
  const bool same = std::abs(stored.u0 - param.u0) <= 1e-5f * std::abs(param.u0) + 1e-6f &&
                    std::abs(stored.Pixel - param.Pixel) <= 1e-5f * std::abs(param.Pixel) + 1e-6f;
  const bool finite = std::isfinite(param.u0) && std::isfinite(param.Pixel);
  if (!std::filesystem::exists(temporary, error) || (finite && !same)) {
    failJob(nameOf(path) + ": the camera could not be saved");
  }
  const std::string text = withNotes(readFile(temporary), notes);
  std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
  file.close();
  if (!file) {
    failJob(nameOf(path) + ": the camera could not be saved");
  }
}

}  // namespace fisheye_calibration::program
