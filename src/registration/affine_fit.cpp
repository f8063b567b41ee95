#include "registration/affine_fit.h"

#include <cstddef>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "images/debug_files.h"
#include "platform/number_text.h"
#include "registration/eq_matrix.h"

namespace fisheye_calibration {
namespace {

constexpr int kUnknowns = 6;

void writePairs(const std::vector<cv::Point2f>& src, const std::vector<cv::Point2f>& dst) {
  std::ofstream file(images::debug_files::kAffinePairs);  // text mode: native line ends
  if (!file) {
    return;
  }
  const auto text = [](float value) { return platform::fixedText(value, 6); };
  for (std::size_t i = 0; i < src.size(); ++i) {
    const std::string line = text(src[i].x) + '\t' + text(src[i].y) + '\t' + text(dst[i].x) + '\t' +
                             text(dst[i].y) + '\n';
    file.write(line.data(), static_cast<std::streamsize>(line.size()));
  }
}

// Two equations per pair, for p = (a, b, c, d, e, f):
//   x a + y b + e = u
//   x c + y d + f = v
void setPair(CEQMatrix& A, CEQMatrix& b, int pair, const cv::Point2f& from, const cv::Point2f& to) {
  const int rowU = 2 * pair;
  const int rowV = rowU + 1;
  A.SetElement(rowU, 0, from.x);
  A.SetElement(rowU, 1, from.y);
  A.SetElement(rowU, 4, 1.0);
  b.SetElement(rowU, 0, to.x);
  A.SetElement(rowV, 2, from.x);
  A.SetElement(rowV, 3, from.y);
  A.SetElement(rowV, 5, 1.0);
  b.SetElement(rowV, 0, to.y);
}

}  // namespace

bool fitAffine(const std::vector<cv::Point2f>& src, const std::vector<cv::Point2f>& dst,
               float* params) {
  constexpr std::size_t kMostPairs = std::numeric_limits<int>::max() / (2 * kUnknowns);
  if (src.empty() || src.size() != dst.size() || src.size() > kMostPairs || params == nullptr) {
    return false;
  }
  const int pairs = static_cast<int>(src.size());
  CEQMatrix A;
  CEQMatrix b;
  if (A.SetSize(2 * pairs, kUnknowns) == 0 || b.SetSize(2 * pairs, 1) == 0) {
    return false;
  }
  for (int i = 0; i < pairs; ++i) {
    setPair(A, b, i, src[static_cast<std::size_t>(i)], dst[static_cast<std::size_t>(i)]);
  }

  // p = inv(A^T A) A^T b
  const CEQMatrix At = A.Transpose();
  CEQMatrix N = At.Multiply(A);
  const CEQMatrix r = At.Multiply(b);
  if (N.Data == nullptr || r.Data == nullptr || At.Data == nullptr) {
    return false;
  }
  // A singular N is used as left (compatibility 43).
  if (invert(N) == Inversion::kNoMemory) {
    return false;
  }
  const CEQMatrix p = N.Multiply(r);
  if (p.Data == nullptr) {
    return false;
  }

  for (int i = 0; i < kUnknowns; ++i) {
    params[i] = static_cast<float>(p.GetElement(i, 0));
  }
  return true;
}

bool AffineFit(const std::vector<cv::Point2f>& src, const std::vector<cv::Point2f>& dst,
               float* params) {
  if (!fitAffine(src, dst, params)) {
    return false;
  }
  if (images::kWritesDebugFiles) {
    writePairs(src, dst);
  }
  return true;
}

}  // namespace fisheye_calibration
