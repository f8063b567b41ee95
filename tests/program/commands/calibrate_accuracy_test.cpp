// calibrate from the outside: the choice of the solver, the error on the bed, wrong points, several
// views.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>

#include "files/camera_file.h"
#include "files/points_csv.h"
#include "geometry/conversions.h"
#include "program/support/printed_table.h"
#include "program/support/run_program.h"
#include "program/support/synthetic_views.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// The largest distance on the bed, over the target, between where a record and the true camera
// place what a raw pixel shows: the record's pixel of each point, seen by the true camera.
double trueError(const FishEyeCalibrationParam& record, const SyntheticCamera& camera) {
  double largest = 0;
  for (const CalibrationPoint& point : exactPoints(camera, {})) {
    const cv::Point2f pixel = rawPosition(record, {point.Xw, point.Yw});
    const cv::Point2d bed =
        camera.bedPointAt(static_cast<double>(pixel.x), static_cast<double>(pixel.y));
    largest = std::max(largest, std::hypot(bed.x - static_cast<double>(point.Xw),
                                           bed.y - static_cast<double>(point.Yw)));
  }
  return largest;
}

// Whether the text contains a match of the regular expression. GoogleTest's own matcher knows only
// simple ones on Windows.
bool contains(const std::string& text, const std::string& expression) {
  return std::regex_search(text, std::regex(expression));
}

class CalibrateAccuracy : public testing::Test {
 protected:
  std::string write(const std::string& name, const std::vector<CalibrationPoint>& points) const {
    return writeFile(folder, name, formatPoints(points));
  }

  Outcome calibrate(const std::vector<std::string>& views,
                    const std::vector<std::string>& further = {}) const {
    std::vector<std::string> arguments = {"calibrate"};
    arguments.insert(arguments.end(), views.begin(), views.end());
    arguments.insert(arguments.end(), {"--image-size", "960x720", "-o", camera, "--json", json});
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  nlohmann::json report() const { return nlohmann::json::parse(support::bytesOf(json)); }

  support::TemporaryFolder folder;
  std::string camera = folder.file("camera.ini");
  std::string json = folder.file("report.json");
};

TEST_F(CalibrateAccuracy, TheBoundCoversTheTrueErrorInsideTheTarget) {
  const SyntheticCamera truth;
  for (const unsigned seed : {1u, 2u, 3u}) {
    const Outcome run = calibrate({write("points.csv", noisyPoints(truth, 0.3, seed))});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const double error = trueError(loadCamera(camera).param, truth);
    const double bound = report()["bedError"]["insideTarget"].get<double>();
    EXPECT_GT(bound, error);
    EXPECT_LT(bound, 30 * error) << "a bound that says nothing";
    EXPECT_LE(bound, report()["bedError"]["onBed"].get<double>() * 1.001);
  }
}

TEST_F(CalibrateAccuracy, OneLineSaysTheErrorOnTheBedAndTheLastOnesWhatToDo) {
  const Outcome run = calibrate({write("points.csv", noisyPoints({}, 0.2, 4))});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_TRUE(
      contains(run.out,
               "\nbed error \\(95 %\\): [0-9.]+ mm inside the target, [0-9.]+ mm on the bed\n"
               "good for [0-9.]+ mm work[^\n]*\n"
               "next: fisheye-calibration correct "))
      << run.out;
  EXPECT_TRUE(std::filesystem::exists(folder.file("accuracy.png")));
  EXPECT_THAT(report()["verdict"].get<std::string>(), HasSubstr("good for "));
}

TEST_F(CalibrateAccuracy, BeyondTheToleranceNothingIsWritten) {
  const std::string points = write("points.csv", noisyPoints({}, 0.5, 5));
  const Outcome refused = calibrate({points}, {"--tolerance", "0.001"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.err, HasSubstr("not accurate enough"));
  EXPECT_THAT(refused.out, HasSubstr("\nredo: "));
  EXPECT_FALSE(std::filesystem::exists(camera));
  EXPECT_EQ(calibrate({points}, {"--tolerance", "0.001", "--force"}).exitCode, 1);
  EXPECT_TRUE(std::filesystem::exists(camera));
  // Around the target it is good enough, but nothing says that the bed ends there.
  const Outcome larger = calibrate({points}, {"--tolerance", "100"});
  EXPECT_EQ(larger.exitCode, 1);
  EXPECT_THAT(larger.out, HasSubstr("\nnext: if the bed is smaller than the corrected picture"));
  const Outcome accepted = calibrate({points}, {"--tolerance", "100", "--bed", "0,0,240x180"});
  EXPECT_EQ(accepted.exitCode, 0) << accepted.err;
  EXPECT_THAT(accepted.out, HasSubstr("\ngood for 100 mm work\n"));
}

TEST_F(CalibrateAccuracy, PointsBeyondTheLibrarysReachAreSolvedByTheRobustSolver) {
  const SyntheticCamera wide{.focalLength = 700};
  const Outcome run = calibrate({write("points.csv", exactPoints(wide, {}))});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("the camera is the robust solver's\n"));
  EXPECT_EQ(report()["solver"], "robust");
  EXPECT_NEAR(valueOf(run.out, "fx"), 700, 2);
  EXPECT_LT(trueError(loadCamera(camera).param, wide), 0.05);
}

TEST_F(CalibrateAccuracy, AWrongPointIsNamedAndLeftOut) {
  std::vector<CalibrationPoint> points = noisyPoints({}, 0.3, 6);
  points[20].ImagePtX += 8;
  const Outcome run = calibrate({write("points.csv", points)});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.err, HasSubstr("points.csv: point 21 contradicts the other points (left out)\n"));
  EXPECT_THAT(report()["views"][0]["wrongPointIds"].get<std::vector<int>>(), ElementsAre(21));
  EXPECT_LT(report()["rms"].get<double>(), 0.6);
  const std::string table = support::bytesOf(folder.file("residuals.csv"));
  EXPECT_TRUE(contains(table, "\n21,[^\n]*,1\r?\n")) << table;
}

