#include "files/dual_file.h"

#include <cmath>
#include <ostream>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "files/ini_section.h"
#include "files/read_file.h"

namespace fisheye_calibration::program {
namespace {

// The file format's own spelling.
constexpr const char* kSectionName = "DualCamerasCalibraionParam";

// The library reads the datum's world coordinates as whole numbers.
void warnOfFraction(const std::filesystem::path& path, const char* key, double value,
                    std::ostream& messages) {
  if (!std::isfinite(value) || value == std::trunc(value)) {
    return;
  }
  messages << "warning: " << nameOf(path) << ": " << key << " is " << general(value, 9)
           << ", but the library reads it back as " << fixed(std::trunc(value), 0)
           << "; points mapped with the file are off by "
           << general(std::abs(value - std::trunc(value)), 3) << " world units\n";
}

}  // namespace

DualFishEyeCalibrationParam loadCheckedDual(const std::filesystem::path& path, bool force,
                                            std::ostream& messages) {
  const IniSection section = requireIniSection(nameOf(path), readFile(path), kSectionName,
                                               "the file of a stitched picture");
  std::vector<std::string> complaints =
      inspectEntries(nameOf(path), section,
                     {"Pixel", "StdImageWidth", "StdImageHeight", "DatumImagePtX", "DatumImagePtY",
                      "DatumPtXw", "DatumPtYw"});
  DualFishEyeCalibrationParam param{};
  LoadDualCamerasCalibrationParam(absoluteNameOf(path).c_str(), param);
  if (!(param.Pixel > 0)) {
    complaints.push_back(nameOf(path) + ": Pixel must be greater than 0, it is " +
                         shortest(param.Pixel));
  }
  if (param.StdImageWidth <= 0 || param.StdImageHeight <= 0) {
    complaints.push_back(nameOf(path) + ": a picture of " + std::to_string(param.StdImageWidth) +
                         "x" + std::to_string(param.StdImageHeight) + " pixels");
  }
  reportImpossible(complaints, nameOf(path), force, messages);
  for (const IniEntry& entry : section.entries) {
    const auto value = parseNumber(entry.value);
    if (!value) {
      continue;
    }
    for (const char* key : {"DatumPtXw", "DatumPtYw"}) {
      if (equalIgnoringCase(entry.key, key)) {
        warnOfFraction(path, key, *value, messages);
      }
    }
  }
  return param;
}

void stageDual(OutputFiles& files, const std::filesystem::path& path,
               const DualFishEyeCalibrationParam& param) {
  const std::string temporary = nameOf(files.stageCopy(path));
  SaveDualCamerasCalibrationParam(temporary.c_str(), param);
  // The library does not report whether it could write, so the record is read back.
  DualFishEyeCalibrationParam stored{};
  LoadDualCamerasCalibrationParam(temporary.c_str(), stored);
  if (stored.StdImageWidth != param.StdImageWidth ||
      stored.StdImageHeight != param.StdImageHeight ||
      stored.DatumImagePtX != param.DatumImagePtX || stored.DatumImagePtY != param.DatumImagePtY ||
      stored.DatumPtXw != param.DatumPtXw || stored.DatumPtYw != param.DatumPtYw) {
    failJob(nameOf(path) + ": the record of the stitched picture could not be saved");
  }
}

}  // namespace fisheye_calibration::program
