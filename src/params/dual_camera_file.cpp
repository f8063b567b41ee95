// The parameter file of a stitched image.
#include "fisheye_calibration.h"
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
}  // namespace fisheye_calibration::params

using namespace fisheye_calibration::params;

bool SaveDualCamerasCalibrationParam(const char* path, DualFishEyeCalibrationParam param) {
  saveRecord(path, kSection, kFields, param);
  return true;
}

bool LoadDualCamerasCalibrationParam(const char* path, DualFishEyeCalibrationParam& param) {
  loadRecord(path, kSection, kFields, param);
  return true;
}
