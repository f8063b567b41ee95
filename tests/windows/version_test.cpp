// Version information, as the Explorer shows it.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

// An English text of the file's version information; empty if there is none.
std::string versionText(const wchar_t* fileName, const wchar_t* name) {
  wchar_t program[MAX_PATH] = L"";
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  const std::wstring file =
      (std::filesystem::path(program).parent_path() / fileName).make_preferred().wstring();
  std::vector<char> data(GetFileVersionInfoSizeW(file.c_str(), nullptr));
  void* value = nullptr;
  UINT length = 0;
  if (data.empty() ||
      !GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(data.size()), data.data()) ||
      !VerQueryValueW(data.data(), (std::wstring(L"\\StringFileInfo\\040904B0\\") + name).c_str(),
                      &value, &length)) {
    return "";
  }
  return std::filesystem::path(static_cast<const wchar_t*>(value)).string();
}

TEST(VersionInformation, LibraryHasItsVersion) {
  EXPECT_EQ(versionText(L"fisheye_calibration.dll", L"FileVersion"), FISHEYE_CALIBRATION_VERSION);
  EXPECT_EQ(versionText(L"fisheye_calibration.dll", L"ProductName"), "fisheye_calibration");
  EXPECT_EQ(versionText(L"fisheye_calibration.dll", L"OriginalFilename"),
            "fisheye_calibration.dll");
}

TEST(VersionInformation, ProgramHasItsVersion) {
  EXPECT_EQ(versionText(L"fisheye-calibration.exe", L"FileVersion"), FISHEYE_CALIBRATION_VERSION);
  EXPECT_EQ(versionText(L"fisheye-calibration.exe", L"ProductName"), "fisheye_calibration");
}

}  // namespace
