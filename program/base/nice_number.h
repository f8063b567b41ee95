// Round numbers for scales and contours.
#pragma once

namespace fisheye_calibration::program {

// The largest (smallest) of 1, 2 and 5 times a power of ten that is not above (below) `value`.
double niceBelow(double value);
double niceAbove(double value);

}  // namespace fisheye_calibration::program
