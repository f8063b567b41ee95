#include "robust/robust_input.h"

#include <algorithm>
#include <cmath>

namespace fisheye_calibration::robust {
namespace {

constexpr std::size_t kFewestPoints = 4;

bool isValid(const solver::ViewPoints& view) {
  const std::size_t count = view.size();
  return view.Y.size() == count && view.Z.size() == count && view.image.x.size() == count &&
         view.image.y.size() == count && solver::isFinite(view) &&
         std::all_of(view.Z.begin(), view.Z.end(), [](double z) { return z == 0; });
}

bool isValid(const HeldLens& lens) {
  const lens::Camera& c = lens.camera;
  return c.fx > 0 && c.fy > 0 &&
         cv::checkRange(cv::Vec<double, 7>(c.fx, c.fy, c.cx, c.cy, c.k0, c.k1, c.alpha)) &&
         isCovariance(lens.covariance);
}

}  // namespace

bool isCovariance(const cv::Matx66d& L) {
  constexpr double kTolerance = 1e-6;
  if (!cv::checkRange(L)) {
    return false;
  }
  cv::Matx66d correlation;
  for (int i = 0; i < 6; ++i) {
    for (int j = 0; j < 6; ++j) {
      const double scale = std::sqrt(std::max(L(i, i), 0.0)) * std::sqrt(std::max(L(j, j), 0.0));
      correlation(i, j) = scale > 0 ? L(i, j) / scale : L(i, j);
      if (L(i, i) < 0 || (scale == 0 && L(i, j) != 0)) {
        return false;
      }
    }
  }
  cv::Matx<double, 6, 1> eigenvalues;
  return cv::checkRange(correlation) &&
         cv::norm(correlation - correlation.t(), cv::NORM_INF) <= kTolerance &&
         cv::eigen(correlation, eigenvalues) && eigenvalues(5) >= -kTolerance;
}

std::optional<Refusal> checkInput(const std::vector<solver::ViewPoints>& views,
                                  const cv::Size& imageSize, const RobustOptions& options) {
  if (views.empty() || imageSize.width <= 0 || imageSize.height <= 0 ||
      !(options.startFocalFactor > 0) || !std::isfinite(options.startFocalFactor) ||
      (options.heldLens && !isValid(*options.heldLens))) {
    return Refusal{RobustStatus::kBadInput, std::nullopt};
  }
  // Equations beyond those that the poses take. The priors do not count: the noise is estimated
  // from equations that the unknowns leave over.
  std::size_t rows = 0;
  for (std::size_t j = 0; j < views.size(); ++j) {
    if (!isValid(views[j])) {
      return Refusal{RobustStatus::kBadInput, j};
    }
    if (views[j].size() < kFewestPoints) {
      return Refusal{RobustStatus::kTooFewPoints, j};
    }
    rows += 2 * views[j].size() - kPoseUnknowns;
  }
  if (!options.heldLens && rows <= kLensUnknowns) {
    return Refusal{RobustStatus::kTooFewPoints, std::nullopt};
  }
  return std::nullopt;
}

}  // namespace fisheye_calibration::robust
