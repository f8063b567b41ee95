#include "files/points_csv.h"

#include <gtest/gtest.h>

#include "base/failure.h"

namespace fisheye_calibration::program {
namespace {

TEST(PointsCsv, EveryFieldIsReadAndTheOrderKept) {
  const auto points =
      parsePoints("p.csv", "PointId,Xw,Yw,ImagePtX,ImagePtY\n7,1.5,-2,100.25,200\n3,4,5,6,7\n");
  ASSERT_EQ(points.size(), 2u);
  EXPECT_EQ(points[0].PointId, 7);
  EXPECT_EQ(points[0].Xw, 1.5f);
  EXPECT_EQ(points[0].Yw, -2.0f);
  EXPECT_EQ(points[0].ImagePtX, 100.25f);
  EXPECT_EQ(points[0].ImagePtY, 200.0f);
  EXPECT_EQ(points[1].PointId, 3);
}

TEST(PointsCsv, OtherColumnsAreIgnored) {
  const auto points =
      parsePoints("p.csv", "PointId,note,Xw,Yw,ImagePtX,ImagePtY\n1,corner,2,3,4,5\n");
  EXPECT_EQ(points.at(0).ImagePtY, 5.0f);
}

TEST(PointsCsv, FiveNumbersNeedNoHeader) {
  const auto points = parsePoints("p.csv", "1;2,5;3;4;5\n2;3;4;5;6\n");
  ASSERT_EQ(points.size(), 2u);
  EXPECT_EQ(points[0].PointId, 1);
  EXPECT_EQ(points[0].Xw, 2.5f);
  EXPECT_EQ(points[1].ImagePtY, 6.0f);
}

TEST(PointsCsv, AFileWithoutPointsIsReported) {
  try {
    parsePoints("p.csv", "PointId,Xw,Yw,ImagePtX,ImagePtY\n");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_STREQ(failure.what(), "p.csv:1:1: no points after the header");
  }
}

TEST(PointsCsv, WhatIsWrittenIsReadBack) {
  const CalibrationPoint point = {
      .PointId = 12, .Xw = 0.1f, .Yw = -1e-4f, .ImagePtX = 1234.5678f, .ImagePtY = 0.25f};
  const auto back = parsePoints("p.csv", formatPoints({point})).at(0);
  EXPECT_EQ(back.PointId, 12);
  EXPECT_EQ(back.Xw, point.Xw);
  EXPECT_EQ(back.Yw, point.Yw);
  EXPECT_NEAR(back.ImagePtX, point.ImagePtX, 1.2e-4f);
  EXPECT_EQ(back.ImagePtY, point.ImagePtY);
}

TEST(PointsCsv, ResidualsHoldTheLengthOfTheErrorAndWhatWasLeftOut) {
  const CalibrationPoint first = {.PointId = 1, .ReprojErrX = 3, .ReprojErrY = -4};
  const CalibrationPoint second = {.PointId = 2};
  EXPECT_EQ(formatResiduals({first, second}, {1}),
            "PointId,Xw,Yw,ImagePtX,ImagePtY,ReprojPtX,ReprojPtY,ReprojErrX,ReprojErrY,ReprojErr,"
            "LeftOut\n"
            "1,0,0,0.0000,0.0000,0.0000,0.0000,3.0000,-4.0000,5.0000,0\n"
            "2,0,0,0.0000,0.0000,0.0000,0.0000,0.0000,0.0000,0.0000,1\n");
}

}  // namespace
}  // namespace fisheye_calibration::program
