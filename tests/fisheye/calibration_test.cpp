#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "fisheye/fisheye.h"
#include "fisheye/solver_records.h"
#include "support/raises.h"

using namespace fisheye_calibration;

namespace {

using cv::TermCriteria;

const TermCriteria kHost(TermCriteria::COUNT + TermCriteria::EPS, 20, 1e-6);
const TermCriteria kLong(TermCriteria::COUNT + TermCriteria::EPS, 60, 1e-13);

struct Solution {
  cv::Mat K;
  cv::Mat D;
  std::vector<cv::Vec3d> rvecs;
  std::vector<cv::Vec3d> tvecs;
  double rms = -1;
};

Solution solve(cv::InputArrayOfArrays X, cv::InputArrayOfArrays x, const cv::Size& imageSize,
               const TermCriteria& criteria = kHost, int flags = 10) {
  Solution solution;
  solution.rms = fisheye::calibrate(X, x, imageSize, solution.K, solution.D, solution.rvecs,
                                    solution.tvecs, flags, criteria);
  return solution;
}

Solution solve(const support::Rig& rig, const TermCriteria& criteria = kHost, int flags = 10) {
  return solve(support::objectMats(rig.plainViews()), support::imageMats(rig.plainViews()),
               rig.camera.imageSize, criteria, flags);
}

std::string bytesOf(const Solution& s) {
  return support::bytesOf(s.K) + support::bytesOf(s.D) + support::bytesOf(cv::Mat(s.rvecs)) +
         support::bytesOf(cv::Mat(s.tvecs)) + support::bytesOf(cv::Mat(1, 1, CV_64F, s.rms));
}

TEST(Calibration, RecoversANoiseFreeCameraToEightDigits) {
  for (std::uint64_t seed = 1; seed <= 10; ++seed) {
    const support::Rig rig = support::randomRig(seed, 4);
    const Solution s = solve(rig, kLong);
    const support::RigCamera& camera = rig.camera;
    EXPECT_NEAR(s.K.at<double>(0, 0), camera.fx, 1e-8 * camera.fx) << "seed " << seed;
    EXPECT_NEAR(s.K.at<double>(1, 1), camera.fy, 1e-8 * camera.fy);
    EXPECT_NEAR(s.K.at<double>(0, 2), camera.cx, 1e-8 * camera.cx);
    EXPECT_NEAR(s.K.at<double>(1, 2), camera.cy, 1e-8 * camera.cy);
    EXPECT_NEAR(s.D.at<double>(0), camera.k0, 1e-8);
    EXPECT_NEAR(s.D.at<double>(1), camera.k1, 1e-8);
    EXPECT_LT(s.rms, 1e-8);
    for (size_t i = 0; i < 4; ++i) {
      EXPECT_LT(cv::norm(s.rvecs[i] - rig.views[i].pose.rotation), 1e-8);
      EXPECT_LT(cv::norm(s.tvecs[i] - rig.views[i].pose.translation), 1e-5);
    }
  }
}

TEST(Calibration, AgreesWithThePlainDerivationOnNoisyRigs) {
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    const support::Rig rig = support::randomRig(seed, 1 + static_cast<int>(seed % 4), 0.3);
    const Solution s = solve(rig);
    const plain::Calibration expected =
        plain::calibrate(rig.plainViews(), rig.camera.imageSize, kHost);
    EXPECT_LT(support::relativeDistance(s.K, expected.camera.cameraMatrix()), 1e-6)
        << "seed " << seed;
    EXPECT_LT(cv::norm(s.D, expected.camera.distortionVector()), 1e-6);
    EXPECT_NEAR(s.rms, expected.uncertainties.rms, 1e-6);
    for (size_t i = 0; i < s.rvecs.size(); ++i) {
      EXPECT_LT(support::relativeDistance(cv::Mat(s.rvecs[i]), expected.poses[i].rvec), 1e-6);
      EXPECT_LT(support::relativeDistance(cv::Mat(s.tvecs[i]), expected.poses[i].tvec), 1e-6);
    }
  }
}

