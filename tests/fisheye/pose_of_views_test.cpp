// internal::CalibrateExtrinsics: initial and refined pose of every view.
#include <gtest/gtest.h>

#include "fisheye/internal.h"
#include "fisheye/solver_records.h"
#include "support/raises.h"

using namespace fisheye_calibration;

namespace {

constexpr double kThreshold = 1e6;

const char kObjectText[] =
    "!objectPoints.empty() && (objectPoints.type() == CV_32FC3 || objectPoints.type() == "
    "CV_64FC3)";
const char kImageText[] =
    "!imagePoints.empty() && (imagePoints.type() == CV_32FC2 || imagePoints.type() == CV_64FC2)";
const char kPoseText[] = "omc.type() == CV_64FC3 || Tc.type() == CV_64FC3";

struct Views {
  support::Rig rig;
  std::vector<cv::Mat> X;
  std::vector<cv::Mat> x;
  internal::IntrinsicParams camera;

  explicit Views(int count, double sigma = 0, std::uint64_t seed = 3)
      : rig(support::randomRig(seed, count, sigma)),
        X(support::objectMats(rig.plainViews())),
        x(support::imageMats(rig.plainViews())),
        camera(support::intrinsicParams(rig.camera)) {}

  bool run(cv::InputOutputArray omc, cv::InputOutputArray Tc, int check = 0,
           double threshold = kThreshold) const {
    return internal::CalibrateExtrinsics(X, x, camera, check, threshold, omc, Tc);
  }

  void expectTrue(const cv::Vec3d& om, const cv::Vec3d& T, size_t view) const {
    EXPECT_LT(cv::norm(om - rig.views[view].pose.rotation), 1e-9);
    EXPECT_LT(cv::norm(T - rig.views[view].pose.translation), 1e-6);
  }
};

TEST(PoseOfViews, FindsTheTruePosesOfExactPoints) {
  const Views views(3);
  std::vector<cv::Vec3d> omc;
  std::vector<cv::Vec3d> Tc;
  ASSERT_TRUE(views.run(omc, Tc));
  ASSERT_EQ(omc.size(), 3u);
  ASSERT_EQ(Tc.size(), 3u);
  for (size_t i = 0; i < 3; ++i) views.expectTrue(omc[i], Tc[i], i);
}

TEST(PoseOfViews, AgreesWithThePlainDerivation) {
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    const Views views(2, 0.5, seed);
    std::vector<plain::Pose> expected(2);
    ASSERT_TRUE(plain::calibrateExtrinsics(
        views.rig.plainViews(), support::plainIntrinsics(views.rig.camera), kThreshold, expected));
    std::vector<cv::Vec3d> omc(2);
    std::vector<cv::Vec3d> Tc(2);
    ASSERT_TRUE(views.run(omc, Tc));
    for (size_t i = 0; i < 2; ++i) {
      EXPECT_LT(support::relativeDistance(cv::Mat(omc[i]), expected[i].rvec), 1e-8);
      EXPECT_LT(support::relativeDistance(cv::Mat(Tc[i]), expected[i].tvec), 1e-8);
    }
  }
}

TEST(PoseOfViews, EmptyArraysAreCreatedAsARowOfTriples) {
  const Views views(3);
  cv::Mat omc(1, 3, CV_64FC3, cv::Scalar(0, 0, 0));
  cv::Mat Tc;  // one of the two being right suffices
  ASSERT_TRUE(views.run(omc, Tc));
  EXPECT_EQ(Tc.size(), cv::Size(3, 1));
  EXPECT_EQ(Tc.type(), CV_64FC3);
  views.expectTrue(omc.at<cv::Vec3d>(2), Tc.at<cv::Vec3d>(2), 2);
  cv::Mat omc2;
  cv::Mat Tc2(1, 3, CV_64FC3, cv::Scalar(0, 0, 0));
  ASSERT_TRUE(views.run(omc2, Tc2));
  EXPECT_EQ(omc2.size(), cv::Size(3, 1));
  views.expectTrue(omc2.at<cv::Vec3d>(0), Tc2.at<cv::Vec3d>(0), 0);
}

