#include "views.h"

#include <string.h>

#include "printing.h"

enum { MOST_POINTS = 100, GRID = 4 };

typedef struct solved {
  fcal_views_result result;
  fcal_solution solutions[2];
  uint8_t wrong_points[2 * MOST_POINTS];
  uint8_t wrong_views[2];
} solved;

static int calibrate_views(const fcal_target_view* views, int count, int width, int height,
                           const fcal_views_options* options, solved* s) {
  size_t total = 0;
  int is_solved;
  int i;
  for (i = 0; i < count; ++i) {
    total += (size_t)views[i].count;
  }
  memset(s, 0, sizeof *s);
  s->result.size = (int32_t)sizeof s->result;
  is_solved = did("fcal_calibrate_views",
                  fcal_calibrate_views(width, height, views, count, options, &s->result,
                                       s->solutions, s->wrong_points, s->wrong_views));
  if (is_solved) {
    show_records(&result_record, &s->result, 1);
    show_records(&solution_record, s->solutions, (size_t)count);
    show("points", s->wrong_points, total);
    show("views", s->wrong_views, (size_t)count);
  } else {
    show("outcome", &s->result.outcome, sizeof s->result.outcome);
    show("view", &s->result.refused_view, sizeof s->result.refused_view);
  }
  return is_solved;
}

static void judge(const fcal_solution* solution, const fcal_solution* judged) {
  const double grid[2 * GRID] = {0, 0, 100.5, 20, 300, 200, -40, 1e4};
  const double raw[2 * GRID] = {80, 60, 20.5, 70, 100, 110, 0, 0};
  double results[2 * GRID];
  if (did("fcal_raw_to_bed", fcal_raw_to_bed(solution, raw, GRID, results))) {
    show("xy", results, sizeof results);
  }
  if (did("fcal_bed_bounds", fcal_bed_bounds(solution, grid, GRID, results))) {
    show("bounds", results, GRID * sizeof *results);
  }
  if (did("fcal_bed_errors", fcal_bed_errors(solution, judged, grid, GRID, results))) {
    show("errors", results, GRID * sizeof *results);
  }
}

void solve_views(fcal_point* first, fcal_point* second, int count, int width, int height) {
  fcal_target_view views[2];
  fcal_views_options options;
  fcal_solution copy;
  fcal_camera camera;
  double rms;
  solved both;
  solved one;
  first[4].x += 9; /* a wrong point */
  views[0].points = first;
  views[1].points = second;
  views[0].count = views[1].count = count;
  calibrate_views(views, 2, width, height, NULL, &both);

  memset(&options, 0, sizeof options);
  options.size = (int32_t)sizeof options;
  options.noise = FCAL_NOISE_WHITE;
  options.keep_all = 1;
  options.start_focal_factor = 1.1;
  options.held_lens = &both.solutions[0];
  calibrate_views(views + 1, 1, width, height, &options, &one);
  options.held_lens = NULL;
  options.no_prior = 1;
  calibrate_views(views, 2, width, height, &options, &one);
  options.noise = 7;
  did("fcal_calibrate_views",
      fcal_calibrate_views(width, height, views, 2, &options, &one.result, NULL, NULL, NULL));
  views[0].count = 3;
  calibrate_views(views, 2, width, height, NULL, &one);

  memset(&camera, 0, sizeof camera);
  if (did("fcal_camera_of_solution", fcal_camera_of_solution(&both.solutions[1], second, count,
                                                             width, height, &camera, &rms))) {
    show_records(&camera_record, &camera, 1);
    show_records(&point_record, second, (size_t)count);
    show("rms", &rms, sizeof rms);
  }
  if (did("fcal_solution_of_camera", fcal_solution_of_camera(&camera, &copy))) {
    show_records(&solution_record, &copy, 1);
  }
  judge(&both.solutions[0], &both.solutions[1]);
  both.solutions[1].alpha = 0.5;
  did("fcal_camera_of_solution",
      fcal_camera_of_solution(&both.solutions[1], second, count, width, height, &camera, &rms));
}
