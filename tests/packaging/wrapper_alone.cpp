// The C++17 wrapper alone, twice.
#include "fisheye_calibration.hpp"
