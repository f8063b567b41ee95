#include "robust/arrow_matrix.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "solver/symmetric_solver.h"

namespace fisheye_calibration::robust {
namespace {

// 1/sqrt of the diagonal; 1 where it is not positive.
PoseVector unitScale(const cv::Matx66d& A) {
  PoseVector scale;
  for (int i = 0; i < 6; ++i) {
    scale[i] = A(i, i) > 0 ? 1 / std::sqrt(A(i, i)) : 1;
  }
  return scale;
}

PoseVector diagonal(const cv::Matx66d& A) { return PoseVector(A.diag().val); }

// diag(rows) A diag(columns)
cv::Matx66d scaled(const cv::Matx66d& A, const PoseVector& rows, const PoseVector& columns) {
  cv::Matx66d B;
  for (int i = 0; i < 6; ++i) {
    for (int j = 0; j < 6; ++j) {
      B(i, j) = rows[i] * A(i, j) * columns[j];
    }
  }
  return B;
}

// The inverse of a symmetric matrix; std::nullopt unless it is numerically positive definite.
std::optional<cv::Matx66d> inverse(const cv::Matx66d& A) {
  const PoseVector scale = unitScale(A);
  solver::LowerTriangle<6> lower{};
  for (int i = 0; i < 6; ++i) {
    for (int j = 0; j <= i; ++j) {
      lower[solver::triangleIndex(static_cast<std::size_t>(i), static_cast<std::size_t>(j))] =
          scale[i] * A(i, j) * scale[j];
    }
  }
  const solver::SymmetricSolver<6> system(lower);
  if (!std::isfinite(system.conditionBound())) {
    return std::nullopt;
  }
  cv::Matx66d result;
  for (int j = 0; j < 6; ++j) {
    std::array<double, 6> unit{};
    unit[static_cast<std::size_t>(j)] = 1;
    const std::array<double, 6> column = system.solve(unit);
    for (int i = 0; i < 6; ++i) {
      result(i, j) = column[static_cast<std::size_t>(i)];
    }
  }
  return scaled(0.5 * (result + result.t()), scale, scale);
}

void addTo(ViewMatrix& M, int row, int column, const cv::Matx66d& block) {
  for (int i = 0; i < 6; ++i) {
    for (int j = 0; j < 6; ++j) {
      M(row + i, column + j) += block(i, j);
    }
  }
}

}  // namespace

ArrowInverse::ArrowInverse(const ArrowMatrix& M, bool holdLens) {
  cv::Matx66d U = M.prior;
  for (const ViewMatrix& view : M.views) {
    U += lensBlock(view);
  }
  lensDiagonal_ = diagonal(U);
  // A unit diagonal of U, so that the subtraction below is between numbers of similar size.
  const PoseVector unit = unitScale(U);
  cv::Matx66d S = scaled(U, unit, unit);
  for (const ViewMatrix& view : M.views) {
    const auto pose = inverse(poseBlock(view));
    if (!pose) {
      return;
    }
    pose_.push_back(*pose);
    poseDiagonal_.push_back(diagonal(poseBlock(view)));
    follow_.push_back(*pose * poseLensBlock(view));
    const cv::Matx66d eliminated = poseLensBlock(view).t() * follow_.back();
    S -= scaled(0.5 * (eliminated + eliminated.t()), unit, unit);
  }
  if (!holdLens) {
    const auto lens = inverse(S);
    if (!lens) {
      return;
    }
    lens_ = scaled(*lens, unit, unit);
  }
  exists_ = true;
}

ArrowInverse::Tall ArrowInverse::lensToView(std::size_t j) const {
  Tall q;
  for (int i = 0; i < kLensUnknowns; ++i) {
    q(i, i) = 1;
    for (int k = 0; k < kPoseUnknowns; ++k) {
      q(kLensUnknowns + k, i) = -follow_[j](k, i);
    }
  }
  return q;
}

double ArrowInverse::inflation() const {
  double most = 0;
  for (int i = 0; i < kLensUnknowns; ++i) {
    most = std::max(most, lensDiagonal_[i] * lens_(i, i));
  }
  for (std::size_t j = 0; j < pose_.size(); ++j) {
    const cv::Matx66d A = pose_[j] + follow_[j] * lens_ * follow_[j].t();
    for (int i = 0; i < kPoseUnknowns; ++i) {
      most = std::max(most, poseDiagonal_[j][i] * A(i, i));
    }
  }
  return most;
}

ArrowVector ArrowInverse::times(const ArrowVector& b) const {
  // lens = S^-1 (b_lens - sum Y_j^T b_j), pose_j = V_j^-1 b_j - Y_j lens
  LensVector reducedLens = b.lens;
  for (std::size_t j = 0; j < pose_.size(); ++j) {
    reducedLens -= follow_[j].t() * b.poses[j];
  }
  ArrowVector x{lens_ * reducedLens, {}};
  for (std::size_t j = 0; j < pose_.size(); ++j) {
    x.poses.push_back(pose_[j] * b.poses[j] - follow_[j] * x.lens);
  }
  return x;
}

ViewMatrix ArrowInverse::block(std::size_t j) const {
  const Tall q = lensToView(j);
  ViewMatrix A = q * lens_ * q.t();
  addTo(A, kLensUnknowns, kLensUnknowns, pose_[j]);
  return A;
}

cv::Matx66d ArrowInverse::reduced(const ArrowMatrix& C) const {
  cv::Matx66d sum = C.prior;
  for (std::size_t j = 0; j < C.views.size(); ++j) {
    const Tall q = lensToView(j);
    sum += q.t() * C.views[j] * q;
  }
  return sum;
}

// With A = diag(0, V_1^-1, ...) + Q S^-1 Q^T the rows and columns of the lens and pose j are
//   Q_j S^-1 (Q^T C Q) S^-1 Q_j^T + E + E^T + diag(0, V_j^-1 C_pose V_j^-1),
//   E = Q_j S^-1 [0  Q_j^T C_j(:, pose) V_j^-1]
ViewMatrix ArrowInverse::product(const ArrowMatrix& C, std::size_t j) const {
  const Tall q = lensToView(j);
  const Tall left = q * lens_;
  ViewMatrix result = left * reduced(C) * left.t();
  const Tall poseColumns = C.views[j].get_minor<kViewUnknowns, kPoseUnknowns>(0, kLensUnknowns);
  const Tall mixed = left * (q.t() * poseColumns) * pose_[j];
  for (int i = 0; i < kViewUnknowns; ++i) {
    for (int k = 0; k < kPoseUnknowns; ++k) {
      result(i, kLensUnknowns + k) += mixed(i, k);
      result(kLensUnknowns + k, i) += mixed(i, k);
    }
  }
  addTo(result, kLensUnknowns, kLensUnknowns, pose_[j] * poseBlock(C.views[j]) * pose_[j]);
  return result;
}

ViewMatrix ArrowInverse::followingLens(const cv::Matx66d& L, std::size_t j) const {
  const Tall q = lensToView(j);
  return q * L * q.t();
}

double ArrowInverse::traceWith(const ArrowMatrix& C) const {
  double sum = cv::trace(lens_ * C.prior);
  for (std::size_t j = 0; j < C.views.size(); ++j) {
    sum += block(j).ddot(C.views[j]);
  }
  return sum;
}

}  // namespace fisheye_calibration::robust
