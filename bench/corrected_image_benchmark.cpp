// SingleCamCorrected, one pass over the output, against three ways of making the same view or less:
//   plain    the plain pipeline step by step, maps included
//   warp     cv::remap and cv::warpPerspective with precomputed maps: no maps, no distortion
//   gather   one nearest pixel and one mask byte per pixel from precomputed 32-bit indices, the
//            least that any renderer does, without interpolation or geometry
//   2 / 1    its own speed with two threads of the image library
// Also the share of the pixels showing the frame or its surroundings that had to be computed as the
// maps compute them (exact), and the memory allocated beyond the caller's buffers with one thread.
// A tilted camera, image and mask; one thread except where two are named. Ratios above 1 mean the
// library is faster.
#include <hwy/highway.h>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <opencv2/imgproc.hpp>

#include "allocation_peak.h"
#include "fisheye_calibration.h"
#include "rendering/fast_positions.h"
#include "rendering/warped_pixels.h"
#include "single/record.h"
#include "support/chosen_instruction_set.h"
#include "support/plain_correction.h"
#include "timing.h"

using namespace fisheye_calibration;

namespace {

constexpr int kRounds = 7;
constexpr double kTilt = 0.15;  // change of scale from the view's centre to its edge

using Bytes = std::vector<unsigned char>;

struct Scene {
  cv::Size size;
  int bitCount;
  FishEyeCalibrationParam param{};
  Bytes frame;
  Bytes view;
  Bytes mask;

  std::size_t pixels() const { return static_cast<std::size_t>(size.area()); }
  int bytesPerPixel() const { return bitCount / 8; }
  cv::Mat K() const {
    return (cv::Mat_<double>(3, 3) << param.fx, 0, param.u0, 0, param.fy, param.v0, 0, 0, 1);
  }
  cv::Mat H() const {
    return (cv::Mat_<double>(3, 3) << param.p1, param.p2, param.p3, param.p4, param.p5, param.p6,
            param.p7, param.p8, param.p9);
  }
};

// About the view's centre: scaled by 0.8, turned by 0.05, tilted along x and half as much along y.
cv::Matx33d secondCorrection(const cv::Size& size) {
  const double cx = size.width * 0.5;
  const double cy = size.height * 0.5;
  const cv::Matx33d toCentre(1, 0, -cx, 0, 1, -cy, 0, 0, 1);
  const cv::Matx33d back(1, 0, cx, 0, 1, cy, 0, 0, 1);
  const cv::Matx33d turned(0.8, -0.04, 0, 0.04, 0.8, 0, kTilt / cx, kTilt / (2 * cy), 1);
  return back * turned * toCentre;
}

Scene sceneOf(const cv::Size& size, int bitCount) {
  Scene scene;
  scene.size = size;
  scene.bitCount = bitCount;
  FishEyeCalibrationParam& param = scene.param;
  param.fx = param.fy = static_cast<float>(size.width / CV_PI);
  param.u0 = static_cast<float>(size.width * 0.503);
  param.v0 = static_cast<float>(size.height * 0.495);
  param.k0 = 0.02;
  param.k1 = -0.03;
  const cv::Matx33d H = secondCorrection(size);
  double* const p[] = {&param.p1, &param.p2, &param.p3, &param.p4, &param.p5,
                       &param.p6, &param.p7, &param.p8, &param.p9};
  for (int i = 0; i < 9; ++i) *p[i] = H.val[i];
  param.ImageDx = 3.25f;
  param.ImageDy = -2.5f;
  const std::size_t bytes = scene.pixels() * static_cast<std::size_t>(scene.bytesPerPixel());
  scene.frame.resize(bytes);
  cv::randu(cv::Mat(1, static_cast<int>(bytes), CV_8UC1, scene.frame.data()), 0, 256);
  scene.view.resize(bytes);
  scene.mask.resize(scene.pixels());
  return scene;
}

// --- the four contestants ---

void renderOurs(Scene& scene) {
  SingleCamCorrected(scene.frame.data(), scene.size.width, scene.size.height, scene.bitCount,
                     scene.param, scene.view.data(), scene.size.width, scene.size.height,
                     scene.mask.data());
}

void renderPlainly(Scene& scene) {
  plain::singleCamCorrected(scene.frame.data(), scene.size.width, scene.size.height, scene.bitCount,
                            scene.param, scene.view.data(), scene.size.width, scene.size.height,
                            scene.mask.data());
}

class WarpWithReadyMaps {
 public:
  explicit WarpWithReadyMaps(Scene& scene)
      : frame_(scene.size, CV_8UC(scene.bytesPerPixel()), scene.frame.data()),
        blank_(scene.size, CV_8UC1, cv::Scalar(0)),
        H_(scene.H()) {
    plain::undistortRectifyMap(scene.K(),
                               (cv::Mat_<double>(2, 1) << scene.param.k0, scene.param.k1),
                               cv::Mat(), scene.K(), scene.size, map1_, map2_);
    const cv::Mat shift =
        (cv::Mat_<double>(3, 3) << 1, 0, scene.param.ImageDx, 0, 1, scene.param.ImageDy, 0, 0, 1);
    H_ = shift * H_;
  }

