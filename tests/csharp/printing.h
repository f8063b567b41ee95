/* Prints records, constants and results as Host.cs does. */
#ifndef FISHEYE_CALIBRATION_TESTS_CSHARP_PRINTING_H
#define FISHEYE_CALIBRATION_TESTS_CSHARP_PRINTING_H

#include <stddef.h>

#include "fisheye_calibration_c.h"
#include "records.h"

void print_layouts(void);

void show(const char* what, const void* data, size_t size);

/* Without the bytes between fields. */
void show_records(const record* r, const void* data, size_t count);

/* Prints the name of the function, its status and its text; says whether it succeeded. */
int did(const char* function, fcal_status status);

#endif
