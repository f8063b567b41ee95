#include <gtest/gtest.h>

#include "fisheye/internal.h"
#include "fisheye/solver_records.h"
#include "support/raises.h"

using namespace fisheye_calibration;

namespace {

const support::RigCamera kRigCamera;

internal::IntrinsicParams camera() { return support::intrinsicParams(kRigCamera); }

support::RigView view(const support::RigPose& pose = support::poseOver({}, 180, 0.4, -0.3, 0.2)) {
  return support::seen(kRigCamera, {}, pose);
}

void expectPose(const cv::Mat& omckk, const cv::Mat& Tckk, const support::RigPose& truth) {
  ASSERT_EQ(omckk.size(), cv::Size(1, 3));
  ASSERT_EQ(omckk.type(), CV_64FC1);
  ASSERT_EQ(Tckk.size(), cv::Size(1, 3));
  ASSERT_EQ(Tckk.type(), CV_64FC1);
  EXPECT_LT(cv::norm(cv::Vec3d(omckk.ptr<double>()) - truth.rotation), 1e-6);
  EXPECT_LT(cv::norm(cv::Vec3d(Tckk.ptr<double>()) - truth.translation), 1e-4);
}

TEST(PoseInitialisation, FindsTheTruePoseOfExactPoints) {
  const support::RigView seen = view();
  cv::Mat omckk;
  cv::Mat Tckk;
  ASSERT_TRUE(internal::InitExtrinsics(cv::Mat(seen.imagePoints), cv::Mat(seen.objectPoints),
                                       camera(), omckk, Tckk));
  expectPose(omckk, Tckk, seen.pose);
}

TEST(PoseInitialisation, UndoesSkew) {
  support::RigCamera skewed;
  skewed.skew = 0.02;
  const support::RigPose pose = support::poseOver({}, 180, 0.4, -0.3, 0.2);
  const support::RigView seen = support::seen(skewed, {}, pose);
  cv::Mat omckk;
  cv::Mat Tckk;
  ASSERT_TRUE(internal::InitExtrinsics(cv::Mat(seen.imagePoints), cv::Mat(seen.objectPoints),
                                       support::intrinsicParams(skewed), omckk, Tckk));
  expectPose(omckk, Tckk, pose);
}

TEST(PoseInitialisation, FourPointsAreEnough) {
  const support::RigView seen = view();
  std::vector<cv::Point3d> corners;
  std::vector<cv::Point2d> pixels;
  for (const size_t i : {0U, 8U, 54U, 62U}) {
    corners.push_back(seen.objectPoints[i]);
    pixels.push_back(seen.imagePoints[i]);
  }
  cv::Mat omckk;
  cv::Mat Tckk;
  ASSERT_TRUE(internal::InitExtrinsics(cv::Mat(pixels), cv::Mat(corners), camera(), omckk, Tckk));
  expectPose(omckk, Tckk, seen.pose);
}

TEST(PoseInitialisation, TargetMayLieInAnyPlane) {
  // The bed turned and shifted in its own frame; the camera's pose is unturned to match.
  const support::RigView seen = view();
  const cv::Mat bedTurn = plain::rotationMatrix(cv::Mat(cv::Vec3d(0.7, -0.5, 0.3)));
  const cv::Vec3d bedShift(30, -20, 50);
  std::vector<cv::Point3d> target;
  for (const cv::Point3d& point : seen.objectPoints) {
    const cv::Mat moved = bedTurn * cv::Mat(point) + cv::Mat(bedShift);
    target.emplace_back(moved.at<double>(0), moved.at<double>(1), moved.at<double>(2));
  }
  cv::Mat omckk;
  cv::Mat Tckk;
  ASSERT_TRUE(
      internal::InitExtrinsics(cv::Mat(seen.imagePoints), cv::Mat(target), camera(), omckk, Tckk));
  const cv::Mat R = plain::rotationMatrix(cv::Mat(seen.pose.rotation)) * bedTurn.t();
  EXPECT_LT(cv::norm(plain::rotationMatrix(omckk), R, cv::NORM_INF), 1e-6);
  const cv::Mat T = cv::Mat(seen.pose.translation) - R * cv::Mat(bedShift);
  EXPECT_LT(cv::norm(Tckk, T, cv::NORM_INF), 1e-4);
}

TEST(PoseInitialisation, TargetInAPlaneOfConstantHeight) {
  const support::RigView seen = view();
  std::vector<cv::Point3d> raised = seen.objectPoints;
  for (cv::Point3d& point : raised) point.z = 25;
  cv::Mat omckk;
  cv::Mat Tckk;
  ASSERT_TRUE(
      internal::InitExtrinsics(cv::Mat(seen.imagePoints), cv::Mat(raised), camera(), omckk, Tckk));
  EXPECT_LT(cv::norm(cv::Vec3d(omckk.ptr<double>()) - seen.pose.rotation), 1e-6);
  const cv::Mat R = plain::rotationMatrix(cv::Mat(seen.pose.rotation));
  EXPECT_LT(cv::norm(Tckk, cv::Mat(seen.pose.translation) - 25 * R.col(2), cv::NORM_INF), 1e-4);
}

TEST(PoseInitialisation, RowsAndColumnsGiveTheSamePose) {
  const support::RigView seen = view();
  const cv::Mat X = cv::Mat(seen.objectPoints).clone();
  const cv::Mat x = cv::Mat(seen.imagePoints).clone();
  cv::Mat omColumn;
  cv::Mat TColumn;
  cv::Mat omRow;
  cv::Mat TRow;
  ASSERT_TRUE(internal::InitExtrinsics(x, X, camera(), omColumn, TColumn));
  ASSERT_TRUE(internal::InitExtrinsics(x.t(), X.t(), camera(), omRow, TRow));
  EXPECT_EQ(cv::norm(omRow, omColumn, cv::NORM_INF), 0);
  EXPECT_EQ(cv::norm(TRow, TColumn, cv::NORM_INF), 0);
}

TEST(PoseInitialisation, AgreesWithThePlainDerivationOnNoisyRigs) {
  for (std::uint64_t seed = 1; seed <= 200; ++seed) {
    const support::Rig rig = support::randomRig(seed, 1, 0.5);
    const plain::View seen = rig.views[0].plainView();
    plain::Pose expected;
    ASSERT_TRUE(plain::initExtrinsics(seen, support::plainIntrinsics(rig.camera), expected));
    cv::Mat omckk;
    cv::Mat Tckk;
    ASSERT_TRUE(internal::InitExtrinsics(seen.imagePoints, seen.objectPoints,
                                         support::intrinsicParams(rig.camera), omckk, Tckk));
    EXPECT_LT(support::relativeDistance(omckk, expected.rvec), 1e-9) << "seed " << seed;
    EXPECT_LT(support::relativeDistance(Tckk, expected.tvec), 1e-9) << "seed " << seed;
  }
}

TEST(PoseInitialisation, HomographyWithoutScaleIsASoftFailureThatWritesNothing) {
  support::RigView seen = view();
  const double nan = std::nan("");
  std::vector<std::vector<cv::Point2d>> hopeless(3, seen.imagePoints);
  for (cv::Point2d& pixel : hopeless[0]) pixel = {kRigCamera.cx, kRigCamera.cy};
  for (cv::Point2d& pixel : hopeless[1]) pixel = {nan, nan};
  hopeless[2][3].x = nan;
  for (const auto& pixels : hopeless) {
    cv::Mat omckk = cv::Mat::ones(1, 2, CV_32F);
    cv::Mat Tckk = cv::Mat::ones(2, 1, CV_32F);
    EXPECT_FALSE(internal::InitExtrinsics(cv::Mat(pixels), cv::Mat(seen.objectPoints), camera(),
                                          omckk, Tckk));
    EXPECT_EQ(support::bytesOf(omckk), support::bytesOf(cv::Mat::ones(1, 2, CV_32F)));
    EXPECT_EQ(support::bytesOf(Tckk), support::bytesOf(cv::Mat::ones(2, 1, CV_32F)));
  }
}

// Points whose picture depends on one of their coordinates only: the homography's column of the
// other is 0, exactly or but for rounding.
void blindTo(int axis, int count, double spacing, std::vector<cv::Point3d>& target,
             std::vector<cv::Point2d>& pixels) {
  for (int along = -count; along <= count; ++along) {
    for (int across = -1; across <= 1; across += 2) {
      const double a = spacing * across;
      const double b = spacing * along;
      target.push_back(axis == 0 ? cv::Point3d(a, b, 0) : cv::Point3d(b, a, 0));
      pixels.emplace_back(kRigCamera.cx + 100 * along, kRigCamera.cy + 50 * along);
    }
  }
}

// The number of blind pictures that are refused with this text and nothing written. In the others,
// rounding keeps the column from being 0, and they give a pose.
int refusalsOfBlindPictures(int axis, const char* text) {
  int refusals = 0;
  for (const int count : {1, 2}) {
    for (double spacing = 1; spacing < 300; spacing *= 2) {
      std::vector<cv::Point3d> target;
      std::vector<cv::Point2d> pixels;
      blindTo(axis, count, spacing, target, pixels);
      cv::Mat omckk;
      cv::Mat Tckk;
      bool found = false;
      const auto result = support::refuses(text, "InitExtrinsics", [&] {
        found = internal::InitExtrinsics(cv::Mat(pixels), cv::Mat(target), camera(), omckk, Tckk);
      });
      refusals += result ? 1 : 0;
      EXPECT_TRUE(result || found) << result.message();
      EXPECT_EQ(omckk.empty() && Tckk.empty(), !found);
    }
  }
  return refusals;
}

TEST(PoseInitialisation, ZeroFirstColumnIsRefused) {
  EXPECT_GT(refusalsOfBlindPictures(0, "fabs(norm_u1) > 0"), 0);
}

TEST(PoseInitialisation, ZeroSecondColumnIsRefused) {
  EXPECT_GT(refusalsOfBlindPictures(1, "fabs(norm_u2) > 0"), 0);
}

TEST(PoseInitialisation, RefusesPointsThatAreEmptyOrOfAnotherTypeTargetFirst) {
  const cv::Mat X(9, 1, CV_64FC3, cv::Scalar(1, 2, 0));
  const cv::Mat x(9, 1, CV_64FC2, cv::Scalar(1, 2));
  cv::Mat omckk;
  cv::Mat Tckk;
  const auto refused = [&](const cv::Mat& pixels, const cv::Mat& target, const char* text) {
    return support::refuses(text, "InitExtrinsics", [&] {
      internal::InitExtrinsics(pixels, target, camera(), omckk, Tckk);
    });
  };
  const char objectText[] = "!_objectPoints.empty() && _objectPoints.type() == CV_64FC3";
  const char imageText[] = "!_imagePoints.empty() && _imagePoints.type() == CV_64FC2";
  EXPECT_TRUE(refused(x, cv::Mat(), objectText));
  EXPECT_TRUE(refused(x, cv::Mat(0, 1, CV_64FC3), objectText));
  EXPECT_TRUE(refused(x, cv::Mat(9, 1, CV_32FC3), objectText));
  EXPECT_TRUE(refused(cv::Mat(), cv::Mat(), objectText));
  EXPECT_TRUE(refused(cv::Mat(), X, imageText));
  EXPECT_TRUE(refused(cv::Mat(0, 1, CV_64FC2), X, imageText));
  EXPECT_TRUE(refused(cv::Mat(9, 1, CV_32FC2), X, imageText));
}

TEST(PoseInitialisation, HostilePointsEndTheSameWayEachTime) {
  const support::RigView seen = view();
  const auto outcome = [&](const std::vector<cv::Point2d>& x, const std::vector<cv::Point3d>& X) {
    return support::outcomeOf([&] {
      cv::Mat omckk;
      cv::Mat Tckk;
      const bool found = internal::InitExtrinsics(cv::Mat(x), cv::Mat(X), camera(), omckk, Tckk);
      return std::to_string(found) + support::bytesOf(omckk) + support::bytesOf(Tckk);
    });
  };
  const auto expectSame = [&](const std::vector<cv::Point2d>& x,
                              const std::vector<cv::Point3d>& X) {
    EXPECT_EQ(outcome(x, X), outcome(x, X));
  };
  auto target = seen.objectPoints;
  for (cv::Point3d& point : target) point.y = 0;  // collinear
  expectSame(seen.imagePoints, target);
  for (cv::Point3d& point : target) point = {1, 2, 3};
  expectSame(seen.imagePoints, target);
  target = seen.objectPoints;
  target[5].x = HUGE_VAL;
  expectSame(seen.imagePoints, target);
  auto pixels = seen.imagePoints;
  pixels[7].y = -HUGE_VAL;
  expectSame(pixels, seen.objectPoints);
  for (cv::Point2d& pixel : pixels) pixel *= 1e300;
  expectSame(pixels, seen.objectPoints);
  for (int count = 1; count < 4; ++count) {
    expectSame({seen.imagePoints.begin(), seen.imagePoints.begin() + count},
               {seen.objectPoints.begin(), seen.objectPoints.begin() + count});
  }
  expectSame({seen.imagePoints.begin(), seen.imagePoints.begin() + 9}, seen.objectPoints);
  expectSame(seen.imagePoints, {seen.objectPoints.begin(), seen.objectPoints.begin() + 9});
}

}  // namespace
