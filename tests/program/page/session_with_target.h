// A session of one camera whose target has been chosen, at step 2.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "base/failure.h"
#include "page/session.h"
#include "page/session_json.h"

namespace fisheye_calibration::program {

constexpr Size kSessionImage = {.width = 640, .height = 480};

inline SearchResult foundTarget(float shift = 0, bool exact = true) {
  SearchResult result{.frame = 7, .image = kSessionImage, .exact = exact};
  for (int id = 1; id <= 12; ++id) {
    const auto x = static_cast<float>(40 * id);
    result.points.push_back(
        {.PointId = id, .Xw = x, .Yw = 0, .ImagePtX = x + shift, .ImagePtY = 9});
  }
  return result;
}

class SessionWithTarget : public testing::Test {
 protected:
  SessionWithTarget() {
    session.apply(SetTarget{checkedTarget("chessboard", 4, 3, 10, 0, 0)});
    session.apply(SetStep{2});
    session.sourceLive(0);
    measure(true);
  }

  void measure(bool still) { session.measured(0, kSessionImage, 30, {}, {}, still); }

  Jobs seeSteadily(float shift = 0) {
    session.searched(0, foundTarget(shift), 10);
    return session.searched(0, foundTarget(shift), 10);
  }

  Jobs gained(double after) {
    return session.gainDone(0, session.at(0).revision, session.at(0).steadyTime, after);
  }

  std::string refusalOf(const Action& action) {
    try {
      session.apply(action);
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "";
  }

  nlohmann::json shown() const {
    return nlohmann::json::parse(snapshotOf(session, {"id", "1"}))["sources"][0];
  }

  Session session{{"camera"}, "out"};
};

}  // namespace fisheye_calibration::program
