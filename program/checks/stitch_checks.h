// What makes a stitch meaningless or poor, seen before it is made.
#ifndef HOST_STITCH_CHECKS_H
#define HOST_STITCH_CHECKS_H

#include <vector>

#include "checks/finding.h"
#include "geometry/stitch_pair.h"

namespace host {

std::vector<Finding> checkStitch(const StitchPair& pair);

}  // namespace host

#endif  // HOST_STITCH_CHECKS_H
