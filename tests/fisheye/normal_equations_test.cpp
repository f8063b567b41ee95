#include <gtest/gtest.h>

#include "fisheye/internal.h"
#include "fisheye/solver_records.h"
#include "support/raises.h"

using namespace fisheye_calibration;

namespace {

// --- subMatrix

const cv::Mat kSource = (cv::Mat_<double>(3, 4) << 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12);

TEST(SubMatrix, KeepsTheMarkedRowsAndColumnsInOrder) {
  cv::Mat dst;
  internal::subMatrix(kSource, dst, {0, 1, 0, 255}, {1, 0, 1});
  const cv::Mat expected = (cv::Mat_<double>(2, 2) << 2, 4, 10, 12);
  EXPECT_EQ(support::bytesOf(dst), support::bytesOf(expected));
}

TEST(SubMatrix, WithEverythingMarkedCopiesAsDoubles) {
  for (const int type : {CV_8U, CV_32F, CV_64F, CV_32S}) {
    cv::Mat src;
    kSource.convertTo(src, type);
    cv::Mat dst;
    internal::subMatrix(src, dst, {1, 1, 1, 1}, {1, 1, 1});
    EXPECT_EQ(support::bytesOf(dst), support::bytesOf(kSource));
    EXPECT_NE(dst.data, src.data);
  }
}

TEST(SubMatrix, DestinationMayBeTheSource) {
  cv::Mat matrix = kSource.clone();
  internal::subMatrix(matrix, matrix, {1, 0, 0, 1}, {0, 1, 1});
  const cv::Mat expected = (cv::Mat_<double>(2, 2) << 5, 8, 9, 12);
  EXPECT_EQ(support::bytesOf(matrix), support::bytesOf(expected));
}

TEST(SubMatrix, ReadsAPartOfAMatrix) {
  cv::Mat dst;
  internal::subMatrix(kSource.colRange(1, 3), dst, {0, 1}, {1, 1, 0});
  const cv::Mat expected = (cv::Mat_<double>(2, 1) << 3, 7);
  EXPECT_EQ(support::bytesOf(dst), support::bytesOf(expected));
}

TEST(SubMatrix, RefusesMoreThanOneChannel) {
  cv::Mat dst = cv::Mat::ones(1, 1, CV_8U);
  EXPECT_TRUE(support::refuses("src.channels() == 1", "subMatrix", [&] {
    internal::subMatrix(cv::Mat(2, 2, CV_64FC2), dst, {1, 1}, {1, 1});
  }));
  EXPECT_EQ(dst.type(), CV_8U);
}

TEST(SubMatrix, ListsThatDoNotFitEndTheSameWayEachTime) {
  const auto outcome = [](const std::vector<uchar>& cols, const std::vector<uchar>& rows) {
    return support::outcomeOf([&] {
      cv::Mat dst;
      internal::subMatrix(kSource, dst, cols, rows);
      return support::bytesOf(dst);
    });
  };
  const std::vector<uchar> lists[] = {{}, {1}, {0, 0, 0, 0}, {1, 1, 1}, {1, 1, 1, 1, 1, 1, 1, 1}};
  for (const auto& cols : lists) {
    for (const auto& rows : lists) EXPECT_EQ(outcome(cols, rows), outcome(cols, rows));
  }
}

// --- ComputeJacobians

struct System {
  support::Rig rig;
  std::vector<cv::Mat> X;
  std::vector<cv::Mat> x;
  plain::Intrinsics plainCamera;
  internal::IntrinsicParams camera;
  std::vector<cv::Vec3d> omc;
  std::vector<cv::Vec3d> Tc;
  cv::Mat JJ2 = cv::Mat::ones(2, 2, CV_8U);
  cv::Mat ex3 = cv::Mat::ones(2, 2, CV_8U);
  int check = 0;
  double threshold = 1e6;

  explicit System(int count, std::uint64_t seed = 3, double skew = 0)
      : rig(support::randomRig(seed, count, 0.5)),
        X(support::objectMats(rig.plainViews())),
        x(support::imageMats(rig.plainViews())),
        plainCamera(support::plainIntrinsics(rig.camera)) {
    plainCamera.skew = skew;
    camera = support::intrinsicParams(plainCamera);
    omc = support::rotationsOf(support::truePoses(rig));
    Tc = support::translationsOf(support::truePoses(rig));
  }

  void run() { runWith(X, x, omc, Tc); }