// The k-th step's factor is 1 - 0.6^k; after few steps nothing has converged that could hide it.
TEST(Calibration, EveryStepIsThePlainDerivationsStep) {
  const support::Rig rig = support::randomRig(5, 2, 0.3);
  for (int steps = 0; steps <= 6; ++steps) {
    const TermCriteria criteria(TermCriteria::COUNT, steps, 0);
    const plain::Calibration expected =
        plain::calibrate(rig.plainViews(), rig.camera.imageSize, criteria);
    ASSERT_EQ(expected.steps, steps);
    const Solution s = solve(rig, criteria);
    EXPECT_LT(support::relativeDistance(s.K, expected.camera.cameraMatrix()), 1e-8) << steps;
    EXPECT_LT(cv::norm(s.D, expected.camera.distortionVector()), 1e-8) << steps;
    EXPECT_NEAR(s.rms, expected.uncertainties.rms, 1e-7) << steps;
  }
}

TEST(Calibration, WithoutAStepTheResultIsTheStart) {
  support::Rig rig = support::randomRig(5, 1);
  rig.camera.imageSize = {1280, 960};
  const Solution s = solve(rig, TermCriteria(TermCriteria::COUNT, 0, 0));
  EXPECT_DOUBLE_EQ(s.K.at<double>(0, 0), 407.4366543152521);
  EXPECT_DOUBLE_EQ(s.K.at<double>(1, 1), 407.4366543152521);
  EXPECT_EQ(s.K.at<double>(0, 2), 639.5);
  EXPECT_EQ(s.K.at<double>(1, 2), 479.5);
  EXPECT_EQ(cv::norm(s.D), 0);
  // A negative count has been reached as well.
  EXPECT_EQ(bytesOf(solve(rig, TermCriteria(TermCriteria::COUNT, -3, 0))), bytesOf(s));
  // A relative change of 1 is at or below this bound before the first step.
  EXPECT_EQ(bytesOf(solve(rig, TermCriteria(TermCriteria::EPS, 20, 1))), bytesOf(s));
  EXPECT_EQ(bytesOf(solve(rig, TermCriteria(3, 0, 1e-6))), bytesOf(s));
}

TEST(Calibration, StartTakesTheLongerSide) {
  support::Rig rig = support::randomRig(5, 1);
  rig.camera.imageSize = {960, 1280};
  const Solution s = solve(rig, TermCriteria(TermCriteria::COUNT, 0, 0));
  EXPECT_DOUBLE_EQ(s.K.at<double>(0, 0), 407.4366543152521);
  EXPECT_EQ(s.K.at<double>(0, 2), 479.5);
  EXPECT_EQ(s.K.at<double>(1, 2), 639.5);
}

TEST(Calibration, EndsAfterTwentyStepsOrEarlierAtItsBound) {
  const support::Rig rig = support::randomRig(5, 3, 0.3);
  const plain::Calibration plain = plain::calibrate(rig.plainViews(), rig.camera.imageSize, kHost);
  ASSERT_LT(plain.steps, 20);
  const TermCriteria counted(TermCriteria::COUNT, plain.steps, 0);
  EXPECT_EQ(bytesOf(solve(rig)), bytesOf(solve(rig, counted)));
  EXPECT_EQ(bytesOf(solve(rig, TermCriteria(TermCriteria::EPS, 1, 1e-6))), bytesOf(solve(rig)));
  EXPECT_EQ(bytesOf(solve(rig, TermCriteria(3, 2, 1e-6))),
            bytesOf(solve(rig, TermCriteria(TermCriteria::COUNT, 2, 0))));
}

