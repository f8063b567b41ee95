#include <algorithm>
#include <array>

#include "fisheye/arrays.h"
#include "fisheye/fisheye.h"
#include "fisheye/internal.h"
#include "fisheye/intrinsic_params.h"
#include "fisheye/view_arrays.h"
#include "lens/camera_model-inl.h"
#include "lens/check.h"
#include "lens/rotation.h"

namespace fisheye_calibration::fisheye {
namespace {

namespace model = lens::HWY_NAMESPACE;

constexpr int kJacobianColumns = 13;

// Fills the two Jacobian rows of one point: fx, fy, cx, cy, k0, k1, om (3), T (3), alpha.
void fillJacobianRows(const lens::Camera& camera, const std::array<cv::Matx33d, 3>& dR,
                      const cv::Vec3d& X, const model::Projection<double>& p, double* rowU,
                      double* rowV) {
  const auto pose = model::poseDerivatives(camera, dR, X[0], X[1], X[2], p);
  const auto lens = model::lensDerivatives(camera, p);
  const double u[kJacobianColumns] = {p.xSkewed,   0,         1,           0,         lens.u_k[0],
                                      lens.u_k[1], pose.u[0], pose.u[1],   pose.u[2], pose.u[3],
                                      pose.u[4],   pose.u[5], lens.u_alpha};
  const double v[kJacobianColumns] = {0,           p.yd,      0,         1,         lens.v_k[0],
                                      lens.v_k[1], pose.v[0], pose.v[1], pose.v[2], pose.v[3],
                                      pose.v[4],   pose.v[5], 0};
  std::copy_n(u, kJacobianColumns, rowU);
  std::copy_n(v, kJacobianColumns, rowV);
}

// `pixels` is continuous and holds as many elements as `points`, in any shape.
template <class Real>
void projectAll(const cv::Mat& points, const lens::Camera& camera, const lens::Pose& pose,
                cv::Mat& pixels, cv::Mat* jacobian) {
  const cv::Matx33d R = lens::rotationFromVector(pose.om);
  const auto dR = jacobian ? lens::rotationDerivative(pose.om) : std::array<cv::Matx33d, 3>();
  auto* out = pixels.ptr<cv::Vec<Real, 2>>();
  int row = 0;
  for (int i = 0; i < points.rows; ++i) {
    const auto* in = points.ptr<cv::Vec<Real, 3>>(i);
    for (int j = 0; j < points.cols; ++j, ++out, row += 2) {
      const cv::Vec3d X = in[j];
      const auto p = model::projectPoint(camera, R, pose.T, X[0], X[1], X[2]);
      *out = {static_cast<Real>(p.u), static_cast<Real>(p.v)};
      if (jacobian) {
        fillJacobianRows(camera, dR, X, p, jacobian->ptr<double>(row),
                         jacobian->ptr<double>(row + 1));
      }
    }
  }
}

}  // namespace

void projectPoints(cv::InputArray objectPoints, cv::OutputArray imagePoints, cv::InputArray _rvec,
                   cv::InputArray _tvec, cv::InputArray _K, cv::InputArray _D, double alpha,
                   cv::OutputArray jacobian) {
  constexpr auto kName = "projectPoints";
  lens::require(objectPoints.type() == CV_32FC3 || objectPoints.type() == CV_64FC3,
                "objectPoints.type() == CV_32FC3 || objectPoints.type() == CV_64FC3", kName);
  const cv::Mat points =
      objectPoints.getMat();  // before creation: the output may be the same array
  imagePoints.create(objectPoints.size(), CV_MAKETYPE(objectPoints.depth(), 2));
  lens::require(
      _rvec.total() * static_cast<std::size_t>(_rvec.channels()) == 3 &&
          (_rvec.depth() == CV_32F || _rvec.depth() == CV_64F),
      "_rvec.total() * _rvec.channels() == 3 && (_rvec.depth() == CV_32F || _rvec.depth() == "
      "CV_64F)",
      kName);
  lens::require(
      _tvec.total() * static_cast<std::size_t>(_tvec.channels()) == 3 &&
          (_tvec.depth() == CV_32F || _tvec.depth() == CV_64F),
      "_tvec.total() * _tvec.channels() == 3 && (_tvec.depth() == CV_32F || _tvec.depth() == "
      "CV_64F)",
      kName);
  lens::require(_tvec.getMat().isContinuous() && _rvec.getMat().isContinuous(),
                "_tvec.getMat().isContinuous() && _rvec.getMat().isContinuous()", kName);
  lens::require(
      _K.size() == cv::Size(3, 3) && (_K.type() == CV_32F || _K.type() == CV_64F) &&
          _D.type() == _K.type() && _D.total() == 2,
      "_K.size() == Size(3, 3) && (_K.type() == CV_32F || _K.type() == CV_64F) && _D.type() == "
      "_K.type() && _D.total() == 2",
      kName);

  const lens::Camera camera = readCamera(_K.getMat(), _D.getMat(), alpha);
  const lens::Pose pose{readTriple(_rvec.getMat()), readTriple(_tvec.getMat())};
  cv::Mat created = imagePoints.getMat();
  cv::Mat pixels = created.isContinuous() ? created : created.clone();
  cv::Mat derivatives;
  cv::Mat* wanted = nullptr;
  if (jacobian.needed()) {
    jacobian.create(2 * static_cast<int>(points.total()), kJacobianColumns, CV_64F);
    derivatives = jacobian.getMat();
    wanted = &derivatives;
  }
  if (points.depth() == CV_32F) {
    projectAll<float>(points, camera, pose, pixels, wanted);
  } else {
    projectAll<double>(points, camera, pose, pixels, wanted);
  }
  if (!created.isContinuous()) {
    pixels.copyTo(created);
  }
}

}  // namespace fisheye_calibration::fisheye

namespace fisheye_calibration::internal {

void projectPoints(cv::InputArray objectPoints, cv::OutputArray imagePoints, cv::InputArray _rvec,
                   cv::InputArray _tvec, const IntrinsicParams& param, cv::OutputArray jacobian) {
  fisheye::requireTargetPoints(
      !objectPoints.empty() && (objectPoints.type() == CV_32FC3 || objectPoints.type() == CV_64FC3),
      "projectPoints");
  fisheye::projectPoints(objectPoints, imagePoints, _rvec, _tvec,
                         lens::cameraMatrix(toCamera(param)), param.distortion, param.skew,
                         jacobian);
}

}  // namespace fisheye_calibration::internal
