// The parameter file of one camera.
#include "params/parameter_files.h"
#include "params/record_file.h"

namespace fisheye_calibration::params {
namespace {

using Record = FishEyeCalibrationParam;

// The missing "t" is part of the file format (compatibility 6).
constexpr const char* kSection = "CalibraionParam";

constexpr std::array<Field<Record>, 41> kFields{{
    {"u0", &Record::u0},
    {"v0", &Record::v0},
    {"fx", &Record::fx},
    {"fy", &Record::fy},
    {"skewness", &Record::skewness},
    {"k0", &Record::k0, Reading::kThroughFloat},
    {"k1", &Record::k1, Reading::kThroughFloat},
    {"k2", &Record::k2, Reading::kThroughFloat},
    {"k3", &Record::k3, Reading::kThroughFloat},
    {"k4", &Record::k4, Reading::kThroughFloat},
    {"k5", &Record::k5, Reading::kThroughFloat},
    {"R1", &Record::R1},
    {"R2", &Record::R2},
    {"R3", &Record::R3},
    {"R4", &Record::R4},
    {"R5", &Record::R5},
    {"R6", &Record::R6},
    {"R7", &Record::R7},
    {"R8", &Record::R8},
    {"R9", &Record::R9},
    {"Rx", &Record::Rx},
    {"Ry", &Record::Ry},
    {"Rz", &Record::Rz},
    {"Tx", &Record::Tx},
    {"Ty", &Record::Ty},
    {"Tz", &Record::Tz},
    {"p1", &Record::p1},
    {"p2", &Record::p2},
    {"p3", &Record::p3},
    {"p4", &Record::p4},
    {"p5", &Record::p5},
    {"p6", &Record::p6},
    {"p7", &Record::p7},
    {"p8", &Record::p8},
    {"p9", &Record::p9},
    {"Pixel", &Record::Pixel},
    {"DatumPtXw", &Record::DatumPtXw},
    {"DatumPtYw", &Record::DatumPtYw},
    // Written twice, to keep the sequence of writes; the file holds the key only once.
    {"DatumPtYw", &Record::DatumPtYw, Reading::kSkipped},
    {"ImageDx", &Record::ImageDx},
    {"ImageDy", &Record::ImageDy},
}};

}  // namespace

bool saveCameraFile(const platform::ProfilePath& path, const FishEyeCalibrationParam& param) {
  return saveRecord(path, kSection, kFields, param);
}

bool loadCameraFile(const platform::ProfilePath& path, FishEyeCalibrationParam& param) {
  return loadRecord(path, kSection, kFields, param);
}

}  // namespace fisheye_calibration::params

using namespace fisheye_calibration::params;

bool SaveCalibrationParam(const char* path, FishEyeCalibrationParam param) {
  saveCameraFile(path, param);
  return true;
}

bool LoadCalibrationParam(const char* path, FishEyeCalibrationParam& param) {
  loadCameraFile(path, param);
  return true;
}