TEST(Calibration, FlagsAreNotRead) {
  const support::Rig rig = support::randomRig(5, 2, 0.3);
  const std::string expected = bytesOf(solve(rig));
  for (const int flags : {0, 1, 10, INT_MAX, -1}) {
    EXPECT_EQ(bytesOf(solve(rig, kHost, flags)), expected) << flags;
  }
}

TEST(Calibration, GuessesInTheOutputsAreNotRead) {
  const support::Rig rig = support::randomRig(5, 2, 0.3);
  Solution s;
  s.K = (cv::Mat_<double>(3, 3) << 410, 3, 640, 0, 410, 480, 0, 0, 1);
  s.D = (cv::Mat_<double>(2, 1) << std::nan(""), 5);
  s.rvecs.assign(2, cv::Vec3d(1, 2, 3));
  s.tvecs.assign(2, cv::Vec3d(1, 2, 3));
  s.rms = fisheye::calibrate(support::objectMats(rig.plainViews()),
                             support::imageMats(rig.plainViews()), rig.camera.imageSize, s.K, s.D,
                             s.rvecs, s.tvecs, 0, kHost);
  EXPECT_EQ(bytesOf(s), bytesOf(solve(rig)));
}

TEST(Calibration, SkewIsNotEstimated) {
  support::Rig rig = support::randomRig(5, 2);
  rig.camera.skew = 0.05;
  for (support::RigView& view : rig.views) view = support::seen(rig.camera, rig.bed, view.pose);
  EXPECT_EQ(solve(rig).K.at<double>(0, 1), 0);
}

// --- Forms of arrays

struct Lists {
  support::Rig rig = support::randomRig(5, 2, 0.3);
  std::vector<cv::Mat> X = support::objectMats(rig.plainViews());
  std::vector<cv::Mat> x = support::imageMats(rig.plainViews());
  Solution expected = solve(rig);

  double run(cv::InputOutputArray K, cv::InputOutputArray D, cv::OutputArrayOfArrays rvecs,
             cv::OutputArrayOfArrays tvecs) const {
    return fisheye::calibrate(X, x, rig.camera.imageSize, K, D, rvecs, tvecs, 0, kHost);
  }
};

TEST(CalibrationForms, ViewsMayBeListsRowsOrColumnsOfEitherDepth) {
  const Lists lists;
  std::vector<std::vector<cv::Point3d>> X64;
  std::vector<std::vector<cv::Point2d>> x64;
  std::vector<std::vector<cv::Point3f>> X32;
  std::vector<std::vector<cv::Point2f>> x32;
  std::vector<cv::Mat> XRows;
  std::vector<cv::Mat> xRows;
  for (const support::RigView& view : lists.rig.views) {
    X64.push_back(view.objectPoints);
    x64.push_back(view.imagePoints);
    X32.push_back(view.objectPoints32());
    x32.push_back(view.imagePoints32());
    XRows.push_back(cv::Mat(view.objectPoints).t());
    xRows.push_back(cv::Mat(view.imagePoints).t());
  }
  const cv::Size size = lists.rig.camera.imageSize;
  EXPECT_EQ(bytesOf(solve(X64, x64, size)), bytesOf(lists.expected));
  EXPECT_EQ(bytesOf(solve(XRows, xRows, size)), bytesOf(lists.expected));
  EXPECT_EQ(bytesOf(solve(lists.X, xRows, size)), bytesOf(lists.expected));
  EXPECT_LT(support::relativeDistance(solve(X32, x32, size).K, lists.expected.K), 1e-5);
  EXPECT_LT(support::relativeDistance(solve(X32, x64, size).K, lists.expected.K), 1e-5);
}

