// The numbers behind the drawings of a report.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "report_pages/arrows.h"
#include "report_pages/bed_map.h"
#include "report_pages/corrected_figure.h"
#include "report_pages/lens_figure.h"
#include "report_pages/plan.h"
#include "report_pages/view_points.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

// The longer side is 720 units long and begins at (62, 14).
TEST(Plan, KeepsTheShapeOfWhatItShows) {
  const Plan plan({100, 50, 400, 200}, "mm");
  EXPECT_DOUBLE_EQ(plan.scale(), 1.8);
  EXPECT_EQ(plan.position({100, 50}), cv::Point2d(62, 14));
  EXPECT_EQ(plan.position({500, 250}), cv::Point2d(782, 374));
}

// A picture of 800 x 400 pixels is drawn as large as it is. The bed's zero is the middle of its
// first pixel, 0.5 from the edge.
TEST(CorrectedFigure, LinesRunThroughTheMiddlesOfPixels) {
  const MetricPicture metric{.size = {800, 400},
                             .pixel = 1,
                             .bedAt = [](cv::Point2d at) { return at; },
                             .positionOf = [](cv::Point2d at) { return at; }};
  const std::string drawing =
      griddedPicture(cv::Mat(400, 800, CV_8UC1, cv::Scalar(0)), metric, "bed", "");
  EXPECT_THAT(drawing, HasSubstr("lines every 100 mm"));
  EXPECT_THAT(drawing, HasSubstr("x1=\"100.5\" y1=\"0\" x2=\"100.5\" y2=\"400\""));
  EXPECT_THAT(drawing, HasSubstr("x1=\"0\" y1=\"200.5\" x2=\"800\" y2=\"200.5\""));
}

// Values that rise along x: 0 at x = 0, 4 at x = 100.
AccuracyMap slope() {
  return {.grid = {.area = {0, 0, 100, 50}, .columns = 2, .rows = 2}, .errors = {0, 4, 0, 4}};
}

TEST(BedMap, ContoursLieWhereTheLevelIsReached) {
  const auto lines = contourAt(slope(), 1);
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_EQ(lines[0].first, cv::Point2d(25, 0));
  EXPECT_EQ(lines[0].second, cv::Point2d(25, 50));
  EXPECT_THAT(contourAt(slope(), 5), IsEmpty());
}

TEST(BedMap, NoContourCrossesWhatIsNotSeen) {
  AccuracyMap map = slope();
  map.errors[3] = NAN;
  EXPECT_THAT(contourAt(map, 1), IsEmpty());
}

TEST(BedMap, NothingSeenIsNoError) {
  AccuracyMap map = slope();
  map.errors = {NAN, NAN, NAN, NAN};
  EXPECT_THAT(bedMapFigure(map), Not(HasSubstr("<image")));
}

// r = 100 (0.5 + 0.1 0.25 - 0.2 0.125) = 50. With a deviation of 0.01 of k0 alone, that of r is
// 100 0.25 0.01 = 0.25, its band 1.96 times as wide; with 2 of fx alone, 2 0.5/2 = 0.5.
TEST(LensFigure, BandFollowsTheDeviationOfEveryParameter) {
  LensCurve curve{.camera = {.fx = 101, .fy = 99, .k0 = 0.1, .k1 = -0.2},
                  .covariance = cv::Matx66d::zeros()};
  EXPECT_NEAR(lensRadius(curve.camera, 0.5), 50, 1e-12);
  EXPECT_EQ(lensBand(curve, 0.5), 0);
  curve.covariance(4, 4) = 0.0001;
  EXPECT_NEAR(lensBand(curve, 0.5), 0.49, 1e-12);
  curve.covariance = cv::Matx66d::zeros();
  curve.covariance(0, 0) = 4;
  EXPECT_NEAR(lensBand(curve, 0.5), 0.98, 1e-12);
}

TEST(LensFigure, SaysWhereTheDataEnds) {
  const LensCurve curve{.camera = {.fx = 100, .fy = 100},
                        .covariance = cv::Matx66d::eye(),
                        .dataEnd = 0.5,
                        .pictureEnd = 1};
  EXPECT_THAT(lensFigure(curve), HasSubstr("the data ends at 28.6\xC2\xB0"));
}

