#include "every_function/operations.h"

#include <cmath>
#include <cstddef>
#include <cstring>

#include "every_function/operation_lists.h"
#include "support/synthetic_rig.h"

namespace every_function {
namespace {

Points targetSeen(double tilt) {
  const support::RigCamera camera{
      .imageSize = {kWidth, kHeight}, .fx = 205, .fy = 204, .cx = 322, .cy = 237};
  const support::Bed bed{.columns = 5, .rows = 4, .spacing = 70};
  return support::calibrationPoints(
      seen(camera, bed, support::poseOver(bed, 260, 0.1 + tilt, -0.05, 0.1), 0.1));
}

template <class T>
void append(std::string& bytes, const T* values, std::size_t count) {
  if (count > 0) bytes.append(reinterpret_cast<const char*>(values), count * sizeof(T));
}

template <class T>
void append(std::string& bytes, const std::vector<T>& values) {
  append(bytes, values.data(), values.size());
}

// Without the bytes between fields and the filler, which is random.
void append(std::string& bytes, const FishEyeCalibrationParam& camera) {
  append(bytes, &camera.u0, 5);
  append(bytes, &camera.k0, 2);
  append(bytes, &camera.R1, 15);
  append(bytes, &camera.p1, 9);
  append(bytes, &camera.Pixel, 5);
}

}  // namespace

Inputs::Inputs() : points(targetSeen(0)), tilted(targetSeen(0.35)) {
  Points measured = points;
  double error = 0;
  SingleCamCalibration(nullptr, kWidth, kHeight, 8, measured, kWidth, kHeight, camera, error);
  dual = {.Pixel = 0.5F,
          .StdImageWidth = 100,
          .StdImageHeight = 60,
          .DatumImagePtX = 40,
          .DatumImagePtY = 30,
          .DatumPtXw = 12,
          .DatumPtYw = -7};
  support::Random random(5);
  rig = rigs::randomRig(random, kBits);
  const fcal_target_view views[] = {{pointsOf(points), countOf(points)},
                                    {pointsOf(tilted), countOf(tilted)}};
  fcal_views_result result{};
  result.size = sizeof result;
  std::vector<fcal_solution> solutions(2);
  fcal_calibrate_views(kWidth, kHeight, views, 2, nullptr, &result, solutions.data(), nullptr,
                       nullptr);
  solution = solutions[0];
}

Outputs freshOutputs(const Inputs& inputs) {
  Outputs outputs;
  outputs.points = inputs.points;
  outputs.others = inputs.points;
  outputs.pixels.assign(std::size_t{kCanvasWidth} * kCanvasHeight * kBits / 8, 90);
  outputs.mask.assign(std::size_t{kCanvasWidth} * kCanvasHeight, 91);
  outputs.numbers.assign(16, -7);
  outputs.coordinates.assign(16, -7);
  outputs.camera = inputs.camera;
  outputs.camera.u0 += 1;  // so that what is written shows
  outputs.camera.p3 += 1;
  outputs.dual = inputs.dual;
  outputs.solutions.resize(2);
  outputs.views.size = sizeof outputs.views;
  outputs.points.reserve(64);
  outputs.others.reserve(64);
  return outputs;
}

std::string bytesOf(const Outputs& outputs) {
  std::string bytes;
  append(bytes, outputs.points);
  append(bytes, outputs.others);
  append(bytes, outputs.pixels);
  append(bytes, outputs.mask);
  append(bytes, outputs.camera);
  append(bytes, &outputs.dual, 1);
  append(bytes, outputs.numbers);
  append(bytes, outputs.coordinates);
  append(bytes, &outputs.width, 1);
  append(bytes, &outputs.height, 1);
  append(bytes, &outputs.count, 1);
  append(bytes, outputs.solutions);
  append(bytes, &outputs.views, 1);
  return bytes;
}

std::string bytesOf(const Inputs& inputs) {
  std::string bytes;
  append(bytes, inputs.points);
  append(bytes, inputs.tilted);
  append(bytes, inputs.camera);
  append(bytes, &inputs.dual, 1);
  for (const auto* camera : {&inputs.rig.first, &inputs.rig.second}) {
    append(bytes, camera->image);
    append(bytes, camera->points);
    append(bytes, camera->param);
  }
  append(bytes, &inputs.solution, 1);
  return bytes;
}

const std::vector<Operation>& operations() {
  static const std::vector<Operation> all = [] {
    std::vector<Operation> both = operationsOfCxx();
    for (const Operation& operation : operationsOfC()) both.push_back(operation);
    return both;
  }();
  return all;
}

}  // namespace every_function
