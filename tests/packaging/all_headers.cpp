// A host may use the C++ interface, the C interface and the wrapper in one source.
#include "fisheye_calibration.h"
#include "fisheye_calibration.hpp"
#include "fisheye_calibration_c.h"

static_assert(sizeof(fcal::Camera) == sizeof(FishEyeCalibrationParam), "the same records");
