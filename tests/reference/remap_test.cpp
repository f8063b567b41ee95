// The plain remap of the tests, and with what it adds the installed one, against the version of the
// image library that defines the pixels.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <opencv2/imgproc.hpp>

#include "reference/generator.h"
#include "reference/records.h"
#include "reference/remap_case.h"
#include "support/plain_remap.h"

namespace {

using reference::RemapCase;
using reference::RemapInput;

cv::Mat plainResult(const RemapCase& c, const RemapInput& input) {
  cv::Mat result(c.map, input.source.type(), cv::Scalar::all(c.fill));
  if (c.border == "transparent") {
    plain::remapTransparent(input.source, result, input.map1, input.map2);
    return result;
  }
  plain::remapConstant(input.source, result, input.map1, input.map2, c.fill);
  if (c.border == "validity") cv::threshold(result, result, 127, 255, cv::THRESH_BINARY);
  return result;
}

// The cases whose result, made by `change` out of the plain one, has another hash than recorded.
std::vector<RemapCase> differing(
    const std::function<void(const RemapCase&, const RemapInput&, cv::Mat&)>& change) {
  std::vector<RemapCase> found;
  for (const RemapCase& c : reference::readRemapCases()) {
    const RemapInput input = reference::remapInput(c);
    cv::Mat result = plainResult(c, input);
    change(c, input, result);
    if (reference::hashOf(result) != c.hash) found.push_back(c);
  }
  return found;
}

std::string linesOf(const std::vector<RemapCase>& cases) {
  std::string lines;
  for (const RemapCase& c : cases) lines += c.line + "\n";
  return lines;
}

TEST(PlainRemap, GivesEveryRecordedByte) {
  EXPECT_EQ(linesOf(differing([](auto&, auto&, auto&) {})), "");
}

// Fills in the pixels at the border that earlier versions leave unwritten.
TEST(PlainRemap, CompletesTheInstalledOne) {
  EXPECT_EQ(linesOf(differing([](const RemapCase& c, const RemapInput& input, cv::Mat& result) {
              if (c.border != "transparent") return;
              result.setTo(cv::Scalar::all(c.fill));
              cv::remap(input.source, result, input.map1, input.map2, cv::INTER_LINEAR,
                        cv::BORDER_TRANSPARENT);
              plain::remapLastColumnAndRow(input.source, result, input.map1, input.map2);
            })),
            "");
}

TEST(InstalledRemap, GivesEveryRecordedByteWithAConstantBorder) {
  EXPECT_EQ(linesOf(differing([](const RemapCase& c, const RemapInput& input, cv::Mat& result) {
              if (c.border != "constant") return;
              cv::remap(input.source, result, input.map1, input.map2, cv::INTER_LINEAR,
                        cv::BORDER_CONSTANT, cv::Scalar::all(c.fill));
            })),
            "");
}

TEST(PlainRemap, GivesTheValuesThatAreWrittenOut) {
  const cv::Mat source = (cv::Mat_<unsigned char>(2, 2) << 10, 200, 60, 255);
  int count = 0;
  for (const reference::Record& record : reference::readRecords("remap_values")) {
    SCOPED_TRACE(record.line);
    const cv::Mat map1(1, 1, CV_16SC2, cv::Scalar(record.number(0), record.number(1)));
    const cv::Mat map2(1, 1, CV_16UC1, cv::Scalar(record.number(2) + 32 * record.number(3)));
    cv::Mat constant;
    plain::remapConstant(source, constant, map1, map2, 255);
    EXPECT_EQ(std::to_string(constant.at<unsigned char>(0)), record.words.at(4));
    for (const int before : {0, 165}) {
      cv::Mat transparent(1, 1, CV_8UC1, cv::Scalar(before));
      plain::remapTransparent(source, transparent, map1, map2);
      const bool written = record.words.at(5) != "-";
      EXPECT_EQ(std::to_string(transparent.at<unsigned char>(0)),
                written ? record.words.at(5) : std::to_string(before));
    }
    ++count;
  }
  EXPECT_EQ(count, 4 * 4 * 5);
}

// ---- do the records notice a mistake?
// ---------------------------------------------------------------

TEST(RemapRecords, NoticeASingleBitOfOneByte) {
  const auto found = differing([](const RemapCase& c, const RemapInput&, cv::Mat& result) {
    const std::size_t bytes = result.total() * result.elemSize();
    result.data[std::size_t{c.seed} * 7919 % bytes] ^= 1;
  });
  EXPECT_EQ(found.size(), reference::readRemapCases().size());
}

// Earlier versions of the image library do not write any sample that reaches beyond the frame.
TEST(RemapRecords, NoticeTheTransparentBorderOfEarlierVersions) {
  const auto isForBorder = [](const RemapCase& c) {
    return c.border == "transparent" && c.bytes == "noise" && c.positions != "any";
  };
  const std::vector<RemapCase> all = reference::readRemapCases();
  const auto found = differing([](const RemapCase& c, const RemapInput& input, cv::Mat& result) {
    if (c.border != "transparent") return;
    for (int y = 0; y < c.map.height; ++y) {
      for (int x = 0; x < c.map.width; ++x) {
        const auto whole = input.map1.at<cv::Vec2s>(y, x);
        const bool reachesOut = whole[0] >= c.frame.width - 1 || whole[1] >= c.frame.height - 1;
        if (reachesOut) result(cv::Rect(x, y, 1, 1)).setTo(cv::Scalar::all(c.fill));
      }
    }
  });
  EXPECT_EQ(std::count_if(found.begin(), found.end(), isForBorder),
            std::count_if(all.begin(), all.end(), isForBorder));
}

}  // namespace