TEST_F(CalibrateAccuracy, KeepAllUsesAWrongPointAndStillNamesIt) {
  std::vector<CalibrationPoint> points = noisyPoints({}, 0.3, 6);
  points[20].ImagePtX += 8;
  const Outcome run = calibrate({write("points.csv", points)}, {"--keep-all"});
  EXPECT_THAT(run.err, HasSubstr("point 21 contradicts the other points (used all the same)\n"));
  EXPECT_GT(report()["rms"].get<double>(), 0.8);
}

TEST_F(CalibrateAccuracy, SeveralViewsDetermineTheLensTogether) {
  const SyntheticCamera bed{.R = tilted(0.1, 0.05), .T = {-120, -90, 260}};
  const SyntheticCamera leaning{.R = tilted(0.45, -0.1), .T = {-130, -100, 230}};
  const SyntheticCamera other{.R = tilted(-0.3, 0.35), .T = {-110, -80, 240}};
  const std::string first = write("bed.csv", noisyPoints(bed, 0.3, 7));
  ASSERT_EQ(calibrate({first}, {"--solver", "robust"}).exitCode, 0);
  const double alone = report()["bedError"]["onBed"].get<double>();
  const Outcome run = calibrate({first, write("tilted.csv", noisyPoints(leaning, 0.3, 8)),
                                 write("other.csv", noisyPoints(other, 0.3, 9))});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_LT(report()["bedError"]["onBed"].get<double>(), 0.8 * alone);
  EXPECT_NEAR(valueOf(run.out, "fx"), 300, 2);
  EXPECT_LT(trueError(loadCamera(camera).param, bed),
            report()["bedError"]["insideTarget"].get<double>());
}

