#include "detection/corner_lattice.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <deque>
#include <map>
#include <optional>
#include <utility>

#include "detection/grid_completion.h"

namespace fisheye_calibration::program {
namespace {

using Label = std::pair<int, int>;    // (column, row)
using Labels = std::map<Label, int>;  // the point at a position of the grid

constexpr std::array<Label, 4> kSteps = {{{1, 0}, {-1, 0}, {0, 1}, {0, -1}}};
constexpr double kSearch = 0.38;        // of the step, around the expected position
constexpr double kOppositeAxes = -0.4;  // cos(2 angle) between the bright axes of neighbours
constexpr double kAcross = 0.22;        // of the step, from an edge to where its sides are compared
constexpr double kSmallestEdge = 0.25;  // of the corners' contrast
constexpr double kSmallestOccupancy = 0.5;  // of the corners in an outermost line
constexpr std::size_t kSmallestLattice = 9;
constexpr int kSeedNeighbours = 8;

Label operator+(const Label& a, const Label& b) { return {a.first + b.first, a.second + b.second}; }
Label operator-(const Label& a) { return {-a.first, -a.second}; }

class Lattice {
 public:
  Lattice(const cv::Mat& smooth, const std::vector<SaddlePoint>& points)
      : smooth_(smooth), points_(points), used_(points.size(), false) {}

  // Grows from the point, if its neighbours are found on all four sides; the labels found.
  Labels grow(int seed) {
    Labels labels;
    std::array<int, 4> around{};
    if (used_[static_cast<std::size_t>(seed)] || !neighbours(seed, around)) {
      return labels;
    }
    std::deque<Label> queue;
    const auto place = [&](const Label& label, int point) {
      labels[label] = point;
      used_[static_cast<std::size_t>(point)] = true;
      queue.push_back(label);
    };
    place({0, 0}, seed);
    for (std::size_t i = 0; i < kSteps.size(); ++i) {
      place(kSteps[i], around[i]);
    }
    while (!queue.empty()) {
      const Label label = queue.front();
      queue.pop_front();
      for (const Label& step : kSteps) {
        if (labels.contains(label + step)) {
          continue;
        }
        const std::optional<cv::Point2d> along = expectedStep(labels, label, step);
        if (!along) {
          continue;
        }
        const int next = linked(labels.at(label), *along);
        if (next >= 0) {
          place(label + step, next);
        }
      }
    }
    return labels;
  }

 private:
  const SaddlePoint& at(int point) const { return points_[static_cast<std::size_t>(point)]; }

  bool opposite(int a, int b) const { return at(a).axis.dot(at(b).axis) < kOppositeAxes; }

  double grey(cv::Point2d position) const {
    const int x = std::clamp(static_cast<int>(std::lround(position.x)), 0, smooth_.cols - 1);
    const int y = std::clamp(static_cast<int>(std::lround(position.y)), 0, smooth_.rows - 1);
    return static_cast<double>(smooth_.at<float>(y, x));
  }

  // True if an edge runs from a to b: the same side is brighter all along.
  bool edge(int a, int b) const {
    const cv::Point2d along = at(b).position - at(a).position;
    const cv::Point2d across(-kAcross * along.y, kAcross * along.x);
    const double smallest = kSmallestEdge * std::min(at(a).contrast, at(b).contrast);
    int sense = 0;
    for (const double t : {0.3, 0.5, 0.7}) {
      const cv::Point2d here = at(a).position + t * along;
      const double difference = grey(here + across) - grey(here - across);
      const int sign = difference > 0 ? 1 : -1;
      if (std::abs(difference) < smallest || (sense != 0 && sign != sense)) {
        return false;
      }
      sense = sign;
    }
    return true;
  }

  // The unused point of opposite sense that is nearest to the expected place; -1 if there is none.
  int linked(int from, cv::Point2d step) const {
    const cv::Point2d expected = at(from).position + step;
    double nearest = kSearch * cv::norm(step);
    int best = -1;
    for (int i = 0; i < static_cast<int>(points_.size()); ++i) {
      const cv::Point2d off = at(i).position - expected;
      if (std::abs(off.x) > nearest || std::abs(off.y) > nearest) {
        continue;
      }
      const double distance = cv::norm(off);
      if (distance < nearest && !used_[static_cast<std::size_t>(i)] && opposite(from, i)) {
        nearest = distance;
        best = i;
      }
    }
    return best >= 0 && edge(from, best) ? best : -1;
  }