  void runWith(cv::InputArrayOfArrays targets, cv::InputArrayOfArrays images,
               cv::InputArray rotations, cv::InputArray translations) {
    internal::ComputeJacobians(targets, images, camera, rotations, translations, check, threshold,
                               JJ2, ex3);
  }
};

TEST(NormalEquations, AgreeWithThePlainDerivation) {
  for (std::uint64_t seed = 1; seed <= 60; ++seed) {
    System system(1 + static_cast<int>(seed % 4), seed, 0.001);
    for (size_t i = 0; i < 7; ++i) {
      system.plainCamera.estimated[i] = seed % 3 != 0 ? i != 4 : (seed >> i) % 2 != 0;
    }
    system.camera = support::intrinsicParams(system.plainCamera);
    system.run();
    cv::Mat JJ2;
    cv::Mat ex3;
    plain::computeJacobians(system.rig.plainViews(), system.plainCamera,
                            support::truePoses(system.rig), JJ2, ex3);
    EXPECT_LT(support::relativeDistance(system.JJ2, JJ2), 1e-10) << "seed " << seed;
    EXPECT_LT(support::relativeDistance(system.ex3, ex3), 1e-9) << "seed " << seed;
  }
}

TEST(NormalEquations, EveryBlockAgreesInItsOwnScale) {
  System system(2);
  system.run();
  cv::Mat JJ2;
  cv::Mat ex3;
  plain::computeJacobians(system.rig.plainViews(), system.plainCamera,
                          support::truePoses(system.rig), JJ2, ex3);
  for (int row = 0; row < JJ2.rows; ++row) {
    for (int column = 0; column < JJ2.cols; ++column) {
      const double scale = std::sqrt(JJ2.at<double>(row, row) * JJ2.at<double>(column, column));
      EXPECT_NEAR(system.JJ2.at<double>(row, column), JJ2.at<double>(row, column), 1e-11 * scale);
    }
  }
}

TEST(NormalEquations, SizeIsTheEstimatedIntrinsicsAndSixAView) {
  System system(3);
  system.run();
  EXPECT_EQ(system.JJ2.size(), cv::Size(24, 24));
  EXPECT_EQ(system.JJ2.type(), CV_64FC1);
  EXPECT_EQ(system.ex3.size(), cv::Size(1, 24));
  EXPECT_EQ(system.ex3.type(), CV_64FC1);
  system.camera.estimateMask.assign(7, 1);
  system.run();
  EXPECT_EQ(system.JJ2.size(), cv::Size(25, 25));
  system.camera.estimateMask.assign(7, 0);
  system.run();
  EXPECT_EQ(system.JJ2.size(), cv::Size(18, 18));
}

TEST(NormalEquations, TwoViewsShareNoPoseUnknowns) {
  System system(2);
  system.run();
  EXPECT_EQ(cv::countNonZero(system.JJ2(cv::Rect(6, 12, 6, 6))), 0);
  EXPECT_EQ(cv::countNonZero(system.JJ2(cv::Rect(12, 6, 6, 6))), 0);
  EXPECT_EQ(cv::norm(system.JJ2, system.JJ2.t(), cv::NORM_INF), 0);
}

// One point on the axis at depth 2, focal lengths 400 and 300, seen 3 px right and 4 px below its
// place. Rows u, v: d/dfx, d/dfy, d/dk0, d/dk1 = 0; d/dc = I; d/dom = fx(0, 1, 0), fy(-1, 0, 0)
// times (depth of the point in its own frame: 0) = 0; d/dT = diag(200, 150), 0.
TEST(NormalEquations, ByHandForOnePointOnTheAxis) {
  System system(1);
  system.camera.focalLength = {400, 300};
  system.camera.principalPoint = {640, 480};
  const cv::Mat X(1, 1, CV_64FC3, cv::Scalar(0, 0, 0));
  const cv::Mat x(1, 1, CV_64FC2, cv::Scalar(643, 484));
  system.runWith(std::vector<cv::Mat>{X}, std::vector<cv::Mat>{x},
                 std::vector<cv::Vec3d>{{0, 0, 0}}, std::vector<cv::Vec3d>{{0, 0, 2}});
  cv::Mat J = cv::Mat::zeros(2, 12, CV_64F);
  J.at<double>(0, 2) = 1;
  J.at<double>(1, 3) = 1;
  J.at<double>(0, 9) = 200;
  J.at<double>(1, 10) = 150;
  const cv::Mat e = (cv::Mat_<double>(2, 1) << 3, 4);
  EXPECT_LT(cv::norm(system.JJ2, J.t() * J, cv::NORM_INF), 1e-9);
  EXPECT_LT(cv::norm(system.ex3, J.t() * e, cv::NORM_INF), 1e-9);
}

TEST(NormalEquations, PointsAndPosesMayComeInAnyLayout) {
  System expected(2);
  expected.run();
  const auto check = [&](System& system, double tolerance) {
    EXPECT_LE(support::relativeDistance(system.JJ2, expected.JJ2), tolerance);
  };
  System system(2);
  system.runWith(std::vector<cv::Mat>{system.X[0].t(), system.X[1].t()},
                 std::vector<cv::Mat>{system.x[0].t(), system.x[1].t()}, cv::Mat(system.omc),
                 cv::Mat(system.Tc).t());
  check(system, 0);
  system.runWith(std::vector<std::vector<cv::Point3d>>{system.rig.views[0].objectPoints,
                                                       system.rig.views[1].objectPoints},
                 std::vector<std::vector<cv::Point2d>>{system.rig.views[0].imagePoints,
                                                       system.rig.views[1].imagePoints},
                 cv::Mat(system.omc).t(), system.Tc);
  check(system, 0);
  system.runWith(std::vector<std::vector<cv::Point3f>>{system.rig.views[0].objectPoints32(),
                                                       system.rig.views[1].objectPoints32()},
                 std::vector<std::vector<cv::Point2f>>{system.rig.views[0].imagePoints32(),
                                                       system.rig.views[1].imagePoints32()},
                 system.omc, system.Tc);
  check(system, 1e-6);
}

const char kConditionText[] =
    "svd.w.at<double>(0) / svd.w.at<double>(svd.w.rows - 1) < thresh_cond";

TEST(NormalEquations, ConditionCheckDecidesAsTheFullDecompositionDoes) {
  for (std::uint64_t seed = 1; seed <= 30; ++seed) {
    System system(1, seed);
    cv::Mat jacobian;
    plain::projectPoints(system.X[0], cv::Mat(system.omc[0]), cv::Mat(system.Tc[0]),
                         system.plainCamera, &jacobian);
    const double ratio = plain::conditionRatio(jacobian.colRange(6, 12).clone());
    system.check = 1;
    system.threshold = ratio * (1 + 1e-9);
    EXPECT_NO_THROW(system.run());
    system.threshold = ratio * (1 - 1e-9);
    EXPECT_TRUE(support::refuses(kConditionText, "ComputeJacobians", [&] { system.run(); }));
    system.check = 0;
    EXPECT_NO_THROW(system.run());
  }
}

TEST(NormalEquations, ConditionCheckNeedsARealThreshold) {
  System system(3);
  system.check = -1;
  EXPECT_NO_THROW(system.run());
  system.threshold = std::nan("");
  EXPECT_TRUE(support::refuses(kConditionText, "ComputeJacobians", [&] { system.run(); }));
}

// A NaN ratio is not below the threshold, whatever the memory holds.
TEST(NormalEquations, ConditionCheckAlwaysFailsForANanPose) {
  System system(3);
  system.check = 1;
  system.omc[2] = {std::nan(""), 0, 0};
  for (size_t i = 0; i < 200; ++i) {
    const std::vector<double> churn(100 + 7 * i, 1.0 / static_cast<double>(i + 1));
    EXPECT_TRUE(support::refuses(kConditionText, "ComputeJacobians", [&] { system.run(); }));
  }
}

TEST(NormalEquations, RefuseWhatTheirConditionsName) {
  const auto refused = [](const char* text, const auto& X, const auto& x, const auto& omc,
                          const auto& Tc) {
    System system(1);
    const auto result =
        support::refuses(text, "ComputeJacobians", [&] { system.runWith(X, x, omc, Tc); });
    EXPECT_EQ(system.JJ2.type(), CV_8U);
    EXPECT_EQ(system.ex3.type(), CV_8U);
    return result;
  };
  const char objectText[] =
      "!objectPoints.empty() && (objectPoints.type() == CV_32FC3 || objectPoints.type() == "
      "CV_64FC3)";
  const char imageText[] =
      "!imagePoints.empty() && (imagePoints.type() == CV_32FC2 || imagePoints.type() == "
      "CV_64FC2)";
  const char omcText[] = "!omc.empty() && omc.type() == CV_64FC3";
  const char TcText[] = "!Tc.empty() && Tc.type() == CV_64FC3";
  const System good(1);
  const std::vector<cv::Mat> none;
  const std::vector<cv::Mat> wrong = {cv::Mat(5, 1, CV_64FC4)};
  const std::vector<cv::Vec3f> floats(1);
  const std::vector<cv::Vec3d> noPose;
  EXPECT_TRUE(refused(objectText, none, none, noPose, noPose));
  EXPECT_TRUE(refused(objectText, wrong, good.x, good.omc, good.Tc));
  EXPECT_TRUE(refused(imageText, good.X, none, noPose, noPose));
  EXPECT_TRUE(refused(imageText, good.X, wrong, good.omc, good.Tc));
  EXPECT_TRUE(refused(omcText, good.X, good.x, noPose, noPose));
  EXPECT_TRUE(refused(omcText, good.X, good.x, floats, good.Tc));
  EXPECT_TRUE(refused(TcText, good.X, good.x, good.omc, noPose));
  EXPECT_TRUE(refused(TcText, good.X, good.x, good.omc, floats));
}

TEST(NormalEquations, ListsThatDoNotPairEndTheSameWayEachTime) {
  const auto outcome = [](size_t images, size_t poses, int points) {
    return support::outcomeOf([&] {
      System system(2);
      system.x.resize(images);
      system.omc.resize(poses);
      system.Tc.resize(poses);
      system.x[0] = system.x[0].rowRange(0, points).clone();
      system.run();
      return support::bytesOf(system.JJ2) + support::bytesOf(system.ex3);
    });
  };
  EXPECT_EQ(outcome(1, 2, 10), outcome(1, 2, 10));
  EXPECT_EQ(outcome(2, 1, 10), outcome(2, 1, 10));
  EXPECT_EQ(outcome(2, 2, 10), outcome(2, 2, 10));
}

}  // namespace