TEST(CalibrationForms, EmptyOutputsBecomeDoubles) {
  const Lists lists;
  cv::Mat K;
  cv::Mat D;
  cv::Mat rvecs;
  cv::Mat tvecs;
  EXPECT_EQ(lists.run(K, D, rvecs, tvecs), lists.expected.rms);
  EXPECT_EQ(support::bytesOf(K), support::bytesOf(lists.expected.K));
  EXPECT_EQ(K.size(), cv::Size(3, 3));
  EXPECT_EQ(D.size(), cv::Size(1, 2));
  EXPECT_EQ(D.type(), CV_64FC1);
  EXPECT_EQ(support::bytesOf(rvecs), support::bytesOf(cv::Mat(lists.expected.rvecs)));
  EXPECT_EQ(support::bytesOf(tvecs), support::bytesOf(cv::Mat(lists.expected.tvecs)));
  EXPECT_EQ(rvecs.size(), cv::Size(1, 2));
}

TEST(CalibrationForms, OutputsOfOneTypeKeepIt) {
  const Lists lists;
  cv::Mat K(3, 3, CV_32F);
  cv::Mat D(2, 1, CV_32F);
  cv::Mat rvecs(2, 1, CV_32FC3);
  cv::Mat tvecs(2, 1, CV_32FC3);
  lists.run(K, D, rvecs, tvecs);
  EXPECT_EQ(K.type(), CV_32FC1);
  EXPECT_EQ(D.type(), CV_32FC1);
  EXPECT_EQ(rvecs.type(), CV_32FC3);
  EXPECT_EQ(K.at<float>(0, 0), static_cast<float>(lists.expected.K.at<double>(0, 0)));
  EXPECT_EQ(D.at<float>(1), static_cast<float>(lists.expected.D.at<double>(1)));
  EXPECT_EQ(tvecs.at<cv::Vec3f>(1)[2], static_cast<float>(lists.expected.tvecs[1][2]));
}

TEST(CalibrationForms, FixedSizeCameraAndDistortion) {
  const Lists lists;
  cv::Matx33d K;
  cv::Vec2d D;
  lists.run(K, D, cv::noArray(), cv::noArray());
  EXPECT_EQ(K(0, 2), lists.expected.K.at<double>(0, 2));
  EXPECT_EQ(D[1], lists.expected.D.at<double>(1));
  cv::Matx33f K32;
  cv::Vec2f D32;
  lists.run(K32, D32, cv::noArray(), cv::noArray());
  EXPECT_EQ(K32(0, 2), static_cast<float>(K(0, 2)));
}

TEST(CalibrationForms, UnwantedOutputsCostNothing) {
  const Lists lists;
  EXPECT_EQ(lists.run(cv::noArray(), cv::noArray(), cv::noArray(), cv::noArray()),
            lists.expected.rms);
  std::vector<cv::Vec3d> tvecs;
  lists.run(cv::noArray(), cv::noArray(), cv::noArray(), tvecs);
  EXPECT_EQ(tvecs, lists.expected.tvecs);
  std::vector<cv::Vec3d> rvecs;
  lists.run(cv::noArray(), cv::noArray(), rvecs, cv::noArray());
  EXPECT_EQ(rvecs, lists.expected.rvecs);
}

TEST(CalibrationForms, PosesAsAListOfMatricesAreColumnsOfThree) {
  const Lists lists;
  cv::Mat K;
  cv::Mat D;
  std::vector<cv::Mat> rvecs;
  std::vector<cv::Mat> tvecs;
  lists.run(K, D, rvecs, tvecs);
  ASSERT_EQ(rvecs.size(), 2u);
  ASSERT_EQ(tvecs.size(), 2u);
  for (size_t i = 0; i < 2; ++i) {
    ASSERT_EQ(rvecs[i].size(), cv::Size(1, 3));
    ASSERT_EQ(rvecs[i].type(), CV_64FC1);
    EXPECT_EQ(cv::Vec3d(rvecs[i].ptr<double>()), lists.expected.rvecs[i]);
    EXPECT_EQ(cv::Vec3d(tvecs[i].ptr<double>()), lists.expected.tvecs[i]);
  }
}

