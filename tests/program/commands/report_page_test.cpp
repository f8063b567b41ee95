// --report of calibrate and stitch from the outside.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <regex>
#include <string>
#include <tuple>
#include <vector>

#include "files/points_csv.h"
#include "program/support/overhead_pair.h"
#include "program/support/run_program.h"
#include "program/support/synthetic_views.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;
using testing::Not;

class ReportPage : public testing::Test {
 protected:
  std::string points(const std::string& name) const {
    return writeFile(folder, name, formatPoints(noisyPoints(SyntheticCamera(), 0.3, 1)));
  }

  Outcome calibrate(const std::string& list, const std::vector<std::string>& further = {}) const {
    std::vector<std::string> arguments = {
        "calibrate", list, "--image-size", "960x720", "-o", folder.file("camera.ini"),
        "--json",    json, "--report",     page};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  // The unrounded value of what the page shows in large letters.
  static double readingOf(const std::string& html, const std::string& name) {
    std::smatch match;
    const std::regex expression("data-reading=\"" + name + "\" data-value=\"([^\"]+)\"");
    return std::regex_search(html, match, expression) ? std::stod(match[1]) : -1;
  }

  support::TemporaryFolder folder;
  std::string json = folder.file("report.json");
  std::string page = folder.file("report.html");
};

TEST_F(ReportPage, ShowsTheNumbersOfTheCalibration) {
  const Outcome run = calibrate(points("points.csv"));
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("Report: " + page + "\n"));
  const std::string html = support::bytesOf(page);
  const nlohmann::json report = nlohmann::json::parse(support::bytesOf(json));
  EXPECT_EQ(readingOf(html, "insideTarget"), report["bedError"]["insideTarget"].get<double>());
  EXPECT_EQ(readingOf(html, "onBed"), report["bedError"]["onBed"].get<double>());
  EXPECT_EQ(readingOf(html, "rms"), report["rms"].get<double>());
  EXPECT_THAT(html,
              HasSubstr(std::string(">").append(report["verdict"].get<std::string>()) + "</p>"));
}

TEST_F(ReportPage, AsksNoOtherPlaceForAnything) {
  ASSERT_EQ(calibrate(points("points.csv")).exitCode, 0);
  const std::string html = support::bytesOf(page);
  EXPECT_LT(html.size(), 3'000'000u);
  EXPECT_THAT(html, Not(HasSubstr("http://")));
  EXPECT_THAT(html, Not(HasSubstr("https://")));
  EXPECT_THAT(html, HasSubstr("content=\"default-src &#39;none&#39;; img-src data:; "));
}

TEST_F(ReportPage, NamesOfFilesAreText) {
  const std::string list = points("a&b 'c'.csv");
  ASSERT_EQ(calibrate(list).exitCode, 0);
  const std::string html = support::bytesOf(page);
  EXPECT_THAT(html, HasSubstr("a&amp;b &#39;c&#39;.csv</h3>"));
  EXPECT_THAT(html, Not(HasSubstr("a&b")));
}

TEST_F(ReportPage, ShowsTheCorrectedFrame) {
  const std::string frame = folder.file("frame.png");
  ASSERT_TRUE(cv::imwrite(frame, drawTarget(SyntheticCamera(), {})));
  ASSERT_EQ(calibrate(points("points.csv")).exitCode, 0);
  EXPECT_THAT(support::bytesOf(page), Not(HasSubstr("data:image/jpeg")));
  ASSERT_EQ(calibrate(points("points.csv"), {"--report-frame", frame}).exitCode, 0);
  EXPECT_THAT(support::bytesOf(page), HasSubstr("data:image/jpeg;base64,"));
}

TEST_F(ReportPage, FrameOfAnotherSizeIsRefusedBeforeAnythingIsWritten) {
  const std::string frame = folder.file("frame.png");
  ASSERT_TRUE(cv::imwrite(frame, cv::Mat(10, 20, CV_8UC1, cv::Scalar(0))));
  const Outcome run = calibrate(points("points.csv"), {"--report-frame", frame});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err,
              HasSubstr("--report-frame: " + frame + " has 20x10 pixels, the views 960x720"));
  EXPECT_FALSE(std::filesystem::exists(page));
}

