#include "support/plain_correction.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "support/plain_model.h"
#include "support/plain_remap.h"

namespace plain {
namespace {

int bytesPerPixel(int bitCount) {
  if (bitCount == 24) return 3;
  if (bitCount == 32) return 4;
  return 1;
}

bool isSupported(int bitCount) { return bitCount == 8 || bitCount == 24 || bitCount == 32; }

// By cofactors; the zero matrix when the determinant is exactly 0.
cv::Matx33d inverse(const cv::Matx33d& m) {
  const double determinant = m(0, 0) * (m(1, 1) * m(2, 2) - m(2, 1) * m(1, 2)) -
                             m(0, 1) * (m(1, 0) * m(2, 2) - m(2, 0) * m(1, 2)) +
                             m(0, 2) * (m(1, 0) * m(2, 1) - m(2, 0) * m(1, 1));
  if (determinant == 0) return cv::Matx33d::zeros();
  const double d = 1 / determinant;
  return {(m(1, 1) * m(2, 2) - m(1, 2) * m(2, 1)) * d, (m(0, 2) * m(2, 1) - m(0, 1) * m(2, 2)) * d,
          (m(0, 1) * m(1, 2) - m(0, 2) * m(1, 1)) * d, (m(1, 2) * m(2, 0) - m(1, 0) * m(2, 2)) * d,
          (m(0, 0) * m(2, 2) - m(0, 2) * m(2, 0)) * d, (m(0, 2) * m(1, 0) - m(0, 0) * m(1, 2)) * d,
          (m(1, 0) * m(2, 1) - m(1, 1) * m(2, 0)) * d, (m(0, 1) * m(2, 0) - m(0, 0) * m(2, 1)) * d,
          (m(0, 0) * m(1, 1) - m(0, 1) * m(1, 0)) * d};
}

// iR = (PP RR)^-1: from a pixel of the corrected image to a ray in the camera's frame.
cv::Matx33d rayMatrix(const cv::Mat& R, const cv::Mat& P, const cv::Size& size) {
  cv::Matx33d RR = cv::Matx33d::eye();
  if (R.total() * static_cast<size_t>(R.channels()) == 3) {
    RR = rotationMatrix(R.clone().reshape(1, 3));
  } else if (!R.empty()) {
    RR = R;
  }
  cv::Matx33d PP = cv::Matx33d::eye();
  if (!P.empty()) PP = P.colRange(0, 3).clone();
  PP(0, 2) = static_cast<int>(size.width * 0.5 + 0.5);
  PP(1, 2) = static_cast<int>(size.height * 0.5 + 0.5);
  return inverse(PP * RR);
}

// Nearest integer, ties to even; NaN and values beyond 32 bits become the lowest one.
int rounded(double value) {
  if (!(value >= -2147483648.5 && value < 2147483647.5)) return std::numeric_limits<int>::min();
  return cvRound(value);
}

// Truncated toward zero; -1 for NaN and values beyond 32 bits.
int truncated(double value) {
  if (!(std::abs(value) < 2147483648.0)) return -1;
  return static_cast<int>(value);
}

// remap takes sides of 16 bits, signed.
bool takenByImageLibrary(const cv::Size& size) {
  return std::max(size.width, size.height) <= 32766;
}

}  // namespace

void undistortRectifyMap(const cv::Mat& K, const cv::Mat& D, const cv::Mat& R, const cv::Mat& P,
                         const cv::Size& size, cv::Mat& map1, cv::Mat& map2,
                         const cv::Range& rows) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const double fx = K.at<double>(0, 0);
  const double fy = K.at<double>(1, 1);
  const double cx = K.at<double>(0, 2);
  const double cy = K.at<double>(1, 2);
  const double k0 = D.empty() ? 0.0 : D.at<double>(0);
  const double k1 = D.empty() ? 0.0 : D.at<double>(1);
  const cv::Matx33d iR = rayMatrix(R, P, size);

