// Calibrations of a session, and the files that are left of them.
#include "program/page/session_with_target.h"

namespace fisheye_calibration::program {
namespace {

using nlohmann::json;

TEST_F(SessionWithTarget, ACalibrationIsOutdatedByWhatItDependsOn) {
  seeSteadily();
  EXPECT_EQ(refusalOf(Calibrate{}), "take a view first");
  session.apply(TakeView{});
  session.apply(Calibrate{});
  EXPECT_EQ(refusalOf(Calibrate{}), "the calibration is still running");
  EXPECT_EQ(refusalOf(Accept{}), "calibrate first");
  auto outcome = std::make_shared<CalibrationOutcome>();
  outcome->trusted = true;
  session.calibrationDone(0, session.at(0).revision, outcome);
  EXPECT_FALSE(session.isOutdated(0));
  session.apply(SetTolerance{0.5});
  EXPECT_EQ(refusalOf(Accept{}), "views, target or bed have changed since; calibrate again");
  session.apply(Calibrate{});
  session.calibrationDone(0, session.at(0).revision, outcome);
  EXPECT_EQ(refusalOf(Save{}), "accept the calibration first");
  session.apply(Accept{});
  EXPECT_EQ(refusalOf(Save{}), "");
}

TEST_F(SessionWithTarget, FilesAreCalledSavedOnlyWhileTheyAreOfTheNewestCalibration) {
  const auto saved = [&] { return json::parse(snapshotOf(session, {"id", "1"}))["saved"]; };
  session.saved({"camera.ini", "points.csv"}, "");
  EXPECT_EQ(saved()["text"], "camera.ini, points.csv written to out");
  EXPECT_EQ(saved()["count"], 1);
  session.saved({"camera.ini"}, "no dual.ini");
  EXPECT_EQ(saved()["text"], "camera.ini written to out; no dual.ini");
  EXPECT_EQ(saved()["count"], 2);
  seeSteadily();
  session.apply(TakeView{});
  EXPECT_NE(saved(), nullptr);
  session.apply(Calibrate{});
  EXPECT_EQ(saved(), nullptr);
  session.saved({"camera.ini"}, "");
  EXPECT_EQ(saved()["count"], 3);
  session.apply(Reset{});
  EXPECT_EQ(saved(), nullptr);
}

TEST_F(SessionWithTarget, TheResultOfAnAbandonedCalibrationIsDropped) {
  seeSteadily();
  session.apply(TakeView{});
  session.apply(Calibrate{});
  const int abandoned = session.calibrationBegins(0);
  session.apply(Reset{});
  seeSteadily();
  session.apply(TakeView{});
  session.apply(Calibrate{});
  session.calibrationDone(0, abandoned, std::make_shared<CalibrationOutcome>());
  EXPECT_EQ(shown()["calibration"]["status"], "running");
  const int newer = session.calibrationBegins(0);
  EXPECT_NE(newer, abandoned);
  session.calibrationDone(0, newer, std::make_shared<CalibrationOutcome>());
  EXPECT_EQ(session.at(0).calibration.status, JobStatus::kDone);
}

TEST_F(SessionWithTarget, ACalibrationThatIsNotToBeTrustedIsNotAccepted) {
  seeSteadily();
  session.apply(TakeView{});
  session.apply(Calibrate{});
  session.calibrationDone(0, session.at(0).revision, std::make_shared<CalibrationOutcome>());
  EXPECT_EQ(refusalOf(Accept{}),
            "this calibration is not to be trusted; add a view and calibrate again");
}

TEST_F(SessionWithTarget, WhatIsAcceptedIsNotAnyMoreAfterAChange) {
  const auto trusted = std::make_shared<CalibrationOutcome>();
  trusted->trusted = true;
  for (const Action& change :
       {Action(SetTolerance{0.1}), Action(SetBed{cv::Rect2d(0, 0, 300, 200)}), Action(TakeView{}),
        Action(SetTarget{checkedTarget("chessboard", 5, 3, 10, 0, 0)})}) {
    session.apply(SetTarget{checkedTarget("chessboard", 4, 3, 10, 0, 0)});
    seeSteadily();
    session.apply(TakeView{});
    session.apply(Calibrate{});
    session.calibrationDone(0, session.at(0).revision, trusted);
    session.apply(Accept{});
    ASSERT_TRUE(session.at(0).calibration.accepted);
    session.apply(change);
    EXPECT_FALSE(session.at(0).calibration.accepted);
    EXPECT_EQ(refusalOf(Save{}), "accept the calibration first");
  }
}

TEST_F(SessionWithTarget, TheFailureOfAnAbandonedCalibrationDoesNotEndItsSuccessor) {
  seeSteadily();
  session.apply(TakeView{});
  session.apply(Calibrate{});
  const int abandoned = session.calibrationBegins(0);
  session.apply(Reset{});
  seeSteadily();
  session.apply(TakeView{});
  session.apply(Calibrate{});
  session.calibrationStep(0, abandoned, 0.5, "solving");
  EXPECT_EQ(session.at(0).calibration.progress, 0);
  session.calibrationFailed(0, abandoned, "the points do not determine the camera");
  EXPECT_EQ(session.at(0).calibration.status, JobStatus::kRunning);
  session.calibrationDone(0, session.calibrationBegins(0), std::make_shared<CalibrationOutcome>());
  EXPECT_EQ(session.at(0).calibration.status, JobStatus::kDone);
}

TEST_F(SessionWithTarget, AFailedCalibrationSaysWhy) {
  seeSteadily();
  session.apply(TakeView{});
  session.apply(Calibrate{});
  session.calibrationFailed(0, session.at(0).revision, "view 1: too few points");
  EXPECT_EQ(shown()["calibration"]["status"], "failed");
  EXPECT_EQ(shown()["calibration"]["message"], "view 1: too few points");
}

}  // namespace
}  // namespace fisheye_calibration::program