TEST_F(ReportPage, FrameWithoutPageIsRefused) {
  const Outcome run =
      runProgram({"calibrate", points("points.csv"), "--image-size", "960x720", "-o",
                  folder.file("camera.ini"), "--report-frame", folder.file("frame.png")});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err, HasSubstr("--report-frame: there is no --report to show it"));
}

TEST_F(ReportPage, IsNotWrittenOverAnotherFile) {
  const std::string list = points("points.csv");
  const std::string before = support::bytesOf(list);
  const Outcome run = runProgram({"calibrate", list, "--image-size", "960x720", "-o",
                                  folder.file("camera.ini"), "--report", list});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err, HasSubstr("--report: "));
  EXPECT_EQ(support::bytesOf(list), before);
}

// stitch with the views of two cameras over 160 and 260 mm, of which the right one is said to be at
// `right`.
class StitchReportPage : public ReportPage {
 protected:
  Outcome stitch(double right, const std::vector<std::string>& further) {
    std::vector<std::string> arguments = {
        "stitch",   "-o", folder.file("bed.png"), "--dual", folder.file("dual.ini"),
        "--report", page};
    for (const auto& [option, Xw, said] :
         {std::tuple("--left", 160.0, 160.0), {"--right", 260.0, right}}) {
      const std::string name = folder.file(option + 2);
      const SyntheticCamera camera = cameraOver(Xw);
      EXPECT_TRUE(cv::imwrite(name + ".png", drawTarget(camera, kBoard)));
      SaveCalibrationParam((name + ".ini").c_str(), recordOver(said));
      writeFile(folder, std::string(option + 2) + ".csv",
                formatPoints(exactPoints(camera, kBoard)));
      arguments.insert(arguments.end(), {option, name + ".png," + name + ".ini," + name + ".csv"});
    }
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }
};

TEST_F(StitchReportPage, ShowsHowWellTwoViewsAgree) {
  const Outcome run = stitch(260, {});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("Report: " + page + "\n"));
  const std::string html = support::bytesOf(page);
  std::smatch rms;
  ASSERT_TRUE(std::regex_search(run.out, rms, std::regex("\nRMS +([0-9.]+) ")));
  EXPECT_NEAR(readingOf(html, "rms"), std::stod(rms[1]), 0.0005);
  EXPECT_GE(readingOf(html, "worst"), readingOf(html, "rms"));
  EXPECT_THAT(html, HasSubstr("id=\"seam-picture\""));
  EXPECT_THAT(html, HasSubstr("class=\"seam-begin\" d=\"M"));
}

TEST_F(StitchReportPage, NamesTheSizeOfThePictureThatIsWritten) {
  const auto sizeInPage = [&] {
    const cv::Mat bed = cv::imread(folder.file("bed.png"));
    return ", " + std::to_string(bed.cols) + "x" + std::to_string(bed.rows) + " px";
  };
  ASSERT_EQ(stitch(260, {}).exitCode, 0);
  EXPECT_THAT(support::bytesOf(page), HasSubstr(sizeInPage()));
  ASSERT_EQ(stitch(260, {"--crop", "0,0,300x200"}).exitCode, 0);
  EXPECT_EQ(sizeInPage(), ", 300x200 px");
  EXPECT_THAT(support::bytesOf(page), HasSubstr(sizeInPage()));
}

TEST_F(StitchReportPage, ShowsViewsThatDoNotAgree) {
  const Outcome run = stitch(300, {});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("nothing was written but the report"));
  EXPECT_THAT(support::bytesOf(page), HasSubstr("data-verdict=\"bad\""));
  EXPECT_FALSE(std::filesystem::exists(folder.file("bed.png")));
  EXPECT_FALSE(std::filesystem::exists(folder.file("dual.ini")));
}

}  // namespace
}  // namespace fisheye_calibration::program
