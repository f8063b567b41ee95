// The parameter file of one camera.
#include "fisheye_calibration.h"
#include "params/record_file.h"

namespace {

using Camera = FishEyeCalibrationParam;
using params::Reading;

// The missing "t" is part of the file format.
constexpr const char* sectionName = "CalibraionParam";

constexpr std::array<params::Field<Camera>, 41> fields{{
    {"u0", &Camera::u0},
    {"v0", &Camera::v0},
    {"fx", &Camera::fx},
    {"fy", &Camera::fy},
    {"skewness", &Camera::skewness},
    {"k0", &Camera::k0, Reading::ThroughFloat},
    {"k1", &Camera::k1, Reading::ThroughFloat},
    {"k2", &Camera::k2, Reading::ThroughFloat},
    {"k3", &Camera::k3, Reading::ThroughFloat},
    {"k4", &Camera::k4, Reading::ThroughFloat},
    {"k5", &Camera::k5, Reading::ThroughFloat},
    {"R1", &Camera::R1},
    {"R2", &Camera::R2},
    {"R3", &Camera::R3},
    {"R4", &Camera::R4},
    {"R5", &Camera::R5},
    {"R6", &Camera::R6},
    {"R7", &Camera::R7},
    {"R8", &Camera::R8},
    {"R9", &Camera::R9},
    {"Rx", &Camera::Rx},
    {"Ry", &Camera::Ry},
    {"Rz", &Camera::Rz},
    {"Tx", &Camera::Tx},
    {"Ty", &Camera::Ty},
    {"Tz", &Camera::Tz},
    {"p1", &Camera::p1},
    {"p2", &Camera::p2},
    {"p3", &Camera::p3},
    {"p4", &Camera::p4},
    {"p5", &Camera::p5},
    {"p6", &Camera::p6},
    {"p7", &Camera::p7},
    {"p8", &Camera::p8},
    {"p9", &Camera::p9},
    {"Pixel", &Camera::Pixel},
    {"DatumPtXw", &Camera::DatumPtXw},
    {"DatumPtYw", &Camera::DatumPtYw},
    // Written twice over: that is the known sequence of writes, and the file holds the key once.
    {"DatumPtYw", &Camera::DatumPtYw, Reading::Skipped},
    {"ImageDx", &Camera::ImageDx},
    {"ImageDy", &Camera::ImageDy},
}};

}  // namespace

bool SaveCalibrationParam(const char* path, FishEyeCalibrationParam param) {
  params::saveRecord(path, sectionName, fields, param);
  return true;
}

bool LoadCalibrationParam(const char* path, FishEyeCalibrationParam& param) {
  params::loadRecord(path, sectionName, fields, param);
  return true;
}
