#include "drawing/seam_overlay.h"

#include <algorithm>
#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <string>

#include "drawing/primitives.h"

namespace fisheye_calibration::program {
namespace {

cv::Mat maskOf(StitchCamera& camera) {
  const Size size = camera.viewSize();
  FrameBuffer view = blankBuffer(size, camera.frame.bitCount);
  FrameBuffer mask = blankBuffer(size, 8);
  const Size& frame = camera.frame.size;
  if (!SingleCamCorrected(camera.frame.data(), frame.width, frame.height, camera.frame.bitCount,
                          camera.param, view.data(), size.width, size.height, mask.data())) {
    return {size.height, size.width, CV_8UC1, cv::Scalar(255)};  // it contributes nothing
  }
  return toPicture(mask);
}

}  // namespace

std::vector<std::optional<SeamRow>> seamRows(const cv::Mat& leftMask, const cv::Mat& rightMask,
                                             const cv::Matx33d& transform) {
  cv::Mat right;
  cv::warpPerspective(rightMask, right, transform, leftMask.size(),
                      cv::INTER_NEAREST | cv::WARP_INVERSE_MAP, cv::BORDER_CONSTANT,
                      cv::Scalar(255));
  std::vector<std::optional<SeamRow>> rows(static_cast<std::size_t>(leftMask.rows));
  for (int y = 0; y < leftMask.rows; ++y) {
    const unsigned char* l = leftMask.ptr(y);
    const unsigned char* r = right.ptr(y);
    int begin = 0;
    while (begin < leftMask.cols && (l[begin] == 255 || r[begin] == 255)) {
      ++begin;
    }
    if (begin == leftMask.cols) {
      continue;
    }
    int end = leftMask.cols - 1;
    while (l[end] == 255) {
      --end;  // stops at `begin` at the latest
    }
    rows[static_cast<std::size_t>(y)] = SeamRow{begin, end};
  }
  return rows;
}

std::vector<std::optional<SeamRow>> seamRows(StitchPair& pair, const SharedPoints& shared) {
  return seamRows(maskOf(pair.left), maskOf(pair.right), viewTransform(pair, shared));
}

cv::Mat drawSeam(const cv::Mat& canvas, StitchPair& pair, const SharedPoints& shared,
                 const std::vector<Agreement>& agreement) {
  cv::Mat picture;
  if (canvas.channels() == 1) {
    cv::cvtColor(canvas, picture, cv::COLOR_GRAY2BGR);
  } else {
    picture = canvas.clone();
  }
  const cv::Scalar blue(230, 90, 0);
  const cv::Scalar red(30, 20, 220);
  const int shorter = std::min(canvas.cols, canvas.rows);
  const int thickness = std::max(1, shorter / 700);
  const int offset = (canvas.rows - pair.left.viewSize().height) / 2;
  const auto rows = seamRows(pair, shared);
  for (std::size_t y = 0; y < rows.size(); ++y) {
    if (!rows[y]) {
      continue;
    }
    const int row = static_cast<int>(y) + offset;
    const auto mark = [&](int x, const cv::Scalar& colour) {
      cv::rectangle(picture, cv::Rect(x - thickness, row, 2 * thickness, 1), colour, cv::FILLED);
    };
    mark(rows[y]->begin, blue);
    mark(rows[y]->end, red);
  }
  const double radius = std::max(3.0, shorter / 250.0);
  const double letters = std::clamp(shorter / 80.0, 8.0, 24.0);
  for (const Agreement& at : agreement) {
    drawRing(picture, at.left, 2 * radius, red, thickness);
    drawDisc(picture, at.right, 0.6 * radius, blue);
    drawTextWithRim(picture, std::to_string(at.pointId),
                    at.left + cv::Point2d(2.2 * radius, -radius), letters, red);
  }
  return picture;
}

}  // namespace fisheye_calibration::program