// A twelfth of the shorter side, 360 units, is 30 units; a length of 0.5 is 0.9 units: 33 times.
TEST(Arrows, AreEnlargedByARoundNumber) {
  const Plan plan({100, 50, 400, 200}, "mm");
  std::vector<Arrow> arrows(2);
  EXPECT_EQ(arrowMagnification(plan, arrows), 1);
  arrows[1].length = {0.3, 0.4};
  EXPECT_NEAR(arrowMagnification(plan, arrows), 20, 1e-9);
  arrows[0].length = {NAN, 0};
  EXPECT_NEAR(arrowMagnification(plan, arrows), 20, 1e-9);
}

// The long one ends after three twelfths of 360 units; 20 times enlarged it had 20 * 1.8 * 40 =
// 1440.
TEST(Arrows, OneThatStandsOutLeavesTheOthersAsLargeAsTheyWere) {
  const Plan plan({100, 50, 400, 200}, "mm");
  const std::vector<Arrow> arrows = {{.from = {100, 50}, .length = {0.3, 0.4}},
                                     {.from = {100, 50}, .length = {40, 0}, .conspicuous = true}};
  EXPECT_NEAR(arrowMagnification(plan, arrows), 20, 1e-9);
  EXPECT_NEAR(arrowMagnification(plan, {arrows[1]}), 0.2, 1e-9);      // 30 / (40 * 1.8) = 0.42
  EXPECT_THAT(arrowsMarkup(plan, arrows, 20), HasSubstr("L152 14"));  // from (62, 14), 90 units
}

TEST(Arrows, TellTheirTextAndEndWhereTheyShould) {
  const Plan plan({0, 0, 720, 360}, "px");
  const std::string markup = arrowsMarkup(
      plan, {{.id = 7, .from = {10, 20}, .length = {0.1, 0}, .text = "Point <7>"}}, 10);
  EXPECT_THAT(markup, HasSubstr("data-id=\"7\"><title>Point &lt;7&gt;</title>"));
  EXPECT_THAT(markup, HasSubstr("d=\"M72 34L73 34\""));
}

ViewPoints viewOf(int count) {
  ViewPoints view{.name = "a view of the target with a long name.png"};
  for (int i = 0; i < count; ++i) {
    CalibrationPoint point{};
    point.PointId = 1000 + i;
    point.Xw = 123.45F;
    point.Yw = 678.9F;
    point.ImagePtX = 1234.567F;
    point.ImagePtY = 987.654F;
    point.ReprojErrX = 0.001 * i / 3;
    view.points.push_back(point);
  }
  return view;
}

TEST(Residuals, OfManyPointsTheWorstAreShown) {
  ViewPoints view = viewOf(20);
  view.leftOut = {2};
  const std::string all = residualTable(view, 1, 20);
  EXPECT_THAT(all, Not(HasSubstr("largest residuals")));
  EXPECT_THAT(all, HasSubstr(">1000</th>"));
  const std::string few = residualTable(view, 1, 3);
  EXPECT_THAT(few, HasSubstr("(the 3 with the largest residuals of 20)"));
  for (int id = 1000; id < 1020; ++id) {
    const bool isShown = id == 1002 || id >= 1018;
    EXPECT_EQ(few.find(std::to_string(id).append("</th>")) != std::string::npos, isShown) << id;
  }
  EXPECT_THAT(residualFigure(view, {2000, 1000}, 1, 3),
              HasSubstr("Residuals of 3 points of a view"));
}

TEST(Residuals, FitIntoThePageHoweverManyThereAre) {
  const std::vector<ViewPoints> views(20, viewOf(800));
  std::size_t size = 0;
  for (std::size_t j = 0; j < views.size(); ++j) {
    const std::size_t most = mostPointsOf(views[j], views);
    EXPECT_EQ(most, 75u);  // 1500 of 16,000
    size += residualFigure(views[j], {2000, 1000}, j + 1, most).size() +
            residualTable(views[j], j + 1, most).size();
  }
  EXPECT_LT(size, 2'000'000u);
  EXPECT_EQ(mostPointsOf(viewOf(300), {viewOf(300)}), 300u);
}

}  // namespace
}  // namespace fisheye_calibration::program
