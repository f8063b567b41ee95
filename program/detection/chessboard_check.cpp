#include "detection/chessboard_check.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace fisheye_calibration::program {
namespace {

constexpr double kAcross = 0.22;      // of the step, from an edge to where its sides are compared
constexpr double kPatchRadius = 0.1;  // of the step
constexpr double kSmallestContrast = 3;  // grey levels
constexpr double kAgreement = 0.6;       // of the differences along one line
constexpr double kOverallAgreement = 0.7;
constexpr double kUnseen = 0.12;            // of the mean difference: a line in glare or shadow
constexpr double kMostUnseen = 0.34;        // of the lines
constexpr double kClear = 0.25;             // of the mean difference
constexpr double kClearShare = 0.6;         // of the differences in an outermost line
constexpr double kRimContrast = 0.25;       // of the mean difference
constexpr double kRimAgreement = 0.5;       // of the differences between the squares of one side
constexpr double kContinuation = 0.6;       // of the differences beyond the outermost squares
constexpr double kContinuedContrast = 0.3;  // of the mean difference
constexpr double kCutDepth = 0.6;           // of the step; the outermost squares show so much

constexpr std::array<double, 5> kInnerSamples = {0.2, 0.35, 0.5, 0.65, 0.8};
constexpr std::array<double, 4> kRimSamples = {0.2, 0.4, 0.6, 0.75};
constexpr std::array<double, 2> kDepthSamples = {0.6, 0.75};  // squares that are hidden end before
constexpr std::array<double, 2> kNearSamples = {1.12, 1.2};   // strips of squares beyond a cover
constexpr std::array<double, 3> kBeyondSamples = {1.3, 1.45, 1.6};

// Differences across edges, counted positive where they have the sign that the pattern asks for.
struct Evidence {
  std::vector<double> differences;  // grey levels
  int outside = 0;                  // samples beyond the picture

  void add(const Evidence& other) {
    differences.insert(differences.end(), other.differences.begin(), other.differences.end());
    outside += other.outside;
  }
  double sum() const { return std::accumulate(differences.begin(), differences.end(), 0.0); }
  double sumOfSizes() const {
    return std::accumulate(
        differences.begin(), differences.end(), 0.0,
        [](double sum, double difference) { return sum + std::abs(difference); });
  }
  // From -1, all against the pattern, to 1.
  double agreement() const { return sum() != 0 ? sum() / sumOfSizes() : 0; }
  double contrast() const {
    return differences.empty() ? 0 : sumOfSizes() / static_cast<double>(differences.size());
  }
  // The share of the differences that have the sign `sense` and at least that size.
  double shareAbove(double smallest, double sense) const {
    const auto count =
        std::count_if(differences.begin(), differences.end(),
                      [&](double difference) { return sense * difference >= smallest; });
    return differences.empty()
               ? 0
               : static_cast<double>(count) / static_cast<double>(differences.size());
  }
};

// The corners with two more rows and columns on every side, extrapolated by parabolas.
class Board {
 public:
  Board(const cv::Mat& grey, const std::vector<cv::Point2f>& corners, int columnCount, int rowCount)
      : columns(columnCount), rows(rowCount), grey_(grey), corners_(corners) {}

  const int columns;
  const int rows;

  // The edge from corner (c, r) to the next one along the row, or down the column if `upright`, at
  // the parts `samples` of it.
  //
  // With the squares' colour (-1)^(c + r), the difference across it is +-(-1)^(c + r).
  template <typename Samples>
  Evidence edge(int c, int r, bool upright, const Samples& samples) const {
    Evidence evidence;
    const double sign = (c + r) % 2 == 0 ? 1 : -1;
    for (const double t : samples) {
      const double column = upright ? c : c + t;
      const double row = upright ? r + t : r;
      const cv::Point2d here = at(column, row);
      const cv::Point2d across = upright
                                     ? (at(column + kAcross, row) - at(column - kAcross, row)) / 2
                                     : (at(column, row + kAcross) - at(column, row - kAcross)) / 2;
      const int radius =
          std::clamp(static_cast<int>(kPatchRadius / kAcross * cv::norm(across)), 0, 12);
      if (!inside(here - across) || !inside(here + across)) {
        ++evidence.outside;
        continue;
      }
      const double difference =
          greyAround(here - across, radius) - greyAround(here + across, radius);
      evidence.differences.push_back(sign * difference);
    }
    return evidence;
  }

