/* A host in C99 with two cameras side by side over one bed: calibrates both, stitches their frames
   into one picture, keeps picture and records in files, and stitches the next frames with the
   records alone. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "fisheye_calibration_c.h"

enum {
  WIDTH = 640,
  HEIGHT = 480,
  BED_COLUMNS = 13,
  COLUMNS = 8,
  ROWS = 7,
  POINTS = COLUMNS * ROWS
};

/* A bare name would mean a file in the Windows folder there. */
#if defined(_WIN32)
#define FOLDER ".\\"
#else
#define FOLDER "./"
#endif

static const float PIXEL = 0.25f; /* mm of the bed per pixel of the stitched picture */

typedef struct side {
  const char* file;
  fcal_camera known;  /* instead of a real camera */
  fcal_camera record; /* what the calibration finds */
  fcal_point points[POINTS];
  unsigned char frame[WIDTH * HEIGHT];
} side;

static void require(fcal_status status, const char* step) {
  if (status != FCAL_OK) {
    fprintf(stderr, "%s: %s (%s)\n", step, fcal_status_text(status), fcal_last_error());
    exit(EXIT_FAILURE);
  }
}

static void fail(const char* step) {
  fprintf(stderr, "%s failed\n", step);
  exit(EXIT_FAILURE);
}

static fcal_image picture(unsigned char* data, int32_t width, int32_t height) {
  fcal_image image;
  memset(&image, 0, sizeof image); /* a stride of 0: from the top, without padding */
  image.data = data;
  image.width = width;
  image.height = height;
  image.bits = 8;
  return image;
}

/* ---- instead of cameras ---- */

/* A camera 200 mm above (x, y) of the bed. */
static fcal_camera camera_at(float x, float y) {
  fcal_camera camera;
  memset(&camera, 0, sizeof camera);
  camera.fx = camera.fy = 205;
  camera.u0 = 322;
  camera.v0 = 237;
  camera.k[0] = 0.02;
  camera.k[1] = -0.03;
  camera.rx = 0.05f;
  camera.ry = -0.03f;
  camera.tx = -x;
  camera.ty = -y;
  camera.tz = 200;
  return camera;
}

/* Where the camera sees points of the bed that are 40 mm apart. A point has the same id for both
   cameras; the target's columns 5, 6 and 7 are seen by both. */
static void find_target(side* s, int first_column) {
  float world[3 * POINTS];
  float raw[2 * POINTS];
  int i;
  memset(s->points, 0, sizeof s->points);
  for (i = 0; i < POINTS; ++i) {
    const int column = first_column + i % COLUMNS;
    const int row = i / COLUMNS;
    s->points[i].id = row * BED_COLUMNS + column + 1;
    world[3 * i] = s->points[i].xw = 40.0f * (float)column;
    world[3 * i + 1] = s->points[i].yw = 40.0f * (float)row;
    world[3 * i + 2] = 0;
  }
  require(fcal_world_to_raw(&s->known, world, POINTS, raw), "the known camera");
  for (i = 0; i < POINTS; ++i) {
    s->points[i].x = raw[2 * i];
    s->points[i].y = raw[2 * i + 1];
  }
}

/* A frame of the grey bed, with a bright disc of 15 mm radius at (x, y). */
static void take_frame(side* s, float x, float y) {
  static float raw[2 * WIDTH * HEIGHT];
  static float bed[2 * WIDTH * HEIGHT];
  int i;
  for (i = 0; i < WIDTH * HEIGHT; ++i) {
    raw[2 * i] = (float)(i % WIDTH);
    raw[2 * i + 1] = (float)(i / WIDTH);
  }
  require(fcal_raw_to_world(&s->known, raw, WIDTH * HEIGHT, bed), "the known camera");
  for (i = 0; i < WIDTH * HEIGHT; ++i) {
    const float dx = bed[2 * i] - x;
    const float dy = bed[2 * i + 1] - y;
    s->frame[i] = dx * dx + dy * dy < 15 * 15 ? 250 : 100;
  }
}

/* ---- files ---- */

static void save_picture(const char* path, const fcal_image* image) {
  const size_t size = (size_t)image->width * (size_t)image->height;
  FILE* file = fopen(path, "wb");
  if (file == NULL || fprintf(file, "P5 %d %d 255\n", (int)image->width, (int)image->height) < 0 ||
      fwrite(image->data, 1, size, file) != size || fclose(file) != 0) {
    fail("saving the picture");
  }
}

