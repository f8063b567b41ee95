// Symmetric systems in the intrinsics of one camera, shared by all views, and one pose per view.
//
//       lens  pose 1 ... pose n
//     [  U     W_1   ...   W_n  ]
//     [ W_1^T  V_1              ]     U = prior + sum of the views' lens blocks
//     [  :           .          ]
//     [ W_n^T              V_n  ]
//
// Normal equations have this shape, because a point depends on the pose of its own view only, and
// so has every sum of products of two rows of one view.
#pragma once

#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

namespace fisheye_calibration::robust {

// Unknowns of one view: fx, fy, cx, cy, k0, k1, rotation vector, translation.
constexpr int kLensUnknowns = 6;
constexpr int kPoseUnknowns = 6;
constexpr int kViewUnknowns = kLensUnknowns + kPoseUnknowns;
using LensVector = cv::Vec<double, kLensUnknowns>;
using PoseVector = cv::Vec<double, kPoseUnknowns>;
using ViewVector = cv::Vec<double, kViewUnknowns>;
using ViewMatrix = cv::Matx<double, kViewUnknowns, kViewUnknowns>;

struct ArrowMatrix {
  cv::Matx66d prior;              // counts towards the lens block once
  std::vector<ViewMatrix> views;  // [U_j W_j; W_j^T V_j]
};

// A vector of the same unknowns.
struct ArrowVector {
  LensVector lens;
  std::vector<PoseVector> poses;
};

// The inverse A of an arrow matrix M, by elimination of the poses (Schur complement):
//
//   Y_j = V_j^-1 W_j^T,   S = U - sum W_j Y_j,   Q_j = [I; -Y_j]
//   A restricted to the lens and poses i and j = Q_i S^-1 Q_j^T + (V_j^-1 at pose j if i = j)
//
// All unknowns are scaled to a unit diagonal of M before, so their units do not matter. With a held
// lens, the poses are the only unknowns, and the rows and columns of the lens in A are 0.
class ArrowInverse {
 public:
  ArrowInverse(const ArrowMatrix& M, bool holdLens);

  // Whether M was numerically positive definite; otherwise nothing below may be used.
  bool exists() const { return exists_; }

  // The largest M_ii A_ii: the factor by which the other unknowns inflate the variance of one. It
  // is at most the condition number of M scaled to a unit diagonal, which is at most n^2 times
  // larger for n unknowns.
  double inflation() const;

  // Whether A exists and rounding has left at least three digits of it. Steps of an iteration do
  // not need that, covariances do.
  bool isAccurate() const { return exists_ && inflation() <= kMostInflation; }

  ArrowVector times(const ArrowVector& b) const;

  // The rows and columns of the lens and of pose j in A, and in A C A.
  ViewMatrix block(std::size_t j) const;
  ViewMatrix product(const ArrowMatrix& C, std::size_t j) const;

  // The same part of the covariance of a held lens of covariance L, which the poses follow: pose_j
  // = -Y_j lens.
  ViewMatrix followingLens(const cv::Matx66d& L, std::size_t j) const;

  // tr(A C)
  double traceWith(const ArrowMatrix& C) const;

 private:
  using Tall = cv::Matx<double, kViewUnknowns, kLensUnknowns>;

  static constexpr double kMostInflation = 1e12;

  Tall lensToView(std::size_t j) const;
  cv::Matx66d reduced(const ArrowMatrix& C) const;  // Q^T C Q

  LensVector lensDiagonal_;               // of U
  std::vector<PoseVector> poseDiagonal_;  // of V_j

  cv::Matx66d lens_;                 // S^-1
  std::vector<cv::Matx66d> pose_;    // V_j^-1
  std::vector<cv::Matx66d> follow_;  // Y_j: how pose j follows the lens
  bool exists_ = false;
};

// The blocks of a matrix of one view.
inline cv::Matx66d lensBlock(const ViewMatrix& M) { return M.get_minor<6, 6>(0, 0); }
inline cv::Matx66d poseBlock(const ViewMatrix& M) { return M.get_minor<6, 6>(6, 6); }
inline cv::Matx66d poseLensBlock(const ViewMatrix& M) { return M.get_minor<6, 6>(6, 0); }

}  // namespace fisheye_calibration::robust
