/* Calls every function of the C interface and prints what it gives, byte by byte. Host.cs makes the
   same calls from C#.
     host layout     the sizes and offsets of the records, and the constants
     host calls      the calls; the parameter files are written to the working directory
     host mistaken   the calls, one with another argument */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "printing.h"
#include "views.h"

enum { WIDTH = 160, HEIGHT = 120, COLUMNS = 7, ROWS = 5, POINTS = COLUMNS * ROWS, GRID = 4 };

static float centre_x = WIDTH / 2;

/* ---- input ---- */

static fcal_camera known_camera(float ry) {
  fcal_camera camera;
  memset(&camera, 0, sizeof camera);
  camera.fx = camera.fy = 51.25f;
  camera.u0 = 80.5f;
  camera.v0 = 59.25f;
  camera.k[0] = 0.02;
  camera.k[1] = -0.03;
  camera.rx = 0.25f;
  camera.ry = ry;
  camera.tx = -150;
  camera.ty = -100;
  camera.tz = 200;
  return camera;
}

static void see(const fcal_camera* camera, fcal_point points[POINTS], float world[3 * POINTS]) {
  float raw[2 * POINTS];
  int i;
  memset(points, 0, POINTS * sizeof *points);
  for (i = 0; i < POINTS; ++i) {
    world[3 * i] = 50.0f * (float)(i % COLUMNS);
    world[3 * i + 1] = 50.0f * (float)(i / COLUMNS);
    world[3 * i + 2] = 0;
  }
  if (did("fcal_world_to_raw", fcal_world_to_raw(camera, world, POINTS, raw))) {
    show("xy", raw, sizeof raw);
  }
  for (i = 0; i < POINTS; ++i) {
    points[i].id = i + 1;
    points[i].reserved2 = -i;
    points[i].xw = world[3 * i];
    points[i].yw = world[3 * i + 1];
    points[i].x = raw[2 * i];
    points[i].y = raw[2 * i + 1];
  }
}

/* Top-down with `padding` bytes after each row, or bottom-up. */
static fcal_image picture(unsigned char* memory, int width, int height, int bits, int padding,
                          int bottom_up) {
  fcal_image image;
  const int row = width * (bits / 8) + padding;
  int i;
  for (i = 0; i < row * height; ++i) {
    memory[i] = (unsigned char)(i * 31 + i / 97);
  }
  image.data = bottom_up ? memory + (ptrdiff_t)row * (height - 1) : memory;
  image.width = width;
  image.height = height;
  image.stride = bottom_up ? -row : row;
  image.bits = bits;
  return image;
}

/* ---- calls ---- */

static void texts(void) {
  int status;
  printf("fcal_version %s\n", fcal_version());
  for (status = -1; status <= 6; ++status) {
    printf("fcal_status_text %s\n", fcal_status_text(status));
  }
}

static void calibrate(fcal_point points[POINTS], fcal_camera* camera) {
  double rms;
  double k[6];
  double error[2];
  memset(camera, 0, sizeof *camera);
  did("fcal_calibrate", fcal_calibrate(WIDTH, HEIGHT, points, 8, WIDTH, HEIGHT, camera, &rms));
  did("fcal_calibrate", fcal_calibrate(0, HEIGHT, points, POINTS, WIDTH, HEIGHT, camera, &rms));
  if (did("fcal_calibrate",
          fcal_calibrate(WIDTH, HEIGHT, points, POINTS, WIDTH, HEIGHT, camera, &rms))) {
    show_records(&camera_record, camera, 1);
    show_records(&point_record, points, POINTS);
    show("rms", &rms, sizeof rms);
  }
  if (did("fcal_place_view", fcal_place_view(-10.5, 5, 1.25f, WIDTH, HEIGHT, camera))) {
    show_records(&camera_record, camera, 1);
  }
  if (did("fcal_fit_affine", fcal_fit_affine(points, POINTS, k, &error[0], &error[1]))) {
    show("k", k, sizeof k);
    show("error", error, sizeof error);
  }
  did("fcal_fit_affine", fcal_fit_affine(NULL, 0, k, &error[0], &error[1]));
  did("fcal_straighten", fcal_straighten(NULL, 0));
}

