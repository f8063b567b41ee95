// The session as the page reads it.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "page/session.h"

namespace fisheye_calibration::program {

// What stays the same as long as the server runs.
struct Instance {
  std::string id;
  std::string version;
};

std::string snapshotOf(const Session& session, const Instance& instance);

// The points of a search, for drawing them over the picture.
std::string pointsEvent(std::size_t source, const SearchResult& result);

}  // namespace fisheye_calibration::program