  // The edges that leave the outermost corners of a side outwards, at these distances in steps.
  template <typename Samples>
  Evidence outward(Side side, const Samples& distances) const {
    Evidence evidence;
    const bool upright = side == Side::kTop || side == Side::kBottom;
    const bool forward = side == Side::kRight || side == Side::kBottom;
    for (int i = 0; i < (upright ? columns : rows); ++i) {
      const int c = upright ? i : forward ? columns - 1 : 0;
      const int r = !upright ? i : forward ? rows - 1 : 0;
      for (const double distance : distances) {
        // The edge on which the sample lies begins this many corners before or after (c, r).
        const int steps = forward ? static_cast<int>(std::floor(distance))
                                  : static_cast<int>(std::floor(-distance));
        const std::array<double, 1> part = {(forward ? distance : -distance) - steps};
        evidence.add(edge(upright ? c : c + steps, upright ? r + steps : r, upright, part));
      }
    }
    return evidence;
  }

 private:
  cv::Point2d corner(int c, int r) const {
    if (c < 0 || c >= columns) {
      const int rim = c < 0 ? 0 : columns - 1;
      const int in = c < 0 ? 1 : -1;
      return continued(corner(rim, r), corner(rim + in, r), corner(rim + 2 * in, r),
                       std::abs(c - rim));
    }
    if (r < 0 || r >= rows) {
      const int rim = r < 0 ? 0 : rows - 1;
      const int in = r < 0 ? 1 : -1;
      return continued(corner(c, rim), corner(c, rim + in), corner(c, rim + 2 * in),
                       std::abs(r - rim));
    }
    return cv::Point2d(corners_[static_cast<std::size_t>(r * columns + c)]);
  }

  // The parabola through p, q and s at the distances 0, -1 and -2.
  static cv::Point2d continued(cv::Point2d p, cv::Point2d q, cv::Point2d s, int distance) {
    const double d = distance;
    return (d + 1) * (d + 2) / 2 * p - d * (d + 2) * q + d * (d + 1) / 2 * s;
  }

  cv::Point2d at(double column, double row) const {
    const int c = static_cast<int>(std::floor(column));
    const int r = static_cast<int>(std::floor(row));
    const double u = column - c;
    const double v = row - r;
    return (1 - v) * ((1 - u) * corner(c, r) + u * corner(c + 1, r)) +
           v * ((1 - u) * corner(c, r + 1) + u * corner(c + 1, r + 1));
  }

  bool inside(cv::Point2d position) const {
    return position.x >= 0 && position.y >= 0 && position.x <= grey_.cols - 1 &&
           position.y <= grey_.rows - 1;
  }

  // Mean grey around a position in the picture; the outermost pixels continue beyond it.
  double greyAround(cv::Point2d position, int radius) const {
    const int x = static_cast<int>(std::lround(position.x));
    const int y = static_cast<int>(std::lround(position.y));
    double sum = 0;
    for (int dy = -radius; dy <= radius; ++dy) {
      for (int dx = -radius; dx <= radius; ++dx) {
        sum += grey_.at<unsigned char>(std::clamp(y + dy, 0, grey_.rows - 1),
                                       std::clamp(x + dx, 0, grey_.cols - 1));
      }
    }
    return sum / ((2 * radius + 1) * (2 * radius + 1));
  }