static void show_file(const char* path) {
  unsigned char bytes[8192];
  FILE* file = fopen(path, "rb");
  if (file == NULL) {
    printf("  no file\n");
    return;
  }
  show("file", bytes, fread(bytes, 1, sizeof bytes, file));
  fclose(file);
}

static void keep(const fcal_camera* camera) {
  const char* path = "./\xE6\xA0\x87\xE5\xAE\x9A \xC3\xA9.ini"; /* UTF-8 */
  fcal_dual dual = {0.25f, 400, 300, -7, 9, 12, -3};
  fcal_camera loaded;
  did("fcal_save_camera", fcal_save_camera(path, camera));
  did("fcal_save_dual", fcal_save_dual(path, &dual));
  show_file(path);
  if (did("fcal_load_camera", fcal_load_camera(path, &loaded))) {
    show_records(&camera_record, &loaded, 1);
  }
  if (did("fcal_load_dual", fcal_load_dual(path, &dual))) {
    show_records(&dual_record, &dual, 1);
  }
  did("fcal_save_camera", fcal_save_camera("./missing/camera.ini", camera));
  did("fcal_load_dual", fcal_load_dual("./missing.ini", &dual));
}

static void render(const fcal_camera* camera) {
  static unsigned char frame_bytes[(3 * WIDTH + 5) * HEIGHT];
  static unsigned char view_bytes[3 * WIDTH * HEIGHT];
  static unsigned char mask_bytes[WIDTH * HEIGHT];
  static unsigned char part_bytes[3 * 100 * 80];
  fcal_image frame = picture(frame_bytes, WIDTH, HEIGHT, 24, 5, 0);
  fcal_image view = picture(view_bytes, WIDTH, HEIGHT, 24, 0, 1);
  fcal_image mask = picture(mask_bytes, WIDTH, HEIGHT, 8, 0, 0);
  fcal_image part = picture(part_bytes, 100, 80, 24, 0, 0);
  if (did("fcal_correct", fcal_correct(&frame, camera, &view, &mask))) {
    show("view", view_bytes, sizeof view_bytes);
    show("mask", mask_bytes, sizeof mask_bytes);
  }
  if (did("fcal_correct", fcal_correct(&frame, camera, &part, NULL))) {
    show("view", part_bytes, sizeof part_bytes);
  }
  did("fcal_correct", fcal_correct(&frame, camera, &mask, NULL));
  if (did("fcal_crop", fcal_crop(&view, &part))) {
    show("part", part_bytes, sizeof part_bytes);
  }
}

static void map(const fcal_camera* camera, const float world[3 * POINTS]) {
  const float plane[2 * GRID] = {0, 0, 10, 20.5f, -30, 40, 300, 7};
  const float raw[2 * GRID] = {80, 60, 20.5f, 70, 100, 110, 0, 0};
  const float y = HEIGHT / 2;
  float xy[2 * POINTS];
  if (did("fcal_world_to_corrected",
          fcal_world_to_corrected(camera, centre_x, y, world, POINTS, xy))) {
    show("xy", xy, sizeof xy);
  }
  if (did("fcal_world_to_view", fcal_world_to_view(camera, centre_x, y, plane, GRID, xy))) {
    show("xy", xy, sizeof plane);
  }
  if (did("fcal_view_to_world", fcal_view_to_world(camera, centre_x, y, plane, GRID, xy))) {
    show("xy", xy, sizeof plane);
  }
  if (did("fcal_raw_to_world", fcal_raw_to_world(camera, raw, GRID, xy))) {
    show("xy", xy, sizeof plane);
  }
  if (did("fcal_raw_to_corrected", fcal_raw_to_corrected(camera, centre_x, y, raw, GRID, xy))) {
    show("xy", xy, sizeof plane);
  }
  did("fcal_raw_to_world", fcal_raw_to_world(camera, NULL, 0, NULL));
}

