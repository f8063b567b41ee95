#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <new>
#include <vector>

#include "fisheye_calibration.h"
#include "support/limited_memory.h"
#include "support/plain_stitching.h"

#if __has_include(<rapidcheck.h>)  // not for Windows
#include <rapidcheck.h>
#endif

namespace {

CalibrationPoint point(int id, float Xw = 0) {
  CalibrationPoint result{};
  result.PointId = id;
  result.Xw = Xw;
  return result;
}

std::vector<CalibrationPoint> withIds(const std::vector<int>& ids) {
  std::vector<CalibrationPoint> points;
  for (const int id : ids) points.push_back(point(id));
  return points;
}

std::vector<int> idsOf(const std::vector<CalibrationPoint>& points) {
  std::vector<int> ids;
  for (const CalibrationPoint& p : points) ids.push_back(p.PointId);
  return ids;
}

struct Common {
  std::vector<CalibrationPoint> first;
  std::vector<CalibrationPoint> second;
};

Common commonOf(const std::vector<int>& first, const std::vector<int>& second, int idCount) {
  Common common;
  GetCommonPoints(withIds(first), withIds(second), idCount, common.first, common.second);
  return common;
}

using Ids = std::vector<int>;

TEST(CommonPoints, SharedIdsComeOutInAscendingOrder) {
  const Common common = commonOf({3, 1, 2}, {2, 3, 5}, 6);
  EXPECT_EQ(idsOf(common.first), (Ids{2, 3}));
  EXPECT_EQ(idsOf(common.second), (Ids{2, 3}));
}

TEST(CommonPoints, EmptyIdRangeLeavesTheOutputsUnchanged) {
  for (const int idCount : {0, -1, std::numeric_limits<int>::min()}) {
    Common common{withIds({8}), withIds({9})};
    GetCommonPoints(withIds({1, 2}), withIds({1, 2}), idCount, common.first, common.second);
    EXPECT_EQ(idsOf(common.first), Ids{8}) << idCount;
    EXPECT_EQ(idsOf(common.second), Ids{9}) << idCount;
  }
}

TEST(CommonPoints, ListsThatShareNothingLeaveTheOutputsUnchanged) {
  Common common{withIds({8}), withIds({9})};
  GetCommonPoints(withIds({1, 2}), withIds({3, 4}), 4, common.first, common.second);
  EXPECT_EQ(idsOf(common.first), Ids{8});
  EXPECT_EQ(idsOf(common.second), Ids{9});
}

TEST(CommonPoints, ExhaustedMemoryIsRaised) {
  Common common;
  int count = 0;
  for (bool raised = true; raised && count < 100; ++count) {
    raised = false;
    support::runsOutOfMemory(count, [&] {
      try {
        common = commonOf({1, 2, 3}, {3, 2}, 5);
      } catch (const std::bad_alloc&) {
        raised = true;
      }
    });
  }
  EXPECT_GT(count, 6);  // the lists, their copies, the outputs
  EXPECT_EQ(idsOf(common.first), (Ids{2, 3}));
}

TEST(CommonPoints, AnIdTwiceInOneListCountsAsSharedAndBreaksThePairing) {
  const Common common = commonOf({4, 7, 4}, {7}, 10);
  EXPECT_EQ(idsOf(common.first), (Ids{4, 4, 7}));
  EXPECT_EQ(idsOf(common.second), (Ids{7}));
  const Common other = commonOf({7}, {4, 7, 4}, 10);
  EXPECT_EQ(idsOf(other.first), (Ids{7}));
  EXPECT_EQ(idsOf(other.second), (Ids{4, 4, 7}));
}

TEST(CommonPoints, TwinsKeepTheirInputOrder) {
  std::vector<CalibrationPoint> first;
  std::vector<CalibrationPoint> second;
  GetCommonPoints({point(2, 10), point(1, 5), point(2, 20)}, {}, 3, first, second);
  ASSERT_EQ(first.size(), 2U);
  EXPECT_EQ(first[0].Xw, 10);
  EXPECT_EQ(first[1].Xw, 20);
  EXPECT_TRUE(second.empty());
}

TEST(CommonPoints, AnIdThatOccursThreeTimesIsDropped) {
  const Common common = commonOf({1, 2}, {2, 1, 1}, 5);
  EXPECT_EQ(idsOf(common.first), (Ids{2}));
  EXPECT_EQ(idsOf(common.second), (Ids{2}));
}

TEST(CommonPoints, OutputsAreAppendedTo) {
  std::vector<CalibrationPoint> first = withIds({90, 91});
  std::vector<CalibrationPoint> second = withIds({92});
  GetCommonPoints(withIds({5}), withIds({5}), 5, first, second);
  EXPECT_EQ(idsOf(first), (Ids{90, 91, 5}));
  EXPECT_EQ(idsOf(second), (Ids{92, 5}));
}

TEST(CommonPoints, EveryFieldIsCopiedIncludingTheReservedOnes) {
  CalibrationPoint a{};
  CalibrationPoint b{};
  std::memset(&a, 0x41, sizeof a);
  std::memset(&b, 0x42, sizeof b);
  a.PointId = b.PointId = 1;
  std::vector<CalibrationPoint> first;
  std::vector<CalibrationPoint> second;
  GetCommonPoints({a}, {b}, 1, first, second);
  ASSERT_EQ(first.size(), 1U);
  ASSERT_EQ(second.size(), 1U);
  EXPECT_EQ(std::memcmp(&first[0], &a, sizeof a), 0);
  EXPECT_EQ(std::memcmp(&second[0], &b, sizeof b), 0);
}

TEST(CommonPoints, IdsOutOfRangeAreSkipped) {
  constexpr int lowest = std::numeric_limits<int>::min();
  constexpr int highest = std::numeric_limits<int>::max();
  const Common common = commonOf({0, -3, lowest, highest, 6, 5}, {0, -3, lowest, highest, 6, 5}, 5);
  EXPECT_EQ(idsOf(common.first), (Ids{5}));
  EXPECT_EQ(idsOf(common.second), (Ids{5}));
}

TEST(CommonPoints, TheLargestRangeNeedsNoMemoryOfItsSize) {
  constexpr int highest = std::numeric_limits<int>::max();
  const Common common = commonOf({highest, 1}, {1, highest}, highest);
  EXPECT_EQ(idsOf(common.first), (Ids{1, highest}));
  EXPECT_EQ(idsOf(common.second), (Ids{1, highest}));
}

#if __has_include(<rapidcheck.h>)
TEST(CommonPoints, AgreesWithCountersForAnyLists) {
  EXPECT_TRUE(rc::check([] {
    const auto ids = rc::gen::container<Ids>(rc::gen::inRange(-2, 20));
    const Ids firstIds = *ids;
    const Ids secondIds = *ids;
    const int idCount = *rc::gen::inRange(-1, 18);
    const Common ours = commonOf(firstIds, secondIds, idCount);
    Common plainly;
    plain::getCommonPoints(withIds(firstIds), withIds(secondIds), idCount, plainly.first,
                           plainly.second);
    RC_ASSERT(idsOf(ours.first) == idsOf(plainly.first));
    RC_ASSERT(idsOf(ours.second) == idsOf(plainly.second));
  }));
}
#endif

}  // namespace
