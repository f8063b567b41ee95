#include "detection/charuco_finder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "detection/charuco_board.h"
#include "detection/corner_model.h"
#include "detection/grid_completion.h"
#include "detection/markers.h"
#include "detection/median.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kAgreement = 0.2;          // of the step, between two markers' ideas of a corner
constexpr double kMostDisagreement = 0.2;   // as a share of the corners on which markers agree
constexpr double kMoved = 0.2;              // of the step, by which the measured corner may be off
constexpr double kSmallestExplained = 0.5;  // of the grey levels' variation
constexpr double kClearExplained = 0.85;    // of the usual share
constexpr double kSmallestContrast = 0.35;  // of the usual one
constexpr double kLargestContrast = 2.5;
constexpr double kTolerancePixels = 0.4;  // of the deviation from where neighbours expect a corner
constexpr double kToleranceOfStep = 0.01;
constexpr double kUsualDeviations = 5;
constexpr double kCloser = 0.6;          // of the window
constexpr double kSmallestWindow = 2.5;  // pixels
constexpr double kLargestWindow = 14;    // pixels
constexpr int kFewestCorners = 4;
constexpr int kStrangers = 3;  // markers with numbers that the board does not have

// What one marker says of a corner of its square.
struct Prediction {
  cv::Point2d position;
  cv::Point2d along;  // the step to the next corner in the row, pixels
  cv::Point2d down;

  double step() const { return std::min(cv::norm(along), cv::norm(down)); }
};

class PlacedMarker {
 public:
  PlacedMarker(const Marker& marker, const CharucoBoard& board)
      : square_(board.squareOf(marker.id)) {
    const cv::Rect2d area = board.markerArea(marker.id);
    const std::array<cv::Point2f, 4> places = {
        cv::Point2f(area.tl()), cv::Point2f(cv::Point2d(area.br().x, area.y)),
        cv::Point2f(area.br()), cv::Point2f(cv::Point2d(area.x, area.br().y))};
    const cv::Mat transform = cv::getPerspectiveTransform(places.data(), marker.corners.data());
    toPicture_ = transform;
  }

  cv::Point square() const { return square_; }

  Prediction at(cv::Point corner) const {
    const cv::Point2d here(corner);
    const auto step = [&](cv::Point2d half) { return project(here + half) - project(here - half); };
    return {.position = project(here), .along = step({0.5, 0}), .down = step({0, 0.5})};
  }

 private:
  cv::Point2d project(cv::Point2d place) const {
    const cv::Vec3d p = toPicture_ * cv::Vec3d(place.x, place.y, 1);
    return {p(0) / p(2), p(1) / p(2)};
  }

  cv::Point square_;
  cv::Matx33d toPicture_;
};

struct CornerLess {
  bool operator()(cv::Point a, cv::Point b) const { return a.y != b.y ? a.y < b.y : a.x < b.x; }
};

// The markers by their numbers, without those seen twice. More than a few with numbers beyond the
// board's mean that it is another board.
std::optional<std::vector<PlacedMarker>> placed(const std::vector<Marker>& markers,
                                                const CharucoBoard& board) {
  std::map<int, int> seen;
  int strangers = 0;
  for (const Marker& marker : markers) {
    ++seen[marker.id];
    strangers += marker.id >= board.markerCount() ? 1 : 0;
  }
  if (strangers >= kStrangers) {
    return std::nullopt;
  }
  std::vector<PlacedMarker> result;
  for (const Marker& marker : markers) {
    if (marker.id < board.markerCount() && seen[marker.id] == 1) {
      result.emplace_back(marker, board);
    }
  }
  return result;
}

// Two bright squares meet at every inner corner. Only markers that agree with a neighbour about the
// corner between them count: one whose number was misread lies elsewhere. On a board of a different
// size many disagree, as some of its rows are where they should be and others are not.
std::map<cv::Point, Prediction, CornerLess> agreedCorners(const std::vector<PlacedMarker>& markers,
                                                          const Target& target) {
  std::map<cv::Point, std::vector<std::size_t>, CornerLess> byCorner;
  for (std::size_t i = 0; i < markers.size(); ++i) {
    for (const cv::Point& offset :
         {cv::Point(0, 0), cv::Point(1, 0), cv::Point(0, 1), cv::Point(1, 1)}) {
      const cv::Point corner = markers[i].square() + offset;
      if (cv::Rect(0, 0, target.columns, target.rows).contains(corner)) {
        byCorner[corner].push_back(i);
      }
    }
  }
  const auto agree = [](const Prediction& a, const Prediction& b) {
    return cv::norm(a.position - b.position) < kAgreement * std::min(a.step(), b.step());
  };
  std::vector<bool> confirmed(markers.size(), false);
  int agreeing = 0;
  int disagreeing = 0;
  for (const auto& [corner, around] : byCorner) {
    if (around.size() < 2) {
      continue;
    }
    if (agree(markers[around[0]].at(corner), markers[around[1]].at(corner))) {
      confirmed[around[0]] = confirmed[around[1]] = true;
      ++agreeing;
    } else {
      ++disagreeing;
    }
  }
  std::map<cv::Point, Prediction, CornerLess> corners;
  if (disagreeing > kMostDisagreement * agreeing) {
    return corners;
  }
  for (const auto& [corner, around] : byCorner) {
    std::vector<Prediction> predictions;
    for (const std::size_t i : around) {
      if (confirmed[i]) {
        predictions.push_back(markers[i].at(corner));
      }
    }
    if (predictions.size() == 2 && agree(predictions[0], predictions[1])) {
      predictions[0].position = (predictions[0].position + predictions[1].position) / 2;
    } else if (predictions.size() != 1) {
      continue;
    }
    corners.emplace(corner, predictions[0]);
  }
  return corners;
}

