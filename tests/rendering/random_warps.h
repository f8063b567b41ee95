// Warps of many kinds, and a pixel that each is interesting at.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/core.hpp>
#include <ostream>

#include "rendering/inverse_warp.h"
#include "support/dice.h"

namespace warps {

using fisheye_calibration::rendering::InverseWarp;
using support::Dice;

constexpr int kLargest = std::numeric_limits<int>::max();

struct WarpAt {
  InverseWarp warp;
  int x;
  int y;
};

// A view turned, scaled and tilted, of which (x, y) shows (atX, atY).
inline InverseWarp tiltedWarp(Dice& dice, const cv::Size& size, int x, int y, double atX,
                              double atY) {
  InverseWarp warp{cv::Matx33d::eye(), dice.number(100), dice.number(100), size};
  const double scale = dice.oneIn(3) ? dice.magnitude(1e-2, 1e2) : dice.uniform(0.3, 2);
  const double turn = dice.number(CV_PI);
  cv::Matx33d& h = warp.Hinv;
  const double px = x - warp.dx;
  const double py = y - warp.dy;
  if (dice.oneIn(2)) {
    h(2, 0) = dice.number(1) * dice.magnitude(1e-9, 1e-2);
    h(2, 1) = dice.number(1) * dice.magnitude(1e-9, 1e-2);
  }
  h(2, 2) = dice.uniform(0.1, 2) - (h(2, 0) * px + h(2, 1) * py);
  const double w = h(2, 0) * px + h(2, 1) * py + h(2, 2);
  h(0, 0) = h(1, 1) = scale * std::cos(turn);
  h(1, 0) = scale * std::sin(turn);
  h(0, 1) = -h(1, 0);
  h(0, 2) = atX * w - (h(0, 0) * px + h(0, 1) * py);
  h(1, 2) = atY * w - (h(1, 0) * px + h(1, 1) * py);
  if (dice.oneIn(8)) {  // the same warp
    h = h * dice.magnitude(1e-160, 1e160) * (dice.oneIn(2) ? -1.0 : 1.0);
  }
  return warp;
}

inline WarpAt tilted(Dice& dice) {
  const cv::Size size(dice.whole(1, 5000), dice.whole(1, 5000));
  const int x = dice.whole(0, size.width - 1);
  const int y = dice.whole(0, size.height - 1);
  const double atX = dice.uniform(-40, size.width + 40.0);
  const double atY = dice.uniform(-40, size.height + 40.0);
  return {tiltedWarp(dice, size, x, y, atX, atY), x, y};
}

// Scales and shifts of quarters: many positions are halves, and all are exact.
inline WarpAt atHalves(Dice& dice) {
  const cv::Size size(dice.whole(1, 500), dice.whole(1, 500));
  const double scale = std::ldexp(dice.oneIn(2) ? 1 : -1, dice.whole(-2, 1));
  InverseWarp warp{cv::Matx33d::diag({scale, scale, 1}), dice.whole(-400, 400) * 0.25,
                   dice.whole(-400, 400) * 0.25, size};
  if (dice.oneIn(2)) {  // a quarter turn
    warp.Hinv = {0, -scale, dice.whole(0, 500) * 0.5, scale, 0, dice.whole(0, 500) * 0.5, 0, 0, 1};
  }
  return {warp, dice.whole(0, size.width - 1), dice.whole(0, size.height - 1)};
}

// The horizon crosses the row near the pixel.
inline WarpAt atHorizon(Dice& dice) {
  const cv::Size size(dice.whole(1, 3000), dice.whole(1, 3000));
  const int x = dice.whole(0, size.width - 1);
  const int y = dice.whole(0, size.height - 1);
  InverseWarp warp = tiltedWarp(dice, size, x, y, dice.number(3000), dice.number(3000));
  cv::Matx33d& h = warp.Hinv;
  h(2, 0) = dice.oneIn(3) ? 0 : dice.number(1) * dice.magnitude(1e-6, 1);
  h(2, 1) = 0;
  const double zero = dice.oneIn(2) ? dice.whole(x - 32, x + 32) : dice.uniform(x - 200, x + 200);
  h(2, 2) = -h(2, 0) * (zero - warp.dx);
  if (dice.oneIn(3)) {
    h(2, 2) += std::ldexp(dice.number(1), -dice.whole(0, 60));
  }
  return {warp, x, y};
}

// Float holds every whole number up to 2^24 and every half up to 2^23.
inline WarpAt beyond22Bits(Dice& dice) {
  const double far = dice.oneIn(3) ? 0x1p22 + dice.number(200) : dice.magnitude(1e6, 2.1e9);
  const int x = dice.whole(0, 5000);
  const int y = dice.whole(0, 5000);
  const double atX = dice.oneIn(2) ? far : dice.uniform(0, 5000);
  const int size = dice.oneIn(2) ? kLargest : dice.whole(5001, 5000000);
  return {tiltedWarp(dice, {size, size}, x, y, atX, far), x, y};
}

// Outputs of up to 2^31 - 1 pixels each way, often at the end of a row.
inline WarpAt ofLargestOutputs(Dice& dice) {
  const cv::Size size(dice.oneIn(3) ? kLargest : static_cast<int>(dice.magnitude(1, kLargest)),
                      dice.oneIn(3) ? kLargest : static_cast<int>(dice.magnitude(1, kLargest)));
  const int x = dice.oneIn(2) ? size.width - 1 : dice.whole(0, size.width - 1);
  const int y = dice.oneIn(2) ? size.height - 1 : dice.whole(0, size.height - 1);
  const double atX = size.width * dice.uniform(0, 1);
  const double atY = size.height * dice.uniform(0, 1);
  if (dice.oneIn(2)) {
    return {tiltedWarp(dice, size, x, y, atX, atY), x, y};
  }
  return {{cv::Matx33d::eye(), x - std::floor(atX), y - std::floor(atY), size}, x, y};
}

// Large terms that cancel leave the noise of their rounding, which is part of the result.
inline WarpAt cancelling(Dice& dice) {
  const double shift = dice.magnitude(1e6, 1e16);
  InverseWarp warp{cv::Matx33d::eye(), shift, dice.oneIn(2) ? shift : 0, {2000, 2000}};
  warp.Hinv(0, 0) = warp.Hinv(1, 1) = dice.uniform(0.5, 1.5);
  warp.Hinv(0, 2) = warp.Hinv(0, 0) * warp.dx + dice.number(500);
  warp.Hinv(1, 2) = warp.Hinv(1, 1) * warp.dy + dice.number(500);
  return {warp, dice.whole(0, 1999), dice.whole(0, 1999)};
}

// One number is not finite, huge or tiny.
inline WarpAt notFinite(Dice& dice) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kValues[] = {kInfinity, -kInfinity, kNaN, 1e308, -1e308, 5e-324};
  InverseWarp warp = tiltedWarp(dice, {500, 500}, 32, 100, 200, 200);
  const int field = dice.whole(0, 10);
  const double value = kValues[dice.whole(0, 5)];
  (field < 9 ? warp.Hinv.val[field] : field == 9 ? warp.dx : warp.dy) = value;
  return {warp, 32, 100};
}

struct Kind {
  const char* name;
  WarpAt (*make)(Dice&);

  friend void PrintTo(const Kind& kind, std::ostream* to) { *to << kind.name; }
};

constexpr Kind kKinds[] = {{"Tilted", tilted},
                           {"AtHalves", atHalves},
                           {"AtHorizon", atHorizon},
                           {"Beyond22Bits", beyond22Bits},
                           {"OfLargestOutputs", ofLargestOutputs},
                           {"Cancelling", cancelling},
                           {"NotFinite", notFinite}};

}  // namespace warps
