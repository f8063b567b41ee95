// Elimination of the poses against dense matrices.
#include "robust/arrow_matrix.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "robust/views.h"

using namespace fisheye_calibration;
using robust_tests::dense;
using robust_tests::ofView;

namespace {

constexpr int kViews = 4;

// R^T R + I/10 of a random matrix R, with units that differ by orders of magnitude.
robust::ViewMatrix randomPositive(support::Random& random) {
  robust::ViewMatrix R;
  for (double& element : R.val) {
    element = random.uniform(-1, 1);
  }
  robust::ViewMatrix A = R.t() * R + 0.1 * robust::ViewMatrix::eye();
  for (int i = 0; i < 12; ++i) {
    for (int j = 0; j < 12; ++j) {
      A(i, j) *= std::pow(10.0, (i % 4) + (j % 4));
    }
  }
  return A;
}

robust::ArrowMatrix randomArrow(std::uint64_t seed) {
  support::Random random(seed);
  robust::ArrowMatrix A;
  A.prior = cv::Matx66d::diag({1, 2, 3, 4, 5, 6});
  for (int j = 0; j < kViews; ++j) {
    A.views.push_back(randomPositive(random));
  }
  return A;
}

// Only the poses, the lens's rows and columns 0.
cv::Mat inverseOfPoses(const cv::Mat& A) {
  const cv::Range poses(6, A.rows);
  cv::Mat inverse = cv::Mat::zeros(A.size(), CV_64F);
  cv::Mat(A(poses, poses).inv(cv::DECOMP_CHOLESKY)).copyTo(inverse(poses, poses));
  return inverse;
}

TEST(ArrowMatrix, SolutionsAreThoseOfTheDenseSystem) {
  const robust::ArrowMatrix M = randomArrow(1);
  support::Random random(2);
  cv::Mat b(6 + 6 * kViews, 1, CV_64F);
  robust::ArrowVector arrow;
  for (int i = 0; i < b.rows; ++i) {
    b.at<double>(i) = random.uniform(-1, 1);
  }
  arrow.lens = robust::LensVector(b.ptr<double>());
  for (int j = 0; j < kViews; ++j) {
    arrow.poses.emplace_back(b.ptr<double>(6 + 6 * j));
  }
  cv::Mat expected;
  cv::solve(dense(M), b, expected, cv::DECOMP_CHOLESKY);
  const robust::ArrowInverse A(M, false);
  ASSERT_TRUE(A.exists());
  const robust::ArrowVector x = A.times(arrow);
  for (int i = 0; i < 6; ++i) {
    EXPECT_NEAR(x.lens[i], expected.at<double>(i), 1e-10 * std::abs(expected.at<double>(i)));
    for (int j = 0; j < kViews; ++j) {
      const double want = expected.at<double>(6 + 6 * j + i);
      EXPECT_NEAR(x.poses[static_cast<std::size_t>(j)][i], want, 1e-10 * std::abs(want));
    }
  }
}

TEST(ArrowMatrix, BlocksProductsAndTracesAreThoseOfTheDenseInverse) {
  const robust::ArrowMatrix M = randomArrow(3);
  const robust::ArrowMatrix C = randomArrow(4);
  for (const bool holdLens : {false, true}) {
    const cv::Mat inverse =
        holdLens ? inverseOfPoses(dense(M)) : cv::Mat(dense(M).inv(cv::DECOMP_CHOLESKY));
    const cv::Mat product = inverse * dense(C) * inverse;
    const robust::ArrowInverse A(M, holdLens);
    ASSERT_TRUE(A.exists());
    for (int j = 0; j < kViews; ++j) {
      const auto k = static_cast<std::size_t>(j);
      EXPECT_LT(robust_tests::largestDifference(cv::Mat(A.block(k)), ofView(inverse, j)), 1e-11);
      EXPECT_LT(robust_tests::largestDifference(cv::Mat(A.product(C, k)), ofView(product, j)),
                1e-11);
    }
    const double trace = cv::trace(cv::Mat(inverse * dense(C)))[0];
    EXPECT_NEAR(A.traceWith(C), trace, 1e-11 * trace);
  }
}

// With the lens moved by d, the minimum of the poses moves by -V^-1 W^T d.
TEST(ArrowMatrix, PosesFollowAHeldLens) {
  const robust::ArrowMatrix M = randomArrow(5);
  const cv::Matx66d L = cv::Matx66d::diag({1, 4, 9, 16, 25, 36});
  const robust::ArrowInverse A(M, true);
  ASSERT_TRUE(A.exists());
  for (std::size_t j = 0; j < kViews; ++j) {
    const cv::Mat view(M.views[j]);
    cv::Mat follow = cv::Mat::eye(12, 6, CV_64F);
    cv::Mat(-(view(cv::Rect(6, 6, 6, 6)).inv() * view(cv::Rect(0, 6, 6, 6))))
        .copyTo(follow.rowRange(6, 12));
    const cv::Mat expected = follow * cv::Mat(L) * follow.t();
    EXPECT_LT(robust_tests::largestDifference(cv::Mat(A.followingLens(L, j)), expected), 1e-10);
  }
}

// 11 rows for 12 unknowns: rounding makes about every other of these matrices positive definite.
TEST(ArrowMatrix, InversesMadeOfRoundingErrorsAreNotAccurate) {
  support::Random random(7);
  int positive = 0;
  for (int round = 0; round < 200; ++round) {
    cv::Matx<double, 11, 12> R;
    for (double& element : R.val) {
      element = random.uniform(-1, 1);
    }
    const robust::ArrowInverse A({cv::Matx66d::zeros(), {R.t() * R}}, false);
    positive += A.exists() ? 1 : 0;
    EXPECT_FALSE(A.isAccurate()) << round;
  }
  EXPECT_GT(positive, 50);
}

// Unit diagonal, 1 - d off it for two unknowns: the variance of both is 1/(1 - (1 - d)^2).
TEST(ArrowMatrix, InflationIsThatOfTwoUnknownsThatNearlyCoincide) {
  for (const double d : {0.5, 1e-3, 1e-9}) {
    for (const auto& [i, j] : {std::pair(0, 1), std::pair(2, 9), std::pair(7, 8)}) {
      robust::ViewMatrix M = robust::ViewMatrix::eye();
      M(i, j) = M(j, i) = 1 - d;
      M = 1e6 * M;  // units do not matter
      const robust::ArrowInverse A({cv::Matx66d::zeros(), {M}}, false);
      ASSERT_TRUE(A.isAccurate());
      EXPECT_NEAR(A.inflation() * d * (2 - d), 1, 1e-6);
    }
  }
}

TEST(ArrowMatrix, SingularAndNonFiniteMatricesHaveNoInverse) {
  robust::ArrowMatrix M = randomArrow(6);
  for (int i = 0; i < 12; ++i) {
    M.views[1](i, 8) = M.views[1](8, i) = 0;
  }
  EXPECT_FALSE(robust::ArrowInverse(M, false).exists());
  EXPECT_FALSE(robust::ArrowInverse(M, true).exists());
  M = randomArrow(6);
  M.views[0](3, 3) = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(robust::ArrowInverse(M, false).exists());
}

}  // namespace
