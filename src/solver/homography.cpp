#include "solver/homography.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "solver/view_sums.h"

namespace fisheye_calibration::solver {
namespace {

constexpr int kRefinementSteps = 10;

// Systems beyond these bounds are solved by LU decomposition, whose inverse is the zero matrix if a
// pivot is below 2.2e-14. Pivots are at least 1/8 of the smallest eigenvalue, itself above
// 1/trace(A^-1), so the second bound rules that out for the other systems.
constexpr double kTrustedCondition = 1e11;
constexpr double kTrustedInverse = 1e11;

double mean(const std::vector<double>& values) {
  return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

double meanAbsoluteDeviation(const std::vector<double>& values, double centre) {
  double sum = 0;
  for (const double value : values) {
    sum += std::abs(value - centre);
  }
  return sum / static_cast<double>(values.size());
}

// The 2N x 9 design matrix L of the direct linear transform: rows (M, 0, -x M) and (0, M, -y M) for
// each point in turn, M = (X, Y, 1).
cv::Mat designMatrix(const PlanarPoints& image, const PlanarPoints& plane) {
  cv::Mat L(static_cast<int>(2 * image.size()), 9, CV_64F);
  for (std::size_t i = 0; i < image.size(); ++i) {
    const double X = plane.x[i];
    const double Y = plane.y[i];
    const double x = image.x[i];
    const double y = image.y[i];
    const double rows[18] = {X, Y, 1, 0, 0, 0, -x * X, -x * Y, -x,  //
                             0, 0, 0, X, Y, 1, -y * X, -y * Y, -y};
    std::copy_n(rows, 18, L.ptr<double>(static_cast<int>(2 * i)));
  }
  return L;
}

// The right singular vector of the smallest singular value of L, as a homography with H(2,2) = 1.
// For up to four points L itself is decomposed, in full so that there are nine vectors; for more,
// L^T L.
cv::Matx33d linearHomography(const PlanarPoints& image, const PlanarPoints& plane) {
  cv::Mat w;
  cv::Mat u;
  cv::Mat vt;
  if (image.size() > 4) {
    cv::SVD::compute(fullMatrix<9>(designProduct(image, plane)), w, u, vt);
  } else {
    cv::SVD::compute(designMatrix(image, plane), w, u, vt, cv::SVD::FULL_UV);
  }
  cv::Matx33d H(vt.ptr<double>(8));
  const double last = H(2, 2);
  for (double& element : H.val) {
    element /= last;
  }
  return H;
}

std::array<double, 8> solveStep(const NormalEquations<8>& equations) {
  const SymmetricSolver<8> solver(equations.A);
  if (solver.conditionBound() < kTrustedCondition && solver.inverseTrace() < kTrustedInverse) {
    return solver.solve(equations.b);
  }
  cv::Matx<double, 8, 8> inverse;
  cv::invert(fullMatrix<8>(equations.A), inverse, cv::DECOMP_LU);  // the zero matrix if singular
  const cv::Matx<double, 8, 1> step = inverse * cv::Matx<double, 8, 1>(equations.b.data());
  std::array<double, 8> d;
  std::copy_n(step.val, 8, d.begin());
  return d;
}

}  // namespace

cv::Matx33d planarHomography(const PlanarPoints& image, const PlanarPoints& plane) {
  // The image points are normalised by their mean and mean absolute deviation; the plane is not.
  const double mx = mean(image.x);
  const double my = mean(image.y);
  const double scx = meanAbsoluteDeviation(image.x, mx);
  const double scy = meanAbsoluteDeviation(image.y, my);
  PlanarPoints normalized(image.size());
  for (std::size_t i = 0; i < image.size(); ++i) {
    normalized.x[i] = (1 / scx) * image.x[i] - mx / scx;
    normalized.y[i] = (1 / scy) * image.y[i] - my / scy;
  }
  const cv::Matx33d inverseNormalization(scx, 0, mx, 0, scy, my, 0, 0, 1);
  cv::Matx33d H = inverseNormalization * linearHomography(normalized, plane);
  if (image.size() > 4) {
    for (int i = 0; i < kRefinementSteps; ++i) {
      H(2, 2) = 1;
      const std::array<double, 8> step = solveStep(homographyNormalEquations(image, plane, H));
      for (std::size_t k = 0; k < step.size(); ++k) {
        H.val[k] -= step[k];
      }
    }
  }
  return H;
}

}  // namespace fisheye_calibration::solver
