// Views, runs of their pixels, and the maps that the positions of runs have to equal.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <opencv2/core.hpp>

#include "fisheye/fisheye.h"
#include "rendering/fast_positions.h"
#include "support/dice.h"

namespace runs {

using fisheye_calibration::rendering::kNowhere;
using fisheye_calibration::rendering::kRun;
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

struct PixelRun {
  alignas(64) int column[kRun];
  alignas(64) int row[kRun];
  alignas(64) int u[kRun];
  alignas(64) int v[kRun];
  std::size_t count = kRun;
};

class Maps {
 public:
  explicit Maps(const View& view) {
    const fisheye_calibration::lens::Camera& c = view.camera;
    const cv::Matx33d K(c.fx, 0, c.cx, 0, c.fy, c.cy, 0, 0, 1);
    fisheye_calibration::fisheye::initUndistortRectifyMap(K, cv::Vec2d(c.k0, c.k1), view.RR, view.P,
                                                          view.size, CV_16SC2, whole_, fraction_);
  }

  // Of the wanted pixels of a run; those without a pixel must have no position.
  testing::AssertionResult hold(const PixelRun& run) const {
    for (std::size_t k = 0; k < run.count; ++k) {
      const int u = run.u[k];
      const int v = run.v[k];
      const bool nowhere = u == kNowhere && v == kNowhere;
      const bool right = run.column[k] < 0 ? nowhere : !nowhere && holds(run, k);
      if (!right) {
        return testing::AssertionFailure() << "pixel " << run.column[k] << ", " << run.row[k]
                                           << " (element " << k << ") lies at " << u << ", " << v;
      }
    }
    return testing::AssertionSuccess();
  }

 private:
  bool holds(const PixelRun& run, std::size_t k) const {
    const int u = run.u[k];
    const int v = run.v[k];
    return whole_.at<cv::Vec2s>(run.row[k], run.column[k]) ==
               cv::Vec2s(static_cast<short>(u >> 5), static_cast<short>(v >> 5)) &&
           fraction_.at<std::uint16_t>(run.row[k], run.column[k]) == (v & 31) * 32 + (u & 31);
  }

  cv::Mat whole_;
  cv::Mat fraction_;
};

inline View ordinaryView() {
  View view;
  view.camera = {410, 408, 645, 474, 0.02, -0.03, 0};
  view.P = {410, 0, 0, 0, 408, 0, 0, 0, 1};
  view.size = {1280, 960};
  return view;
}

// Pixels along a line of any slope, as a homography reads them, or just any pixels.
inline PixelRun randomRun(Dice& dice, const cv::Size& size) {
  PixelRun run;
  const bool scattered = dice.oneIn(3);
  const int startX = dice.whole(0, size.width - 1);
  const int startY = dice.whole(0, size.height - 1);
  const double stepX = dice.number(2);
  const double stepY = dice.oneIn(2) ? 0 : dice.number(2);
  for (std::size_t k = 0; k < kRun; ++k) {
    const auto n = static_cast<double>(k);
    const int x = scattered ? dice.whole(0, size.width - 1) : startX + static_cast<int>(n * stepX);
    const int y = scattered ? dice.whole(0, size.height - 1) : startY + static_cast<int>(n * stepY);
    run.column[k] = dice.oneIn(20) ? -1 : std::clamp(x, 0, size.width - 1);
    run.row[k] = std::clamp(y, 0, size.height - 1);
  }
  run.count = dice.oneIn(4) ? static_cast<std::size_t>(dice.whole(1, kRun)) : kRun;
  return run;
}

inline PixelRun runAlongRow(int column, int row) {
  PixelRun run;
  for (std::size_t k = 0; k < kRun; ++k) {
    run.column[k] = column + static_cast<int>(k);
    run.row[k] = row;
  }
  return run;
}

inline std::size_t fill(const fisheye_calibration::rendering::FastPositions& positions,
                        fisheye_calibration::rendering::ExactPositions& stepped, PixelRun& run) {
  std::fill_n(run.u, kRun, 123456);
  std::fill_n(run.v, kRun, 123456);
  return fisheye_calibration::rendering::positionsOfRun(positions, stepped, run.column, run.row,
                                                        run.count, run.u, run.v);
}

inline testing::AssertionResult areThoseOfTheMaps(const View& view, std::uint64_t seed, int runs) {
  const Maps maps(view);
  const fisheye_calibration::rendering::FastPositions positions(view.rays(), view.size);
  fisheye_calibration::rendering::ExactPositions stepped(view.rays(), view.size.width);
  Dice dice(seed);
  for (int i = 0; i < runs; ++i) {
    PixelRun run = randomRun(dice, view.size);
    fill(positions, stepped, run);
    if (const auto held = maps.hold(run); !held) {
      return held;
    }
  }
  return testing::AssertionSuccess();
}

}  // namespace runs
