#include "geometry/stitched_canvas.h"

#include <string>

#include "base/failure.h"

namespace fisheye_calibration::program {

FrameBuffer newCanvas(StitchPair& pair) {
  StitchCamera& l = pair.left;
  StitchCamera& r = pair.right;
  ImageLong width = 0;
  ImageLong height = 0;
  int bits = 0;
  if (!ComputeStitchedImageSize(l.frame.data(), l.frame.size.width, l.frame.size.height,
                                l.frame.bitCount, l.param, l.points, r.frame.data(),
                                r.frame.size.width, r.frame.size.height, r.frame.bitCount, r.param,
                                r.points, width, height, bits)) {
    failJob("the library could not pair the shared points");
  }
  if (width > kLargestImageSide || height > kLargestImageSide) {
    failJob("the stitched picture would have " + std::to_string(width) + "x" +
            std::to_string(height) + " pixels; the views do not fit together");
  }
  return blankBuffer({static_cast<int>(width), static_cast<int>(height)}, bits);
}

DualFishEyeCalibrationParam stitchOnto(FrameBuffer& canvas, StitchPair& pair) {
  StitchCamera& l = pair.left;
  StitchCamera& r = pair.right;
  DualFishEyeCalibrationParam dual{};
  if (!FishEyeImageStitching(l.frame.data(), l.frame.size.width, l.frame.size.height,
                             l.frame.bitCount, l.param, l.points, r.frame.data(),
                             r.frame.size.width, r.frame.size.height, r.frame.bitCount, r.param,
                             r.points, canvas.data(), canvas.size.width, canvas.size.height,
                             canvas.bitCount, dual)) {
    failJob("the library could not stitch the frames");
  }
  return dual;
}

void addRowsBelow(FrameBuffer& canvas, int rows) {
  const Size size = {.width = canvas.size.width, .height = rows};
  const FrameBuffer added = blankBuffer(size, canvas.bitCount);
  // The buffer begins with the picture's lowest row.
  canvas.bytes.insert(canvas.bytes.begin(), added.bytes.begin(), added.bytes.end());
  canvas.size.height += rows;
}

FrameBuffer cutOut(FrameBuffer& canvas, const Crop& crop, DualFishEyeCalibrationParam& dual) {
  FrameBuffer cut = blankBuffer(crop.size, canvas.bitCount);
  DualCam_CroppingImage(canvas.data(), canvas.size.width, canvas.size.height, canvas.bitCount,
                        crop.left, crop.top, dual, cut.data(), crop.size.width, crop.size.height);
  return cut;
}

}  // namespace fisheye_calibration::program