  // The points to the four sides of one, in the order of kSteps.
  bool neighbours(int seed, std::array<int, 4>& around) const {
    std::vector<std::pair<double, int>> near;
    for (int i = 0; i < static_cast<int>(points_.size()); ++i) {
      if (i != seed && !used_[static_cast<std::size_t>(i)] && opposite(seed, i)) {
        near.emplace_back(cv::norm(at(i).position - at(seed).position), i);
      }
    }
    const auto count =
        std::min<std::ptrdiff_t>(kSeedNeighbours, static_cast<std::ptrdiff_t>(near.size()));
    std::partial_sort(near.begin(), near.begin() + count, near.end());
    int axes = 0;
    cv::Point2d first;
    for (std::ptrdiff_t k = 0; k < count && axes < 2; ++k) {
      const int forward = near[static_cast<std::size_t>(k)].second;
      const cv::Point2d step = at(forward).position - at(seed).position;
      if (axes == 1 && std::abs(step.cross(first)) < 0.3 * cv::norm(step) * cv::norm(first)) {
        continue;
      }
      const int back = edge(seed, forward) ? linked(seed, -step) : -1;
      if (back < 0) {
        continue;
      }
      around[static_cast<std::size_t>(2 * axes)] = forward;
      around[static_cast<std::size_t>(2 * axes + 1)] = back;
      first = step;
      ++axes;
    }
    return axes == 2;
  }

  // By the step on the other side of the point, or by those of the lines next to it.
  std::optional<cv::Point2d> expectedStep(const Labels& labels, const Label& label,
                                          const Label& step) const {
    const auto position = [&](const Label& where) -> std::optional<cv::Point2d> {
      const auto found = labels.find(where);
      return found != labels.end() ? std::optional(at(found->second).position) : std::nullopt;
    };
    const cv::Point2d here = at(labels.at(label)).position;
    const Label side = {step.second, step.first};
    cv::Point2d sum;
    int count = 0;
    for (const Label& line : {side, -side}) {
      const auto from = position(label + line);
      const auto to = position(label + line + step);
      if (from && to) {
        sum += *to - *from;
        ++count;
      }
    }
    if (const auto back = position(label + -step)) {
      sum += here - *back;
      ++count;
    }
    return count > 0 ? std::optional(sum / count) : std::nullopt;
  }

  const cv::Mat& smooth_;
  const std::vector<SaddlePoint>& points_;
  std::vector<bool> used_;
};

// The labels' bounding box without outermost lines of which most corners are missing.
cv::Rect boundsOf(const Labels& labels) {
  int left = 0, right = 0, top = 0, bottom = 0;
  for (const auto& [label, point] : labels) {
    left = std::min(left, label.first);
    right = std::max(right, label.first);
    top = std::min(top, label.second);
    bottom = std::max(bottom, label.second);
  }
  const auto occupancy = [&](int x0, int x1, int y0, int y1) {
    int count = 0;
    for (const auto& [label, point] : labels) {
      count += label.first >= x0 && label.first <= x1 && label.second >= y0 && label.second <= y1;
    }
    return static_cast<double>(count) / ((x1 - x0 + 1) * (y1 - y0 + 1));
  };
  while (right > left && bottom > top) {
    const std::array<double, 4> sides = {
        occupancy(left, left, top, bottom), occupancy(right, right, top, bottom),
        occupancy(left, right, top, top), occupancy(left, right, bottom, bottom)};
    const auto worst = std::min_element(sides.begin(), sides.end());
    if (*worst >= kSmallestOccupancy) {
      break;
    }
    switch (worst - sides.begin()) {
      case 0:
        ++left;
        break;
      case 1:
        --right;
        break;
      case 2:
        ++top;
        break;
      default:
        --bottom;
    }
  }
  return {left, top, right - left + 1, bottom - top + 1};
}

CornerGrid gridOf(const Labels& labels, const std::vector<SaddlePoint>& points) {
  const cv::Rect bounds = boundsOf(labels);
  CornerGrid grid = {.columns = bounds.width, .rows = bounds.height, .corners = {}, .seen = 0};
  std::vector<std::optional<cv::Point2d>> positions(static_cast<std::size_t>(bounds.area()));
  for (const auto& [label, point] : labels) {
    const cv::Point place = cv::Point(label.first, label.second) - bounds.tl();
    if (bounds.contains({label.first, label.second})) {
      positions[static_cast<std::size_t>(place.y * bounds.width + place.x)] =
          points[static_cast<std::size_t>(point)].position;
      ++grid.seen;
    }
  }
  grid.corners = completedGrid(std::move(positions), grid.columns, grid.rows);
  return grid;
}

}  // namespace

CornerGrid growLattice(const cv::Mat& smooth, const std::vector<SaddlePoint>& points) {
  Lattice lattice(smooth, points);
  CornerGrid largest;
  for (int seed = 0; seed < static_cast<int>(points.size()); ++seed) {
    const Labels labels = lattice.grow(seed);
    if (labels.size() < kSmallestLattice || static_cast<int>(labels.size()) <= largest.seen) {
      continue;
    }
    CornerGrid grid = gridOf(labels, points);
    if (grid.columns >= 3 && grid.rows >= 3 && grid.seen > largest.seen && !grid.corners.empty()) {
      largest = std::move(grid);
    }
  }
  return largest;
}

}  // namespace fisheye_calibration::program
