// Real lenses: every view is solved, and the predicted bound on the bed error covers the actual
// one.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "lens/rotation.h"
#include "robust/bed_error.h"
#include "robust/fit.h"
#include "robust/point_rows.h"
#include "robust/robust_calibration.h"
#include "robust/viewing_ray.h"
#include "robust/views.h"
#include "support/measured_views_test_base.h"

using namespace fisheye_calibration;
using robust::RobustStatus;

namespace {

class RobustMeasuredViews : public support::MeasuredViewsTest {
 protected:
  static std::vector<support::MeasuredCamera> cameras() {
    std::vector<support::MeasuredCamera> all;
    for (const char* set : {"garage", "office_mono", "office_stereo"}) {
      for (const support::MeasuredCamera& camera : support::readMeasuredSet(set)) {
        all.push_back(camera);
      }
    }
    return all;
  }
};

TEST_F(RobustMeasuredViews, EveryViewIsSolvedFromAnyStartWithoutLosingAPoint) {
  int solved = 0;
  for (const support::MeasuredCamera& camera : cameras()) {
    for (const support::MeasuredView& measured : camera.views) {
      SCOPED_TRACE(camera.name + ' ' + measured.name);
      const std::vector<solver::ViewPoints> view{
          robust_tests::viewPoints(measured.objectPoints, measured.imagePoints)};
      const auto usual = robust::calibrateRobustly(view, measured.imageSize);
      ASSERT_EQ(usual.status, RobustStatus::kSolved);
      EXPECT_TRUE(usual.wrongPoints[0].empty());
      for (const double factor : {0.75, 1.33}) {
        robust::RobustOptions options;
        options.startFocalFactor = factor;
        const auto other = robust::calibrateRobustly(view, measured.imageSize, options);
        ASSERT_EQ(other.status, RobustStatus::kSolved);
        EXPECT_NEAR(other.camera.fx, usual.camera.fx, 1e-5 * usual.camera.fx);
        EXPECT_NEAR(other.camera.k0, usual.camera.k0, 1e-5);
        EXPECT_NEAR(other.rms, usual.rms, 1e-6 * usual.rms);
      }
      ++solved;
    }
  }
  EXPECT_EQ(solved, 217);
}

// The residuals of an independent least-squares fit of all views; no view or point is dropped.
TEST_F(RobustMeasuredViews, AllViewsTogetherReachTheKnownResiduals) {
  const double expected[] = {0.445, 1.511, 0.421, 0.449};
  const auto all = cameras();
  ASSERT_EQ(all.size(), 4U);
  for (std::size_t i = 0; i < all.size(); ++i) {
    const auto result =
        robust::calibrateRobustly(robust_tests::viewPoints(all[i]), all[i].views[0].imageSize);
    ASSERT_EQ(result.status, RobustStatus::kSolved) << all[i].name;
    EXPECT_NEAR(result.rms, expected[i], 0.0006) << all[i].name;
    EXPECT_TRUE(result.wrongViews.empty()) << all[i].name;
    for (const auto& wrong : result.wrongPoints) {
      EXPECT_TRUE(wrong.empty()) << all[i].name;
    }
  }
}

// Some of these views reach 90 degrees, where the model ends.
TEST_F(RobustMeasuredViews, AnyFewViewsAreSolved) {
  support::Random random(3);
  for (const support::MeasuredCamera& camera : cameras()) {
    const std::vector<solver::ViewPoints> all = robust_tests::viewPoints(camera);
    for (int round = 0; round < 60; ++round) {
      std::vector<solver::ViewPoints> some;
      for (int k = 0; k < 2 + round % 3; ++k) {
        const auto last = static_cast<double>(all.size()) - 1e-6;
        some.push_back(all[static_cast<std::size_t>(random.uniform(0, last))]);
      }
      EXPECT_EQ(robust::calibrateRobustly(some, camera.views[0].imageSize).status,
                RobustStatus::kSolved)
          << camera.name << ' ' << round;
    }
  }
}

TEST_F(RobustMeasuredViews, PointsEightPixelsOffAreFound) {
  support::Random random(2);
  int views = 0;
  int exact = 0;
  for (const support::MeasuredCamera& camera : cameras()) {
    for (const support::MeasuredView& measured : camera.views) {
      auto view = robust_tests::viewPoints(measured.objectPoints, measured.imagePoints);
      if (robust::calibrateRobustly({view}, measured.imageSize).rms > 0.5) {
        continue;
      }
      std::vector<std::size_t> wrong;
      for (std::size_t i = static_cast<std::size_t>(random.uniform(0, 6)); i < view.size();
           i += 6) {
        const double azimuth = random.uniform(0, 2 * CV_PI);
        view.image.x[i] += 8 * std::cos(azimuth);
        view.image.y[i] += 8 * std::sin(azimuth);
        wrong.push_back(i);
      }
      const auto result = robust::calibrateRobustly({view}, measured.imageSize);
      ++views;
      exact += result.wrongPoints[0] == wrong ? 1 : 0;
    }
  }
  EXPECT_GT(views, 150);
  EXPECT_GE(exact, views - views / 50);
}

std::vector<cv::Point2d> gridOver(const cv::Point2d& centre, double width, double height) {
  constexpr int kSide = 15;
  std::vector<cv::Point2d> grid;
  for (int i = 0; i < kSide; ++i) {
    for (int j = 0; j < kSide; ++j) {
      grid.emplace_back(centre.x + width * (j / (kSide - 1.0) - 0.5),
                        centre.y + height * (i / (kSide - 1.0) - 0.5));
    }
  }
  return grid;
}

// The target's box, 1.5 times as large.
std::vector<cv::Point2d> gridAroundTarget(const solver::ViewPoints& view) {
  const auto [left, right] = std::minmax_element(view.X.begin(), view.X.end());
  const auto [top, bottom] = std::minmax_element(view.Y.begin(), view.Y.end());
  return gridOver({(*left + *right) / 2, (*top + *bottom) / 2}, 1.5 * (*right - *left),
                  1.5 * (*bottom - *top));
}

// What the corrected picture of the raw size shows: around the bed point of the optical axis, with
// the scale of the pinhole image between the first and the last target point.
std::vector<cv::Point2d> gridOfCorrectedPicture(const robust::BedView& found,
                                                const solver::ViewPoints& view,
                                                const cv::Size& size) {
  const auto centre =
      robust::bedPointOf(found.camera, found.pose, {found.camera.cx, found.camera.cy});
  if (!centre) {
    return {};
  }
  const cv::Matx33d R = lens::rotationFromVector(found.pose.om);
  const auto pinhole = [&](std::size_t i) {
    return lens::projectPinhole(found.camera, R, found.pose.T, {view.X[i], view.Y[i], 0});
  };
  const std::size_t last = view.size() - 1;
  const double pixel = std::hypot(view.X[0] - view.X[last], view.Y[0] - view.Y[last]) /
                       cv::norm(pinhole(0) - pinhole(last));
  return gridOver(*centre, pixel * size.width, pixel * size.height);
}

// Those that the camera sees within the picture.
std::vector<cv::Point2d> withinPicture(const std::vector<cv::Point2d>& grid,
                                       const robust::BedView& found, const cv::Size& size) {
  const robust::PosedCamera posed(found.camera, found.pose);
  std::vector<cv::Point2d> inside;
  for (const cv::Point2d& g : grid) {
    const robust::PointRows rows = robust::pointRows(posed, g.x, g.y, 0);
    const cv::Rect2d picture(-0.5, -0.5, size.width, size.height);
    if (rows.depth > 0 && picture.contains({rows.pixel[0], rows.pixel[1]})) {
      inside.push_back(g);
    }
  }
  return inside;
}

double largest(const std::vector<double>& values) {
  double most = 0;
  for (const double value : values) {
    most = std::isnan(value) ? most : std::max(most, value);
  }
  return most;
}

// How many views' worst error, and of how many, stays below the worst bound.
struct Coverage {
  int covered = 0;
  int views = 0;

