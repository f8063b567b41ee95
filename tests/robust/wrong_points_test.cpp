// Wrong points and wrong views in synthetic rigs.
#include "robust/wrong_points.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "robust/robust_calibration.h"
#include "robust/views.h"

using namespace fisheye_calibration;
using robust::RobustStatus;
using Indices = std::vector<std::size_t>;

namespace {

constexpr double kNoise = 0.35;  // px per coordinate: 0.5 px rms

support::RigView randomView(const support::RigCamera& camera, std::uint64_t seed,
                            const support::Bed& bed = {}) {
  support::Random random(seed);
  const double distance = random.uniform(150, 300);
  const double tiltX = random.uniform(-0.5, 0.5);
  const double tiltY = random.uniform(-0.5, 0.5);
  const double turn = random.uniform(-3, 3);
  return support::seen(camera, bed, support::poseOver(bed, distance, tiltX, tiltY, turn), kNoise,
                       seed);
}

// `count` different indices.
Indices randomIndices(support::Random& random, std::size_t size, std::size_t count) {
  std::set<std::size_t> chosen;
  while (chosen.size() < count) {
    chosen.insert(
        std::min(size - 1, static_cast<std::size_t>(random.uniform(0, static_cast<double>(size)))));
  }
  return {chosen.begin(), chosen.end()};
}

void shift(solver::ViewPoints& view, std::size_t i, double length, double azimuth) {
  view.image.x[i] += length * std::cos(azimuth);
  view.image.y[i] += length * std::sin(azimuth);
}

TEST(WrongPoints, EightPixelsAmongHalfAPixelAreFoundAndNothingElse) {
  const support::RigCamera camera;
  support::Random random(1);
  for (std::uint64_t seed = 1; seed <= 30; ++seed) {
    solver::ViewPoints view = robust_tests::viewPoints(randomView(camera, seed));
    const solver::ViewPoints clean = view;
    const Indices wrong = randomIndices(random, view.size(), 1 + seed % 12);  // up to 12 of 63
    for (const std::size_t i : wrong) {
      const double azimuth = random.uniform(0, 6.28);
      shift(view, i, random.uniform(8, 60), azimuth);
    }
    const auto result = robust::calibrateRobustly({view}, camera.imageSize);
    ASSERT_EQ(result.status, RobustStatus::kSolved) << seed;
    EXPECT_EQ(result.wrongPoints[0], wrong) << seed;
    const auto rest = robust::calibrateRobustly({robust::without(clean, wrong)}, camera.imageSize);
    EXPECT_NEAR(result.camera.fx, rest.camera.fx, 1e-5 * rest.camera.fx) << seed;
  }
}

// A wrong point among few bends the solution towards itself, and what the others predict is vague:
// of nine points it cannot always be found.
TEST(WrongPoints, EightPixelsAreFoundOnSmallTargets) {
  const support::RigCamera camera;
  struct Size {
    int columns, rows, found;
  };
  for (const Size& size :
       {Size{3, 3, 40}, Size{4, 3, 48}, Size{5, 3, 48}, Size{4, 4, 48}, Size{5, 4, 48}}) {
    support::Bed bed{.columns = size.columns, .rows = size.rows};
    bed.spacing = 320.0 / (size.columns - 1);
    support::Random random(3);
    int found = 0;
    for (std::uint64_t seed = 1; seed <= 50; ++seed) {
      solver::ViewPoints view = robust_tests::viewPoints(randomView(camera, seed, bed));
      const auto clean = robust::calibrateRobustly({view}, camera.imageSize);
      EXPECT_EQ(clean.wrongPoints[0], Indices()) << size.columns << 'x' << size.rows << ' ' << seed;
      const std::size_t wrong = randomIndices(random, view.size(), 1)[0];
      shift(view, wrong, 8, random.uniform(0, 6.28));
      const auto result = robust::calibrateRobustly({view}, camera.imageSize);
      ASSERT_EQ(result.status, RobustStatus::kSolved);
      found += result.wrongPoints[0] == Indices{wrong} ? 1 : 0;
    }
    EXPECT_GE(found, size.found) << size.columns << 'x' << size.rows;
  }
}

TEST(WrongPoints, SwappedPointsAreFound) {
  const support::RigCamera camera;
  solver::ViewPoints view = robust_tests::viewPoints(randomView(camera, 5));
  std::swap(view.image.x[10], view.image.x[40]);
  std::swap(view.image.y[10], view.image.y[40]);
  const auto result = robust::calibrateRobustly({view}, camera.imageSize);
  EXPECT_EQ(result.wrongPoints[0], (Indices{10, 40}));
}

TEST(WrongPoints, NoisyPointsAreNotTakenForWrong) {
  const support::RigCamera camera;
  for (std::uint64_t seed = 1; seed <= 200; ++seed) {
    const auto result = robust::calibrateRobustly(
        {robust_tests::viewPoints(randomView(camera, seed))}, camera.imageSize);
    ASSERT_EQ(result.status, RobustStatus::kSolved) << seed;
    EXPECT_TRUE(result.wrongPoints[0].empty()) << seed;
  }
}

TEST(WrongPoints, MoreThanAFifthAreRefusedAndListed) {
  const support::RigCamera camera;
  solver::ViewPoints view = robust_tests::viewPoints(randomView(camera, 6));
  Indices wrong;
  for (std::size_t i = 2; i < 63 && wrong.size() < 13; i += 4) {  // 13 of 63
    shift(view, i, 40, static_cast<double>(i));
    wrong.push_back(i);
  }
  const auto good = robust_tests::viewPoints(randomView(camera, 7));
  const auto result = robust::calibrateRobustly({good, view}, camera.imageSize);
  EXPECT_EQ(result.status, RobustStatus::kTooManyWrongPoints);
  EXPECT_EQ(result.refusedView, 1U);
  EXPECT_EQ(result.wrongPoints[1], wrong);
  EXPECT_TRUE(result.poses.empty());
}

TEST(WrongPoints, KeepAllListsThemAndUsesThem) {
  const support::RigCamera camera;
  solver::ViewPoints view = robust_tests::viewPoints(randomView(camera, 6));
  shift(view, 20, 30, 1);
  robust::RobustOptions options;
  options.keepAll = true;
  const auto kept = robust::calibrateRobustly({view}, camera.imageSize, options);
  const auto left = robust::calibrateRobustly({view}, camera.imageSize);
  ASSERT_EQ(kept.status, RobustStatus::kSolved);
  EXPECT_EQ(kept.wrongPoints[0], Indices{20});
  EXPECT_EQ(left.wrongPoints[0], Indices{20});
  EXPECT_GT(kept.rms, 3 * left.rms);
}

// Without two wrong points the rest lies on a line, which leaves the pose open: these two can
// neither be used nor left out.
TEST(WrongPoints, PointsThatThePoseDependsOnAreNotUsedSilently) {
  const support::RigCamera camera;
  const support::Bed bed;
  const solver::ViewPoints all = robust_tests::viewPoints(
      support::seen(camera, bed, support::poseOver(bed, 200, 0.3, -0.2, 0.4), 0.2, 3));
  solver::ViewPoints view;  // a row of nine points and one point on either side of it
  for (const std::size_t i : {27, 28, 29, 30, 31, 32, 33, 34, 35, 13, 49}) {
    view.X.push_back(all.X[i]);
    view.Y.push_back(all.Y[i]);
    view.Z.push_back(0);
    view.image.x.push_back(all.image.x[i]);
    view.image.y.push_back(all.image.y[i]);
  }
  robust::RobustOptions held;
  held.heldLens = robust::HeldLens{robust_tests::cameraOf(camera), {}};
  EXPECT_EQ(robust::calibrateRobustly({view}, camera.imageSize, held).status,
            RobustStatus::kSolved);
  for (const std::size_t i : {9, 10}) {
    shift(view, i, 20, 2);  // which no turn about the row explains
  }
  const auto result = robust::calibrateRobustly({view}, camera.imageSize, held);
  EXPECT_EQ(result.status, RobustStatus::kDegenerate);
  EXPECT_EQ(result.wrongPoints[0], (Indices{9, 10}));
}

TEST(WrongPoints, OneViewOfManyIsSearchedByItsOwnNoise) {
  const support::RigCamera camera;
  std::vector<solver::ViewPoints> views;
  for (std::uint64_t seed = 1; seed <= 6; ++seed) {
    views.push_back(robust_tests::viewPoints(randomView(camera, seed)));
  }
  shift(views[4], 33, 8, 2);
  const auto result = robust::calibrateRobustly(views, camera.imageSize);
  ASSERT_EQ(result.status, RobustStatus::kSolved);
  for (std::size_t j = 0; j < views.size(); ++j) {
    EXPECT_EQ(result.wrongPoints[j], j == 4 ? Indices{33} : Indices{}) << j;
  }
  EXPECT_TRUE(result.wrongViews.empty());
}

// A view taken with another zoom fits no joint lens.
TEST(WrongViews, AViewOfAnotherLensIsFoundAndLeftOut) {
  const support::RigCamera camera;
  support::RigCamera other = camera;
  other.fx *= 1.3;
  other.fy *= 1.3;
  for (const std::size_t count : {3U, 4U, 6U, 10U}) {
    std::vector<solver::ViewPoints> views;
    for (std::uint64_t seed = 1; seed <= count; ++seed) {
      views.push_back(robust_tests::viewPoints(randomView(seed == 2 ? other : camera, seed)));
    }
    const auto result = robust::calibrateRobustly(views, camera.imageSize);
    ASSERT_EQ(result.status, RobustStatus::kSolved) << count;
    EXPECT_EQ(result.wrongViews, Indices{1}) << count;
    EXPECT_EQ(result.poses.size(), count);
    EXPECT_TRUE(std::isnan(result.covariance[1](0, 0)));
    for (const Indices& wrong : result.wrongPoints) {
      EXPECT_TRUE(wrong.empty()) << count;
    }
    EXPECT_NEAR(result.camera.fx, camera.fx, 0.01 * camera.fx);
    views.erase(views.begin() + 1);
    const auto rest = robust::calibrateRobustly(views, camera.imageSize);
    EXPECT_NEAR(result.camera.fx, rest.camera.fx, 1e-5 * camera.fx);
  }
}

// A wrong view bends the lens of all, which makes good points elsewhere seem wrong.
TEST(WrongViews, PointsOfGoodViewsAreNotBlamedForAWrongView) {
  const support::RigCamera camera;
  support::RigCamera other = camera;
  other.k1 += 0.25;
  for (std::uint64_t first = 1; first <= 10; ++first) {
    std::vector<solver::ViewPoints> views;
    for (std::uint64_t k = 0; k < 5; ++k) {
      views.push_back(
          robust_tests::viewPoints(randomView(k == 2 ? other : camera, 10 * first + k)));
    }
    const auto result = robust::calibrateRobustly(views, camera.imageSize);
    ASSERT_EQ(result.status, RobustStatus::kSolved) << first;
    EXPECT_EQ(result.wrongViews, Indices{2}) << first;
    EXPECT_EQ(result.wrongPoints, robust::PointLists(5)) << first;
  }
}

TEST(WrongViews, TheirOwnWrongPointsDoNotMoveTheirPose) {
  const support::RigCamera camera;
  support::RigCamera other = camera;
  other.fx *= 1.3;
  other.fy *= 1.3;
  std::vector<solver::ViewPoints> views;
  for (std::uint64_t seed = 1; seed <= 5; ++seed) {
    views.push_back(robust_tests::viewPoints(randomView(seed == 2 ? other : camera, seed)));
  }
  const auto clean = robust::calibrateRobustly(views, camera.imageSize);
  shift(views[1], 30, 200, 1);
  const auto result = robust::calibrateRobustly(views, camera.imageSize);
  ASSERT_EQ(result.status, RobustStatus::kSolved);
  EXPECT_EQ(result.wrongViews, Indices{1});
  EXPECT_EQ(result.wrongPoints[1], Indices{30});
  robust::RobustOptions held;
  held.heldLens = robust::HeldLens{result.camera, {}};
  held.keepAll = true;
  const auto alone =
      robust::calibrateRobustly({robust::without(views[1], {30})}, camera.imageSize, held);
  EXPECT_LT(cv::norm(result.poses[1].T - alone.poses[0].T), 1e-6);
  EXPECT_LT(cv::norm(result.poses[1].T - clean.poses[1].T), 3);
}

TEST(WrongViews, GoodViewsAreKept) {
  const support::RigCamera camera;
  for (std::uint64_t first = 1; first <= 20; ++first) {
    std::vector<solver::ViewPoints> views;
    for (std::uint64_t k = 0; k < 3 + first % 5; ++k) {
      views.push_back(robust_tests::viewPoints(randomView(camera, 100 * first + k)));
    }
    const auto result = robust::calibrateRobustly(views, camera.imageSize);
    ASSERT_EQ(result.status, RobustStatus::kSolved) << first;
    EXPECT_TRUE(result.wrongViews.empty()) << first;
  }
}

TEST(WrongViews, MoreThanAFifthAreRefused) {
  const support::RigCamera camera;
  std::vector<solver::ViewPoints> views;
  for (std::uint64_t seed = 1; seed <= 9; ++seed) {
    support::RigCamera used = camera;
    if (seed % 4 == 0) {  // two of nine, of zoom 1.3 and 1.5
      used.fx *= 1.1 + 0.05 * static_cast<double>(seed);
      used.fy = used.fx;
    }
    views.push_back(robust_tests::viewPoints(randomView(used, seed)));
  }
  const auto result = robust::calibrateRobustly(views, camera.imageSize);
  EXPECT_EQ(result.status, RobustStatus::kTooManyWrongViews);
  EXPECT_EQ(result.wrongViews, (Indices{3, 7}));
}

}  // namespace
