#include <algorithm>
#include <vector>

#include "fisheye/fisheye.h"
#include "fisheye/view_arrays.h"
#include "lens/check.h"
#include "solver/calibration.h"

namespace fisheye_calibration::fisheye {
namespace {

// Stores `value` in the caller's element type, or as doubles if the array is empty.
void store(const cv::Mat& value, const cv::_OutputArray& array) {
  if (array.needed()) {
    value.convertTo(array, array.empty() ? value.type() : array.type());
  }
}

// Stores one triple per view in the caller's list; a list of matrices gets a 3x1 matrix per view.
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
  constexpr auto kName = "calibrate";
  lens::require(
      !objectPoints.empty() && !imagePoints.empty() && objectPoints.total() == imagePoints.total(),
      "!objectPoints.empty() && !imagePoints.empty() && objectPoints.total() == "
      "imagePoints.total()",
      kName);
  lens::require(objectPoints.type() == CV_32FC3 || objectPoints.type() == CV_64FC3,
                "objectPoints.type() == CV_32FC3 || objectPoints.type() == CV_64FC3", kName);
  lens::require(imagePoints.type() == CV_32FC2 || imagePoints.type() == CV_64FC2,
                "imagePoints.type() == CV_32FC2 || imagePoints.type() == CV_64FC2", kName);
  lens::require(K.empty() || (K.size() == cv::Size(3, 3)), "K.empty() || (K.size() == Size(3,3))",
                kName);
  lens::require(D.empty() || (D.total() == 2), "D.empty() || (D.total() == 2)", kName);
  lens::require(rvecs.empty() || (rvecs.channels() == 3),
                "rvecs.empty() || (rvecs.channels() == 3)", kName);
  lens::require(tvecs.empty() || (tvecs.channels() == 3),
                "tvecs.empty() || (tvecs.channels() == 3)", kName);

  const solver::Calibration solved =
      solver::calibrate(readViews(objectPoints, imagePoints, kName), image_size, criteria);

  store(cv::Mat(lens::cameraMatrix(solved.camera)), K);
  store(cv::Mat(cv::Vec2d(solved.camera.k0, solved.camera.k1)), D);
  std::vector<cv::Vec3d> rotations;
  std::vector<cv::Vec3d> translations;
  for (const lens::Pose& pose : solved.poses) {
    rotations.push_back(pose.om);
    translations.push_back(pose.T);
  }
  // The kind of the rotation list determines the form of both.
  storeTriples(rotations, rvecs, rvecs.isMatVector());
  storeTriples(translations, tvecs, rvecs.isMatVector());
  return solved.rms;
}

}  // namespace fisheye_calibration::fisheye
