#pragma once

namespace fisheye {

// start + step + step + ... with `count` additions, each rounded to double as it is made. Takes
// time that grows with the logarithm of the count.
double steppedSum(double start, double step, int count);

}  // namespace fisheye
