#include "solver/view_sums.h"

#include <cmath>

#include "lens/inverse_lens.h"
#include "lens/rotation.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "solver/view_sums.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep

#include "lens/camera_model-inl.h"
#include "lens/pack-inl.h"

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::solver {
namespace HWY_NAMESPACE {
namespace {

namespace model = lens::HWY_NAMESPACE;
using namespace lens::HWY_NAMESPACE;

// Calls body.template operator()<T>(i) for 0..count-1: whole vectors first, then single points.
template <class Body>
HWY_INLINE void forEachPoint(std::size_t count, Body&& body) {
  const std::size_t lanes = hn::Lanes(Lanes());
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    body.template operator()<Pack>(i);
  }
  for (; i < count; ++i) {
    body.template operator()<double>(i);
  }
}

// Sums of the products of N derivatives with each other and with the residuals.
template <class T, std::size_t N>
struct RowSums {
  static constexpr std::size_t kElements = N * (N + 1) / 2;
  T A[kElements];
  T b[N];

  // Not A(), b(): where Highway's vectors have a constructor, GCC leaves them uninitialised then.
  HWY_INLINE RowSums() {
    for (T& sum : A) {
      sum = T(0.0);
    }
    for (T& sum : b) {
      sum = T(0.0);
    }
  }

  // Adds a row whose only non-zero derivatives are those of `columns`, in ascending order.
  template <std::size_t Count>
  HWY_INLINE void add(const std::size_t (&columns)[Count], const T (&row)[Count], T residual) {
    for (std::size_t i = 0; i < Count; ++i) {
      for (std::size_t j = 0; j <= i; ++j) {
        A[triangleIndex(columns[i], columns[j])] += row[i] * row[j];
      }
      b[columns[i]] += row[i] * residual;
    }
  }

  void addTo(NormalEquations<N>& equations) const {
    for (std::size_t i = 0; i < kElements; ++i) {
      equations.A[i] += sumOfLanes(A[i]);
    }
    for (std::size_t i = 0; i < N; ++i) {
      equations.b[i] += sumOfLanes(b[i]);
    }
  }
};

// The sums over whole vectors and over the remaining single points.
template <std::size_t N>
struct BothSums {
  RowSums<Pack, N> packs;
  RowSums<double, N> singles;

  // Hand-written because a defaulted one would be compiled for the baseline instruction set.
  HWY_INLINE BothSums() : packs(), singles() {}

  template <class T>
  HWY_INLINE RowSums<T, N>& of() {
    if constexpr (std::is_same_v<T, double>) {
      return singles;
    } else {
      return packs;
    }
  }

  NormalEquations<N> total() const {
    NormalEquations<N> equations;
    packs.addTo(equations);
    singles.addTo(equations);
    return equations;
  }
};

// Newton's method lane by lane; a converged lane keeps its angle.
HWY_INLINE void normalizePack(const lens::Camera& camera, Pack x, Pack y, double* outX,
                              double* outY) {
  const Lanes d;
  const Pack radius = squareRoot(x * x + y * y);
  const Pack thetaD = select(radius > Pack(lens::kHalfPi), Pack(lens::kHalfPi), radius);
  const auto atCentre = hn::Not(thetaD > Pack(lens::kNormalizationEpsilon));
  auto converged = atCentre;
  Pack theta = thetaD;
  for (int i = 0; i < lens::kNormalizationSteps && !hn::AllTrue(d, converged); ++i) {
    const Pack fix = (distortedAngle(camera, theta) - thetaD) / distortedAngleSlope(camera, theta);
    theta = select(converged, theta, theta - fix);
    converged = hn::Or(converged, absolute(fix) < Pack(lens::kNormalizationEpsilon));
  }
  const auto accepted = hn::AndNot(theta < Pack(0.0), converged);

  HWY_ALIGN double tangent[HWY_MAX_BYTES / sizeof(double)];
  theta.store(tangent);
  for (std::size_t i = 0; i < hn::Lanes(d); ++i) {
    tangent[i] = std::tan(tangent[i]);
  }
  const Pack scale = select(atCentre, Pack(0.0), Pack::load(tangent) / thetaD);
  select(accepted, x * scale, Pack(lens::kNoSolution)).store(outX);
  select(accepted, y * scale, Pack(lens::kNoSolution)).store(outY);
}

HWY_INLINE void normalizeSingle(const lens::Camera& camera, double x, double y, double* outX,
                                double* outY) {
  const double radius = std::sqrt(x * x + y * y);
  double scale = 0;
  const bool solved = lens::undistortionScale(
      camera, radius > lens::kHalfPi ? lens::kHalfPi : radius,
      {lens::kNormalizationSteps, true, lens::kNormalizationEpsilon}, scale);
  *outX = solved ? x * scale : lens::kNoSolution;
  *outY = solved ? y * scale : lens::kNoSolution;
}

void NormalizePixels(const PlanarPoints& pixels, const lens::Camera& camera,
                     PlanarPoints& normalized) {
  forEachPoint(pixels.size(), [&]<class T>(std::size_t i) HWY_ATTR {
    const T y = (loadFrom<T>(&pixels.y[i]) - T(camera.cy)) / T(camera.fy);
    const T x = (loadFrom<T>(&pixels.x[i]) - T(camera.cx)) / T(camera.fx) - T(camera.alpha) * y;
    if constexpr (std::is_same_v<T, double>) {
      normalizeSingle(camera, x, y, &normalized.x[i], &normalized.y[i]);
    } else {
      normalizePack(camera, x, y, &normalized.x[i], &normalized.y[i]);
    }
  });
}

NormalEquations<6> PoseNormalEquations(const ViewPoints& view, const lens::Camera& camera,
                                       const lens::Pose& pose) {
  constexpr std::size_t kAll[] = {0, 1, 2, 3, 4, 5};
  const cv::Matx33d R = lens::rotationFromVector(pose.om);
  const auto dR = lens::rotationDerivative(pose.om);
  BothSums<6> sums;
  forEachPoint(view.size(), [&]<class T>(std::size_t i) HWY_ATTR {
    const T X = loadFrom<T>(&view.X[i]);
    const T Y = loadFrom<T>(&view.Y[i]);
    const T Z = loadFrom<T>(&view.Z[i]);
    const auto p = model::projectPoint(camera, R, pose.T, X, Y, Z);
    const auto d = poseDerivatives(camera, dR, X, Y, Z, p);
    sums.template of<T>().add(kAll, d.u, loadFrom<T>(&view.image.x[i]) - p.u);
    sums.template of<T>().add(kAll, d.v, loadFrom<T>(&view.image.y[i]) - p.v);
  });
  return sums.total();
}

NormalEquations<kAllParameters> FullNormalEquations(const ViewPoints& view,
                                                    const lens::Camera& camera,
                                                    const lens::Pose& pose) {
  // fx 0, fy 1, cx 2, cy 3, skew 4, k0 5, k1 6, pose 7...12
  constexpr std::size_t kOfU[] = {0, 2, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  constexpr std::size_t kOfV[] = {1, 3, 5, 6, 7, 8, 9, 10, 11, 12};
  const cv::Matx33d R = lens::rotationFromVector(pose.om);
  const auto dR = lens::rotationDerivative(pose.om);
  BothSums<kAllParameters> sums;
  forEachPoint(view.size(), [&]<class T>(std::size_t i) HWY_ATTR {
    const T X = loadFrom<T>(&view.X[i]);
    const T Y = loadFrom<T>(&view.Y[i]);
    const T Z = loadFrom<T>(&view.Z[i]);
    const auto p = model::projectPoint(camera, R, pose.T, X, Y, Z);
    const auto d = poseDerivatives(camera, dR, X, Y, Z, p);
    const auto lens = lensDerivatives(camera, p);
    const T u[] = {p.xSkewed, T(1.0), lens.u_alpha, lens.u_k[0], lens.u_k[1], d.u[0],
                   d.u[1],    d.u[2], d.u[3],       d.u[4],      d.u[5]};
    const T v[] = {p.yd,   T(1.0), lens.v_k[0], lens.v_k[1], d.v[0],
                   d.v[1], d.v[2], d.v[3],      d.v[4],      d.v[5]};
    sums.template of<T>().add(kOfU, u, loadFrom<T>(&view.image.x[i]) - p.u);
    sums.template of<T>().add(kOfV, v, loadFrom<T>(&view.image.y[i]) - p.v);
  });
  return sums.total();
}

LowerTriangle<9> DesignProduct(const PlanarPoints& image, const PlanarPoints& plane) {
  constexpr std::size_t kOfX[] = {0, 1, 2, 6, 7, 8};
  constexpr std::size_t kOfY[] = {3, 4, 5, 6, 7, 8};
  BothSums<9> sums;
  forEachPoint(image.size(), [&]<class T>(std::size_t i) HWY_ATTR {
    const T X = loadFrom<T>(&plane.x[i]);
    const T Y = loadFrom<T>(&plane.y[i]);
    const T x = loadFrom<T>(&image.x[i]);
    const T y = loadFrom<T>(&image.y[i]);
    const T rowX[] = {X, Y, T(1.0), -(x * X), -(x * Y), -x};
    const T rowY[] = {X, Y, T(1.0), -(y * X), -(y * Y), -y};
    sums.template of<T>().add(kOfX, rowX, T(0.0));
    sums.template of<T>().add(kOfY, rowY, T(0.0));
  });
  return sums.total().A;
}

NormalEquations<8> HomographyNormalEquations(const PlanarPoints& image, const PlanarPoints& plane,
                                             const cv::Matx33d& H) {
  constexpr std::size_t kOfX[] = {0, 1, 2, 6, 7};
  constexpr std::size_t kOfY[] = {3, 4, 5, 6, 7};
  BothSums<8> sums;
  forEachPoint(image.size(), [&]<class T>(std::size_t i) HWY_ATTR {
    const T X = loadFrom<T>(&plane.x[i]);
    const T Y = loadFrom<T>(&plane.y[i]);
    const auto mapped = toCameraFrame(H, cv::Vec3d(), X, Y, T(1.0));
    const T x = mapped.x / mapped.z;
    const T y = mapped.y / mapped.z;
    // The derivatives of the error m - H(M), with M divided by the third coordinate of H M.
    const T M[] = {X / mapped.z, Y / mapped.z, T(1.0) / mapped.z};
    const T rowX[] = {-M[0], -M[1], -M[2], x * M[0], x * M[1]};
    const T rowY[] = {-M[0], -M[1], -M[2], y * M[0], y * M[1]};
    sums.template of<T>().add(kOfX, rowX, loadFrom<T>(&image.x[i]) - x);
    sums.template of<T>().add(kOfY, rowY, loadFrom<T>(&image.y[i]) - y);
  });
  return sums.total();
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::solver
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace fisheye_calibration::solver {

HWY_EXPORT(NormalizePixels);
HWY_EXPORT(PoseNormalEquations);
HWY_EXPORT(FullNormalEquations);
HWY_EXPORT(DesignProduct);
HWY_EXPORT(HomographyNormalEquations);

void normalizePixels(const PlanarPoints& pixels, const lens::Camera& camera,
                     PlanarPoints& normalized) {
  HWY_DYNAMIC_DISPATCH(NormalizePixels)(pixels, camera, normalized);
}

NormalEquations<6> poseNormalEquations(const ViewPoints& view, const lens::Camera& camera,
                                       const lens::Pose& pose) {
  return HWY_DYNAMIC_DISPATCH(PoseNormalEquations)(view, camera, pose);
}

NormalEquations<kAllParameters> fullNormalEquations(const ViewPoints& view,
                                                    const lens::Camera& camera,
                                                    const lens::Pose& pose) {
  return HWY_DYNAMIC_DISPATCH(FullNormalEquations)(view, camera, pose);
}

LowerTriangle<9> designProduct(const PlanarPoints& image, const PlanarPoints& plane) {
  return HWY_DYNAMIC_DISPATCH(DesignProduct)(image, plane);
}

NormalEquations<8> homographyNormalEquations(const PlanarPoints& image, const PlanarPoints& plane,
                                             const cv::Matx33d& H) {
  return HWY_DYNAMIC_DISPATCH(HomographyNormalEquations)(image, plane, H);
}

}  // namespace fisheye_calibration::solver
#endif  // HWY_ONCE
