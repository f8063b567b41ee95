#include "files/output_files.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <random>
#include <system_error>

#include "base/failure.h"
#include "base/file_path.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

std::string lastError() { return errno != 0 ? std::strerror(errno) : "cannot write"; }

// Where the bytes end up. Links are followed, so that they stay links.
fs::path resolved(const fs::path& path) {
  std::error_code error;
  const fs::path absolute = fs::absolute(path);
  const fs::path target = fs::weakly_canonical(absolute, error);
  return error ? absolute : target;
}

fs::path temporaryNextTo(const fs::path& destination, const fs::path& extension = {}) {
  std::random_device random;
  for (int attempt = 0; attempt < 16; ++attempt) {
    fs::path candidate = destination;
    candidate += ".new-" + std::to_string(random() % 1000000u);
    candidate += extension;
    std::error_code error;
    if (!fs::exists(candidate, error)) {
      return candidate;
    }
  }
  failJob(nameOf(destination) + ": no name is free for a temporary file beside it");
}

void writeBytes(const fs::path& path, const fs::path& shownAs, std::string_view bytes) {
  errno = 0;
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) {
    failJob(nameOf(shownAs) + ": " + lastError());
  }
}

}  // namespace

OutputFiles::~OutputFiles() {
  for (const Staged& file : staged_) {
    std::error_code ignored;
    fs::remove(file.temporary, ignored);
  }
}

void OutputFiles::stage(const fs::path& path, std::string_view bytes) {
  const fs::path destination = resolved(path);
  std::error_code error;
  const fs::file_status before = fs::status(destination, error);
  if (fs::exists(before) &&
      !fs::is_regular_file(before)) {  // devices and pipes are written directly
    writeBytes(destination, path, bytes);
    return;
  }
  staged_.push_back({temporaryNextTo(destination), destination});
  writeBytes(staged_.back().temporary, path, bytes);
}

fs::path OutputFiles::stageCopy(const fs::path& path) {
  const fs::path destination = resolved(path);
  staged_.push_back({temporaryNextTo(destination), destination});
  const fs::path& temporary = staged_.back().temporary;
  std::error_code error;
  if (fs::exists(destination, error)) {
    fs::copy_file(destination, temporary, error);
    if (error) {
      failJob(nameOf(path) + ": " + error.message());
    }
  }
  return temporary;
}

fs::path OutputFiles::stageNew(const fs::path& path) {
  const fs::path destination = resolved(path);
  staged_.push_back({temporaryNextTo(destination, destination.extension()), destination});
  return staged_.back().temporary;
}

void OutputFiles::commit() {
  for (const Staged& file : staged_) {
    std::error_code error;
    const fs::file_status before = fs::status(file.destination, error);
    if (fs::is_regular_file(before)) {
      fs::permissions(file.temporary, before.permissions(), error);
    }
    fs::rename(file.temporary, file.destination, error);
    if (error) {
      failJob(nameOf(file.destination) + ": " + error.message());
    }
  }
  staged_.clear();
}

}  // namespace fisheye_calibration::program
