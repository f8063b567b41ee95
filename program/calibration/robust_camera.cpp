#include "calibration/robust_camera.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "base/failure.h"
#include "robust/wrong_points.h"
#include "single/completed_record.h"
#include "single/solver_view.h"

namespace fisheye_calibration::program {
namespace {

const char* reasonOf(robust::RobustStatus status) {
  switch (status) {
    case robust::RobustStatus::kSolved:
      return "";
    case robust::RobustStatus::kBadInput:
      return "the points are not usable numbers";
    case robust::RobustStatus::kTooFewPoints:
      return "too few points to determine the camera";
    case robust::RobustStatus::kDegenerate:
      return "the points do not determine the camera";
    case robust::RobustStatus::kBehindCamera:
      return "no camera has these points in front of it";
    case robust::RobustStatus::kFoldedLens:
      return "the lens that fits these points best folds back before the outermost of them";
    case robust::RobustStatus::kNotConverged:
      return "the solver does not converge with these points";
    case robust::RobustStatus::kTooManyWrongPoints:
      return "more than a fifth of the points contradict the others; is the target flat, and do "
             "its "
             "world coordinates belong to it? (--keep-all uses them)";
    case robust::RobustStatus::kTooManyWrongViews:
      return "more than a fifth of the views contradict the others; are they all of the same "
             "camera "
             "and zoom? (--keep-all uses them)";
  }
  return "";
}

std::vector<solver::ViewPoints> solverViews(const std::vector<TargetView>& views) {
  std::vector<solver::ViewPoints> all;
  all.reserve(views.size());
  for (const TargetView& view : views) {
    all.push_back(single::solverView(view.points));
  }
  return all;
}

bool contains(const std::vector<std::size_t>& all, std::size_t one) {
  return std::find(all.begin(), all.end(), one) != all.end();
}

double rmsOver(const std::vector<CalibrationPoint>& points,
               const std::vector<std::size_t>& without) {
  double squares = 0;
  std::size_t count = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (!contains(without, i)) {
      squares +=
          points[i].ReprojErrX * points[i].ReprojErrX + points[i].ReprojErrY * points[i].ReprojErrY;
      ++count;
    }
  }
  return std::sqrt(squares / static_cast<double>(count));
}

}  // namespace

std::string refusalText(const robust::RobustCalibration& solved,
                        const std::vector<TargetView>& views) {
  const std::string name =
      solved.refusedView ? views[*solved.refusedView].name : views.front().name;
  return name + ": " + reasonOf(solved.status);
}

std::vector<int> wrongIds(const robust::RobustCalibration& solved,
                          const std::vector<TargetView>& views, std::size_t view) {
  std::vector<int> ids;
  for (const std::size_t i : solved.wrongPoints[view]) {
    ids.push_back(views[view].points[i].PointId);
  }
  return ids;
}

RobustCamera solveRobustly(const RobustRequest& request) {
  RobustCamera camera;
  camera.solved = robust::calibrateRobustly(solverViews(request.views),
                                            cv::Size(request.image.width, request.image.height),
                                            {.heldLens = request.lens, .keepAll = request.keepAll});
  if (camera.solved.status != robust::RobustStatus::kSolved) {
    failJob(refusalText(camera.solved, request.views));
  }
  if (!request.keepAll && contains(camera.solved.wrongViews, request.bedView)) {
    failJob(request.views[request.bedView].name +
            ": the view of the bed contradicts the other views");
  }
  camera.bed = {.camera = camera.solved.camera,
                .pose = camera.solved.poses[request.bedView],
                .covariance = camera.solved.covariance[request.bedView]};
  camera.result = withChosenPicture(request.picture, request.image, [&](const Size& size) {
    CalibrationResult result;
    result.points = request.views[request.bedView].points;
    result.corrected = size;
    result.homographyFound =
        single::completeRecord(camera.bed.camera, camera.bed.pose, result.points, size.width,
                               size.height, result.param, result.rms);
    return result;
  });
  if (!request.keepAll) {
    camera.result.rms = rmsOver(camera.result.points, camera.solved.wrongPoints[request.bedView]);
  }
  return camera;
}

RobustCamera unsolvedCamera(const RobustRequest& request) {
  RobustCamera camera;
  camera.solved.wrongPoints.resize(request.views.size());
  camera.solved.noiseSigma = std::numeric_limits<double>::quiet_NaN();
  return camera;
}

std::vector<robust::PlannedView> takenViews(const RobustCamera& camera,
                                            const RobustRequest& request) {
  std::vector<robust::PlannedView> taken;
  const auto add = [&](std::size_t j) {
    solver::ViewPoints points = single::solverView(request.views[j].points);
    if (!request.keepAll) {
      points = robust::without(points, camera.solved.wrongPoints[j]);
    }
    robust::PlannedView view;
    view.pose = camera.solved.poses[j];
    view.target.x = std::move(points.X);
    view.target.y = std::move(points.Y);
    taken.push_back(std::move(view));
  };
  add(request.bedView);
  for (std::size_t j = 0; j < request.views.size(); ++j) {
    if (j != request.bedView && !contains(camera.solved.wrongViews, j)) {
      add(j);
    }
  }
  return taken;
}

}  // namespace fisheye_calibration::program
