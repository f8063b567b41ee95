#include "platform/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <system_error>

namespace fisheye_calibration::platform {
namespace {

// Far larger than any parameter file; keeps a file given by mistake from exhausting the memory.
constexpr off_t kLargestFile = off_t{256} << 20;

class FileDescriptor {
 public:
  explicit FileDescriptor(int number) : number_(number) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (number_ >= 0) {
      ::close(number_);
    }
  }
  [[nodiscard]] bool isOpen() const { return number_ >= 0; }
  [[nodiscard]] int number() const { return number_; }
  // Network file systems may report a failed write only here.
  [[nodiscard]] bool close() {
    const int result = ::close(number_);
    number_ = -1;
    return result == 0;
  }

 private:
  int number_;
};

// A new file in `folder` that is deleted unless it is renamed.
class TemporaryFile {
 public:
  explicit TemporaryFile(int folder) : folder_(folder), file_(create()) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (exists_) {
      ::unlinkat(folder_, name_, 0);
    }
  }

  [[nodiscard]] bool isOpen() const { return file_.isOpen(); }

  [[nodiscard]] bool write(std::string_view content) const {
    while (!content.empty()) {
      const ssize_t count = ::write(file_.number(), content.data(), content.size());
      if (count > 0) {
        content.remove_prefix(static_cast<std::size_t>(count));
      } else if (count == 0 || errno != EINTR) {
        return false;
      }
    }
    return true;
  }

  // Copies the permissions and, where allowed, the owner and group.
  [[nodiscard]] bool imitate(const struct stat& model) const {
    // The owner first: changing it clears some permissions.
    if (::fchown(file_.number(), model.st_uid, model.st_gid) != 0 &&
        ::fchown(file_.number(), static_cast<uid_t>(-1), model.st_gid) != 0) {
      // Only root may give files away; otherwise the file belongs to its writer.
    }
    return ::fchmod(file_.number(), model.st_mode & 07777) == 0;
  }

  [[nodiscard]] bool renameTo(const char* name) {
    if (::fsync(file_.number()) != 0 || !file_.close() ||
        ::renameat(folder_, name_, folder_, name) != 0) {
      return false;
    }
    exists_ = false;
    return true;
  }

 private:
  int create() {
    constexpr int kMostAttempts = 1000;
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
      std::snprintf(name_, sizeof(name_), ".profile-%ld-%d.tmp", static_cast<long>(::getpid()),
                    attempt);
      const int number = ::openat(folder_, name_, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
      if (number >= 0 || errno != EEXIST) {
        exists_ = number >= 0;
        return number;
      }
    }
    return -1;
  }

  int folder_;
  bool exists_ = false;
  char name_[64] = "";
  FileDescriptor file_;
};

// Follows the chain of links at the end of `path`; the target need not exist. std::nullopt if the
// chain is too long or a link cannot be read.
std::optional<std::filesystem::path> linkTarget(std::filesystem::path path) {
  constexpr int kMostLinks = 40;
  for (int i = 0; i < kMostLinks; ++i) {
    std::error_code error;
    if (!std::filesystem::is_symlink(path, error)) {
      return path;
    }
    const std::filesystem::path target = std::filesystem::read_symlink(path, error);
    if (error) {
      return std::nullopt;
    }
    path = path.parent_path() / target;
  }
  return std::nullopt;
}

bool isReplaceable(int folder, const char* name, const struct stat& status) {
  constexpr mode_t kAnyWritePermission = S_IWUSR | S_IWGRP | S_IWOTH;
  return S_ISREG(status.st_mode) && (status.st_mode & kAnyWritePermission) != 0 &&
         ::faccessat(folder, name, W_OK, AT_EACCESS) == 0;
}

}  // namespace

FileState readWholeFile(const char* path, std::string& content) {
  // O_NONBLOCK: a pipe would otherwise wait for a writer.
  const FileDescriptor file(::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file.isOpen()) {
    return errno == ENOENT ? FileState::kMissing : FileState::kUnreadable;
  }
  struct stat status {};
  if (::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode) ||
      status.st_size > kLargestFile) {
    return FileState::kUnreadable;
  }
  content.resize(static_cast<std::size_t>(status.st_size));
  std::size_t length = 0;
  while (length < content.size()) {
    const ssize_t count = ::read(file.number(), content.data() + length, content.size() - length);
    if (count > 0) {
      length += static_cast<std::size_t>(count);
    } else if (count == 0) {
      break;  // the file has been truncated meanwhile
    } else if (errno != EINTR) {
      return FileState::kUnreadable;
    }
  }
  content.resize(length);
  return FileState::kRead;
}

bool replaceWholeFile(const char* path, std::string_view content) {
  const std::optional<std::filesystem::path> target = linkTarget(path);
  if (!target || !target->has_filename()) {
    return false;
  }
  const std::string name = target->filename().string();
  const std::string folder = target->has_parent_path() ? target->parent_path().string() : ".";
  const FileDescriptor folderFile(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folderFile.isOpen()) {
    return false;
  }

  struct stat old {};
  const bool exists = ::fstatat(folderFile.number(), name.c_str(), &old, AT_SYMLINK_NOFOLLOW) == 0;
  if (exists ? !isReplaceable(folderFile.number(), name.c_str(), old) : errno != ENOENT) {
    return false;
  }

  TemporaryFile temporary(folderFile.number());
  if (!temporary.isOpen() || !temporary.write(content) || (exists && !temporary.imitate(old)) ||
      !temporary.renameTo(name.c_str())) {
    return false;
  }
  // The rename survives a power failure only once the folder is on disk. If this fails, the file
  // has been replaced all the same.
  ::fsync(folderFile.number());
  return true;
}

}  // namespace fisheye_calibration::platform
