#include "printing.h"

#include <stdio.h>

static void print_layout(const record* r) {
  size_t i;
  printf("%s %u\n", r->name, (unsigned)r->size);
  for (i = 0; i < r->count; ++i) {
    printf("  %s %u %u\n", r->fields[i].name, (unsigned)r->fields[i].offset,
           (unsigned)r->fields[i].size);
  }
}

static void print_constants(void) {
  printf("Status Ok=%d False=%d BadArgument=%d NoMemory=%d ImageLibrary=%d Other=%d\n", FCAL_OK,
         FCAL_FALSE, FCAL_BAD_ARGUMENT, FCAL_NO_MEMORY, FCAL_IMAGE_LIBRARY, FCAL_OTHER);
  printf("Noise Smooth=%d White=%d\n", FCAL_NOISE_SMOOTH, FCAL_NOISE_WHITE);
  printf("Outcome Solved=%d BadInput=%d TooFewPoints=%d Degenerate=%d NotConverged=%d", FCAL_SOLVED,
         FCAL_BAD_INPUT, FCAL_TOO_FEW_POINTS, FCAL_DEGENERATE, FCAL_NOT_CONVERGED);
  printf(" BehindCamera=%d FoldedLens=%d TooManyWrongPoints=%d TooManyWrongViews=%d\n",
         FCAL_BEHIND_CAMERA, FCAL_FOLDED_LENS, FCAL_TOO_MANY_WRONG_POINTS,
         FCAL_TOO_MANY_WRONG_VIEWS);
}

static void print_bytes(const void* data, size_t size) {
  const unsigned char* bytes = data;
  size_t i;
  for (i = 0; i < size; ++i) {
    printf("%02x", bytes[i]);
  }
}

void show(const char* what, const void* data, size_t size) {
  printf("  %s ", what);
  print_bytes(data, size);
  printf("\n");
}

void show_records(const record* r, const void* data, size_t count) {
  size_t i;
  size_t k;
  for (k = 0; k < count; ++k) {
    printf("  %s ", r->name);
    for (i = 0; i < r->count; ++i) {
      print_bytes((const char*)data + k * r->size + r->fields[i].offset, r->fields[i].size);
    }
    printf("\n");
  }
}

int did(const char* function, fcal_status status) {
  printf("%s %d %s\n", function, (int)status, fcal_last_error());
  return status == FCAL_OK;
}

void print_layouts(void) {
  const record* const all[] = {&point_record,    &camera_record,   &dual_record,
                               &solution_record, &result_record,   &options_record,
                               &image_record,    &rig_view_record, &target_view_record};
  size_t i;
  for (i = 0; i < sizeof all / sizeof *all; ++i) {
    print_layout(all[i]);
  }
  print_constants();
}
