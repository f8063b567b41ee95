#include <gtest/gtest.h>

#include "fisheye/internal.h"
#include "fisheye/solver_records.h"
#include "support/raises.h"

using namespace fisheye_calibration;

namespace {

constexpr double kThreshold = 1e6;
const support::RigCamera kRigCamera;

internal::IntrinsicParams camera() { return support::intrinsicParams(kRigCamera); }

support::RigView view(double sigma = 0) {
  return support::seen(kRigCamera, {}, support::poseOver({}, 180, 0.4, -0.3, 0.2), sigma);
}

// Points as rows, and a pose a little off the truth.
struct Refinement {
  cv::Mat x;
  cv::Mat X;
  cv::Mat rvec;
  cv::Mat tvec;
  cv::Mat J;

  explicit Refinement(const support::RigView& seen)
      : x(cv::Mat(seen.imagePoints).t()),
        X(cv::Mat(seen.objectPoints).t()),
        rvec(cv::Mat(seen.pose.rotation) + 0.02),
        tvec(cv::Mat(seen.pose.translation) + 2.0) {}

  void run(double threshold = kThreshold, int maxIter = 20) {
    internal::ComputeExtrinsicRefine(x, X, rvec, tvec, J, maxIter, camera(), threshold);
  }

  double distanceTo(const support::RigPose& pose) const {
    return cv::norm(cv::Vec3d(rvec.ptr<double>()) - pose.rotation) +
           cv::norm(cv::Vec3d(tvec.ptr<double>()) - pose.translation) / 100;
  }
};

TEST(PoseRefinement, ReachesTheTruePoseOfExactPoints) {
  const support::RigView seen = view();
  Refinement refinement(seen);
  refinement.run();
  EXPECT_LT(refinement.distanceTo(seen.pose), 1e-10);
}

TEST(PoseRefinement, AgreesWithThePlainDerivationOnNoisyRigs) {
  for (std::uint64_t seed = 1; seed <= 100; ++seed) {
    const support::Rig rig = support::randomRig(seed, 1, 0.5);
    const plain::View seen = rig.views[0].plainView();
    plain::Pose expected = support::plainPose(rig.views[0].pose);
    const cv::Mat expectedJ = plain::computeExtrinsicRefine(
        seen, support::plainIntrinsics(rig.camera), kThreshold, expected);
    plain::Pose pose = support::plainPose(rig.views[0].pose);
    cv::Mat J;
    internal::ComputeExtrinsicRefine(seen.imagePoints.t(), seen.objectPoints.t(), pose.rvec,
                                     pose.tvec, J, 20, support::intrinsicParams(rig.camera),
                                     kThreshold);
    EXPECT_LT(support::relativeDistance(pose.rvec, expected.rvec), 1e-9) << "seed " << seed;
    EXPECT_LT(support::relativeDistance(pose.tvec, expected.tvec), 1e-9) << "seed " << seed;
    EXPECT_LT(support::relativeDistance(J, expectedJ), 1e-9) << "seed " << seed;
  }
}

TEST(PoseRefinement, PoseIsReplacedByColumnsAndTheJacobianHasSixColumns) {
  Refinement refinement(view());
  refinement.rvec = refinement.rvec.t();
  refinement.run();
  EXPECT_EQ(refinement.rvec.size(), cv::Size(1, 3));
  EXPECT_EQ(refinement.tvec.size(), cv::Size(1, 3));
  EXPECT_EQ(refinement.rvec.type(), CV_64FC1);
  EXPECT_EQ(refinement.J.size(), cv::Size(6, 126));
  EXPECT_EQ(refinement.J.type(), CV_64FC1);
}

TEST(PoseRefinement, FirstThreeElementsOfThePoseAreReadWhateverTheLayout) {
  Refinement expected(view());
  expected.run();
  const Refinement start(view());
  cv::Mat wide = cv::Mat::zeros(5, 2, CV_64F);  // five elements, not contiguous
  start.rvec.copyTo(wide(cv::Rect(1, 0, 1, 3)));
  Refinement refinement(view());
  refinement.rvec = wide.col(1);
  refinement.tvec = start.tvec.t();
  refinement.run();
  EXPECT_EQ(cv::norm(refinement.rvec, expected.rvec, cv::NORM_INF), 0);
  EXPECT_EQ(cv::norm(refinement.tvec, expected.tvec, cv::NORM_INF), 0);
}

TEST(PoseRefinement, IterationCountArgumentIsNotRead) {
  Refinement expected(view(0.5));
  expected.run(kThreshold, 20);
  for (const int maxIter : {0, 1, 1000, -1}) {
    Refinement refinement(view(0.5));
    refinement.run(kThreshold, maxIter);
    EXPECT_EQ(cv::norm(refinement.rvec, expected.rvec, cv::NORM_INF), 0);
    EXPECT_EQ(cv::norm(refinement.tvec, expected.tvec, cv::NORM_INF), 0);
  }
}

// With 200 px of noise every step removes a part of the way only; after 20 updates the pose is
// still on its way.
TEST(PoseRefinement, StopsAfterTwentyUpdates) {
  const support::RigView seen =
      support::seen(kRigCamera, {}, support::poseOver({}, 180, 0.4, -0.3, 0.2), 200, 17);
  plain::Pose expected = support::plainPose(seen.pose);
  plain::computeExtrinsicRefine(seen.plainView(), support::plainIntrinsics(kRigCamera), 1e30,
                                expected);
  plain::Pose more = {expected.rvec.clone(), expected.tvec.clone()};
  plain::computeExtrinsicRefine(seen.plainView(), support::plainIntrinsics(kRigCamera), 1e30, more);
  ASSERT_GT(cv::norm(more.rvec, expected.rvec), 1e-4) << "these points converge within 20 updates";

  plain::Pose pose = support::plainPose(seen.pose);
  cv::Mat J;
  internal::ComputeExtrinsicRefine(cv::Mat(seen.imagePoints).t(), cv::Mat(seen.objectPoints).t(),
                                   pose.rvec, pose.tvec, J, 20, camera(), 1e30);
  EXPECT_LT(support::relativeDistance(pose.rvec, expected.rvec), 1e-8);
  EXPECT_LT(support::relativeDistance(pose.tvec, expected.tvec), 1e-8);
}

TEST(PoseRefinement, IllConditionedStepIsRefusedAndThePoseStays) {
  for (const double threshold : {0.0, 1.0, -1.0}) {
    Refinement refinement(view());
    refinement.rvec = refinement.rvec.t();
    const cv::Mat rvec = refinement.rvec.clone();
    const cv::Mat tvec = refinement.tvec.clone();
    refinement.run(threshold);
    EXPECT_EQ(support::bytesOf(refinement.rvec), support::bytesOf(rvec));
    EXPECT_EQ(support::bytesOf(refinement.tvec), support::bytesOf(tvec));
    EXPECT_EQ(refinement.J.size(), cv::Size(6, 126));
  }
}

TEST(PoseRefinement, NanThresholdRefusesNothing) {
  const support::RigView seen = view();
  Refinement refinement(seen);
  refinement.run(std::nan(""));
  EXPECT_LT(refinement.distanceTo(seen.pose), 1e-10);
}

// Whether a first step is taken at this pose under `threshold`.
bool accepts(const plain::View& seen, const plain::Pose& pose, double threshold) {
  cv::Mat rvec = pose.rvec.clone();
  cv::Mat tvec = pose.tvec.clone();
  cv::Mat J;
  internal::ComputeExtrinsicRefine(seen.imagePoints.t(), seen.objectPoints.t(), rvec, tvec, J, 20,
                                   camera(), threshold);
  return cv::norm(rvec, pose.rvec) + cv::norm(tvec, pose.tvec) > 0;
}

// Ratio of the pose Jacobian's singular values from its own full decomposition.
double ratioAt(const plain::View& seen, const plain::Pose& pose) {
  cv::Mat jacobian;
  plain::projectPoints(seen.objectPoints, pose.rvec, pose.tvec,
                       support::plainIntrinsics(kRigCamera), &jacobian);
  return plain::conditionRatio(jacobian.colRange(6, 12).clone());
}

TEST(PoseRefinement, DecidesNearTheThresholdAsTheFullDecompositionDoes) {
  support::Random random(11);
  for (std::uint64_t i = 0; i < 100; ++i) {
    const support::RigPose pose =
        support::poseOver({}, random.uniform(150, 3000), random.uniform(-0.6, 0.6),
                          random.uniform(-0.6, 0.6), random.uniform(-3, 3));
    const plain::View seen = support::seen(kRigCamera, {}, pose, 0.5, 1 + i).plainView();
    const double ratio = ratioAt(seen, support::plainPose(pose));
    EXPECT_TRUE(accepts(seen, support::plainPose(pose), ratio * (1 + 1e-9))) << ratio;
    EXPECT_FALSE(accepts(seen, support::plainPose(pose), ratio * (1 - 1e-9))) << ratio;
  }
}

TEST(PoseRefinement, DecidesOnNearlyCollinearPointsAsTheFullDecompositionDoes) {
  // The flatter the strip of points, the worse a turn about it is determined: ratios to 1e9.
  int above = 0;
  int below = 0;
  for (double height = 10; height > 1e-5; height /= 1.7) {
    support::Bed strip;
    strip.rows = 2;
    support::RigView seen =
        support::seen(kRigCamera, strip, support::poseOver(strip, 180, 0.4, -0.3, 0.2), 0);
    for (size_t i = 0; i < seen.objectPoints.size(); ++i) {
      seen.objectPoints[i].y = i < 9 ? 60 : 60 + height;
      seen.imagePoints[i].x += 0.3;
    }
    const plain::View points = seen.plainView();
    const plain::Pose pose = support::plainPose(seen.pose);
    const double ratio = ratioAt(points, pose);
    (ratio > kThreshold ? above : below) += 1;
    EXPECT_EQ(accepts(points, pose, kThreshold), ratio <= kThreshold) << ratio;
    if (ratio < 1e9) {
      EXPECT_TRUE(accepts(points, pose, ratio * (1 + 1e-5))) << ratio;
      EXPECT_FALSE(accepts(points, pose, ratio * (1 - 1e-5))) << ratio;
    }
  }
  EXPECT_GT(above, 0);
  EXPECT_GT(below, 0);
}

TEST(PoseRefinement, NanPixelIsUsedAndStopsTheRefinement) {
  Refinement refinement(view());
  refinement.x.at<cv::Vec2d>(3)[0] = std::nan("");
  const cv::Mat startRvec = refinement.rvec.clone();
  const cv::Mat startTvec = refinement.tvec.clone();
  refinement.run();
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(std::isnan(refinement.rvec.at<double>(i)));
    EXPECT_TRUE(std::isnan(refinement.tvec.at<double>(i)));
  }
  // One iteration only: J is the Jacobian at the start.
  cv::Mat jacobian;
  plain::projectPoints(refinement.X, startRvec, startTvec, support::plainIntrinsics(kRigCamera),
                       &jacobian);
  EXPECT_LT(support::relativeDistance(refinement.J, jacobian.colRange(6, 12).clone()), 1e-10);
}

