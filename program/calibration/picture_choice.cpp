#include "calibration/picture_choice.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <vector>

#include "base/failure.h"
#include "base/text.h"
#include "calibration/bed_accuracy.h"
#include "geometry/bed_grid.h"
#include "single/placed_view.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kThousandths = 1000;    // per world unit
constexpr double kWhole = 1e-3;          // pixels: a size that close to a whole number is one
constexpr double kSmallestPixel = 1e-3;  // world units; finer ones drown in the rounding of floats
constexpr double kMostTimes = 2;         // the raw picture's columns or rows
constexpr double kMostTimesOfBed = 4;    // the same, for a wished rectangle
constexpr double kMostExtra = 1.25;      // of the pixels, for whole numbers of them
constexpr double kRim = 2;               // pixels around what is to be seen
constexpr int kMultiple = 4;             // of the sides, so that rows of 24 bits stay aligned
constexpr std::int64_t kMostPixels = (std::int64_t{1} << 31) / 4 - 1;  // 32 bits each

bool isTooLarge(double width, double height) {
  return !(width <= kLargestImageSide && height <= kLargestImageSide &&
           width * height <= static_cast<double>(kMostPixels));
}

std::vector<cv::Point2d> cornersOf(const cv::Rect2d& box) {
  return {box.tl(), {box.br().x, box.y}, box.br(), {box.x, box.br().y}};
}

cv::Point2d larger(cv::Point2d a, cv::Point2d b) {
  return {std::max(a.x, b.x), std::max(a.y, b.y)};
}

// How far the box reaches from the centre of the second-corrected picture, pixels.
cv::Point2d reachFromCentre(const FishEyeCalibrationParam& record, const cv::Rect2d& box) {
  const cv::Point2d datum(static_cast<double>(record.DatumPtXw),
                          static_cast<double>(record.DatumPtYw));
  const cv::Point2d first = box.tl() - datum;
  const cv::Point2d last = box.br() - datum;
  return cv::Point2d(std::max(std::abs(first.x), std::abs(last.x)),
                     std::max(std::abs(first.y), std::abs(last.y))) /
         static_cast<double>(record.Pixel);
}

// The sides that show what must be in the picture, and what is useful as far as that takes no more
// than kMostTimes the raw picture's; not finite if there is no such picture.
cv::Point2d sidesFor(cv::Point2d mustReach, cv::Point2d usefulReach, const Size& image) {
  const auto side = [](double must, double useful, int raw) {
    const double reach = std::max(must, std::min(useful, 0.5 * kMostTimes * raw - kRim));
    return kMultiple * std::ceil(2 * (reach + kRim) / kMultiple);
  };
  return {side(mustReach.x, usefulReach.x, image.width),
          side(mustReach.y, usefulReach.y, image.height)};
}

Size sizeOf(cv::Point2d sides) {
  return {.width = static_cast<int>(sides.x), .height = static_cast<int>(sides.y)};
}

// Lays the picture over the bed from `corner` on.
void place(cv::Point2d corner, double resolution, const Size& size, CalibrationResult& result) {
  // Parameter files keep six decimals of the pixel size.
  const auto pixel = static_cast<float>(std::round(resolution * 1e6) / 1e6);
  result.corrected = size;
  result.homographyFound =
      single::placeSecondCorrection(corner, pixel, size.width, size.height, result.param);
}

// Lays a picture of this size over the box, which it shows as large as possible.
void placeAround(const cv::Rect2d& box, const Size& size, CalibrationResult& result) {
  const double resolution = std::max(
      {box.width / (size.width - 2 * kRim), box.height / (size.height - 2 * kRim), kSmallestPixel});
  const cv::Point2d half(0.5 * resolution * size.width, 0.5 * resolution * size.height);
  place((box.tl() + box.br()) / 2 - half, resolution, size, result);
}