TEST(PoseOfViews, ColumnOfTriplesIsFilledInPlace) {
  const Views views(2);
  cv::Mat omc(2, 1, CV_64FC3, cv::Scalar(0, 0, 0));
  cv::Mat Tc(2, 1, CV_64FC3, cv::Scalar(0, 0, 0));
  const uchar* const data = omc.data;
  ASSERT_TRUE(views.run(omc, Tc));
  EXPECT_EQ(omc.data, data);
  views.expectTrue(omc.at<cv::Vec3d>(1), Tc.at<cv::Vec3d>(1), 1);
}

TEST(PoseOfViews, PointsMayComeInRowsColumnsListsAndEitherDepth) {
  const Views views(1, 0.5);
  std::vector<cv::Vec3d> omc;
  std::vector<cv::Vec3d> Tc;
  ASSERT_TRUE(views.run(omc, Tc));
  const auto check = [&](cv::InputArrayOfArrays X, cv::InputArrayOfArrays x, double tolerance) {
    std::vector<cv::Vec3d> om;
    std::vector<cv::Vec3d> T;
    ASSERT_TRUE(internal::CalibrateExtrinsics(X, x, views.camera, 0, kThreshold, om, T));
    EXPECT_LE(cv::norm(om.at(0) - omc[0]), tolerance);
    EXPECT_LE(cv::norm(T.at(0) - Tc[0]), 100 * tolerance);
  };
  const support::RigView& view = views.rig.views[0];
  check(std::vector<cv::Mat>{views.X[0].t()}, std::vector<cv::Mat>{views.x[0].t()}, 0);
  check(std::vector<cv::Mat>{views.X[0].t()}, views.x, 0);
  check(std::vector<std::vector<cv::Point3d>>{view.objectPoints},
        std::vector<std::vector<cv::Point2d>>{view.imagePoints}, 0);
  check(std::vector<std::vector<cv::Point3f>>{view.objectPoints32()},
        std::vector<std::vector<cv::Point2f>>{view.imagePoints32()}, 1e-4);
  check(std::vector<std::vector<cv::Point3f>>{view.objectPoints32()}, views.x, 1e-4);
}

TEST(PoseOfViews, ViewWithoutAnInitialPoseEndsTheWork) {
  Views views(3);
  views.x[1].setTo(cv::Scalar(views.rig.camera.cx, views.rig.camera.cy));
  std::vector<cv::Vec3d> omc(3, cv::Vec3d(7, 8, 9));
  std::vector<cv::Vec3d> Tc(3, cv::Vec3d(4, 5, 6));
  EXPECT_FALSE(views.run(omc, Tc));
  views.expectTrue(omc[0], Tc[0], 0);
  for (const size_t i : {1U, 2U}) {
    EXPECT_EQ(omc[i], cv::Vec3d(7, 8, 9));
    EXPECT_EQ(Tc[i], cv::Vec3d(4, 5, 6));
  }
}

TEST(PoseOfViews, IllConditionedViewIsNamedOnlyWithTheCheckOn) {
  const Views views(2);
  std::vector<cv::Vec3d> omc;
  std::vector<cv::Vec3d> Tc;
  EXPECT_TRUE(views.run(omc, Tc, 0, 0.5));
  EXPECT_TRUE(support::raises(-3, "CALIB_CHECK_COND - Ill-conditioned matrix for input array 0",
                              "CalibrateExtrinsics", [&] { views.run(omc, Tc, 1, 0.5); }));
}

TEST(PoseOfViews, IllConditionedViewIsNamedByItsIndexAndEarlierPosesStand) {
  const Views views(2);
  std::vector<double> ratios;
  for (size_t i = 0; i < 2; ++i) {
    const plain::Pose pose = support::plainPose(views.rig.views[i].pose);
    cv::Mat jacobian;
    plain::projectPoints(views.X[i], pose.rvec, pose.tvec,
                         support::plainIntrinsics(views.rig.camera), &jacobian);
    ratios.push_back(plain::conditionRatio(jacobian.colRange(6, 12).clone()));
  }
  Views ordered = views;
  if (ratios[0] > ratios[1]) {
    std::swap(ordered.X[0], ordered.X[1]);
    std::swap(ordered.x[0], ordered.x[1]);
    std::swap(ordered.rig.views[0], ordered.rig.views[1]);
  }
  const double between = (ratios[0] + ratios[1]) / 2;
  std::vector<cv::Vec3d> omc(2, cv::Vec3d(7, 8, 9));
  std::vector<cv::Vec3d> Tc(2, cv::Vec3d(4, 5, 6));
  EXPECT_TRUE(support::raises(-3, "CALIB_CHECK_COND - Ill-conditioned matrix for input array 1",
                              "CalibrateExtrinsics", [&] { ordered.run(omc, Tc, 1, between); }));
  EXPECT_LT(cv::norm(omc[0] - ordered.rig.views[0].pose.rotation), 1e-4);
  EXPECT_EQ(omc[1], cv::Vec3d(7, 8, 9));
  EXPECT_EQ(Tc[1], cv::Vec3d(4, 5, 6));
}

