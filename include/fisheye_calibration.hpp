// fisheye_calibration for C++17: a thin wrapper of fisheye_calibration_c.h, which documents the
// operations. Header-only and independent of fisheye_calibration.h: the program and the library may
// be built by different compilers with different run-times, such as Visual C++'s debug one.
//
// Failures are exceptions with the library's text: fcal::NoResult where the C function returns
// FCAL_FALSE, fcal::Error otherwise. Pictures are views of the caller's memory (fcal::Image) or own
// it (fcal::Picture). Arrays are anything contiguous: std::vector, std::array, C arrays, std::span.
#ifndef FISHEYE_CALIBRATION_HPP
#define FISHEYE_CALIBRATION_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "fisheye_calibration_c.h"

namespace fcal {

using Point = fcal_point;
using Camera = fcal_camera;
using Dual = fcal_dual;
using Solution = fcal_solution;

class Error : public std::runtime_error {
 public:
  Error(fcal_status status, const char* text) : std::runtime_error(text), status_(status) {}

  fcal_status status() const noexcept { return status_; }

 private:
  fcal_status status_;
};

// Well-formed arguments without a result.
class NoResult : public Error {
 public:
  explicit NoResult(const char* text) : Error(FCAL_FALSE, text) {}
};

// Views that have no solution.
class NoSolution : public NoResult {
 public:
  NoSolution(const char* text, const fcal_views_result& result)
      : NoResult(text), outcome(result.outcome), view(result.refused_view) {}

  const std::int32_t outcome;  // FCAL_BAD_INPUT ...
  const std::int32_t view;     // that it is about, or -1
};

// Throws unless the status is FCAL_OK.
inline void check(fcal_status status) {
  if (status == FCAL_FALSE) {
    throw NoResult(fcal_last_error());
  }
  if (status != FCAL_OK) {
    throw Error(status, fcal_last_error());
  }
}

inline std::string version() { return fcal_version(); }

// Elements in a row, owned by someone else.
template <class Element>
class Span {
 public:
  constexpr Span() = default;
  constexpr Span(Element* data, std::size_t size) : data_(data), size_(size) {}
  template <std::size_t kSize>
  constexpr Span(Element (&elements)[kSize]) : Span(elements, kSize) {}
  // Anything with data() and size().
  template <
      class Container,
      class = std::enable_if_t<std::is_convertible_v<
          std::remove_pointer_t<decltype(std::declval<Container&>().data())> (*)[], Element (*)[]>>>
  constexpr Span(Container&& elements) : Span(elements.data(), elements.size()) {}

  constexpr Element* data() const { return data_; }
  constexpr std::size_t size() const { return size_; }
  constexpr Element* begin() const { return data_; }
  constexpr Element* end() const { return data_ + size_; }
  constexpr Element& operator[](std::size_t i) const { return data_[i]; }

  // The number of elements as the C interface takes it.
  std::int32_t count() const {
    if (size_ > static_cast<std::size_t>((std::numeric_limits<std::int32_t>::max)())) {
      throw Error(FCAL_BAD_ARGUMENT, "more than 2^31 - 1 elements");
    }
    return static_cast<std::int32_t>(size_);
  }

 private:
  Element* data_ = nullptr;
  std::size_t size_ = 0;
};

struct Size {
  std::int32_t width = 0;
  std::int32_t height = 0;
};

// A picture in someone else's memory.
class Image : public fcal_image {
 public:
  // `buffer` begins with the top row; the stride of 0 is that of rows without padding.
  static Image topDown(std::uint8_t* buffer, Size size, std::int32_t bits,
                       std::int32_t stride = 0) {
    return Image({buffer, size.width, size.height, stride, bits});
  }

  // `buffer` begins with the bottom row, as those of the C++ functions and of Windows bitmaps do.
  static Image bottomUp(std::uint8_t* buffer, Size size, std::int32_t bits,
                        std::int32_t stride = 0) {
    const std::int64_t step = stride != 0 ? stride : std::int64_t{size.width} * (bits / 8);
    const std::int64_t rows = size.height > 0 ? size.height - 1 : 0;
    constexpr std::int64_t kLargest = (std::numeric_limits<std::int32_t>::max)();
    if (step < 0 || step > kLargest || step * rows > kLargest) {
      throw Error(FCAL_BAD_ARGUMENT, "Image: negative stride, or more than 2^31 - 1 bytes");
    }
    return Image({buffer != nullptr ? buffer + static_cast<std::ptrdiff_t>(rows * step) : nullptr,
                  size.width, size.height, static_cast<std::int32_t>(-step), bits});
  }

  explicit Image(const fcal_image& image) : fcal_image(image) {}
};

// A picture that is only read, such as a frame.
class ConstImage {
 public:
  // NOLINTNEXTLINE(google-explicit-constructor): what may be written may be read.
  ConstImage(const Image& image) : image_(image) {}

