#include "detection/corner_refinement.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

#include "detection/corner_model.h"
#include "detection/grid_completion.h"
#include "detection/median.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kWindow = 0.42;  // of the distance to the nearest neighbour
constexpr double kSmallestWindow = 2.5;
constexpr double kLargestWindow = 14;  // pixels
constexpr int kMostMoves = 4;
constexpr double kCentred = 0.3;  // of the window
constexpr int kPasses = 3;
constexpr double kTolerancePixels = 0.4;  // of the deviation from where neighbours expect a corner
constexpr double kToleranceOfSpacing = 0.01;
constexpr double kUsualDeviations = 5;
constexpr double kGoodContrast = 0.4;   // of the usual one
constexpr double kGoodExplained = 0.6;  // of the usual share
constexpr double kClearExplained = 0.85;
constexpr double kClearContrast = 0.15;   // of the usual one: low, as in glare, but undisturbed
constexpr double kLargestContrast = 1.5;  // of the usual one; slopes of smooth edges pass for more
constexpr double kLookAround = 0.25;      // of the spacing
constexpr double kLargestUncertainty = 0.1;  // of the spacing, of a corner that cannot be measured
// Of the spacing: off what the neighbours expect. Real boards deviate by up to 0.14.
constexpr double kCertain = 0.17;
constexpr double kFarthest = 0.6;  // of the spacing, from where a corner was expected

constexpr double kExtrapolated =
    2;  // times the neighbours' uncertainty: beyond a corner of the grid
constexpr double kLargestMisfit = 0.2;  // of the spacing

using Known = std::vector<std::optional<cv::Point2d>>;

class Refinement {
 public:
  Refinement(const cv::Mat& grey, int columns, int rows, std::vector<cv::Point2f>& corners)
      : grey_(grey), columns_(columns), rows_(rows), corners_(corners) {}

  bool run() {
    const std::vector<cv::Point2f> coarse = corners_;
    for (int i = 0; i < columns_ * rows_; ++i) {
      const auto fit = fitAt(i, cv::Point2d(coarse[index(i)]), coarse);
      corners_[index(i)] = fit ? cv::Point2f(fit->position) : coarse[index(i)];
      fits_.push_back(fit.value_or(CornerFit{}));
    }
    usualContrast_ = medianAmongFits(&CornerFit::contrast);
    usualExplained_ = medianAmongFits(&CornerFit::explained);
    for (int i = 0; i < columns_ * rows_; ++i) {
      lookAround(i, cv::Point2d(coarse[index(i)]));
    }
    for (int i = 0; i < columns_ * rows_; ++i) {
      const Known known(corners_.begin(), corners_.end());
      const auto expected = expectedAt(known, i);
      lookAround(i, expected ? expected->position : cv::Point2d(corners_[index(i)]));
    }
    for (int pass = 0; pass < kPasses && mendOutliers(); ++pass) {
    }
    return allKnown() && allFit();
  }

 private:
  static std::size_t index(int i) { return static_cast<std::size_t>(i); }
  cv::Point2d at(const std::vector<cv::Point2f>& corners, int c, int r) const {
    return cv::Point2d(corners[index(r * columns_ + c)]);
  }

  // Half the way from one neighbour to the other, along a row or a column; one-sided at the rim.
  cv::Point2d step(const std::vector<cv::Point2f>& corners, int i, int dc, int dr) const {
    const int c = i % columns_;
    const int r = i / columns_;
    const int c0 = std::max(c - dc, 0);
    const int r0 = std::max(r - dr, 0);
    const int c1 = std::min(c + dc, columns_ - 1);
    const int r1 = std::min(r + dr, rows_ - 1);
    return (at(corners, c1, r1) - at(corners, c0, r0)) / (c1 - c0 + r1 - r0);
  }

  double spacing(const std::vector<cv::Point2f>& corners, int i) const {
    return std::min(cv::norm(step(corners, i, 1, 0)), cv::norm(step(corners, i, 0, 1)));
  }