  void run() {
    cv::remap(blank_, outside_, map1_, map2_, cv::INTER_LINEAR, cv::BORDER_CONSTANT,
              cv::Scalar(255));
    cv::remap(frame_, undistorted_, map1_, map2_, cv::INTER_LINEAR, cv::BORDER_CONSTANT);
    cv::warpPerspective(undistorted_, view_, H_, frame_.size(), cv::INTER_NEAREST);
    cv::warpPerspective(outside_, mask_, H_, frame_.size(), cv::INTER_NEAREST, cv::BORDER_CONSTANT,
                        cv::Scalar(255));
  }

 private:
  cv::Mat frame_, blank_, H_, map1_, map2_, outside_, undistorted_, view_, mask_;
};

// Index of the raw pixel that each output pixel shows, -1 outside.
std::vector<int> readyIndices(const Scene& scene) {
  cv::Mat map1;
  cv::Mat map2;
  plain::undistortRectifyMap(scene.K(), (cv::Mat_<double>(2, 1) << scene.param.k0, scene.param.k1),
                             cv::Mat(), scene.K(), scene.size, map1, map2);
  cv::Mat numbered(scene.size, CV_8UC4);  // the four bytes of an index
  for (int y = 0; y < scene.size.height; ++y) {
    for (int x = 0; x < scene.size.width; ++x) {
      const cv::Vec2s raw = map1.at<cv::Vec2s>(y, x);
      const bool inside =
          raw[0] >= 0 && raw[0] < scene.size.width && raw[1] >= 0 && raw[1] < scene.size.height;
      const int index = inside ? (scene.size.height - 1 - raw[1]) * scene.size.width + raw[0] : -1;
      std::memcpy(numbered.ptr(y) + 4 * x, &index, 4);
    }
  }
  const cv::Mat warped = plain::warpByInverseHomography(
      numbered, scene.H().inv(), scene.param.ImageDx, scene.param.ImageDy, 255);
  std::vector<int> indices(scene.pixels());
  plain::storeInBuffer(warped, reinterpret_cast<unsigned char*>(indices.data()));
  return indices;
}

template <std::size_t kBytes>
void gatherPixels(const std::vector<int>& indices, const unsigned char* frame, unsigned char* view,
                  unsigned char* mask) {
  for (std::size_t i = 0; i < indices.size(); ++i) {
    const bool inside = indices[i] >= 0;
    const std::size_t from = inside ? static_cast<std::size_t>(indices[i]) : 0;
    std::memcpy(view + i * kBytes, frame + from * kBytes, kBytes);
    if (!inside) std::memset(view + i * kBytes, 0, kBytes);
    mask[i] = inside ? 0 : 255;
  }
}

void gather(const std::vector<int>& indices, Scene& scene) {
  const auto run = scene.bitCount == 8 ? gatherPixels<1> : gatherPixels<3>;
  run(indices, scene.frame.data(), scene.view.data(), scene.mask.data());
}

// --- the table ---

double speedUpByASecondThread(Scene& scene) {
  const auto result = bench::compare(
      kRounds,
      [&] {
        cv::setNumThreads(2);
        renderOurs(scene);
      },
      [&] {
        cv::setNumThreads(1);
        renderOurs(scene);
      });
  cv::setNumThreads(1);
  return result.ratio;
}

// Percentage of pixels for which the fast computation of a position did not suffice.
double exactShare(const Scene& scene) {
  const auto& [size, bits, param, frame, view, mask] = scene;
  const cv::Matx33d K(param.fx, param.skewness, param.u0, 0, param.fy, param.v0, 0, 0, 1);
  const rendering::FastPositions positions(
      rendering::rectifyingRays(single::rawCamera(param), cv::Matx33d::eye(), K, size), size);
  rendering::ExactPositions stepped(positions.rays(), size.width);
  const rendering::InverseWarp warp{cv::Matx33d(scene.H()).inv(), param.ImageDx, param.ImageDy,
                                    size};
  alignas(64) int column[rendering::kRun];
  alignas(64) int row[rendering::kRun];
  alignas(64) int u[rendering::kRun];
  alignas(64) int v[rendering::kRun];
  std::size_t all = 0;
  std::size_t exact = 0;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; x += static_cast<int>(rendering::kRun)) {
      const auto count = std::min(rendering::kRun, static_cast<std::size_t>(size.width - x));
      if (rendering::sourcePixelsOfRun(warp, x, y, column, row)) {
        all += static_cast<std::size_t>(
            std::count_if(column, column + count, [](int c) { return c >= 0; }));
        exact += rendering::positionsOfRun(positions, stepped, column, row, count, u, v);
      }
    }
  }
  return 100.0 * static_cast<double>(exact) / static_cast<double>(all);
}