  void add(const robust::BedView& truth, const robust::BedView& found,
           const std::vector<cv::Point2d>& grid) {
    std::vector<double> errors = robust::judgedBedErrors(truth, found.camera, found.pose, grid);
    std::vector<double> bounds = robust::bedBounds(found, grid);
    for (std::size_t i = 0; i < grid.size(); ++i) {
      if (std::isnan(errors[i]) || std::isnan(bounds[i])) {  // one of them does not see the point
        errors[i] = bounds[i] = std::numeric_limits<double>::quiet_NaN();
      }
    }
    const double bound = largest(bounds);
    ++views;
    covered += bound > 0 && largest(errors) <= bound ? 1 : 0;
  }
  double share() const { return static_cast<double>(covered) / views; }
};

template <class T>
std::vector<T> withoutOne(std::vector<T> all, std::size_t index) {
  all.erase(all.begin() + static_cast<std::ptrdiff_t>(index));
  return all;
}

// Truth for a view: the lens of all other views of the camera, with the pose that it gives this
// view.
TEST_F(RobustMeasuredViews, BoundCoversTheWorstErrorOfAtLeast95PercentOfTheViews) {
  Coverage aroundTarget;
  Coverage correctedPicture;
  for (const support::MeasuredCamera& camera : cameras()) {
    const std::vector<solver::ViewPoints> views = robust_tests::viewPoints(camera);
    const cv::Size size = camera.views[0].imageSize;
    const auto joint = robust::calibrateRobustly(views, size);
    for (std::size_t j = 0; j < views.size(); ++j) {
      const auto others = withoutOne(views, j);
      const robust::BundleProblem problem{&others, robust::PointWeights(others.size()),
                                          robust::LensPrior(size, true), 1, false};
      const auto rest = robust::solveBundle(problem, {joint.camera, withoutOne(joint.poses, j)});
      robust::RobustOptions held;
      held.heldLens = robust::HeldLens{rest.bundle.camera, {}};
      const auto truth = robust::calibrateRobustly({views[j]}, size, held);
      const auto single = robust::calibrateRobustly({views[j]}, size);
      ASSERT_TRUE(rest.converged);
      ASSERT_EQ(truth.status, RobustStatus::kSolved);
      ASSERT_EQ(single.status, RobustStatus::kSolved);
      const robust::BedView known{truth.camera, truth.poses[0], {}};
      const robust::BedView found{single.camera, single.poses[0], single.covariance[0]};
      aroundTarget.add(known, found, withinPicture(gridAroundTarget(views[j]), found, size));
      correctedPicture.add(
          known, found, withinPicture(gridOfCorrectedPicture(found, views[j], size), found, size));
    }
  }
  EXPECT_EQ(aroundTarget.views, 217);
  EXPECT_EQ(correctedPicture.views, 217);
  EXPECT_GE(aroundTarget.share(), 0.95);
  EXPECT_GE(correctedPicture.share(), 0.95);
  RecordProperty("around_target_percent", std::to_string(100 * aroundTarget.share()));
  RecordProperty("corrected_picture_percent", std::to_string(100 * correctedPicture.share()));
}

}  // namespace
