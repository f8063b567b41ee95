#include "single/calibration.h"

#include <new>
#include <opencv2/core.hpp>
#include <vector>

#include "c_api/arguments.h"
#include "c_api/causes.h"
#include "c_api/records.h"
#include "c_api/solutions.h"
#include "registration/hand_eye.h"
#include "single/completed_record.h"
#include "single/placed_view.h"

namespace fisheye_calibration::c_api {
namespace {

// The second correction is a homography.
constexpr std::size_t kFewestForRecord = 4;

struct RecordOutputs {
  std::span<fcal_point> points;
  fcal_camera& camera;
  double& rms;
};

// Runs solve(points, record, rms) on copies and stores what it has written: everything, or all but
// the second correction if it returns false.
template <class Solve>
fcal_status fill(const RecordOutputs& outputs, const Solve& solve) {
  std::vector<CalibrationPoint> points = recordsOf(outputs.points);
  FishEyeCalibrationParam record = recordOf(outputs.camera);
  double rms = 0;
  const bool isComplete = solve(points, record, rms);
  store(points, outputs.points);
  store(record, outputs.camera);
  outputs.rms = rms;
  return isComplete ? FCAL_OK : withoutResult("points", "no second correction fits them");
}

RecordOutputs checkedOutputs(fcal_point* points, int32_t count, int32_t correctedWidth,
                             int32_t correctedHeight, fcal_camera* camera, double* rms) {
  requirePositive(correctedWidth, "corrected_width");
  requirePositive(correctedHeight, "corrected_height");
  return {checkedArray(points, count, "points"), required(camera, "camera"), required(rms, "rms")};
}

}  // namespace
}  // namespace fisheye_calibration::c_api

using namespace fisheye_calibration;
using namespace fisheye_calibration::c_api;

// NOLINTBEGIN(readability-identifier-naming): parameters have their names in C

fcal_status fcal_calibrate(int32_t width, int32_t height, fcal_point* points, int32_t count,
                           int32_t corrected_width, int32_t corrected_height, fcal_camera* camera,
                           double* rms) {
  return guarded([&]() -> fcal_status {
    requirePositive(width, "width");
    requirePositive(height, "height");
    const RecordOutputs outputs =
        checkedOutputs(points, count, corrected_width, corrected_height, camera, rms);
    if (outputs.points.size() < single::kFewestPoints) {
      return withoutResult("points", "fewer than 9");
    }
    return fill(outputs, [&](auto& copies, auto& record, double& error) {
      return single::calibrate(cv::Size(width, height), copies,
                               cv::Size(corrected_width, corrected_height), single::kZeroFiller,
                               record, error);
    });
  });
}

fcal_status fcal_camera_of_solution(const fcal_solution* solution, fcal_point* points,
                                    int32_t count, int32_t corrected_width,
                                    int32_t corrected_height, fcal_camera* camera, double* rms) {
  return guarded([&]() -> fcal_status {
    const robust::BedView view = bedViewOf(required(solution, "solution"));
    if (view.camera.alpha != 0) {
      refuse("solution", "alpha is not 0");
    }
    const RecordOutputs outputs =
        checkedOutputs(points, count, corrected_width, corrected_height, camera, rms);
    if (outputs.points.size() < kFewestForRecord) {
      return withoutResult("points", "fewer than 4");
    }
    return fill(outputs, [&](auto& copies, auto& record, double& error) {
      return single::completeRecord(view.camera, view.pose, copies, corrected_width,
                                    corrected_height, record, error, single::kZeroFiller);
    });
  });
}

fcal_status fcal_place_view(double corner_xw, double corner_yw, float pixel, int32_t width,
                            int32_t height, fcal_camera* camera) {
  return guarded([&]() -> fcal_status {
    if (!(pixel > 0)) {
      refuse("pixel", "not positive");
    }
    requirePositive(width, "width");
    requirePositive(height, "height");
    FishEyeCalibrationParam record = recordOf(required(camera, "camera"));
    if (!single::placeSecondCorrection({corner_xw, corner_yw}, pixel, width, height, record)) {
      const Cause cause = causeOfNoView({corner_xw, corner_yw}, pixel, {width, height}, *camera);
      return withoutResult(cause.argument, cause.what);
    }
    store(record, *camera);
    return FCAL_OK;
  });
}

fcal_status fcal_fit_affine(const fcal_point* points, int32_t count, double coefficients[6],
                            double* error_x, double* error_y) {
  return guarded([&]() -> fcal_status {
    const auto list = checkedArray(points, count, "points");
    required(coefficients, "coefficients");
    double& errorX = required(error_x, "error_x");
    double& errorY = required(error_y, "error_y");
    if (list.size() < registration::kFewestPoints) {
      return withoutResult("points", "fewer than 3");
    }
    if (!registration::calibrateHandEye(recordsOf(list), registration::PairsFile::kOmit,
                                        coefficients, errorX, errorY)) {
      throw std::bad_alloc();  // the equations do not fit into memory
    }
    return FCAL_OK;
  });
}

fcal_status fcal_straighten(const fcal_point* points, int32_t count) {
  return guarded([&]() -> fcal_status {
    double unused[6] = {};
    if (!GetPerspectiveTransformationParam(recordsOf(checkedArray(points, count, "points")), unused,
                                           unused[0], unused[1])) {
      return withoutResult("points", "none");
    }
    return FCAL_OK;
  });
}

// NOLINTEND(readability-identifier-naming)
