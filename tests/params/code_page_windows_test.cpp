// Parameter files on a system whose code page is GBK, as the users' systems have it.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "fisheye_calibration.h"
#include "params/parameter_files.h"
#include "support/temporary_folder.h"

namespace {

class GbkSystem : public testing::Test {
 protected:
  void SetUp() override {
    if (GetACP() != 936) GTEST_SKIP() << "The system's code page is " << GetACP();
  }

  support::TemporaryFolder folder;
  // "calibration" in GBK and in UTF-16.
  const std::string narrowPath = folder.file("") + "\xB1\xEA\xB6\xA8.ini";
  const std::filesystem::path path = folder.path() / L"\u6807\u5B9A.ini";
};

TEST_F(GbkSystem, CameraFileHasAChineseName) {
  FishEyeCalibrationParam camera{};
  camera.u0 = 640.5F;
  camera.p9 = 1.25;
  EXPECT_TRUE(SaveCalibrationParam(narrowPath.c_str(), camera));
  EXPECT_TRUE(std::filesystem::exists(path));
  FishEyeCalibrationParam loaded{};
  EXPECT_TRUE(LoadCalibrationParam(narrowPath.c_str(), loaded));
  EXPECT_EQ(loaded.u0, 640.5F);
  EXPECT_EQ(loaded.p9, 1.25);
}

TEST_F(GbkSystem, DualCameraFileHasAChineseName) {
  const DualFishEyeCalibrationParam frame{0.5F, 1380, 960, 640, 480, 12.0F, -3.0F};
  EXPECT_TRUE(SaveDualCamerasCalibrationParam(narrowPath.c_str(), frame));
  EXPECT_TRUE(std::filesystem::exists(path));
  DualFishEyeCalibrationParam loaded{};
  EXPECT_TRUE(LoadDualCamerasCalibrationParam(narrowPath.c_str(), loaded));
  EXPECT_EQ(loaded.Pixel, 0.5F);
  EXPECT_EQ(loaded.StdImageWidth, 1380);
  EXPECT_EQ(loaded.DatumPtYw, -3.0F);
}

TEST_F(GbkSystem, ForeignChineseLinesSurviveASave) {
  const std::string note = "; \xB1\xEA\xB6\xA8\r\n[\xCF\xE0\xBB\xFA]\r\n\xC3\xFB=\xD7\xF3\r\n";
  const auto bytesOf = [](const std::filesystem::path& name) {
    std::ifstream file(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  std::ofstream(path, std::ios::binary) << note;
  SaveCalibrationParam(narrowPath.c_str(), {});
  const std::string bytes = bytesOf(path);
  EXPECT_EQ(bytes.substr(0, note.size()), note);
  EXPECT_NE(bytes.find("[CalibraionParam]\r\nu0=0.000000\r\n"), std::string::npos);

  // A path in UTF-8 takes the system's other functions, which write the same bytes.
  const std::filesystem::path other = folder.path() / L"\u00E9\u0E01.ini";  // not in GBK
  const std::u8string utf8 = other.u8string();
  std::ofstream(other, std::ios::binary) << note;
  fisheye_calibration::params::saveCameraFile({reinterpret_cast<const char*>(utf8.c_str()),
                                               fisheye_calibration::platform::PathEncoding::kUtf8},
                                              {});
  EXPECT_EQ(bytesOf(other), bytes);
}

// Bare names belong to the system's own folder; with a folder in front they are the host's.
TEST(ParameterFile, NameAfterDotSlashIsInTheWorkingDirectory) {
  const support::TemporaryFolder folder;
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  SaveCalibrationParam("./camera.ini", {});
  const bool there = std::filesystem::exists(folder.path() / "camera.ini");
  std::filesystem::current_path(before);
  EXPECT_TRUE(there);
}

}  // namespace
