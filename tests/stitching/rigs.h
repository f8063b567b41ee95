// Two cameras over one bed, for the tests of the stitching.
#pragma once

#include <cstdint>
#include <vector>

#include "support/plain_stitching.h"
#include "support/synthetic_rig.h"

namespace rigs {

// A camera whose corrected view shows the frame as it is, up to scale, without distortion: the
// focal length is so long that the lens model is as good as straight. Every point of the frame is
// `value`.
plain::StitchCamera flatCamera(int width, int height, int bits, unsigned char value);

// Points with ids from 1 on the corners of a rectangle of the bed.
std::vector<CalibrationPoint> corners(float left, float top, float right, float bottom);

// Two cameras with random frames, lenses, corrections and point lists that share four to a dozen
// points. Sizes of the two are equal or different; all sizes are small.
struct Rig {
  plain::StitchCamera first;
  plain::StitchCamera second;
};
Rig randomRig(support::Random& random, int bits);

// The rig with the second camera's points turned about their centre, as if that camera were
// mounted turned.
Rig turned(Rig rig, double degrees);

// A random integer of low...high.
int whole(support::Random& random, int low, int high);

// The host's side of one call of FishEyeImageStitching.
struct Stitched {
  bool result = false;
  std::vector<unsigned char> canvas;
  DualFishEyeCalibrationParam dual{};
};
Stitched stitch(const Rig& rig, int width, int height, int bits, unsigned char fill);

// The same, the plain way.
Stitched stitchPlainly(const Rig& rig, int width, int height, int bits, unsigned char fill);

// One call of ComputeStitchedImageSize on outputs that were -7, -7 and -7.
struct Size {
  bool result = false;
  ImageLong width = -7;
  ImageLong height = -7;
  int bits = -7;
};
Size sizeOf(const Rig& rig);

bool same(const DualFishEyeCalibrationParam& a, const DualFishEyeCalibrationParam& b);

}  // namespace rigs
