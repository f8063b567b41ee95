// The solver on measured points of real lenses, against the plain derivation.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "fisheye/fisheye.h"
#include "support/measured_views_test_base.h"
#include "support/plain_solver.h"
#include "support/synthetic_rig.h"

using namespace fisheye_calibration;

namespace {

const cv::TermCriteria kHost(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 20, 1e-6);

class CalibrationOfMeasuredViews : public support::MeasuredViewsTest {};

double rmsOf(const std::vector<support::MeasuredView>& views) {
  std::vector<std::vector<cv::Point3f>> X;
  std::vector<std::vector<cv::Point2f>> x;
  for (const support::MeasuredView& view : views) {
    X.push_back(view.objectPoints);
    x.push_back(view.imagePoints);
  }
  cv::Mat K;
  cv::Mat D;
  return fisheye::calibrate(X, x, views[0].imageSize, K, D, cv::noArray(), cv::noArray(), 10,
                            kHost);
}

// The plain derivation's residual, with every pixel moved by normal noise of `shake` pixels.
double plainRmsOf(const support::MeasuredView& view, double shake, std::uint64_t seed) {
  plain::View wide;
  cv::Mat(view.objectPoints).convertTo(wide.objectPoints, CV_64F);
  cv::Mat(view.imagePoints).convertTo(wide.imagePoints, CV_64F);
  support::Random random(seed);
  for (int i = 0; i < wide.imagePoints.rows; ++i) {
    wide.imagePoints.at<cv::Vec2d>(i) += cv::Vec2d(random.normal(shake), random.normal(shake));
  }
  return plain::calibrate({wide}, view.imageSize, kHost).uncertainties.rms;
}

// How far a shake of 1e-12 px moves the plain derivation's own residual: about 1e-10 of
// it where the view determines the lens, more where it hardly does.
double roundingOf(const support::MeasuredView& view, double rms) {
  double largest = 0;
  for (std::uint64_t seed = 1; seed <= 5; ++seed) {
    largest = std::max(largest, std::abs(plainRmsOf(view, 1e-12, seed) - rms));
  }
  return largest;
}

// The residuals of an independent least-squares fit of all views.
TEST_F(CalibrationOfMeasuredViews, AllViewsTogetherReachTheKnownResiduals) {
  EXPECT_NEAR(rmsOf(support::readMeasuredSet("office_mono")[0].views), 1.511, 0.0006);
  EXPECT_NEAR(rmsOf(support::readMeasuredSet("office_stereo")[0].views), 0.421, 0.0006);
  EXPECT_NEAR(rmsOf(support::readMeasuredSet("office_stereo")[1].views), 0.449, 0.0006);
  EXPECT_NEAR(rmsOf(support::readMeasuredSet("garage")[0].views), 0.445, 0.0006);
}

// On these views the solver diverges, and what comes out depends on rounding.
bool diverges(const std::string& set, const std::string& view) {
  static const std::vector<std::string> mono = {"left-0025", "left-0034", "left-0037"};
  static const std::vector<std::string> stereo = {"left-0001", "left-0002", "left-0020",
                                                  "right-0000", "right-0042"};
  const std::vector<std::string>& list = set == "office_mono" ? mono : stereo;
  return set != "garage" && std::find(list.begin(), list.end(), view) != list.end();
}

TEST_F(CalibrationOfMeasuredViews, EachSingleViewReachesThePlainResidual) {
  for (const char* set : {"office_mono", "office_stereo", "garage"}) {
    for (const support::MeasuredCamera& camera : support::readMeasuredSet(set)) {
      for (const support::MeasuredView& view : camera.views) {
        if (diverges(set, view.name)) continue;
        const double expected = plainRmsOf(view, 0, 1);
        const double found = rmsOf({view});
        if (std::abs(found - expected) <= 1e-6 * expected) continue;
        const double rounding = roundingOf(view, expected);
        EXPECT_LT(rounding, 1e-3 * expected) << set << " " << view.name;
        EXPECT_NEAR(found, expected, 5 * rounding) << set << " " << view.name;
      }
    }
  }
}

TEST_F(CalibrationOfMeasuredViews, DivergentViewsEndTheSameWayEachTime) {
  for (const char* set : {"office_mono", "office_stereo"}) {
    for (const support::MeasuredCamera& camera : support::readMeasuredSet(set)) {
      for (const support::MeasuredView& view : camera.views) {
        if (!diverges(set, view.name)) continue;
        const auto outcome = [&] {
          try {
            return std::to_string(rmsOf({view}));
          } catch (const cv::Exception& error) {
            return error.err;
          }
        };
        EXPECT_EQ(outcome(), outcome()) << set << " " << view.name;
      }
    }
  }
}

}  // namespace
