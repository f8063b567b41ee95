#include "support/plain_stitching.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <opencv2/imgproc.hpp>

#include "support/plain_correction.h"

namespace plain {
namespace {

void appendWithId(const std::vector<CalibrationPoint>& points, int id,
                  std::vector<CalibrationPoint>& common) {
  for (const CalibrationPoint& point : points) {
    if (point.PointId == id) common.push_back(point);
  }
}

int nearestTo(const std::vector<CalibrationPoint>& points, float x, float y) {
  float best = 10000.0f;
  int index = 0;
  for (size_t i = 0; i < points.size(); ++i) {
    const float dx = points[i].Xw - x;
    const float dy = points[i].Yw - y;
    const float distance = std::sqrt(dx * dx + dy * dy);
    if (distance < best) {
      best = distance;
      index = static_cast<int>(i);
    }
  }
  return index;
}

// Adds 0.5 and truncates toward zero; -1 for values that no view can hold.
int roundedPixel(double value) {
  const double sum = value + 0.5;
  if (!(sum > -2e9 && sum < 2e9)) return -1;
  return static_cast<int>(sum);
}

std::int64_t roundedCorner(double value) { return static_cast<std::int64_t>(value + 0.5); }

float difference(const std::vector<float>& values) {
  return *std::max_element(values.begin(), values.end()) -
         *std::min_element(values.begin(), values.end());
}

int multipleOf4(float length) { return (static_cast<int>(length) + 3) / 4 * 4; }

void put16(std::string& bytes, std::int64_t value) {
  bytes += static_cast<char>(value & 255);
  bytes += static_cast<char>(value >> 8 & 255);
}

void put32(std::string& bytes, std::int64_t value) {
  put16(bytes, value & 65535);
  put16(bytes, value >> 16 & 65535);
}

}  // namespace

void getCommonPoints(const std::vector<CalibrationPoint>& first,
                     const std::vector<CalibrationPoint>& second, int idCount,
                     std::vector<CalibrationPoint>& firstCommon,
                     std::vector<CalibrationPoint>& secondCommon) {
  if (idCount < 1) return;
  std::vector<int> counters(static_cast<size_t>(idCount), 0);
  for (const auto* list : {&first, &second}) {
    for (const CalibrationPoint& point : *list) {
      if (point.PointId < 1 || point.PointId > idCount) continue;
      ++counters[static_cast<size_t>(point.PointId - 1)];
    }
  }
  for (int id = 1; id <= idCount; ++id) {
    if (counters[static_cast<size_t>(id - 1)] != 2) continue;
    appendWithId(first, id, firstCommon);
    appendWithId(second, id, secondCommon);
  }
}

StitchView doubledView(const StitchCamera& camera) {
  StitchView view;
  view.width = 2 * camera.width;
  view.height = 2 * camera.height;
  view.bits = camera.bits;
  const auto count = static_cast<size_t>(view.width) * static_cast<size_t>(view.height);
  view.pixels.assign(count * static_cast<size_t>(camera.bits) / 8, 0);
  view.mask.assign(count, 255);
  if (camera.bits == 8 || camera.bits == 24 || camera.bits == 32) {
    singleCamCorrected(camera.image.empty() ? nullptr : camera.image.data(), camera.width,
                       camera.height, camera.bits, camera.param, view.pixels.data(), view.width,
                       view.height, view.mask.data());
  }
  return view;
}

cv::Matx33d firstToSecond(const StitchCamera& first, const StitchCamera& second, bool bufferRows) {
  std::vector<CalibrationPoint> common1;
  std::vector<CalibrationPoint> common2;
  getCommonPoints(first.points, second.points,
                  static_cast<int>(first.points.size() + second.points.size()), common1, common2);
  float minX = 10000.0f;
  float minY = 10000.0f;
  float maxX = 0.0f;
  float maxY = 0.0f;
  for (const CalibrationPoint& point : common1) {
    minX = std::min(minX, point.Xw);
    minY = std::min(minY, point.Yw);
    maxX = std::max(maxX, point.Xw);
    maxY = std::max(maxY, point.Yw);
  }
  const int corners[4] = {nearestTo(common1, minX, minY), nearestTo(common1, maxX, minY),
                          nearestTo(common1, minX, maxY), nearestTo(common1, maxX, maxY)};
  const int W1 = 2 * first.width;
  const int H1 = 2 * first.height;
  const int H2 = 2 * second.height;
  cv::Point2f from[4];
  cv::Point2f to[4];
  for (int i = 0; i < 4; ++i) {
    const CalibrationPoint& a = common1[static_cast<size_t>(corners[i])];
    const CalibrationPoint& b = common2[static_cast<size_t>(corners[i])];
    const double u1 = (a.Xw - first.param.DatumPtXw) / first.param.Pixel + W1 * 0.5;
    const double v1 = (a.Yw - first.param.DatumPtYw) / first.param.Pixel + H1 * 0.5;
    const double u2 = (b.Xw - second.param.DatumPtXw) / second.param.Pixel + W1 * 0.5;
    const double v2 = (b.Yw - second.param.DatumPtYw) / second.param.Pixel + H1 * 0.5;
    from[i].x = static_cast<float>(u1);
    from[i].y = static_cast<float>(bufferRows ? (H1 - 1) - v1 : v1);
    to[i].x = static_cast<float>(u2);
    to[i].y = static_cast<float>(bufferRows ? (H2 - 1) - v2 : v2);
  }
  return cv::getPerspectiveTransform(from, to, 0);
}

void stitchedImageSize(const StitchCamera& first, const StitchCamera& second, int& width,
                       int& height) {
  const cv::Matx33d m = firstToSecond(first, second, false);
  const int W2 = 2 * second.width;
  const int H2 = 2 * second.height;
  std::vector<float> xs = {0.0f, static_cast<float>(W2)};
  std::vector<float> ys = {0.0f, static_cast<float>(H2)};
  const int corners[4][2] = {{0, 0}, {W2, 0}, {W2, H2}, {0, H2}};
  for (const auto& corner : corners) {
    const double x = corner[0];
    const double y = corner[1];
    const double w = m(2, 0) * x + m(2, 1) * y + m(2, 2);
    xs.push_back(static_cast<float>(roundedCorner((m(0, 0) * x + m(0, 1) * y + m(0, 2)) / w)));
    ys.push_back(static_cast<float>(roundedCorner((m(1, 0) * x + m(1, 1) * y + m(1, 2)) / w)));
  }
  width = multipleOf4(difference(xs));
  height = multipleOf4(difference(ys));
}

void composeCanvas(const StitchView& first, const StitchView& second, const cv::Matx33d& M,
                   unsigned char* canvas, int width, int height, int bits) {
  const int bytes = bits / 8;
  std::vector<int> seam(static_cast<size_t>(first.height), 0);
  for (int y = 0; y < first.height; ++y) {
    for (int x = first.width - 1; x >= 1; --x) {
      if (first.mask[static_cast<size_t>(y) * static_cast<size_t>(first.width) +
                     static_cast<size_t>(x)] < 255) {
        seam[static_cast<size_t>(y)] = x;
        break;
      }
    }
  }
  const int offsetY = static_cast<int>((height - first.height) * 0.5);
  for (int r = 0; r < height; ++r) {
    bool overlapping = false;
    int D = 0;
    for (int c = 0; c < width; ++c) {
      const int y1 = r - offsetY;
      const auto at1 = static_cast<size_t>(static_cast<std::int64_t>(y1) * first.width + c);
      const bool valid1 = 0 <= y1 && y1 < first.height && c < first.width && first.mask[at1] < 255;

      const double w = M(2, 0) * c + M(2, 1) * y1 + M(2, 2);
      const int x2 = roundedPixel((M(0, 0) * c + M(0, 1) * y1 + M(0, 2)) / w);
      const int y2 = roundedPixel((M(1, 0) * c + M(1, 1) * y1 + M(1, 2)) / w);
      const auto at2 = static_cast<size_t>(static_cast<std::int64_t>(y2) * second.width + x2);
      const bool valid2 =
          0 <= x2 && x2 < second.width && 0 <= y2 && y2 < second.height && second.mask[at2] < 255;

      unsigned char* const out =
          canvas + (static_cast<std::int64_t>(r) * width + c) * static_cast<std::int64_t>(bytes);
      if (!valid1 && !valid2) continue;
      const unsigned char* const a =
          first.pixels.data() + (valid1 ? at1 : 0) * static_cast<size_t>(bytes);
      const unsigned char* const b =
          second.pixels.data() + (valid2 ? at2 : 0) * static_cast<size_t>(bytes);
      if (!valid1) {
        for (int i = 0; i < bytes; ++i) out[i] = b[i];
        continue;
      }
      if (!valid2) {
        for (int i = 0; i < bytes; ++i) out[i] = a[i];
        continue;
      }
      const int edge = seam[static_cast<size_t>(y1)];
      if (!overlapping) {
        overlapping = true;
        D = edge - c;
      }
      for (int i = 0; i < bytes; ++i) {
        if (D > 0) {
          const float t = static_cast<float>(edge - c) / static_cast<float>(D);
          out[i] = static_cast<unsigned char>(static_cast<int>(a[i] * t) +
                                              static_cast<int>(b[i] * (1 - t)));
        } else {
          out[i] = static_cast<unsigned char>((a[i] + b[i]) * 0.5);
        }
      }
    }
  }
}

void fishEyeImageStitching(const StitchCamera& first, const StitchCamera& second,
                           unsigned char* canvas, int width, int height, int bits,
                           DualFishEyeCalibrationParam& dual) {
  const StitchView view1 = doubledView(first);
  const StitchView view2 = doubledView(second);
  const cv::Matx33d M = firstToSecond(first, second, true);
  const bool supported = bits == 8 || bits == 24 || bits == 32;
  if (supported && first.bits == bits && second.bits == bits) {
    composeCanvas(view1, view2, M, canvas, width, height, bits);
  }
  const int W1 = 2 * first.width;
  const int H1 = 2 * first.height;
  const int offsetY = static_cast<int>((height - H1) * 0.5);
  dual.Pixel = first.param.Pixel;
  dual.StdImageWidth = width;
  dual.StdImageHeight = height;
  dual.DatumImagePtX = static_cast<int>(W1 * 0.5);
  dual.DatumImagePtY = static_cast<int>(H1 * 0.5 + offsetY);
  dual.DatumPtXw = first.param.DatumPtXw;
  dual.DatumPtYw = first.param.DatumPtYw;
}

void dualCamCroppingImage(const unsigned char* src, int srcWidth, int srcHeight, int bits,
                          int cropLeft, int cropTop, DualFishEyeCalibrationParam& dual,
                          unsigned char* dst, int dstWidth, int dstHeight) {
  const int bytes = bits == 8 ? 1 : bits == 24 ? 3 : bits == 32 ? 4 : 0;
  const int b0 = srcHeight - cropTop - dstHeight;
  for (int j = 0; j < dstHeight; ++j) {
    for (int i = 0; i < dstWidth; ++i) {
      const int x = cropLeft + i;
      const int y = b0 + j;
      if (x < 0 || x >= srcWidth || y < 0 || y >= srcHeight) continue;
      for (int b = 0; b < bytes; ++b) {
        dst[(j * dstWidth + i) * bytes + b] = src[(y * srcWidth + x) * bytes + b];
      }
    }
  }
  dual.StdImageWidth = dstWidth;
  dual.StdImageHeight = dstHeight;
  dual.DatumImagePtX -= cropLeft;
  dual.DatumImagePtY += cropTop - srcHeight + dstHeight;
}

std::string debugBitmap(const std::vector<unsigned char>& pixels, int width, int height, int bits) {
  const int colours = bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
  const int imageBytes = (bits * width + 31) / 32 * 4 * height;
  std::string file = "BM";
  put32(file, 14 + 40 + 4 * colours + imageBytes);
  put32(file, 0);
  put32(file, 14 + 40 + 4 * colours);
  put32(file, 40);
  put32(file, width);
  put32(file, height);
  put16(file, 1);
  put16(file, bits);
  put32(file, 0);
  put32(file, imageBytes);
  put32(file, 2925);
  put32(file, 2925);
  put32(file, 0);
  put32(file, 0);
  for (int i = 0; i < colours; ++i) {
    file += std::string(3, static_cast<char>(i)) + '\0';
  }
  const size_t begin = file.size();
  const auto packed = static_cast<std::ptrdiff_t>(width * height * bits / 8);
  file.append(pixels.begin(), pixels.begin() + packed);
  file.resize(begin + static_cast<size_t>(imageBytes), '\0');
  return file;
}

}  // namespace plain