  // As Image::topDown().
  static ConstImage topDown(const std::uint8_t* buffer, Size size, std::int32_t bits,
                            std::int32_t stride = 0) {
    return ConstImage(Image::topDown(const_cast<std::uint8_t*>(buffer), size, bits, stride));
  }

  Size size() const { return {image_.width, image_.height}; }
  std::int32_t bits() const { return image_.bits; }

  // For arguments of the C interface that are only read.
  const fcal_image& record() const { return image_; }

 private:
  fcal_image image_;
};

// A picture with its own memory: rows from the top, without padding.
class Picture {
 public:
  Picture(Size size, std::int32_t bits) : size_(size), bits_(bits) {
    if (size.width <= 0 || size.height <= 0 || (bits != 8 && bits != 24 && bits != 32)) {
      throw Error(FCAL_BAD_ARGUMENT, "Picture: not a size or not 8, 24 or 32 bits");
    }
    bytes_.resize(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) *
                  static_cast<std::size_t>(bits / 8));
  }

  Size size() const { return size_; }
  std::int32_t bits() const { return bits_; }
  std::vector<std::uint8_t>& bytes() { return bytes_; }
  const std::vector<std::uint8_t>& bytes() const { return bytes_; }
  Image image() { return Image::topDown(bytes_.data(), size_, bits_); }
  ConstImage image() const { return ConstImage::topDown(bytes_.data(), size_, bits_); }

 private:
  Size size_;
  std::int32_t bits_;
  std::vector<std::uint8_t> bytes_;
};

// ---- points -------------------------------------------------------------------------------------

struct XY {
  float x, y;
};
struct XYZ {
  float x, y, z;
};
struct BedPoint {
  double x, y;
};
static_assert(sizeof(XY) == 2 * sizeof(float) && sizeof(XYZ) == 3 * sizeof(float) &&
                  sizeof(BedPoint) == 2 * sizeof(double),
              "points are interleaved numbers");

namespace detail {

template <class Number, class Points>
Number* numbers(Points* points) {
  return reinterpret_cast<Number*>(points);
}

template <class Out, class In, class Call>
std::vector<Out> mapped(Span<const In> in, const Call& call) {
  std::vector<Out> out(in.size());
  check(call(in.data(), in.count(), out.data()));
  return out;
}

}  // namespace detail

inline std::vector<XY> worldToRaw(const Camera& camera, Span<const XYZ> world) {
  return detail::mapped<XY>(world, [&](const XYZ* in, std::int32_t n, XY* out) {
    return fcal_world_to_raw(&camera, detail::numbers<const float>(in), n,
                             detail::numbers<float>(out));
  });
}

inline std::vector<XY> worldToCorrected(const Camera& camera, XY centre, Span<const XYZ> world) {
  return detail::mapped<XY>(world, [&](const XYZ* in, std::int32_t n, XY* out) {
    return fcal_world_to_corrected(&camera, centre.x, centre.y, detail::numbers<const float>(in), n,
                                   detail::numbers<float>(out));
  });
}

inline std::vector<XY> worldToView(const Camera& camera, XY centre, Span<const XY> world) {
  return detail::mapped<XY>(world, [&](const XY* in, std::int32_t n, XY* out) {
    return fcal_world_to_view(&camera, centre.x, centre.y, detail::numbers<const float>(in), n,
                              detail::numbers<float>(out));
  });
}

inline std::vector<XY> viewToWorld(const Camera& camera, XY centre, Span<const XY> view) {
  return detail::mapped<XY>(view, [&](const XY* in, std::int32_t n, XY* out) {
    return fcal_view_to_world(&camera, centre.x, centre.y, detail::numbers<const float>(in), n,
                              detail::numbers<float>(out));
  });
}

inline std::vector<XY> rawToWorld(const Camera& camera, Span<const XY> raw) {
  return detail::mapped<XY>(raw, [&](const XY* in, std::int32_t n, XY* out) {
    return fcal_raw_to_world(&camera, detail::numbers<const float>(in), n,
                             detail::numbers<float>(out));
  });
}

inline std::vector<XY> rawToCorrected(const Camera& camera, XY centre, Span<const XY> raw) {
  return detail::mapped<XY>(raw, [&](const XY* in, std::int32_t n, XY* out) {
    return fcal_raw_to_corrected(&camera, centre.x, centre.y, detail::numbers<const float>(in), n,
                                 detail::numbers<float>(out));
  });
}

inline std::vector<XY> worldToStitched(const Dual& dual, Span<const XY> world) {
  return detail::mapped<XY>(world, [&](const XY* in, std::int32_t n, XY* out) {
    return fcal_world_to_stitched(&dual, detail::numbers<const float>(in), n,
                                  detail::numbers<float>(out));
  });
}

