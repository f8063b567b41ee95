// stitch and map --dual from the outside, with two known cameras over one bed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "points_csv.h"
#include "run_program.h"
#include "sample_record.h"
#include "seam_overlay.h"
#include "stitch_agreement.h"
#include "stitch_checks.h"
#include "synthetic_target.h"

namespace {

using host::FindingKind;
using host_test::contents;
using host_test::exists;
using host_test::Outcome;
using host_test::runProgram;
using host_test::SyntheticCamera;
using host_test::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// A camera that looks straight down on (Xw, 130) from 170 above, at 240 x 180 px.
SyntheticCamera cameraOver(double Xw) {
  SyntheticCamera camera;
  camera.width = 240;
  camera.height = 180;
  camera.focalLength = 85;
  camera.principalPoint = {120, 90};
  camera.R = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  camera.T = {-Xw, -130, 170};
  return camera;
}

// Its exact record: 2 world units a pixel.
FishEyeCalibrationParam recordOver(double Xw) {
  FishEyeCalibrationParam param = host_test::sampleRecord();
  param.u0 = 120;
  param.v0 = 90;
  param.fx = param.fy = 85;
  param.Tx = static_cast<float>(-Xw);
  param.Ty = -130;
  param.Pixel = 2;
  param.DatumPtXw = static_cast<float>(Xw);
  param.DatumPtYw = 130;
  return param;
}

// Points at a spacing of 50 from the world's origin; 14 x 6 of them.
const host_test::SyntheticTarget board = {host_test::Pattern::Chessboard, 14, 6, 50, true};

host::StitchCamera stitchCamera(double Xw) {
  host::StitchCamera camera;
  camera.cameraName = "c.ini";
  camera.pointsName = "p.csv";
  camera.frame = host::blankBuffer({240, 180}, 8);
  camera.param = recordOver(Xw);
  camera.points = host_test::exactPoints(cameraOver(Xw), board);
  return camera;
}

host::StitchPair goodPair() { return {stitchCamera(160), stitchCamera(260)}; }

std::vector<FindingKind> kindsOf(const host::StitchPair& pair) {
  std::vector<FindingKind> kinds;
  for (const host::Finding& finding : host::checkStitch(pair)) kinds.push_back(finding.kind);
  return kinds;
}

TEST(StitchChecks, AGoodPairRaisesNothing) { EXPECT_THAT(kindsOf(goodPair()), ElementsAre()); }

TEST(StitchChecks, ThreeSharedPointsAreTooFew) {
  host::StitchPair pair = goodPair();
  pair.right.points.resize(3);
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::FewSharedPoints));
}

TEST(StitchChecks, SharedPointsInOneRowAreCollinear) {
  host::StitchPair pair = goodPair();
  pair.right.points.resize(14);  // the first row
  const auto findings = host::checkStitch(pair);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].kind, FindingKind::CollinearPoints);
  EXPECT_EQ(findings[0].severity, host::Severity::Impossible);
}

TEST(StitchChecks, PointsInOneSpotCoverLittleOfTheOverlap) {
  host::StitchPair pair = goodPair();
  const auto keep = [](const CalibrationPoint& p) {
    return (p.Xw == 200 || p.Xw == 250) && (p.Yw == 100 || p.Yw == 150);
  };
  std::erase_if(pair.right.points, [&](const CalibrationPoint& p) { return !keep(p); });
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::SharedCoverage));
}

TEST(StitchChecks, WorldCoordinatesBelowZeroAreTold) {
  host::StitchPair pair = goodPair();
  pair.left.points[0].Xw = pair.right.points[0].Xw = -1;
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::WorldRange, FindingKind::WorldRange));
}

TEST(StitchChecks, DifferentBitCountsCannotBeStitched) {
  host::StitchPair pair = goodPair();
  pair.right.frame = host::blankBuffer({240, 180}, 24);
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::BitCounts));
}

TEST(StitchChecks, SwappedCamerasAreTold) {
  EXPECT_THAT(kindsOf({stitchCamera(260), stitchCamera(160)}),
              ElementsAre(FindingKind::CameraOrder));
}

TEST(StitchChecks, IdsThatTheLibrarySkipsAreTold) {
  host::StitchPair pair = goodPair();
  pair.left.points[83].PointId = pair.right.points[83].PointId = 169;  // the lists have 168
  EXPECT_THAT(kindsOf(pair), ElementsAre(FindingKind::UnusedIds));
}

TEST(StitchAgreement, ExactCamerasAgree) {
  // Canvas as high as the left view: its datum in the middle of 480 x 360.
  const DualFishEyeCalibrationParam dual{2, 532, 360, 240, 180, 160, 130};
  const auto agreement = host::agreementAt(goodPair(), dual);
  ASSERT_EQ(agreement.size(), 84u);
  for (const host::Agreement& at : agreement) {
    EXPECT_LT(at.apart, 0.05);
    EXPECT_LT(at.leftError, 0.05);
    EXPECT_LT(at.rightRaw, 0.01);
  }
  // Point 1 at the bed's origin: (0 - 160) / 2 + 240, (0 - 130) / 2 + 180.
  EXPECT_NEAR(agreement[0].left.x, 160, 0.01);
  EXPECT_NEAR(agreement[0].left.y, 115, 0.01);
}

