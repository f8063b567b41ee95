#include <cmath>
#include <cstddef>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "fisheye_calibration.h"
#include "images/debug_files.h"

#if FISHEYE_CALIBRATION_INTERACTIVE
#include <opencv2/highgui.hpp>

#include "platform/display.h"
#endif

namespace fisheye_calibration::registration {
namespace {

constexpr std::size_t kPoints = 4;

// Width and height of the straightened picture, whatever the size of the input (compatibility 44).
constexpr int kStraightenedSize = 5184;

std::vector<cv::Point2f> imagePointsOf(const std::vector<CalibrationPoint>& points) {
  std::vector<cv::Point2f> imagePoints;
  imagePoints.reserve(points.size());
  for (const CalibrationPoint& point : points) {
    imagePoints.emplace_back(point.ImagePtX, point.ImagePtY);
  }
  return imagePoints;
}

// The world layout of four points in pixels, anchored at the image position (x0, y0) of the first:
//   dI = |image point 0 - image point 3|, dW = |world point 0 - world point 3|   (32-bit float)
//   s = dW/dI                                                      (world units per pixel)
//   (x, y)_k = ((Xw_k - Xw_0)/s + x0, (Yw_k - Yw_0)/s + y0)
std::vector<cv::Point2f> worldLayoutInPixels(const std::vector<CalibrationPoint>& points) {
  const CalibrationPoint& first = points[0];
  const CalibrationPoint& opposite = points[3];
  const float imageDx = first.ImagePtX - opposite.ImagePtX;
  const float imageDy = first.ImagePtY - opposite.ImagePtY;
  const float worldDx = first.Xw - opposite.Xw;
  const float worldDy = first.Yw - opposite.Yw;
  const float dI = std::sqrt(imageDy * imageDy + imageDx * imageDx);
  const float dW = std::sqrt(worldDx * worldDx + worldDy * worldDy);
  const double s = static_cast<double>(dW) / static_cast<double>(dI);

  const double x0 = first.ImagePtX;
  const double y0 = first.ImagePtY;
  std::vector<cv::Point2f> layout{{first.ImagePtX, first.ImagePtY}};
  for (std::size_t k = 1; k < kPoints; ++k) {
    const double dx = static_cast<double>(points[k].Xw) - first.Xw;
    const double dy = static_cast<double>(points[k].Yw) - first.Yw;
    layout.emplace_back(static_cast<float>(dx / s + x0), static_cast<float>(dy / s + y0));
  }
  return layout;
}

#if FISHEYE_CALIBRATION_INTERACTIVE
constexpr const char* kWindow = "Transformed Image";

bool isWindowOpen() {
  try {
    return cv::getWindowProperty(kWindow, cv::WND_PROP_VISIBLE) >= 1;
  } catch (const cv::Exception&) {  // some toolkits have no windows to ask once the last is closed
    return false;
  }
}

// cv::waitKey(0) of some toolkits would not return any more once the window is closed.
void waitForKeyOrClosing() {
  constexpr int kMilliseconds = 50;
  constexpr int kPatience = 20;  // steps until a window that does not show is none
  for (int step = 0; !isWindowOpen(); ++step) {
    if (step == kPatience) {  // the toolkit does not tell
      cv::waitKey(0);
      return;
    }
    if (cv::waitKey(kMilliseconds) >= 0) {
      return;
    }
  }
  while (cv::waitKey(kMilliseconds) < 0 && isWindowOpen()) {
  }
}
#endif

void showUntilKey([[maybe_unused]] const cv::Mat& image) {
#if FISHEYE_CALIBRATION_INTERACTIVE
  platform::requireDisplay();
  cv::imshow(kWindow, image);
  waitForKeyOrClosing();
  cv::destroyAllWindows();
#endif
}

}  // namespace
}  // namespace fisheye_calibration::registration

using namespace fisheye_calibration;
using namespace fisheye_calibration::registration;

// The numeric outputs are never written (compatibility 44).
bool GetPerspectiveTransformationParam(std::vector<CalibrationPoint> points, double* const, double&,
                                       double&) {
  if (points.empty()) {
    return false;
  }
  const std::vector<cv::Point2f> source = imagePointsOf(points);
  // The image library refuses any other number of points: it requires four in both lists.
  std::vector<cv::Point2f> destination;
  if (points.size() == kPoints) {
    destination = worldLayoutInPixels(points);
  }
  const cv::Mat M = cv::getPerspectiveTransform(source, destination, cv::DECOMP_LU);

  const cv::Mat picture = cv::imread(images::debug_files::kToStraighten, cv::IMREAD_COLOR);
  cv::Mat straightened;
  cv::warpPerspective(picture, straightened, M, cv::Size(kStraightenedSize, kStraightenedSize),
                      cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar());
  showUntilKey(straightened);
  if (images::kWritesDebugFiles) {
    cv::imwrite(images::debug_files::kStraightened, straightened);  // failure is ignored
  }
  return true;
}
