#include "geometry/whole_datum.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace fisheye_calibration::program {
namespace {

constexpr int kMostRows = 64;         // by which the datum moves down
constexpr double kGoodEnough = 0.02;  // of a pixel; more rows for less than that are not worth it
constexpr double kFileResolution = 1e-6;

// One axis of a record: the picture shows world coordinate datum at pixel datumPixel.
struct Axis {
  double unitsPerPixel;
  double datum;
  int datumPixel;
  int size;  // of the picture
};

struct Move {
  int pixels = 0;
  double datum = 0;  // whole
  double rest = 0;   // largest difference in world units, over the picture
};

// With p for unitsPerPixel, pixel u shows (u - datumPixel) p + datum. The file gives p' for p and
// the moved datum, so the difference is linear in u and largest at an end of the picture.
Move moved(const Axis& axis, int pixels) {
  const double inFile = std::round(axis.unitsPerPixel / kFileResolution) * kFileResolution;
  Move move = {.pixels = pixels};
  move.datum = std::round(axis.datum + pixels * axis.unitsPerPixel);
  for (const int u : {0, axis.size - 1}) {
    const double shown = (u - axis.datumPixel) * axis.unitsPerPixel + axis.datum;
    const double read = (u - axis.datumPixel - pixels) * inFile + move.datum;
    move.rest = std::max(move.rest, std::abs(shown - read));
  }
  return move;
}

bool isWhole(double value) { return value == std::round(value); }

// To any column of the picture; the shortest of equally good moves.
Move bestAcross(const Axis& axis) {
  Move best = moved(axis, 0);
  if (isWhole(axis.datum)) {
    return best;
  }
  for (int distance = 1; distance < axis.size; ++distance) {
    for (const int pixels : {distance, -distance}) {
      const int column = axis.datumPixel + pixels;
      const Move move = moved(axis, pixels);
      if (column >= 0 && column < axis.size && move.rest < best.rest - kFileResolution) {
        best = move;
      }
    }
  }
  return best;
}

// Down by an even number of rows, so that the picture's height stays a multiple of 4; by the fewest
// that are good enough.
Move bestDown(const Axis& axis) {
  if (isWhole(axis.datum)) {
    return moved(axis, 0);
  }
  std::vector<Move> moves;
  for (int pixels = 0; pixels <= kMostRows; pixels += 2) {
    moves.push_back(moved(axis, pixels));
  }
  const auto byRest = [](const Move& a, const Move& b) { return a.rest < b.rest; };
  const Move best = *std::min_element(moves.begin(), moves.end(), byRest);
  const double enough = std::max(best.rest, kGoodEnough * axis.unitsPerPixel);
  return *std::find_if(moves.begin(), moves.end(),
                       [&](const Move& move) { return move.rest <= enough; });
}

}  // namespace

WholeDatum withWholeDatum(const DualFishEyeCalibrationParam& dual) {
  WholeDatum result = {.record = dual};
  const double p = dual.Pixel;
  const bool finite =
      std::isfinite(p) && std::isfinite(dual.DatumPtXw) && std::isfinite(dual.DatumPtYw);
  if (!finite || !(p > 0)) {
    return result;
  }
  const Move x = bestAcross({.unitsPerPixel = p,
                             .datum = dual.DatumPtXw,
                             .datumPixel = dual.DatumImagePtX,
                             .size = dual.StdImageWidth});
  const Move y = bestDown({.unitsPerPixel = p,
                           .datum = dual.DatumPtYw,
                           .datumPixel = dual.DatumImagePtY,
                           .size = dual.StdImageHeight});
  result.record.DatumImagePtX += x.pixels;
  result.record.DatumPtXw = static_cast<float>(x.datum);
  result.record.DatumImagePtY += y.pixels;
  result.record.DatumPtYw = static_cast<float>(y.datum);
  result.addedRows = 2 * y.pixels;
  result.record.StdImageHeight += result.addedRows;
  result.rest = std::max(x.rest, y.rest);
  return result;
}

}  // namespace fisheye_calibration::program