  const cv::Mat& grey_;
  const std::vector<cv::Point2f>& corners_;
};

// The edges between corners in lines of both directions: each counts for the line that it lies on
// and for the strip of edges next to each other.
struct Lines {
  std::vector<Evidence> families[4];
  Evidence all;
};

Lines innerEdges(const Board& board) {
  Lines lines;
  const auto columns = static_cast<std::size_t>(board.columns);
  const auto rows = static_cast<std::size_t>(board.rows);
  lines.families[0].resize(rows);
  lines.families[1].resize(columns - 1);
  lines.families[2].resize(columns);
  lines.families[3].resize(rows - 1);
  for (int r = 0; r < board.rows; ++r) {
    for (int c = 0; c < board.columns; ++c) {
      const auto column = static_cast<std::size_t>(c);
      const auto row = static_cast<std::size_t>(r);
      if (column + 1 < columns) {
        const Evidence evidence = board.edge(c, r, false, kInnerSamples);
        lines.families[0][row].add(evidence);
        lines.families[1][column].add(evidence);
        lines.all.add(evidence);
      }
      if (row + 1 < rows) {
        const Evidence evidence = board.edge(c, r, true, kInnerSamples);
        lines.families[2][column].add(evidence);
        lines.families[3][row].add(evidence);
        lines.all.add(evidence);
      }
    }
  }
  return lines;
}

// Glare or shadow may hide a few lines, but nothing may contradict the pattern.
bool alternates(const Lines& lines, double sense) {
  if (lines.all.contrast() < kSmallestContrast ||
      sense * lines.all.agreement() < kOverallAgreement) {
    return false;
  }
  for (const std::vector<Evidence>& family : lines.families) {
    // A row of the board's rim has squares on one side only, and its strip none at all.
    const double clear = kClear * lines.all.contrast();
    if (family.front().shareAbove(clear, sense) < kClearShare ||
        family.back().shareAbove(clear, sense) < kClearShare) {
      return false;
    }
    int unseen = 0;
    for (const Evidence& line : family) {
      if (line.contrast() < kUnseen * lines.all.contrast()) {
        ++unseen;
      } else if (sense * line.agreement() < kAgreement) {
        return false;
      }
    }
    if (unseen > kMostUnseen * static_cast<double>(family.size())) {
      return false;
    }
  }
  return true;
}

}  // namespace

BoardCheck checkChessboard(const cv::Mat& grey, const std::vector<cv::Point2f>& corners,
                           int columns, int rows) {
  const Board board(grey, corners, columns, rows);
  const Lines lines = innerEdges(board);
  const double sense = lines.all.sum() > 0 ? 1 : -1;
  if (!alternates(lines, sense)) {
    return {.verdict = BoardVerdict::kNotABoard};
  }
  constexpr std::array<Side, 4> kSides = {Side::kLeft, Side::kRight, Side::kTop, Side::kBottom};
  const auto continues = [&](const Evidence& beyond) {
    return beyond.contrast() > kContinuedContrast * lines.all.contrast() &&
           sense * beyond.agreement() > kContinuation;
  };
  for (const Side side : kSides) {
    if (continues(board.outward(side, kBeyondSamples)) ||
        continues(board.outward(side, kNearSamples))) {
      return {.verdict = BoardVerdict::kContinues, .side = side};
    }
  }
  for (const Side side : kSides) {
    const Evidence far = board.outward(side, std::array<double, 1>{kCutDepth});
    if (far.outside > static_cast<int>(far.differences.size())) {
      return {.verdict = BoardVerdict::kCut, .side = side};
    }
    const Evidence rim = board.outward(side, kRimSamples);
    const Evidence depth = board.outward(side, kDepthSamples);
    if (sense * rim.agreement() < kRimAgreement ||
        rim.contrast() < kRimContrast * lines.all.contrast() ||
        depth.shareAbove(kClear * lines.all.contrast(), sense) < kClearShare) {
      return {.verdict = BoardVerdict::kNoRim, .side = side};
    }
  }
  return {.verdict = BoardVerdict::kWhole};
}

}  // namespace fisheye_calibration::program
