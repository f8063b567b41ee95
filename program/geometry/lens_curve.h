// The lens curve theta_d = theta + k0 theta^2 + k1 theta^3 over the angle theta to the optical
// axis.
#pragma once

#include <optional>

namespace fisheye_calibration::program {

// The smallest angle above 0, radians, at which the curve stops rising; nothing if it rises up to
// pi/2. Beyond that angle, two world points are seen at the same pixel.
std::optional<double> turningAngle(double k0, double k1);

// theta_d / theta at 60 degrees. Real fisheye projections lie between 0.83 (orthographic) and 1.10
// (stereographic).
double lensShape(double k0, double k1);

}  // namespace fisheye_calibration::program
