/* The records of the C interface with the names of their fields in C#, in which both hosts print
   them: layouts to compare, and contents without the bytes between fields. */
#ifndef FISHEYE_CALIBRATION_TESTS_CSHARP_RECORDS_H
#define FISHEYE_CALIBRATION_TESTS_CSHARP_RECORDS_H

#include <stddef.h>

#include "fisheye_calibration_c.h"

typedef struct field {
  const char* name;
  size_t offset;
  size_t size;
} field;

typedef struct record {
  const char* name;
  size_t size;
  const field* fields;
  size_t count;
} record;

extern const record point_record;
extern const record camera_record;
extern const record dual_record;
extern const record solution_record;
extern const record result_record;
extern const record options_record;
extern const record image_record;
extern const record rig_view_record;
extern const record target_view_record;

#endif
