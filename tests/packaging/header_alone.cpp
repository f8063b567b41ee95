// The public header alone, twice.
#include "fisheye_calibration.h"
