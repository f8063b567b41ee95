// The doors to the pose refinement that take the callers' arrays.
#include <algorithm>

#include "fisheye/arrays_of_triples.h"
#include "fisheye/check.h"
#include "fisheye/internal.h"
#include "fisheye/intrinsic_params.h"
#include "fisheye/pose.h"
#include "fisheye/rotation.h"

namespace internal {

void ComputeExtrinsicRefine(const cv::Mat& imagePoints, const cv::Mat& objectPoints, cv::Mat& rvec,
                            cv::Mat& tvec, cv::Mat& J, int /*maxIter*/,
                            const IntrinsicParams& param, double thresh_cond) {
  constexpr auto name = "ComputeExtrinsicRefine";
  fisheye::require(!objectPoints.empty() && objectPoints.type() == CV_64FC3,
                   "!objectPoints.empty() && objectPoints.type() == CV_64FC3", name);
  fisheye::require(!imagePoints.empty() && imagePoints.type() == CV_64FC2,
                   "!imagePoints.empty() && imagePoints.type() == CV_64FC2", name);
  fisheye::require(rvec.total() > 2 && tvec.total() > 2, "rvec.total() > 2 && tvec.total() > 2",
                   name);
  const fisheye::Camera camera = toCamera(param);
  const fisheye::ViewPoints view = fisheye::readView(objectPoints, imagePoints, name);
  fisheye::requirePairs(view, name);
  const fisheye::RefinedPose refined = fisheye::refinePose(
      view, camera, {fisheye::readTriple(rvec), fisheye::readTriple(tvec)}, thresh_cond);
  cv::Mat residuals;
  J = fisheye::poseJacobian(view, camera, refined.evaluated, residuals);
  if (refined.moved) {
    rvec = cv::Mat(refined.pose.om, true);
    tvec = cv::Mat(refined.pose.T, true);
  }
}

bool CalibrateExtrinsics(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                         const IntrinsicParams& param, int check_cond, double thresh_cond,
                         cv::InputOutputArray omc, cv::InputOutputArray Tc) {
  constexpr auto name = "CalibrateExtrinsics";
  fisheye::requireListsOfPoints(objectPoints, imagePoints, name);
  fisheye::require(omc.type() == CV_64FC3 || Tc.type() == CV_64FC3,
                   "omc.type() == CV_64FC3 || Tc.type() == CV_64FC3", name);
  const int targetViews = static_cast<int>(objectPoints.total());
  if (omc.empty()) {
    omc.create(1, targetViews, CV_64FC3);
  }
  if (Tc.empty()) {
    Tc.create(1, targetViews, CV_64FC3);
  }
  const int views = static_cast<int>(imagePoints.total());
  const fisheye::Camera camera = toCamera(param);
  for (int i = 0; i < views; ++i) {
    const fisheye::ViewPoints view =
        fisheye::readView(objectPoints.getMat(i), imagePoints.getMat(i), name);
    const auto refined = fisheye::findPose(view, fisheye::targetPlane(view), camera, thresh_cond);
    if (!refined) {
      return false;
    }
    if (check_cond != 0) {
      cv::Mat residuals;
      const cv::Mat J = fisheye::poseJacobian(view, camera, refined->evaluated, residuals);
      if (fisheye::conditionRatio(J) > thresh_cond) {
        cv::error(cv::Error::StsInternal,
                  cv::format("CALIB_CHECK_COND - Ill-conditioned matrix for input array %d", i),
                  name, __FILE__, __LINE__);
      }
    }
    fisheye::writeTripleAt(omc, i, refined->pose.om, name);
    fisheye::writeTripleAt(Tc, i, refined->pose.T, name);
  }
  return true;
}

}  // namespace internal
