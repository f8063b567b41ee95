#include "simulation/raw_frame.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "geometry/raw_ray.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kMostSamples = 4;  // of a pixel, in each direction
constexpr int kFewestSamples = 2;

const cv::Point2d kNowhere(std::numeric_limits<double>::quiet_NaN(),
                           std::numeric_limits<double>::quiet_NaN());

// Of a pixel: where its corners lie on the plane.
using Corners = std::array<cv::Point2d, 4>;  // top left, top right, bottom left, bottom right

using Line = std::vector<cv::Point2d>;

// Where the corners at the top of a row of pixels lie; not numbers where the camera does not see
// the plane.
Line cornerLine(const CornerRays& rays, const BedSight& sight, int row) {
  Line line;
  line.reserve(static_cast<std::size_t>(rays.size().width) + 1);
  for (int x = 0; x <= rays.size().width; ++x) {
    const SeenPoint seen = sight.along(rays.at(x, row));
    line.push_back(seen.sight == Sight::kBed ? seen.bed : kNowhere);
  }
  return line;
}

cv::Point2d within(const Corners& corners, double x, double y) {
  const cv::Point2d above = corners[0] * (1 - x) + corners[1] * x;
  const cv::Point2d below = corners[2] * (1 - x) + corners[3] * x;
  return above * (1 - y) + below * y;
}

// A picture as one pixel sees it.
struct Share {
  const PlacedPicture* picture = nullptr;
  Corners corners;
  int level = 0;
};

// The pictures that a pixel may see, from the first to the one that hides all others.
class PixelView {
 public:
  explicit PixelView(int background)
      : background_(cv::Vec3f::all(static_cast<float>(background))) {}

  void clear() {
    shares_.clear();
    samples_ = kFewestSamples;
    hidden_ = false;
  }

  void add(const PlacedPicture& picture, const Corners& corners) {
    if (hidden_) {
      return;
    }
    const auto covered =
        std::count_if(corners.begin(), corners.end(),
                      [&](const cv::Point2d& corner) { return picture.covers(corner); });
    if (covered == 0) {
      return;
    }
    const double pixels = picture.pixelsAcross(corners[1] - corners[0], corners[2] - corners[0]);
    const int level = picture.levelFor(pixels, kMostSamples);
    hidden_ = covered == 4;
    const double needed = hidden_ ? std::ceil(std::ldexp(pixels, -level)) : kMostSamples;
    if (needed > samples_) {
      samples_ = static_cast<int>(std::min<double>(needed, kMostSamples));
    }
    shares_.push_back({&picture, corners, level});
  }

  cv::Vec3f mean() const {
    if (shares_.empty()) {
      return background_;
    }
    cv::Vec3f sum = cv::Vec3f::all(0);
    for (int j = 0; j < samples_; ++j) {
      for (int i = 0; i < samples_; ++i) {
        sum += sample((i + 0.5) / samples_, (j + 0.5) / samples_);
      }
    }
    return sum * (1.0F / static_cast<float>(samples_ * samples_));
  }

 private:
  cv::Vec3f sample(double x, double y) const {
    for (const Share& share : shares_) {
      const cv::Point2d point = within(share.corners, x, y);
      if (share.picture->covers(point)) {
        return share.picture->at(point, share.level);
      }
    }
    return background_;
  }

  cv::Vec3f background_;
  std::vector<Share> shares_;
  int samples_ = kFewestSamples;
  bool hidden_ = false;
};

void drawRows(const CornerRays& rays, const std::vector<SeenPicture>& pictures,
              const cv::Range& rows, int background, cv::Mat& frame) {
  PixelView view(background);
  std::vector<BedSight> sights;
  std::vector<Line> above(pictures.size());
  std::vector<Line> below;
  for (const SeenPicture& seen : pictures) {
    sights.emplace_back(seen.camera);
    below.push_back(cornerLine(rays, sights.back(), rows.start));
  }
  for (int y = rows.start; y < rows.end; ++y) {
    std::swap(above, below);
    for (std::size_t k = 0; k < pictures.size(); ++k) {
      below[k] = cornerLine(rays, sights[k], y + 1);
    }
    auto* const row = frame.ptr<cv::Vec3b>(y);
    for (int x = 0; x < frame.cols; ++x) {
      const auto at = static_cast<std::size_t>(x);
      view.clear();
      for (std::size_t k = 0; k < pictures.size(); ++k) {
        view.add(pictures[k].picture,
                 {above[k][at], above[k][at + 1], below[k][at], below[k][at + 1]});
      }
      row[x] = view.mean();
    }
  }
}

}  // namespace

CornerRays::CornerRays(const FishEyeCalibrationParam& camera, const Size& size)
    : size_(size), rays_(size.height + 1, size.width + 1) {
  cv::parallel_for_(cv::Range(0, rays_.rows), [&](const cv::Range& rows) {
    for (int y = rows.start; y < rows.end; ++y) {
      for (int x = 0; x < rays_.cols; ++x) {
        rays_(y, x) = rayThrough(camera, {x - 0.5, y - 0.5}).value_or(kNowhere);
      }
    }
  });
}

cv::Mat rawFrame(const CornerRays& rays, const std::vector<SeenPicture>& pictures, int background) {
  cv::Mat frame(rays.size().height, rays.size().width, CV_8UC3);
  cv::parallel_for_(cv::Range(0, frame.rows), [&](const cv::Range& rows) {
    drawRows(rays, pictures, rows, background, frame);
  });
  const bool coloured = std::any_of(pictures.begin(), pictures.end(), [](const SeenPicture& seen) {
    return seen.picture.channels() == 3;
  });
  if (!coloured) {
    cv::extractChannel(frame, frame, 0);
  }
  return frame;
}

}  // namespace fisheye_calibration::program
