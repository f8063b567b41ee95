/* A host in pure C99: calibrates a made-up camera, renders its view and reads every kind of status.
 */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "fisheye_calibration_c.h"

enum { COLUMNS = 9, ROWS = 7, POINTS = COLUMNS * ROWS, WIDTH = 640, HEIGHT = 480 };

static int failures = 0;

static void expect(int condition, const char* what) {
  if (!condition) {
    fprintf(stderr, "%s (last error: %s)\n", what, fcal_last_error());
    ++failures;
  }
}

/* An equidistant lens, tilted over a bed of points 40 units apart. */
static fcal_camera true_camera(void) {
  fcal_camera camera;
  memset(&camera, 0, sizeof camera);
  camera.fx = camera.fy = 205;
  camera.u0 = 322;
  camera.v0 = 238;
  camera.k[0] = 0.02;
  camera.k[1] = -0.03;
  camera.rx = 0.4f;
  camera.ry = -0.25f;
  camera.rz = 0.1f;
  camera.tx = -180;
  camera.ty = -160;
  camera.tz = 260;
  return camera;
}

static void calibrate(fcal_camera* camera) {
  const fcal_camera truth = true_camera();
  fcal_point points[POINTS];
  float world[3 * POINTS];
  float raw[2 * POINTS];
  double rms = -1;
  int i;
  memset(points, 0, sizeof points);
  for (i = 0; i < POINTS; ++i) {
    world[3 * i] = 40.0f * (float)(i % COLUMNS);
    world[3 * i + 1] = 40.0f * (float)(i / COLUMNS);
    world[3 * i + 2] = 0;
  }
  expect(fcal_world_to_raw(&truth, world, POINTS, raw) == FCAL_OK, "the truth maps points");
  for (i = 0; i < POINTS; ++i) {
    points[i].id = i + 1;
    points[i].xw = world[3 * i];
    points[i].yw = world[3 * i + 1];
    points[i].x = raw[2 * i];
    points[i].y = raw[2 * i + 1];
  }
  expect(fcal_calibrate(WIDTH, HEIGHT, points, POINTS, WIDTH, HEIGHT, camera, &rms) == FCAL_OK,
         "the calibration succeeds");
  expect(rms >= 0 && rms < 0.01, "the calibration fits");
  expect(fabs(camera->fx - truth.fx) < 0.05, "the focal length is found");
  expect(fcal_calibrate(WIDTH, HEIGHT, points, 8, WIDTH, HEIGHT, camera, &rms) == FCAL_FALSE,
         "eight points have no result");
  expect(strcmp(fcal_last_error(), "points: fewer than 9") == 0, "and the text says so");
}

static void render(const fcal_camera* camera) {
  enum { ROW = 3 * WIDTH + 5 };
  unsigned char* frame = malloc(ROW * HEIGHT);
  unsigned char* top_down = calloc(3 * WIDTH, HEIGHT);
  unsigned char* bottom_up = calloc(3 * WIDTH, HEIGHT);
  fcal_image source, view, flipped;
  int i, y;
  if (frame == NULL || top_down == NULL || bottom_up == NULL) {
    abort();
  }
  for (i = 0; i < ROW * HEIGHT; ++i) {
    frame[i] = (unsigned char)(i * 31 + i / ROW);
  }
  source.data = frame;
  source.width = WIDTH;
  source.height = HEIGHT;
  source.stride = ROW;
  source.bits = 24;
  view = source;
  view.data = top_down;
  view.stride = 0;
  flipped = source;
  flipped.data = bottom_up + 3 * WIDTH * (HEIGHT - 1);
  flipped.stride = -3 * WIDTH;
  expect(fcal_correct(&source, camera, &view, NULL) == FCAL_OK, "the view is rendered");
  expect(fcal_correct(&source, camera, &flipped, NULL) == FCAL_OK, "and bottom-up");
  for (y = 0; y < HEIGHT; ++y) {
    expect(
        memcmp(top_down + 3 * WIDTH * y, bottom_up + 3 * WIDTH * (HEIGHT - 1 - y), 3 * WIDTH) == 0,
        "both are the same picture");
  }
  source.bits = 16;
  expect(fcal_correct(&source, camera, &view, NULL) == FCAL_BAD_ARGUMENT, "16 bits are refused");
  expect(strcmp(fcal_last_error(), "frame: bits is not 8, 24 or 32") == 0, "with a text");
  free(frame);
  free(top_down);
  free(bottom_up);
}

int main(void) {
  fcal_camera camera;
  memset(&camera, 0, sizeof camera);
  expect(strlen(fcal_version()) >= 5, "there is a version");
  calibrate(&camera);
  render(&camera);
  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
