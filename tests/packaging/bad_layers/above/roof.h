#include "below/cellar.h"
