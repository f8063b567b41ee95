// hand-eye: the affine map from raw-image pixels to the work plane.
#ifndef HOST_HAND_EYE_COMMAND_H
#define HOST_HAND_EYE_COMMAND_H

#include <iosfwd>
#include <string>

namespace host {

struct HandEyeOptions {
  std::string points;
  std::string output;
  std::string plot;  // empty: none
};

int runHandEye(const HandEyeOptions& options, std::ostream& out);

}  // namespace host

#endif  // HOST_HAND_EYE_COMMAND_H
