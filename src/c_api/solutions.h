// From the solutions of the C interface to those of the library.
#pragma once

#include "fisheye_calibration_c.h"
#include "robust/bed_error.h"

namespace fisheye_calibration::c_api {

robust::BedView bedViewOf(const fcal_solution& solution);

fcal_solution solutionOf(const robust::BedView& view);

}  // namespace fisheye_calibration::c_api
