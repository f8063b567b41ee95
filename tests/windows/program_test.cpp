// The program with file names that the system's own code page may not have.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "fisheye_calibration.h"
#include "support/temporary_folder.h"

namespace {

// Runs the program in the test's folder and returns its exit code.
DWORD run(const std::wstring& arguments) {
  wchar_t test[MAX_PATH] = L"";
  GetModuleFileNameW(nullptr, test, MAX_PATH);
  const std::filesystem::path program =
      std::filesystem::path(test).parent_path() / L"fisheye-calibration.exe";
  std::wstring command = L"\"" + program.wstring() + L"\" " + arguments;
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                      &process)) {
    return static_cast<DWORD>(-1);
  }
  WaitForSingleObject(process.hProcess, INFINITE);
  DWORD code = static_cast<DWORD>(-1);
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return code;
}

TEST(Program, ReadsACameraUnderAChineseName) {
  const support::TemporaryFolder folder;
  FishEyeCalibrationParam camera{};
  camera.fx = camera.fy = 640;
  camera.R1 = camera.R5 = camera.R9 = 1;
  camera.p1 = camera.p5 = camera.p9 = 1;
  camera.Pixel = 1;
  camera.u0 = camera.v0 = 320;
  camera.Tz = 1;
  SaveCalibrationParam(folder.file("camera.ini").c_str(), camera);
  const std::filesystem::path path = folder.path() / L"\u6807\u5B9A.ini";
  std::filesystem::rename(folder.path() / "camera.ini", path);
  EXPECT_EQ(run(L"info \"" + path.wstring() + L"\""), 0U);
  EXPECT_EQ(run(L"info \"" + (folder.path() / L"\u76F8\u673A.ini").wstring() + L"\""), 2U);
}

TEST(Program, WritesPicturesUnderChineseNames) {
  const support::TemporaryFolder folder;
  const std::filesystem::path frame = folder.path() / L"\u76F8\u673A.pgm";
  std::ofstream(frame, std::ios::binary) << "P5 8 4 255\n" << std::string(32, 'x');
  const std::filesystem::path part = folder.path() / L"\u6807\u5B9A.bmp";
  EXPECT_EQ(run(L"crop \"" + frame.wstring() + L"\" --size 4x4 -o \"" + part.wstring() + L"\""),
            0U);
  EXPECT_TRUE(std::filesystem::exists(part));
  EXPECT_EQ(folder.entryCount(), 2);
}

}  // namespace
