#include "page/target_search.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace fisheye_calibration::program {
namespace {

constexpr int kLargeSide = 1200;                   // pixels, from which half the size will do
constexpr std::chrono::milliseconds kHolds{1000};  // that an exact result of a still picture does

}  // namespace

SearchResult searchIn(const cv::Mat& grey, const ChosenTarget& target, bool exact) {
  SearchResult result{.image = {.width = grey.cols, .height = grey.rows}};
  result.exact = exact || std::max(grey.cols, grey.rows) < kLargeSide;
  result.picture = grey;
  cv::Mat searched = grey;
  if (!result.exact) {
    cv::resize(grey, searched, {grey.cols / 2, grey.rows / 2}, 0, 0, cv::INTER_AREA);
  }
  try {
    const Search search = detectTarget(searched, target.target, [](const std::string&) {});
    if (search.detection) {
      result.points = numberedPoints(search.detection->grid, target.world);
    } else {
      result.seen = search.seen;
    }
  } catch (const cv::Exception&) {
    result.seen = "a picture of this size cannot be searched";
  }
  if (!result.exact) {
    // The first pixel of the small picture covers the first two of the large one.
    for (CalibrationPoint& point : result.points) {
      point.ImagePtX = 2 * point.ImagePtX + 0.5F;
      point.ImagePtY = 2 * point.ImagePtY + 0.5F;
    }
  }
  return result;
}

SearchResult TargetTracker::search(const cv::Mat& grey, const ChosenTarget& target, bool still,
                                   Time now) {
  rate_.add(++count_, now);
  const bool holds = exact_ && target_ == target && still && now - searched_ < kHolds;
  if (holds) {
    return *exact_;
  }
  SearchResult result = searchIn(grey, target, still);
  exact_ = result.exact && still ? std::optional(result) : std::nullopt;
  target_ = target;
  searched_ = now;
  return result;
}

}  // namespace fisheye_calibration::program
