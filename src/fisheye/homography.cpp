#include "solver/homography.h"

#include "fisheye/internal.h"
#include "lens/check.h"

namespace fisheye_calibration::internal {
namespace {

// The columns of a 2 x N or 3 x N matrix as plane points; a third row divides the other two.
solver::PlanarPoints dehomogenise(const cv::Mat& columns) {
  solver::PlanarPoints points(static_cast<std::size_t>(columns.cols));
  for (int j = 0; j < columns.cols; ++j) {
    const double w = columns.rows < 3 ? 1 : columns.at<double>(2, j);
    points.x[static_cast<std::size_t>(j)] = columns.at<double>(0, j) / w;
    points.y[static_cast<std::size_t>(j)] = columns.at<double>(1, j) / w;
  }
  return points;
}

}  // namespace

cv::Mat ComputeHomography(cv::Mat m, cv::Mat M) {
  const auto holdsPoints = [](const cv::Mat& p) {
    return p.type() == CV_64FC1 && p.dims == 2 && (p.rows == 2 || p.rows == 3) && p.cols > 0;
  };
  lens::require(holdsPoints(m) && holdsPoints(M) && m.cols == M.cols,
                "m and M are 2 x N or 3 x N doubles with the same N > 0", "ComputeHomography");
  return cv::Mat(solver::planarHomography(dehomogenise(m), dehomogenise(M)), true);
}

}  // namespace fisheye_calibration::internal
