#include "above/roof.h"
