#include <gtest/gtest.h>

#include "fisheye/internal.h"
#include "support/raises.h"

using namespace fisheye_calibration;

namespace {

internal::IntrinsicParams sample(const std::vector<uchar>& mask) {
  internal::IntrinsicParams params;
  params.focalLength = {100, 200};
  params.principalPoint = {300, 400};
  params.skew = 0.5;
  params.distortion = {0.1, 0.2};
  params.estimateMask = mask;
  return params;
}

const std::vector<uchar> kSolverMask = {1, 1, 1, 1, 0, 1, 1};

TEST(IntrinsicParams, DefaultIsZeroAndEstimatesNothing) {
  const internal::IntrinsicParams params;
  EXPECT_EQ(params.focalLength, cv::Vec2d(0, 0));
  EXPECT_EQ(params.principalPoint, cv::Vec2d(0, 0));
  EXPECT_EQ(params.distortion, cv::Vec2d(0, 0));
  EXPECT_EQ(params.skew, 0);
  EXPECT_EQ(params.estimateMask, std::vector<uchar>(7, 0));
}

TEST(IntrinsicParams, PlusWithTheSolversMaskTakesSixElementsAndLeavesSkew) {
  const cv::Mat step = (cv::Mat_<double>(6, 1) << 1, 2, 3, 4, 5, 6);
  const internal::IntrinsicParams sum = sample(kSolverMask) + step;
  EXPECT_EQ(sum.focalLength, cv::Vec2d(101, 202));
  EXPECT_EQ(sum.principalPoint, cv::Vec2d(303, 404));
  EXPECT_EQ(sum.skew, 0.5);
  EXPECT_EQ(sum.distortion, cv::Vec2d(5.1, 6.2));
  EXPECT_EQ(sum.estimateMask, kSolverMask);
}

TEST(IntrinsicParams, PlusTakesSkewFifthWhenAllAreEstimated) {
  const cv::Mat step = (cv::Mat_<double>(1, 7) << 1, 2, 3, 4, 5, 6, 7);
  const internal::IntrinsicParams sum = sample(std::vector<uchar>(7, 1)) + step;
  EXPECT_EQ(sum.skew, 5.5);
  EXPECT_EQ(sum.distortion, cv::Vec2d(6.1, 7.2));
}

TEST(IntrinsicParams, PlusIgnoresElementsPastTheEstimatedOnes) {
  const cv::Mat step = (cv::Mat_<double>(12, 1) << 1, 2, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9);
  const internal::IntrinsicParams sum = sample({1, 0, 0, 0, 0, 0, 1}) + step;
  EXPECT_EQ(sum.focalLength, cv::Vec2d(101, 200));
  EXPECT_EQ(sum.principalPoint, cv::Vec2d(300, 400));
  EXPECT_EQ(sum.distortion, cv::Vec2d(0.1, 2.2));
}

TEST(IntrinsicParams, PlusLeavesItsOperandUnchanged) {
  const internal::IntrinsicParams params = sample(kSolverMask);
  const internal::IntrinsicParams sum = params + cv::Mat::ones(6, 1, CV_64F);
  EXPECT_EQ(params.focalLength, cv::Vec2d(100, 200));
  EXPECT_EQ(sum.focalLength, cv::Vec2d(101, 201));
}

TEST(IntrinsicParams, AssignmentZeroesHeldParametersAndKeepsTheMask) {
  internal::IntrinsicParams params = sample(kSolverMask);
  params = cv::Mat(cv::Mat_<double>({1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(params.focalLength, cv::Vec2d(1, 2));
  EXPECT_EQ(params.principalPoint, cv::Vec2d(3, 4));
  EXPECT_EQ(params.skew, 0);
  EXPECT_EQ(params.distortion, cv::Vec2d(5, 6));
  EXPECT_EQ(params.estimateMask, kSolverMask);
}

TEST(IntrinsicParams, AssignmentReturnsTheRecordItself) {
  internal::IntrinsicParams params = sample(kSolverMask);
  const cv::Mat values = cv::Mat::ones(6, 1, CV_64F);
  EXPECT_EQ(&(params = values), &params);
}

TEST(IntrinsicParams, ElementsOfANonContiguousColumnAreTakenInOrder) {
  const cv::Mat wide = (cv::Mat_<double>(6, 2) << 1, -1, 2, -1, 3, -1, 4, -1, 5, -1, 6, -1);
  internal::IntrinsicParams params = sample(kSolverMask);
  params = wide.col(0);
  EXPECT_EQ(params.principalPoint, cv::Vec2d(3, 4));
  EXPECT_EQ((sample(kSolverMask) + wide.col(0)).distortion, cv::Vec2d(5.1, 6.2));
}

TEST(IntrinsicParams, CopyingCopiesNumbersAndMask) {
  internal::IntrinsicParams params;
  params = sample(kSolverMask);
  EXPECT_EQ(params.skew, 0.5);
  EXPECT_EQ(params.estimateMask, kSolverMask);
}

// The function names of these two errors are part of their contract.
TEST(IntrinsicParams, PlusRefusesOtherTypesUnderItsOwnName) {
  for (const int type : {CV_32FC1, CV_64FC2, CV_8UC1, CV_32SC1}) {
    try {
      sample(kSolverMask) + cv::Mat::zeros(7, 1, type);
      ADD_FAILURE() << "nothing raised for type " << type;
    } catch (const cv::Exception& error) {
      EXPECT_EQ(error.code, -215);
      EXPECT_EQ(error.err, "a.type() == CV_64FC1");
      EXPECT_EQ(error.func, "cv::internal::IntrinsicParams::operator +");
    }
  }
}

TEST(IntrinsicParams, AssignmentRefusesOtherTypesUnderItsOwnNameAndChangesNothing) {
  for (const int type : {CV_32FC1, CV_64FC2, CV_8UC1, CV_32SC1}) {
    internal::IntrinsicParams params = sample(kSolverMask);
    try {
      params = cv::Mat(cv::Mat::zeros(7, 1, type));
      ADD_FAILURE() << "nothing raised for type " << type;
    } catch (const cv::Exception& error) {
      EXPECT_EQ(error.code, -215);
      EXPECT_EQ(error.err, "a.type() == CV_64FC1");
      EXPECT_EQ(error.func, "cv::internal::IntrinsicParams::operator =");
    }
    EXPECT_EQ(params.focalLength, cv::Vec2d(100, 200));
    EXPECT_EQ(params.skew, 0.5);
  }
}

TEST(IntrinsicParams, TooFewElementsEndTheSameWayEachTime) {
  const auto outcome = [](int elements) {
    return support::outcomeOf([&] {
      const internal::IntrinsicParams sum =
          sample(kSolverMask) + cv::Mat::ones(elements, 1, CV_64F);
      return cv::format("%g %g %g", sum.focalLength[0], sum.principalPoint[1], sum.distortion[1]);
    });
  };
  for (int elements = 0; elements < 6; ++elements) {
    EXPECT_EQ(outcome(elements), outcome(elements));
  }
}

}  // namespace
