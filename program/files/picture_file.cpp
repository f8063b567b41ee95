#include "files/picture_file.h"

#include <algorithm>
#include <opencv2/imgcodecs.hpp>
#include <ostream>
#include <string_view>
#include <system_error>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/size.h"
#include "base/text.h"
#include "files/decoder_messages.h"
#include "files/jpeg_end.h"
#include "files/read_file.h"

namespace fisheye_calibration::program {
namespace {

// True for messages of the JPEG library about bytes that are missing or make no sense, so that
// parts of the picture are made up. It also prints harmless ones.
bool isDamage(const std::string& message) {
  const auto has = [&](const char* part) { return message.find(part) != std::string::npos; };
  return has("Premature end of JPEG file") || has("premature end of data segment") ||
         has("bad Huffman code") || has("bad arithmetic code") || has("instead of RST");
}

cv::Mat decoded(std::string& bytes, int kind, std::string& printed, bool& caught) {
  if (bytes.empty()) {
    return {};
  }
  const cv::Mat buffer(1, static_cast<int>(bytes.size()), CV_8UC1, bytes.data());
  DecoderMessages messages;
  cv::Mat picture;
  try {
    picture = cv::imdecode(buffer, kind | cv::IMREAD_ANYDEPTH);
  } catch (const cv::Exception&) {  // an impossible size in a damaged header
    picture.release();
  }
  printed = messages.take();
  caught = messages.caught();
  return picture;
}

// Sensors deliver 8 to 16 bits, mostly in the lower bits of a file's 16. The range is a whole
// number of bits, so that the frames of a camera are mostly scaled alike.
cv::Mat toEightBits(const cv::Mat& picture, const std::string& name, std::ostream& messages) {
  double largest = 0;
  cv::minMaxLoc(picture.reshape(1), nullptr, &largest);
  int bits = 8;
  while (bits < 16 && largest >= 1 << bits) {
    bits += 2;
  }
  if (bits < 16) {
    messages << "note: " << name << ": 16 bits a pixel with values up to "
             << static_cast<int>(largest) << ", read as a picture of " << bits << " bits\n";
  }
  cv::Mat scaled;
  picture.convertTo(scaled, CV_8U, 255.0 / ((1 << bits) - 1));
  return scaled;
}

cv::Mat readAs(const std::filesystem::path& path, int kind, std::ostream& messages) {
  const std::string name = nameOf(path);
  std::string bytes = readFile(path, kLongestPicture);
  if (isTruncatedJpeg(bytes)) {
    failBadInput(name + ": the file ends before the picture does");
  }
  std::string printed;
  bool caught = false;
  cv::Mat picture = decoded(bytes, kind, printed, caught);
  if (picture.empty()) {
    failBadInput(name + ": not a picture that can be read" +
                 (printed.empty() ? "" : " (" + printed + ")"));
  }
  if (isDamage(printed)) {
    failBadInput(name + ": the picture is damaged (" + printed + ")");
  }
  if (!caught && isJpeg(bytes)) {
    messages << "warning: " << name
             << ": without a temporary file, damage of the picture goes unnoticed\n";
  }
  if (!printed.empty()) {
    messages << "warning: " << name << ": " << printed << "\n";
  }
  if (std::max(picture.cols, picture.rows) > kLargestImageSide) {
    failBadInput(name + ": " + sizeText({picture.cols, picture.rows}) + " pixels; at most " +
                 std::to_string(kLargestImageSide) + " a side can be used");
  }
  if (picture.depth() == CV_8U) {
    return picture;
  }
  if (picture.depth() != CV_16U) {
    failBadInput(name + ": neither 8 nor 16 bits a pixel");
  }
  return toEightBits(picture, name, messages);
}

}  // namespace

bool isPicture(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error) && cv::haveImageReader(nameOf(path));
}

cv::Mat readGreyPicture(const std::filesystem::path& path, std::ostream& messages) {
  return readAs(path, cv::IMREAD_GRAYSCALE, messages);
}

cv::Mat readColourPicture(const std::filesystem::path& path, std::ostream& messages) {
  return readAs(path, cv::IMREAD_COLOR, messages);
}

cv::Mat readFrame(const std::filesystem::path& path, std::ostream& messages) {
  return readAs(path, cv::IMREAD_ANYCOLOR, messages);
}

bool hasPictureName(const std::filesystem::path& path) {
  const std::string extension = nameOf(path.extension());
  return !extension.empty() && cv::haveImageWriter("picture" + extension);
}

void requirePictureName(const std::string& option, const std::filesystem::path& path) {
  if (!hasPictureName(path)) {
    failBadInput(option + ": no kind of picture ends in " + inQuotes(nameOf(path.extension())) +
                 " (try .png): " + nameOf(path));
  }
}

void stagePicture(OutputFiles& files, const std::filesystem::path& path, const cv::Mat& picture) {
  std::vector<unsigned char> bytes;
  if (!cv::imencode(nameOf(path.extension()), picture, bytes)) {
    failJob(nameOf(path) + ": the picture cannot be encoded");
  }
  const auto* const text = reinterpret_cast<const char*>(bytes.data());
  files.stage(path, std::string_view(text, bytes.size()));
}

}  // namespace fisheye_calibration::program