TEST_F(CalibrateAccuracy, AViewOfAnotherLensIsLeftOutUnlessAllAreKept) {
  const SyntheticCamera bed{.R = tilted(0.1, 0.05), .T = {-120, -90, 260}};
  const SyntheticCamera leaning{.R = tilted(0.45, -0.1), .T = {-130, -100, 230}};
  const SyntheticCamera other{.R = tilted(-0.3, 0.35), .T = {-110, -80, 240}};
  const SyntheticCamera strange{.k1 = 0.3, .R = tilted(0.3, 0.3), .T = {-120, -90, 180}};
  const std::vector<std::string> views = {write("bed.csv", noisyPoints(bed, 0.3, 7)),
                                          write("tilted.csv", noisyPoints(leaning, 0.3, 8)),
                                          write("strange.csv", noisyPoints(strange, 0.3, 9)),
                                          write("other.csv", noisyPoints(other, 0.3, 10))};
  const Outcome without = calibrate(views);
  ASSERT_EQ(without.exitCode, 0) << without.err;
  EXPECT_THAT(without.err, HasSubstr("strange.csv contradicts the other views (left out)\n"));
  EXPECT_NEAR(valueOf(without.out, "fx"), 300, 2);
  EXPECT_FALSE(report()["views"][2]["fits"].get<bool>());
  EXPECT_TRUE(report()["leavesOutWrong"].get<bool>());
  const double rms = report()["rms"].get<double>();
  const double bound = report()["bedError"]["onBed"].get<double>();

  const Outcome with = calibrate(views, {"--keep-all"});
  EXPECT_THAT(with.err, HasSubstr("strange.csv contradicts the other views (used all the same)\n"));
  EXPECT_FALSE(report()["views"][2]["fits"].get<bool>());
  EXPECT_FALSE(report()["leavesOutWrong"].get<bool>());
  EXPECT_GT(report()["rms"].get<double>(), 2 * rms);
  EXPECT_GT(report()["bedError"]["onBed"].get<double>(), 2 * bound);
}

TEST_F(CalibrateAccuracy, TheBedMayBeAnotherThanTheFirstView) {
  const SyntheticCamera bed{.R = tilted(0.1, 0.05), .T = {-120, -90, 260}};
  const SyntheticCamera leaning{.R = tilted(0.45, -0.1), .T = {-130, -100, 230}};
  const std::string first = write("tilted.csv", noisyPoints(leaning, 0.1, 8));
  const std::string second = write("bed.csv", noisyPoints(bed, 0.1, 7));
  ASSERT_EQ(calibrate({first, second}, {"--bed-view", second}).exitCode, 0);
  EXPECT_NEAR(static_cast<double>(loadCamera(camera).param.Tz), 260, 3);
  EXPECT_TRUE(report()["views"][1]["bed"].get<bool>());
  const Outcome none = calibrate({first, second}, {"--bed-view", folder.file("no.csv")});
  EXPECT_EQ(none.exitCode, 2);
  EXPECT_THAT(none.err, HasSubstr("is none of the views"));
}

// The lens comes from three views, the bed's pose from one point list of a moved camera.
TEST_F(CalibrateAccuracy, AKeptLensNeedsOneViewForTheNewPose) {
  const SyntheticCamera bed{.R = tilted(0.1, 0.05), .T = {-120, -90, 260}};
  const SyntheticCamera leaning{.R = tilted(0.45, -0.1), .T = {-130, -100, 230}};
  const SyntheticCamera other{.R = tilted(-0.3, 0.35), .T = {-110, -80, 240}};
  ASSERT_EQ(calibrate({write("bed.csv", noisyPoints(bed, 0.2, 7)),
                       write("leaning.csv", noisyPoints(leaning, 0.2, 8)),
                       write("other.csv", noisyPoints(other, 0.2, 9))})
                .exitCode,
            0);
  const FishEyeCalibrationParam before = loadCamera(camera).param;
  const SyntheticCamera moved{.R = tilted(0.12, 0.02), .T = {-100, -95, 300}};
  const Outcome run =
      calibrate({write("moved.csv", noisyPoints(moved, 0.2, 10))}, {"--lens", camera});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.err, Not(HasSubstr("warning")));
  const FishEyeCalibrationParam after = loadCamera(camera).param;
  EXPECT_EQ(after.fx, before.fx);
  EXPECT_NEAR(after.k1, before.k1, 1e-9);
  EXPECT_NEAR(static_cast<double>(after.Tz), 300, 3);
  EXPECT_LT(trueError(after, moved), report()["bedError"]["insideTarget"].get<double>());
}

