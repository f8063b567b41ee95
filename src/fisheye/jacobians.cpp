#include <algorithm>
#include <vector>

#include "fisheye/internal.h"
#include "fisheye/intrinsic_params.h"
#include "fisheye/posed_views.h"
#include "lens/check.h"
#include "solver/normal_equations.h"
#include "solver/pose.h"

namespace fisheye_calibration::internal {

void subMatrix(const cv::Mat& src, cv::Mat& dst, const std::vector<uchar>& cols,
               const std::vector<uchar>& rows) {
  constexpr auto kName = "subMatrix";
  lens::require(src.channels() == 1, "src.channels() == 1", kName);
  lens::require(src.dims <= 2 && cols.size() == static_cast<std::size_t>(src.cols) &&
                    rows.size() == static_cast<std::size_t>(src.rows),
                "one byte for every column and row of src", kName);
  cv::Mat values;
  src.convertTo(values, CV_64F);
  const auto selected = [](const std::vector<uchar>& bytes) {
    std::vector<int> indices;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      if (bytes[i] != 0) {
        indices.push_back(static_cast<int>(i));
      }
    }
    return indices;
  };
  const std::vector<int> keptCols = selected(cols);
  const std::vector<int> keptRows = selected(rows);
  dst.create(static_cast<int>(keptRows.size()), static_cast<int>(keptCols.size()), CV_64F);
  for (int i = 0; i < dst.rows; ++i) {
    const double* from = values.ptr<double>(keptRows[static_cast<std::size_t>(i)]);
    double* to = dst.ptr<double>(i);
    for (int j = 0; j < dst.cols; ++j) {
      to[j] = from[keptCols[static_cast<std::size_t>(j)]];
    }
  }
}

void ComputeJacobians(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                      const IntrinsicParams& param, cv::InputArray omc, cv::InputArray Tc,
                      const int& check_cond, const double& thresh_cond, cv::Mat& JJ2,
                      cv::Mat& ex3) {
  constexpr auto kName = "ComputeJacobians";
  const fisheye::PosedViews posed =
      fisheye::readPosedViews(objectPoints, imagePoints, omc, Tc, kName);
  if (check_cond != 0) {
    const lens::Camera camera = toCamera(param);
    for (std::size_t i = 0; i < posed.views.size(); ++i) {
      cv::Mat residuals;
      const cv::Mat J = solver::poseJacobian(posed.views[i], camera, posed.poses[i], residuals);
      lens::require(solver::conditionRatio(J) < thresh_cond,
                    "svd.w.at<double>(0) / svd.w.at<double>(svd.w.rows - 1) < thresh_cond", kName);
    }
  }
  lens::require(param.estimateMask.size() == solver::kIntrinsics, "estimateMask.size() == 7",
                kName);
  solver::EstimatedIntrinsics estimated;
  std::transform(param.estimateMask.begin(), param.estimateMask.end(), estimated.begin(),
                 [](uchar byte) { return byte != 0; });
  const solver::ReducedSystem system =
      solver::reducedNormalEquations(posed.views, toCamera(param), posed.poses, estimated);
  JJ2 = system.JJ2;
  ex3 = system.ex3;
}

}  // namespace fisheye_calibration::internal
