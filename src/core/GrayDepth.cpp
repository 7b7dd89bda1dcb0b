#include "core/GrayDepth.h"
