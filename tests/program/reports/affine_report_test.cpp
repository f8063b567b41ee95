#include "reports/affine_report.h"

#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

TEST(AffineReport, CoefficientsReadBackExactly) {
  EXPECT_EQ(formatAffine({{0.5, -2, 0, 0.1, 1e-9, 300}, 0, 0}),
            "a,b,c,d,e,f\n0.5,-2,0,0.1,1e-09,300\n");
}

}  // namespace
}  // namespace fisheye_calibration::program
