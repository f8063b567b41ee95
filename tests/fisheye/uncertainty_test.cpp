#include <gtest/gtest.h>

#include <cmath>

#include "fisheye/fisheye.h"
#include "fisheye/internal.h"
#include "fisheye/solver_records.h"
#include "support/raises.h"

using namespace fisheye_calibration;

namespace {

struct Estimate {
  std::vector<cv::Mat> X;
  std::vector<cv::Mat> x;
  internal::IntrinsicParams camera;
  std::vector<cv::Vec3d> omc;
  std::vector<cv::Vec3d> Tc;
  internal::IntrinsicParams errors;
  cv::Vec2d std_err{-1, -1};
  double rms = -1;
  int check = 0;
  double threshold = 1e6;

  explicit Estimate(const support::Rig& rig)
      : X(support::objectMats(rig.plainViews())),
        x(support::imageMats(rig.plainViews())),
        camera(support::intrinsicParams(rig.camera)),
        omc(support::rotationsOf(support::truePoses(rig))),
        Tc(support::translationsOf(support::truePoses(rig))) {
    errors.estimateMask = camera.estimateMask;
  }

  void run() {
    internal::EstimateUncertainties(X, x, camera, omc, Tc, errors, std_err, threshold, check, rms);
  }

  // The measured points become the library's own projections, `offset` aside.
  void measureExactly(const cv::Vec2d& offset = {0, 0}) {
    for (size_t i = 0; i < X.size(); ++i) {
      internal::projectPoints(X[i], x[i], omc[i], Tc[i], camera, cv::noArray());
      x[i] += cv::Scalar(offset[0], offset[1]);
    }
  }
};

TEST(Uncertainty, AgreesWithThePlainDerivation) {
  for (std::uint64_t seed = 1; seed <= 60; ++seed) {
    const support::Rig rig = support::randomRig(seed, 1 + static_cast<int>(seed % 3), 0.5);
    Estimate estimate(rig);
    estimate.run();
    const plain::Uncertainties expected = plain::estimateUncertainties(
        rig.plainViews(), support::plainIntrinsics(rig.camera), support::truePoses(rig));
    EXPECT_NEAR(estimate.rms, expected.rms, 1e-9);
    EXPECT_LT(cv::norm(estimate.std_err - expected.std_err), 1e-9);
    const cv::Mat errors = support::columnOf(estimate.errors);
    for (int i = 0; i < 7; ++i) {
      const double bound = support::columnOf(expected.errors).at<double>(i);
      EXPECT_NEAR(errors.at<double>(i), bound, 1e-6 * bound) << "seed " << seed << ", " << i;
    }
  }
}

TEST(Uncertainty, PerfectDataHaveNone) {
  Estimate estimate(support::randomRig(3, 2));
  estimate.measureExactly();
  estimate.run();
  EXPECT_NEAR(estimate.rms, 0, 1e-12);
  EXPECT_NEAR(cv::norm(estimate.std_err), 0, 1e-12);
  EXPECT_NEAR(cv::norm(support::columnOf(estimate.errors)), 0, 1e-10);
}

TEST(Uncertainty, ConstantOffsetIsNoDeviationButAnError) {
  Estimate estimate(support::randomRig(3, 2));
  estimate.measureExactly({3, -4});
  estimate.run();
  EXPECT_NEAR(estimate.rms, 5, 1e-11);
  EXPECT_NEAR(cv::norm(estimate.std_err), 0, 1e-10);
}

// Residuals (1, 0) and (-1, 0) in equal number: sum of squares N, mean 0.
TEST(Uncertainty, DeviationsAreTakenWithOneDegreeOfFreedomLess) {
  Estimate estimate(support::randomRig(3, 1));
  estimate.measureExactly();
  estimate.X[0] = estimate.X[0].rowRange(0, 40).clone();
  estimate.x[0] = estimate.x[0].rowRange(0, 40).clone();
  for (int i = 0; i < 40; ++i) estimate.x[0].at<cv::Vec2d>(i)[0] += i % 2 == 0 ? 1 : -1;
  estimate.run();
  EXPECT_NEAR(estimate.rms, 1, 1e-12);
  EXPECT_NEAR(estimate.std_err[0], std::sqrt(40.0 / 39), 1e-12);
  EXPECT_NEAR(estimate.std_err[1], 0, 1e-12);
  // sigma^2 = 40/80 * 80/79; a parameter's bound is 3 sigma sqrt((JJ2^-1)ii).
  cv::Mat JJ2;
  cv::Mat ex3;
  internal::ComputeJacobians(estimate.X, estimate.x, estimate.camera, estimate.omc, estimate.Tc, 0,
                             1e6, JJ2, ex3);
  cv::Mat inverse;
  cv::invert(JJ2, inverse, cv::DECOMP_SVD);
  const double bound = 3 * std::sqrt(40.0 / 79) * std::sqrt(inverse.at<double>(1, 1));
  EXPECT_NEAR(estimate.errors.focalLength[1], bound, 1e-5 * bound);
}

TEST(Uncertainty, SinglePointHasNoDeviationButAnError) {
  Estimate estimate(support::randomRig(3, 1));
  estimate.measureExactly({3, 4});
  estimate.X[0] = estimate.X[0].rowRange(0, 1).clone();
  estimate.x[0] = estimate.x[0].rowRange(0, 1).clone();
  estimate.run();
  EXPECT_NEAR(estimate.rms, 5, 1e-11);
  EXPECT_FALSE(std::isfinite(estimate.std_err[0]));
  EXPECT_FALSE(std::isfinite(estimate.std_err[1]));
}

TEST(Uncertainty, HeldParametersHaveNoBoundAndTheMaskStays) {
  Estimate estimate(support::randomRig(3, 2, 0.5));
  estimate.errors.skew = 7;
  const std::vector<uchar> mask = estimate.errors.estimateMask;
  estimate.run();
  EXPECT_EQ(estimate.errors.skew, 0);
  EXPECT_GT(estimate.errors.distortion[1], 0);
  EXPECT_EQ(estimate.errors.estimateMask, mask);
}

TEST(Uncertainty, ConditionCheckIsThatOfTheNormalEquations) {
  Estimate estimate(support::randomRig(3, 2, 0.5));
  estimate.check = 1;
  estimate.threshold = 1;
  EXPECT_TRUE(
      support::refuses("svd.w.at<double>(0) / svd.w.at<double>(svd.w.rows - 1) < thresh_cond",
                       "ComputeJacobians", [&] { estimate.run(); }));
  estimate.check = 0;
  EXPECT_NO_THROW(estimate.run());
}

TEST(Uncertainty, RefusesWhatItsConditionsName) {
  const auto refused = [](const char* text, const auto& spoil) {
    Estimate estimate(support::randomRig(3, 1));
    spoil(estimate);
    const auto result = support::refuses(text, "EstimateUncertainties", [&] { estimate.run(); });
    EXPECT_EQ(estimate.rms, -1);
    EXPECT_EQ(estimate.std_err, cv::Vec2d(-1, -1));
    return result;
  };
  const char objectText[] =
      "!objectPoints.empty() && (objectPoints.type() == CV_32FC3 || objectPoints.type() == "
      "CV_64FC3)";
  const char imageText[] =
      "!imagePoints.empty() && (imagePoints.type() == CV_32FC2 || imagePoints.type() == "
      "CV_64FC2)";
  const auto noView = [](Estimate& e) {
    e.X.clear();
    e.x.clear();
    e.omc.clear();
  };
  EXPECT_TRUE(refused(objectText, noView));
  EXPECT_TRUE(refused(objectText, [](Estimate& e) { e.X[0] = cv::Mat(5, 1, CV_64FC2); }));
  EXPECT_TRUE(refused(imageText, [](Estimate& e) { e.x.clear(); }));
  EXPECT_TRUE(refused(imageText, [](Estimate& e) { e.x[0] = cv::Mat(5, 1, CV_64FC1); }));
  EXPECT_TRUE(refused("!omc.empty() && omc.type() == CV_64FC3", [](Estimate& e) {
    e.omc.clear();
    e.Tc.clear();
  }));
  EXPECT_TRUE(refused("!Tc.empty() && Tc.type() == CV_64FC3", [](Estimate& e) { e.Tc.clear(); }));
}

// The bounds against the truth: 1500 noisy sets of pictures spread as the bounds say.
TEST(Uncertainty, ThreeSigmaBoundsMatchTheSpreadOfNoisyRuns) {
  support::Rig rig;
  rig.bed.columns = 11;
  rig.bed.rows = 9;
  rig.bed.spacing = 35;
  const support::RigPose poses[] = {support::poseOver(rig.bed, 190, 0.5, -0.3, 0.1),
                                    support::poseOver(rig.bed, 200, -0.4, 0.4, -0.5),
                                    support::poseOver(rig.bed, 210, 0.3, 0.5, 1.2)};
  constexpr int kRuns = 1500;
  cv::Mat found(kRuns, 6, CV_64F);
  cv::Mat bounds(kRuns, 6, CV_64F);
  for (int run = 0; run < kRuns; ++run) {
    rig.views.clear();
    for (const support::RigPose& pose : poses) {
      const auto seed = static_cast<std::uint64_t>(3 * run) + rig.views.size() + 1;
      rig.views.push_back(support::seen(rig.camera, rig.bed, pose, 0.3, seed));
    }
    Estimate estimate(rig);
    cv::Matx33d K;
    cv::Vec2d D;
    fisheye::calibrate(estimate.X, estimate.x, rig.camera.imageSize, K, D, estimate.omc,
                       estimate.Tc, 0, cv::TermCriteria(3, 12, 1e-7));
    estimate.camera.focalLength = {K(0, 0), K(1, 1)};
    estimate.camera.principalPoint = {K(0, 2), K(1, 2)};
    estimate.camera.distortion = D;
    estimate.run();
    int column = 0;
    for (const int i : {0, 1, 2, 3, 5, 6}) {
      found.at<double>(run, column) = support::columnOf(estimate.camera).at<double>(i);
      bounds.at<double>(run, column) = support::columnOf(estimate.errors).at<double>(i);
      ++column;
    }
  }
  for (int i = 0; i < 6; ++i) {
    cv::Scalar mean;
    cv::Scalar spread;
    cv::meanStdDev(found.col(i), mean, spread);
    const double ratio = 3 * spread[0] / cv::mean(bounds.col(i))[0];
    EXPECT_GT(ratio, 0.9) << "parameter " << i;
    EXPECT_LT(ratio, 1.1) << "parameter " << i;
  }
}

}  // namespace