TEST(PoseRefinement, HostileArgumentsEndTheSameWayEachTime) {
  const auto outcome = [](int points, double poseValue, double pixel) {
    return support::outcomeOf([&] {
      Refinement refinement(view());
      refinement.x = refinement.x.colRange(0, points).clone();
      refinement.X = refinement.X.colRange(0, points).clone();
      refinement.x.at<cv::Vec2d>(0)[1] += pixel;
      refinement.rvec += poseValue;
      refinement.run();
      return support::bytesOf(refinement.rvec) + support::bytesOf(refinement.tvec) +
             support::bytesOf(refinement.J);
    });
  };
  for (const int points : {1, 2, 3, 63}) {
    for (const double value : {0.0, 1e300, static_cast<double>(HUGE_VAL), std::nan("")}) {
      const std::string pose = outcome(points, value, 0);
      const std::string pixel = outcome(points, 0, value);
      for (size_t i = 0; i < 50; ++i) {
        const std::vector<double> churn(100 + 7 * i, 1.0 / static_cast<double>(i + 1));
        EXPECT_EQ(outcome(points, value, 0), pose);
        EXPECT_EQ(outcome(points, 0, value), pixel);
      }
    }
  }
}

TEST(PoseRefinement, PointCountsThatDifferEndTheSameWayEachTime) {
  const auto outcome = [](int pixels, int points) {
    return support::outcomeOf([&] {
      Refinement refinement(view());
      refinement.x = refinement.x.colRange(0, pixels).clone();
      refinement.X = refinement.X.colRange(0, points).clone();
      refinement.run();
      return support::bytesOf(refinement.rvec);
    });
  };
  EXPECT_EQ(outcome(10, 63), outcome(10, 63));
  EXPECT_EQ(outcome(63, 10), outcome(63, 10));
}