/* The caller frees the pixels. */
static fcal_image load_picture(const char* path) {
  int width;
  int height;
  unsigned char* pixels;
  size_t size;
  FILE* file = fopen(path, "rb");
  if (file == NULL || fscanf(file, "P5 %d %d 255", &width, &height) != 2 || fgetc(file) != '\n') {
    fail("loading the picture");
  }
  size = (size_t)width * (size_t)height;
  pixels = malloc(size);
  if (pixels == NULL || fread(pixels, 1, size, file) != size || fclose(file) != 0) {
    fail("loading the picture");
  }
  return picture(pixels, width, height);
}

/* ---- the work of a host ---- */

/* fcal_stitch corrects both frames at twice their size, so the records are made for such views. */
static void calibrate(side* s, float x, float y) {
  const int32_t width = 2 * WIDTH;
  const int32_t height = 2 * HEIGHT;
  double rms;
  memset(&s->record, 0, sizeof s->record);
  require(fcal_calibrate(WIDTH, HEIGHT, s->points, POINTS, width, height, &s->record, &rms),
          "calibrate");
  printf("focal length %.1f px, reprojection error %.3f px\n", s->record.fx, rms);
  /* Both views have the same scale. (x, y) is in the middle: files of stitched pictures hold whole
     coordinates of it. */
  require(fcal_place_view(x - 0.5 * (width + 1) * PIXEL, y - 0.5 * (height + 1) * PIXEL, PIXEL,
                          width, height, &s->record),
          "place the view");
  require(fcal_save_camera(s->file, &s->record), "save the camera");
}

static fcal_rig_view rig_view(side* s) {
  fcal_rig_view view;
  memset(&view, 0, sizeof view);
  view.frame = picture(s->frame, WIDTH, HEIGHT);
  view.camera = &s->record;
  view.points = s->points;
  view.count = POINTS;
  return view;
}

static void show_disc(const fcal_image* stitched, const fcal_dual* dual, float x, float y) {
  const float world[2] = {x, y};
  float uv[2];
  int column;
  int row;
  require(fcal_world_to_stitched(dual, world, 1, uv), "map");
  column = (int)(uv[0] + 0.5f);
  row = (int)(uv[1] + 0.5f);
  printf("disc at (%.0f, %.0f) mm: pixel (%d, %d), grey %d\n", x, y, column, row,
         stitched->data[row * stitched->width + column]);
}

/* Sets up the machine: records and a first picture. */
static void first_run(side sides[2]) {
  fcal_rig_view left;
  fcal_rig_view right;
  fcal_image canvas;
  fcal_dual dual;
  int32_t width;
  int32_t height;
  int i;
  for (i = 0; i < 2; ++i) {
    const float x = i == 0 ? 140.0f : 340.0f;
    sides[i].known = camera_at(x, 120);
    find_target(&sides[i], i == 0 ? 0 : 5);
    calibrate(&sides[i], x, 120);
    take_frame(&sides[i], 60, 100);
  }
  left = rig_view(&sides[0]);
  right = rig_view(&sides[1]);
  require(fcal_stitched_size(&left, &right, &width, &height), "size");
  canvas = picture(calloc((size_t)width, (size_t)height), width, height); /* black */
  if (canvas.data == NULL) {
    fail("memory");
  }
  require(fcal_stitch(&left, &right, &canvas, &dual), "stitch");
  printf("stitched picture of %d x %d pixels\n", (int)dual.width, (int)dual.height);
  show_disc(&canvas, &dual, 60, 100);
  save_picture(FOLDER "stitched.pgm", &canvas);
  require(fcal_save_dual(FOLDER "stitched.ini", &dual), "save the record");
  free(canvas.data);
}

/* Any later day: needs no calibration, only the files and the target's numbers and positions. */
static void later_run(side sides[2]) {
  fcal_rig_view left;
  fcal_rig_view right;
  fcal_image canvas = load_picture(FOLDER "stitched.pgm");
  fcal_dual saved;
  fcal_dual dual;
  int i;
  require(fcal_load_dual(FOLDER "stitched.ini", &saved), "load the record");
  show_disc(&canvas, &saved, 60, 100);
  for (i = 0; i < 2; ++i) {
    require(fcal_load_camera(sides[i].file, &sides[i].record), "load the camera");
    take_frame(&sides[i], 240, 160); /* where both cameras see it */
  }
  left = rig_view(&sides[0]);
  right = rig_view(&sides[1]);
  require(fcal_stitch(&left, &right, &canvas, &dual), "stitch again");
  show_disc(&canvas, &saved, 240, 160);
  free(canvas.data);
  if (memcmp(&dual, &saved, sizeof dual) != 0) {
    fail("the record has changed: stitching again");
  }
  printf("the saved record holds for the next frames\n");
}

int main(void) {
  static side sides[2];
  sides[0].file = FOLDER "left.ini";
  sides[1].file = FOLDER "right.ini";
  first_run(sides);
  later_run(sides);
  return EXIT_SUCCESS;
}
