#include "robust/consistent_views.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "robust/without_listed.h"
#include "robust/wrong_views.h"

namespace fisheye_calibration::robust {
namespace {

bool anyListed(const PointLists& lists) {
  return std::any_of(lists.begin(), lists.end(), [](const auto& list) { return !list.empty(); });
}

// A wrong view's points are judged by the view itself, with a lens of its own unless one is held.
std::vector<std::size_t> wrongPointsAlone(const solver::ViewPoints& view,
                                          const FitSettings& settings, const lens::Camera& start) {
  const std::vector<solver::ViewPoints> one{view};
  const auto bundle = startingBundle(one, start, true);
  return bundle
             ? findWrongPoints(one, settings, fitWithNoise(one, settings, *bundle), start).front()
             : std::vector<std::size_t>();
}

}  // namespace

ConsistentViews findConsistentViews(const std::vector<solver::ViewPoints>& views,
                                    const FitSettings& settings, const Fit& fit,
                                    const lens::Camera& start) {
  ConsistentViews found{PointLists(views.size()), {}, views, fit};
  std::vector<std::size_t> kept(views.size());  // indices of the views that are not wrong
  std::iota(kept.begin(), kept.end(), 0);
  for (;;) {
    const PointLists lists = findWrongPoints(found.used, settings, found.fit, start);
    for (std::size_t j = 0; j < kept.size(); ++j) {
      found.wrongPoints[kept[j]] = lists[j];
    }
    if (anyListed(lists)) {
      found.used = without(found.used, lists);
      const auto again = startingBundle(found.used, start, false);
      found.fit = fitWithNoise(found.used, settings, again ? *again : found.fit.bundle);
    }
    const std::vector<std::size_t> wrong = findWrongViews(found.used, settings, found.fit);
    if (wrong.empty()) {
      break;
    }
    for (const std::size_t j : wrong) {
      found.wrongViews.push_back(kept[j]);
      found.wrongPoints[kept[j]] = wrongPointsAlone(views[kept[j]], settings, start);
    }
    kept = withoutListed(kept, wrong);
    found.used.clear();
    for (const std::size_t j : kept) {
      found.used.push_back(views[j]);
    }
    found.fit =
        fitWithNoise(found.used, settings,
                     {found.fit.bundle.camera, withoutListed(found.fit.bundle.poses, wrong)});
  }
  std::sort(found.wrongViews.begin(), found.wrongViews.end());
  return found;
}

}  // namespace fisheye_calibration::robust
