// What the page asks for, read from the body of its request. Everything is a number, a truth value
// or one of a few words.
#pragma once

#include <opencv2/core/types.hpp>
#include <optional>
#include <string_view>
#include <variant>

#include "detection/target_places.h"

namespace fisheye_calibration::program {

struct ChosenTarget {
  Target target;
  World world;

  bool operator==(const ChosenTarget&) const = default;
};

struct SetStep {
  int step = 1;
};
struct SetTarget {
  ChosenTarget chosen;
};
struct SetBed {
  std::optional<cv::Rect2d> bed;
};
struct SetTolerance {
  double tolerance = 0;  // mm; 0: none
};
struct SetAutoTake {
  bool on = false;
};
struct DeleteView {
  std::size_t source = 0;
  int view = 0;
};
struct SetBedView {
  std::size_t source = 0;
  int view = 0;
};
// Of one source, or of all.
struct TakeView {
  std::optional<std::size_t> source;
};
struct Calibrate {
  std::optional<std::size_t> source;
};
struct Accept {
  std::optional<std::size_t> source;
};
struct Verify {
  std::optional<std::size_t> source;
};
struct Stitch {};
struct Save {};
struct Reset {};

using Action = std::variant<SetStep, SetTarget, SetBed, SetTolerance, SetAutoTake, DeleteView,
                            SetBedView, TakeView, Calibrate, Accept, Verify, Stitch, Save, Reset>;

// Fails as bad input, in words for the person at the page.
Action parseAction(std::string_view request, std::size_t sources);

// A target from its kind and numbers, within the same limits. `columns` and `rows` are doubles
// because they come from outside.
ChosenTarget checkedTarget(std::string_view kind, double columns, double rows, double spacing,
                           double originX, double originY);

// The kind's name on the page.
const char* kindName(TargetKind kind);

}  // namespace fisheye_calibration::program
