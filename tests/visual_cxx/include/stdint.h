// Part of the standard library as hosts built with Visual C++ have it. -*- C++ -*-
#pragma once
typedef int int32_t;
typedef unsigned char uint8_t;
typedef unsigned int uint32_t;
typedef unsigned long long uint64_t;
typedef unsigned long long uintptr_t;