  const cv::Range wanted = rows == cv::Range::all() ? cv::Range(0, size.height) : rows;
  map1.create(wanted.size(), size.width, CV_16SC2);
  map2.create(wanted.size(), size.width, CV_16UC1);
  for (int i = wanted.start; i < wanted.end; ++i) {
    short* const m1 = map1.ptr<short>(i - wanted.start);
    unsigned short* const m2 = map2.ptr<unsigned short>(i - wanted.start);
    double X = i * iR(0, 1) + iR(0, 2);
    double Y = i * iR(1, 1) + iR(1, 2);
    double W = i * iR(2, 1) + iR(2, 2);
    for (int j = 0; j < size.width; ++j) {
      double u = 0;
      double v = 0;
      if (W <= 0) {
        u = X > 0 ? -kInfinity : kInfinity;
        v = Y > 0 ? -kInfinity : kInfinity;
      } else {
        const double x = X / W;
        const double y = Y / W;
        const double r = std::sqrt(x * x + y * y);
        const double theta = std::atan(r);
        const double thetaD = theta + k0 * (theta * theta) + k1 * (theta * theta * theta);
        const double scale = r == 0 ? 1.0 : thetaD / r;
        u = fx * x * scale + cx;
        v = fy * y * scale + cy;
      }
      const int iu = rounded(u * 32);
      const int iv = rounded(v * 32);
      m1[2 * j] = static_cast<short>(iu >> 5);
      m1[2 * j + 1] = static_cast<short>(iv >> 5);
      m2[j] = static_cast<unsigned short>((iv & 31) * 32 + (iu & 31));
      X += iR(0, 0);
      Y += iR(1, 0);
      W += iR(2, 0);
    }
  }
}

cv::Mat imageOfBuffer(const unsigned char* buffer, int width, int height, int bitCount) {
  cv::Mat image(height, width, CV_8UC(bytesPerPixel(bitCount)), cv::Scalar::all(0));
  if (!isSupported(bitCount)) return image;
  const size_t rowBytes = static_cast<size_t>(width) * image.elemSize();
  for (int j = 0; j < height; ++j) {
    std::memcpy(image.ptr(j), buffer + static_cast<size_t>(height - 1 - j) * rowBytes, rowBytes);
  }
  return image;
}

void storeInBuffer(const cv::Mat& image, unsigned char* buffer) {
  const size_t rowBytes = static_cast<size_t>(image.cols) * image.elemSize();
  for (int j = 0; j < image.rows; ++j) {
    std::memcpy(buffer + static_cast<size_t>(image.rows - 1 - j) * rowBytes, image.ptr(j),
                rowBytes);
  }
}

bool isImageBlack(const cv::Mat& image) {
  const size_t rowBytes = static_cast<size_t>(image.cols) * image.elemSize();
  for (int j = 0; j < image.rows; ++j) {
    const unsigned char* const row = image.ptr(j);
    if (std::any_of(row, row + rowBytes, [](unsigned char byte) { return byte != 0; })) {
      return false;
    }
  }
  return true;
}

cv::Point nearestSource(const cv::Matx33d& h, double x, double y) {
  const double w = h(2, 0) * x + h(2, 1) * y + h(2, 2);
  const float sx = static_cast<float>((h(0, 0) * x + h(0, 1) * y + h(0, 2)) / w);
  const float sy = static_cast<float>((h(1, 0) * x + h(1, 1) * y + h(1, 2)) / w);
  return {truncated(static_cast<double>(sx) + 0.5), truncated(static_cast<double>(sy) + 0.5)};
}

cv::Mat warpByInverseHomography(const cv::Mat& source, const cv::Mat& Hinv, double dx, double dy,
                                unsigned char fill) {
  const cv::Matx33d h = Hinv;
  const int channels = source.channels();
  cv::Mat result(source.size(), source.type());
  for (int y = 0; y < source.rows; ++y) {
    unsigned char* to = result.ptr(y);
    for (int x = 0; x < source.cols; ++x) {
      const cv::Point at = nearestSource(h, x - dx, y - dy);
      const bool inside = at.x >= 0 && at.x < source.cols && at.y >= 0 && at.y < source.rows;
      const unsigned char* const from = inside ? source.ptr(at.y) + at.x * channels : nullptr;
      for (int c = 0; c < channels; ++c) *to++ = inside ? from[c] : fill;
    }
  }
  return result;
}

