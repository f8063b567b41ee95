// The parameter file of a stitched picture.
#pragma once

#include <iosfwd>
#include <string>

#include "files/output_files.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// Fails as bad input if there is no such file or it has no section of a stitched picture; what else
// is wrong with it goes to `messages` as warnings.
DualFishEyeCalibrationParam loadCheckedDual(const std::string& path, std::ostream& messages);

// Stages the record over the file at `path`; other sections and comments in it stay. Warns where
// the library's reading of the file will not give the record back.
void stageDual(OutputFiles& files, const std::string& path,
               const DualFishEyeCalibrationParam& param, std::ostream& messages);

}  // namespace fisheye_calibration::program
