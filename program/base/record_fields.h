// The fields of a camera record with their units and meaning.
#pragma once

#include <span>

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct RecordField {
  const char* name;  // also the key in the parameter file
  const char* unit;
  const char* meaning;
  double (*value)(const FishEyeCalibrationParam&);
};

// In the order of the parameter file.
std::span<const RecordField> recordFields();

}  // namespace fisheye_calibration::program
