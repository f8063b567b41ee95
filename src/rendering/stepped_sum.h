// The rounded result of many equal additions without performing each of them.
#pragma once

namespace fisheye_calibration::rendering {

// start + step + step + ... with `count` additions, each rounded to double. The time grows with the
// number of binades that the sum passes through, not with the count; beyond 2^1023 with the count.
double steppedSum(double start, double step, int count);

}  // namespace fisheye_calibration::rendering
