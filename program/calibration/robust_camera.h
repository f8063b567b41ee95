// The robust solver of the library, asked by the program: from views of targets to a camera record
// and the uncertainty that comes with it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/size.h"
#include "calibration/picture_choice.h"
#include "fisheye_calibration.h"
#include "geometry/calibration_result.h"
#include "robust/bed_error.h"
#include "robust/planned_views.h"
#include "robust/robust_calibration.h"

namespace fisheye_calibration::program {

struct TargetView {
  std::string name;  // of the file that it was read from
  std::vector<CalibrationPoint> points;
};

struct RobustRequest {
  std::vector<TargetView> views;
  std::size_t bedView = 0;  // its target lies on the bed, at Z = 0
  Size image;
  PictureWish picture;
  std::optional<robust::HeldLens> lens;
  bool keepAll = false;
};

struct RobustCamera {
  robust::RobustCalibration solved;
  robust::BedView bed;       // camera, pose and covariance of the bed's view
  CalibrationResult result;  // the record, and the bed view's points with their reprojections
};

// Fails as a job, naming the view, if the solver refuses.
RobustCamera solveRobustly(const RobustRequest& request);

// What stands for the robust camera where another solver's is used after a refusal: no camera and
// no covariance, and all points and views in use.
RobustCamera unsolvedCamera(const RobustRequest& request);

inline bool isSolved(const RobustCamera& camera) {
  return camera.solved.status == robust::RobustStatus::kSolved;
}

// Why the solver refused: "board.png: more than a fifth of the points contradict the others".
std::string refusalText(const robust::RobustCalibration& solved,
                        const std::vector<TargetView>& views);

// The ids of the points of a view that contradict the others.
std::vector<int> wrongIds(const robust::RobustCalibration& solved,
                          const std::vector<TargetView>& views, std::size_t view);

// The views in use as they were taken, the bed's first, for planning further ones.
std::vector<robust::PlannedView> takenViews(const RobustCamera& camera,
                                            const RobustRequest& request);

}  // namespace fisheye_calibration::program