  std::optional<CornerFit> fitAt(int i, cv::Point2d start,
                                 const std::vector<cv::Point2f>& corners) const {
    const double near = spacing(corners, i);
    const cv::Point2d along = step(corners, i, 1, 0);
    const cv::Point2d down = step(corners, i, 0, 1);
    CrossedEdges edges = {.position = start,
                          .first = std::atan2(along.y, along.x),
                          .second = std::atan2(down.y, down.x)};
    const double radius = std::max(kWindow * near, kSmallestWindow);
    auto fit = centredFit(edges, std::min(radius, kLargestWindow));
    if (radius > kLargestWindow) {
      // The corner may lie outside of the small window, which is the most exact one.
      if (const auto rough = centredFit(edges, radius)) {
        edges.position = rough->position;
        const auto again = centredFit(edges, kLargestWindow);
        fit = again && (!fit || again->explained > fit->explained) ? again : fit;
      }
    }
    return fit && cv::norm(fit->position - start) < near / 2 ? fit : std::nullopt;
  }

  // Moves the window until it has the corner in its middle. Without that, a single edge would pass
  // for a corner whose other edge lies at the window's border.
  std::optional<CornerFit> centredFit(CrossedEdges edges, double radius) const {
    for (int i = 0; i < kMostMoves; ++i) {
      const auto fit = fitCorner(grey_, edges, radius);
      if (!fit || cv::norm(fit->position - edges.position) < kCentred * radius) {
        return fit;
      }
      edges.position = fit->position;
    }
    return std::nullopt;
  }

  std::optional<ExpectedCorner> expectedAt(const Known& known, int i) const {
    return expectedByNeighbours(known, columns_, rows_, i % columns_, i / columns_);
  }

  // The distance of a position from the one that the known neighbours expect, in units of the
  // expectation's uncertainty.
  double deviation(const Known& known, int i, cv::Point2d position) const {
    const auto expected = expectedAt(known, i);
    return expected ? cv::norm(position - expected->position) / expected->uncertainty : 0;
  }

  bool isClear(const CornerFit& fit) const {
    return fit.explained > kClearExplained * usualExplained_ &&
           fit.contrast > kClearContrast * usualContrast_ &&
           fit.contrast < kLargestContrast * usualContrast_;
  }

  bool isGood(const CornerFit& fit) const {
    return isClear(fit) || (fit.contrast > kGoodContrast * usualContrast_ &&
                            fit.explained > kGoodExplained * usualExplained_);
  }

  // The clearest corner around one that was not measured well, such as one at the rim where a
  // strongly bent grid was continued to the wrong place.
  void lookAround(int i, cv::Point2d expected) {
    if (isClear(fits_[index(i)])) {
      return;
    }
    const double near = spacing(corners_, i);
    for (int k = 0; k < 9; ++k) {
      const cv::Point2d offset(cv::Point(k % 3 - 1, k / 3 - 1));
      const auto fit = fitAt(i, expected + kLookAround * near * offset, corners_);
      if (fit && isClear(*fit) && fit->explained > fits_[index(i)].explained &&
          cv::norm(fit->position - expected) < kFarthest * near) {
        corners_[index(i)] = cv::Point2f(fit->position);
        fits_[index(i)] = *fit;
      }
    }
  }

  double medianAmongFits(double CornerFit::*value) const {
    std::vector<double> values;
    values.reserve(fits_.size());
    for (const CornerFit& fit : fits_) {
      values.push_back(fit.*value);
    }
    return medianOf(std::move(values));
  }

  // Half of the corners deviate by less: what the lens's bending and noise make.
  double usualDeviation(const Known& known) const {
    std::vector<double> deviations;
    deviations.reserve(corners_.size());
    for (int i = 0; i < columns_ * rows_; ++i) {
      deviations.push_back(deviation(known, i, cv::Point2d(corners_[index(i)])));
    }
    return medianOf(std::move(deviations));
  }