void choosePicture(const Size& image, const std::function<CalibrationResult(const Size&)>& solve,
                   CalibrationResult& result) {
  const FishEyeCalibrationParam& record = result.param;
  const cv::Rect2d target = targetBox(result.points);
  const std::vector<cv::Point2d> useful = usefulPoints(record, image);
  if (useful.empty()) {
    return;
  }
  const cv::Rect2d usefulBox = boxAround(useful);
  const cv::Point2d targetReach = reachFromAxis(record, cornersOf(target));
  const cv::Point2d usefulReach = reachFromAxis(record, useful);
  const cv::Point2d least = sidesFor(targetReach, usefulReach, image);
  const cv::Point2d around =
      sidesFor(larger(targetReach, reachFromCentre(record, target)),
               larger(usefulReach, reachFromCentre(record, usefulBox)), image);
  const cv::Point2d most = larger(least, kMostTimes * cv::Point2d(image.width, image.height));
  if (around.x <= most.x && around.y <= most.y && !isTooLarge(around.x, around.y)) {
    result = solve(sizeOf(around));
  } else if (!isTooLarge(least.x, least.y)) {
    placeAround(target | usefulBox, sizeOf(least), result);
  }
}

// The largest whole part of the length, in thousandths of the unit, that is not above `pixel` and
// has no more than six decimals; nothing if that takes kMostExtra times as many pixels.
std::optional<double> exactPart(std::int64_t thousandths, double pixel) {
  const double length = static_cast<double>(thousandths) / kThousandths;
  const double fewest = std::ceil(length / pixel - kWhole);
  for (double parts = fewest; parts <= kMostExtra * length / pixel; ++parts) {
    if (1000 * thousandths % static_cast<std::int64_t>(parts) == 0) {
      return length / parts;
    }
  }
  return std::nullopt;
}

// The resolution for a wished rectangle: as fine as the raw picture where that is sharpest, and
// fine enough that the picture can show all that is seen of the rectangle, though not with much
// more than kMostTimesOfBed the raw picture's columns or rows.
double resolutionFor(const cv::Rect2d& bed, const Size& image, const CalibrationResult& result) {
  const std::vector<cv::Point2d> seen = seenPoints(result.param, image, bed);
  const cv::Point2d sides = sidesFor(reachFromAxis(result.param, seen), {}, image);
  const double finest = std::max({bed.width / (kMostTimesOfBed * image.width),
                                  bed.height / (kMostTimesOfBed * image.height), kSmallestPixel});
  const double needed =
      std::min({1 / bestSharpness(result.param, image), bed.width / sides.x, bed.height / sides.y});
  return chosenResolution(bed, std::max(needed, finest));
}

void showBed(const PictureWish& wish, const Size& image, CalibrationResult& result) {
  const cv::Rect2d& bed = *wish.bed;
  double resolution = wish.resolution;
  if (resolution == 0) {
    resolution = resolutionFor(bed, image, result);
  }
  if (resolution < kSmallestPixel) {
    failBadInput("--resolution: at least " + general(kSmallestPixel, 3));
  }
  const double width = bed.width / resolution;
  const double height = bed.height / resolution;
  if (isTooLarge(width, height)) {
    failBadInput("--bed: the corrected picture would have " + general(width, 6) + "x" +
                 general(height, 6) + " pixels; give a coarser --resolution");
  }
  place(bed.tl(), resolution, sizeOfArea(bed, resolution), result);
}

}  // namespace

bool showsTarget(const CalibrationResult& result) {
  const cv::Rect2d target = targetBox(result.points);
  const cv::Rect2d shown = shownArea(result.param, result.corrected);
  const std::vector<cv::Point2d> corners = cornersOf(target);
  return (shown & target) == target && std::all_of(corners.begin(), corners.end(), [&](auto point) {
           return canShow(result.param, result.corrected, point);
         });
}

double chosenResolution(const cv::Rect2d& bed, double pixel) {
  const auto width = std::llround(bed.width * kThousandths);
  const auto height = std::llround(bed.height * kThousandths);
  const auto both = exactPart(std::gcd(width, height), pixel);
  const auto one = exactPart(width, pixel);
  return both.value_or(one.value_or(bed.width / std::ceil(bed.width / pixel)));
}

Size sizeOfArea(const cv::Rect2d& bed, double resolution) {
  const auto side = [&](double length) {
    return std::max(1, static_cast<int>(std::ceil(length / resolution - kWhole)));
  };
  return {.width = side(bed.width), .height = side(bed.height)};
}

CalibrationResult withChosenPicture(const PictureWish& wish, const Size& image,
                                    const std::function<CalibrationResult(const Size&)>& solve) {
  CalibrationResult result = solve(wish.size.value_or(image));
  if (wish.bed) {
    showBed(wish, image, result);
  } else if (!wish.size && result.homographyFound) {
    choosePicture(image, solve, result);
  }
  return result;
}

}  // namespace fisheye_calibration::program
