#pragma once

#include "contestants.h"
#include "scenes.h"

namespace bench {

// Whether samples of a view, spread at random and including its corners, have the bytes of the
// plain derivation, computed pixel by pixel. For views whose maps would not fit the memory. Names
// differences on standard error.
bool hasPlainBytesInSamples(const Scene& scene, const View& view);

}  // namespace bench