inline std::vector<XY> stitchedToWorld(const Dual& dual, Span<const XY> stitched) {
  return detail::mapped<XY>(stitched, [&](const XY* in, std::int32_t n, XY* out) {
    return fcal_stitched_to_world(&dual, detail::numbers<const float>(in), n,
                                  detail::numbers<float>(out));
  });
}

// ---- calibration from one view, parameter files -------------------------------------------------

struct Calibration {
  Camera camera{};
  double rms = 0;  // pixels
};

inline Calibration calibrate(Size image, Span<Point> points, Size corrected) {
  Calibration result;
  check(fcal_calibrate(image.width, image.height, points.data(), points.count(), corrected.width,
                       corrected.height, &result.camera, &result.rms));
  return result;
}

// On Windows paths are UTF-8, elsewhere the system's bytes.
inline void saveCamera(const std::string& path, const Camera& camera) {
  check(fcal_save_camera(path.c_str(), &camera));
}

inline Camera loadCamera(const std::string& path) {
  Camera camera{};
  check(fcal_load_camera(path.c_str(), &camera));
  return camera;
}

inline void saveDual(const std::string& path, const Dual& dual) {
  check(fcal_save_dual(path.c_str(), &dual));
}

inline Dual loadDual(const std::string& path) {
  Dual dual{};
  check(fcal_load_dual(path.c_str(), &dual));
  return dual;
}

// ---- pictures -----------------------------------------------------------------------------------

inline void correct(const ConstImage& frame, const Camera& camera, const Image& view) {
  check(fcal_correct(&frame.record(), &camera, &view, nullptr));
}

inline void correct(const ConstImage& frame, const Camera& camera, const Image& view,
                    const Image& mask) {
  check(fcal_correct(&frame.record(), &camera, &view, &mask));
}

inline Picture corrected(const ConstImage& frame, const Camera& camera, Size size) {
  Picture view(size, frame.bits());
  correct(frame, camera, view.image());
  return view;
}

inline void crop(const ConstImage& source, const Image& target) {
  check(fcal_crop(&source.record(), &target));
}

// ---- plane registration -------------------------------------------------------------------------

// xw = a x + b y + e, yw = c x + d y + f
struct Affine {
  double a = 0, b = 0, c = 0, d = 0, e = 0, f = 0;
  double errorX = 0, errorY = 0;  // world units
};

inline Affine fitAffine(Span<const Point> points) {
  double k[6];
  Affine fit;
  check(fcal_fit_affine(points.data(), points.count(), k, &fit.errorX, &fit.errorY));
  fit.a = k[0], fit.b = k[1], fit.c = k[2], fit.d = k[3], fit.e = k[4], fit.f = k[5];
  return fit;
}

inline void straighten(Span<const Point> points) {
  check(fcal_straighten(points.data(), points.count()));
}

// ---- two cameras --------------------------------------------------------------------------------

namespace detail {

// Whether a type with data() owns its elements: then those of a constant object are constant, too.
template <class Container, class = void>
struct Owns : std::false_type {};
template <class Container>
struct Owns<Container, std::void_t<decltype(std::declval<const Container&>().data())>>
    : std::negation<std::is_same<decltype(std::declval<Container&>().data()),
                                 decltype(std::declval<const Container&>().data())>> {};

}  // namespace detail

// Refers to the frame's pixels, the camera and the points, which must outlive it.
class RigView : public fcal_rig_view {
 public:
  RigView(const ConstImage& picture, const Camera& record, Span<const Point> list)
      : fcal_rig_view{picture.record(), &record, list.data(), list.count()} {}

  // Temporaries would be gone before the view is used.
  RigView(const ConstImage& picture, const Camera&& record, Span<const Point> list) = delete;
  template <class Points, class = std::enable_if_t<!std::is_lvalue_reference_v<Points> &&
                                                   detail::Owns<std::remove_cv_t<Points>>::value>>
  RigView(const ConstImage& picture, const Camera& record, Points&& list) = delete;
};

using PointLists = std::array<std::vector<Point>, 2>;

inline PointLists commonPoints(Span<const Point> first, Span<const Point> second,
                               std::int32_t idCount) {
  PointLists common{std::vector<Point>(first.size()), std::vector<Point>(second.size())};
  std::int32_t needed[2] = {0, 0};
  check(fcal_common_points(first.data(), first.count(), second.data(), second.count(), idCount,
                           common[0].data(), first.count(), &needed[0], common[1].data(),
                           second.count(), &needed[1]));
  common[0].resize(static_cast<std::size_t>(needed[0]));
  common[1].resize(static_cast<std::size_t>(needed[1]));
  return common;
}

inline Size stitchedSize(const RigView& first, const RigView& second) {
  Size size;
  check(fcal_stitched_size(&first, &second, &size.width, &size.height));
  return size;
}

