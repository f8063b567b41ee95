// The parameter file of a stitched picture.
#pragma once

#include <filesystem>
#include <iosfwd>

#include "files/output_files.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// Loads the file. Fails as bad input if there is no such file, if it has no section of a stitched
// picture or if something in it is impossible; with `force` it only warns of the latter.
DualFishEyeCalibrationParam loadCheckedDual(const std::filesystem::path& path, bool force,
                                            std::ostream& messages);

// Stages the record, whose datum is whole, over the file at `path`, which keeps its other sections
// and comments. Fails if the library would not read the same record back.
void stageDual(OutputFiles& files, const std::filesystem::path& path,
               const DualFishEyeCalibrationParam& param);

}  // namespace fisheye_calibration::program