TEST(CalibrationForms, PreSizedListsOfTriplesAreFilled) {
  Lists lists;
  std::vector<cv::Vec3d> rvecs(2, cv::Vec3d(9, 9, 9));
  std::vector<cv::Vec3d> tvecs(2, cv::Vec3d(9, 9, 9));
  lists.run(cv::noArray(), cv::noArray(), rvecs, tvecs);
  EXPECT_EQ(rvecs, lists.expected.rvecs);
  EXPECT_EQ(tvecs, lists.expected.tvecs);
}

// --- Refusals and hostile input

struct Arguments {
  Lists lists;
  cv::Mat K;
  cv::Mat D;
  cv::Mat rvecs;
  cv::Mat tvecs;

  ::testing::AssertionResult refused(const std::string& text) {
    return support::refuses(text, "calibrate", [&] { lists.run(K, D, rvecs, tvecs); });
  }
};

const char kViewsText[] =
    "!objectPoints.empty() && !imagePoints.empty() && objectPoints.total() == "
    "imagePoints.total()";
const char kObjectText[] = "objectPoints.type() == CV_32FC3 || objectPoints.type() == CV_64FC3";
const char kImageText[] = "imagePoints.type() == CV_32FC2 || imagePoints.type() == CV_64FC2";
const char kKText[] = "K.empty() || (K.size() == Size(3,3))";
const char kDText[] = "D.empty() || (D.total() == 2)";
const char kRvecsText[] = "rvecs.empty() || (rvecs.channels() == 3)";
const char kTvecsText[] = "tvecs.empty() || (tvecs.channels() == 3)";

TEST(CalibrationRefusals, ListsThatAreEmptyOrDoNotPair) {
  Arguments noTargets;
  noTargets.lists.X.clear();
  EXPECT_TRUE(noTargets.refused(kViewsText));
  Arguments noImages;
  noImages.lists.x.clear();
  EXPECT_TRUE(noImages.refused(kViewsText));
  Arguments fewerImages;
  fewerImages.lists.x.pop_back();
  EXPECT_TRUE(fewerImages.refused(kViewsText));
}

TEST(CalibrationRefusals, PointsOfAnotherType) {
  Arguments targets;
  for (cv::Mat& X : targets.lists.X) X = cv::Mat(5, 1, CV_64FC2);
  EXPECT_TRUE(targets.refused(kObjectText));
  Arguments images;
  for (cv::Mat& x : images.lists.x) x = cv::Mat(5, 1, CV_64FC3);
  EXPECT_TRUE(images.refused(kImageText));
}

TEST(CalibrationRefusals, CameraMatrixOfAnotherSizeIsUnchanged) {
  Arguments arguments;
  arguments.K = cv::Mat::ones(3, 4, CV_64F);
  EXPECT_TRUE(arguments.refused(kKText));
  EXPECT_EQ(support::bytesOf(arguments.K), support::bytesOf(cv::Mat::ones(3, 4, CV_64F)));
}

TEST(CalibrationRefusals, DistortionOfAnotherLengthIsUnchanged) {
  Arguments arguments;
  arguments.D = cv::Mat::ones(4, 1, CV_64F);
  EXPECT_TRUE(arguments.refused(kDText));
  EXPECT_EQ(support::bytesOf(arguments.D), support::bytesOf(cv::Mat::ones(4, 1, CV_64F)));
}

TEST(CalibrationRefusals, PosesThatAreNotTriples) {
  Arguments rotations;
  rotations.rvecs = cv::Mat::ones(2, 3, CV_64F);
  EXPECT_TRUE(rotations.refused(kRvecsText));
  Arguments translations;
  translations.tvecs = cv::Mat::ones(2, 3, CV_64F);
  EXPECT_TRUE(translations.refused(kTvecsText));
  EXPECT_TRUE(translations.K.empty());
  EXPECT_TRUE(translations.rvecs.empty());
}

