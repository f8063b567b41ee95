// The functions of fisheye_calibration_c.h.
#include "every_function/operation_lists.h"

namespace every_function {
namespace {

fcal_image imageOf(const std::vector<unsigned char>& bytes, int width, int height, int bits) {
  return {readable(bytes), width, height, 0, bits};
}

fcal_rig_view viewOf(const plain::StitchCamera& camera) {
  return {imageOf(camera.image, camera.width, camera.height, camera.bits), cameraOf(camera.param),
          pointsOf(camera.points), countOf(camera.points)};
}

void cCalibrate(const Inputs& /*in*/, Outputs& out) {
  out.status = fcal_calibrate(kWidth, kHeight, pointsOf(out.points), countOf(out.points), kWidth,
                              kHeight, cameraOf(out.camera), out.numbers.data());
}

void cCorrect(const Inputs& in, Outputs& out) {
  const plain::StitchCamera& camera = in.rig.first;
  const fcal_image frame = imageOf(camera.image, camera.width, camera.height, kBits);
  const fcal_image view = imageOf(out.pixels, kViewWidth, kViewHeight, kBits);
  const fcal_image mask = imageOf(out.mask, kViewWidth, kViewHeight, 8);
  out.status = fcal_correct(&frame, cameraOf(camera.param), &view, &mask);
}

void cCrop(const Inputs& in, Outputs& out) {
  const plain::StitchCamera& camera = in.rig.first;
  const fcal_image source = imageOf(camera.image, camera.width, camera.height, kBits);
  const fcal_image target = imageOf(out.pixels, kViewWidth, kViewHeight, kBits);
  out.status = fcal_crop(&source, &target);
}

constexpr float kWorld[] = {90, 80, 5, 40, 30, 0};
constexpr float kPixels[] = {300, 200, 100, 90};

void cWorldToRaw(const Inputs& in, Outputs& out) {
  out.status = fcal_world_to_raw(cameraOf(in.camera), kWorld, 2, out.coordinates.data());
}

void cWorldToCorrected(const Inputs& in, Outputs& out) {
  out.status =
      fcal_world_to_corrected(cameraOf(in.camera), 320, 240, kWorld, 2, out.coordinates.data());
}

void cWorldToView(const Inputs& in, Outputs& out) {
  out.status =
      fcal_world_to_view(cameraOf(in.camera), 320, 240, kPixels, 2, out.coordinates.data());
}

void cViewToWorld(const Inputs& in, Outputs& out) {
  out.status =
      fcal_view_to_world(cameraOf(in.camera), 320, 240, kPixels, 2, out.coordinates.data());
}

void cRawToWorld(const Inputs& in, Outputs& out) {
  out.status = fcal_raw_to_world(cameraOf(in.camera), kPixels, 2, out.coordinates.data());
}

void cRawToCorrected(const Inputs& in, Outputs& out) {
  out.status =
      fcal_raw_to_corrected(cameraOf(in.camera), 320, 240, kPixels, 2, out.coordinates.data());
}

void cFitAffine(const Inputs& in, Outputs& out) {
  out.status = fcal_fit_affine(pointsOf(in.points), countOf(in.points), out.numbers.data(),
                               &out.numbers[6], &out.numbers[7]);
}

void cCommonPoints(const Inputs& in, Outputs& out) {
  const auto& [first, second] = in.rig;
  int needed = 0;
  out.status =
      fcal_common_points(pointsOf(first.points), countOf(first.points), pointsOf(second.points),
                         countOf(second.points), 40, pointsOf(out.points), countOf(out.points),
                         &out.count, pointsOf(out.others), countOf(out.others), &needed);
}

void cStitchedSize(const Inputs& in, Outputs& out) {
  const fcal_rig_view first = viewOf(in.rig.first);
  const fcal_rig_view second = viewOf(in.rig.second);
  std::int32_t width = -7;
  std::int32_t height = -7;
  out.status = fcal_stitched_size(&first, &second, &width, &height);
  out.width = width;
  out.height = height;
}

void cStitch(const Inputs& in, Outputs& out) {
  const fcal_rig_view first = viewOf(in.rig.first);
  const fcal_rig_view second = viewOf(in.rig.second);
  const fcal_image canvas = imageOf(out.pixels, kCanvasWidth, kCanvasHeight, kBits);
  out.status = fcal_stitch(&first, &second, &canvas, reinterpret_cast<fcal_dual*>(&out.dual));
}

void cCropStitched(const Inputs& in, Outputs& out) {
  const plain::StitchCamera& camera = in.rig.first;
  const fcal_image source = imageOf(camera.image, camera.width, camera.height, kBits);
  const fcal_image target = imageOf(out.pixels, 16, 12, kBits);
  out.status = fcal_crop_stitched(&source, 3, 2, &target, reinterpret_cast<fcal_dual*>(&out.dual));
}

const fcal_dual* dualOf(const Inputs& in) { return reinterpret_cast<const fcal_dual*>(&in.dual); }

void cWorldToStitched(const Inputs& in, Outputs& out) {
  out.status = fcal_world_to_stitched(dualOf(in), kPixels, 2, out.coordinates.data());
}

void cStitchedToWorld(const Inputs& in, Outputs& out) {
  out.status = fcal_stitched_to_world(dualOf(in), kPixels, 2, out.coordinates.data());
}

void cCalibrateViews(const Inputs& in, Outputs& out) {
  const fcal_target_view views[] = {{pointsOf(in.points), countOf(in.points)},
                                    {pointsOf(in.tilted), countOf(in.tilted)}};
  out.status = fcal_calibrate_views(kWidth, kHeight, views, 2, nullptr, &out.views,
                                    out.solutions.data(), out.mask.data(), out.mask.data() + 100);
}

void cCameraOfSolution(const Inputs& in, Outputs& out) {
  out.status = fcal_camera_of_solution(&in.solution, pointsOf(out.points), countOf(out.points),
                                       kWidth, kHeight, cameraOf(out.camera), out.numbers.data());
}

void cSolutionOfCamera(const Inputs& in, Outputs& out) {
  out.status = fcal_solution_of_camera(cameraOf(in.camera), out.solutions.data());
}

void cPlaceView(const Inputs& /*in*/, Outputs& out) {
  out.status = fcal_place_view(10, 20, 0.5F, 200, 100, cameraOf(out.camera));
}

constexpr double kPlaces[] = {90, 80, 200, 150};

void cRawToBed(const Inputs& in, Outputs& out) {
  out.status = fcal_raw_to_bed(&in.solution, kPlaces, 2, out.numbers.data());
}

void cBedBounds(const Inputs& in, Outputs& out) {
  out.status = fcal_bed_bounds(&in.solution, kPlaces, 2, out.numbers.data());
}

void cBedErrors(const Inputs& in, Outputs& out) {
  fcal_solution judged = in.solution;
  judged.fx *= 1.01;
  out.status = fcal_bed_errors(&in.solution, &judged, kPlaces, 2, out.numbers.data());
}

}  // namespace

std::vector<Operation> operationsOfC() {
  return {
      {"fcal_calibrate", cCalibrate, true},
      {"fcal_correct", cCorrect, true},
      {"fcal_crop", cCrop, true},
      {"fcal_world_to_raw", cWorldToRaw, true},
      {"fcal_world_to_corrected", cWorldToCorrected, true},
      {"fcal_world_to_view", cWorldToView, true},
      {"fcal_view_to_world", cViewToWorld, true},
      {"fcal_raw_to_world", cRawToWorld, true},
      {"fcal_raw_to_corrected", cRawToCorrected, true},
      {"fcal_fit_affine", cFitAffine, true},
      {"fcal_common_points", cCommonPoints, true},
      {"fcal_stitched_size", cStitchedSize, true},
      {"fcal_stitch", cStitch, true},
      {"fcal_crop_stitched", cCropStitched, true},
      {"fcal_world_to_stitched", cWorldToStitched, true},
      {"fcal_stitched_to_world", cStitchedToWorld, true},
      {"fcal_calibrate_views", cCalibrateViews, true},
      {"fcal_camera_of_solution", cCameraOfSolution, true},
      {"fcal_solution_of_camera", cSolutionOfCamera, true},
      {"fcal_place_view", cPlaceView, true},
      {"fcal_raw_to_bed", cRawToBed, true},
      {"fcal_bed_bounds", cBedBounds, true},
      {"fcal_bed_errors", cBedErrors, true},
  };
}

}  // namespace every_function