static void stitch(fcal_camera cameras[2], fcal_point points[2][POINTS]) {
  static unsigned char bytes[2][WIDTH * HEIGHT];
  static unsigned char part_bytes[40 * 20];
  const float plane[2 * GRID] = {0, 0, 10, 20.5f, -30, 40, 300, 7};
  float xy[2 * GRID];
  fcal_point common[2][POINTS];
  int32_t needed[2];
  fcal_rig_view views[2];
  fcal_image canvas;
  fcal_image part = picture(part_bytes, 40, 20, 8, 0, 1);
  fcal_dual dual;
  unsigned char* canvas_bytes;
  int32_t width;
  int32_t height;
  int i;
  if (did("fcal_common_points", fcal_common_points(points[0], 20, points[1] + 3, 12, 10, common[0],
                                                   20, &needed[0], common[1], 12, &needed[1]))) {
    show_records(&point_record, common[0], (size_t)needed[0]);
    show_records(&point_record, common[1], (size_t)needed[1]);
  }
  for (i = 0; i < 2; ++i) {
    views[i].frame = picture(bytes[i], WIDTH, HEIGHT, 8, 0, i);
    views[i].camera = &cameras[i];
    views[i].points = points[i];
    views[i].count = POINTS;
  }
  if (!did("fcal_stitched_size", fcal_stitched_size(&views[0], &views[1], &width, &height))) {
    return;
  }
  printf("  %d %d\n", (int)width, (int)height);
  canvas_bytes = malloc((size_t)width * (size_t)height);
  if (canvas_bytes == NULL) {
    abort();
  }
  canvas = picture(canvas_bytes, width, height, 8, 0, 0);
  if (did("fcal_stitch", fcal_stitch(&views[0], &views[1], &canvas, &dual))) {
    show("canvas", canvas_bytes, (size_t)width * (size_t)height);
    show_records(&dual_record, &dual, 1);
  }
  if (did("fcal_crop_stitched", fcal_crop_stitched(&canvas, 8, 12, &part, &dual))) {
    show("part", part_bytes, sizeof part_bytes);
    show_records(&dual_record, &dual, 1);
  }
  free(canvas_bytes);
  if (did("fcal_world_to_stitched", fcal_world_to_stitched(&dual, plane, GRID, xy))) {
    show("xy", xy, sizeof xy);
  }
  if (did("fcal_stitched_to_world", fcal_stitched_to_world(&dual, plane, GRID, xy))) {
    show("xy", xy, sizeof xy);
  }
  views[1].count = 0;
  did("fcal_stitched_size", fcal_stitched_size(&views[0], &views[1], &width, &height));
}

int main(int count, char** arguments) {
  const char* const wanted = count == 2 ? arguments[1] : "";
  fcal_camera known[2];
  fcal_camera cameras[2];
  fcal_point points[2][POINTS];
  float world[3 * POINTS];
  int i;
  if (strcmp(wanted, "layout") == 0) {
    print_layouts();
    return EXIT_SUCCESS;
  }
  if (strcmp(wanted, "calls") != 0 && strcmp(wanted, "mistaken") != 0) {
    return EXIT_FAILURE;
  }
  centre_x += strcmp(wanted, "mistaken") == 0 ? 1e-5f : 0;
  texts();
  for (i = 0; i < 2; ++i) {
    known[i] = known_camera(i == 0 ? -0.2f : 0.15f);
    see(&known[i], points[i], world);
    calibrate(points[i], &cameras[i]);
  }
  keep(&cameras[0]);
  render(&cameras[0]);
  map(&cameras[0], world);
  stitch(cameras, points);
  solve_views(points[0], points[1], POINTS, WIDTH, HEIGHT);
  return EXIT_SUCCESS;
}
