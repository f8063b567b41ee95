#include "fisheye/posed_views.h"

#include "fisheye/arrays_of_triples.h"
#include "fisheye/view_arrays.h"
#include "lens/check.h"

namespace fisheye_calibration::fisheye {

PosedViews readPosedViews(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                          cv::InputArray omc, cv::InputArray Tc, const char* function) {
  requireListsOfPoints(objectPoints, imagePoints, function);
  lens::require(!omc.empty() && omc.type() == CV_64FC3, "!omc.empty() && omc.type() == CV_64FC3",
                function);
  lens::require(!Tc.empty() && Tc.type() == CV_64FC3, "!Tc.empty() && Tc.type() == CV_64FC3",
                function);
  PosedViews posed{readViews(objectPoints, imagePoints, function), {}};
  for (int i = 0; i < static_cast<int>(posed.views.size()); ++i) {
    const solver::ViewPoints& view = posed.views[static_cast<std::size_t>(i)];
    requireTargetPoints(!view.X.empty(), "projectPoints");
    solver::requirePairs(view, function);
    posed.poses.push_back({readTripleAt(omc, i, function), readTripleAt(Tc, i, function)});
  }
  return posed;
}

}  // namespace fisheye_calibration::fisheye
