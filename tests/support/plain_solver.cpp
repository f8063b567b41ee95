#include "support/plain_solver.h"

#include <cmath>
#include <limits>
#include <opencv2/calib3d.hpp>

namespace plain {
namespace {

// Image points minus projected points as a column x0, y0, x1, y1, ...
cv::Mat residualOf(const View& view, const cv::Mat& projected) {
  const cv::Mat measured = view.imagePoints.clone().reshape(2, projected.rows);
  const cv::Mat difference = measured - projected;
  return difference.reshape(1, 2 * projected.rows);
}

cv::Mat withThirdRow(const cv::Mat& points) {
  cv::Mat homogeneous = points.clone();
  if (points.rows < 3) {
    cv::vconcat(points, cv::Mat::ones(1, points.cols, CV_64F), homogeneous);
  }
  for (int i = 0; i < homogeneous.cols; ++i) {
    const double third = homogeneous.at<double>(2, i);
    for (int row = 0; row < 3; ++row) homogeneous.at<double>(row, i) /= third;
  }
  return homogeneous;
}

// One Gauss-Newton step of the homography on the image error.
cv::Mat refineHomography(const cv::Mat& H, const cv::Mat& m, const cv::Mat& M) {
  const int n = m.cols;
  cv::Mat mrep = H * M;
  cv::Mat m_err(2 * n, 1, CV_64F);
  cv::Mat J = cv::Mat::zeros(2 * n, 8, CV_64F);
  for (int i = 0; i < n; ++i) {
    const double third = mrep.at<double>(2, i);
    const cv::Mat MMM = M.col(i) / third;
    const double x = mrep.at<double>(0, i) / third;
    const double y = mrep.at<double>(1, i) / third;
    m_err.at<double>(2 * i) = m.at<double>(0, i) - x;
    m_err.at<double>(2 * i + 1) = m.at<double>(1, i) - y;
    for (int j = 0; j < 3; ++j) {
      J.at<double>(2 * i, j) = -MMM.at<double>(j);
      J.at<double>(2 * i + 1, j + 3) = -MMM.at<double>(j);
    }
    for (int j = 0; j < 2; ++j) {
      J.at<double>(2 * i, 6 + j) = MMM.at<double>(j) * x;
      J.at<double>(2 * i + 1, 6 + j) = MMM.at<double>(j) * y;
    }
  }
  const cv::Mat JtJ = J.t() * J;
  const cv::Mat innovation = JtJ.inv(cv::DECOMP_LU) * J.t() * m_err;
  cv::Mat refined = H.clone();
  for (int i = 0; i < 8; ++i) refined.at<double>(i / 3, i % 3) -= innovation.at<double>(i);
  refined.at<double>(2, 2) = 1;
  return refined;
}

cv::Mat linearHomography(const cv::Mat& m, const cv::Mat& M) {
  const int n = m.cols;
  const double mx = cv::mean(m.row(0))[0];
  const double my = cv::mean(m.row(1))[0];
  const double scx = cv::mean(cv::abs(m.row(0) - mx))[0];
  const double scy = cv::mean(cv::abs(m.row(1) - my))[0];
  const cv::Mat Hnorm =
      (cv::Mat_<double>(3, 3) << 1 / scx, 0, -mx / scx, 0, 1 / scy, -my / scy, 0, 0, 1);
  const cv::Mat inverse = (cv::Mat_<double>(3, 3) << scx, 0, mx, 0, scy, my, 0, 0, 1);
  const cv::Mat mn = Hnorm * m;
  cv::Mat L = cv::Mat::zeros(2 * n, 9, CV_64F);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < 3; ++j) {
      L.at<double>(2 * i, j) = M.at<double>(j, i);
      L.at<double>(2 * i + 1, j + 3) = M.at<double>(j, i);
      L.at<double>(2 * i, j + 6) = -mn.at<double>(0, i) * M.at<double>(j, i);
      L.at<double>(2 * i + 1, j + 6) = -mn.at<double>(1, i) * M.at<double>(j, i);
    }
  }
  if (n > 4) L = L.t() * L;
  // With four points L is 8 x 9 and its null vector only stands in the full V.
  const cv::SVD svd(L, n > 4 ? 0 : cv::SVD::FULL_UV);
  const cv::Mat hh = svd.vt.row(8) / svd.vt.at<double>(8, 8);
  return inverse * hh.reshape(1, 3);
}

double relativeChange(const Intrinsics& from, const Intrinsics& to) {
  const cv::Vec4d before(from.focalX, from.focalY, from.principalX, from.principalY);
  const cv::Vec4d after(to.focalX, to.focalY, to.principalX, to.principalY);
  return cv::norm(after - before) / cv::norm(after);
}

