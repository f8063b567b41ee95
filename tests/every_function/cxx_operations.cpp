// The functions of fisheye_calibration.h.
#include "every_function/operation_lists.h"

namespace every_function {
namespace {

void calibrate(const Inputs& /*in*/, Outputs& out) {
  out.result = SingleCamCalibration(nullptr, kWidth, kHeight, 8, out.points, kWidth, kHeight,
                                    out.camera, out.numbers[0]);
}

void correct(const Inputs& in, Outputs& out) {
  const plain::StitchCamera& camera = in.rig.first;
  out.result =
      SingleCamCorrected(readable(camera.image), camera.width, camera.height, kBits, camera.param,
                         out.pixels.data(), kViewWidth, kViewHeight, out.mask.data());
}

void mapRawToCorrected(const Inputs& in, Outputs& out) {
  out.result =
      RawImageToCorrectedImagePoint(300, 200, in.camera, out.coordinates[0], out.coordinates[1]);
}

void mapWorldToRaw(const Inputs& in, Outputs& out) {
  out.result = WorldToRawImagePoint(90, 80, 5, in.camera, out.coordinates[0], out.coordinates[1]);
}

void mapWorldToCorrected(const Inputs& in, Outputs& out) {
  out.result = WorldToCorrectedImagePoint(90, 80, 5, in.camera, 320, 240, out.coordinates[0],
                                          out.coordinates[1]);
}

void mapWorldToSecondCorrected(const Inputs& in, Outputs& out) {
  out.result = WorldToSecondCorrectedImagePoint(90, 80, 0, in.camera, 320, 240, out.coordinates[0],
                                                out.coordinates[1]);
}

void mapRawToWorld(const Inputs& in, Outputs& out) {
  out.result = RawImageToWorldPoint(300, 200, in.camera, out.coordinates[0], out.coordinates[1],
                                    out.coordinates[2]);
}

void mapCorrectedToWorld(const Inputs& in, Outputs& out) {
  out.result = CorrectedImageToWorldPoint(300, 200, 320, 240, in.camera, out.coordinates[0],
                                          out.coordinates[1], out.coordinates[2]);
}

void crop(const Inputs& in, Outputs& out) {
  const plain::StitchCamera& camera = in.rig.first;
  CroppingImage(readable(camera.image), camera.width, camera.height, kBits, out.pixels.data(),
                kViewWidth, kViewHeight);
  out.result = true;
}

void fitAffine(const Inputs& in, Outputs& out) {
  out.result = HandEyeCalibration(in.points, out.numbers.data(), out.numbers[6], out.numbers[7]);
}

// More points than none would open a window.
void straighten(const Inputs& /*in*/, Outputs& out) {
  out.result =
      GetPerspectiveTransformationParam({}, out.numbers.data(), out.numbers[6], out.numbers[7]);
}

void findCommonPoints(const Inputs& in, Outputs& out) {
  out.points.clear();
  out.others.clear();
  GetCommonPoints(in.rig.first.points, in.rig.second.points, 40, out.points, out.others);
  out.result = true;
}

void sizeStitched(const Inputs& in, Outputs& out) {
  const auto& [first, second] = in.rig;
  out.result = ComputeStitchedImageSize(readable(first.image), first.width, first.height, kBits,
                                        first.param, first.points, readable(second.image),
                                        second.width, second.height, kBits, second.param,
                                        second.points, out.width, out.height, out.count);
}

void stitch(const Inputs& in, Outputs& out) {
  const auto& [first, second] = in.rig;
  out.result = FishEyeImageStitching(
      readable(first.image), first.width, first.height, kBits, first.param, first.points,
      readable(second.image), second.width, second.height, kBits, second.param, second.points,
      out.pixels.data(), kCanvasWidth, kCanvasHeight, kBits, out.dual);
}

void cropStitched(const Inputs& in, Outputs& out) {
  const plain::StitchCamera& camera = in.rig.first;
  DualCam_CroppingImage(readable(camera.image), camera.width, camera.height, kBits, 3, 2, out.dual,
                        out.pixels.data(), 16, 12);
  out.result = true;
}

void mapWorldToStitched(const Inputs& in, Outputs& out) {
  out.result = DualCam_WorldToSecondCorrectedImagePoint(90, 80, 0, in.dual, out.coordinates[0],
                                                        out.coordinates[1]);
}

void mapStitchedToWorld(const Inputs& in, Outputs& out) {
  DualCam_CorrectedImageToWorldPoint(30, 20, in.dual, out.coordinates[0], out.coordinates[1],
                                     out.coordinates[2]);
  out.result = true;  // it returns false
}

}  // namespace

std::vector<Operation> operationsOfCxx() {
  return {
      {"SingleCamCalibration", calibrate, false},
      {"SingleCamCorrected", correct, false},
      {"RawImageToCorrectedImagePoint", mapRawToCorrected, false},
      {"WorldToRawImagePoint", mapWorldToRaw, false},
      {"WorldToCorrectedImagePoint", mapWorldToCorrected, false},
      {"WorldToSecondCorrectedImagePoint", mapWorldToSecondCorrected, false},
      {"RawImageToWorldPoint", mapRawToWorld, false},
      {"CorrectedImageToWorldPoint", mapCorrectedToWorld, false},
      {"CroppingImage", crop, false},
      {"HandEyeCalibration", fitAffine, false},
      {"GetPerspectiveTransformationParam", straighten, false},
      {"GetCommonPoints", findCommonPoints, false},
      {"ComputeStitchedImageSize", sizeStitched, false},
      {"FishEyeImageStitching", stitch, false},
      {"DualCam_CroppingImage", cropStitched, false},
      {"DualCam_WorldToSecondCorrectedImagePoint", mapWorldToStitched, false},
      {"DualCam_CorrectedImageToWorldPoint", mapStitchedToWorld, false},
  };
}

}  // namespace every_function
