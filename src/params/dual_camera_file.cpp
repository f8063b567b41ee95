// The parameter file of a stitched image.
#include "params/parameter_files.h"
#include "params/record_file.h"

namespace fisheye_calibration::params {
namespace {

using Record = DualFishEyeCalibrationParam;

// The missing "t" is part of the file format (compatibility 6).
constexpr const char* kSection = "DualCamerasCalibraionParam";

constexpr std::array<Field<Record>, 7> kFields{{
    {"Pixel", &Record::Pixel},
    {"StdImageWidth", &Record::StdImageWidth},
    {"StdImageHeight", &Record::StdImageHeight},
    {"DatumImagePtX", &Record::DatumImagePtX},
    {"DatumImagePtY", &Record::DatumImagePtY},
    // Read back as whole world units, truncated toward zero (compatibility 10).
    {"DatumPtXw", &Record::DatumPtXw, Reading::kThroughInteger},
    {"DatumPtYw", &Record::DatumPtYw, Reading::kThroughInteger},
}};

}  // namespace

bool saveDualCameraFile(const platform::ProfilePath& path,
                        const DualFishEyeCalibrationParam& param) {
  return saveRecord(path, kSection, kFields, param);
}

bool loadDualCameraFile(const platform::ProfilePath& path, DualFishEyeCalibrationParam& param) {
  return loadRecord(path, kSection, kFields, param);
}

}  // namespace fisheye_calibration::params

using namespace fisheye_calibration::params;

bool SaveDualCamerasCalibrationParam(const char* path, DualFishEyeCalibrationParam param) {
  saveDualCameraFile(path, param);
  return true;
}

bool LoadDualCamerasCalibrationParam(const char* path, DualFishEyeCalibrationParam& param) {
  loadDualCameraFile(path, param);
  return true;
}
