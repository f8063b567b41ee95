// Parameter files are the same from both interfaces, and failures are reported.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "c_api/records.h"
#include "support/dice.h"
#include "support/temporary_folder.h"

using namespace c_api_tests;

namespace {

FishEyeCalibrationParam randomRecord(support::Dice& dice) {
  FishEyeCalibrationParam param{};
  param.u0 = dice.numberF(1000);
  param.fx = dice.numberF(1000);
  param.k0 = dice.number(1);
  param.k5 = dice.number(1);
  param.R9 = dice.numberF(1);
  param.Tz = dice.numberF(500);
  param.p1 = dice.number(2);
  param.p9 = dice.number(2);
  param.Pixel = dice.numberF(1);
  param.ImageDy = dice.numberF(50);
  return param;
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(CParameterFiles, CamerasAreWrittenAndReadAsByTheCxxFunctions) {
  const support::TemporaryFolder folder;
  support::Dice dice(41);
  const std::string path = folder.file("c.ini");
  const std::string expectedPath = folder.file("cxx.ini");
  for (int run = 0; run < 20; ++run) {
    const FishEyeCalibrationParam param = randomRecord(dice);
    const fcal_camera camera = cameraOf(param);
    ASSERT_TRUE(succeeds(fcal_save_camera(path.c_str(), &camera)));
    SaveCalibrationParam(expectedPath.c_str(), param);
    EXPECT_NE(contentOf(path), "");
    EXPECT_EQ(contentOf(path), contentOf(expectedPath));
    FishEyeCalibrationParam expected{};
    LoadCalibrationParam(path.c_str(), expected);
    fcal_camera loaded{};
    ASSERT_TRUE(succeeds(fcal_load_camera(path.c_str(), &loaded)));
    EXPECT_TRUE(equalBytes(loaded, expected));
  }
}

TEST(CParameterFiles, DualRecordsAreWrittenAndReadAsByTheCxxFunctions) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("c");
  const std::string expectedPath = folder.file("cxx");
  const DualFishEyeCalibrationParam dual{0.25F, 400, 300, -7, 9, 12.5F, -3.25F};
  const fcal_dual record = sameBytes<fcal_dual>(dual);
  ASSERT_TRUE(succeeds(fcal_save_dual(path.c_str(), &record)));
  SaveDualCamerasCalibrationParam(expectedPath.c_str(), dual);
  EXPECT_NE(contentOf(path), "");
  EXPECT_EQ(contentOf(path), contentOf(expectedPath));
  fcal_dual loaded{};
  ASSERT_TRUE(succeeds(fcal_load_dual(path.c_str(), &loaded)));
  EXPECT_EQ(loaded.datum_xw, 12);  // whole numbers (compatibility 10)
  EXPECT_EQ(loaded.datum_x, -7);
}

// UTF-8, whatever the code page of a Windows system is.
TEST(CParameterFiles, PathsAreInUtf8) {
  const support::TemporaryFolder folder;
  const std::filesystem::path file = folder.path() / u8"\u6807\u5B9A \u00E9\u0436 \U0001F4F7.ini";
  const std::u8string utf8 = file.u8string();
  const auto* const path = reinterpret_cast<const char*>(utf8.c_str());
  support::Dice dice(43);
  const fcal_camera camera = cameraOf(randomRecord(dice));
  const fcal_dual dual{0.25F, 400, 300, -7, 9, 12, -3};
  ASSERT_TRUE(succeeds(fcal_save_camera(path, &camera)));
  ASSERT_TRUE(succeeds(fcal_save_dual(path, &dual)));
  EXPECT_EQ(folder.entryCount(), 1);
  EXPECT_TRUE(std::filesystem::exists(file));
  fcal_camera loaded{};
  fcal_dual loadedDual{};
  ASSERT_TRUE(succeeds(fcal_load_camera(path, &loaded)));
  ASSERT_TRUE(succeeds(fcal_load_dual(path, &loadedDual)));
  EXPECT_NEAR(loaded.u0, camera.u0, 1e-3);
  EXPECT_TRUE(equalBytes(loadedDual, dual));
}

#if defined(_WIN32)
TEST(CParameterFiles, APathThatIsNotUtf8IsNoFile) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("") + "\xB1\xEA.ini";  // in the code page GBK
  fcal_camera camera{};
  EXPECT_TRUE(fails(fcal_save_camera(path.c_str(), &camera), FCAL_FALSE,
                    "path: the file cannot be written"));
  EXPECT_TRUE(fails(fcal_load_camera(path.c_str(), &camera), FCAL_FALSE,
                    "path: the file holds no such parameters"));
  EXPECT_EQ(folder.entryCount(), 0);
}
#endif

TEST(CParameterFiles, AFileThatCannotBeWrittenIsReported) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("missing/file.ini");
  const fcal_camera camera{};
  const fcal_dual dual{};
  EXPECT_TRUE(fails(fcal_save_camera(path.c_str(), &camera), FCAL_FALSE,
                    "path: the file cannot be written"));
  EXPECT_TRUE(
      fails(fcal_save_dual(path.c_str(), &dual), FCAL_FALSE, "path: the file cannot be written"));
  EXPECT_EQ(folder.entryCount(), 0);
}

TEST(CParameterFiles, AFileWithoutParametersIsReportedAndGivesZeros) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("other.ini");
  std::ofstream(path) << "[Other]\r\nu0=5\r\n";
  for (const std::string& file : {path, folder.file("missing.ini")}) {
    fcal_camera camera{};
    camera.u0 = 7;
    fcal_dual dual{7, 7, 7, 7, 7, 7, 7};
    EXPECT_TRUE(fails(fcal_load_camera(file.c_str(), &camera), FCAL_FALSE,
                      "path: the file holds no such parameters"));
    EXPECT_TRUE(fails(fcal_load_dual(file.c_str(), &dual), FCAL_FALSE,
                      "path: the file holds no such parameters"));
    EXPECT_EQ(camera.u0, 0);
    EXPECT_EQ(dual.width, 0);
  }
}

TEST(CParameterFiles, OneValueIsEnough) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("one.ini");
  std::ofstream(path) << "[CalibraionParam]\r\nImageDy=2.5\r\n";
  fcal_camera camera{};
  ASSERT_TRUE(succeeds(fcal_load_camera(path.c_str(), &camera)));
  EXPECT_EQ(camera.image_dy, 2.5F);
}

}  // namespace