TEST_F(CalibrateAccuracy, ALensOfUnknownAccuracyIsReported) {
  const std::string points = write("points.csv", noisyPoints({}, 0.2, 7));
  ASSERT_EQ(calibrate({points}).exitCode, 0);
  std::string text = support::bytesOf(camera);
  const std::string lens =
      writeFile(folder, "lens.ini", text.substr(0, text.find("[FisheyeCalibrationProgram]")));
  const Outcome run = calibrate({points}, {"--lens", lens});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.err, HasSubstr("lens.ini does not say how accurate its lens is"));
}

TEST_F(CalibrateAccuracy, ALensWithAnImpossibleCovarianceIsRefused) {
  const std::string points = write("points.csv", noisyPoints({}, 0.2, 7));
  ASSERT_EQ(calibrate({points}).exitCode, 0);
  std::string text = support::bytesOf(camera);
  text.insert(text.find("LensCovariance=") + 15, 1, '-');
  const Outcome run = calibrate({points}, {"--lens", writeFile(folder, "lens.ini", text)});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err, HasSubstr("lens.ini: LensCovariance is not a covariance\n"));
}

TEST_F(CalibrateAccuracy, TheLibrarySolvesOneViewOnly) {
  const std::string points = write("points.csv", exactPoints({}, {}));
  const std::string more = write("more.csv", exactPoints({}, {}));
  const Outcome run = calibrate({points, more}, {"--solver", "library"});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err, HasSubstr("--solver library takes one view and no lens"));
}

// A third of the points are off: the robust solver refuses, the library's averages them out.
TEST_F(CalibrateAccuracy, TheLibrarysCameraIsWrittenWithoutItsAccuracyIfTheRobustSolverRefuses) {
  std::vector<CalibrationPoint> points = noisyPoints({}, 0.1, 6);
  for (std::size_t i = 0; i < points.size(); i += 3) {
    points[i].ImagePtX += i % 2 == 0 ? 2.5f : -2.5f;
  }
  const std::string file = write("points.csv", points);
  const Outcome robust = calibrate({file});
  EXPECT_EQ(robust.exitCode, 1);
  EXPECT_FALSE(std::filesystem::exists(camera));

  const Outcome library = calibrate({file}, {"--solver", "library"});
  EXPECT_EQ(library.exitCode, 0) << library.err;
  EXPECT_TRUE(contains(library.err,
                       "warning: no accuracy can be computed: [^\n]*points.csv: more than a fifth"))
      << library.err;
  EXPECT_THAT(library.out, HasSubstr("bed error (95 %): unknown"));
  EXPECT_NEAR(valueOf(library.out, "fx"), 300, 20);
  const std::string text = support::bytesOf(camera);
  EXPECT_THAT(text, HasSubstr("[CalibraionParam]"));
  EXPECT_THAT(text, Not(HasSubstr("LensCovariance")));
  EXPECT_THAT(text, Not(HasSubstr("BedError")));
  EXPECT_EQ(report()["solver"], "library");
  EXPECT_TRUE(report()["bedError"]["onBed"].is_null());
  EXPECT_TRUE(std::filesystem::exists(folder.file("accuracy.png")));
  EXPECT_EQ(calibrate({file}, {"--solver", "library", "--tolerance", "100"}).exitCode, 1);
}

TEST_F(CalibrateAccuracy, WarningsStandInTheReportForPrograms) {
  std::vector<CalibrationPoint> points = noisyPoints({}, 0.3, 6);
  ASSERT_EQ(calibrate({write("points.csv", points)}).exitCode, 0);
  EXPECT_THAT(report()["warnings"].get<std::vector<std::string>>(), IsEmpty());
  points[20].ImagePtX += 8;
  ASSERT_EQ(calibrate({write("points.csv", points)}).exitCode, 0);
  EXPECT_THAT(report()["warnings"].get<std::vector<std::string>>(),
              ElementsAre(HasSubstr("point 21 contradicts")));
}

}  // namespace
}  // namespace fisheye_calibration::program