TEST(StitchAgreement, AShiftedViewIsMeasuredInPixelsAndUnits) {
  host::StitchPair pair = goodPair();
  pair.right.param.ImageDx = 3;  // renders everything 3 px too far right
  const DualFishEyeCalibrationParam dual{2, 532, 360, 240, 180, 160, 130};
  const auto agreement = host::agreementAt(pair, dual);
  ASSERT_EQ(agreement.size(), 84u);
  for (const host::Agreement& at : agreement) {
    EXPECT_NEAR(at.apart, 3, 0.05);
    EXPECT_NEAR(at.right.x - at.left.x, 3, 0.05);
    EXPECT_NEAR(at.rightError, 3, 0.05);
    EXPECT_LT(at.leftError, 0.05);
  }
}

TEST(StitchAgreement, AWrongMeasurementIsNamedFirst) {
  host::StitchPair pair = goodPair();
  pair.left.points[20].ImagePtX += 2;
  const DualFishEyeCalibrationParam dual{2, 532, 360, 240, 180, 160, 130};
  const auto agreement = host::agreementAt(pair, dual);
  EXPECT_NEAR(agreement.at(20).leftRaw, 2, 0.01);
  EXPECT_LT(agreement.at(20).rightRaw, 0.01);
  EXPECT_GT(agreement.at(20).apart, 1);
  const std::string text = host::describeAgreement(agreement, 2);
  EXPECT_LT(text.find("RMS"), text.find("point 21"));
  EXPECT_EQ(text.find("point "), text.find("point 21"));
}

TEST(SeamRows, OverlapReachesFromTheRightViewToTheLeftOnesBorder) {
  cv::Mat left(2, 10, CV_8UC1, cv::Scalar(0));
  left.at<unsigned char>(0, 9) = 255;
  left.row(1).setTo(255);
  const cv::Mat right(2, 10, CV_8UC1, cv::Scalar(0));
  const auto rows = host::seamRows(left, right, {1, 0, -4, 0, 1, 0, 0, 0, 1});  // starts at x = 4
  ASSERT_TRUE(rows.at(0));
  EXPECT_EQ(rows[0]->begin, 4);
  EXPECT_EQ(rows[0]->end, 8);
  EXPECT_FALSE(rows.at(1));
}

class StitchProgram : public testing::Test {
 protected:
  void SetUp() override {
    writeCamera("l", 160);
    writeCamera("r", 260);
  }

  void writeCamera(const std::string& name, double Xw) const {
    const SyntheticCamera camera = cameraOver(Xw);
    ASSERT_TRUE(cv::imwrite(folder.path(name + ".png"), host_test::drawTarget(camera, board)));
    SaveCalibrationParam(folder.path(name + ".ini").c_str(), recordOver(Xw));
    folder.write(name + ".csv", host::formatPoints(host_test::exactPoints(camera, board)));
  }

  std::string files(const std::string& name) const {
    return folder.path(name + ".png") + "," + folder.path(name + ".ini") + "," +
           folder.path(name + ".csv");
  }

