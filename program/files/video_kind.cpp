#include "files/video_kind.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/file_path.h"
#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

struct KnownFamily {
  std::string_view name;
  std::array<std::string_view, 8> codes;  // in files, and as readers call codecs without a code
};
constexpr std::array<KnownFamily, 7> kFamilies = {{
    {"H.264", {"avc1", "H264", "X264", "avc3", "DAVC", "VSSH", "", ""}},
    {"Motion JPEG", {"MJPG", "jpeg", "mjpe", "mjpa", "mjpb", "AVRn", "dmb1", ""}},
    {"MPEG-4", {"mp4v", "FMP4", "XVID", "DIVX", "DX50", "M4S2", "MP4S", "mpeg"}},
    {"H.265", {"hvc1", "hev1", "HEVC", "H265", "X265", "", "", ""}},
    {"VP8", {"VP80", "vp8", "", "", "", "", "", ""}},
    {"VP9", {"VP90", "vp09", "vp9", "", "", "", "", ""}},
    {"AV1", {"AV01", "av1", "", "", "", "", "", ""}},
}};

bool hasOneOf(const std::filesystem::path& path, std::initializer_list<const char*> extensions) {
  const std::string own = nameOf(path.extension());
  return std::any_of(extensions.begin(), extensions.end(),
                     [&](const char* extension) { return equalIgnoringCase(own, extension); });
}

// Codecs that are written only where the original has them, because they take long to encode.
void addSlowCodec(std::vector<std::string>& codes, const std::filesystem::path& path,
                  const std::string& family) {
  if (hasOneOf(path, {".avi"})) {
    return;
  }
  const bool isMatroska = hasOneOf(path, {".mkv", ".webm"});
  if (family == "H.265" && !hasOneOf(path, {".webm"})) {
    codes.emplace_back(isMatroska ? "HEVC" : "hvc1");
  } else if (family == "AV1") {
    codes.emplace_back(isMatroska ? "AV01" : "av01");
  } else if (family == "VP9" && !isMatroska) {
    codes.emplace_back("vp09");
  }
}

}  // namespace

bool hasVideoName(const std::filesystem::path& path) {
  return hasOneOf(path, {".avi",   ".mp4",  ".m4v",  ".mov", ".mkv",  ".webm", ".mpg", ".mpeg",
                         ".ts",    ".m2ts", ".mts",  ".wmv", ".asf",  ".flv",  ".ogv", ".3gp",
                         ".mjpeg", ".mjpg", ".h264", ".264", ".h265", ".hevc"});
}

bool statesFrameCount(const std::filesystem::path& path) {
  return hasOneOf(path, {".avi"}) || isIsoMedia(path);
}

bool isIsoMedia(const std::filesystem::path& path) {
  return hasOneOf(path, {".mp4", ".m4v", ".mov", ".3gp"});
}

std::string codecName(const std::string& code) {
  for (const KnownFamily& family : kFamilies) {
    if (std::any_of(family.codes.begin(), family.codes.end(), [&](std::string_view known) {
          return !known.empty() && equalIgnoringCase(known, code);
        })) {
      return std::string(family.name);
    }
  }
  return code;
}

std::vector<std::string> codesFor(const std::filesystem::path& path, const std::string& original) {
  std::vector<std::string> codes;
  if (hasOneOf(path, {".avi"})) {
    codes = {"MJPG", "H264", "XVID"};
  } else if (hasOneOf(path, {".mkv"})) {
    codes = {"H264", "XVID", "MJPG", "VP90"};
  } else if (hasOneOf(path, {".webm"})) {
    codes = {"VP90", "VP80"};
  } else if (hasOneOf(path, {".mp4", ".m4v", ".mov"})) {
    codes = {"avc1", "mp4v"};
  }
  if (!codes.empty()) {
    addSlowCodec(codes, path, codecName(original));
  }
  std::stable_partition(codes.begin(), codes.end(), [&](const std::string& code) {
    return codecName(code) == codecName(original);
  });
  return codes;
}

}  // namespace fisheye_calibration::program
