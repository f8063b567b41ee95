#include <algorithm>
#include <iterator>
#include <limits>

#include "lens/camera_model-inl.h"
#include "lens/rotation.h"
#include "solver/pose.h"
#include "solver/view_sums.h"

namespace fisheye_calibration::solver {
namespace {

namespace model = lens::HWY_NAMESPACE;

constexpr int kMaxSteps = 20;
constexpr double kSmallestChange = 1e-10;

using PoseVector = cv::Vec<double, 6>;

PoseVector packed(const lens::Pose& pose) {
  return {pose.om[0], pose.om[1], pose.om[2], pose.T[0], pose.T[1], pose.T[2]};
}

lens::Pose unpacked(const PoseVector& x) { return {{x[0], x[1], x[2]}, {x[3], x[4], x[5]}}; }

// Whether the ratio of largest to smallest singular value of the 2N x 6 Jacobian J exceeds the
// limit. A NaN ratio does not. Fewer than three points leave the pose undetermined.
bool isIllConditioned(const cv::Mat& J, double maxConditionRatio) {
  if (J.rows < J.cols) {
    return true;
  }
  return conditionRatio(J) > maxConditionRatio;
}

// Whether A = J^T J alone proves that the ratio of singular values of the Jacobian J is below the
// limit and that A is conditioned well enough to be solved directly.
//
// With the eigenvalues l1 >= ... >= l6 of A the ratio is sqrt(l1/l6), and l1/l6 is at most bound =
// trace(A) trace(A^-1). Each element of A is a sum of 2N products and off by at most (2N + 1) u
// times the sum of their magnitudes, u = 2^-53. That sum is at most l1, so A, which has six rows,
// changes l6 by at most 6 (2N + 1) u l1, a share of l6 of at most 6 (2N + 1) u bound. With that
// share below a tenth and the bound below a quarter of the squared limit, no rounding can raise the
// ratio above the limit.
bool isSurelyWellConditioned(const SymmetricSolver<6>& solver, std::size_t points,
                             double maxConditionRatio) {
  const double bound = solver.conditionBound();
  const double u = std::numeric_limits<double>::epsilon() / 2;
  const double share = 6 * static_cast<double>(2 * points + 1) * u * bound;
  return share < 0.1 && bound < 0.25 * maxConditionRatio * maxConditionRatio &&
         maxConditionRatio > 0;
}

// The least-squares step; std::nullopt if the Jacobian is ill-conditioned.
std::optional<PoseVector> leastSquaresStep(const ViewPoints& view, const lens::Camera& camera,
                                           const lens::Pose& pose, double maxConditionRatio) {
  const NormalEquations<6> equations = poseNormalEquations(view, camera, pose);
  const SymmetricSolver<6> solver(equations.A);
  if (isSurelyWellConditioned(solver, view.size(), maxConditionRatio)) {
    return PoseVector(solver.solve(equations.b).data());
  }
  cv::Mat residuals;
  const cv::Mat J = poseJacobian(view, camera, pose, residuals);
  if (isIllConditioned(J, maxConditionRatio)) {
    return std::nullopt;
  }
  PoseVector step;
  cv::solve(J, residuals, step, cv::DECOMP_SVD | cv::DECOMP_NORMAL);
  return step;
}

}  // namespace

double conditionRatio(const cv::Mat& J) {
  if (!cv::checkRange(J)) {  // the decomposition would return uninitialised memory
    return std::numeric_limits<double>::quiet_NaN();
  }
  cv::Mat w;
  cv::SVD::compute(J, w, cv::SVD::NO_UV);
  return w.at<double>(0) / w.at<double>(w.rows - 1);
}

cv::Mat poseJacobian(const ViewPoints& view, const lens::Camera& camera, const lens::Pose& pose,
                     cv::Mat& residuals) {
  const int count = static_cast<int>(view.size());
  const cv::Matx33d R = lens::rotationFromVector(pose.om);
  const auto dR = lens::rotationDerivative(pose.om);
  cv::Mat J(2 * count, 6, CV_64F);
  residuals.create(2 * count, 1, CV_64F);
  for (int i = 0; i < count; ++i) {
    const auto k = static_cast<std::size_t>(i);
    const auto p = model::projectPoint(camera, R, pose.T, view.X[k], view.Y[k], view.Z[k]);
    const auto d = model::poseDerivatives(camera, dR, view.X[k], view.Y[k], view.Z[k], p);
    std::copy(std::begin(d.u), std::end(d.u), J.ptr<double>(2 * i));
    std::copy(std::begin(d.v), std::end(d.v), J.ptr<double>(2 * i + 1));
    residuals.at<double>(2 * i) = view.image.x[k] - p.u;
    residuals.at<double>(2 * i + 1) = view.image.y[k] - p.v;
  }
  return J;
}

RefinedPose refinePose(const ViewPoints& view, const lens::Camera& camera, const lens::Pose& start,
                       double maxConditionRatio) {
  RefinedPose result{start, start, false};
  double change = 1;
  for (int step = 0; step < kMaxSteps && change > kSmallestChange; ++step) {
    result.evaluated = result.pose;
    const auto d = leastSquaresStep(view, camera, result.pose, maxConditionRatio);
    if (!d) {
      break;
    }
    const PoseVector x = packed(result.pose) + *d;
    change = cv::norm(*d) / cv::norm(x);  // a NaN change ends the loop
    result.pose = unpacked(x);
    result.moved = true;
  }
  return result;
}

std::optional<RefinedPose> findPose(const ViewPoints& view, const TargetPlane& plane,
                                    const lens::Camera& camera, double maxConditionRatio) {
  const auto start = initialPose(view, plane, camera);
  if (!start) {
    return std::nullopt;
  }
  return refinePose(view, camera, *start, maxConditionRatio);
}

}  // namespace fisheye_calibration::solver