TEST(CalibrationRefusals, FirstFailedConditionIsTheOneNamed) {
  Arguments arguments;
  arguments.lists.x[0] = arguments.lists.x[1] = cv::Mat(5, 1, CV_64FC3);
  arguments.K = cv::Mat::ones(3, 4, CV_64F);
  arguments.D = cv::Mat::ones(4, 1, CV_64F);
  arguments.rvecs = cv::Mat::ones(2, 3, CV_64F);
  arguments.tvecs = cv::Mat::ones(2, 3, CV_64F);
  EXPECT_TRUE(arguments.refused(kImageText));
  arguments.lists = Lists();
  EXPECT_TRUE(arguments.refused(kKText));
  arguments.K = cv::Mat();
  EXPECT_TRUE(arguments.refused(kDText));
  arguments.D = cv::Mat();
  EXPECT_TRUE(arguments.refused(kRvecsText));
  arguments.rvecs = cv::Mat();
  EXPECT_TRUE(arguments.refused(kTvecsText));
}

TEST(Calibration, DivergentFitRaisesNoError) {
  // Points far outside the circle of radius max/2 around the centre.
  support::Rig rig = support::randomRig(5, 1);
  for (cv::Point2d& pixel : rig.views[0].imagePoints) pixel *= 3;
  const Solution s = solve(rig);
  EXPECT_FALSE(s.rms < 10);
  EXPECT_EQ(bytesOf(solve(rig)), bytesOf(s));
}

TEST(Calibration, HostilePointsEndTheSameWayEachTime) {
  const auto outcome = [](const auto& spoil) {
    return support::outcomeOf([&] {
      support::Rig rig = support::randomRig(5, 2, 0.3);
      spoil(rig);
      return bytesOf(solve(rig));
    });
  };
  const auto expectSame = [&](const auto& spoil) { EXPECT_EQ(outcome(spoil), outcome(spoil)); };
  for (const double bad : {static_cast<double>(HUGE_VAL), std::nan(""), 1e300, -1e300, 1e9}) {
    expectSame([&](support::Rig& rig) { rig.views[0].imagePoints[3].x = bad; });
    expectSame([&](support::Rig& rig) { rig.views[1].objectPoints[3].y = bad; });
  }
  expectSame([](support::Rig& rig) {
    for (cv::Point2d& pixel : rig.views[1].imagePoints) pixel = {100, 100};
  });
  expectSame([](support::Rig& rig) {
    for (cv::Point3d& point : rig.views[0].objectPoints) point.x = 0;
  });
  for (const size_t count : {1U, 2U, 3U, 4U}) {
    expectSame([&](support::Rig& rig) {
      rig.views[0].objectPoints.resize(count);
      rig.views[0].imagePoints.resize(count);
    });
  }
  expectSame([](support::Rig& rig) { rig.views[0].imagePoints.resize(5); });
  expectSame([](support::Rig& rig) { rig.views[0].objectPoints.resize(5); });
  for (const cv::Size size : {cv::Size(0, 0), cv::Size(-5, -7), cv::Size(INT_MAX, INT_MAX)}) {
    expectSame([&](support::Rig& rig) { rig.camera.imageSize = size; });
  }
}

TEST(CalibrationRefusals, ViewWithoutPointsIsRefusedByThePoseEstimation) {
  std::vector<std::vector<cv::Point3f>> X(1);
  std::vector<std::vector<cv::Point2f>> x(1);
  cv::Mat K;
  cv::Mat D;
  EXPECT_TRUE(support::refuses(
      "!_objectPoints.empty() && _objectPoints.type() == CV_64FC3", "InitExtrinsics", [&] {
        fisheye::calibrate(X, x, cv::Size(640, 480), K, D, cv::noArray(), cv::noArray(), 0,
                           cv::TermCriteria(3, 20, 1e-6));
      }));
  EXPECT_TRUE(K.empty());
}

}  // namespace