bool finished(const cv::TermCriteria& criteria, int iteration, double change) {
  const bool counted = iteration >= criteria.maxCount;
  const bool close = change <= criteria.epsilon;
  return (criteria.type == 1 && counted) || (criteria.type == 2 && close) ||
         (criteria.type == 3 && (counted || close));
}

Intrinsics startingCamera(const cv::Size& imageSize) {
  Intrinsics camera;
  camera.focalX = std::max(imageSize.width, imageSize.height) / CV_PI;
  camera.focalY = camera.focalX;
  camera.principalX = imageSize.width * 0.5 - 0.5;
  camera.principalY = imageSize.height * 0.5 - 0.5;
  camera.estimated = {true, true, true, true, false, true, true};
  return camera;
}

}  // namespace

cv::Mat computeHomography(cv::Mat m, cv::Mat M) {
  m = withThirdRow(m);
  M = withThirdRow(M);
  cv::Mat H = linearHomography(m, M);
  for (int i = 0; m.cols > 4 && i < 10; ++i) H = refineHomography(H, m, M);
  return H;
}

bool initExtrinsics(const View& view, const Intrinsics& camera, Pose& pose) {
  const int n = static_cast<int>(view.objectPoints.total());
  const cv::Mat mN = normalizePixels(view.imagePoints, camera).reshape(1).t();  // 2 x N
  const cv::Mat X = view.objectPoints.clone().reshape(1, n).t();                // 3 x N

  cv::Mat covariance;
  cv::Mat mean;
  cv::calcCovarMatrix(X, covariance, mean, cv::COVAR_NORMAL | cv::COVAR_COLS, CV_64F);
  cv::Mat R = cv::SVD(covariance).vt;
  if (std::hypot(R.at<double>(0, 2), R.at<double>(1, 2)) < 1e-6) R = cv::Mat::eye(3, 3, CV_64F);
  if (cv::determinant(R) < 0) R = -R;
  const cv::Mat T = -R * mean;
  cv::Mat inPlane = R * X;
  for (int i = 0; i < n; ++i) inPlane.col(i) += T;

  cv::Mat H = computeHomography(mN, inPlane.rowRange(0, 2));
  const double sc = 0.5 * (cv::norm(H.col(0)) + cv::norm(H.col(1)));
  if (std::isnan(sc)) return false;
  H = H / sc;
  const double norm_u1 = cv::norm(H.col(0));
  CV_Assert(fabs(norm_u1) > 0);
  const cv::Mat u1 = H.col(0) / norm_u1;
  cv::Mat u2 = H.col(1) - u1.dot(H.col(1)) * u1;
  const double norm_u2 = cv::norm(u2);
  CV_Assert(fabs(norm_u2) > 0);
  u2 = u2 / norm_u2;
  const cv::Mat u3 = u1.cross(u2);
  cv::Mat RRR;
  cv::hconcat(std::vector<cv::Mat>{u1, u2, u3}, RRR);
  cv::Mat om;
  cv::Mat Rckk;
  cv::Rodrigues(RRR, om);
  cv::Rodrigues(om, Rckk);
  pose.tvec = H.col(2) + Rckk * T;
  Rckk = Rckk * R;
  cv::Rodrigues(Rckk, pose.rvec);
  return true;
}

double conditionRatio(const cv::Mat& J) {
  // The library leaves singular values of such matrices uninitialised.
  if (!cv::checkRange(J)) return std::numeric_limits<double>::quiet_NaN();
  const cv::SVD svd(J, cv::SVD::NO_UV);
  return svd.w.at<double>(0) / svd.w.at<double>(svd.w.rows - 1);
}

cv::Mat computeExtrinsicRefine(const View& view, const Intrinsics& camera, double thresh_cond,
                               Pose& pose) {
  cv::Mat J;
  cv::Mat x;
  cv::vconcat(pose.rvec, pose.tvec, x);
  for (int iteration = 0; iteration < 20; ++iteration) {
    cv::Mat full;
    const cv::Mat projected =
        projectPoints(view.objectPoints, x.rowRange(0, 3), x.rowRange(3, 6), camera, &full);
    const cv::Mat ex = residualOf(view, projected);
    J = full.colRange(6, 12).clone();
    if (conditionRatio(J) > thresh_cond) break;
    cv::Mat d;
    cv::solve(J, ex, d, cv::DECOMP_SVD + cv::DECOMP_NORMAL);
    x = x + d;
    pose.rvec = x.rowRange(0, 3).clone();
    pose.tvec = x.rowRange(3, 6).clone();
    const double change = cv::norm(d) / cv::norm(x);
    if (!(change > 1e-10)) break;
  }
  return J;
}

bool calibrateExtrinsics(const std::vector<View>& views, const Intrinsics& camera,
                         double thresh_cond, std::vector<Pose>& poses) {
  for (size_t i = 0; i < views.size(); ++i) {
    Pose pose;
    if (!initExtrinsics(views[i], camera, pose)) return false;
    computeExtrinsicRefine(views[i], camera, thresh_cond, pose);
    poses[i] = pose;
  }
  return true;
}

