#include "detection/charuco_finder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <string>
#include <vector>

#include "detection/charuco_board.h"
#include "detection/corner_model.h"
#include "detection/markers.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kAgreement = 0.2;          // of the step, between two markers' ideas of a corner
constexpr double kMostDisagreement = 0.2;   // as a share of the corners on which markers agree
constexpr double kMoved = 0.2;              // of the step, by which the measured corner may be off
constexpr double kSmallestExplained = 0.5;  // of the grey levels' variation
constexpr double kSmallestWindow = 2.5;     // pixels
constexpr double kLargestWindow = 14;       // pixels
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
std::optional<cv::Point2d> measured(const cv::Mat& grey, const Prediction& expected,
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
  return fit->position;
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
  Detection detection = {.grid = {}, .method = "markers"};
  for (const auto& [corner, expected] : agreedCorners(*usable, target)) {
    if (const auto position = measured(grey, expected, target.markerShare)) {
      detection.grid.push_back({.world = cv::Point2d(corner),
                                .image = cv::Point2f(*position),
                                .index = corner.y * target.columns + corner.x});
    }
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
