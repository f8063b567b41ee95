// Entry points of the pose estimation that take the callers' arrays.

#include "fisheye/arrays.h"
#include "fisheye/arrays_of_triples.h"
#include "fisheye/internal.h"
#include "fisheye/intrinsic_params.h"
#include "fisheye/view_arrays.h"
#include "lens/check.h"
#include "solver/pose.h"

namespace fisheye_calibration::internal {

bool InitExtrinsics(const cv::Mat& _imagePoints, const cv::Mat& _objectPoints,
                    const IntrinsicParams& param, cv::Mat& omckk, cv::Mat& Tckk) {
  solver::requirePoseInput(!_objectPoints.empty() && _objectPoints.type() == CV_64FC3,
                           !_imagePoints.empty() && _imagePoints.type() == CV_64FC2);
  const solver::ViewPoints view = fisheye::readView(_objectPoints, _imagePoints, "InitExtrinsics");
  const auto pose = solver::initialPose(view, solver::targetPlane(view), toCamera(param));
  if (!pose) {
    return false;
  }
  omckk = cv::Mat(pose->om, true);
  Tckk = cv::Mat(pose->T, true);
  return true;
}

// maxIter is not read (compatibility 19).
void ComputeExtrinsicRefine(const cv::Mat& imagePoints, const cv::Mat& objectPoints, cv::Mat& rvec,
                            cv::Mat& tvec, cv::Mat& J, int /*maxIter*/,
                            const IntrinsicParams& param, double thresh_cond) {
  constexpr auto kName = "ComputeExtrinsicRefine";
  lens::require(!objectPoints.empty() && objectPoints.type() == CV_64FC3,
                "!objectPoints.empty() && objectPoints.type() == CV_64FC3", kName);
  lens::require(!imagePoints.empty() && imagePoints.type() == CV_64FC2,
                "!imagePoints.empty() && imagePoints.type() == CV_64FC2", kName);
  lens::require(rvec.total() > 2 && tvec.total() > 2, "rvec.total() > 2 && tvec.total() > 2",
                kName);
  const lens::Camera camera = toCamera(param);
  const solver::ViewPoints view = fisheye::readView(objectPoints, imagePoints, kName);
  solver::requirePairs(view, kName);
  const solver::RefinedPose refined = solver::refinePose(
      view, camera, {fisheye::readTriple(rvec), fisheye::readTriple(tvec)}, thresh_cond);
  cv::Mat residuals;
  J = solver::poseJacobian(view, camera, refined.evaluated, residuals);
  if (refined.moved) {
    rvec = cv::Mat(refined.pose.om, true);
    tvec = cv::Mat(refined.pose.T, true);
  }
}

bool CalibrateExtrinsics(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                         const IntrinsicParams& param, int check_cond, double thresh_cond,
                         cv::InputOutputArray omc, cv::InputOutputArray Tc) {
  constexpr auto kName = "CalibrateExtrinsics";
  fisheye::requireListsOfPoints(objectPoints, imagePoints, kName);
  // One array of the right type is enough (compatibility 21).
  lens::require(omc.type() == CV_64FC3 || Tc.type() == CV_64FC3,
                "omc.type() == CV_64FC3 || Tc.type() == CV_64FC3", kName);
  const int targetViews = static_cast<int>(objectPoints.total());
  if (omc.empty()) {
    omc.create(1, targetViews, CV_64FC3);
  }
  if (Tc.empty()) {
    Tc.create(1, targetViews, CV_64FC3);
  }
  const int views = static_cast<int>(imagePoints.total());
  const lens::Camera camera = toCamera(param);
  for (int i = 0; i < views; ++i) {
    const solver::ViewPoints view =
        fisheye::readView(objectPoints.getMat(i), imagePoints.getMat(i), kName);
    const auto refined = solver::findPose(view, solver::targetPlane(view), camera, thresh_cond);
    if (!refined) {
      return false;
    }
    if (check_cond != 0) {
      cv::Mat residuals;
      const cv::Mat J = solver::poseJacobian(view, camera, refined->evaluated, residuals);
      if (solver::conditionRatio(J) > thresh_cond) {
        cv::error(cv::Error::StsInternal,
                  cv::format("CALIB_CHECK_COND - Ill-conditioned matrix for input array %d", i),
                  kName, __FILE__, __LINE__);
      }
    }
    fisheye::writeTripleAt(omc, i, refined->pose.om, kName);
    fisheye::writeTripleAt(Tc, i, refined->pose.T, kName);
  }
  return true;
}

}  // namespace fisheye_calibration::internal