inline Dual stitch(const RigView& first, const RigView& second, const Image& canvas) {
  Dual dual{};
  check(fcal_stitch(&first, &second, &canvas, &dual));
  return dual;
}

// Returns the record of the target.
inline Dual cropStitched(const ConstImage& source, std::int32_t left, std::int32_t top,
                         const Image& target, Dual dual) {
  check(fcal_crop_stitched(&source.record(), left, top, &target, &dual));
  return dual;
}

// ---- any number of views ------------------------------------------------------------------------

struct ViewsOptions {
  bool prior = true;
  bool keepAll = false;
  bool whiteNoise = false;
  double startFocalFactor = 1;
  const Solution* heldLens = nullptr;
};

struct ViewsCalibration {
  double rms = 0;         // pixels
  double noiseSigma = 0;  // pixels
  bool noiseAssumed = false;
  std::int32_t steps = 0;
  std::vector<Solution> solutions;                    // one per view
  std::vector<std::vector<std::size_t>> wrongPoints;  // indices, one list per view
  std::vector<std::size_t> wrongViews;
};

inline ViewsCalibration calibrateViews(Size image, Span<const Span<const Point>> views,
                                       const ViewsOptions& options = {}) {
  std::vector<fcal_target_view> targets;
  std::size_t total = 0;
  for (const Span<const Point>& view : views) {
    targets.push_back({view.data(), view.count()});
    total += view.size();
  }
  fcal_views_options given{};
  given.size = sizeof given;
  given.noise = options.whiteNoise ? FCAL_NOISE_WHITE : FCAL_NOISE_SMOOTH;
  given.no_prior = options.prior ? 0 : 1;
  given.keep_all = options.keepAll ? 1 : 0;
  given.start_focal_factor = options.startFocalFactor;
  given.held_lens = options.heldLens;
  fcal_views_result result{};
  result.size = sizeof result;
  ViewsCalibration solved;
  solved.solutions.resize(views.size());
  std::vector<std::uint8_t> wrongPoints(total);
  std::vector<std::uint8_t> wrongViews(views.size());
  const fcal_status status =
      fcal_calibrate_views(image.width, image.height, targets.data(), views.count(), &given,
                           &result, solved.solutions.data(), wrongPoints.data(), wrongViews.data());
  if (status == FCAL_FALSE) {
    throw NoSolution(fcal_last_error(), result);
  }
  check(status);
  solved.rms = result.rms;
  solved.noiseSigma = result.noise_sigma;
  solved.noiseAssumed = result.noise_assumed != 0;
  solved.steps = result.steps;
  solved.wrongPoints.resize(views.size());
  const std::uint8_t* wrong = wrongPoints.data();
  for (std::size_t j = 0; j < views.size(); ++j) {
    if (wrongViews[j] != 0) {
      solved.wrongViews.push_back(j);
    }
    for (std::size_t i = 0; i < views[j].size(); ++i) {
      if (*wrong++ != 0) {
        solved.wrongPoints[j].push_back(i);
      }
    }
  }
  return solved;
}

inline Calibration cameraOf(const Solution& solution, Span<Point> points, Size corrected) {
  Calibration result;
  check(fcal_camera_of_solution(&solution, points.data(), points.count(), corrected.width,
                                corrected.height, &result.camera, &result.rms));
  return result;
}

inline Solution solutionOf(const Camera& camera) {
  Solution solution{};
  check(fcal_solution_of_camera(&camera, &solution));
  return solution;
}

// The record whose view shows the bed from `corner`.
inline Camera placedView(BedPoint corner, float pixel, Size size, Camera camera) {
  check(fcal_place_view(corner.x, corner.y, pixel, size.width, size.height, &camera));
  return camera;
}

inline std::vector<BedPoint> rawToBed(const Solution& solution, Span<const BedPoint> raw) {
  return detail::mapped<BedPoint>(raw, [&](const BedPoint* in, std::int32_t n, BedPoint* out) {
    return fcal_raw_to_bed(&solution, detail::numbers<const double>(in), n,
                           detail::numbers<double>(out));
  });
}

inline std::vector<double> bedBounds(const Solution& solution, Span<const BedPoint> grid) {
  return detail::mapped<double>(grid, [&](const BedPoint* in, std::int32_t n, double* out) {
    return fcal_bed_bounds(&solution, detail::numbers<const double>(in), n, out);
  });
}

inline std::vector<double> bedErrors(const Solution& solution, const Solution& judged,
                                     Span<const BedPoint> grid) {
  return detail::mapped<double>(grid, [&](const BedPoint* in, std::int32_t n, double* out) {
    return fcal_bed_errors(&solution, &judged, detail::numbers<const double>(in), n, out);
  });
}

}  // namespace fcal

#endif  // FISHEYE_CALIBRATION_HPP
