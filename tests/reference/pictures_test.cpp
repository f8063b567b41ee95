// The image library's functions that return pictures, called as the library calls them, against the
// version that defines this library's pixels: a version that changes a byte is noticed.
#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "reference/generator.h"
#include "reference/records.h"

namespace {

using reference::Generator;
using reference::Record;

cv::Mat straightened(const Record& record) {
  Generator generator(static_cast<std::uint32_t>(record.number(6)));
  const cv::Mat picture =
      reference::picture(generator, "noise", record.number(2), record.number(3), 3);
  const cv::Matx33d M(reference::matrixElements(generator, record.words.at(1), 3).data());
  cv::Mat result;
  cv::warpPerspective(picture, result, M, {record.number(4), record.number(5)}, cv::INTER_LINEAR,
                      cv::BORDER_CONSTANT, cv::Scalar());
  return result;
}

cv::Mat cutInHalf(const Record& record) {
  Generator generator(static_cast<std::uint32_t>(record.number(3)));
  cv::Mat result = reference::picture(generator, "noise", record.number(1), record.number(2), 1);
  cv::threshold(result, result, 127, 255, cv::THRESH_BINARY);
  return result;
}

TEST(Pictures, AreTheRecordedOnesInEveryByte) {
  for (const Record& record : reference::readRecords("pictures")) {
    const cv::Mat result = record.words.at(0) == "warp" ? straightened(record) : cutInHalf(record);
    EXPECT_EQ(reference::hashOf(result), record.hash()) << record.line;
  }
}

}  // namespace