TEST(PoseRefinement, RefusesWhatItsConditionsName) {
  const auto refused = [](const char* text, const auto& spoil) {
    Refinement refinement(view());
    spoil(refinement);
    return support::refuses(text, "ComputeExtrinsicRefine", [&] { refinement.run(); });
  };
  const char objectText[] = "!objectPoints.empty() && objectPoints.type() == CV_64FC3";
  const char imageText[] = "!imagePoints.empty() && imagePoints.type() == CV_64FC2";
  const char poseText[] = "rvec.total() > 2 && tvec.total() > 2";
  EXPECT_TRUE(refused(objectText, [](Refinement& r) { r.X = cv::Mat(); }));
  EXPECT_TRUE(refused(objectText, [](Refinement& r) { r.X = cv::Mat(1, 63, CV_32FC3); }));
  EXPECT_TRUE(refused(objectText, [](Refinement& r) { r.X = r.x = r.rvec = cv::Mat(); }));
  EXPECT_TRUE(refused(imageText, [](Refinement& r) { r.x = cv::Mat(); }));
  EXPECT_TRUE(refused(imageText, [](Refinement& r) { r.x = cv::Mat(1, 63, CV_32FC2); }));
  EXPECT_TRUE(refused(imageText, [](Refinement& r) { r.x = r.rvec = cv::Mat(); }));
  EXPECT_TRUE(refused(poseText, [](Refinement& r) { r.rvec = cv::Mat(); }));
  EXPECT_TRUE(refused(poseText, [](Refinement& r) { r.tvec = r.tvec.rowRange(0, 2); }));
}

}  // namespace