TEST(PoseOfViews, RefusesTargetsThatAreEmptyOrOfAnotherType) {
  Views views(1);
  cv::Mat omc(1, 1, CV_64FC3, cv::Scalar(1, 2, 3));
  cv::Mat Tc(1, 1, CV_64FC3, cv::Scalar(1, 2, 3));
  const auto refused = [&] {
    return support::refuses(kObjectText, "CalibrateExtrinsics", [&] { views.run(omc, Tc); });
  };
  views.X = {cv::Mat(5, 1, CV_64FC2)};
  EXPECT_TRUE(refused());
  views.X = {};
  EXPECT_TRUE(refused());
  views.x = {};
  EXPECT_TRUE(refused());
  EXPECT_EQ(omc.at<cv::Vec3d>(0), cv::Vec3d(1, 2, 3));
}

TEST(PoseOfViews, RefusesImagesThatAreEmptyOrOfAnotherType) {
  Views views(1);
  cv::Mat omc(1, 1, CV_64FC3, cv::Scalar(1, 2, 3));
  cv::Mat Tc(1, 1, CV_64FC3, cv::Scalar(1, 2, 3));
  const auto refused = [&] {
    return support::refuses(kImageText, "CalibrateExtrinsics", [&] { views.run(omc, Tc); });
  };
  views.x = {cv::Mat(5, 1, CV_64FC3)};
  EXPECT_TRUE(refused());
  views.x = {};
  EXPECT_TRUE(refused());
}

TEST(PoseOfViews, RefusesPosesOfWhichNeitherIsATriple) {
  const Views views(1);
  cv::Mat none;
  cv::Mat floats(1, 1, CV_32FC3);
  for (cv::Mat* omc : {&none, &floats}) {
    cv::Mat Tc;
    EXPECT_TRUE(support::refuses(kPoseText, "CalibrateExtrinsics", [&] { views.run(*omc, Tc); }));
    EXPECT_TRUE(Tc.empty());
  }
}

TEST(PoseOfViews, FewerTargetsOrPosesThanImagesEndTheSameWayEachTime) {
  Views views(3);
  const auto outcome = [&](int poses) {
    return support::outcomeOf([&] {
      cv::Mat omc(1, poses, CV_64FC3, cv::Scalar(0, 0, 0));
      cv::Mat Tc(1, poses, CV_64FC3, cv::Scalar(0, 0, 0));
      return std::to_string(views.run(omc, Tc)) + support::bytesOf(omc);
    });
  };
  EXPECT_EQ(outcome(1), outcome(1));
  EXPECT_EQ(outcome(5), outcome(5));
  views.X.pop_back();
  EXPECT_EQ(outcome(2), outcome(2));
  EXPECT_EQ(outcome(3), outcome(3));
}

TEST(PoseOfViews, PoseArrayOfAnotherTypeNextToACorrectOneEndsTheSameWayEachTime) {
  const Views views(2);
  for (const int type : {CV_32FC3, CV_64FC1, CV_8UC1}) {
    const auto outcome = [&] {
      return support::outcomeOf([&] {
        cv::Mat omc(1, 2, CV_64FC3, cv::Scalar(0, 0, 0));
        cv::Mat Tc = cv::Mat::zeros(1, 2, type);
        return std::to_string(views.run(omc, Tc)) + support::bytesOf(omc) + support::bytesOf(Tc);
      });
    };
    EXPECT_EQ(outcome(), outcome());
  }
}

}  // namespace
