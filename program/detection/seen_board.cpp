#include "detection/seen_board.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "detection/corner_refinement.h"
#include "detection/grid_completion.h"
#include "detection/plausible_grid.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kMostChanges = 12;  // lines added or dropped

bool isUpright(Side side) { return side == Side::kLeft || side == Side::kRight; }
bool isFirst(Side side) { return side == Side::kLeft || side == Side::kTop; }

// The grid with one line more (`change` 1) or less (-1) on a side; nothing if a new corner cannot
// be expected within the picture, or if too few lines would remain.
std::optional<CornerGrid> changed(const CornerGrid& grid, Side side, int change,
                                  const cv::Size& picture) {
  CornerGrid result = {.columns = grid.columns + (isUpright(side) ? change : 0),
                       .rows = grid.rows + (isUpright(side) ? 0 : change),
                       .corners = {},
                       .seen = grid.seen};
  if (result.columns < 3 || result.rows < 3) {
    return std::nullopt;
  }
  const int offsetColumn = side == Side::kLeft ? change : 0;
  const int offsetRow = side == Side::kTop ? change : 0;
  const std::vector<std::optional<cv::Point2d>> known(grid.corners.begin(), grid.corners.end());
  for (int r = 0; r < result.rows; ++r) {
    for (int c = 0; c < result.columns; ++c) {
      const int column = c - offsetColumn;
      const int row = r - offsetRow;
      if (column >= 0 && row >= 0 && column < grid.columns && row < grid.rows) {
        result.corners.push_back(
            grid.corners[static_cast<std::size_t>(row * grid.columns + column)]);
        continue;
      }
      const auto expected = expectedByNeighbours(known, grid.columns, grid.rows, column, row);
      if (!expected ||
          !cv::Rect2d(0, 0, picture.width - 1, picture.height - 1).contains(expected->position)) {
        return std::nullopt;
      }
      result.corners.emplace_back(expected->position);
    }
  }
  return result;
}

SeenBoard refinedAndChecked(const cv::Mat& grey, CornerGrid grid) {
  if (!isPlausibleGrid(grid.corners, grid.columns, grid.rows)) {
    return {.grid = std::move(grid), .check = {}};
  }
  const bool known = refineCorners(grey, grid.columns, grid.rows, grid.corners);
  BoardCheck check;
  if (isPlausibleGrid(grid.corners, grid.columns, grid.rows)) {
    check = checkChessboard(grey, grid.corners, grid.columns, grid.rows);
  }
  if (!known && check.verdict == BoardVerdict::kWhole) {
    check = {};  // a corner could lie anywhere
  }
  return {.grid = std::move(grid), .check = check};
}

const char* nameOf(Side side) {
  switch (side) {
    case Side::kLeft:
      return "left";
    case Side::kRight:
      return "right";
    case Side::kTop:
      return "upper";
    case Side::kBottom:
      break;
  }
  return "lower";
}

// The side of the picture that the side of the grid faces most.
Side inPicture(const CornerGrid& grid, Side side) {
  const auto at = [&](int c, int r) {
    return grid.corners[static_cast<std::size_t>(r * grid.columns + c)];
  };
  const cv::Point2f along = at(grid.columns - 1, grid.rows / 2) - at(0, grid.rows / 2);
  const cv::Point2f down = at(grid.columns / 2, grid.rows - 1) - at(grid.columns / 2, 0);
  const cv::Point2f outward = (isFirst(side) ? -1.0F : 1.0F) * (isUpright(side) ? along : down);
  if (std::abs(outward.x) > std::abs(outward.y)) {
    return outward.x < 0 ? Side::kLeft : Side::kRight;
  }
  return outward.y < 0 ? Side::kTop : Side::kBottom;
}

}  // namespace

SeenBoard settleBoard(const cv::Mat& grey, CornerGrid grid) {
  SeenBoard board = refinedAndChecked(grey, std::move(grid));
  for (int i = 0; i < kMostChanges; ++i) {
    const bool continues = board.check.verdict == BoardVerdict::kContinues;
    const bool noRim = board.check.verdict == BoardVerdict::kNoRim;
    if (!continues && !noRim) {
      break;
    }
    auto next = changed(board.grid, board.check.side, continues ? 1 : -1, grey.size());
    if (!next) {
      break;
    }
    SeenBoard candidate = refinedAndChecked(grey, std::move(*next));
    if (candidate.check.verdict == BoardVerdict::kNotABoard ||
        (noRim && candidate.check.verdict == BoardVerdict::kContinues)) {
      break;
    }
    board = std::move(candidate);
  }
  return board;
}

std::string describeSeen(const SeenBoard& board) {
  const std::string size = std::to_string(std::max(board.grid.columns, board.grid.rows)) + " x " +
                           std::to_string(std::min(board.grid.columns, board.grid.rows));
  const auto side = [&] { return std::string(nameOf(inPicture(board.grid, board.check.side))); };
  switch (board.check.verdict) {
    case BoardVerdict::kWhole:
      return "a board with " + size + " inner corners is there";
    case BoardVerdict::kContinues:
      return "a board is there that continues beyond " + size + " inner corners on its " + side() +
             " side";
    case BoardVerdict::kNoRim:
      return "of a board, " + size +
             " inner corners are there, but no whole squares beyond them on "
             "its " +
             side() + " side";
    case BoardVerdict::kCut:
      return "a board with " + size + " inner corners in view is there, but the picture's " +
             side() + " edge cuts it";
    case BoardVerdict::kNotABoard:
      break;
  }
  return "";
}

}  // namespace fisheye_calibration::program
