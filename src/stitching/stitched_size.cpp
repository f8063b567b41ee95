#include <algorithm>

#include "fisheye_calibration.h"
#include "stitching/doubled_view.h"
#include "stitching/rig_alignment.h"
#include "stitching/saturation.h"
#include "stitching/stitching.h"

namespace fisheye_calibration::stitching {
namespace {

// The range of pixel coordinates, 0 included.
class Extent {
 public:
  explicit Extent(std::int32_t size) { include(static_cast<float>(size)); }

  void include(float value) {
    least_ = std::min(least_, value);
    greatest_ = std::max(greatest_, value);
  }

  // Adds one half, truncates to an integer and narrows to float. NaN is ignored.
  void includeRounded(double value) {
    if (value == value) {
      include(static_cast<float>(halfAddedAndTruncated(value)));
    }
  }

  // The length of the range rounded up to a multiple of 4, at most 2147483644.
  std::int32_t roundedUpLength() const {
    constexpr std::int64_t kLargest = 0x7FFFFFFC;
    const std::int64_t length = truncated(greatest_ - least_);
    return static_cast<std::int32_t>((std::min(length, kLargest) + 3) / 4 * 4);
  }

 private:
  float least_ = 0;
  float greatest_ = 0;
};

}  // namespace

std::optional<StitchedSize> stitchedSize(const CameraInput& first, const CameraInput& second) {
  renderForDebugBitmaps(first, Side::kLeft);
  renderForDebugBitmaps(second, Side::kRight);
  const auto pairs = cornerPairs(first, second);
  if (!pairs) {
    return std::nullopt;
  }

  // The canvas holds the second view's rectangle and that rectangle's image under the transform.
  const cv::Matx33d M = firstToSecond(*pairs, first, second, Rows::kPicture);
  const std::int32_t W2 = doubledWidth(second);
  const std::int32_t H2 = doubledHeight(second);
  Extent columns(W2);
  Extent rows(H2);
  for (const cv::Point2d& p :
       {cv::Point2d(0, 0), cv::Point2d(W2, 0), cv::Point2d(W2, H2), cv::Point2d(0, H2)}) {
    const double w = M(2, 0) * p.x + M(2, 1) * p.y + M(2, 2);
    columns.includeRounded((M(0, 0) * p.x + M(0, 1) * p.y + M(0, 2)) / w);
    rows.includeRounded((M(1, 0) * p.x + M(1, 1) * p.y + M(1, 2)) / w);
  }
  return StitchedSize{columns.roundedUpLength(), rows.roundedUpLength()};
}

}  // namespace fisheye_calibration::stitching

using namespace fisheye_calibration::stitching;

bool ComputeStitchedImageSize(unsigned char* image1, ImageLong width1, ImageLong height1, int bits1,
                              FishEyeCalibrationParam param1, std::vector<CalibrationPoint> points1,
                              unsigned char* image2, ImageLong width2, ImageLong height2, int bits2,
                              FishEyeCalibrationParam param2, std::vector<CalibrationPoint> points2,
                              ImageLong& stitchedWidth, ImageLong& stitchedHeight,
                              int& stitchedBits) {
  stitchedBits = bits1;
  const auto size = stitchedSize({image1, width1, height1, bits1, param1, points1},
                                 {image2, width2, height2, bits2, param2, points2});
  if (!size) {
    return false;
  }
  stitchedWidth = size->width;
  stitchedHeight = size->height;
  return true;
}
