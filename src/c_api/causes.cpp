#include "c_api/causes.h"

#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <optional>

#include "lens/rotation.h"
#include "single/placed_view.h"

namespace fisheye_calibration::c_api {
namespace {

struct Named {
  const char* name;
  double value;
};

const char* notFinite(double value) {
  if (std::isnan(value)) {
    return "not a number";
  }
  return std::isinf(value) ? "infinite" : nullptr;
}

// Of the first number that is not finite, as "<prefix><name> is infinite".
std::optional<std::string> firstNotFinite(const std::string& prefix,
                                          std::initializer_list<Named> numbers) {
  for (const Named& number : numbers) {
    if (const char* const what = notFinite(number.value)) {
      return prefix + number.name + " is " + what;
    }
  }
  return std::nullopt;
}

std::string indexed(const char* name, std::size_t index) {
  return std::string(name) + "[" + std::to_string(index) + "]";
}

std::optional<std::string> wrongPoint(const fcal_target_view& view) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(view.count); ++i) {
    const fcal_point& p = view.points[i];
    if (auto what = firstNotFinite(indexed("points", i) + ".",
                                   {{"xw", p.xw}, {"yw", p.yw}, {"x", p.x}, {"y", p.y}})) {
      return what;
    }
  }
  return std::nullopt;
}

std::string wrongLens(const fcal_solution& lens) {
  const std::string prefix = "held_lens->";
  if (const auto what = firstNotFinite(prefix, {{"fx", lens.fx},
                                                {"fy", lens.fy},
                                                {"cx", lens.cx},
                                                {"cy", lens.cy},
                                                {"k0", lens.k0},
                                                {"k1", lens.k1},
                                                {"alpha", lens.alpha}})) {
    return *what;
  }
  if (!(lens.fx > 0) || !(lens.fy > 0)) {
    return prefix + (lens.fx > 0 ? "fy" : "fx") + " is not positive";
  }
  constexpr std::size_t kColumns = 12;
  constexpr std::size_t kOfLens = 6;
  for (std::size_t row = 0; row < kOfLens; ++row) {
    for (std::size_t column = 0; column < kOfLens; ++column) {
      const std::size_t i = kColumns * row + column;
      const std::string name = indexed("covariance", i);
      if (const auto what = firstNotFinite(prefix, {{name.c_str(), lens.covariance[i]}})) {
        return *what;
      }
    }
  }
  return prefix + "covariance: its part for the lens is not symmetric or has a negative eigenvalue";
}

// Whether the camera is in the plane of the bed, Z = 0: the third column of R is orthogonal to T.
bool isEdgeOn(const fcal_camera& camera) {
  const cv::Matx33d R = lens::rotationFromVector({camera.rx, camera.ry, camera.rz});
  const cv::Vec3d T(camera.tx, camera.ty, camera.tz);
  const cv::Vec3d normal(R(0, 2), R(1, 2), R(2, 2));
  return std::abs(normal.dot(T)) <= 1e-12 * cv::norm(T);
}

std::string wrongCamera(const fcal_camera& c) {
  if (const auto what = firstNotFinite("", {{"fx", c.fx},
                                            {"fy", c.fy},
                                            {"skewness", c.skewness},
                                            {"rx", c.rx},
                                            {"ry", c.ry},
                                            {"rz", c.rz},
                                            {"tx", c.tx},
                                            {"ty", c.ty},
                                            {"tz", c.tz}})) {
    return *what;
  }
  if (c.fx == 0 || c.fy == 0) {
    return c.fx == 0 ? "fx is 0" : "fy is 0";
  }
  return isEdgeOn(c) ? "sees the bed edge-on"
                     : "the corner of its corrected image is on the horizon of the bed";
}

}  // namespace

Cause causeOfBadInput(std::span<const fcal_target_view> views, int refusedView,
                      const fcal_solution* heldLens) {
  if (refusedView >= 0) {
    const auto j = static_cast<std::size_t>(refusedView);
    return {indexed("views", j), wrongPoint(views[j]).value_or("not usable")};
  }
  if (views.empty()) {
    return {"views", "none"};
  }
  return {"options", heldLens != nullptr ? wrongLens(*heldLens) : "not usable"};
}

Cause causeOfNoView(const cv::Point2d& corner, float pixel, const cv::Size& view,
                    const fcal_camera& camera) {
  for (const Named& given :
       {Named{"corner_xw", corner.x}, Named{"corner_yw", corner.y}, Named{"pixel", pixel}}) {
    if (const char* const what = notFinite(given.value)) {
      return {given.name, what};
    }
  }
  // The record holds the world point at the view's centre in 32 bits.
  const cv::Point2d centre = single::viewCentre(corner, pixel, view.width, view.height);
  if (!single::isFloat(centre.x) && !single::isFloat(corner.x)) {
    return {"corner_xw", "too large for 32 bits"};
  }
  if (!single::isFloat(centre.y) && !single::isFloat(corner.y)) {
    return {"corner_yw", "too large for 32 bits"};
  }
  if (!single::isFloat(centre.x) || !single::isFloat(centre.y)) {
    return {"pixel", "the view is too large for 32 bits"};
  }
  return {"camera", wrongCamera(camera)};
}

}  // namespace fisheye_calibration::c_api
