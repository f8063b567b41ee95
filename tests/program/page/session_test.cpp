#include "page/session.h"

#include "program/page/session_with_target.h"

namespace fisheye_calibration::program {
namespace {

using nlohmann::json;

TEST_F(SessionWithTarget, ViewsAreTakenOfSteadyPicturesOnly) {
  EXPECT_EQ(refusalOf(TakeView{}), "the target is not found in the picture");
  session.searched(0, foundTarget(), 10);
  EXPECT_EQ(refusalOf(TakeView{}), "the picture moves; hold the target still for a moment");
  session.searched(0, foundTarget(3), 10);
  EXPECT_EQ(refusalOf(TakeView{}), "the picture moves; hold the target still for a moment");
  session.searched(0, foundTarget(3.5), 10);
  EXPECT_EQ(refusalOf(TakeView{}), "");
  measure(false);
  EXPECT_EQ(refusalOf(TakeView{}), "the picture moves; hold the target still for a moment");
  EXPECT_EQ(session.at(0).views.size(), 1U);
}

TEST_F(SessionWithTarget, AQuickSearchIsNotMeasuredWellEnoughForAView) {
  session.searched(0, foundTarget(0, false), 10);
  session.searched(0, foundTarget(0, false), 10);
  EXPECT_EQ(refusalOf(TakeView{}), "the picture moves; hold the target still for a moment");
}

TEST_F(SessionWithTarget, WhatIsThereInsteadOfTheTargetIsSaid) {
  session.searched(0, {.image = kSessionImage, .seen = "an 8 x 6 board is there"}, 10);
  EXPECT_EQ(refusalOf(TakeView{}), "the target is not found; an 8 x 6 board is there");
  EXPECT_EQ(shown()["detection"]["status"], "none");
}

TEST_F(SessionWithTarget, TheGainIsComputedOnceWhileThePictureIsSteady) {
  const Jobs jobs = seeSteadily();
  ASSERT_EQ(jobs.size(), 1U);
  EXPECT_EQ(jobs[0].kind, Job::Kind::kGain);
  EXPECT_TRUE(session.searched(0, foundTarget(), 10).empty());
  EXPECT_EQ(shown()["detection"]["ready"], true);
  measure(false);
  EXPECT_TRUE(session.searched(0, foundTarget(), 10).empty());
  EXPECT_EQ(shown()["detection"]["ready"], false);
  measure(true);
  EXPECT_EQ(session.searched(0, foundTarget(), 10).size(), 1U);
}

TEST_F(SessionWithTarget, AUsefulViewIsTakenByItselfIfThatIsWished) {
  seeSteadily();
  EXPECT_TRUE(gained(0.8).empty());
  EXPECT_EQ(shown()["gain"]["text"], "this first view gives an expected bed error of 0.8 mm");
  session.apply(SetAutoTake{true});
  const Jobs jobs = gained(0.8);
  ASSERT_EQ(jobs.size(), 1U);
  EXPECT_EQ(jobs[0].kind, Job::Kind::kExpect);
  ASSERT_EQ(session.at(0).views.size(), 1U);

  session.expectationDone(0, session.at(0).revision, {.onBed = 0.8});
  seeSteadily(200);
  gained(0.75);
  EXPECT_EQ(session.at(0).views.size(), 1U);
  EXPECT_EQ(shown()["gain"]["useful"], false);
  gained(0.4);
  EXPECT_EQ(session.at(0).views.size(), 2U);
}

TEST_F(SessionWithTarget, APoseThatHasBeenTakenIsNotTakenAgainByItself) {
  session.apply(SetAutoTake{true});
  for (const float shift : {0.0F, 200.0F}) {
    seeSteadily(shift);
    gained(0.1);
    session.expectationDone(0, session.at(0).revision, {.onBed = 0.8});
  }
  ASSERT_EQ(session.at(0).views.size(), 2U);
  for (const float shift : {1.0F, 201.0F}) {
    seeSteadily(shift);
    gained(0.1);
    EXPECT_EQ(shown()["gain"]["useful"], false);
  }
  EXPECT_EQ(session.at(0).views.size(), 2U);
  session.apply(DeleteView{0, 2});
  session.expectationDone(0, session.at(0).revision, {.onBed = 0.8});
  seeSteadily(201);
  gained(0.1);
  EXPECT_EQ(session.at(0).views.size(), 2U);
}

TEST_F(SessionWithTarget, AGainOfAnotherPoseOrOfQuickPointsTakesNoView) {
  session.apply(SetAutoTake{true});
  seeSteadily();
  const int before = session.at(0).steadyTime;
  measure(false);
  measure(true);
  session.searched(0, foundTarget(200), 10);
  session.searched(0, foundTarget(200), 10);
  EXPECT_TRUE(session.at(0).ready());
  EXPECT_TRUE(session.gainDone(0, session.at(0).revision, before, 0.8).empty());
  session.searched(0, foundTarget(200, false), 10);
  EXPECT_TRUE(gained(0.8).empty());
  EXPECT_TRUE(session.at(0).views.empty());
  session.searched(0, foundTarget(200), 10);
  gained(0.8);
  EXPECT_EQ(session.at(0).views.size(), 1U);
}

TEST_F(SessionWithTarget, WhyNoErrorCanBeExpectedIsSaid) {
  seeSteadily();
  session.apply(TakeView{});
  EXPECT_EQ(shown()["expectedProblem"], nullptr);
  session.expectationFailed(0, session.at(0).revision - 1, "old");
  EXPECT_EQ(shown()["expectedProblem"], nullptr);
  session.expectationFailed(0, session.at(0).revision, "too few points");
  EXPECT_EQ(shown()["expectedProblem"], "too few points");
  session.apply(TakeView{});
  EXPECT_EQ(shown()["expectedProblem"], nullptr);
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

TEST_F(SessionWithTarget, ViewsWaitWhileThePictureHasAnotherSize) {
  const Size other = {.width = 800, .height = 600};
  session.measured(0, other, 30, {}, {}, true);
  EXPECT_EQ(shown()["width"], 800) << "without views any size will do";
  measure(true);
  seeSteadily();
  session.apply(TakeView{});
  session.measured(0, other, 30, {}, {}, true);
  EXPECT_EQ(session.at(0).views.size(), 1U);
  EXPECT_EQ(shown()["width"], 640);
  EXPECT_EQ(shown()["status"], "lost");
  EXPECT_EQ(shown()["message"],
            "camera: the picture has 800x600 pixels now, the views have 640x480; set the camera "
            "back, or begin again in step 5");
  session.sourceLive(0);
  EXPECT_EQ(shown()["status"], "lost") << "frames come, but cannot be used";
  measure(true);
  EXPECT_EQ(shown()["status"], "live");
  EXPECT_EQ(shown()["message"], nullptr);
  session.measured(0, other, 30, {}, {}, true);
  session.apply(Reset{});
  session.measured(0, other, 30, {}, {}, true);
  EXPECT_EQ(shown()["status"], "live");
  EXPECT_EQ(shown()["width"], 800);
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