// Prints one line; returns false if the two views differ.
bool compareOn(const cv::Size& size, int bitCount) {
  Scene scene = sceneOf(size, bitCount);
  Scene other = scene;
  const auto plainly = bench::compare(
      kRounds, [&] { renderOurs(scene); }, [&] { renderPlainly(other); });
  const bool same = scene.view == other.view && scene.mask == other.mask;

  WarpWithReadyMaps warp(other);
  const auto warped = bench::compare(
      kRounds, [&] { renderOurs(scene); }, [&] { warp.run(); });
  const std::vector<int> indices = readyIndices(scene);
  const auto gathered = bench::compare(
      kRounds, [&] { renderOurs(scene); }, [&] { gather(indices, other); });
  const long bytes = bench::AllocationPeak::of([&] { renderOurs(scene); });

  std::printf("%4d x %4d %5d %8.2f %8.2f %8.1f %8.2f %8.2f %8.2f %8.2f %8.1f\n", size.width,
              size.height, bitCount, plainly.ours,
              1e6 * plainly.ours / static_cast<double>(scene.pixels()), plainly.ratio, warped.ratio,
              gathered.ratio, speedUpByASecondThread(scene), exactShare(scene),
              static_cast<double>(bytes) / 1024);
  return same;
}

void compareInstructionSets() {
  std::printf("\n1280 x 960 against plain, by instruction set\n");
  Scene grey = sceneOf({1280, 960}, 8);
  Scene colour = sceneOf({1280, 960}, 24);
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    const support::ChosenInstructionSet chosen(target);
    const auto compared = [](Scene& scene) {
      Scene other = scene;
      return bench::compare(
          kRounds, [&] { renderOurs(scene); }, [&] { renderPlainly(other); });
    };
    const auto ours8 = compared(grey);
    const auto ours24 = compared(colour);
    std::printf("%-10s  8 bits %6.1f   24 bits %6.1f\n", hwy::TargetName(target), ours8.ratio,
                ours24.ratio);
  }
}

}  // namespace

int main() {
  cv::setNumThreads(1);
  std::printf(
      "size         bits  ours/ms ns/pixel    plain     warp   gather    2 / 1  exact/%%  "
      "memory/KB\n");
  bool agree = true;
  for (const cv::Size size : {cv::Size(1280, 960), cv::Size(2592, 1944), cv::Size(5184, 3888)}) {
    for (const int bitCount : {8, 24}) {
      agree = compareOn(size, bitCount) && agree;
    }
  }
  compareInstructionSets();
  if (!agree) {
    std::fprintf(stderr, "the two views differ\n");
  }
  return agree ? EXIT_SUCCESS : EXIT_FAILURE;
}
