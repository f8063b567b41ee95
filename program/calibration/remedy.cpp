#include "calibration/remedy.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <optional>
#include <utility>

#include "base/text.h"
#include "lens/rotation.h"

namespace fisheye_calibration::program {
namespace {

using robust::PlannedView;

constexpr double kTilts[] = {25, 15};            // degrees, of a tilted view
constexpr double kEnlargements[] = {3, 2, 1.5};  // of the target
constexpr double kMargin = 0.02;                 // of the picture's longer side, kept free
constexpr double kWorthwhile = 0.9;              // of the present bound

double radians(double degrees) { return degrees * std::numbers::pi / 180; }

class Planner {
 public:
  Planner(const RobustCamera& camera, const RobustRequest& request, const BedAccuracy& accuracy)
      : camera_(camera),
        request_(request),
        accuracy_(accuracy),
        taken_(takenViews(camera, request)) {
    const cv::Rect2d box = targetBox(camera.result.points);
    centre_ = (box.tl() + box.br()) / 2;
  }

  // The bed's target, turned about an axis in its plane. Nothing if it leaves the picture.
  std::optional<PlannedView> tilted(double degrees, double directionDegrees) const {
    const double angle = radians(degrees);
    const double direction = radians(directionDegrees);
    const cv::Vec3d turn(angle * std::cos(direction), angle * std::sin(direction), 0);
    PlannedView view = taken_.front();
    view.pose = robust::withTurnedTarget(view.pose, centre_, turn);
    return fits(view) ? std::optional(std::move(view)) : std::nullopt;
  }

  // The bed's target, larger by this factor, in the same place.
  std::optional<PlannedView> enlarged(double factor) const {
    PlannedView view = taken_.front();
    for (double& x : view.target.x) {
      x = centre_.x + factor * (x - centre_.x);
    }
    for (double& y : view.target.y) {
      y = centre_.y + factor * (y - centre_.y);
    }
    return fits(view) ? std::optional(std::move(view)) : std::nullopt;
  }

  const std::vector<PlannedView>& taken() const { return taken_; }

  // The bound on the bed that these views would give, the bed's view first.
  std::optional<double> boundOf(const std::vector<PlannedView>& views) const {
    const auto covariance = robust::plannedCovariance(
        camera_.bed.camera, views, cv::Size(request_.image.width, request_.image.height),
        camera_.solved.noiseSigma);
    if (!covariance) {
      return std::nullopt;
    }
    const robust::BedView planned{camera_.bed.camera, views.front().pose, covariance->front()};
    std::vector<double> bounds = robust::bedBounds(planned, accuracy_.grid.points());
    for (std::size_t i = 0; i < bounds.size(); ++i) {
      bounds[i] = std::isnan(accuracy_.errors[i]) ? accuracy_.errors[i] : bounds[i];
    }
    return largestOf(bounds);
  }

 private:
  bool fits(const PlannedView& view) const {
    const cv::Matx33d R = lens::rotationFromVector(view.pose.om);
    const double margin = kMargin * std::max(request_.image.width, request_.image.height);
    for (std::size_t i = 0; i < view.target.size(); ++i) {
      const cv::Vec3d X(view.target.x[i], view.target.y[i], 0);
      const cv::Point2d pixel = lens::projectPoint(camera_.bed.camera, R, view.pose.T, X);
      const bool inFront = (R * X + view.pose.T)[2] > 0;
      if (!inFront || !(pixel.x >= margin && pixel.x <= request_.image.width - 1 - margin &&
                        pixel.y >= margin && pixel.y <= request_.image.height - 1 - margin)) {
        return false;
      }
    }
    return true;
  }

  const RobustCamera& camera_;
  const RobustRequest& request_;
  const BedAccuracy& accuracy_;
  std::vector<PlannedView> taken_;
  cv::Point2d centre_;
};

std::optional<Remedy> tiltedView(const Planner& planner) {
  for (const double tilt : kTilts) {
    std::optional<Remedy> best;
    for (const double direction : {0.0, 90.0, 180.0, 270.0}) {
      const auto view = planner.tilted(tilt, direction);
      if (!view) {
        continue;
      }
      std::vector<PlannedView> views = planner.taken();
      views.push_back(*view);
      const auto bound = planner.boundOf(views);
      if (bound && (!best || *bound < best->onBed)) {
        best = {"add a view of the board tilted by " + fixed(tilt, 0) + " degrees", *bound};
      }
    }
    if (best) {
      return best;
    }
  }
  return std::nullopt;
}

std::optional<Remedy> largerTarget(const Planner& planner) {
  for (const double factor : kEnlargements) {
    const auto view = planner.enlarged(factor);
    if (!view) {
      continue;
    }
    std::vector<PlannedView> views = planner.taken();
    views.front() = *view;
    if (const auto bound = planner.boundOf(views)) {
      return Remedy{"use a target " + general(factor, 2) + " times as large", *bound};
    }
  }
  return std::nullopt;
}

std::optional<Remedy> fourTiltedViews(const Planner& planner) {
  for (const double tilt : kTilts) {
    std::vector<PlannedView> views = planner.taken();
    for (const double direction : {0.0, 90.0, 180.0, 270.0}) {
      if (auto view = planner.tilted(tilt, direction)) {
        views.push_back(std::move(*view));
      }
    }
    const std::size_t added = views.size() - planner.taken().size();
    if (added < 3) {
      continue;
    }
    if (const auto bound = planner.boundOf(views)) {
      return Remedy{"add " + std::to_string(added) + " views of the board tilted by " +
                        fixed(tilt, 0) + " degrees in different directions",
                    *bound};
    }
  }
  return std::nullopt;
}

}  // namespace

std::vector<Remedy> remediesFor(const RobustCamera& camera, const RobustRequest& request,
                                const BedAccuracy& accuracy) {
  if (!isSolved(camera)) {
    return {};
  }
  const Planner planner(camera, request, accuracy);
  std::vector<Remedy> remedies;
  for (auto& remedy : {tiltedView(planner), largerTarget(planner), fourTiltedViews(planner)}) {
    if (remedy && std::isfinite(remedy->onBed)) {
      remedies.push_back(*remedy);
    }
  }
  return remedies;
}

std::vector<Remedy> helpfulRemedies(std::vector<Remedy> remedies, double now) {
  std::erase_if(remedies, [&](const Remedy& remedy) { return remedy.onBed >= now; });
  std::stable_sort(remedies.begin(), remedies.end(),
                   [](const Remedy& a, const Remedy& b) { return a.onBed < b.onBed; });
  return remedies;
}

const Remedy* bestRemedy(const std::vector<Remedy>& remedies, double now, double wanted) {
  const Remedy* best = nullptr;
  for (const Remedy& remedy : remedies) {
    if (remedy.onBed <= wanted) {
      return &remedy;
    }
    if (remedy.onBed < kWorthwhile * now && (best == nullptr || remedy.onBed < best->onBed)) {
      best = &remedy;
    }
  }
  return best;
}

}  // namespace fisheye_calibration::program
