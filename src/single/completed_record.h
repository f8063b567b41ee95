// The steps of a calibration after the solver: from a camera and a pose to the whole record.
#pragma once

#include <cstdlib>
#include <vector>

#include "fisheye_calibration.h"
#include "lens/camera.h"

namespace fisheye_calibration::single {

// Where k2...k5, which have no meaning, come from: a C runtime's rand() (compatibility 14), or
// kZeroFiller for zeros. A process may hold several runtimes, each with a generator of its own.
using Filler = int (*)();
inline constexpr Filler kZeroFiller = nullptr;

// Stores the camera and the pose of the target in `param`, fills k2...k5, stores
// the reprojection of every point in the point, its root mean square in `reprojectionError`
// (pixels), and fits the second correction for a corrected image of the given size. Returns false
// if no second correction is found; everything else has been stored all the same (compatibility
// 17).
bool completeRecord(const lens::Camera& camera, const lens::Pose& pose,
                    std::vector<CalibrationPoint>& points, ImageLong correctedWidth,
                    ImageLong correctedHeight, FishEyeCalibrationParam& param,
                    double& reprojectionError, Filler filler = std::rand);

}  // namespace fisheye_calibration::single
