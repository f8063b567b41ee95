/* A host in C99: calibrates a camera from one view of a target, renders the bed as seen from above
   and finds out which point of the bed a pixel shows. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "fisheye_calibration_c.h"

enum { WIDTH = 1280, HEIGHT = 960, COLUMNS = 11, ROWS = 9, POINTS = COLUMNS * ROWS };

static void require(fcal_status status, const char* step) {
  if (status != FCAL_OK) {
    fprintf(stderr, "%s: %s (%s)\n", step, fcal_status_text(status), fcal_last_error());
    exit(EXIT_FAILURE);
  }
}

/* Instead of detecting a target in a picture: where a known camera sees points that are 30 mm
 * apart. */
static void find_target(fcal_point points[POINTS]) {
  fcal_camera camera;
  float world[3 * POINTS];
  float raw[2 * POINTS];
  int i;
  memset(&camera, 0, sizeof camera);
  camera.fx = camera.fy = 410;
  camera.u0 = 645;
  camera.v0 = 474;
  camera.k[0] = 0.02;
  camera.k[1] = -0.03;
  camera.rx = 0.3f;
  camera.ry = -0.2f;
  camera.tx = -150;
  camera.ty = -120;
  camera.tz = 200;
  for (i = 0; i < POINTS; ++i) {
    world[3 * i] = 30.0f * (float)(i % COLUMNS);
    world[3 * i + 1] = 30.0f * (float)(i / COLUMNS);
    world[3 * i + 2] = 0;
  }
  require(fcal_world_to_raw(&camera, world, POINTS, raw), "the known camera");
  memset(points, 0, POINTS * sizeof *points);
  for (i = 0; i < POINTS; ++i) {
    points[i].id = i + 1;
    points[i].xw = world[3 * i];
    points[i].yw = world[3 * i + 1];
    points[i].x = raw[2 * i];
    points[i].y = raw[2 * i + 1];
  }
}

int main(void) {
  static unsigned char pixels[HEIGHT * WIDTH];
  static unsigned char view_pixels[HEIGHT * WIDTH];
  fcal_point points[POINTS];
  fcal_camera camera;
  fcal_image frame;
  fcal_image view;
  const float pixel[2] = {700, 400};
  float world[2];
  double rms;

  find_target(points);
  memset(&camera, 0, sizeof camera);
  require(fcal_calibrate(WIDTH, HEIGHT, points, POINTS, WIDTH, HEIGHT, &camera, &rms), "calibrate");
  printf("focal length %.1f px, reprojection error %.3f px\n", camera.fx, rms);

  /* The view shows 320 x 240 mm of the bed, a quarter of a millimetre per pixel. */
  require(fcal_place_view(-10, 0, 0.25f, WIDTH, HEIGHT, &camera), "place the view");
  memset(pixels, 128, sizeof pixels);
  memset(&frame, 0, sizeof frame); /* a stride of 0: from the top, without padding */
  frame.data = pixels;
  frame.width = WIDTH;
  frame.height = HEIGHT;
  frame.bits = 8;
  view = frame;
  view.data = view_pixels;
  require(fcal_correct(&frame, &camera, &view, NULL), "correct");

  require(fcal_raw_to_world(&camera, pixel, 1, world), "map");
  printf("pixel (%.0f, %.0f) shows (%.1f, %.1f) mm\n", pixel[0], pixel[1], world[0], world[1]);
  return EXIT_SUCCESS;
}
