#include "detection/chessboard_finder.h"

#include <algorithm>
#include <cstddef>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <string>
#include <utility>

#include "detection/saddle_points.h"
#include "detection/seen_board.h"

namespace fisheye_calibration::program {
namespace {

constexpr std::size_t kMostSaddlePoints = 2500;
constexpr int kShortestSide = 60;      // pixels; pictures are not reduced below it
constexpr int kNarrowestPicture = 16;  // pixels; a board has four squares or more on a side
constexpr int kFewLines = 3;
constexpr std::size_t kMuchLarger = 200;  // corners

enum class Method { kSaddlePoints, kSectors, kEverySector };

struct Attempt {
  Method method;
  bool evened;
  double scale;
  const char* name;
};

// The first three see boards of any size. The image library's search by sectors looks for the size
// that it is asked for, and so completes what glare or blur hides.
constexpr Attempt kAttempts[] = {
    {Method::kSaddlePoints, false, 1, "saddle points"},
    {Method::kSaddlePoints, false, 0.5, "saddle points, half size"},
    {Method::kSaddlePoints, false, 0.25, "saddle points, quarter size"},
    {Method::kSectors, false, 1, "sectors"},
    {Method::kEverySector, false, 0.5, "sectors, half size"},
    {Method::kEverySector, true, 0.5, "sectors, half size, contrast evened out"},
};

cv::Mat prepared(const cv::Mat& grey, const Attempt& attempt) {
  cv::Mat picture = grey;
  if (attempt.scale != 1) {
    cv::resize(grey, picture, cv::Size(), attempt.scale, attempt.scale, cv::INTER_AREA);
  }
  if (attempt.evened) {
    cv::Mat evened;
    cv::createCLAHE(4.0, cv::Size(8, 8))->apply(picture, evened);
    picture = evened;
  }
  return picture;
}

CornerGrid bySectors(const cv::Mat& picture, const Target& target, bool exhaustive) {
  CornerGrid grid = {.columns = target.columns, .rows = target.rows, .corners = {}, .seen = 0};
  const int flags = cv::CALIB_CB_NORMALIZE_IMAGE |
                    (exhaustive ? cv::CALIB_CB_EXHAUSTIVE | cv::CALIB_CB_ACCURACY : 0);
  const cv::Size size(target.columns, target.rows);
  if (!cv::findChessboardCornersSB(picture, size, grid.corners, flags) ||
      grid.corners.size() != static_cast<std::size_t>(size.area())) {
    grid.corners.clear();
  }
  return grid;
}

// Without corners if nothing is found; positions in the whole picture.
CornerGrid find(const cv::Mat& grey, const Target& target, const Attempt& attempt) {
  const cv::Mat picture = prepared(grey, attempt);
  CornerGrid grid;
  if (attempt.method == Method::kSaddlePoints) {
    const cv::Mat smooth = smoothed(picture);
    grid = growLattice(smooth, findSaddlePoints(smooth, kMostSaddlePoints));
  } else {
    grid = bySectors(picture, target, attempt.method == Method::kEverySector);
  }
  // Pixel centres have whole coordinates at every scale.
  for (cv::Point2f& corner : grid.corners) {
    corner.x = static_cast<float>((static_cast<double>(corner.x) + 0.5) / attempt.scale - 0.5);
    corner.y = static_cast<float>((static_cast<double>(corner.y) + 0.5) / attempt.scale - 0.5);
  }
  return grid;
}

// A board that is much larger than the one asked for is not worth being measured.
SeenBoard settled(const cv::Mat& grey, CornerGrid grid, const Target& target) {
  const auto wanted = static_cast<std::size_t>(target.columns * target.rows);
  if (grid.corners.size() <= kMuchLarger + 2 * wanted) {
    return settleBoard(grey, std::move(grid));
  }
  const BoardCheck check = checkChessboard(grey, grid.corners, grid.columns, grid.rows);
  return {.grid = std::move(grid), .check = check};
}

Detection detection(const SeenBoard& board, const Attempt& attempt) {
  std::vector<GridPoint> grid;
  for (std::size_t i = 0; i < board.grid.corners.size(); ++i) {
    const int place = static_cast<int>(i);
    grid.push_back({cv::Point2d(cv::Point(place % board.grid.columns, place / board.grid.columns)),
                    board.grid.corners[i]});
  }
  return {orientGrid(std::move(grid)), attempt.name};
}

// Whether a grid has the target as a part and only a few lines more. With many more, it may have
// grown into the board's surroundings.
bool isLarger(const CornerGrid& grid, const Target& target) {
  const auto [least, most] = std::minmax(grid.columns, grid.rows);
  const auto [wantedLeast, wantedMost] = std::minmax(target.columns, target.rows);
  const int more = least + most - wantedLeast - wantedMost;
  return least >= wantedLeast && most >= wantedMost && more > 0 && more <= kFewLines;
}

bool isBetter(const SeenBoard& a, const std::optional<SeenBoard>& b) {
  return !b || (a.whole() && !b->whole()) ||
         (a.whole() == b->whole() && a.grid.corners.size() > b->grid.corners.size());
}

}  // namespace

Search findChessboard(const cv::Mat& grey, const Target& target, const Progress& progress) {
  if (std::min(grey.cols, grey.rows) < kNarrowestPicture) {
    return {};
  }
  std::optional<SeenBoard> other;  // a board, but not the one that is asked for
  std::string larger;              // the size of a larger one that was seen, however well
  for (const Attempt& attempt : kAttempts) {
    const bool anySize = attempt.method == Method::kSaddlePoints;
    if (attempt.scale < 1 && attempt.scale * std::min(grey.cols, grey.rows) < kShortestSide) {
      continue;
    }
    if (!anySize && (!larger.empty() || (other && other->whole()))) {
      break;  // no need to look for a size that is not there
    }
    progress(std::string("looking for the chessboard by ") + attempt.name);
    CornerGrid grid = find(grey, target, attempt);
    if (grid.corners.empty()) {
      continue;
    }
    if (anySize && isLarger(grid, target)) {
      larger = std::to_string(grid.columns) + " x " + std::to_string(grid.rows);
    }
    const SeenBoard board = settled(grey, std::move(grid), target);
    if (board.whole() && board.isSized(target.columns, target.rows)) {
      return {.detection = detection(board, attempt), .seen = {}};
    }
    if (board.check.verdict != BoardVerdict::kNotABoard && isBetter(board, other)) {
      other = board;
    }
  }
  const std::string blurred =
      larger.empty() ? "" : "something like a board with " + larger + " inner corners is there";
  return {.detection = std::nullopt, .seen = other ? describeSeen(*other) : blurred};
}

}  // namespace fisheye_calibration::program
