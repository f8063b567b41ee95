#include "commands/point_mapper.h"

#include <cmath>
#include <optional>

#include "geometry/conversions.h"
#include "geometry/raw_ray.h"
#include "geometry/record_matrices.h"
#include "geometry/second_view.h"

namespace fisheye_calibration::program {
namespace {

using Param = FishEyeCalibrationParam;

MappedPoint checked(const cv::Point2f& position) {
  MappedPoint mapped = {.position = position};
  if (!std::isfinite(position.x) || !std::isfinite(position.y)) {
    mapped.refusal = "the result is not a finite number";
  }
  return mapped;
}

std::string refusalOf(Sight sight) {
  switch (sight) {
    case Sight::kBeyondLens:
      return "the pixel lies farther from the principal point than the lens curve reaches";
    case Sight::kParallel:
      return "the pixel's ray runs parallel to the bed";
    case Sight::kAwayFromBed:
      return "the pixel's ray runs away from the bed";
    case Sight::kBed:
      break;
  }
  return {};
}

MappedPoint fromRaw(const Param& param, ImageFrame to, const cv::Point2d& raw,
                    const Size& corrected) {
  if (to == ImageFrame::kWorld) {
    const SeenPoint seen = bedPointAt(param, raw);
    if (seen.sight != Sight::kBed) {
      return {.position = {}, .refusal = refusalOf(seen.sight)};
    }
    return checked(seen.bed);
  }
  // The second-corrected picture is rendered around another centre than the library maps by.
  const bool toSecond = to == ImageFrame::kSecond;
  const auto position =
      correctedPositionOf(param, raw, toSecond ? renderedCentreOf(corrected) : centreOf(corrected));
  if (!position) {
    return {.position = {}, .refusal = refusalOf(Sight::kBeyondLens)};
  }
  return checked(toSecond ? secondCorrected(param, *position) : *position);
}

MappedPoint fromWorld(const Param& param, ImageFrame to, const cv::Point3f& world,
                      const Size& corrected) {
  const cv::Point2f bed(world.x, world.y);
  const cv::Point2f centre = centreOf(corrected);
  if (to == ImageFrame::kSecond) {
    return checked(secondCorrectedPosition(param, bed, centre, world.z));
  }
  MappedPoint mapped =
      checked(to == ImageFrame::kRaw ? rawPosition(param, bed, world.z)
                                     : correctedPosition(param, bed, centre, world.z));
  mapped.behindCamera = !(depthOf(param, world.x, world.y, world.z) > 0);
  return mapped;
}

}  // namespace

PointMapper mapperFor(const Conversion& conversion, const Param& param, const Size& corrected) {
  return [=](const cv::Point3f& point) {
    const cv::Point2f position(point.x, point.y);
    switch (conversion.from) {
      case ImageFrame::kRaw:
        return fromRaw(param, conversion.to, position, corrected);
      case ImageFrame::kSecond:
        return checked(bedPositionAt(param, position, centreOf(corrected)));
      default:
        return fromWorld(param, conversion.to, point, corrected);
    }
  };
}

PointMapper mapperFor(const Conversion& conversion, const DualFishEyeCalibrationParam& dual) {
  return [=](const cv::Point3f& point) {
    const cv::Point2f position(point.x, point.y);
    return checked(conversion.from == ImageFrame::kStitched
                       ? bedPositionAt(dual, position)
                       : stitchedPosition(dual, position, point.z));
  };
}

}  // namespace fisheye_calibration::program
