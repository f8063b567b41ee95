#include "page/session.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "page/session_json.h"

namespace fisheye_calibration::program {
namespace {

using nlohmann::json;

constexpr Size kImage = {.width = 640, .height = 480};

SearchResult found(float shift = 0, bool exact = true) {
  SearchResult result{.frame = 7, .image = kImage, .exact = exact};
  for (int id = 1; id <= 12; ++id) {
    const auto x = static_cast<float>(40 * id);
    result.points.push_back(
        {.PointId = id, .Xw = x, .Yw = 0, .ImagePtX = x + shift, .ImagePtY = 9});
  }
  return result;
}

class SessionWithTarget : public testing::Test {
 protected:
  SessionWithTarget() {
    session.apply(SetTarget{checkedTarget("chessboard", 4, 3, 10, 0, 0)});
    session.apply(SetStep{2});
    session.sourceLive(0);
    measure(true);
  }

  void measure(bool still) { session.measured(0, kImage, 30, {}, {}, still); }

  Jobs seeSteadily() {
    session.searched(0, found(), 10);
    return session.searched(0, found(), 10);
  }

  std::string refusalOf(const Action& action) {
    try {
      session.apply(action);
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "";
  }

  json shown() const { return json::parse(snapshotOf(session, {"id", "1"}))["sources"][0]; }

  Session session{{"camera"}, "out"};
};

TEST_F(SessionWithTarget, ViewsAreTakenOfSteadyPicturesOnly) {
  EXPECT_EQ(refusalOf(TakeView{}), "the target is not found in the picture");
  session.searched(0, found(), 10);
  EXPECT_EQ(refusalOf(TakeView{}), "the picture moves; hold the target still for a moment");
  session.searched(0, found(3), 10);
  EXPECT_EQ(refusalOf(TakeView{}), "the picture moves; hold the target still for a moment");
  session.searched(0, found(3.5), 10);
  EXPECT_EQ(refusalOf(TakeView{}), "");
  measure(false);
  EXPECT_EQ(refusalOf(TakeView{}), "the picture moves; hold the target still for a moment");
  EXPECT_EQ(session.at(0).views.size(), 1U);
}

TEST_F(SessionWithTarget, AQuickSearchIsNotMeasuredWellEnoughForAView) {
  session.searched(0, found(0, false), 10);
  session.searched(0, found(0, false), 10);
  EXPECT_EQ(refusalOf(TakeView{}), "the picture moves; hold the target still for a moment");
}

TEST_F(SessionWithTarget, WhatIsThereInsteadOfTheTargetIsSaid) {
  session.searched(0, {.image = kImage, .seen = "an 8 x 6 board is there"}, 10);
  EXPECT_EQ(refusalOf(TakeView{}), "the target is not found; an 8 x 6 board is there");
  EXPECT_EQ(shown()["detection"]["status"], "none");
}

TEST_F(SessionWithTarget, TheGainIsComputedOnceWhileThePictureIsSteady) {
  const Jobs jobs = seeSteadily();
  ASSERT_EQ(jobs.size(), 1U);
  EXPECT_EQ(jobs[0].kind, Job::Kind::kGain);
  EXPECT_TRUE(session.searched(0, found(), 10).empty());
  EXPECT_EQ(shown()["detection"]["ready"], true);
  measure(false);
  EXPECT_TRUE(session.searched(0, found(), 10).empty());
  EXPECT_EQ(shown()["detection"]["ready"], false);
  measure(true);
  EXPECT_EQ(session.searched(0, found(), 10).size(), 1U);
}

TEST_F(SessionWithTarget, AUsefulViewIsTakenByItselfIfThatIsWished) {
  seeSteadily();
  EXPECT_TRUE(session.gainDone(0, session.at(0).revision, 0.8).empty());
  EXPECT_EQ(shown()["gain"]["text"], "this first view gives an expected bed error of 0.8 mm");
  session.apply(SetAutoTake{true});
  const Jobs jobs = session.gainDone(0, session.at(0).revision, 0.8);
  ASSERT_EQ(jobs.size(), 1U);
  EXPECT_EQ(jobs[0].kind, Job::Kind::kExpect);
  ASSERT_EQ(session.at(0).views.size(), 1U);

  session.expectationDone(0, session.at(0).revision, {.onBed = 0.8});
  session.gainDone(0, session.at(0).revision, 0.75);
  EXPECT_EQ(session.at(0).views.size(), 1U);
  EXPECT_EQ(shown()["gain"]["useful"], false);
  session.gainDone(0, session.at(0).revision, 0.4);
  EXPECT_EQ(session.at(0).views.size(), 2U);
}

TEST_F(SessionWithTarget, TheFirstViewLiesOnTheBedUntilAnotherIsChosenOrItIsDeleted) {
  seeSteadily();
  session.apply(TakeView{});
  session.apply(TakeView{});
  session.apply(TakeView{});
  EXPECT_EQ(session.at(0).bedView, 1);
  session.apply(SetBedView{0, 3});
  EXPECT_EQ(session.wishOf(0).bedView, 2U);
  session.apply(DeleteView{0, 3});
  EXPECT_EQ(session.at(0).bedView, 1);
  EXPECT_EQ(refusalOf(DeleteView{0, 3}), "that view is not there any more");
  EXPECT_EQ(shown()["views"].size(), 2U);
}

TEST_F(SessionWithTarget, CoverageCountsThePointsOfTakenViews) {
  seeSteadily();
  session.apply(TakeView{});
  const json coverage = shown()["coverage"];
  int sum = 0;
  for (const int count : coverage["counts"]) {
    sum += count;
  }
  EXPECT_EQ(sum, 12);
  EXPECT_EQ(coverage["counts"][0], 1);  // x = 40 of 640 in the first of 12 columns
  EXPECT_EQ(coverage["counts"][1], 1);  // x = 80
}

TEST_F(SessionWithTarget, AnotherTargetForgetsTheViews) {
  seeSteadily();
  session.apply(TakeView{});
  session.apply(SetTarget{checkedTarget("chessboard", 5, 3, 10, 0, 0)});
  EXPECT_TRUE(session.at(0).views.empty());
  EXPECT_EQ(shown()["detection"]["status"], "searching");
}

TEST_F(SessionWithTarget, AFrameOfAnotherSizeForgetsTheViews) {
  seeSteadily();
  session.apply(TakeView{});
  session.measured(0, {.width = 800, .height = 600}, 30, {}, {}, true);
  EXPECT_TRUE(session.at(0).views.empty());
}

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

TEST_F(SessionWithTarget, ACalibrationThatIsNotToBeTrustedIsNotAccepted) {
  seeSteadily();
  session.apply(TakeView{});
  session.apply(Calibrate{});
  session.calibrationDone(0, session.at(0).revision, std::make_shared<CalibrationOutcome>());
  EXPECT_EQ(refusalOf(Accept{}),
            "this calibration is not to be trusted; add a view and calibrate again");
}

TEST_F(SessionWithTarget, AFailedCalibrationSaysWhy) {
  seeSteadily();
  session.apply(TakeView{});
  session.apply(Calibrate{});
  session.calibrationFailed(0, "view 1: too few points");
  EXPECT_EQ(shown()["calibration"]["status"], "failed");
  EXPECT_EQ(shown()["calibration"]["message"], "view 1: too few points");
}

TEST_F(SessionWithTarget, ALostSourceKeepsItsViews) {
  seeSteadily();
  session.apply(TakeView{});
  session.sourceLost(0, "camera: gone");
  EXPECT_EQ(shown()["status"], "lost");
  EXPECT_EQ(shown()["message"], "camera: gone");
  EXPECT_EQ(shown()["views"].size(), 1U);
  session.sourceLive(0);
  EXPECT_EQ(shown()["status"], "live");
}

TEST(Session, EveryChangeHasANewNumber) {
  Session session({"a", "b"}, "");
  std::uint64_t last = session.number();
  const auto isNewer = [&] {
    const bool newer = session.number() > last;
    last = session.number();
    return newer;
  };
  session.apply(SetStep{2});
  EXPECT_TRUE(isNewer());
  session.sourceLost(1, "b: gone");
  EXPECT_TRUE(isNewer());
  session.sourceLost(1, "b: gone");
  EXPECT_FALSE(isNewer());
  session.apply(SetBed{cv::Rect2d(0, 0, 600, 400)});
  EXPECT_TRUE(isNewer());
}

TEST(Session, WithoutAFolderNothingCanBeSaved) {
  Session session({"a"}, "");
  EXPECT_THROW(session.apply(Save{}), Failure);
  EXPECT_EQ(json::parse(snapshotOf(session, {"id", "1"}))["folder"], nullptr);
}

TEST(Session, StitchingNeedsTwoCalibratedCameras) {
  Session one({"a"}, "");
  EXPECT_THROW(one.apply(Stitch{}), Failure);
  EXPECT_EQ(json::parse(snapshotOf(one, {"id", "1"}))["stitch"], nullptr);
  Session two({"a", "b"}, "");
  EXPECT_THROW(two.apply(Stitch{}), Failure);
  EXPECT_EQ(json::parse(snapshotOf(two, {"id", "1"}))["stitch"]["status"], "none");
}

}  // namespace
}  // namespace fisheye_calibration::program