bool singleCamCorrected(const unsigned char* src, ImageLong srcWidth, ImageLong srcHeight,
                        int bitCount, const FishEyeCalibrationParam& param, unsigned char* dst,
                        ImageLong dstWidth, ImageLong dstHeight, unsigned char* mask) {
  if (src == nullptr || dst == nullptr || dstWidth <= 0 || dstHeight <= 0) return false;
  if (srcWidth <= 0 || srcHeight <= 0) return false;

  const cv::Mat K = (cv::Mat_<double>(3, 3) << param.fx, param.skewness, param.u0, 0, param.fy,
                     param.v0, 0, 0, 1);
  const cv::Mat D = (cv::Mat_<double>(2, 1) << param.k0, param.k1);
  const cv::Size size(dstWidth, dstHeight);
  cv::Mat map1;
  cv::Mat map2;
  undistortRectifyMap(K, D, cv::Mat::eye(3, 3, CV_64F), K, size, map1, map2);

  const cv::Mat source = imageOfBuffer(src, srcWidth, srcHeight, bitCount);
  const cv::Mat blank(source.size(), CV_8UC1, cv::Scalar(0));
  cv::Mat outside;
  // The transparent border leaves pixels without a source as they are: zero.
  cv::Mat undistorted(size, source.type(), cv::Scalar::all(0));
  if (takenByImageLibrary(source.size()) && takenByImageLibrary(size)) {
    cv::remap(blank, outside, map1, map2, cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar(255));
    cv::remap(source, undistorted, map1, map2, cv::INTER_LINEAR, cv::BORDER_TRANSPARENT);
    remapLastColumnAndRow(source, undistorted, map1, map2);
  } else {
    remapConstant(blank, outside, map1, map2, 255);
    remapTransparent(source, undistorted, map1, map2);
  }
  cv::threshold(outside, outside, 127, 255, cv::THRESH_BINARY);
  if (isImageBlack(undistorted)) return false;

  const cv::Mat H = (cv::Mat_<double>(3, 3) << param.p1, param.p2, param.p3, param.p4, param.p5,
                     param.p6, param.p7, param.p8, param.p9);
  cv::Mat Hinv;
  cv::invert(H, Hinv, cv::DECOMP_LU);
  const cv::Mat result =
      warpByInverseHomography(undistorted, Hinv, param.ImageDx, param.ImageDy, 0);
  const cv::Mat resultMask =
      warpByInverseHomography(outside, Hinv, param.ImageDx, param.ImageDy, 255);
  if (mask != nullptr) storeInBuffer(resultMask, mask);
  storeInBuffer(result, dst);
  return true;
}

void croppingImage(const unsigned char* src, ImageLong srcWidth, ImageLong srcHeight, int bitCount,
                   unsigned char* dst, ImageLong dstWidth, ImageLong dstHeight) {
  if (!isSupported(bitCount)) return;
  const int bytes = bytesPerPixel(bitCount);
  const int x0 = static_cast<int>(srcWidth * 0.5 + 0.5) - static_cast<int>(dstWidth * 0.5 + 0.5);
  const int y0 = static_cast<int>(srcHeight * 0.5 + 0.5) - static_cast<int>(dstHeight * 0.5 + 0.5);
  for (int j = 0; j < dstHeight; ++j) {
    for (int i = 0; i < dstWidth; ++i) {
      const int sx = x0 + i;
      const int sy = y0 + j;
      if (sx < 0 || sx >= srcWidth || sy < 0 || sy >= srcHeight) continue;
      for (int b = 0; b < bytes; ++b) {
        dst[(j * dstWidth + i) * bytes + b] = src[(sy * srcWidth + sx) * bytes + b];
      }
    }
  }
}

}  // namespace plain