  // Removes corners that deviate too much from `known`, the worst first, as it misleads its
  // neighbours.
  std::vector<int> removeOutliers(Known& known) const {
    const double usual = usualDeviation(known);
    const auto excess = [&](int i) {
      const auto expected = expectedAt(known, i);
      if (!known[index(i)] || !expected) {
        return 0.0;
      }
      const double distance = cv::norm(*known[index(i)] - expected->position);
      return std::max(distance / expected->uncertainty / allowedDeviation(i, usual),
                      distance / (kCertain * spacing(corners_, i)));
    };
    std::vector<double> excesses;
    excesses.reserve(corners_.size());
    for (int i = 0; i < columns_ * rows_; ++i) {
      excesses.push_back(excess(i));
    }
    std::vector<int> outliers;
    while (outliers.size() < corners_.size() / 4) {
      const auto largest = std::max_element(excesses.begin(), excesses.end());
      if (*largest <= 1) {
        break;
      }
      const int worst = static_cast<int>(largest - excesses.begin());
      known[index(worst)].reset();
      outliers.push_back(worst);
      for (int i = 0; i < columns_ * rows_; ++i) {
        if (std::abs(i % columns_ - worst % columns_) <= kNeighbourReach &&
            std::abs(i / columns_ - worst / columns_) <= kNeighbourReach) {
          excesses[index(i)] = excess(i);
        }
      }
    }
    return outliers;
  }

  // Whether each corner that cannot be measured is determined by its neighbours.
  bool allKnown() const {
    const Known known(corners_.begin(), corners_.end());
    const double usual = usualDeviation(known);
    for (int i = 0; i < columns_ * rows_; ++i) {
      if (isGood(fits_[index(i)])) {
        continue;
      }
      const auto expected = expectedAt(known, i);
      if (!expected || expected->uncertainty > kExtrapolated ||
          expected->uncertainty * usual > kLargestUncertainty * spacing(corners_, i)) {
        return false;
      }
    }
    return true;
  }

  // True if no corner contradicts its neighbours.
  bool allFit() const {
    const Known known(corners_.begin(), corners_.end());
    for (int i = 0; i < columns_ * rows_; ++i) {
      const auto expected = expectedAt(known, i);
      if (expected &&
          cv::norm(*known[index(i)] - expected->position) > kLargestMisfit * spacing(corners_, i)) {
        return false;
      }
    }
    return true;
  }

  double allowedDeviation(int i, double usual) const {
    const double near = spacing(corners_, i);
    return kTolerancePixels + kToleranceOfSpacing * near + kUsualDeviations * usual;
  }

  bool mendOutliers() {
    Known known(corners_.begin(), corners_.end());
    bool changed = false;
    for (const int i : removeOutliers(known)) {
      const auto expected = expectedAt(known, i);
      if (!expected) {
        continue;
      }
      const auto fit = fitAt(i, expected->position, corners_);
      CornerFit& old = fits_[index(i)];
      const double certain = kCertain * spacing(corners_, i);
      const bool far = cv::norm(cv::Point2d(corners_[index(i)]) - expected->position) > certain;
      const bool better = fit && isGood(*fit) &&
                          (far ? cv::norm(fit->position - expected->position) < certain
                               : fit->explained > old.explained);
      if (!better && isGood(old) && !far) {
        continue;  // the corner is there, whatever its neighbours say
      }
      corners_[index(i)] = cv::Point2f(better ? fit->position : expected->position);
      old = better ? *fit : CornerFit{};
      changed = true;
    }
    return changed;
  }

  const cv::Mat& grey_;
  int columns_;
  int rows_;
  std::vector<cv::Point2f>& corners_;
  std::vector<CornerFit> fits_;
  double usualContrast_ = 0;
  double usualExplained_ = 0;
};

}  // namespace

bool refineCorners(const cv::Mat& grey, int columns, int rows, std::vector<cv::Point2f>& corners) {
  return Refinement(grey, columns, rows, corners).run();
}

}  // namespace fisheye_calibration::program
