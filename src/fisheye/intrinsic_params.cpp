#include <algorithm>
#include <array>

#include "fisheye/internal.h"
#include "lens/check.h"

namespace fisheye_calibration::internal {
namespace {

constexpr std::size_t kParameters = 7;

// The parameters in their fixed order.
std::array<double*, kParameters> inOrder(IntrinsicParams& p) {
  return {&p.focalLength[0], &p.focalLength[1], &p.principalPoint[0], &p.principalPoint[1],
          &p.skew,           &p.distortion[0],  &p.distortion[1]};
}

void requireDoubles(const cv::Mat& a, const char* function) {
  lens::require(a.type() == CV_64FC1, "a.type() == CV_64FC1", function);
}

// Passes the next element of `a` to each estimated parameter and 0 to each held one. A matrix with
// too few elements or a mask of other than 7 bytes is rejected before anything changes.
template <class Use>
void distribute(IntrinsicParams& p, const cv::Mat& a, Use use, const char* function) {
  const std::size_t estimated = kParameters - static_cast<std::size_t>(std::count(
                                                  p.estimateMask.begin(), p.estimateMask.end(), 0));
  lens::require(p.estimateMask.size() == kParameters && estimated <= a.total(),
                "estimateMask.size() == 7 && countNonZero(estimateMask) <= a.total()", function);
  const cv::Mat values = a.isContinuous() ? a : a.clone();
  const double* next = values.ptr<double>();
  const auto parameters = inOrder(p);
  for (std::size_t i = 0; i < kParameters; ++i) {
    use(*parameters[i], p.estimateMask[i] != 0 ? *next++ : 0.0);
  }
}

}  // namespace

IntrinsicParams::IntrinsicParams() : estimateMask(kParameters, 0) {}

IntrinsicParams IntrinsicParams::operator+(const cv::Mat& a) const {
  constexpr auto kName = "cv::internal::IntrinsicParams::operator +";  // compatibility 20
  requireDoubles(a, kName);
  IntrinsicParams sum = *this;
  distribute(
      sum, a, [](double& parameter, double value) { parameter += value; }, kName);
  return sum;
}

IntrinsicParams& IntrinsicParams::operator=(const cv::Mat& a) {
  constexpr auto kName = "cv::internal::IntrinsicParams::operator =";  // compatibility 20
  requireDoubles(a, kName);
  distribute(
      *this, a, [](double& parameter, double value) { parameter = value; }, kName);
  return *this;
}

}  // namespace fisheye_calibration::internal
