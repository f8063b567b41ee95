#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "fisheye/check.h"
#include "fisheye/fisheye.h"
#include "fisheye/internal.h"
#include "fisheye/intrinsic_params.h"
#include "fisheye/normal_equations.h"
#include "fisheye/pose.h"
#include "fisheye/uncertainty.h"

namespace fisheye {
namespace {

constexpr double kMaxConditionRatio = 1e6;

// An equidistant lens that sees half a turn across the longer side, centred in the image.
internal::IntrinsicParams startingCamera(const cv::Size& imageSize) {
  internal::IntrinsicParams start;
  const double f = std::max(imageSize.width, imageSize.height) / CV_PI;
  start.focalLength = {f, f};
  start.principalPoint = {imageSize.width * 0.5 - 0.5, imageSize.height * 0.5 - 0.5};
  start.estimateMask = {1, 1, 1, 1, 0, 1, 1};  // everything but skew
  return start;
}

cv::Vec4d focalsAndCentre(const internal::IntrinsicParams& p) {
  return {p.focalLength[0], p.focalLength[1], p.principalPoint[0], p.principalPoint[1]};
}

// Whether the criteria end the iteration; a change that is not a number is never small enough, and
// unknown criteria never end it.
bool isMet(const cv::TermCriteria& criteria, int iteration, double change) {
  const bool counted = iteration >= criteria.maxCount;
  const bool small = change <= criteria.epsilon;
  switch (criteria.type) {
    case cv::TermCriteria::COUNT:
      return counted;
    case cv::TermCriteria::EPS:
      return small;
    case cv::TermCriteria::COUNT + cv::TermCriteria::EPS:
      return counted || small;
    default:
      return false;
  }
}

// The Gauss-Newton iteration over the intrinsics, with the poses found anew for every camera.
class Solver {
 public:
  Solver(std::vector<ViewPoints> views, const cv::Size& imageSize)
      : views_(std::move(views)), camera_(startingCamera(imageSize)), poses_(views_.size()) {
    findPoses();
  }

  void run(const cv::TermCriteria& criteria) {
    double change = 1;
    for (int iteration = 0;
         iteration < std::numeric_limits<int>::max() && !isMet(criteria, iteration, change);
         ++iteration) {
      const internal::IntrinsicParams previous = camera_;
      camera_ = camera_ + dampedStep(iteration);
      change = cv::norm(focalsAndCentre(camera_) - focalsAndCentre(previous)) /
               cv::norm(focalsAndCentre(camera_));
      findPoses();
    }
  }

  const internal::IntrinsicParams& camera() const { return camera_; }
  const std::vector<Pose>& poses() const { return poses_; }
  double rms() const {
    return rootMeanSquare(reprojectionResiduals(views_, internal::toCamera(camera_), poses_));
  }

 private:
  // The step factor rises from 0.4 towards 1: s = 1 - 0.6^(iteration + 1).
  cv::Mat dampedStep(int iteration) const {
    const ReducedSystem system = reducedNormalEquations(views_, camera_, poses_);
    cv::Mat step;
    cv::solve(system.JJ2, system.ex3, step, cv::DECOMP_LU);
    return (1 - std::pow(1 - 0.4, iteration + 1.0)) * step;
  }

  // A view without a first pose keeps its previous one, and so do the views after it.
  void findPoses() {
    const Camera camera = internal::toCamera(camera_);
    for (std::size_t i = 0; i < views_.size(); ++i) {
      if (planes_.size() == i) {
        planes_.push_back(targetPlane(views_[i]));
      }
      const auto refined = findPose(views_[i], planes_[i], camera, kMaxConditionRatio);
      if (!refined) {
        return;
      }
      poses_[i] = refined->pose;
    }
  }

  std::vector<ViewPoints> views_;
  std::vector<TargetPlane> planes_;
  internal::IntrinsicParams camera_;
  std::vector<Pose> poses_;
};

// Stores `value` in the caller's element type, or as doubles when the array is empty.
void store(const cv::Mat& value, const cv::_OutputArray& array) {
  if (array.needed()) {
    value.convertTo(array, array.empty() ? value.type() : array.type());
  }
}

// One triple a view into the callers' lists. A list of separate matrices gets a 3x1 matrix a view.
void storeTriples(const std::vector<cv::Vec3d>& triples, const cv::_OutputArray& array,
                  bool asMatrices) {
  const int count = static_cast<int>(triples.size());
  if (!asMatrices) {
    store(cv::Mat(triples), array);
    return;
  }
  if (array.empty()) {
    array.create(count, 1, CV_64FC3);
  }
  for (int i = 0; i < count; ++i) {
    array.create(3, 1, CV_64F, i, true);
    cv::Mat element = array.getMat(i);
    std::copy_n(triples[static_cast<std::size_t>(i)].val, 3, element.ptr<double>());
  }
}

}  // namespace

double calibrate(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                 const cv::Size& image_size, cv::InputOutputArray K, cv::InputOutputArray D,
                 cv::OutputArrayOfArrays rvecs, cv::OutputArrayOfArrays tvecs, int /*flags*/,
                 cv::TermCriteria criteria) {
  constexpr auto name = "calibrate";
  require(
      !objectPoints.empty() && !imagePoints.empty() && objectPoints.total() == imagePoints.total(),
      "!objectPoints.empty() && !imagePoints.empty() && objectPoints.total() == "
      "imagePoints.total()",
      name);
  require(objectPoints.type() == CV_32FC3 || objectPoints.type() == CV_64FC3,
          "objectPoints.type() == CV_32FC3 || objectPoints.type() == CV_64FC3", name);
  require(imagePoints.type() == CV_32FC2 || imagePoints.type() == CV_64FC2,
          "imagePoints.type() == CV_32FC2 || imagePoints.type() == CV_64FC2", name);
  require(K.empty() || (K.size() == cv::Size(3, 3)), "K.empty() || (K.size() == Size(3,3))", name);
  require(D.empty() || (D.total() == 2), "D.empty() || (D.total() == 2)", name);
  require(rvecs.empty() || (rvecs.channels() == 3), "rvecs.empty() || (rvecs.channels() == 3)",
          name);
  require(tvecs.empty() || (tvecs.channels() == 3), "tvecs.empty() || (tvecs.channels() == 3)",
          name);

  Solver solver(readViews(objectPoints, imagePoints, name), image_size);
  solver.run(criteria);

  store(cv::Mat(internal::cameraMatrix(solver.camera())), K);
  store(cv::Mat(solver.camera().distortion), D);
  std::vector<cv::Vec3d> rotations;
  std::vector<cv::Vec3d> translations;
  for (const Pose& pose : solver.poses()) {
    rotations.push_back(pose.om);
    translations.push_back(pose.T);
  }
  // The kind of the rotations' list decides the form of both.
  storeTriples(rotations, rvecs, rvecs.isMatVector());
  storeTriples(translations, tvecs, rvecs.isMatVector());
  return solver.rms();
}

}  // namespace fisheye
