// A camera file, read with everything doubtful about it told.
#ifndef HOST_CHECKED_CAMERA_H
#define HOST_CHECKED_CAMERA_H

#include <iosfwd>
#include <string>

#include "fisheye_calibration.h"

namespace host {

// Fails as bad input like loadCamera; what else is wrong goes to `messages` as warnings.
FishEyeCalibrationParam loadCheckedCamera(const std::string& path, std::ostream& messages);

}  // namespace host

#endif  // HOST_CHECKED_CAMERA_H
