// The calibrations, and what the cameras that they give may be off by.
#include <pybind11/stl.h>

#include <optional>
#include <vector>

#include "arrays.h"

namespace fisheye_calibration::python {
namespace {

using Solutions = Array<fcal_solution>;

py::tuple calibrate(std::int32_t width, std::int32_t height, Points points, std::int32_t viewWidth,
                    std::int32_t viewHeight) {
  Array<fcal_camera> camera = newRecord<fcal_camera>();
  fcal_camera* const record = camera.mutable_data();
  fcal_point* const list = points.mutable_data();
  const std::int32_t count = countOf(points.size(), "points");
  double rms = 0;
  run([&] {
    return fcal_calibrate(width, height, list, count, viewWidth, viewHeight, record, &rms);
  });
  return py::make_tuple(camera, rms);
}

fcal_views_options optionsOf(bool whiteNoise, bool prior, bool keepAll, double startFocalFactor,
                             const std::optional<Solutions>& heldLens) {
  fcal_views_options options{};
  options.size = sizeof options;
  options.noise = whiteNoise ? FCAL_NOISE_WHITE : FCAL_NOISE_SMOOTH;
  options.no_prior = prior ? 0 : 1;
  options.keep_all = keepAll ? 1 : 0;
  options.start_focal_factor = startFocalFactor;
  options.held_lens = heldLens ? recordOf(*heldLens, "lens") : nullptr;
  return options;
}

py::tuple calibrateViews(std::int32_t width, std::int32_t height, const std::vector<Points>& views,
                         bool whiteNoise, bool prior, bool keepAll, double startFocalFactor,
                         const std::optional<Solutions>& heldLens) {
  std::vector<fcal_target_view> targets;
  py::ssize_t total = 0;
  for (const Points& view : views) {
    targets.push_back({view.data(), countOf(view.size(), "views")});
    total += view.size();
  }
  const std::int32_t viewCount = countOf(static_cast<py::ssize_t>(views.size()), "views");
  const fcal_views_options options =
      optionsOf(whiteNoise, prior, keepAll, startFocalFactor, heldLens);
  fcal_views_result result{};
  result.size = sizeof result;
  Solutions solutions(viewCount);
  Array<bool> wrongPoints(total);
  Array<bool> wrongViews(viewCount);
  static_assert(sizeof(bool) == 1);
  fcal_solution* const solved = solutions.mutable_data();
  auto* const points = reinterpret_cast<std::uint8_t*>(wrongPoints.mutable_data());
  auto* const wrong = reinterpret_cast<std::uint8_t*>(wrongViews.mutable_data());
  run([&] {
    const fcal_status status = fcal_calibrate_views(width, height, targets.data(), viewCount,
                                                    &options, &result, solved, points, wrong);
    if (status == FCAL_FALSE) {
      throw fcal::NoSolution(fcal_last_error(), result);
    }
    return status;
  });
  return py::make_tuple(result.rms, result.noise_sigma, result.noise_assumed != 0, result.steps,
                        solutions, wrongPoints, wrongViews);
}

py::tuple cameraOfSolution(const Solutions& solution, Points points, std::int32_t viewWidth,
                           std::int32_t viewHeight) {
  Array<fcal_camera> camera = newRecord<fcal_camera>();
  fcal_camera* const record = camera.mutable_data();
  const fcal_solution* const solved = recordOf(solution, "solution");
  fcal_point* const list = points.mutable_data();
  const std::int32_t count = countOf(points.size(), "points");
  double rms = 0;
  run([&] {
    return fcal_camera_of_solution(solved, list, count, viewWidth, viewHeight, record, &rms);
  });
  return py::make_tuple(camera, rms);
}

Solutions solutionOfCamera(const Array<fcal_camera>& camera) {
  Solutions solution = newRecord<fcal_solution>();
  fcal_solution* const fields = solution.mutable_data();
  const fcal_camera* const record = recordOf(camera, "camera");
  run([&] { return fcal_solution_of_camera(record, fields); });
  return solution;
}

void placeView(double cornerX, double cornerY, float pixel, std::int32_t width, std::int32_t height,
               Array<fcal_camera> camera) {
  fcal_camera* const record = recordOf(camera, "camera");
  run([&] { return fcal_place_view(cornerX, cornerY, pixel, width, height, record); });
}

Array<double> rawToBed(const Solutions& solution, const Array<double>& raw) {
  const fcal_solution* const solved = recordOf(solution, "solution");
  const std::int32_t count = rowsOf(raw, 2, "raw");
  Array<double> bed({py::ssize_t{count}, py::ssize_t{2}});
  const double* const in = raw.data();
  double* const out = bed.mutable_data();
  run([&] { return fcal_raw_to_bed(solved, in, count, out); });
  return bed;
}

Array<double> bedErrors(const Solutions& solution, const std::optional<Solutions>& judged,
                        const Array<double>& bed) {
  const fcal_solution* const solved = recordOf(solution, "solution");
  const fcal_solution* const other = judged ? recordOf(*judged, "judged") : nullptr;
  const std::int32_t count = rowsOf(bed, 2, "bed");
  Array<double> errors(count);
  const double* const in = bed.data();
  double* const out = errors.mutable_data();
  run([&] {
    return other != nullptr ? fcal_bed_errors(solved, other, in, count, out)
                            : fcal_bed_bounds(solved, in, count, out);
  });
  return errors;
}

}  // namespace

void defineCalibrations(py::module_& module) {
  module.def("calibrate", &calibrate, py::arg("width"), py::arg("height"),
             py::arg("points").noconvert(), py::arg("view_width"), py::arg("view_height"));
  module.def("calibrate_views", &calibrateViews, py::arg("width"), py::arg("height"),
             py::arg("views").noconvert(), py::arg("white_noise"), py::arg("prior"),
             py::arg("keep_all"), py::arg("start_focal_factor"), py::arg("held_lens").noconvert());
  module.def("camera_of_solution", &cameraOfSolution, py::arg("solution").noconvert(),
             py::arg("points").noconvert(), py::arg("view_width"), py::arg("view_height"));
  module.def("solution_of_camera", &solutionOfCamera, py::arg("camera").noconvert());
  module.def("place_view", &placeView, py::arg("corner_x"), py::arg("corner_y"), py::arg("pixel"),
             py::arg("width"), py::arg("height"), py::arg("camera").noconvert());
  module.def("raw_to_bed", &rawToBed, py::arg("solution").noconvert(), py::arg("raw").noconvert());
  module.def("bed_errors", &bedErrors, py::arg("solution").noconvert(),
             py::arg("judged").noconvert(), py::arg("bed").noconvert());
}

}  // namespace fisheye_calibration::python
