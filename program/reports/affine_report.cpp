#include "reports/affine_report.h"

#include <algorithm>
#include <cstddef>

#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

std::string figures(double x, double y) { return "X " + general(x, 6) + "  Y " + general(y, 6); }

}  // namespace

std::string formatAffine(const AffineMap& map) {
  std::vector<std::string> values;
  for (const double value : map.coefficients) {
    values.push_back(shortest(value));
  }
  return "a,b,c,d,e,f\n" + joined(values, ",") + "\n";
}

std::string describeAffine(const AffineMap& map, const std::vector<CalibrationPoint>& points) {
  const auto value = [&](std::size_t i) { return padLeft(general(map.coefficients[i], 7), 14); };
  const std::string all = std::to_string(points.size());
  const std::string summed = std::to_string(std::min(points.size(), kPointsSummedByLibrary));
  const WorldResidual plain = rootMeanSquare(residualsOf(map, points));
  return "Affine map from raw-image pixels (x, y) to the work plane, from " + all + " points:\n" +
         "  Xw = a x + b y + e   a" + value(0) + "  b" + value(1) + "  e" + value(4) + "\n" +
         "  Yw = c x + d y + f   c" + value(2) + "  d" + value(3) + "  f" + value(5) + "\n" +
         "Error figures in world units:\n" +
         "  the library's errorX, errorY: " + figures(map.errorX, map.errorY) +
         "   (squares of the first " + summed + " points summed, divided by all " + all + ")\n" +
         "  plain RMS over all points:    " + figures(plain.x, plain.y) + "\n";
}

}  // namespace fisheye_calibration::program
