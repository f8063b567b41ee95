#include "visual_cxx/bridge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>
#include <vector>

namespace fisheye_calibration::visual_cxx {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// The outcome of an exception; the text is "untouched" where there is none.
template <class Exception>
Outcome outcomeOf(const Exception& exception, std::string& text) {
  Failure failure = {"untouched"};
  Outcome outcome = Outcome::kTrue;
  try {
    throw exception;
  } catch (...) {
    outcome = outcomeOfException(failure);
  }
  text = failure.text;
  return outcome;
}

CalibrationPoint pointWithId(int id) {
  CalibrationPoint point{};
  point.PointId = id;
  return point;
}

TEST(OutcomeOfException, IsLackOfMemoryWhicheverLibraryReportsIt) {
  std::string text;
  EXPECT_EQ(outcomeOf(std::bad_alloc(), text), Outcome::kOutOfMemory);
  EXPECT_EQ(outcomeOf(std::length_error("vector"), text), Outcome::kOutOfMemory);
  const cv::Exception noMemory(cv::Error::StsNoMem, "Failed to allocate", "f", "file", 1);
  EXPECT_EQ(outcomeOf(noMemory, text), Outcome::kOutOfMemory);
  EXPECT_EQ(text, "untouched");
}

TEST(OutcomeOfException, HasTheWholeTextOfOtherFailures) {
  std::string text;
  const cv::Exception failed(cv::Error::StsAssert, "a == b", "f", "file", 1);
  EXPECT_EQ(outcomeOf(failed, text), Outcome::kFailed);
  EXPECT_EQ(text, failed.what());
  EXPECT_EQ(outcomeOf(std::out_of_range("an index"), text), Outcome::kFailed);
  EXPECT_EQ(text, "an index");
}

TEST(OutcomeOfException, HasATextForWhatIsNoException) {
  std::string text;
  EXPECT_EQ(outcomeOf(42, text), Outcome::kFailed);
  EXPECT_EQ(text, "an exception of unknown type");
}

TEST(OutcomeOfException, CutsLongTexts) {
  std::string text;
  const std::string longest(kTextLength - 1, 'x');
  EXPECT_EQ(outcomeOf(std::runtime_error(longest), text), Outcome::kFailed);
  EXPECT_EQ(text, longest);
  EXPECT_EQ(outcomeOf(std::runtime_error(longest + "y"), text), Outcome::kFailed);
  EXPECT_EQ(text, longest);
}

TEST(Bridge, StopsAtTheFirstPointThatTheHostCannotAppend) {
  const std::vector points = {pointWithId(1), pointWithId(2)};
  const PointList list = {points.data(), points.size()};
  std::vector<int> appended;
  // Room for three points.
  const Append append = [](void* vector, const CalibrationPoint* point) {
    auto& ids = *static_cast<std::vector<int>*>(vector);
    if (ids.size() == 3) {
      return false;
    }
    ids.push_back(point->PointId);
    return true;
  };
  Failure failure = {};
  EXPECT_EQ(bridgeGetCommonPoints(&list, &list, 2, append, &appended, &appended, &failure),
            Outcome::kOutOfMemory);
  EXPECT_THAT(appended, ElementsAre(1, 1, 2));
}

TEST(Bridge, TakesEmptyListsWithoutMemory) {
  const PointList none = {nullptr, 0};
  double params[8] = {};
  double errorX = -1;
  double errorY = -1;
  Failure failure = {};
  EXPECT_EQ(bridgeHandEyeCalibration(&none, params, &errorX, &errorY, &failure), Outcome::kFalse);
  const Append append = [](void*, const CalibrationPoint*) { return false; };
  EXPECT_EQ(bridgeGetCommonPoints(&none, &none, 9, append, nullptr, nullptr, &failure),
            Outcome::kTrue);
}

TEST(Bridge, ReturnsTheTextOfTheImageLibrary) {
  const std::vector points = {pointWithId(1), pointWithId(2), pointWithId(3)};
  const PointList three = {points.data(), points.size()};
  double params[8] = {};
  double value = 0;
  Failure failure = {};
  EXPECT_EQ(bridgeGetPerspectiveTransformationParam(&three, params, &value, &value, &failure),
            Outcome::kFailed);
  EXPECT_THAT(failure.text, HasSubstr("getPerspectiveTransform"));
}

}  // namespace
}  // namespace fisheye_calibration::visual_cxx
