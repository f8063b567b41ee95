#include "single/calibration.h"

#include <cstdlib>

#include "platform/message_box.h"
#include "single/solver_view.h"
#include "solver/calibration.h"

namespace fisheye_calibration::single {
namespace {

constexpr int kMostSteps = 20;
constexpr double kSmallestChange = 1e-6;

}  // namespace

bool calibrate(const cv::Size& imageSize, std::vector<CalibrationPoint>& points,
               const cv::Size& correctedSize, Filler filler, FishEyeCalibrationParam& param,
               double& reprojectionError) {
  const solver::Calibration solved =
      solver::calibrate({solverView(points)}, imageSize,
                        cv::TermCriteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS,
                                         kMostSteps, kSmallestChange));
  return completeRecord(solved.camera, solved.poses.front(), points, correctedSize.width,
                        correctedSize.height, param, reprojectionError, filler);
}

bool calibrateOrShowMessage(const cv::Size& imageSize, std::vector<CalibrationPoint>& points,
                            const cv::Size& correctedSize, Filler filler,
                            FishEyeCalibrationParam& param, double& reprojectionError) {
  if (points.size() < kFewestPoints) {  // (compatibility 13)
    platform::showMessage("特征点少于9个点，无法完成标定！");
    return false;
  }
  return calibrate(imageSize, points, correctedSize, filler, param, reprojectionError);
}

}  // namespace fisheye_calibration::single

using namespace fisheye_calibration::single;

// The picture and its bit count are not used (compatibility 15).
bool SingleCamCalibration(unsigned char* /*image*/, ImageLong width, ImageLong height,
                          int /*bitCount*/, std::vector<CalibrationPoint>& points,
                          ImageLong correctedWidth, ImageLong correctedHeight,
                          FishEyeCalibrationParam& param, double& reprojectionError) {
  return calibrateOrShowMessage(cv::Size(width, height), points,
                                cv::Size(correctedWidth, correctedHeight), std::rand, param,
                                reprojectionError);
}