// The corner in the picture, measured in a window that the markers do not reach into.
std::optional<CornerFit> measured(const cv::Mat& grey, const Prediction& expected,
                                  double markerShare) {
  const double room = (1 - markerShare) / 2 * std::sqrt(2.0) * 0.9 * expected.step();
  const double radius = std::clamp(room, kSmallestWindow, kLargestWindow);
  CrossedEdges edges = {.position = expected.position,
                        .first = std::atan2(expected.along.y, expected.along.x),
                        .second = std::atan2(expected.down.y, expected.down.x)};
  std::optional<CornerFit> fit = fitCorner(grey, edges, radius);
  for (int i = 0; i < 2 && fit; ++i) {  // again with the corner in the middle of the window
    edges.position = fit->position;
    fit = fitCorner(grey, edges, radius);
  }
  if (!fit || fit->explained < kSmallestExplained ||
      cv::norm(fit->position - expected.position) > kMoved * expected.step()) {
    return std::nullopt;
  }
  // What covers the edge of the window moves the fit, but not that of a smaller window.
  edges.position = fit->position;
  const auto closer = fitCorner(grey, edges, std::max(kCloser * radius, kSmallestWindow));
  const bool steady = closer && cv::norm(closer->position - fit->position) <
                                    kTolerancePixels + kToleranceOfStep * expected.step();
  return steady ? fit : std::nullopt;
}

struct Measured {
  CornerFit fit;
  double step;  // pixels
};
using Corners = std::map<int, Measured>;  // by their places, row by row

template <typename Value>
double medianAmong(const Corners& corners, const Value& value) {
  std::vector<double> values;
  values.reserve(corners.size());
  for (const auto& [place, corner] : corners) {
    values.push_back(value(corner));
  }
  return medianOf(std::move(values));
}

// Something that covers the corner in part, or its edge, is measured less clearly.
void removeUnclear(Corners& corners) {
  if (corners.empty()) {
    return;
  }
  const double explained =
      medianAmong(corners, [](const Measured& corner) { return corner.fit.explained; });
  const double contrast =
      medianAmong(corners, [](const Measured& corner) { return corner.fit.contrast; });
  std::erase_if(corners, [&](const auto& entry) {
    const CornerFit& fit = entry.second.fit;
    return fit.explained < kClearExplained * explained ||
           fit.contrast < kSmallestContrast * contrast ||
           fit.contrast > kLargestContrast * contrast;
  });
}

// Removes corners that lie away from where the others expect them, the worst first, as it misleads
// its neighbours.
void removeOutliers(Corners& corners, const Target& target) {
  std::vector<std::optional<cv::Point2d>> known(
      static_cast<std::size_t>(target.columns * target.rows));
  for (const auto& [place, corner] : corners) {
    known[static_cast<std::size_t>(place)] = corner.fit.position;
  }
  while (!corners.empty()) {
    std::map<int, double> deviations;
    std::vector<double> all;
    for (const auto& [place, corner] : corners) {
      const auto expected = expectedByNeighbours(known, target.columns, target.rows,
                                                 place % target.columns, place / target.columns);
      deviations[place] =
          expected ? cv::norm(corner.fit.position - expected->position) / expected->uncertainty : 0;
      all.push_back(deviations[place]);
    }
    const double usual = medianOf(std::move(all));
    const auto excess = [&](int place) {
      return deviations[place] - kTolerancePixels - kToleranceOfStep * corners.at(place).step -
             kUsualDeviations * usual;
    };
    const auto worst = std::max_element(
        deviations.begin(), deviations.end(),
        [&](const auto& a, const auto& b) { return excess(a.first) < excess(b.first); });
    if (excess(worst->first) <= 0) {
      return;
    }
    known[static_cast<std::size_t>(worst->first)].reset();
    corners.erase(worst->first);
  }
}

}  // namespace

Search findCharuco(const cv::Mat& grey, const Target& target, const Progress& progress) {
  progress("looking for the markers");
  const CharucoBoard board(target.columns, target.rows, target.markerShare);
  const std::vector<Marker> markers = findMarkers(grey, target.markerBits, board.markerCount());
  const auto usable = placed(markers, board);
  if (!usable) {
    return {.detection = std::nullopt,
            .seen = "markers with numbers from " + std::to_string(board.markerCount()) +
                    " on are there, which a board of this size does not have"};
  }
  Corners corners;
  for (const auto& [corner, expected] : agreedCorners(*usable, target)) {
    if (const auto fit = measured(grey, expected, target.markerShare)) {
      corners[corner.y * target.columns + corner.x] = {.fit = *fit, .step = expected.step()};
    }
  }
  removeUnclear(corners);
  removeOutliers(corners, target);
  Detection detection = {.grid = {}, .method = "markers"};
  for (const auto& [place, corner] : corners) {
    detection.grid.push_back(
        {.world = cv::Point2d(cv::Point(place % target.columns, place / target.columns)),
         .image = cv::Point2f(corner.fit.position),
         .index = place});
  }
  if (detection.grid.size() >= kFewestCorners) {
    return {.detection = std::move(detection), .seen = {}};
  }
  return {.detection = std::nullopt,
          .seen = markers.empty() ? ""
                                  : std::to_string(markers.size()) +
                                        (markers.size() == 1 ? " marker is" : " markers are") +
                                        " there, but not where a board of this size has them"};
}

}  // namespace fisheye_calibration::program
