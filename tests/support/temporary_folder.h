// A folder for one test's files, gone with all its content afterwards.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <utility>

namespace support {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::random_device random;
    do {
      path_ = std::filesystem::temp_directory_path() /
              ("fisheye_calibration_test_" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  [[nodiscard]] std::string file(std::string_view name) const { return (path_ / name).string(); }

  // Number of files and folders in it.
  [[nodiscard]] std::ptrdiff_t entryCount() const {
    return std::distance(std::filesystem::directory_iterator(path_),
                         std::filesystem::directory_iterator());
  }

 private:
  std::filesystem::path path_;
};

// Takes the right to write to a file away for as long as it lives.
class ReadOnlyFile {
 public:
  explicit ReadOnlyFile(std::filesystem::path path) : path_(std::move(path)) {
    using std::filesystem::perms;
    std::filesystem::permissions(path_, perms::owner_read | perms::group_read | perms::others_read);
  }
  ReadOnlyFile(const ReadOnlyFile&) = delete;
  ReadOnlyFile& operator=(const ReadOnlyFile&) = delete;
  ~ReadOnlyFile() { std::filesystem::permissions(path_, std::filesystem::perms::owner_all); }

  // False on Windows where the system itself lets this user write all the same: Wine does so for
  // the administrator of the system below it. Elsewhere the library looks at the right itself.
  [[nodiscard]] bool isRespected() const {
#if defined(_WIN32)
    return !std::ofstream(path_, std::ios::app).is_open();
#else
    return true;
#endif
  }

 private:
  std::filesystem::path path_;
};

inline std::string bytesOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

inline void writeBytes(const std::string& path, std::string_view bytes) {
  std::ofstream stream(path, std::ios::binary);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace support