void computeJacobians(const std::vector<View>& views, const Intrinsics& camera,
                      const std::vector<Pose>& poses, cv::Mat& JJ2, cv::Mat& ex3) {
  const int n = static_cast<int>(views.size());
  cv::Mat full = cv::Mat::zeros(7 + 6 * n, 7 + 6 * n, CV_64F);
  cv::Mat right = cv::Mat::zeros(7 + 6 * n, 1, CV_64F);
  for (int i = 0; i < n; ++i) {
    const size_t view = static_cast<size_t>(i);
    cv::Mat jacobian;
    const cv::Mat projected = projectPoints(views[view].objectPoints, poses[view].rvec,
                                            poses[view].tvec, camera, &jacobian);
    const cv::Mat e = residualOf(views[view], projected);
    cv::Mat A;
    cv::hconcat(
        std::vector<cv::Mat>{jacobian.colRange(0, 4), jacobian.col(12), jacobian.colRange(4, 6)},
        A);
    const cv::Mat B = jacobian.colRange(6, 12).clone();
    const cv::Range intrinsic(0, 7);
    const cv::Range own(7 + 6 * i, 13 + 6 * i);
    full(intrinsic, intrinsic) += A.t() * A;
    cv::Mat(B.t() * B).copyTo(full(own, own));
    cv::Mat(A.t() * B).copyTo(full(intrinsic, own));
    cv::Mat(B.t() * A).copyTo(full(own, intrinsic));
    right.rowRange(intrinsic) += A.t() * e;
    cv::Mat(B.t() * e).copyTo(right.rowRange(own));
  }
  std::vector<int> kept;
  for (int i = 0; i < full.rows; ++i) {
    if (i >= 7 || camera.estimated[static_cast<size_t>(i)]) kept.push_back(i);
  }
  const int size = static_cast<int>(kept.size());
  JJ2.create(size, size, CV_64F);
  ex3.create(size, 1, CV_64F);
  for (int row = 0; row < size; ++row) {
    const int from = kept[static_cast<size_t>(row)];
    ex3.at<double>(row) = right.at<double>(from);
    for (int column = 0; column < size; ++column) {
      JJ2.at<double>(row, column) = full.at<double>(from, kept[static_cast<size_t>(column)]);
    }
  }
}

Uncertainties estimateUncertainties(const std::vector<View>& views, const Intrinsics& camera,
                                    const std::vector<Pose>& poses) {
  cv::Mat ex;  // 2N x 1
  for (size_t i = 0; i < views.size(); ++i) {
    const cv::Mat projected =
        projectPoints(views[i].objectPoints, poses[i].rvec, poses[i].tvec, camera);
    ex.push_back(residualOf(views[i], projected));
  }
  const double n = ex.rows / 2;
  Uncertainties result;
  cv::Scalar mean;
  cv::Scalar deviation;
  cv::meanStdDev(ex.reshape(2, ex.rows / 2), mean, deviation);
  result.std_err = {deviation[0] * std::sqrt(n / (n - 1)), deviation[1] * std::sqrt(n / (n - 1))};
  cv::meanStdDev(ex, mean, deviation);
  const double sigma = deviation[0] * std::sqrt(2 * n / (2 * n - 1));

  cv::Mat JJ2;
  cv::Mat ex3;
  computeJacobians(views, camera, poses, JJ2, ex3);
  const cv::Mat inverse = JJ2.inv(cv::DECOMP_LU);
  cv::Mat root;
  cv::sqrt(inverse, root);
  result.errors = camera.assigned(3 * sigma * root.diag());
  result.rms = std::sqrt(cv::norm(ex, cv::NORM_L2SQR) / n);
  return result;
}

Calibration calibrate(const std::vector<View>& views, const cv::Size& imageSize,
                      const cv::TermCriteria& criteria) {
  constexpr double thresh_cond = 1e6;
  Calibration result;
  result.camera = startingCamera(imageSize);
  result.poses.resize(views.size());
  calibrateExtrinsics(views, result.camera, thresh_cond, result.poses);
  double change = 1;
  while (!finished(criteria, result.steps, change)) {
    const double factor = 1 - std::pow(1 - 0.4, result.steps + 1);
    cv::Mat JJ2;
    cv::Mat ex3;
    computeJacobians(views, result.camera, result.poses, JJ2, ex3);
    cv::Mat G;
    cv::solve(JJ2, ex3, G);
    const Intrinsics next = result.camera.plus(factor * G);
    change = relativeChange(result.camera, next);
    result.camera = next;
    calibrateExtrinsics(views, result.camera, thresh_cond, result.poses);
    ++result.steps;
  }
  result.uncertainties = estimateUncertainties(views, result.camera, result.poses);
  return result;
}

}  // namespace plain
