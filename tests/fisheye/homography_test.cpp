#include <gtest/gtest.h>

#include "fisheye/internal.h"
#include "fisheye/solver_records.h"
#include "support/raises.h"

using namespace fisheye_calibration;

namespace {

const cv::Mat kH = (cv::Mat_<double>(3, 3) << 1.2, 0.1, 3, -0.2, 0.9, 5, 0.001, -0.002, 1);

// Plane points of a slightly irregular grid, two rows.
cv::Mat planePoints(int count, std::uint64_t seed = 1) {
  support::Random random(seed);
  cv::Mat M(2, count, CV_64F);
  for (int i = 0; i < count; ++i) {
    M.at<double>(0, i) = 10 * (i % 3) + random.uniform(-2, 2);
    M.at<double>(1, i) = 10 * (i / 3 + i % 2) + random.uniform(-2, 2);
  }
  return M;
}

// H M, dehomogenised, first two rows.
cv::Mat carried(const cv::Mat& H, const cv::Mat& M) {
  cv::Mat m(2, M.cols, CV_64F);
  for (int i = 0; i < M.cols; ++i) {
    const cv::Mat image = H * (cv::Mat_<double>(3, 1) << M.at<double>(0, i), M.at<double>(1, i), 1);
    m.at<double>(0, i) = image.at<double>(0) / image.at<double>(2);
    m.at<double>(1, i) = image.at<double>(1) / image.at<double>(2);
  }
  return m;
}

void addNoise(cv::Mat& m, double sigma, std::uint64_t seed) {
  support::Random random(seed);
  for (int i = 0; i < m.cols; ++i) {
    m.at<double>(0, i) += random.normal(sigma);
    m.at<double>(1, i) += random.normal(sigma);
  }
}

TEST(Homography, IsRecoveredFromFourAndFromMorePoints) {
  for (const int count : {4, 5, 6, 9, 40}) {
    const cv::Mat M = planePoints(count);
    const cv::Mat H = internal::ComputeHomography(carried(kH, M), M);
    ASSERT_EQ(H.size(), cv::Size(3, 3));
    ASSERT_EQ(H.type(), CV_64FC1);
    EXPECT_LT(cv::norm(H, kH, cv::NORM_INF), 1e-9) << count << " points";
  }
}

TEST(Homography, FourNoisyPointsAreMetExactly) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const cv::Mat M = planePoints(4, seed);
    cv::Mat m = carried(kH, M);
    addNoise(m, 0.5, seed);
    const cv::Mat H = internal::ComputeHomography(m, M);
    EXPECT_LT(cv::norm(carried(H, M), m, cv::NORM_INF), 1e-8) << "seed " << seed;
    EXPECT_LT(support::relativeDistance(H, plain::computeHomography(m, M)), 1e-9);
  }
}

TEST(Homography, AgreesWithThePlainDerivationOnNoisyPoints) {
  for (std::uint64_t seed = 1; seed <= 200; ++seed) {
    const cv::Mat M = planePoints(5 + static_cast<int>(seed % 40), seed);
    cv::Mat m = carried(kH, M);
    addNoise(m, 0.3, seed);
    EXPECT_LT(support::relativeDistance(internal::ComputeHomography(m, M),
                                        plain::computeHomography(m, M)),
              1e-9)
        << "seed " << seed;
  }
}

TEST(Homography, NoisyFitIsAMinimumOfTheImageError) {
  const cv::Mat M = planePoints(30);
  cv::Mat m = carried(kH, M);
  addNoise(m, 0.2, 9);
  const cv::Mat H = internal::ComputeHomography(m, M);
  const double least = cv::norm(carried(H, M), m);
  for (int i = 0; i < 8; ++i) {
    for (const double factor : {1 - 1e-3, 1 + 1e-3}) {
      cv::Mat moved = H.clone();
      moved.at<double>(i / 3, i % 3) *= factor;
      EXPECT_GE(cv::norm(carried(moved, M), m), least) << "entry " << i;
    }
  }
}

TEST(Homography, PointsAreDividedByTheirThirdRow) {
  const cv::Mat M = planePoints(8);
  const cv::Mat m = carried(kH, M);
  cv::Mat M3(3, 8, CV_64F);
  cv::Mat m3(3, 8, CV_64F);
  for (int i = 0; i < 8; ++i) {
    for (int row = 0; row < 2; ++row) {
      M3.at<double>(row, i) = M.at<double>(row, i) * (i + 2);
      m3.at<double>(row, i) = m.at<double>(row, i) * (0.5 * i - 9);
    }
    M3.at<double>(2, i) = i + 2;
    m3.at<double>(2, i) = 0.5 * i - 9;
  }
  EXPECT_LT(cv::norm(internal::ComputeHomography(m3, M3), kH, cv::NORM_INF), 1e-9);
  EXPECT_LT(cv::norm(internal::ComputeHomography(m, M3), kH, cv::NORM_INF), 1e-9);
}

TEST(Homography, LeavesTheCallersPointsUnchanged) {
  cv::Mat M3;
  cv::vconcat(planePoints(6), cv::Mat(1, 6, CV_64F, cv::Scalar(2)), M3);
  const cv::Mat before = M3.clone();
  const cv::Mat m3 = M3.clone();
  internal::ComputeHomography(m3, M3);
  EXPECT_EQ(cv::norm(M3, before, cv::NORM_INF), 0);
  EXPECT_EQ(cv::norm(m3, before, cv::NORM_INF), 0);
}

TEST(Homography, DegeneratePointsEndTheSameWayEachTime) {
  const auto outcome = [](const cv::Mat& m, const cv::Mat& M) {
    return support::outcomeOf([&] { return support::bytesOf(internal::ComputeHomography(m, M)); });
  };
  std::vector<cv::Mat> sets = {cv::Mat::zeros(2, 9, CV_64F), cv::Mat::ones(2, 4, CV_64F)};
  cv::Mat collinear = cv::Mat::zeros(2, 9, CV_64F);
  for (int i = 0; i < 9; ++i) collinear.at<double>(0, i) = i;
  sets.push_back(collinear);
  cv::Mat broken = planePoints(9);
  broken.at<double>(0, 4) = std::nan("");
  sets.push_back(broken);
  broken = planePoints(9);
  broken.at<double>(1, 2) = HUGE_VAL;
  sets.push_back(broken);
  for (int count = 0; count < 4; ++count) sets.push_back(planePoints(9).colRange(0, count).clone());
  for (const cv::Mat& set : sets) {
    EXPECT_EQ(outcome(set, set), outcome(set, set));
    if (set.cols == 9) {
      EXPECT_EQ(outcome(planePoints(9), set), outcome(planePoints(9), set));
    }
  }
}

}  // namespace
