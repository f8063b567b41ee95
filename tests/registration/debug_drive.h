// A place for the files of one test that have fixed names.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <system_error>

// Runs each test in a fresh working directory.
class WorkingDirectoryTest : public testing::Test {
 protected:
  void SetUp() override {
    previous_ = std::filesystem::current_path();
    directory_ = std::filesystem::temp_directory_path() /
                 ("fisheye_calibration_" + std::to_string(std::random_device{}()));
    ASSERT_TRUE(std::filesystem::create_directory(directory_));
    std::filesystem::current_path(directory_);
  }

  void TearDown() override {
    std::filesystem::current_path(previous_);
    std::filesystem::remove_all(directory_);
  }

  // The bytes of the file as they are on disk; std::nullopt if there is none.
  static std::optional<std::string> contentOf(const char* path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(file), {});
  }

 private:
  std::filesystem::path previous_;
  std::filesystem::path directory_;
};

// Off Windows the debug paths are relative, so a directory "D:" in the working directory receives
// them; on Windows they are on the real drive, if there is one, which is without debug files before
// and after each test. Tests use it one after the other: debug_drive_folders in
// tests/CMakeLists.txt has to name their folder.
class DebugDriveTest : public WorkingDirectoryTest {
 protected:
  void SetUp() override {
    WorkingDirectoryTest::SetUp();
    removeDebugFiles();
  }

  void TearDown() override {
    removeDebugFiles();
    WorkingDirectoryTest::TearDown();
  }

  // Makes the drive ready and says whether debug files can be looked for.
  static bool makeDebugDrive() {
#if !defined(_WIN32)
    std::filesystem::create_directory("D:");
#endif
    return FISHEYE_CALIBRATION_DEBUG_FILES != 0 && std::filesystem::is_directory("D:/");
  }

 private:
  // Only what the library overwrites anyway, or an empty folder that a test put in its place.
  static void removeDebugFiles() {
#if defined(_WIN32)
    for (const char* name :
         {"Affine.txt", "LeftCorrectedImage.bmp", "LeftMaskImage.bmp", "RightCorrectedImage.bmp",
          "RightMaskImage.bmp", "DImage.bmp", "CorrectedImage.bmp", "CorrectedImage2.bmp"}) {
      std::error_code ignored;
      std::filesystem::remove(std::string("D:/") + name, ignored);
    }
#endif
  }
};

#define SKIP_WITHOUT_DEBUG_DRIVE() \
  if (!makeDebugDrive()) GTEST_SKIP() << "No drive D:, or built without debug files"
