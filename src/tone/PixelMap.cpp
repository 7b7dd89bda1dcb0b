#include "tone/PixelMap.h"
