#include "fisheye/normal_equations.h"

#include "fisheye/check.h"
#include "fisheye/intrinsic_params.h"
#include "fisheye/posed_views.h"
#include "fisheye/view_sums.h"

namespace fisheye {
namespace {

constexpr int kIntrinsics = 7;
constexpr int kPose = 6;

// Intrinsics occupy rows 0...6, the pose of view i rows 7 + 6i...12 + 6i. The intrinsic block sums
// over the views; everything between two different views is 0.
void addView(const NormalEquations<kAllParameters>& view, int poseOffset, cv::Mat& JJ,
             cv::Mat& ex) {
  const auto place = [poseOffset](int k) {
    return k < kIntrinsics ? k : poseOffset + k - kIntrinsics;
  };
  for (int i = 0; i < kIntrinsics + kPose; ++i) {
    for (int j = 0; j <= i; ++j) {
      const double value =
          view.A[triangleIndex(static_cast<std::size_t>(i), static_cast<std::size_t>(j))];
      JJ.at<double>(place(i), place(j)) += value;
      if (i != j) {
        JJ.at<double>(place(j), place(i)) += value;
      }
    }
    ex.at<double>(place(i)) += view.b[static_cast<std::size_t>(i)];
  }
}

}  // namespace

ReducedSystem reducedNormalEquations(const std::vector<ViewPoints>& views,
                                     const internal::IntrinsicParams& param,
                                     const std::vector<Pose>& poses) {
  const int unknowns = kIntrinsics + kPose * static_cast<int>(views.size());
  ReducedSystem system{cv::Mat::zeros(unknowns, unknowns, CV_64F),
                       cv::Mat::zeros(unknowns, 1, CV_64F)};
  const Camera camera = internal::toCamera(param);
  for (std::size_t i = 0; i < views.size(); ++i) {
    addView(fullNormalEquations(views[i], camera, poses[i]),
            kIntrinsics + kPose * static_cast<int>(i), system.JJ2, system.ex3);
  }
  require(param.estimateMask.size() == kIntrinsics, "estimateMask.size() == 7", "ComputeJacobians");
  std::vector<uchar> selected = param.estimateMask;
  selected.resize(static_cast<std::size_t>(unknowns), 1);
  internal::subMatrix(system.JJ2, system.JJ2, selected, selected);
  internal::subMatrix(system.ex3, system.ex3, {1}, selected);
  return system;
}

}  // namespace fisheye

namespace internal {

void subMatrix(const cv::Mat& src, cv::Mat& dst, const std::vector<uchar>& cols,
               const std::vector<uchar>& rows) {
  constexpr auto name = "subMatrix";
  fisheye::require(src.channels() == 1, "src.channels() == 1", name);
  fisheye::require(src.dims <= 2 && cols.size() == static_cast<std::size_t>(src.cols) &&
                       rows.size() == static_cast<std::size_t>(src.rows),
                   "one byte for every column and row of src", name);
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
  constexpr auto name = "ComputeJacobians";
  const fisheye::PosedViews posed =
      fisheye::readPosedViews(objectPoints, imagePoints, omc, Tc, name);
  if (check_cond != 0) {
    const fisheye::Camera camera = toCamera(param);
    for (std::size_t i = 0; i < posed.views.size(); ++i) {
      cv::Mat residuals;
      const cv::Mat J = fisheye::poseJacobian(posed.views[i], camera, posed.poses[i], residuals);
      fisheye::require(fisheye::conditionRatio(J) < thresh_cond,
                       "svd.w.at<double>(0) / svd.w.at<double>(svd.w.rows - 1) < thresh_cond",
                       name);
    }
  }
  fisheye::ReducedSystem system = fisheye::reducedNormalEquations(posed.views, param, posed.poses);
  JJ2 = system.JJ2;
  ex3 = system.ex3;
}

}  // namespace internal
