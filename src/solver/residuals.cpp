#include "solver/residuals.h"

#include <cmath>

#include "lens/camera_model-inl.h"
#include "lens/rotation.h"

namespace fisheye_calibration::solver {
namespace {

namespace model = lens::HWY_NAMESPACE;

}  // namespace

std::vector<cv::Vec2d> reprojectionResiduals(const std::vector<ViewPoints>& views,
                                             const lens::Camera& camera,
                                             const std::vector<lens::Pose>& poses) {
  std::vector<cv::Vec2d> residuals;
  for (std::size_t i = 0; i < views.size(); ++i) {
    const ViewPoints& view = views[i];
    const cv::Matx33d R = lens::rotationFromVector(poses[i].om);
    for (std::size_t k = 0; k < view.size(); ++k) {
      const auto p = model::projectPoint(camera, R, poses[i].T, view.X[k], view.Y[k], view.Z[k]);
      residuals.emplace_back(view.image.x[k] - p.u, view.image.y[k] - p.v);
    }
  }
  return residuals;
}

double rootMeanSquare(const std::vector<cv::Vec2d>& residuals) {
  double squares = 0;
  for (const cv::Vec2d& r : residuals) {
    squares += r.dot(r);
  }
  return std::sqrt(squares / static_cast<double>(residuals.size()));
}

}  // namespace fisheye_calibration::solver
