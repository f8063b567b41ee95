// The vector loops, on every instruction set of the machine, against plain sums. Sums on different
// instruction sets agree to rounding only, not to the bit.
#include "solver/view_sums.h"

#include <gtest/gtest.h>

#include <cmath>

#include "fisheye/internal.h"
#include "fisheye/intrinsic_params.h"
#include "fisheye/view_arrays.h"
#include "solver/pose.h"
#include "support/instruction_sets.h"
#include "support/plain_solver.h"
#include "support/synthetic_rig.h"

using namespace fisheye_calibration;

namespace {

using solver::triangleIndex;

// Counts that fill vectors and that leave remainders.
constexpr int kColumns[] = {1, 2, 3, 5, 8, 9};

struct Scene {
  support::RigCamera camera;
  support::RigView view;
  internal::IntrinsicParams intrinsics;
  solver::ViewPoints points;
  lens::Pose pose;
};

Scene makeScene(int columns) {
  Scene scene;
  support::Bed bed;
  bed.columns = columns;
  scene.camera.skew = 0.01;
  const support::RigPose pose = support::poseOver(bed, 320, 0.3, -0.2, 0.4);
  scene.view = support::seen(scene.camera, bed, pose, 0.5);
  scene.intrinsics.focalLength = {scene.camera.fx * 1.01, scene.camera.fy * 0.98};
  scene.intrinsics.principalPoint = {scene.camera.cx + 3, scene.camera.cy - 2};
  scene.intrinsics.distortion = {scene.camera.k0, scene.camera.k1};
  scene.intrinsics.skew = scene.camera.skew;
  scene.points =
      fisheye::readView(cv::Mat(scene.view.objectPoints), cv::Mat(scene.view.imagePoints), "test");
  scene.pose = {pose.rotation, pose.translation};
  return scene;
}

// The lower triangle of J^T J and J^T e, with J and e from the projection of single points.
template <std::size_t N>
void expectSums(const solver::NormalEquations<N>& sums, const cv::Mat& J, const cv::Mat& e) {
  const cv::Mat JtJ = J.t() * J;
  const cv::Mat Jte = J.t() * e;
  const double scale = cv::norm(JtJ, cv::NORM_INF);
  const double scaleOfB = std::max(cv::norm(Jte, cv::NORM_INF), 1.0);
  for (std::size_t i = 0; i < N; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      EXPECT_NEAR(sums.A[triangleIndex(i, j)],
                  JtJ.at<double>(static_cast<int>(i), static_cast<int>(j)), 1e-12 * scale)
          << i << ' ' << j;
    }
    EXPECT_NEAR(sums.b[i], Jte.at<double>(static_cast<int>(i)), 1e-11 * scaleOfB) << i;
  }
}

// The 2N x 13 Jacobian of fisheye::projectPoints and the residuals.
cv::Mat jacobianAndResiduals(const Scene& scene, cv::Mat& residuals) {
  cv::Mat projected;
  cv::Mat J;
  internal::projectPoints(scene.view.objectPoints, projected, scene.pose.om, scene.pose.T,
                          scene.intrinsics, J);
  residuals = cv::Mat(scene.view.imagePoints).reshape(1, J.rows) - projected.reshape(1, J.rows);
  return J;
}

TEST(ViewSums, PoseEquationsAreThoseOfThePointsJacobian) {
  support::onEveryInstructionSet([] {
    for (const int columns : kColumns) {
      const Scene scene = makeScene(columns);
      cv::Mat e;
      const cv::Mat J = jacobianAndResiduals(scene, e);
      expectSums(solver::poseNormalEquations(scene.points, internal::toCamera(scene.intrinsics),
                                             scene.pose),
                 J.colRange(6, 12), e);
    }
  });
}

TEST(ViewSums, FullEquationsFollowTheFixedParameterOrder) {
  support::onEveryInstructionSet([] {
    for (const int columns : kColumns) {
      const Scene scene = makeScene(columns);
      cv::Mat e;
      const cv::Mat J = jacobianAndResiduals(scene, e);
      cv::Mat ordered(J.rows, 13, CV_64F);
      const int order[] = {0, 1, 2, 3, 12, 4, 5, 6, 7, 8, 9, 10, 11};
      for (int k = 0; k < 13; ++k) {
        J.col(order[k]).copyTo(ordered.col(k));
      }
      expectSums(solver::fullNormalEquations(scene.points, internal::toCamera(scene.intrinsics),
                                             scene.pose),
                 ordered, e);
    }
  });
}

TEST(ViewSums, NormalizedPixelsAreThoseOfTheInverseModel) {
  Scene scene = makeScene(9);
  // The principal point, a pixel that cannot be inverted and NaN pixels.
  const double cx = scene.intrinsics.principalPoint[0];
  const double cy = scene.intrinsics.principalPoint[1];
  const double nan = std::nan("");
  for (const cv::Point2d& p : {cv::Point2d(cx, cy), cv::Point2d(1e5, -1e5), cv::Point2d(nan, nan),
                               cv::Point2d(cx + 1e-7, cy)}) {
    scene.view.imagePoints.push_back(p);
  }
  const cv::Mat expected =
      internal::NormalizePixels(cv::Mat(scene.view.imagePoints), scene.intrinsics);
  support::onEveryInstructionSet([&] {
    solver::PlanarPoints pixels(scene.view.imagePoints.size());
    for (std::size_t i = 0; i < pixels.size(); ++i) {
      pixels.x[i] = scene.view.imagePoints[i].x;
      pixels.y[i] = scene.view.imagePoints[i].y;
    }
    solver::PlanarPoints normalized(pixels.size());
    solver::normalizePixels(pixels, internal::toCamera(scene.intrinsics), normalized);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
      const cv::Vec2d want = expected.at<cv::Vec2d>(static_cast<int>(i));
      for (const auto& [got, wanted] :
           {std::pair(normalized.x[i], want[0]), std::pair(normalized.y[i], want[1])}) {
        if (std::isfinite(wanted)) {
          EXPECT_NEAR(got, wanted, 1e-13 * std::max(1.0, std::abs(wanted))) << i;
        } else {
          EXPECT_TRUE(std::isnan(got) && std::isnan(wanted)) << i;
        }
      }
    }
  });
}

TEST(ViewSums, HomographiesAgreeWithThePlainDerivation) {
  const Scene scene = makeScene(9);
  const int count = static_cast<int>(scene.view.objectPoints.size());
  cv::Mat m(2, count, CV_64F);
  cv::Mat M(2, count, CV_64F);
  for (int i = 0; i < count; ++i) {
    const auto k = static_cast<std::size_t>(i);
    m.at<double>(0, i) = scene.view.imagePoints[k].x;
    m.at<double>(1, i) = scene.view.imagePoints[k].y;
    M.at<double>(0, i) = scene.view.objectPoints[k].x;
    M.at<double>(1, i) = scene.view.objectPoints[k].y;
  }
  const cv::Mat expected = plain::computeHomography(m, M);
  support::onEveryInstructionSet([&] {
    EXPECT_LT(cv::norm(internal::ComputeHomography(m, M), expected, cv::NORM_INF),
              1e-9 * cv::norm(expected, cv::NORM_INF));
  });
}

}  // namespace
