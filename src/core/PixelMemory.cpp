#include "core/PixelMemory.h"
