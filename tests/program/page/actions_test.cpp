#include "page/actions.h"

#include <gtest/gtest.h>

#include <string>

#include "base/failure.h"
#include "detection/markers.h"

namespace fisheye_calibration::program {
namespace {

std::string complaintOf(const std::string& json, std::size_t sources = 1) {
  try {
    parseAction(json, sources);
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.code(), kExitBadInput) << json;
    return failure.what();
  }
  return "";
}

TEST(Actions, ATargetIsReadWithItsPlace) {
  const Action action = parseAction(
      R"({"action":"setTarget","kind":"chessboard","columns":8,"rows":6,"spacing":39.5,"originX":10})",
      1);
  const ChosenTarget chosen = std::get<SetTarget>(action).chosen;
  EXPECT_EQ(chosen.target.kind, TargetKind::kChessboard);
  EXPECT_EQ(chosen.target.columns, 8);
  EXPECT_EQ(chosen.target.rows, 6);
  EXPECT_EQ(chosen.world.spacing, 39.5F);
  EXPECT_EQ(chosen.world.origin.first, 10.0F);
  EXPECT_EQ(chosen.world.origin.second, 0.0F);
}

TEST(Actions, ABedAndAToleranceCanBeTakenAway) {
  EXPECT_FALSE(std::get<SetBed>(parseAction(R"({"action":"setBed","bed":null})", 1)).bed);
  const auto bed = std::get<SetBed>(
      parseAction(R"({"action":"setBed","x":-5,"y":0,"width":600,"height":400})", 1));
  EXPECT_EQ(*bed.bed, cv::Rect2d(-5, 0, 600, 400));
  EXPECT_EQ(std::get<SetTolerance>(parseAction(R"({"action":"setTolerance","tolerance":null})", 1))
                .tolerance,
            0);
}

TEST(Actions, SourcesAreThoseThatAreThere) {
  EXPECT_FALSE(std::get<TakeView>(parseAction(R"({"action":"takeView"})", 2)).source);
  EXPECT_EQ(*std::get<TakeView>(parseAction(R"({"action":"takeView","source":1})", 2)).source, 1U);
  EXPECT_EQ(complaintOf(R"({"action":"takeView","source":1})", 1),
            "source is too small or too large");
}

TEST(Actions, NonsenseIsRefusedInWords) {
  EXPECT_EQ(complaintOf(""), "the request is no JSON object");
  EXPECT_EQ(complaintOf("[]"), "the request is no JSON object");
  EXPECT_EQ(complaintOf(R"({"action":"setStep","step":1}x)"), "the request is no JSON object");
  EXPECT_EQ(complaintOf("{}"), "action is missing or no text");
  EXPECT_EQ(complaintOf(R"({"action":7})"), "action is missing or no text");
  EXPECT_EQ(complaintOf(R"({"action":"format"})"), "there is no such action");
  EXPECT_EQ(complaintOf(R"({"action":"setStep","step":1.5})"), "step is not a whole number");
  EXPECT_EQ(complaintOf(R"({"action":"setStep","step":6})"), "step is too small or too large");
  EXPECT_EQ(complaintOf(R"({"action":"setStep","step":"1"})"), "step is missing or no number");
  EXPECT_EQ(complaintOf(R"({"action":"setAutoTake","on":1})"),
            "on is missing or neither true nor false");
  EXPECT_EQ(complaintOf(std::string(10000, '[')), "the request is nested too deeply");
}

TEST(Actions, TargetsHaveLimits) {
  const auto target = [](const char* kind, double columns, double rows, double spacing) {
    try {
      checkedTarget(kind, columns, rows, spacing, 0, 0);
    } catch (const Failure& failure) {
      return std::string(failure.what());
    }
    return std::string();
  };
  EXPECT_EQ(target("chessboard", 3, 3, 1), "");
  EXPECT_EQ(target("chessboard", 2, 3, 1), "columns and rows are whole numbers from 3 to 200");
  EXPECT_EQ(target("circles", 2, 201, 1), "columns and rows are whole numbers from 2 to 200");
  EXPECT_EQ(target("circles", 2.5, 4, 1), "columns and rows are whole numbers from 2 to 200");
  EXPECT_EQ(target("circles", 4, 4, 0), "the spacing is more than 0.01 mm and at most 10000 mm");
  EXPECT_EQ(target("../circles", 4, 4, 1),
            "kind is charuco, chessboard, circles or asymmetricCircles");
  if (markersAvailable()) {
    EXPECT_EQ(target("charuco", 100, 100, 1), "there are not enough markers for so many squares");
  }
}

}  // namespace
}  // namespace fisheye_calibration::program
