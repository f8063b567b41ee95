// Views to be corrected, and the maps that their raw positions have to equal.
#pragma once

#include <algorithm>
#include <cstdint>
#include <opencv2/core.hpp>

#include "fisheye/fisheye.h"
#include "rendering/raw_position.h"
#include "support/dice.h"

namespace views {

using support::Dice;

struct View {
  fisheye_calibration::lens::Camera camera;
  cv::Matx33d P = cv::Matx33d::eye();
  cv::Size size;
  cv::Matx33d RR = cv::Matx33d::eye();

  fisheye_calibration::rendering::RectifyingRays rays() const {
    return fisheye_calibration::rendering::rectifyingRays(camera, RR, P, size);
  }
};

inline View ordinaryView() {
  View view;
  view.camera = {410, 408, 645, 474, 0.02, -0.03, 0};
  view.P = {410, 0, 0, 0, 408, 0, 0, 0, 1};
  view.size = {1280, 960};
  return view;
}

inline View randomView(Dice& dice) {
  View view;
  view.size = {dice.whole(1, 250), dice.whole(1, 120)};
  if (dice.oneIn(8)) {
    view.size = {dice.whole(1000, 9000), dice.whole(1, 3)};
  }
  fisheye_calibration::lens::Camera& c = view.camera;
  const int longer = std::max(view.size.width, view.size.height);
  c.fx = longer * dice.magnitude(0.05, 3);
  c.fy = c.fx * dice.uniform(0.9, 1.1);
  c.cx = view.size.width * dice.uniform(0, 1);
  c.cy = view.size.height * dice.uniform(0, 1);
  c.k0 = dice.number(0.2);
  c.k1 = dice.number(0.2);
  switch (dice.whole(0, 5)) {
    case 0:  // any focal lengths, mirrored ones, too
      c.fx = dice.magnitude(1e-6, 1e5) * (dice.oneIn(3) ? -1 : 1);
      c.fy = dice.magnitude(1e-6, 1e5) * (dice.oneIn(3) ? -1 : 1);
      break;
    case 1:  // the distorted angle turns back
      c.k0 = dice.number(20);
      c.k1 = dice.number(20);
      break;
    case 2:  // positions near whole and half 1/32 pixels
      c.fx = c.fy = 1e6;
      c.cx = dice.whole(-100, 1000) / 64.0;
      c.cy = dice.whole(-100, 1000) / 64.0;
      break;
    case 3:  // positions beyond 16 bits
      c.cx = dice.number(1e6);
      c.cy = dice.number(1e6);
      break;
    default:
      break;
  }
  const double skew = dice.oneIn(3) ? dice.number(1.5) * c.fx : 0;
  view.P = {c.fx, skew, 0, 0, c.fy, 0, 0, 0, 1};
  return view;
}

class Maps {
 public:
  explicit Maps(const View& view) {
    const fisheye_calibration::lens::Camera& c = view.camera;
    const cv::Matx33d K(c.fx, 0, c.cx, 0, c.fy, c.cy, 0, 0, 1);
    fisheye_calibration::fisheye::initUndistortRectifyMap(K, cv::Vec2d(c.k0, c.k1), view.RR, view.P,
                                                          view.size, CV_16SC2, whole_, fraction_);
  }

  bool hold(int column, int row, const fisheye_calibration::rendering::RawPosition& p) const {
    return whole_.at<cv::Vec2s>(row, column) ==
               cv::Vec2s(static_cast<short>(p.u >> 5), static_cast<short>(p.v >> 5)) &&
           fraction_.at<std::uint16_t>(row, column) == (p.v & 31) * 32 + (p.u & 31);
  }

 private:
  cv::Mat whole_;
  cv::Mat fraction_;
};

}  // namespace views
