/* The calls that concern several views. */
#ifndef FISHEYE_CALIBRATION_TESTS_CSHARP_VIEWS_H
#define FISHEYE_CALIBRATION_TESTS_CSHARP_VIEWS_H

#include "fisheye_calibration_c.h"

/* Two views of `count` points each, at most 100. */
void solve_views(fcal_point* first, fcal_point* second, int count, int width, int height);

#endif
