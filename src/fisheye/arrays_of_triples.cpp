#include "fisheye/arrays_of_triples.h"

#include "lens/check.h"

namespace fisheye_calibration::fisheye {
namespace {

// The 1x1 header of element `index`, which shares the array's memory.
cv::Mat elementAt(const cv::Mat& elements, int index, const char* function) {
  lens::require(elements.channels() == 3 &&
                    (elements.depth() == CV_32F || elements.depth() == CV_64F) &&
                    elements.dims <= 2 && static_cast<std::size_t>(index) < elements.total(),
                "every view has a rotation vector and a translation", function);
  const int row = index / elements.cols;
  const int col = index % elements.cols;
  return elements(cv::Rect(col, row, 1, 1));
}

}  // namespace

bool isListOfMatrices(const cv::_InputArray& triples) {
  return triples.isMatVector() || triples.kind() == cv::_InputArray::STD_VECTOR_VECTOR;
}

cv::Vec3d readTripleAt(const cv::_InputArray& triples, int index, const char* function) {
  const cv::Mat element = isListOfMatrices(triples) ? elementAt(triples.getMat(index), 0, function)
                                                    : elementAt(triples.getMat(), index, function);
  cv::Vec3d value;
  element.reshape(1, 3).convertTo(value, CV_64F);
  return value;
}

void writeTripleAt(const cv::_InputOutputArray& triples, int index, const cv::Vec3d& value,
                   const char* function) {
  if (isListOfMatrices(triples) && triples.getMat(index).empty()) {
    triples.create(1, 1, CV_64FC3, index);
  }
  cv::Mat element = isListOfMatrices(triples) ? elementAt(triples.getMat(index), 0, function)
                                              : elementAt(triples.getMat(), index, function);
  cv::Mat(1, 1, CV_64FC3, cv::Scalar(value[0], value[1], value[2]))
      .convertTo(element, element.depth());
}

}  // namespace fisheye_calibration::fisheye
