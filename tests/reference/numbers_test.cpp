// The image library's functions that return numbers, called as the library calls them, against the
// version that defines this library's results: a version that changes a bit is noticed.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "reference/generator.h"
#include "reference/records.h"

namespace {

using reference::Generator;
using reference::Record;
using Numbers = std::vector<double>;

struct Function {
  std::function<Numbers(Generator&, const std::string& kind)> input;
  std::function<Numbers(const Numbers&)> compute;
};

template <int N>
Numbers numbersOf(const cv::Matx<double, N, N>& matrix) {
  return {matrix.val, matrix.val + N * N};
}

auto matrixOf(int n) {
  return
      [n](Generator& g, const std::string& kind) { return reference::matrixElements(g, kind, n); };
}

auto numbersBelow(std::size_t count, double reach) {
  return [=](Generator& g, const std::string& kind) {
    return reference::numbers(g, count, kind == "huge" ? 1e150 : reach);
  };
}

template <int N>
Numbers inverse(const Numbers& a) {
  cv::Matx<double, N, N> result;
  cv::invert(cv::Matx<double, N, N>(a.data()), result, cv::DECOMP_LU);
  return numbersOf(result);
}

Numbers inverse6(const Numbers& a) {
  cv::Mat result;
  cv::invert(cv::Mat(a).reshape(1, 6), result, cv::DECOMP_LU);
  return result.reshape(1, 1);
}

// The inverse of a small matrix in the image library's headers.
Numbers inlineInverse3(const Numbers& a) {
  return numbersOf(cv::Matx33d(a.data()).inv(cv::DECOMP_LU));
}

Numbers solve6(const Numbers& ab) {
  const cv::Mat all(ab);
  cv::Mat step;
  cv::solve(all.rowRange(0, 36).reshape(1, 6), all.rowRange(36, 42), step, cv::DECOMP_LU);
  return step;
}

template <int N>
Numbers norm(const Numbers& v) {
  return {cv::norm(cv::Vec<double, N>(v.data()))};
}

Numbers scale6(const Numbers& v) { return cv::Mat(v[0] * cv::Mat(v).rowRange(1, 7)); }

Numbers narrow6(const Numbers& v) {
  cv::Mat narrow;
  cv::Mat(v).convertTo(narrow, CV_32F);
  return {narrow.begin<float>(), narrow.end<float>()};
}

Numbers squareRoots(const Numbers& v) {
  Numbers result;
  cv::sqrt(v, result);
  return result;
}

Numbers magnitudes(Generator& g, const std::string&) {
  Numbers result = reference::numbers(g, 6, 1000);
  for (double& x : result) x = std::abs(x);
  return result;
}

Numbers perspective(const Numbers& corners) {
  std::vector<cv::Point2f> points;
  for (std::size_t i = 0; i < corners.size(); i += 2) {
    points.emplace_back(static_cast<float>(corners[i]), static_cast<float>(corners[i + 1]));
  }
  return cv::getPerspectiveTransform(points.data(), points.data() + 4, cv::DECOMP_LU).reshape(1, 1);
}

const Function& functionNamed(const std::string& name) {
  static const std::map<std::string, Function> functions{
      {"invert3", {matrixOf(3), inverse<3>}},
      {"invert6", {matrixOf(6), inverse6}},
      {"invert8", {matrixOf(8), inverse<8>}},
      {"solve6",
       {[](Generator& g, const std::string& kind) {
          Numbers all = reference::matrixElements(g, kind, 6);
          const Numbers b = reference::numbers(g, 6, 1);
          all.insert(all.end(), b.begin(), b.end());
          return all;
        },
        solve6}},
      {"determinant3",
       {matrixOf(3),
        [](const Numbers& a) { return Numbers{cv::determinant(cv::Matx33d(a.data()))}; }}},
      {"norm3", {numbersBelow(3, 1), norm<3>}},
      {"norm4", {numbersBelow(4, 1), norm<4>}},
      {"norm6", {numbersBelow(6, 1), norm<6>}},
      {"scale6", {numbersBelow(7, 1), scale6}},
      {"narrow6", {numbersBelow(6, 1000), narrow6}},
      {"squareRoot6", {magnitudes, squareRoots}},
      {"perspective",
       {[](Generator& g, const std::string&) { return reference::quadrilaterals(g); },
        perspective}},
  };
  return functions.at(name);
}

// Bit for bit, except that a NaN is like any other.
bool same(const Numbers& x, const Numbers& y) {
  return std::equal(x.begin(), x.end(), y.begin(), y.end(), [](double a, double b) {
    return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
  });
}

// The hash of all results of a record, computed by `compute`.
std::string hashOfAll(const Record& record, const Function& function) {
  Generator generator(static_cast<std::uint32_t>(record.number(3)));
  Numbers all;
  for (int i = 0; i < record.number(2); ++i) {
    const Numbers result = function.compute(function.input(generator, record.words.at(1)));
    all.insert(all.end(), result.begin(), result.end());
  }
  return reference::hashOf(all);
}

TEST(Numbers, AreTheRecordedOnesInEveryBit) {
  for (const Record& record : reference::readRecords("numbers")) {
    const Function& function = functionNamed(record.words.at(0));
    EXPECT_EQ(hashOfAll(record, function), record.hash()) << record.line;
  }
}

TEST(Numbers, InlineInverseOfThreeRowsIsTheRecordedOne) {
  for (const Record& record : reference::readRecords("numbers")) {
    if (record.words.at(0) != "invert3") continue;
    EXPECT_EQ(hashOfAll(record, {matrixOf(3), inlineInverse3}), record.hash()) << record.line;
  }
}

TEST(Numbers, AreThoseWrittenOut) {
  for (const Record& record : reference::readRecords("number_values")) {
    const Numbers result =
        functionNamed(record.words.at(0)).compute(reference::numbersOf(record.parts.at(0)));
    const Numbers expected = reference::numbersOf(record.parts.at(1));
    EXPECT_TRUE(same(result, expected))
        << record.line << "\n  but got " << testing::PrintToString(result);
  }
}

TEST(NumberRecords, NoticeTheLastBitOfOneNumber) {
  for (const Record& record : reference::readRecords("number_values")) {
    Numbers result = reference::numbersOf(record.parts.at(1));
    const std::string hash = reference::hashOf(result);
    if (std::isnan(result.back())) continue;
    result.back() = std::nextafter(result.back(), 0.25);
    EXPECT_NE(reference::hashOf(result), hash) << record.line;
    EXPECT_FALSE(same(result, reference::numbersOf(record.parts.at(1)))) << record.line;
  }
}

}  // namespace
