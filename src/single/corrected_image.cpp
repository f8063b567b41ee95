#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <opencv2/core.hpp>
#include <span>
#include <vector>

#include "fisheye/raw_positions.h"
#include "fisheye/stepped_positions.h"
#include "fisheye_calibration.h"
#include "platform/parallel_rows.h"
#include "single/bilinear_sampler.h"
#include "single/pixel_format.h"
#include "single/record.h"
#include "single/warped_pixels.h"

namespace {

using fisheye::kRun;

// What the host gave, checked.
struct Output {
  unsigned char* pixels;
  unsigned char* mask;  // may be null
  cv::Size size;
};

// The view is rendered in one pass over the output: each output pixel shows one pixel of the
// undistorted image, which is sampled from the raw frame when it is needed. Neither the undistorted
// image nor its map is ever there as a whole.
class CorrectedView {
 public:
  CorrectedView(const single::RawFrame& frame, const FishEyeCalibrationParam& param,
                const cv::Size& size)
      : frame_(frame),
        size_(size),
        positions_(undistortionRays(param, size), size),
        warp_{inverseHomography(param), param.ImageDx, param.ImageDy, size} {}

  // Whether any pixel of the undistorted image is not black. A few samples usually tell.
  bool showsAnything() const {
    fisheye::SteppedPositions stepped(positions_.rays(), size_.width);
    for (const int row : {3, 1, 5, 0, 2, 4, 6}) {
      if (showsAnythingIn(static_cast<int>((2 * row + 1) * std::int64_t{size_.height} / 14),
                          spread(), stepped)) {
        return true;
      }
    }
    return !isFrameBlack() && scanShowsAnything(stepped);
  }

  void render(const Output& output) const {
    platform::forRowRanges(size_.height, [&](int begin, int end) {
      fisheye::SteppedPositions stepped(positions_.rays(), size_.width);
      for (int y = begin; y < end; ++y) {
        renderRow(y, stepped, output);
      }
    });
  }

 private:
  struct Run {
    alignas(64) int column[kRun];
    alignas(64) int row[kRun];
    alignas(64) int u[kRun];
    alignas(64) int v[kRun];
  };

  static fisheye::RectifyingRays undistortionRays(const FishEyeCalibrationParam& param,
                                                  const cv::Size& size) {
    const cv::Matx33d K(param.fx, param.skewness, param.u0, 0, param.fy, param.v0, 0, 0, 1);
    return fisheye::rectifyingRays(single::rawCamera(param), cv::Matx33d::eye(), K, size);
  }

  // The zero matrix when the homography is singular.
  static cv::Matx33d inverseHomography(const FishEyeCalibrationParam& param) {
    const cv::Matx33d H(param.p1, param.p2, param.p3, param.p4, param.p5, param.p6, param.p7,
                        param.p8, param.p9);
    cv::Matx33d inverse;
    cv::invert(H, inverse, cv::DECOMP_LU);
    return inverse;
  }

  void renderRow(int y, fisheye::SteppedPositions& stepped, const Output& output) const {
    const std::size_t bufferRow = static_cast<std::size_t>(size_.height - 1 - y);
    const std::size_t start = bufferRow * static_cast<std::size_t>(size_.width);
    const auto bytes = static_cast<std::size_t>(frame_.bytesPerPixel);
    Run run;
    for (int r = 0; r < runsOfRow(); ++r) {
      const int x = r * static_cast<int>(kRun);
      const std::size_t count = std::min(kRun, static_cast<std::size_t>(size_.width - x));
      const std::size_t first = start + static_cast<std::size_t>(x);
      unsigned char* pixels = output.pixels + first * bytes;
      unsigned char* mask = output.mask != nullptr ? output.mask + first : nullptr;
      if (single::sourcePixelsOfRun(warp_, x, y, run.column, run.row)) {
        fisheye::positionsOfRun(positions_, stepped, run.column, run.row, count, run.u, run.v);
        single::sampleRun(frame_, run.u, run.v, count, pixels, mask);
      } else {
        std::memset(pixels, 0, count * bytes);
        if (mask != nullptr) {
          std::memset(mask, single::kNoContent, count);
        }
      }
    }
  }

  // Counted, because the column after the last run may be beyond 32 bits.
  int runsOfRow() const { return (size_.width - 1) / static_cast<int>(kRun) + 1; }

  // Columns across the whole width.
  std::array<int, kRun> spread() const {
    std::array<int, kRun> columns;
    for (std::size_t k = 0; k < kRun; ++k) {
      columns[k] =
          static_cast<int>((2 * k + 1) * static_cast<std::size_t>(size_.width) / (2 * kRun));
    }
    return columns;
  }