  Outcome stitch(const std::vector<std::string>& further = {}) const {
    std::vector<std::string> arguments = {"stitch", "--left", files("l"), "--right", files("r"),
                                          "-o",     canvas,   "--dual",   dual};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  // The mapped place of a bed point on the stitched picture.
  cv::Point2d placeOf(double Xw, double Yw) const {
    const Outcome run = runProgram({"map", "--dual", dual, "--from", "world", "--to", "stitched",
                                    std::to_string(Xw), std::to_string(Yw)});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    cv::Point2d place;
    char comma = 0;
    std::istringstream(run.out) >> place.x >> comma >> place.y;
    return place;
  }

  // Middles of squares; the left view ends at Xw = 640, so column 13 is seen by the right camera
  // alone.
  void expectBoard(const cv::Mat& picture, double rowOffset, int lastColumn) const {
    for (const int row : {0, 1, 2}) {
      for (int column = 0; column <= lastColumn; ++column) {
        const cv::Point2d place = placeOf(50 * column + 25, 50 * row + 25);
        const int x = static_cast<int>(place.x + 0.5);
        const int y = static_cast<int>(place.y + rowOffset + 0.5);
        ASSERT_TRUE(cv::Rect({}, picture.size()).contains({x, y})) << x << " " << y;
        const bool dark = (column + row) % 2 == 0;
        EXPECT_EQ(picture.at<unsigned char>(y, x) < 128, dark) << column << " " << row;
      }
    }
  }

  TemporaryFolder folder;
  std::string canvas = folder.path("bed.png");
  std::string dual = folder.path("dual.ini");
};

TEST_F(StitchProgram, BothCamerasContentLiesWhereTheRecordSays) {
  const Outcome run = stitch({"--seam", folder.path("seam.png")});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  const cv::Mat picture = cv::imread(canvas, cv::IMREAD_UNCHANGED);
  ASSERT_EQ(picture.type(), CV_8UC1);
  expectBoard(picture, 0, 13);
  EXPECT_THAT(run.out, HasSubstr("Agreement at 84 shared points"));
  EXPECT_THAT(run.err, Not(HasSubstr("warning")));
  const cv::Mat seam = cv::imread(folder.path("seam.png"), cv::IMREAD_UNCHANGED);
  EXPECT_EQ(seam.size(), picture.size());
  EXPECT_EQ(seam.type(), CV_8UC3);
}

TEST_F(StitchProgram, ACropKeepsItsRecordTrue) {
  const Outcome run = stitch({"--crop", "120,100,300x152"});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  const cv::Mat picture = cv::imread(canvas, cv::IMREAD_UNCHANGED);
  ASSERT_EQ(picture.size(), cv::Size(300, 152));
  const Outcome map =
      runProgram({"map", "--dual", dual, "--from", "world", "--to", "stitched", "160", "130"});
  // 360 rows less 100 at the top and 108 at the bottom: the datum's buffer row is 180 - 108 = 72
  // and the picture's row is v + 152 - 144.
  EXPECT_EQ(map.out, "120,72\n");
  EXPECT_THAT(map.err, HasSubstr("its row from the top is y + 8"));
  expectBoard(picture, 8, 9);
}

TEST_F(StitchProgram, MapComesBackFromTheStitchedPicture) {
  ASSERT_EQ(stitch().exitCode, 0);
  const Outcome run = runProgram({"map", "--dual", dual, "--from", "stitched", "--to", "world"},
                                 "PointId,x,y\n7,240,180\n8,250,170\n");
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.out, "PointId,Xw,Yw\n7,160,130\n8,180,110\n");
}

TEST_F(StitchProgram, MapRefusesWhatADualRecordDoesNotGive) {
  ASSERT_EQ(stitch().exitCode, 0);
  const auto map = [&](const std::vector<std::string>& arguments) {
    std::vector<std::string> all = {"map"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return runProgram(all);
  };
  const Outcome raw = map({"--dual", dual, "--from", "world", "--to", "raw", "1", "2"});
  EXPECT_EQ(raw.exitCode, 2);
  EXPECT_THAT(raw.err, HasSubstr("world to stitched and stitched to world only"));
  EXPECT_EQ(map({"--dual", dual, "--from", "stitched", "--to", "raw", "1", "2"}).exitCode, 2);
  EXPECT_EQ(map({"--camera", folder.path("l.ini"), "--from", "world", "--to", "stitched", "1", "2"})
                .exitCode,
            2);
  EXPECT_EQ(map({"--from", "world", "--to", "raw", "1", "2"}).exitCode, 2);
  EXPECT_EQ(map({"--dual", folder.path("l.ini"), "--from", "world", "--to", "stitched", "1", "2"})
                .exitCode,
            2);
}

TEST_F(StitchProgram, AFractionOfTheDatumIsToldToBeLost) {
  FishEyeCalibrationParam param = recordOver(160);
  param.DatumPtXw = 160.5f;
  SaveCalibrationParam(folder.path("l.ini").c_str(), param);
  EXPECT_THAT(stitch().err, HasSubstr("DatumPtXw is 160.5, but the library reads it back as 160"));
}

TEST_F(StitchProgram, TooFewSharedPointsAreBadInputAndNothingIsWritten) {
  auto points = host_test::exactPoints(cameraOver(260), board);
  points.resize(3);
  folder.write("r.csv", host::formatPoints(points));
  const Outcome run = stitch();
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err, HasSubstr("3 points are shared"));
  EXPECT_FALSE(exists(canvas));
  EXPECT_FALSE(exists(dual));
}

TEST_F(StitchProgram, BadUsageExitsWithTwo) {
  const std::vector<std::vector<std::string>> wrong = {
      {"--crop", "0,0,301x152"},   {"--crop", "0,0"},  {"--crop", "-4,0,300x152"},
      {"--crop", "400,0,300x152"}, {"--seam", canvas}, {"--seam", folder.path("s.ini")},
  };
  for (const auto& arguments : wrong) {
    EXPECT_EQ(stitch(arguments).exitCode, 2) << testing::PrintToString(arguments);
  }
  EXPECT_EQ(
      runProgram({"stitch", "--left", "a,b", "--right", files("r"), "-o", canvas, "--dual", dual})
          .exitCode,
      2);
  EXPECT_FALSE(exists(canvas));
}

}  // namespace
