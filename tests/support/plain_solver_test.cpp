#include "support/plain_solver.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/measured_views_test_base.h"
#include "support/synthetic_rig.h"

namespace {

const cv::TermCriteria kCriteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 20, 1e-6);
const cv::TermCriteria kLong(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 60, 1e-13);

cv::Mat carried(const cv::Mat& H, const cv::Mat& M) {
  cv::Mat homogeneous;
  cv::vconcat(M, cv::Mat::ones(1, M.cols, CV_64F), homogeneous);
  cv::Mat m = H * homogeneous;
  for (int i = 0; i < m.cols; ++i) m.col(i) /= m.at<double>(2, i);
  return m;
}

TEST(PlainHomography, RecoversAKnownOneFromFourAndFromMorePoints) {
  const cv::Mat H = (cv::Mat_<double>(3, 3) << 1.2, 0.1, 3, -0.2, 0.9, 5, 0.001, -0.002, 1);
  const cv::Mat four = (cv::Mat_<double>(2, 4) << 0, 10, 10, 0, 0, 0, 8, 9);
  const cv::Mat six = (cv::Mat_<double>(2, 6) << 0, 10, 10, 0, 4, 7, 0, 0, 8, 9, 3, 6);
  EXPECT_LT(cv::norm(plain::computeHomography(carried(H, four), four), H, cv::NORM_INF), 1e-12);
  EXPECT_LT(cv::norm(plain::computeHomography(carried(H, six), six), H, cv::NORM_INF), 1e-12);
}

TEST(PlainSolver, RecoversASyntheticCamera) {
  for (std::uint64_t seed = 1; seed <= 5; ++seed) {
    const support::Rig rig = support::randomRig(seed, 4);
    const plain::Calibration found =
        plain::calibrate(rig.plainViews(), rig.camera.imageSize, kLong);
    EXPECT_NEAR(found.camera.focalX, rig.camera.fx, 1e-8 * rig.camera.fx) << "seed " << seed;
    EXPECT_NEAR(found.camera.focalY, rig.camera.fy, 1e-8 * rig.camera.fx);
    EXPECT_NEAR(found.camera.principalX, rig.camera.cx, 1e-8 * rig.camera.fx);
    EXPECT_NEAR(found.camera.principalY, rig.camera.cy, 1e-8 * rig.camera.fx);
    EXPECT_NEAR(found.camera.k0, rig.camera.k0, 1e-8);
    EXPECT_NEAR(found.camera.k1, rig.camera.k1, 1e-8);
    EXPECT_LT(found.uncertainties.rms, 1e-8);
  }
}

std::vector<plain::View> plainViews(const support::MeasuredCamera& camera) {
  std::vector<plain::View> views;
  for (const support::MeasuredView& view : camera.views) {
    plain::View wide;
    cv::Mat(view.objectPoints).convertTo(wide.objectPoints, CV_64F);
    cv::Mat(view.imagePoints).convertTo(wide.imagePoints, CV_64F);
    views.push_back(wide);
  }
  return views;
}

class PlainSolverOnMeasuredViews : public support::MeasuredViewsTest {};

// rms of all views together, of an independent least-squares fit.
void expectRms(const support::MeasuredCamera& camera, double rms) {
  const plain::Calibration found =
      plain::calibrate(plainViews(camera), camera.views[0].imageSize, kCriteria);
  EXPECT_NEAR(found.uncertainties.rms, rms, 0.0006) << camera.name;
}

TEST_F(PlainSolverOnMeasuredViews, ReachesTheKnownResidualOnTheGarageViews) {
  const auto cameras = support::readMeasuredSet("garage");
  expectRms(cameras[0], 0.445);
}

TEST_F(PlainSolverOnMeasuredViews, ReachesTheKnownResidualOnTheOfficeViews) {
  const auto cameras = support::readMeasuredSet("office_mono");
  expectRms(cameras[0], 1.511);
}

TEST_F(PlainSolverOnMeasuredViews, ReachesTheKnownResidualsOnTheStereoViews) {
  const auto cameras = support::readMeasuredSet("office_stereo");
  ASSERT_EQ(cameras.size(), 2u);
  expectRms(cameras[0], 0.421);
  expectRms(cameras[1], 0.449);
}

TEST_F(PlainSolverOnMeasuredViews, ReachesTheKnownMedianOfSingleGarageViews) {
  const auto cameras = support::readMeasuredSet("garage");
  std::vector<double> residuals;
  for (const plain::View& view : plainViews(cameras[0])) {
    residuals.push_back(
        plain::calibrate({view}, cameras[0].views[0].imageSize, kCriteria).uncertainties.rms);
  }
  std::sort(residuals.begin(), residuals.end());
  EXPECT_NEAR(residuals[residuals.size() / 2], 0.271, 0.0006);
}

}  // namespace