  // Looks at undistorted pixels of one row.
  bool showsAnythingIn(int row, const std::array<int, kRun>& columns,
                       fisheye::SteppedPositions& stepped) const {
    Run run;
    std::copy(columns.begin(), columns.end(), run.column);
    std::fill_n(run.row, kRun, row);
    fisheye::positionsOfRun(positions_, stepped, run.column, run.row, kRun, run.u, run.v);
    unsigned char pixels[kRun * 4];
    single::sampleRun(frame_, run.u, run.v, kRun, pixels, nullptr);
    const auto* end = pixels + kRun * static_cast<std::size_t>(frame_.bytesPerPixel);
    return std::any_of(static_cast<const unsigned char*>(pixels), end,
                       [](unsigned char byte) { return byte != 0; });
  }

  bool isFrameBlack() const {
    const std::size_t bytes = static_cast<std::size_t>(frame_.width) *
                              static_cast<std::size_t>(frame_.height) *
                              static_cast<std::size_t>(frame_.bytesPerPixel);
    return frame_.pixels[0] == 0 && std::memcmp(frame_.pixels, frame_.pixels + 1, bytes - 1) == 0;
  }

  bool scanShowsAnything(fisheye::SteppedPositions& stepped) const {
    for (int row = 0; row < size_.height; ++row) {
      for (int r = 0; r < runsOfRow(); ++r) {
        std::array<int, kRun> columns;
        for (std::size_t k = 0; k < kRun; ++k) {
          const std::size_t column = static_cast<std::size_t>(r) * kRun + k;
          columns[k] =
              column < static_cast<std::size_t>(size_.width) ? static_cast<int>(column) : -1;
        }
        if (showsAnythingIn(row, columns, stepped)) {
          return true;
        }
      }
    }
    return false;
  }

  single::RawFrame frame_;
  cv::Size size_;
  fisheye::RawPositions positions_;
  single::InverseWarp warp_;
};

// Buffers of more bytes than a 32-bit integer counts are beyond the interface.
void requireAddressable(ImageLong width, ImageLong height, int bytes) {
  if (std::int64_t{width} * height > std::numeric_limits<std::int32_t>::max() / bytes) {
    cv::error(cv::Error::StsNoMem, "an image buffer has more than 2147483647 bytes",
              "SingleCamCorrected", __FILE__, __LINE__);
  }
}

std::size_t sizeInBytes(ImageLong width, ImageLong height, int bytes) {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
         static_cast<std::size_t>(bytes);
}

using Bytes = std::span<const unsigned char>;

bool overlap(Bytes a, Bytes b) {
  const std::less<const unsigned char*> before;
  return !a.empty() && !b.empty() && before(a.data(), b.data() + b.size()) &&
         before(b.data(), a.data() + a.size());
}

// The view is rendered straight from the frame, so one that the output overwrites is copied first.
std::vector<unsigned char> copyIfOverlapping(Bytes frame, Bytes pixels, Bytes mask) {
  if (overlap(frame, pixels) || overlap(frame, mask)) {
    return {frame.begin(), frame.end()};
  }
  return {};
}

}  // namespace

bool SingleCamCorrected(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight, int bitCount,
                        FishEyeCalibrationParam param, unsigned char* dst, ImageLong dstWidth,
                        ImageLong dstHeight, unsigned char* mask) {
  const int bytes = single::bytesPerPixel(bitCount);
  if (src == nullptr || dst == nullptr || dstWidth <= 0 || dstHeight <= 0 || srcWidth <= 0 ||
      srcHeight <= 0 || bytes == 0) {
    return false;
  }
  requireAddressable(srcWidth, srcHeight, bytes);
  requireAddressable(dstWidth, dstHeight, bytes);
  const std::vector<unsigned char> copy =
      copyIfOverlapping({src, sizeInBytes(srcWidth, srcHeight, bytes)},
                        {dst, sizeInBytes(dstWidth, dstHeight, bytes)},
                        {mask, mask != nullptr ? sizeInBytes(dstWidth, dstHeight, 1) : 0});
  const single::RawFrame frame{copy.empty() ? src : copy.data(), static_cast<int>(srcWidth),
                               static_cast<int>(srcHeight), bytes};
  const cv::Size size(static_cast<int>(dstWidth), static_cast<int>(dstHeight));
  const CorrectedView view(frame, param, size);
  if (!view.showsAnything()) {
    return false;
  }
  view.render({dst, mask, size});
  return true;
}
